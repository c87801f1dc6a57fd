// The time line: what happened on the board and when, to be zoomed, and each call to be opened.

import { CallDetails, thingInWords } from "./call_details.js";
import { atEnd, button, choice, enlarger, soon } from "./controls.js";
import { make, setText } from "./dom.js";
import { TimelineCanvas } from "./timeline_canvas.js";
import { TimelineModel } from "./timeline_model.js";
import { AXES, TimelineView } from "./timeline_view.js";
import { count, failed, seconds } from "./words.js";

const MOST_ROWS = 250; // of the list
const EVERY = 60; // ms
const LIST_EVERY = 250; // ms
const STEP = 1.5; // of a zoom
const PAN = 0.2; // of what is seen
const CLICK = 4; // px: whoever moves further drags

// What the list shows: lanes by choice.
const LISTS = {
  calls: ["Calls", ["calls", "marks", "gaps"]],
  messages: ["Messages", ["messages", "texts", "marks", "gaps"]],
  all: [
    "All",
    [
      "calls",
      "messages",
      "texts",
      "lines",
      "drivers",
      "locks",
      "threads",
      "pauses",
      "marks",
      "gaps",
    ],
  ],
};

/**
 * @param {HTMLElement} element
 * @param {import("./bench.js").Bench} bench
 * @param {object} language
 */
