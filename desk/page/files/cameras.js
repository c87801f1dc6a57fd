// Sixteen plugs: what comes in at each, and a hand that walks by.

import { icon, make, rove, setText } from "./dom.js";
import { CHANNELS, CHANNEL_COLORS, CHIPS } from "./state.js";

const WALK = 1500; // ms
const NOISE = "M1.5 8h2l1.5-4 2 8.5 2-10 2 8 1.5-2.5h2";
const PERSON =
  "M9.5 3.2a1.2 1.2 0 1 1-2.4 0 1.2 1.2 0 0 1 2.4 0ZM8 5.5 7 10l2.2 2 .6 3M7 10l-2.6 5M8 6.2 5.4 7.6 5 9.6M8.2 6.6l1.6 2 2 .4";

/**
 * @param {HTMLElement} pane
 * @param {import("./bench.js").Bench} bench
 * @param {object} language
 * @param {import("./state.js").State} state
 */
export function mount(pane, bench, language, state) {
  const say = (line) => bench.send(line);
  const every = (standard, text) =>
    make("button", { type: "button", click: () => say(`camera all ${standard}`) }, text);
  pane
    .querySelector("header")
    .append(
      make(
        "div",
        { class: "toolbar", role: "group", "aria-label": "All cameras" },
        make("span", { class: "dim" }, "All"),
        make(
          "span",
          { class: "choice" },
          every("ntsc", "NTSC"),
          every("pal", "PAL"),
          every("off", "Off"),
        ),
      ),
    );
  const plugs = Array.from({ length: CHANNELS }, (_, channel) => new Plug(channel, bench, state));
  const grid = make("div", { class: "plugs" }, ...plugs.map((plug) => plug.element));
  pane.append(grid);
  const keepStop = rove(grid);
  const show = () => {
    for (const plug of plugs) plug.show();
    keepStop();
  };
  state.addEventListener("change", show);
  bench.addEventListener("select", show);
  show();
}

class Plug {
  #channel;
  #bench;
  #state;
  #walks = 0;

  constructor(channel, bench, state) {
    this.#channel = channel;
    this.#bench = bench;
    this.#state = state;
    const does = (what, title, ...inside) =>
      make(
        "button",
        { type: "button", class: what, "data-does": what, title, click: () => this[what]() },
        ...inside,
      );
    this.jack = does(
      "turn",
      "",
      make("span", { class: "name" }, String(channel)),
      make("span", { class: "jack" }),
    );
    this.norm = does("standard", "", "NTSC");
    this.noise = does("weaken", "", icon(NOISE));
    this.hand = does("walk", "", icon(PERSON));
    this.element = make(
      "div",
      { class: "plug", role: "group", "aria-label": `Camera ${channel}`, "data-channel": channel },
      this.jack,
      make("div", { class: "controls" }, this.norm, this.noise, this.hand),
      icon(PERSON, { class: "icon walker" }),
    );
    this.element.style.setProperty("--channel", CHANNEL_COLORS[channel]);
  }

  #is(what) {
    return this.#state.board[what][this.#channel];
  }

  #on() {
    return this.#is("plugged");
  }

  turn() {
    this.#bench.select({ channel: this.#channel, chip: this.#channel >> 2 });
    this.#bench.send(`camera ${this.#channel} ${this.#on() ? "off" : this.#is("standards")}`);
  }

  standard() {
    this.#bench.send(`camera ${this.#channel} ${this.#is("standards") === "pal" ? "ntsc" : "pal"}`);
  }

  weaken() {
    this.#bench.send(`weak ${this.#channel} ${this.#is("weak") ? "off" : "on"}`);
  }

  // Somebody who walks by while another one still does keeps the motion on.
  walk() {
    this.#walks += 1;
    this.#bench.send(`motion ${this.#channel} on`);
    setTimeout(() => {
      this.#walks -= 1;
      if (this.#walks === 0) this.#bench.send(`motion ${this.#channel} off`);
    }, WALK);
  }

  show() {
    const channel = this.#channel;
    const fitted = this.#state.has(channel);
    const on = this.#on();
    const standard = this.#is("standards");
    const words = (button, label, pressed) => {
      button.disabled = !fitted;
      button.title = fitted ? label : `${CHIPS[channel >> 2]} is not fitted`;
      button.setAttribute("aria-label", `Camera ${channel}: ${label}`);
      if (pressed !== null) button.setAttribute("aria-pressed", pressed);
    };
    words(this.jack, on ? "plugged, pull it" : "pulled, plug it", on);
    words(
      this.norm,
      `${standard.toUpperCase()}, switch to ${standard === "pal" ? "NTSC" : "PAL"}`,
      null,
    );
    words(this.noise, "weak signal", this.#is("weak"));
    words(this.hand, "walk by", this.#is("motion"));
    this.norm.disabled = !fitted || !on;
    setText(this.norm, standard.toUpperCase());
    const { classList } = this.element;
    classList.toggle("on", fitted && on);
    classList.toggle("weak", this.#is("weak"));
    classList.toggle("moving", this.#is("motion"));
    classList.toggle("selected", this.#bench.selection.channel === channel);
  }
}
