// Elements, and moving among them with the arrow keys.

const SVG = "http://www.w3.org/2000/svg";

/**
 * Makes an element. Properties that are functions are listeners (`click: () => ...`), true and false
 * set an attribute or leave it out; children that are strings become text, never markup.
 * @param {string} tag
 * @param {Object<string, *>} [properties]
 * @param {...(Node|string)} children
 */
export function make(tag, properties = {}, ...children) {
  const element = document.createElement(tag);
  setAll(element, properties);
  element.append(...children);
  return element;
}

/**
 * A drawing of lines in a square of 16 units, hidden from screen readers.
 * @param {string} path
 * @param {Object<string, *>} [properties]
 */
export function icon(path, properties = {}) {
  const svg = document.createElementNS(SVG, "svg");
  setAll(svg, { class: "icon", viewBox: "0 0 16 16", "aria-hidden": "true", ...properties });
  const line = document.createElementNS(SVG, "path");
  line.setAttribute("d", path);
  svg.append(line);
  return svg;
}

function setAll(element, properties) {
  for (const [name, value] of Object.entries(properties)) {
    if (typeof value === "function") element.addEventListener(name, value);
    else if (value === true) element.setAttribute(name, "");
    else if (value !== false && value != null) element.setAttribute(name, value);
  }
}

/** Sets the text where it differs, so that what stays is not drawn or read again. */
export function setText(element, text) {
  if (element.textContent !== text) element.textContent = text;
}

/**
 * One stop of the tab key for all that `selector` finds in `container`; the arrow keys go to the
 * nearest one in their direction, Home and End to the first and the last.
 * @param {HTMLElement} container
 * @param {string} [selector]
 */
export function rove(container, selector = "button") {
  const all = () => [...container.querySelectorAll(selector)].filter((one) => !one.disabled);
  const stop = (at) => {
    for (const one of container.querySelectorAll(selector)) one.tabIndex = one === at ? 0 : -1;
  };
  stop(all()[0]);
  container.addEventListener("focusin", ({ target }) => {
    if (target.matches(selector)) stop(target);
  });
  container.addEventListener("keydown", (event) => {
    if (!event.target.matches(selector)) return;
    const to = towards(event.key, event.target, all());
    if (!to) return;
    event.preventDefault();
    to.focus();
  });
  /** After what was the stop may have been disabled or taken away. */
  return () => {
    const now = all();
    if (!now.some((one) => one.tabIndex === 0)) stop(now[0]);
  };
}

const WAYS = { ArrowLeft: [-1, 0], ArrowRight: [1, 0], ArrowUp: [0, -1], ArrowDown: [0, 1] };

function towards(key, from, all) {
  if (key === "Home") return all[0];
  if (key === "End") return all.at(-1);
  const way = WAYS[key];
  if (!way) return null;
  const middle = (one) => {
    const { left, right, top, bottom } = one.getBoundingClientRect();
    return [(left + right) / 2, (top + bottom) / 2];
  };
  const [x, y] = middle(from);
  let best = null;
  let least = Infinity;
  for (const one of all) {
    const [dx, dy] = middle(one).map((at, axis) => at - [x, y][axis]);
    const ahead = dx * way[0] + dy * way[1];
    const aside = Math.abs(dx * way[1]) + Math.abs(dy * way[0]);
    const far = ahead + 4 * aside;
    if (ahead > 1 && far < least) [best, least] = [one, far];
  }
  return best;
}
