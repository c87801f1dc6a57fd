// A form for any binary command: its fields as the language tells them, and the line that they make.

import { make, setText } from "./dom.js";
import { CHANNELS } from "./state.js";
import { bitList } from "./words.js";

const OTHER = "other";
const EXAMPLES = { byte: "0x00", channels: "0-3,7", bytes: "FF 00 ..." };

/**
 * @param {(line: string) => void} say
 * @param {object} language
 */
export function commandForm(say, { commands }) {
  const select = make(
    "select",
    { id: "command" },
    ...commands.map(({ name }) => make("option", { value: name }, name)),
  );
  const help = make("span", { class: "dim" });
  const fields = make("div", { class: "fields" });
  const line = make("code", { class: "line" });
  const form = make(
    "form",
    { class: "command", "aria-label": "Binary command" },
    make("div", { class: "toolbar" }, make("label", { for: "command" }, "Command"), select, help),
    fields,
    make("div", { class: "toolbar" }, make("button", { class: "primary" }, "Send"), line),
  );
  let inputs = [];
  const text = () =>
    [
      "command",
      select.value,
      ...inputs.flatMap(({ name, value }) => (value() ? [name, value()] : [])),
    ].join(" ");
  const tell = () => setText(line, text());
  const choose = () => {
    const command = commands.find(({ name }) => name === select.value);
    setText(help, command.help);
    inputs = command.fields
      .filter(({ flow }) => flow !== "out")
      .map((field) => fieldInput(field, tell));
    fields.replaceChildren(...inputs.map(({ element }) => element));
    tell();
  };
  select.addEventListener("change", choose);
  form.addEventListener("input", tell);
  form.addEventListener("submit", (event) => {
    event.preventDefault();
    say(text());
  });
  choose();
  return form;
}

// One row of the form; value() is the words of the field, empty when it is not given.
function fieldInput(field, tell) {
  const id = `field-${field.name}`;
  const { control, value } = (CONTROLS[field.kind] ?? typed)(field, id, tell);
  const most = field.kind === "number" && field.most !== undefined ? ` (0–${field.most})` : "";
  const element = make(
    "div",
    { class: "field" },
    make("label", { for: id, id: `${id}-name` }, field.name),
    control,
    make(
      "span",
      { class: "dim", title: field.beyond ? `beyond: ${field.beyond}` : null },
      field.help + most,
    ),
  );
  return { name: field.name, element, value };
}

function typed({ kind }, id) {
  const control = make("input", {
    id,
    class: kind === "bytes" || kind === "channels" ? "mono wide" : "mono",
    size: 10,
    placeholder: EXAMPLES[kind] ?? "",
    autocomplete: "off",
    spellcheck: "false",
  });
  return { control, value: () => control.value.trim() };
}

function number({ most }, id) {
  const control = make("input", { id, type: "number", min: 0, max: most, placeholder: "0" });
  return { control, value: () => control.value };
}

// Names, and any other value of the byte in hexadecimal.
function choice({ name, values }, id) {
  const list = make(
    "select",
    { id },
    ...values.map((one) => make("option", { value: one.name }, one.name)),
    make("option", { value: OTHER }, "another value"),
  );
  const other = make("input", {
    class: "mono",
    size: 6,
    value: "0x00",
    "aria-label": `${name}, value`,
  });
  const show = () => (other.hidden = list.value !== OTHER);
  list.addEventListener("change", show);
  show();
  return {
    control: make("span", { class: "toolbar" }, list, other),
    value: () => (list.value === OTHER ? other.value.trim() : list.value),
  };
}

// A button for each channel.
function mask({ name }, id, tell) {
  let on = 0;
  const buttons = Array.from({ length: CHANNELS }, (_, channel) =>
    make(
      "button",
      {
        type: "button",
        id: channel === 0 ? id : null,
        "aria-pressed": "false",
        "aria-label": `${name}: channel ${channel}`,
        click: ({ currentTarget }) => {
          on ^= 1 << channel;
          currentTarget.setAttribute("aria-pressed", (on & (1 << channel)) !== 0);
          tell();
        },
      },
      String(channel),
    ),
  );
  const value = () => (on === 0 ? "none" : bitList(on));
  return {
    control: make(
      "span",
      { class: "mask", role: "group", "aria-labelledby": `${id}-name` },
      ...buttons,
    ),
    value,
  };
}

const CONTROLS = { number, choice, mask };
