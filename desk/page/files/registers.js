// The chips' registers as they are now: a page as a grid or as a list of names, what changed lit up.

import { choice } from "./controls.js";
import { make, setText } from "./dom.js";
import { RegisterDetails } from "./register_details.js";
import { RegisterHistory } from "./register_history.js";
import { Stops } from "./stops.js";
import { CHIPS } from "./state.js";
import { WatchList } from "./watch_list.js";
import { fieldsInWords, hex, registerAt, registerLabel } from "./words.js";

const COLUMNS = 16;
const FADE_EVERY = 200; // ms
const NUMBERS = [...Array(256).keys()];

/**
 * @param {HTMLElement} element
 * @param {import("./bench.js").Bench} bench
 * @param {object} language
 */
export function mount(element, bench, language) {
  const history = new RegisterHistory();
  let shown = { chip: 0, page: 1, view: "grid" };
  let current = 0; // the register that the keyboard is at
  let pointed = null; // the one under the pointer
  let cells = new Map(); // by number, of those that are shown

  const chips = choice(
    "Chip",
    CHIPS.map((name, chip) => [String(chip), name]),
    "0",
    (chip) => show({ chip: Number(chip) }),
  );
  const pages = choice(
    "Page",
    ["0", "1", "2"].map((page) => [page, `page ${page}`]),
    "1",
    (page) => show({ page: Number(page) }),
  );
  const views = choice(
    "View",
    [
      ["grid", "Grid"],
      ["list", "Names"],
    ],
    "grid",
    (view) => show({ view }),
  );
  const filter = make("input", {
    type: "search",
    placeholder: "Filter names",
    "aria-label": "Show registers with this in their name",
    input: build,
    hidden: true,
  });
  const absent = make("p", { class: "warn hint", hidden: true });
  const table = make("table", { class: "mono", role: "grid" });
  const stops = language.board === "bench" ? new Stops(bench) : null;
  const watches = new WatchList(language, history, (register) => select(register));
  const details = new RegisterDetails(language, history, act);
  const menu = make("div", { class: "menu", role: "menu", hidden: true });

  element.append(
    make("div", { class: "toolbar" }, chips.element, pages.element, views.element, filter),
    make(
      "div",
      { class: "fill registers-body" },
      make("div", { class: "registers-table" }, absent, table, menu),
      make(
        "div",
        { class: "registers-side" },
        details.element,
        watches.element,
        ...(stops ? [stops.element] : []),
      ),
    ),
  );

  // ---- What is shown --------------------------------------------------------------------------

  const at = (number) => ({ chip: shown.chip, page: shown.page, number });

  function show(what) {
    shown = { ...shown, ...what };
    chips.set(String(shown.chip));
    pages.set(String(shown.page));
    views.set(shown.view);
    filter.hidden = shown.view !== "list";
    build();
  }

  function build() {
    closeMenu();
    pointed = null;
    cells = new Map();
    const name = `Registers of ${CHIPS[shown.chip]}, page ${shown.page}`;
    table.setAttribute("aria-label", name);
    table.className = `mono ${shown.view}`;
    table.replaceChildren(...(shown.view === "grid" ? grid() : list()));
    if (!cells.has(current)) current = cells.keys().next().value ?? 0;
    for (const number of cells.keys()) update(number);
    setStop(current);
    showDetails();
    showFitted();
  }

  function cell(number, properties = {}) {
    const made = make("td", { role: "gridcell", tabindex: -1, ...properties });
    made.dataset.number = number;
    cells.set(number, { cell: made, words: null });
    return made;
  }

  function grid() {
    const heads = [...Array(COLUMNS).keys()].map((column) =>
      make("th", { scope: "col" }, `.${column.toString(16)}`),
    );
    const rows = [];
    for (let first = 0; first < 256; first += COLUMNS) {
      const name = make("th", { scope: "row" }, hex(first).slice(2));
      const row = NUMBERS.slice(first, first + COLUMNS).map((number) => {
        const named = registerAt(language, shown.page, number) !== null;
        return cell(number, named ? {} : { class: "unnamed" });
      });
      rows.push(make("tr", {}, name, ...row));
    }
    return [make("thead", {}, make("tr", {}, make("td"), ...heads)), make("tbody", {}, ...rows)];
  }

  function list() {
    const wanted = filter.value.toLowerCase();
    const rows = [];
    for (const number of NUMBERS) {
      const register = registerAt(language, shown.page, number);
      const label = registerLabel(register);
      if (!register || !`${hex(number)} ${label}`.toLowerCase().includes(wanted)) continue;
      const words = make("td", { class: "words" });
      rows.push(
        make(
          "tr",
          {},
          make("th", { scope: "row" }, hex(number)),
          make("td", { class: "name" }, label),
          cell(number),
          words,
        ),
      );
      cells.get(number).words = words;
    }
    const heads = ["Register", "Name", "Value", "What is set"].map((name) =>
      make("th", { scope: "col" }, name),
    );
    return [make("thead", {}, make("tr", {}, ...heads)), make("tbody", {}, ...rows)];
  }

  function update(number) {
    const { cell: shownCell, words } = cells.get(number);
    const register = registerAt(language, shown.page, number);
    const value = history.value(at(number));
    const text = value === null ? "··" : hex(value).slice(2);
    setText(shownCell, text);
    shownCell.setAttribute(
      "aria-label",
      `${hex(number)} ${registerLabel(register)}: ${value === null ? "not known" : text}`,
    );
    if (words) setText(words, value === null ? "" : fieldsInWords(register, value));
    mark(number);
  }

  function mark(number) {
    const { cell: marked } = cells.get(number);
    const bright = history.brightness(at(number));
    const restless = bright > 0 && history.restless(at(number));
    marked.classList.toggle("restless", restless);
    for (const level of [1, 2, 3]) {
      marked.classList.toggle(`changed-${level}`, level === bright && !restless);
    }
    marked.classList.toggle("watched", watches.has(at(number)));
  }

  function showFitted() {
    const fitted = bench.moment?.header.fitted;
    absent.hidden = fitted?.[shown.chip] ?? true;
    setText(absent, `${CHIPS[shown.chip]} is not fitted: nothing answers there.`);
    chips.buttons.forEach((button, chip) => {
      button.classList.toggle("absent", fitted?.[chip] === false);
      button.title = fitted?.[chip] === false ? "not fitted" : "";
      button.classList.toggle("news", chip !== shown.chip && history.news(chip, shown.page));
    });
    pages.buttons.forEach((button, page) => {
      button.classList.toggle("news", page !== shown.page && history.news(shown.chip, page));
    });
  }

  bench.addEventListener("moment", ({ detail: { header, registers } }) => {
    const changed = history.take(registers, header.t);
    for (const number of cells.keys()) {
      if (changed.has(history.index(at(number)))) update(number);
    }
    if (changed.size > 0) {
      watches.update();
      if (changed.has(history.index(at(pointed ?? current)))) showDetails();
    }
    showFitted();
  });
  bench.addEventListener("missed", ({ detail }) => detail.anew && history.forget());
  setInterval(() => {
    for (const { chip, page, number } of history.fade()) {
      if (chip === shown.chip && page === shown.page && cells.has(number)) mark(number);
    }
  }, FADE_EVERY);

  // ---- Selection ------------------------------------------------------------------------------

  function showDetails() {
    details.show(at(pointed ?? current), watches.has(at(pointed ?? current)));
  }

  function setStop(number) {
    cells.get(current)?.cell.setAttribute("tabindex", -1);
    current = number;
    cells.get(current)?.cell.setAttribute("tabindex", 0);
  }

  function select({ chip, page, number }) {
    if (chip !== shown.chip || page !== shown.page || !cells.has(number)) {
      filter.value = "";
      show({ chip, page });
    }
    setStop(number);
    pointed = null;
    showDetails();
    cells.get(number)?.cell.scrollIntoView({ block: "nearest" });
  }

  const numberOf = (target) => {
    const found = target.closest("tr")?.querySelector("[data-number]");
    const number = (target.closest("[data-number]") ?? (shown.view === "list" ? found : null))
      ?.dataset.number;
    return number === undefined ? null : Number(number);
  };

  table.addEventListener("pointerover", ({ target }) => {
    pointed = numberOf(target);
    showDetails();
  });
  table.addEventListener("pointerleave", () => {
    pointed = null;
    showDetails();
  });
  table.addEventListener("focusin", ({ target }) => {
    const number = numberOf(target);
    if (number === null) return;
    setStop(number);
    pointed = null;
    showDetails();
    bench.select({ chip: shown.chip, page: shown.page, register: number });
  });
  table.addEventListener("click", ({ target }) => {
    const number = numberOf(target);
    if (number === null) return;
    cells.get(number).cell.focus({ preventScroll: true });
    openMenu();
  });
  table.addEventListener("keydown", onKey);

  function onKey(key) {
    if (key.ctrlKey || key.altKey || key.metaKey) return;
    const order = [...cells.keys()];
    const place = order.indexOf(current);
    const row = shown.view === "grid" ? COLUMNS : 1;
    const steps = {
      ArrowLeft: -1,
      ArrowRight: 1,
      ArrowUp: -row,
      ArrowDown: row,
      PageUp: -8 * row,
      PageDown: 8 * row,
      Home: -(place % COLUMNS),
      End: COLUMNS - 1 - (place % COLUMNS),
    };
    if (key.key in steps) {
      const step = steps[key.key];
      let next = place + step;
      // Up and down stay in their column.
      while (Math.abs(step) >= row && next < 0) next += row;
      while (Math.abs(step) >= row && next >= order.length) next -= row;
      cells.get(order[next])?.cell.focus();
    } else if (key.key === "Enter" || key.key === " ") {
      openMenu();
    } else {
      const wanted = details.actions().find(({ letter }) => letter === key.key.toLowerCase());
      if (!wanted) return;
      act(wanted.action, at(current));
    }
    key.preventDefault();
  }

  // What a stop is about.
  bench.addEventListener("event", ({ detail: { ev, text } }) => {
    const [, chip, page, number] =
      (ev === "stopped" && text?.match(/ (\w+) page (\d) (0x[0-9A-F]{2})/)) || [];
    if (!chip) return;
    const one = CHIPS.includes(chip) ? CHIPS.indexOf(chip) : shown.chip; // else of several
    select({ chip: one, page: Number(page), number: Number(number) });
  });

  bench.addEventListener("select", ({ detail: { chip, page, register } }) => {
    if (chip === null || page === null || register === null) return;
    const same = chip === shown.chip && page === shown.page && register === current;
    if (!same) select({ chip, page, number: register });
  });

  // ---- Watch and break ------------------------------------------------------------------------

  function act(action, register) {
    const place = `${CHIPS[register.chip]} page ${register.page} ${hex(register.number)}`;
    if (action === "watch") {
      watches.toggle(register);
      if (cells.has(register.number)) mark(register.number);
      showDetails();
    } else {
      stops.add(`break ${action} ${place}`);
    }
  }

  function openMenu() {
    const { cell: under } = cells.get(current);
    const register = at(current);
    menu.replaceChildren(
      make("p", { class: "dim", "aria-hidden": "true" }, details.name(register)),
      ...details.actions(watches.has(register)).map(({ action, text, letter }) =>
        make(
          "button",
          {
            type: "button",
            role: "menuitem",
            class: "quiet",
            click: () => {
              closeMenu();
              act(action, register);
            },
          },
          text,
          make("kbd", { class: "dim" }, letter.toUpperCase()),
        ),
      ),
    );
    menu.setAttribute("aria-label", details.name(register));
    menu.hidden = false;
    const place = under.getBoundingClientRect();
    const around = menu.offsetParent.getBoundingClientRect();
    const left = Math.min(place.left - around.left, around.width - menu.offsetWidth - 4);
    menu.style.left = `${Math.max(left, 0)}px`;
    menu.style.top = `${place.bottom - around.top + 2}px`;
    menu.querySelector("button").focus({ preventScroll: true });
    menu.scrollIntoView({ block: "nearest" });
  }

  function closeMenu() {
    if (menu.hidden) return;
    const focused = menu.contains(document.activeElement);
    menu.hidden = true;
    if (focused) cells.get(current)?.cell.focus({ preventScroll: true });
  }

  menu.addEventListener("keydown", (key) => {
    const items = [...menu.querySelectorAll("button")];
    const place = items.indexOf(document.activeElement);
    const step = { ArrowDown: 1, ArrowUp: -1 }[key.key];
    if (step) items[(place + step + items.length) % items.length].focus();
    else if (key.key === "Escape" || key.key === "Tab") closeMenu();
    else return;
    if (key.key !== "Tab") key.preventDefault();
  });
  menu.addEventListener("focusout", ({ relatedTarget }) => {
    if (!menu.contains(relatedTarget)) menu.hidden = true;
  });

  build();
}
