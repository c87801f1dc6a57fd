// Controls that several panes have, and when they draw.

import { make } from "./dom.js";

/**
 * A button of a toolbar.
 * @param {string} text what it shows
 * @param {() => void} click
 * @param {Object<string, *>} [properties]
 */
export function button(text, click, properties = {}) {
  return make("button", { type: "button", click, ...properties }, text);
}

/**
 * Buttons side by side of which one is pressed.
 * @param {string} label what is chosen, for screen readers
 * @param {[string, string][]} options value and text of each
 * @param {string} value the first one
 * @param {(value: string) => void} changed
 * @returns {{element: HTMLElement, buttons: HTMLElement[], set: (value: string) => void}} `set`
 *     tells nobody
 */
export function choice(label, options, value, changed) {
  const buttons = options.map(([option, text]) =>
    button(text, () => {
      set(option);
      changed(option);
    }),
  );
  const element = make("div", { class: "choice", role: "group", "aria-label": label }, ...buttons);
  function set(chosen) {
    options.forEach(([option], i) => buttons[i].setAttribute("aria-pressed", option === chosen));
  }
  set(value);
  return { element, buttons, set };
}

/**
 * Calls something once before the next picture of the screen, however often it is asked for; in a
 * page that is not seen a second later.
 * @param {() => void} work
 * @param {number} [pause] ms from one time to the next, at least
 * @returns {() => void} asks for it
 */
export function soon(work, pause = 0) {
  let asked = false;
  let last = -pause;
  function run() {
    asked = false;
    last = performance.now();
    work();
  }
  return () => {
    if (asked) return;
    asked = true;
    const wait = document.hidden ? 1000 : last + pause - performance.now();
    if (document.hidden) setTimeout(run, wait);
    else if (wait > 0) setTimeout(() => requestAnimationFrame(run), wait);
    else requestAnimationFrame(run);
  };
}

/**
 * Keeps what scrolls at its end, unless somebody has scrolled up to read there.
 * @param {HTMLElement} scrolled
 * @param {() => void} change what makes it longer
 */
export function atEnd(scrolled, change) {
  const end = scrolled.scrollHeight - scrolled.scrollTop - scrolled.clientHeight < 24;
  change();
  if (end) scrolled.scrollTop = scrolled.scrollHeight;
}

/**
 * A button that lets a pane have the whole page, and gives it back; Escape does so, too.
 * @param {HTMLElement} pane
 */
export function enlarger(pane) {
  const set = (large) => {
    pane.classList.toggle("enlarged", large);
    toggle.setAttribute("aria-pressed", large);
  };
  const toggle = button("⤢", () => set(!pane.classList.contains("enlarged")), {
    "aria-label": "Whole page",
    title: "The whole page for this pane (Escape: back)",
    "aria-pressed": "false",
  });
  pane.addEventListener("keydown", (key) => {
    if (key.key === "Escape" && !key.defaultPrevented) set(false);
  });
  return toggle;
}
