// A thing of the time line in full; a call with its record before and after, its result, what came
// while it ran, and its register accesses by name.

import { button } from "./controls.js";
import { make } from "./dom.js";
import {
  bytesOf,
  callInWords,
  count,
  failed,
  hex,
  messageInWords,
  printable,
  recordInWords,
  resultInWords,
  seconds,
} from "./words.js";

const MOST_INSIDE = 60;

/** A thing in a few words. */
export function thingInWords(language, { event, times }) {
  switch (event.ev) {
    case "call":
      return callInWords(language, event);
    case "send":
    case "post":
      return messageInWords(language, event);
    case "debug":
    case "kernel":
      return printable(event.text.replace(/\s+/g, " ").trim());
    case "line":
      return printable(event.text);
    case "sleep":
    case "wait":
      return `${event.ev} ${event.ms} ms${times > 1 ? ` and on, ${count(times)} times` : ""}`;
    case "lock":
    case "unlock":
      return `${event.ev} ${event.name}${event.ok ? "" : ", failed"}`;
    case "open":
    case "close":
      return `${event.ev} ${event.name}${event.ok ? "" : ", failed"}`;
    case "ioctl":
      return `${event.name} request ${hex(event.code)}${event.ok ? "" : ", failed"}`;
    case "nvram":
      return `NVRAM ${event.op} ${event.data ?? ""}${event.ok ? "" : ", failed"}`;
    case "map":
      return `map ${hex(event.physical, 8)}${event.ok ? "" : ", failed"}`;
    case "unmap":
      return `unmap ${event.window}`;
    case "thread":
      return "worker thread";
    case "missed":
      return `${count(event.count)} events were missed`;
    case "stopped":
      return `stopped: ${printable(event.text ?? "")}`;
    case "rewound":
      return "time was turned back to here";
    default:
      return event.ev;
  }
}

export class CallDetails {
  #bench;
  #language;
  #model;
  #shown = 0;

  /**
   * @param {import("./bench.js").Bench} bench
   * @param {object} language
   * @param {import("./timeline_model.js").TimelineModel} model
   * @param {(thing: object) => void} zoom to a thing
   * @param {() => void} close
   */
  constructor(bench, language, model, zoom, close) {
    this.#bench = bench;
    this.#language = language;
    this.#model = model;
    this.zoom = zoom;
    this.close = close;
    this.element = make("section", {
      class: "call-details",
      "aria-label": "What is selected",
      hidden: true,
    });
  }

  /** @param {object|null} thing */
  show(thing) {
    this.#shown = thing?.id ?? 0;
    this.element.hidden = !thing;
    if (!thing) return;
    this.element.scrollTop = 0;
    const call = thing.event.ev === "call";
    this.element.replaceChildren(
      make(
        "header",
        {},
        make("h3", {}, thingInWords(this.#language, thing)),
        button("Zoom to it", () => this.zoom(thing), { class: "quiet" }),
        button("×", this.close, { class: "quiet", "aria-label": "Back to the list" }),
      ),
      this.#facts(thing),
      ...(call ? this.#call(thing) : [this.#members(thing)]),
    );
  }

  focus() {
    this.element.querySelector("button").focus();
  }

  #facts({ from, to, by, event, result }) {
    const end = to ?? this.#model.now;
    const rows = [];
    const length = end.t - from.t;
    const cycles = end.cycle - from.cycle;
    if (event.ev === "call") {
      const text = result ? resultInWords(result) : to ? "not known" : "has not come back";
      rows.push(["Result", text, result && failed(result) ? "bad" : ""]);
      rows.push([
        "Call",
        `${event.fn}(${(event.args ?? []).map((arg) => hex(arg, 1)).join(", ")})`,
      ]);
    }
    rows.push([
      "Time",
      `${seconds(from.t)} s${length > 0 ? ` to ${seconds(end.t)} s, ${count(length)} ms` : ""}`,
    ]);
    rows.push([
      "Bus cycles",
      cycles > 0
        ? `${count(cycles)}, from ${count(from.cycle)} on`
        : `none, at ${count(from.cycle)}`,
    ]);
    if (by) rows.push(["Thread", by]);
    return make(
      "dl",
      {},
      ...rows.flatMap(([name, text, kind]) => [
        make("dt", {}, name),
        make("dd", { class: kind || null }, text),
      ]),
    );
  }

  // All that an event of another kind has.
  #members({ event }) {
    const known = new Set(["event", "cycle", "t", "by", "ev"]);
    const rows = Object.entries(event).filter(([name]) => !known.has(name));
    return make(
      "table",
      {},
      make(
        "tbody",
        {},
        ...rows.map(([name, value]) =>
          make(
            "tr",
            {},
            make("th", { scope: "row" }, name),
            make("td", { class: "mono" }, printable(String(value))),
          ),
        ),
      ),
    );
  }

  #call(thing) {
    const { event, result } = thing;
    return [
      ...(event.text === undefined
        ? []
        : [make("h4", {}, "Line"), make("pre", { class: "mono" }, printable(event.text))]),
      ...this.#record(event, result),
      ...this.#accesses(thing),
      ...this.#inside(thing),
    ];
  }

