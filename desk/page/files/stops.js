// The stops of the run: what `break` lists, and taking them away.

import { button, soon } from "./controls.js";
import { make } from "./dom.js";

export class Stops {
  #bench;
  #list = make("ul", { class: "mono" });
  #said = make("p", { class: "hint", role: "status" });
  #none = make("p", { class: "dim hint" }, "None: choose a register, and Break on write.");

  /** @param {import("./bench.js").Bench} bench */
  constructor(bench) {
    this.#bench = bench;
    const off = button("Remove all", () => this.add("break off"), { class: "quiet" });
    this.element = make(
      "section",
      { class: "stops" },
      make("h3", {}, "Stops ", off),
      this.#list,
      this.#none,
      this.#said,
    );
    // What others set is not told: a stop, and a look at the list, ask.
    const ask = soon(() => this.#ask());
    this.element.addEventListener("pointerenter", ask);
    bench.addEventListener("answer", ({ detail: { line } }) => /^\s*break\s/.test(line) && ask());
    bench.addEventListener("status", ({ detail }) => detail.connected && ask());
    bench.addEventListener("event", ({ detail: { ev } }) => {
      if (ev === "stopped" || ev === "rewound") ask();
    });
  }

  /** Sends a line that sets or removes stops. */
  async add(line) {
    const { result, text } = await this.#bench.send(line);
    this.#say(result === "done" ? "" : text);
  }

  #say(text) {
    this.#said.className = text ? "hint warn" : "hint";
    this.#said.textContent = text;
  }

  async #ask() {
    const { result, text } = await this.#bench.send("break");
    if (result !== "done") return;
    const rows = text
      .split("\n")
      .map((line) => line.match(/^\s*(\d+): (.*)$/))
      .filter(Boolean)
      .map(([, number, words]) => this.#row(number, words));
    this.element.querySelector("button").hidden = rows.length === 0;
    this.#none.hidden = rows.length > 0;
    this.#list.replaceChildren(...rows);
    if (rows.length === 0) this.#say("");
  }

  #row(number, words) {
    return make(
      "li",
      {},
      make("span", { class: "dim" }, `${number}:`),
      make("span", {}, words),
      button("×", () => this.add(`break off ${number}`), {
        class: "quiet",
        "aria-label": `Remove stop ${number}: ${words}`,
      }),
    );
  }
}
