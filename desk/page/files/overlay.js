// Which window of the picture belongs to which channel and registers: buttons over the windows, and a
// card with the registers of one of them.

import { make, setText } from "./dom.js";
import { seenWindows } from "./seen_windows.js";
import { CHANNEL_COLORS, CHIPS } from "./state.js";
import { registersOf } from "./window_registers.js";
import { fieldsInWords, hex, registerLabel } from "./words.js";

const LIT = 1500; // ms

export class Overlay {
  #windows; // the place of the buttons
  #card;
  #bench;
  #language;
  #mapped;
  #places = ""; // of the windows, as they were drawn last
  #seen = []; // windows, the topmost first
  #moment = null;
  #buttons = new Map(); // by channel
  #looked = null; // channel of the window that is pointed at
  #registers = null;
  #changed = new Map(); // when, by place among all registers

  /**
   * @param {HTMLElement} windows where the buttons are put
   * @param {HTMLElement} card
   * @param {import("./bench.js").Bench} bench
   * @param {object} language
   * @param {() => boolean} mapped whether all is told, or only what is pointed at
   */
  constructor(windows, card, bench, language, mapped) {
    this.#windows = windows;
    this.#card = card;
    this.#bench = bench;
    this.#language = language;
    this.#mapped = mapped;
  }

  /**
   * @param {import("./bench.js").Moment} moment
   * @returns {number} how many windows are seen
   */
  take(moment) {
    this.#moment = moment;
    this.#noteChanges(moment.registers);
    const places = JSON.stringify([moment.header.windows, moment.header.height]);
    if (places !== this.#places) {
      this.#places = places;
      this.#seen = seenWindows(moment.header.windows);
      this.#place(moment.header);
    }
    if (this.#mapped()) this.show();
    return this.#seen.length;
  }

  #noteChanges(registers) {
    const now = performance.now();
    const before = this.#registers;
    this.#registers = registers;
    if (!before) return;
    for (let at = 0; at < registers.length; at += 1) {
      if (registers[at] !== before[at]) this.#changed.set(at, now);
    }
    for (const [at, when] of this.#changed) if (now - when > LIT) this.#changed.delete(at);
  }

  #isLit({ chip, page, numbers }) {
    return numbers.some((number) => this.#changed.has((chip * 3 + page) * 256 + number));
  }

  // Buttons stay what they are while their channel is shown: one that has the focus keeps it.
  #place({ width, height }) {
    const windows = this.#seen;
    const gone = new Set(this.#buttons.keys());
    windows.forEach((window, fromTop) => {
      gone.delete(window.channel);
      const button = this.#buttons.get(window.channel) ?? this.#add(window.channel);
      const { style } = button;
      style.left = `${(window.left / width) * 100}%`;
      style.top = `${(window.top / height) * 100}%`;
      style.width = `${(Math.max(0, window.right - window.left) / width) * 100}%`;
      style.height = `${(Math.max(0, window.bottom - window.top) / height) * 100}%`;
      style.zIndex = windows.length - fromTop;
      setText(button.firstChild, this.#label(window));
      button.setAttribute("aria-label", `Channel ${window.channel}, ${this.#label(window)}`);
    });
    for (const channel of gone) {
      this.#buttons.get(channel).remove();
      this.#buttons.delete(channel);
    }
  }

  #add(channel) {
    const look = () => this.#look(channel);
    const away = () => this.#look(null);
    const button = make(
      "button",
      {
        type: "button",
        "data-channel": channel,
        mouseenter: look,
        mouseleave: away,
        focus: look,
        blur: away,
        click: () => this.#bench.select({ channel, chip: channel >> 2 }),
      },
      make("span", {}),
    );
    button.style.setProperty("--channel", CHANNEL_COLORS[channel]);
    this.#buttons.set(channel, button);
    this.#windows.append(button);
    return button;
  }

  #label({ channel, chip, position, front, frozen, shows, picture, signal }) {
    const what = { tape: `tape ${picture}`, blank: "blanked", nothing: "nothing" }[shows];
    const more = [
      what,
      shows === "camera" && !signal && "no signal",
      frozen && "frozen",
      !front && "behind",
    ];
    return [`${channel} · ${CHIPS[chip]} ${position}`, ...more.filter(Boolean)].join(" · ");
  }

  #look(channel) {
    this.#looked = channel;
    this.show();
  }

  /** Shows what is selected, what is lit, and the card of the window that is looked at. */
  show() {
    const mapped = this.#mapped();
    const { channel: selected } = this.#bench.selection;
    for (const [channel, button] of this.#buttons) {
      button.setAttribute("aria-pressed", channel === selected);
      const registers = mapped ? registersOf(this.#language, channel) : [];
      button.classList.toggle(
        "changed",
        registers.some((one) => this.#isLit(one)),
      );
    }
    const window = this.#seen.find((one) => one.channel === this.#looked);
    this.#card.hidden = !mapped || !window;
    if (!this.#card.hidden) this.#fill(window);
  }

  #fill(window) {
    const { width, height } = this.#moment.header;
    this.#card.classList.toggle("right", window.left + window.right < width);
    this.#card.classList.toggle("low", window.top + window.bottom < height);
    const rows = registersOf(this.#language, window.channel).map((one) => {
      const bytes = one.numbers.map((number) => this.#byte(one, number));
      const place = `${one.page} ${hex(one.numbers[0])}`;
      const values = bytes.map((byte) => hex(byte).slice(2)).join(" ");
      return [place, registerLabel(one), values, fieldsInWords(one, bytes[0]), this.#isLit(one)];
    });
    const edges = `x ${window.left}–${window.right}, y ${window.top}–${window.bottom} of ${width} × ${height}`;
    const text = JSON.stringify([window.channel, edges, rows]);
    if (this.#card.dataset.shows === text) return;
    this.#card.dataset.shows = text;
    const head = make(
      "h3",
      {},
      `Channel ${window.channel}: ${CHIPS[window.chip]}, position ${window.position}`,
    );
    const table = make(
      "table",
      {},
      ...rows.map(([place, name, bytes, fields, lit]) =>
        make(
          "tr",
          { class: lit ? "lit" : null },
          make("td", { class: "mono dim" }, place),
          make("th", { scope: "row" }, name),
          make("td", { class: "mono" }, bytes),
          make("td", { class: "dim" }, fields),
        ),
      ),
    );
    this.#card.replaceChildren(head, make("p", { class: "mono dim" }, edges), table);
  }

  #byte({ chip, page }, number) {
    return this.#moment.registers[(chip * 3 + page) * 256 + number];
  }
}
