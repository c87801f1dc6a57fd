// Host messages and the library's texts as they come, folded when they repeat.

import { atEnd, button, enlarger, soon } from "./controls.js";
import { make } from "./dom.js";
import { count, messageInWords, printable, seconds } from "./words.js";

const MOST_ENTRIES = 5000;
const MOST_ROWS = 1000; // on the page
const EVERY = 100; // ms, at most so often
const FOLDED_WITHIN = 40; // rows: further up, an equal one is another matter
const MOST_PENDING = 1 << 16; // characters of a line without an end

// Kinds of entries: the mark that the shell puts before each, and their name.
const KINDS = {
  message: [">", "Messages", "Messages to the host's window"],
  debug: ["|", "Debug", "Debug output"],
  kernel: ["!", "Kernel", "Kernel debug output"],
  note: ["·", "Notes", "Stops, time that was turned back, and events that were missed"],
};
const NOTES = { stopped: "stopped", continued: "goes on", rewound: "time was turned back" };

/**
 * Joins writes into lines: the library writes a prefix and its message apart, and a register dump
 * byte by byte.
 */
export class DebugLines {
  #pending = "";

  /** The lines that a write ends. */
  add(text) {
    this.#pending += text;
    const end = this.#pending.lastIndexOf("\n");
    if (end < 0 && this.#pending.length < MOST_PENDING) return [];
    const lines = this.#pending.slice(0, end < 0 ? undefined : end);
    this.#pending = end < 0 ? "" : this.#pending.slice(end + 1);
    return withWords(lines);
  }

  /** What is unfinished. */
  flush() {
    const lines = withWords(this.#pending);
    this.#pending = "";
    return lines;
  }
}

function withWords(text) {
  return text.split(/[\r\n]/).filter((line) => /[^ ]/.test(line));
}

/**
 * @param {HTMLElement} element
 * @param {import("./bench.js").Bench} bench
 * @param {object} language
 */
export function mount(element, bench, language) {
  let entries = [];
  let shown = 0; // of them: those before have their row
  let rows = []; // that could be folded into, the oldest first
  let until = Infinity; // of them: those before are shown; all, unless it is paused
  const streams = new Map(); // lines under way, of each thread and kind
  const kinds = new Set(Object.keys(KINDS));

  const list = make("ol", { class: "log-rows mono" });
  const log = make(
    "div",
    { class: "fill log", role: "log", "aria-live": "off", "aria-label": "Messages", tabindex: 0 },
    list,
  );
  const empty = make("p", { class: "dim hint" }, "Nothing has been said yet.");
  const search = make("input", {
    type: "search",
    placeholder: "Filter",
    "aria-label": "Show those with this text, or of this thread",
    input: rebuild,
  });
  const fold = make("input", { type: "checkbox", checked: true, change: rebuild });
  const pause = button("Pause", () => setPaused(!paused()), { "aria-pressed": "false" });
  const toggles = Object.entries(KINDS).map(([kind, [mark, name, title]]) => {
    const toggle = button(mark, () => toggleKind(kind, toggle), {
      "aria-pressed": "true",
      class: "toggle",
      title,
    });
    toggle.append(make("span", { class: "long" }, name));
    return toggle;
  });
  element.append(
    make(
      "div",
      { class: "toolbar", role: "group", "aria-label": "What is shown" },
      ...toggles,
      search,
      make("label", { title: "Equal ones are one row with their number" }, fold, "Fold"),
      pause,
      button("Clear", clear, { title: "Forgets what has come so far" }),
      enlarger(element),
    ),
    empty,
    log,
  );

  const update = soon(() => {
    const more = entries.length - until;
    pause.textContent = more > 0 ? `Go on (${count(more)} new)` : paused() ? "Go on" : "Pause";
    atEnd(log, () => {
      for (; shown < Math.min(until, entries.length); ++shown) show(entries[shown]);
      while (list.childElementCount > MOST_ROWS) list.firstElementChild.remove();
    });
    empty.hidden = entries.length > 0;
  }, EVERY);

  function add(entry) {
    entries.push(entry);
    if (entries.length > MOST_ENTRIES * 1.2) {
      const dropped = entries.length - MOST_ENTRIES;
      entries = entries.slice(dropped);
      shown = Math.max(0, shown - dropped);
      until = Math.max(0, until - dropped);
    }
    update();
  }

  function wanted({ kind, by, text }) {
    if (!kinds.has(kind)) return false;
    return `${by ?? ""} ${text}`.toLowerCase().includes(search.value.toLowerCase());
  }

  function show(entry) {
    if (!wanted(entry)) return;
    const { kind, by, text } = entry;
    const same =
      fold.checked && kind !== "note" ? rows.find((row) => isSame(row.entry, entry)) : null;
    if (same) return same.again(entry);
    const [mark] = KINDS[kind];
    const times = make("span", { class: "times" });
    list.append(
      make(
        "li",
        { class: `${kind} ${entry.bad ? "bad" : ""}` },
        make("time", {}, entry.t === undefined ? "" : seconds(entry.t)),
        make("span", { class: "by" }, by ?? ""),
        make("span", { class: "sign", "aria-hidden": "true" }, mark),
        make("span", { class: "text" }, ...words(text), times),
      ),
    );
    let seen = 1;
    rows.push({
      entry,
      again(last) {
        seen += 1;
        times.textContent = `×${count(seen)}, last ${seconds(last.t)}`;
      },
    });
    if (rows.length > FOLDED_WITHIN) rows.shift();
  }

  function rebuild() {
    list.replaceChildren();
    rows = [];
    shown = Math.max(0, entries.length - MOST_ENTRIES);
    update();
  }

  function toggleKind(kind, toggle) {
    if (!kinds.delete(kind)) kinds.add(kind);
    toggle.setAttribute("aria-pressed", kinds.has(kind));
    rebuild();
  }

  function paused() {
    return until !== Infinity;
  }

  function setPaused(now) {
    until = now ? entries.length : Infinity;
    pause.setAttribute("aria-pressed", now);
    update();
  }

  function clear() {
    entries = [];
    if (paused()) until = 0;
    rebuild();
  }

  function linesOf(by, kind) {
    const key = `${by} ${kind}`;
    if (!streams.has(key)) streams.set(key, new DebugLines());
    return streams.get(key);
  }

  // What a thread left unfinished stands before what it does next.
  function flush({ t, by }) {
    for (const kind of ["debug", "kernel"]) {
      for (const text of linesOf(by, kind).flush()) add({ t, by, kind, text: printable(text) });
    }
  }

  bench.addEventListener("event", ({ detail: event }) => {
    const { t, by, ev } = event;
    if (ev === "debug" || ev === "kernel") {
      for (const text of linesOf(by, ev).add(event.text)) {
        add({ t, by, kind: ev, text: printable(text) });
      }
    } else if (ev === "send" || ev === "post") {
      flush(event);
      const channels = 4 * (bench.moment?.header.fitted.filter(Boolean).length ?? 4);
      const text = messageInWords(language, event, channels);
      add({ t, by, kind: "message", text, bad: !event.ok });
    } else if (ev === "return") {
      flush(event);
    } else if (ev in NOTES) {
      if (ev === "rewound") streams.clear();
      const text = NOTES[ev] + (event.text ? `: ${printable(event.text)}` : "");
      add({ t, kind: "note", text });
    }
  });
  bench.addEventListener("missed", ({ detail: { count: missed, anew } }) => {
    streams.clear();
    const text = anew
      ? "another board: what was before is none of its"
      : `${count(missed)} events were missed`;
    add({ kind: "note", text });
  });
}

function isSame(a, b) {
  return a.text === b.text && a.kind === b.kind && a.by === b.by && a.bad === b.bad;
}

// The library's prefix stands back behind what it says.
function words(text) {
  const [, prefix, rest] = text.match(/^(\[\w+\]: )?(.*)$/s);
  return prefix ? [make("span", { class: "dim" }, prefix), rest] : [text];
}
