// The board's switches: chips, faults, drivers, stored settings, settle status, sync, the host's
// window, and versions of files. Each sends a line; what they show comes from the board.

import { make, setText } from "./dom.js";
import { CHIPS, quoted } from "./state.js";

const FILES = ["\\NAND FLASH\\MDVR\\VexoCtrlSDK.DLL", "\\Windows\\Main.exe"];

/**
 * @param {HTMLElement} pane
 * @param {import("./bench.js").Bench} bench
 * @param {object} language
 * @param {import("./state.js").State} state
 */
export function mount(pane, bench, language, state) {
  const refused = make("p", { class: "bad", role: "alert", hidden: true });
  const say = async (line) => {
    const { result, text } = await bench.send(line);
    refused.hidden = result === "done";
    setText(refused, result === "done" ? "" : `${line}: ${text}`);
  };
  const shows = [];
  const context = { say, board: () => state.board, onShow: (show) => shows.push(show) };
  pane.append(
    refused,
    make(
      "div",
      { class: "fill switches" },
      chips(context, state),
      faults(context, language.faults),
      drivers(context, language.drivers),
      hostWindow(context),
      settle(context),
      sync(context),
      nvram(context),
      files(context),
    ),
  );
  const show = () => shows.forEach((one) => one());
  state.addEventListener("change", show);
  show();
}

// ---- Parts of the groups ------------------------------------------------------------------------

function group(name, ...inside) {
  return make("fieldset", {}, make("legend", {}, name), ...inside);
}

// Buttons of which one is what holds now.
function choice({ say, onShow }, label, values, lineOf, now, textOf = (value) => value) {
  const buttons = values.map((value) =>
    make(
      "button",
      { type: "button", title: lineOf(value), click: () => say(lineOf(value)) },
      textOf(value),
    ),
  );
  onShow(() => {
    buttons.forEach((button, at) => button.setAttribute("aria-pressed", values[at] === now()));
  });
  return make("span", { class: "choice", role: "group", "aria-label": label }, ...buttons);
}

function form(send, ...inside) {
  const element = make("form", { class: "toolbar" }, ...inside);
  element.addEventListener("submit", (event) => {
    event.preventDefault();
    send();
  });
  return element;
}

function input(label, properties) {
  return make("input", { "aria-label": label, title: label, autocomplete: "off", ...properties });
}

const set = () => make("button", {}, "Set");

// ---- The groups ---------------------------------------------------------------------------------

function chips(context, state) {
  const count = () => {
    const fitted = CHIPS.map((_, chip) => state.fitted(chip));
    const many = fitted.indexOf(false) < 0 ? CHIPS.length : fitted.indexOf(false);
    return fitted.lastIndexOf(true) === many - 1 ? many : null;
  };
  const chip = make(
    "select",
    { "aria-label": "Chip" },
    ...CHIPS.map((one) => make("option", {}, one)),
  );
  const id = input("Identification, 0x00 to 0xFF", { class: "mono", size: 5 });
  const show = () => {
    if (document.activeElement !== id) {
      id.value = `0x${context.board().ids[CHIPS.indexOf(chip.value)].toString(16).padStart(2, "0")}`;
    }
  };
  chip.addEventListener("change", show);
  context.onShow(show);
  return group(
    "Chips",
    choice(context, "Chips", [1, 2, 3, 4], (many) => `board chips ${many}`, count, String),
    form(() => context.say(`board id ${chip.value} ${id.value.trim()}`), chip, "is", id, set()),
  );
}

function faults({ say, board, onShow }, all) {
  const buttons = all.map(({ name, help }) =>
    make(
      "button",
      {
        type: "button",
        "data-fault": name,
        title: help,
        click: () => say(`fault ${name} ${board().faults.has(name) ? "off" : "on"}`),
      },
      name,
    ),
  );
  onShow(() => {
    buttons.forEach((button, at) =>
      button.setAttribute("aria-pressed", board().faults.has(all[at].name)),
    );
  });
  return group("Faults", make("div", { class: "toolbar alarms" }, ...buttons));
}

