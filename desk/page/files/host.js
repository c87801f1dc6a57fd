// The host program's side: attaching, layouts, every binary command as a form, text commands; and
// what came of the calls.

import { Calls } from "./calls.js";
import { commandForm } from "./command_form.js";
import { make, rove } from "./dom.js";
import { layoutRows } from "./layouts.js";

// Why a running program's board refuses them.
const LOADING = "the library is loaded and unloaded by the program's system";
const WINDOW = "which window the library has is for the program to say";

/**
 * @param {HTMLElement} pane
 * @param {import("./bench.js").Bench} bench
 * @param {object} language
 */
export function mount(pane, bench, language) {
  const answer = make("output", { class: "answer", "aria-live": "polite" });
  const say = async (line) => {
    answer.replaceChildren(make("code", {}, line), make("pre", {}, "…"));
    const { result, text } = await bench.send(line);
    const said = text.trim() || (result === "done" ? "done" : result);
    answer.replaceChildren(
      make("code", {}, line),
      make("pre", { class: result === "done" ? "" : "bad", tabindex: 0 }, said),
    );
  };
  const controls = make(
    "div",
    { class: "host" },
    lifeCycle(say, language),
    layoutRows(say, bench, language),
    commandForm(say, language),
    textForm(say, bench),
  );
  const calls = new Calls(bench, language);
  pane.append(make("div", { class: "call-host" }, controls, answer, calls.element));
}

// ---- Attach, window, init, detach ---------------------------------------------------------------

function lifeCycle(say, { board }) {
  const rows = [
    ["attach", "Attach", "the library is loaded", LOADING],
    ["window", "Window", "a new host window is bound", WINDOW],
    ["command init", "Init", "detects and initializes the chips, starts the monitor", null],
    ["command stop-monitor", "Stop monitor", "ends the library's thread", null],
    ["unbind", "Unbind", "the window is forgotten", WINDOW],
    ["detach", "Detach", "the library is unloaded", LOADING],
  ];
  const buttons = rows.map(([line, text, help, why]) => {
    const refused = why !== null && board === "program";
    return make(
      "button",
      {
        type: "button",
        disabled: refused,
        title: refused ? why : `${line}: ${help}`,
        click: () => say(line),
      },
      text,
    );
  });
  const bar = make(
    "div",
    { class: "toolbar close", role: "group", "aria-label": "Library" },
    ...buttons,
  );
  rove(bar);
  return bar;
}

// ---- Text commands ------------------------------------------------------------------------------

function textForm(say, bench) {
  const offers = make("datalist", { id: "text-commands" });
  const input = make("input", {
    id: "text-command",
    class: "mono wide",
    list: "text-commands",
    placeholder: "vexo lsplit 6 0",
    autocomplete: "off",
    spellcheck: "false",
  });
  const offer = async () => {
    const { result, text } = await bench.send(`complete ${JSON.stringify(input.value || "vexo ")}`);
    if (result !== "done") return;
    const lines = text.split("\n").filter((line) => line.trim() && !line.startsWith("#"));
    offers.replaceChildren(
      ...lines.slice(0, 60).map((line) => make("option", { value: line.trim() })),
    );
  };
  input.addEventListener("focus", offer);
  input.addEventListener("input", offer);
  const form = make(
    "form",
    { class: "toolbar" },
    make("label", { for: "text-command" }, "Text command"),
    input,
    offers,
    make("button", {}, "Send"),
  );
  form.addEventListener("submit", (event) => {
    event.preventDefault();
    if (input.value.trim()) say(input.value.trim());
  });
  return form;
}
