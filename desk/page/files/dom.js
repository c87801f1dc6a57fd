// Elements with less to write. Texts become text nodes, whatever is in them.

/**
 * An element: make("button", { class: "quiet", onclick: add }, "Add").
 * @param {string} tag
 * @param {object} attributes `on...` are listeners; false, null and undefined are left out, true is
 *     an attribute without a value
 * @param {...(Node|string|number|null)} children
 * @returns {HTMLElement}
 */
export function make(tag, attributes = {}, ...children) {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) {
    if (value === false || value === null || value === undefined) continue;
    if (name.startsWith("on")) element.addEventListener(name.slice(2), value);
    else element.setAttribute(name, value === true ? "" : value);
  }
  element.append(...children.filter((child) => child !== null && child !== undefined));
  return element;
}

/**
 * A button of a toolbar.
 * @param {string} text what it shows
 * @param {() => void} onclick
 * @param {object} attributes such as a title
 */
export function button(text, onclick, attributes = {}) {
  return make("button", { type: "button", onclick, ...attributes }, text);
}

/**
 * Buttons side by side of which one is pressed.
 * @param {string} label what is chosen, for screen readers
 * @param {[string, string][]} options value and text of each
 * @param {string} value the first one
 * @param {(value: string) => void} onchange
 * @returns {{element: HTMLElement, set: (value: string) => void}} `set` tells nobody
 */
export function choice(label, options, value, onchange) {
  const buttons = options.map(([option, text]) =>
    button(text, () => {
      set(option);
      onchange(option);
    }),
  );
  const element = make("div", { class: "choice", role: "group", "aria-label": label }, ...buttons);
  function set(chosen) {
    options.forEach(([option], i) => buttons[i].setAttribute("aria-pressed", option === chosen));
  }
  set(value);
  return { element, set };
}

/**
 * Calls something once before the next picture of the screen, however often it is asked for; also
 * in a page that is not seen, there a second later.
 * @param {() => void} work
 * @returns {() => void} asks for it
 */
export function soon(work) {
  let asked = false;
  function run() {
    if (!asked) return;
    asked = false;
    work();
  }
  return () => {
    if (asked) return;
    asked = true;
    if (document.hidden) setTimeout(run, 1000);
    else requestAnimationFrame(run);
  };
}