function drivers(context, names) {
  const rows = names.map((name) =>
    make(
      "div",
      { class: "toolbar" },
      make("span", { class: "mono" }, name),
      choice(
        context,
        name,
        ["present", "absent", "null"],
        (value) => `driver ${name} ${value}`,
        () => context.board().drivers.get(name) ?? "present",
      ),
    ),
  );
  return group("Drivers", ...rows);
}

function hostWindow(context) {
  return group(
    "Host window",
    choice(
      context,
      "Host window",
      ["hearing", "deaf"],
      (value) => `window ${value}`,
      () => (context.board().deaf ? "deaf" : "hearing"),
    ),
  );
}

function settle(context) {
  const reads = input("Busy reads after each hold", { type: "number", min: 0, required: true });
  const never = make(
    "button",
    { type: "button", title: "settle never", click: () => context.say("settle never") },
    "Never",
  );
  context.onShow(() => {
    const now = context.board().settle;
    never.setAttribute("aria-pressed", now === "never");
    if (document.activeElement !== reads) reads.value = now === "never" ? "" : now;
  });
  return group(
    "Settle status",
    form(() => context.say(`settle ${reads.value}`), "busy for", reads, "reads", set(), never),
  );
}

function sync(context) {
  const period = input("Milliseconds", { type: "number", min: 1, required: true });
  context.onShow(() => {
    const [kind, value] = context.board().sync.split(" ");
    if (document.activeElement !== period) period.value = kind === "period" ? value : "";
  });
  return group(
    "Sync bit",
    form(() => context.say(`sync period ${period.value}`), "every", period, "ms", set()),
    choice(
      context,
      "Held",
      ["hold 0", "hold 1"],
      (value) => `sync ${value}`,
      () => context.board().sync,
    ),
  );
}

function nvram(context) {
  const magic = input("Magic", { class: "mono", size: 5, maxlength: 4, value: "MDVR" });
  const standard = input("Standard, 0 to 255", { type: "number", min: 0, max: 255, value: 0 });
  const channels = input("Channels, 0 to 255", { type: "number", min: 0, max: 255, value: 16 });
  const blank = make(
    "button",
    { type: "button", title: "nvram blank", click: () => context.say("nvram blank") },
    "Blank",
  );
  context.onShow(() => {
    const { record, blank: isBlank } = context.board().nvram;
    blank.setAttribute("aria-pressed", isBlank);
    if (!record || document.activeElement?.form === magic.form) return;
    [magic.value, standard.value, channels.value] = record;
  });
  const record = () =>
    context.say(
      `nvram record ${quoted(magic.value)} ${standard.value || 0} ${channels.value || 0}`,
    );
  return group(
    "Stored settings",
    form(
      record,
      magic,
      "standard",
      standard,
      "channels",
      channels,
      make("button", {}, "Store"),
      blank,
    ),
    make(
      "div",
      { class: "toolbar" },
      "fails",
      choice(
        context,
        "Fails",
        ["none", "read", "write"],
        (value) => `nvram fail ${value}`,
        () => context.board().nvram.fail,
      ),
    ),
  );
}

function files(context) {
  const path = input("Path", { class: "mono wide", list: "file-paths", value: FILES[0] });
  const paths = make(
    "datalist",
    { id: "file-paths" },
    ...FILES.map((one) => make("option", { value: one })),
  );
  const version = input("Version, four numbers with dots", {
    class: "mono",
    size: 10,
    placeholder: "1.0.1.6",
  });
  const now = make("ul", { class: "mono dim" });
  const say = (what) => context.say(`file ${quoted(path.value)} ${what}`);
  context.onShow(() => {
    const rows = [...context.board().files].map(([one, what]) => make("li", {}, `${one} ${what}`));
    now.replaceChildren(...rows);
    now.hidden = rows.length === 0;
  });
  return group(
    "Versions of files",
    form(() => say(version.value.trim()), path, paths, version, set()),
    make(
      "div",
      { class: "toolbar" },
      ...["absent", "unreadable", "noroot"].map((what) =>
        make("button", { type: "button", click: () => say(what) }, what),
      ),
    ),
    now,
  );
}