export function mount(element, bench, language) {
  const model = new TimelineModel();
  const view = new TimelineView(model);
  const canvas = new TimelineCanvas(view, (thing) => thingInWords(language, thing));
  const details = new CallDetails(bench, language, model, zoomTo, () => select(null));
  let selected = null;
  let pointer = null; // px, where the pointer is
  let lanes = LISTS.calls[1];
  let listedAt = 0; // when the list was made

  // ---- Elements -------------------------------------------------------------------------------

  const axes = choice(
    "Axis",
    Object.entries(AXES).map(([axis, { name }]) => [axis, name]),
    view.axis,
    (axis) => move(() => view.setAxis(axis)),
  );
  const follow = button("Follow", () => move(() => (view.follow = !view.follow)), {
    title: "Goes along with the board (F)",
  });
  const listed = button("List", () => showSide(!body.classList.contains("with-side")), {
    class: "narrow",
    "aria-pressed": "false",
  });
  const tools = make(
    "div",
    { class: "toolbar" },
    axes.element,
    tool("−", "Show more: zoom out (−)", () => view.zoom(STEP)),
    tool("+", "Show less: zoom in (+)", () => view.zoom(1 / STEP)),
    tool("◀", "Earlier (arrow left)", () => view.pan(-PAN)),
    tool("▶", "Later (arrow right)", () => view.pan(PAN)),
    tool("Fit", "Fit all that is known (0)", () => view.fit()),
    follow,
    listed,
    enlarger(element),
  );
  const tip = make("div", { class: "tip", hidden: true });
  const stage = make(
    "div",
    {
      class: "timeline-stage",
      tabindex: 0,
      role: "group",
      "aria-label":
        "Time line: left and right move, up and down choose calls, plus and minus zoom, F follows the board; the list has the same",
    },
    canvas.element,
    tip,
  );
  const rows = make("ol", { class: "mono" });
  const list = make("div", { class: "fill", tabindex: -1 }, rows);
  const seen = make("span", { class: "dim" });
  const lists = choice(
    "List",
    Object.entries(LISTS).map(([key, [name]]) => [key, name]),
    "calls",
    (key) => {
      lanes = LISTS[key][1];
      showList(true);
    },
  );
  const listing = make(
    "section",
    { class: "timeline-list", "aria-label": "What is seen of the time line" },
    make("div", { class: "toolbar" }, lists.element, seen),
    list,
  );
  element.querySelector("header").append(tools);
  const side = make("div", { class: "timeline-side" }, listing, details.element);
  const body = make("div", { class: "timeline-body" }, stage, side);
  element.append(body);

  // Where there is little room, the list is beside the time line when it is asked for.
  function showSide(shown) {
    body.classList.toggle("with-side", shown);
    listed.setAttribute("aria-pressed", shown);
    move(() => {});
  }

  function tool(text, name, act) {
    return button(text, () => move(act), { "aria-label": name, title: name });
  }

  // ---- Drawing --------------------------------------------------------------------------------

  const draw = () => {
    view.keepUp();
    canvas.draw({ selected: selected?.id ?? null, pointer });
    showList(false);
  };
  const update = soon(draw);
  const goOn = soon(draw, EVERY); // by itself, with the board

  function move(act) {
    act();
    view.keepUp();
    follow.setAttribute("aria-pressed", view.follow);
    listedAt = 0;
    update();
  }

  function clear() {
    model.forget();
    select(null);
    if (bench.moment) model.tick(bench.moment.header.t, bench.moment.header.cycles);
  }

  function zoomTo({ from, to }) {
    move(() => {
      view.fit(from[view.axis], (to ?? model.now)[view.axis]);
      view.zoom(1.4);
    });
  }

  function select(thing) {
    const inList = listing.contains(document.activeElement);
    const inDetails = details.element.contains(document.activeElement);
    const before = selected;
    selected = thing;
    side.classList.toggle("chosen", thing !== null);
    if (thing) showSide(true);
    details.show(thing);
    if (thing && !view.sees(thing)) {
      view.follow = false;
      view.from = thing.from[view.axis] - view.span / 2;
    }
    move(() => {});
    if (inList && thing) details.focus();
    if (inDetails && !thing) {
      showList(true);
      (rows.querySelector(`[data-id="${before?.id}"] button`) ?? list).focus();
    }
  }

  // The call before or behind the selected one; the last that is seen where none is selected.
  function step(by) {
    const { calls } = model.lanes;
    const from = selected ? calls.findIndex(({ id }) => id === selected.id) : -1;
    const next = from < 0 ? calls.findLast((call) => view.sees(call)) : calls[from + by];
    if (next) select(next);
  }

  // ---- The list: what is seen, as text --------------------------------------------------------

  function showList(now) {
    const time = performance.now();
    if (!now && time - listedAt < LIST_EVERY) return;
    listedAt = time;
    if (list.clientHeight === 0) return; // not seen
    const things = model.things(lanes).filter((thing) => view.sees(thing));
    const wanted = things.slice(-MOST_ROWS);
    const left = things.length - wanted.length;
    setText(seen, `${count(things.length)} seen${left > 0 ? `, the last ${MOST_ROWS} here` : ""}`);
    const from = seconds(Math.max(model.now.t, 0));
    canvas.canvas.setAttribute("aria-label", `Time line, ${things.length} things, now ${from} s`);
    atEnd(list, () => fill(wanted));
  }

  // Rows that stay are left alone, and with them the focus.
  function fill(things) {
    const keep = new Set(things.map(({ id }) => String(id)));
    const known = new Map();
    for (const row of [...rows.children]) {
      if (keep.has(row.dataset.id)) known.set(row.dataset.id, row);
      else row.remove();
    }
    let next = rows.firstElementChild;
    for (const thing of things) {
      let row = known.get(String(thing.id));
      if (!row) rows.insertBefore((row = makeRow(thing)), next);
      else next = row.nextElementSibling;
      describe(row, thing);
    }
  }

  function makeRow(thing) {
    const row = make(
      "li",
      {},
      make(
        "button",
        { type: "button", class: `quiet thing ${thing.lane}`, click: () => select(thing) },
        make("time", {}, seconds(thing.from.t)),
        make("span", { class: "by" }, thing.by),
        make("span", { class: "text" }, thingInWords(language, thing)),
        make("span", { class: "result" }),
      ),
    );
    row.dataset.id = thing.id;
    return row;
  }

  function describe(row, { lane, from, to, event, result }) {
    if (lane !== "calls") return;
    const cycles = to ? `${count(to.cycle - from.cycle)} cycles` : "runs";
    const value = result ? `= ${result.value ?? "–"}` : "";
    const bad = result !== null && failed(result);
    setText(row.firstChild.lastChild, `${cycles} ${bad ? "✗ " : ""}${value}`);
    row.firstChild.classList.toggle("bad", bad);
    row.firstChild.title = event.fn;
  }

  // ---- The hand and the keys ------------------------------------------------------------------

  const KEYS = {
    ArrowLeft: () => view.pan(-PAN),
    ArrowRight: () => view.pan(PAN),
    ArrowUp: () => step(-1),
    ArrowDown: () => step(1),
    "+": () => view.zoom(1 / STEP),
    "=": () => view.zoom(1 / STEP),
    "-": () => view.zoom(STEP),
    0: () => view.fit(),
    Home: () => view.toBegin(),
    End: () => (view.follow = true),
    f: () => (view.follow = !view.follow),
  };
  stage.addEventListener("keydown", (key) => {
    const act = KEYS[key.key];
    if (!act || key.ctrlKey || key.metaKey || key.altKey) return;
    key.preventDefault();
    move(act);
  });

  stage.addEventListener(
    "wheel",
    (wheel) => {
      wheel.preventDefault();
      const { left, width } = canvas.axis;
      const sideways = wheel.shiftKey ? wheel.deltaY : wheel.deltaX;
      const share = (wheel.offsetX - left) / width;
      move(() => {
        if (sideways !== 0) view.pan(sideways / width);
        else view.zoom(STEP ** (wheel.deltaY / 100), Math.min(Math.max(share, 0), 1));
      });
    },
    { passive: false },
  );

  let drag = null; // {x, moved}: where the hand took hold
  stage.addEventListener("pointerdown", (event) => {
    if (event.button !== 0) return;
    drag = { x: event.offsetX, moved: false };
    stage.setPointerCapture(event.pointerId);
  });
  stage.addEventListener("pointermove", (event) => {
    pointer = event.offsetX;
    if (drag && (drag.moved || Math.abs(event.offsetX - drag.x) > CLICK)) {
      const share = (drag.x - event.offsetX) / canvas.axis.width;
      drag = { x: event.offsetX, moved: true };
      return move(() => view.pan(share));
    }
    showTip(event);
    update();
  });
  stage.addEventListener("pointerup", (event) => {
    const clicked = drag && !drag.moved;
    drag = null;
    if (!clicked) return;
    const things = canvas.hit(event.offsetX, event.offsetY);
    // Of several that lie in one place each click takes the next.
    if (things) select(things[(things.indexOf(selected) + 1) % things.length]);
  });
  stage.addEventListener("pointercancel", () => (drag = null));
  stage.addEventListener("pointerleave", () => {
    pointer = null;
    tip.hidden = true;
    update();
  });

  function showTip({ offsetX: x, offsetY: y }) {
    const things = canvas.hit(x, y);
    tip.hidden = !things;
    stage.classList.toggle("over", things !== null);
    if (!things) return;
    const [first] = things;
    const more = things.length > 1 ? ` and ${things.length - 1} more here` : "";
    const length = first.to && first.to.t > first.from.t ? `, ${first.to.t - first.from.t} ms` : "";
    setText(tip, `${seconds(first.from.t)} s${length}: ${thingInWords(language, first)}${more}`);
    tip.style.left = `${Math.min(x + 12, Math.max(stage.clientWidth - tip.offsetWidth - 4, 0))}px`;
    tip.style.top = `${y + 16 + tip.offsetHeight > stage.clientHeight ? y - tip.offsetHeight - 8 : y + 16}px`;
  }

  // ---- What the board tells -------------------------------------------------------------------

  bench.addEventListener("event", ({ detail }) => {
    model.take(detail);
    if (selected && detail.ev === "return" && selected.result === detail) details.show(selected);
    goOn();
  });
  bench.addEventListener("moment", ({ detail: { header } }) => {
    model.tick(header.t, header.cycles);
    goOn();
  });
  bench.addEventListener("missed", ({ detail: { count: missed, anew } }) => {
    if (anew) clear();
    else model.gap(missed);
    goOn();
  });
  new ResizeObserver(([{ contentRect }]) => {
    canvas.resize(contentRect.width, contentRect.height);
    draw(); // at once: a canvas of a new size is empty
  }).observe(stage);
  const retint = () => {
    canvas.forgetColors();
    update();
  };
  matchMedia("(prefers-color-scheme: dark)").addEventListener("change", retint);
  new MutationObserver(retint).observe(document.documentElement, { attributes: true });
  move(() => {});
}
