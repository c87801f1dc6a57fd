// The host's calls as the feed tells them: record, result, bus cycles; one of them in full.

import { make } from "./dom.js";

const KEPT = 60;
const BYTES_A_ROW = 16;

const hex = (number, digits = 2) => number.toString(16).toUpperCase().padStart(digits, "0");

export class Calls {
  #language;
  #calls = []; // the newest first
  #open = []; // that have not returned, innermost last
  #chosen = null;
  #due = false;

  /**
   * @param {import("./bench.js").Bench} bench
   * @param {object} language
   */
  constructor(bench, language) {
    this.#language = language;
    this.rows = make("tbody", {});
    this.detail = make("div", { class: "records" });
    const head = ["Time", "Call", "Result", "Cycles", "Takes"].map((name, at) =>
      make("th", { scope: "col", class: at > 1 ? "number" : null }, name),
    );
    this.element = make(
      "div",
      { class: "calls" },
      make(
        "div",
        { class: "list", tabindex: "0", role: "region", "aria-label": "Calls" },
        make("table", {}, make("thead", {}, make("tr", {}, ...head)), this.rows),
      ),
      this.detail,
    );
    bench.addEventListener("event", ({ detail }) => this.#take(detail));
    bench.addEventListener("missed", () => (this.#open = []));
    this.#show();
  }

  #take(event) {
    if (event.by !== "host") return;
    if (event.ev === "call") this.#begin(event);
    if (event.ev === "return") this.#end(event);
  }

  #begin(event) {
    const call = { event, name: this.#nameOf(event), back: null };
    this.#open.push(call);
    this.#calls = [call, ...this.#calls].slice(0, KEPT);
    this.#chosen = null;
    this.#showSoon();
  }

  #end(event) {
    const at = this.#open.findLastIndex((one) => one.event.fn === event.fn);
    if (at < 0) return;
    this.#open[at].back = event;
    this.#open.length = at;
    this.#showSoon();
  }

  #nameOf({ fn, args = [], text }) {
    if (text !== undefined) return text.trim();
    const command = fn === "VEXOAPI_CommandProc" && this.#language.commands.find((one) => one.code === args[0]);
    if (command) return command.name;
    return `${fn.replace("VEXOAPI_", "")} ${args.join(" ")}`;
  }

  // A busy host makes thousands of calls a second: they are drawn once a frame.
  #showSoon() {
    if (this.#due) return;
    this.#due = true;
    requestAnimationFrame(() => {
      this.#due = false;
      this.#show();
    });
  }

  #show() {
    const chosen = this.#chosen ?? this.#calls[0];
    this.rows.replaceChildren(...this.#calls.map((call) => this.#row(call, call === chosen)));
    this.detail.replaceChildren(...(chosen ? this.#records(chosen) : [make("p", { class: "dim" }, "No call yet.")]));
  }

  #row(call, chosen) {
    const { event, back, name } = call;
    const value = back?.value;
    const choose = () => {
      this.#chosen = call;
      this.#show();
      this.rows.querySelector("button[aria-pressed=true]").focus();
    };
    const cell = (text, kind = "number mono") => make("td", { class: kind }, text);
    return make(
      "tr",
      { class: chosen ? "chosen" : null },
      cell(`${event.t} ms`, "mono dim"),
      make("td", {}, make("button", { type: "button", class: "quiet", "aria-pressed": chosen, click: choose }, name)),
      cell(back ? String(value ?? "–") : "…", value < 0 ? "number mono bad" : "number mono"),
      cell(back ? (back.cycle - event.cycle).toLocaleString("en") : ""),
      cell(back ? `${back.t - event.t} ms` : ""),
    );
  }

  #records({ event, back }) {
    const sent = bytesOf(event.record);
    const returned = bytesOf(back?.record);
    const most = 1 + Math.max(lastSet(sent), lastSet(returned), 7);
    const rows = [];
    if (sent.length > 0) rows.push(dump("Record sent", sent.slice(0, most), []));
    if (returned.length > 0) rows.push(dump("Returned", returned.slice(0, most), sent));
    return rows.length > 0 ? rows : [make("p", { class: "dim" }, "No record.")];
  }
}

const bytesOf = (text = "") => (text.match(/../g) ?? []).map((two) => parseInt(two, 16));

const lastSet = (bytes) => bytes.findLastIndex((byte) => byte !== 0);

// Bytes that are not what they were before are lit.
function dump(name, bytes, before) {
  const lines = [];
  for (let at = 0; at < bytes.length; at += BYTES_A_ROW) {
    const row = bytes.slice(at, at + BYTES_A_ROW).flatMap((byte, offset) => {
      const changed = before.length > 0 && before[at + offset] !== byte;
      return [make("span", { class: changed ? "lit" : null }, hex(byte)), " "];
    });
    lines.push(make("div", {}, make("span", { class: "dim" }, hex(at)), "  ", ...row));
  }
  return make("figure", { class: "dump" }, make("figcaption", { class: "dim" }, name), make("div", { class: "mono" }, ...lines));
}