  #record(event, result) {
    if (event.record === undefined) return [];
    const fields = recordInWords(this.#language, event, event.record, result?.record);
    const rows = fields.map(({ name, help, before, after }) => {
      const changed = after !== null && after !== before;
      return make(
        "tr",
        { class: changed ? "differs" : null },
        make("th", { scope: "row", title: help }, name),
        make("td", { class: "mono" }, before),
        make("td", { class: "mono" }, changed ? `→ ${after}` : ""),
      );
    });
    return [
      make("h4", {}, "Record"),
      ...(rows.length > 0 ? [make("table", {}, make("tbody", {}, ...rows))] : []),
      this.#bytes(event.record, result?.record),
    ];
  }

  // Sixteen bytes a line, up to the last that is not 0; what the call has written is underlined.
  #bytes(before, after) {
    const old = bytesOf(before);
    const now = typeof after === "string" ? bytesOf(after) : old;
    const text = (byte) => hex(byte).slice(2);
    const written = (i) => i < now.length && now[i] !== old[i];
    const last = old.findLastIndex((byte, i) => byte !== 0 || written(i));
    const end = Math.min(Math.ceil((last + 1) / 16 || 1) * 16, old.length);
    const lines = [];
    for (let first = 0; first < end; first += 16) {
      const line = make("div", {}, make("span", { class: "dim" }, text(first)));
      for (let i = first; i < Math.min(first + 16, end); ++i) {
        line.append(" ");
        if (written(i)) line.append(make("ins", { title: `was ${hex(old[i])}` }, text(now[i])));
        else line.append(text(old[i]));
      }
      lines.push(line);
    }
    const notes = [];
    if (old.some((_, i) => written(i))) notes.push("underlined: what the call has written");
    if (end < old.length) notes.push("the rest is 0");
    return make(
      "div",
      { class: "bytes mono", role: "group", "aria-label": "The record's bytes" },
      ...lines,
      ...(notes.length > 0 ? [make("p", { class: "dim" }, notes.join("; "))] : []),
    );
  }

  // Texts, messages and other things between the call's begin and its end.
  #inside({ id, from, to }) {
    const end = to ?? this.#model.now;
    const things = this.#model
      .things(["calls", "pauses", "messages", "texts", "drivers", "threads"])
      .filter((other) => other.id > id && other.from.n >= from.n && other.from.n < end.n)
      .filter(({ event }) => event.by === "host" || event.ev !== "wait");
    if (things.length === 0) return [];
    const rows = things
      .slice(0, MOST_INSIDE)
      .map((other) =>
        make(
          "li",
          {},
          make("span", { class: "dim" }, `${seconds(other.from.t)} ${other.by} `),
          thingInWords(this.#language, other),
        ),
      );
    const left = things.length - rows.length;
    if (left > 0) rows.push(make("li", { class: "dim" }, `${count(left)} more`));
    return [make("h4", {}, "While it ran"), make("ol", { class: "inside mono" }, ...rows)];
  }

  #accesses({ id, from, to }) {
    if (!to || to.cycle <= from.cycle) return [];
    const text = make("pre", { class: "accesses", tabindex: 0, "aria-label": "Register accesses" });
    text.textContent = "…";
    this.#bench.send(`accesses ${from.cycle + 1} ${to.cycle}`).then((answer) => {
      if (this.#shown !== id) return;
      text.textContent = answer.text.trim() || "none reached a register";
      text.classList.toggle("warn", answer.result !== "done");
    });
    return [make("h4", {}, "Register accesses"), text];
  }
}
