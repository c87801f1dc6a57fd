// The host's calls as the feed tells them: result and bus cycles of each, and the record of one, as
// it was sent and as it came back.

import { atEnd, soon } from "./controls.js";
import { make } from "./dom.js";
import {
  bytesOf,
  callInWords,
  count,
  failed,
  hex,
  recordInWords,
  resultInWords,
  seconds,
} from "./words.js";

const KEPT = 60;
const BYTES_A_ROW = 16;
const LEAST_BYTES = 8; // of a record, that are shown

export class Calls {
  #language;
  #calls = [];
  #open = []; // that have not returned, the innermost last
  #chosen = null;
  #showSoon = soon(() => this.#show());

  /**
   * @param {import("./bench.js").Bench} bench
   * @param {object} language
   */
  constructor(bench, language) {
    this.#language = language;
    const head = ["Time", "Call", "Result", "Cycles", "Takes"].map((name, at) =>
      make("th", { scope: "col", class: at > 2 ? "number" : null }, name),
    );
    this.rows = make("tbody", {});
    this.list = make(
      "div",
      { class: "list", tabindex: "0", role: "region", "aria-label": "Calls" },
      make("table", {}, make("thead", {}, make("tr", {}, ...head)), this.rows),
    );
    this.records = make("div", { class: "records" });
    this.element = make("div", { class: "calls" }, this.list, this.records);
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
    const call = { event, back: null };
    this.#open.push(call);
    this.#calls = [...this.#calls, call].slice(-KEPT);
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

  #show() {
    const chosen = this.#chosen ?? this.#calls.at(-1);
    atEnd(this.list, () => {
      this.rows.replaceChildren(...this.#calls.map((call) => this.#row(call, call === chosen)));
    });
    const shown = chosen ? this.#record(chosen) : [make("p", { class: "dim" }, "No call yet.")];
    this.records.replaceChildren(...shown);
  }

  #row(call, chosen) {
    const { event, back } = call;
    const choose = () => {
      this.#chosen = call;
      this.#show();
      this.rows.querySelector("[aria-pressed=true]").focus();
    };
    const cell = (text, kind = "number mono") => make("td", { class: kind }, text);
    const name = callInWords(this.#language, event);
    return make(
      "tr",
      {},
      cell(seconds(event.t), "mono dim"),
      make(
        "td",
        {},
        make(
          "button",
          { type: "button", class: "quiet", "aria-pressed": chosen, title: name, click: choose },
          name,
        ),
      ),
      cell(back ? resultInWords(back) : "runs", back && failed(back) ? "bad" : ""),
      cell(back ? count(back.cycle - event.cycle) : ""),
      cell(back ? `${back.t - event.t} ms` : ""),
    );
  }

  #record({ event, back }) {
    const sent = bytesOf(event.record);
    const returned = bytesOf(back?.record);
    if (sent.length + returned.length === 0) return [make("p", { class: "dim" }, "No record.")];
    const fields = recordInWords(this.#language, event, event.record, back?.record);
    const shown = 1 + Math.max(lastSet(sent), lastSet(returned), LEAST_BYTES - 1);
    const parts = fields.length > 0 ? [fieldTable(fields)] : [];
    if (sent.length > 0) parts.push(dump("Record sent", sent.slice(0, shown), null));
    if (returned.length === 0) return parts;
    const same = returned.every((byte, at) => byte === sent[at]);
    parts.push(
      same
        ? make("p", { class: "dim" }, "It came back unchanged.")
        : dump("Record returned", returned.slice(0, shown), sent),
    );
    return parts;
  }
}

const lastSet = (bytes) => bytes.findLastIndex((byte) => byte !== 0);

function fieldTable(fields) {
  const rows = fields.map(({ name, help, before, after }) => {
    const changed = after !== null && after !== before;
    return make(
      "tr",
      { title: help },
      make("th", { scope: "row" }, name),
      make("td", { class: "mono" }, before),
      make("td", { class: "mono" }, changed ? make("span", { class: "lit" }, after) : ""),
    );
  });
  return make("table", { class: "field-table" }, make("tbody", {}, ...rows));
}

// Bytes that are not what they were before are lit.
function dump(name, bytes, before) {
  const lines = [];
  for (let at = 0; at < bytes.length; at += BYTES_A_ROW) {
    const row = [...bytes.slice(at, at + BYTES_A_ROW)].flatMap((byte, offset) => {
      const changed = before !== null && before[at + offset] !== byte;
      return [" ", make("span", { class: changed ? "lit" : null }, hex(byte).slice(2))];
    });
    lines.push(make("div", {}, make("span", { class: "dim" }, hex(at).slice(2), " "), ...row));
  }
  return make(
    "figure",
    {},
    make("figcaption", { class: "dim" }, name),
    make("div", { class: "mono" }, ...lines),
  );
}
