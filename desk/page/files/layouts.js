// Layouts as buttons: one row for every command that has a split mode and a list of channels.

import { make, rove } from "./dom.js";
import { CHANNELS } from "./state.js";

const SVG = "http://www.w3.org/2000/svg";

// A window each, in parts of the screen: x, y, width and height, of so many columns and rows.
const grid = (many) => ({
  of: many,
  windows: Array.from({ length: many * many }, (_, at) => [at % many, Math.floor(at / many), 1, 1]),
});
const around = (many, large) => ({
  of: many,
  windows: [
    [0, 0, large, large],
    ...grid(many).windows.filter(([x, y]) => x >= large || y >= large),
  ],
});
const SHAPES = {
  full: grid(1),
  4: grid(2),
  6: around(3, 2),
  8: around(4, 3),
  9: grid(3),
  13: {
    of: 4,
    windows: [
      [1, 1, 2, 2],
      ...grid(4).windows.filter(([x, y]) => x < 1 || x > 2 || y < 1 || y > 2),
    ],
  },
  16: grid(4),
};

function drawing(name) {
  const svg = document.createElementNS(SVG, "svg");
  const set = (element, values) => {
    for (const [key, value] of Object.entries(values)) element.setAttribute(key, value);
    return element;
  };
  set(svg, { class: "layout", viewBox: "0 0 28 21", "aria-hidden": "true" });
  const { of, windows } = SHAPES[name] ?? { of: 1, windows: [] };
  for (const [x, y, width, height] of windows) {
    svg.append(
      set(document.createElementNS(SVG, "rect"), {
        x: (x * 28) / of + 0.6,
        y: (y * 21) / of + 0.6,
        width: (width * 28) / of - 1.2,
        height: (height * 21) / of - 1.2,
      }),
    );
  }
  return svg;
}

const pictures = (name) => (name === "full" ? 1 : Number(name));

/**
 * @param {(line: string) => void} say
 * @param {import("./bench.js").Bench} bench
 * @param {object} language
 */
export function layoutRows(say, bench, { commands }) {
  const first = make("input", {
    id: "first-channel",
    type: "number",
    min: 0,
    max: CHANNELS - 1,
    value: 0,
    title: "A layout shows the page on which this channel is: of 4 windows 0-3, 4-7, ...",
  });
  const option = make("input", { type: "checkbox", id: "layout-option" });
  bench.addEventListener("select", ({ detail: { channel } }) => {
    if (channel !== null) first.value = channel;
  });
  const channels = (name) => {
    const channel = Math.min(CHANNELS - 1, Math.max(0, Math.trunc(first.valueAsNumber) || 0));
    const from = channel - (channel % pictures(name));
    const last = Math.min(CHANNELS, from + pictures(name)) - 1;
    return last > from ? `${from}-${last}` : `${from}`;
  };
  const rows = commands.filter(
    ({ fields }) =>
      fields.some((one) => one.name === "mode") && fields.some((one) => one.name === "channels"),
  );
  const box = make("div", { class: "layouts" });
  for (const { name: command, help, fields } of rows) {
    const hasOption = fields.some((one) => one.name === "option");
    const buttons = fields
      .find((one) => one.name === "mode")
      .values.map(({ name }) => {
        const line = () =>
          [
            `command ${command} mode ${name}`,
            hasOption && option.checked ? "option 1" : "",
            `channels ${channels(name)}`,
          ]
            .filter(Boolean)
            .join(" ");
        const button = make(
          "button",
          {
            type: "button",
            "data-command": command,
            "data-mode": name,
            "aria-label": `${command} ${name}`,
            click: () => say(line()),
          },
          drawing(name),
          make("span", {}, name),
        );
        const tell = () => (button.title = line());
        button.addEventListener("pointerenter", tell);
        button.addEventListener("focus", tell);
        return button;
      });
    box.append(
      make("h3", { title: help }, command),
      make(
        "div",
        { class: "modes", role: "group", "aria-label": `${command}: ${help}` },
        ...buttons,
      ),
    );
  }
  rove(box);
  return make(
    "section",
    { "aria-label": "Layouts" },
    box,
    make(
      "div",
      { class: "toolbar" },
      make("label", { for: "first-channel" }, "page with channel"),
      first,
      option,
      make(
        "label",
        {
          for: "layout-option",
          title: "play-split full: the picture fills the screen, else it is centred",
        },
        "play-split full fills the screen",
      ),
    ),
  );
}
