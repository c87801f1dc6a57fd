// One register in full: its value, its fields, and what can be done with it.

import { button } from "./controls.js";
import { make, setText } from "./dom.js";
import { CHIPS } from "./state.js";
import { fieldBits, fieldValue, hex, registerAt, registerLabel, seconds } from "./words.js";

export class RegisterDetails {
  #language;
  #history;
  #act;
  #shown = null;
  #facts = make("div", { class: "facts" });
  #actions = null;

  /**
   * @param {object} language
   * @param {import("./register_history.js").RegisterHistory} history
   * @param {(action: "watch"|"write"|"read", register: object) => void} act
   */
  constructor(language, history, act) {
    this.#language = language;
    this.#history = history;
    this.#act = act;
    this.element = make("section", { class: "register-details", "aria-label": "Register" });
  }

  /** What can be done with a register, and by which key. */
  actions(watched = false) {
    const watch = { action: "watch", text: watched ? "Do not watch" : "Watch", letter: "w" };
    if (this.#language.board !== "bench") return [watch];
    return [
      watch,
      { action: "write", text: "Break on write", letter: "b" },
      { action: "read", text: "Break on read", letter: "r" },
    ];
  }

  /** slave1 page 1 0x10 channel display 0 */
  name({ chip, page, number }) {
    const label = registerLabel(registerAt(this.#language, page, number));
    return `${CHIPS[chip]} page ${page} ${hex(number)} ${label}`;
  }

  show(place, watched) {
    const register = registerAt(this.#language, place.page, place.number);
    const value = this.#history.value(place);
    const before = this.#history.before(place);
    const key = JSON.stringify([place, value, before, watched]);
    if (key === this.#shown) return;
    this.#shown = key;
    // The buttons stay, and with them the focus.
    const actions = this.#actions ?? this.#makeActions();
    actions.place = place;
    setText(actions.watch, this.actions(watched)[0].text);
    this.#facts.replaceChildren(
      make(
        "h3",
        {},
        make(
          "span",
          { class: "where" },
          `${CHIPS[place.chip]} page ${place.page} ${hex(place.number)}`,
        ),
        make("span", { class: register ? "name" : "dim" }, registerLabel(register)),
      ),
      make(
        "p",
        { class: "value mono" },
        make("strong", {}, value === null ? "····" : hex(value)),
        make(
          "span",
          {},
          value === null ? "" : value.toString(2).padStart(8, "0").replace(/^..../, "$& "),
        ),
        make("span", { class: "dim" }, value === null ? "" : String(value)),
        make(
          "span",
          { class: "dim was" },
          before ? `was ${hex(before.value)} until ${seconds(before.time)} s` : "",
        ),
      ),
      ...this.#fields(register, value, before),
    );
  }

  #makeActions() {
    const actions = { place: null };
    const buttons = this.actions().map(({ action, text, letter }) => {
      const made = button(text, () => this.#act(action, actions.place), {
        title: `In the table: ${letter.toUpperCase()}`,
      });
      actions[action] = made;
      return made;
    });
    this.#actions = actions;
    this.element.append(this.#facts, make("div", { class: "toolbar" }, ...buttons));
    return actions;
  }

  #fields(register, value, before) {
    const fields = register?.fields ?? [];
    if (fields.length === 0 || value === null) return [];
    const rows = fields.map((field) => {
      const now = fieldValue(field, value);
      const old = before ? fieldValue(field, before.value) : now;
      return make(
        "tr",
        { class: now === old ? null : "differs" },
        make("td", { class: "mono dim" }, fieldBits(field)),
        make("th", { scope: "row" }, field.name),
        make("td", { class: "mono" }, now === old ? `${now}` : `${old} → ${now}`),
        make("td", { class: "dim" }, field.help ?? ""),
      );
    });
    return [make("table", { "aria-label": "Fields" }, make("tbody", {}, ...rows))];
  }
}
