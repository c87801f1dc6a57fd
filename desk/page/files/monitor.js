// The monitor: the picture as it comes.

import { make, setText } from "./dom.js";
import { Overlay } from "./overlay.js";

/**
 * @param {HTMLElement} pane
 * @param {import("./bench.js").Bench} bench
 * @param {object} language
 */
export function mount(pane, bench, language) {
  const canvas = make("canvas", { width: 720, height: 480, role: "img", "aria-label": "Picture" });
  const windows = make("div", { class: "windows", role: "group", "aria-label": "Windows" });
  const card = make("div", {
    class: "card",
    role: "group",
    "aria-label": "Registers of the window",
    hidden: true,
  });
  const screen = make("div", { class: "screen" }, canvas, windows, card);
  const about = make("span", { class: "dim" });
  const mapping = make(
    "button",
    {
      type: "button",
      "aria-pressed": "false",
      title: "Which window belongs to which channel and registers",
    },
    "Windows",
  );
  mapping.addEventListener("click", () => {
    const on = mapping.getAttribute("aria-pressed") !== "true";
    mapping.setAttribute("aria-pressed", on);
    screen.classList.toggle("mapped", on);
    overlay.show();
  });
  const full = make(
    "button",
    {
      type: "button",
      title: "The picture on the whole screen",
      click: () => screen.requestFullscreen(),
    },
    "Full screen",
  );
  pane.querySelector("header").append(about, mapping, full);
  pane.append(make("div", { class: "stage" }, screen));

  // Pixels come from the processor and are read by it when they are saved: they stay with it.
  const context = canvas.getContext("2d", { alpha: false, willReadFrequently: true });
  const overlay = new Overlay(windows, card, bench, language, () =>
    screen.classList.contains("mapped"),
  );
  bench.addEventListener("moment", ({ detail: moment }) => {
    const { header, picture } = moment;
    if (canvas.width !== header.width || canvas.height !== header.height) {
      canvas.width = header.width;
      canvas.height = header.height;
    }
    context.putImageData(picture, 0, 0);
    const count = overlay.take(moment);
    setText(
      about,
      `${header.pal ? "PAL" : "NTSC"} ${header.width} × ${header.height}, ${count} window${count === 1 ? "" : "s"}`,
    );
  });
  bench.addEventListener("status", ({ detail }) =>
    screen.classList.toggle("old", !detail.connected),
  );
  bench.addEventListener("select", () => overlay.show());
}
