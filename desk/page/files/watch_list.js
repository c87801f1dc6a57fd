// Registers that somebody keeps an eye on.

import { button } from "./controls.js";
import { make, setText } from "./dom.js";
import { CHIPS } from "./state.js";
import { fieldsInWords, hex, registerAt, registerLabel, seconds } from "./words.js";

const KEPT = "vexo.registers.watched";

export class WatchList {
  #language;
  #history;
  #onSelect;
  #rows = new Map(); // by index in the history
  #table;
  #body = make("tbody");
  #hint = make("p", { class: "dim hint" }, "None: choose a register, and Watch.");

  /**
   * @param {object} language
   * @param {import("./register_history.js").RegisterHistory} history
   * @param {(register: object) => void} onSelect
   */
  constructor(language, history, onSelect) {
    this.#language = language;
    this.#history = history;
    this.#onSelect = onSelect;
    const heads = ["Register", "Now", "Before", "At (s)"].map((name) =>
      make("th", { scope: "col" }, name),
    );
    this.#table = make(
      "table",
      { hidden: true, "aria-label": "Watched registers" },
      make("thead", {}, make("tr", {}, ...heads, make("td"))),
      this.#body,
    );
    this.element = make(
      "section",
      { class: "watches" },
      make("h3", {}, "Watched"),
      this.#hint,
      this.#table,
    );
    for (const register of kept()) this.toggle(register);
  }

  has(register) {
    return this.#rows.has(this.#history.index(register));
  }

  toggle(register) {
    const index = this.#history.index(register);
    if (this.#rows.has(index)) {
      this.#rows.get(index).row.remove();
      this.#rows.delete(index);
    } else {
      this.#rows.set(index, this.#add(register));
      this.update();
    }
    this.#table.hidden = this.#rows.size === 0;
    this.#hint.hidden = this.#rows.size > 0;
    keep([...this.#rows.values()].map((row) => row.register));
  }

  /** Registers have changed. */
  update() {
    for (const { register, now, old, time } of this.#rows.values()) {
      const value = this.#history.value(register);
      const before = this.#history.before(register);
      const fields = fieldsInWords(this.#describe(register), value ?? 0);
      setText(now, value === null ? "" : hex(value) + (fields && ` (${fields})`));
      setText(old, before ? hex(before.value) : "");
      setText(time, before ? seconds(before.time) : "");
    }
  }

  #describe({ page, number }) {
    return registerAt(this.#language, page, number);
  }

  #add(register) {
    const [now, old, time] = ["mono", "mono", "mono number"].map((name) =>
      make("td", { class: name }),
    );
    const name = `${CHIPS[register.chip]} ${register.page}:${hex(register.number).slice(2)}`;
    const label = registerLabel(this.#describe(register));
    const row = make(
      "tr",
      {},
      make(
        "th",
        { scope: "row" },
        button(`${name} ${label}`, () => this.#onSelect(register), { class: "quiet link" }),
      ),
      now,
      old,
      time,
      make(
        "td",
        {},
        button("×", () => this.toggle(register), {
          class: "quiet",
          "aria-label": `Do not watch ${name} ${label}`,
        }),
      ),
    );
    this.#body.append(row);
    return { register, row, now, old, time };
  }
}

function kept() {
  try {
    return JSON.parse(sessionStorage.getItem(KEPT)) ?? [];
  } catch {
    return [];
  }
}

function keep(registers) {
  try {
    sessionStorage.setItem(KEPT, JSON.stringify(registers));
  } catch {
    // Not kept by this browser.
  }
}
