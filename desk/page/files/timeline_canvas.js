// Draws the time line, and tells what is at a point of it.

import { make } from "./dom.js";
import { AXES, firstAfter, rulerStep } from "./timeline_view.js";
import { count, failed, seconds } from "./words.js";

const LABELS = 84; // px, of the lanes' names
const RULER = 18;
const LEAST = 4; // px of what has no length
const COLORS = ["ink", "dim", "line", "raised", "surface", "accent", "good", "warn", "bad"];

// Rows from above: what they are called, their height where there is little room, and the things
// that lie in them.
const ROWS = [
  { name: "Board", height: 16, lanes: ["lines"], draw: "points" },
  { name: "Calls", height: 22, lanes: ["calls"], draw: "calls", depth: 0 },
  { name: "nested", height: 14, lanes: ["calls"], draw: "calls", depth: 1 },
  { name: "Worker", height: 16, lanes: [], draw: "worker" },
  { name: "Messages", height: 17, lanes: ["messages"], draw: "points" },
  { name: "Texts", height: 14, lanes: ["texts"], draw: "points" },
  { name: "System", height: 14, lanes: ["drivers", "locks"], draw: "points" },
];
const DENSITY = [26, 150]; // px of the last row, least and most
const SCALE = [0.8, 2]; // of the rows, where there is little and much room

export class TimelineCanvas {
  #view;
  #model;
  #title;
  #context;
  #probe = make("span");
  #colors = null;
  #font = "";
  #hits = []; // what was drawn where: {x, end, y, bottom, things}
  #width = 0;
  #height = 0;

  /**
   * @param {import("./timeline_view.js").TimelineView} view
   * @param {(thing: object) => string} title of a thing, in a few words
   */
  constructor(view, title) {
    this.#view = view;
    this.#model = view.model;
    this.#title = title;
    this.canvas = make("canvas", { role: "img", "aria-label": "Time line" });
    this.element = make("div", { class: "timeline-canvas" }, this.canvas, this.#probe);
    this.#context = this.canvas.getContext("2d");
  }

  /** How wide the axis is, and where it begins. */
  get axis() {
    return { left: LABELS, width: Math.max(this.#width - LABELS, 1) };
  }

  /** The things at a point, those that lie one upon the other in their order; null: none. */
  hit(x, y) {
    if (x < LABELS) return null;
    let best = null;
    for (const hit of this.#hits) {
      if (y < hit.y || y > hit.bottom) continue;
      const far = Math.max(hit.x - x, x - hit.end, 0);
      if (far <= 5 && (!best || far < best.far)) best = { far, things: hit.things };
    }
    return best?.things ?? null;
  }

  /** @param {{selected: number|null, pointer: number|null}} state a thing's number, a place in px */
  draw({ selected, pointer }) {
    if (this.#width === 0 || this.#height === 0) return; // not seen
    this.#takeColors();
    const context = this.#context;
    this.#hits = [];
    context.clearRect(0, 0, this.#width, this.#height);
    context.font = `11px ${this.#font}`;
    context.textBaseline = "middle";
    this.#ruler();
    let y = RULER;
    for (const row of this.#rows()) {
      this.#rowName(row.name, y, row.height);
      context.save();
      context.beginPath();
      context.rect(LABELS, y, this.#width - LABELS, row.height);
      context.clip();
      if (row.draw === "calls") this.#calls(row, y);
      else if (row.draw === "worker") this.#worker(row, y);
      else this.#points(row, y);
      context.restore();
      y += row.height;
    }
    this.#density(y, Math.min(this.#height - y, DENSITY[1]));
    this.#marks();
    this.#outline(selected);
    if (pointer !== null && pointer > LABELS) this.#pointer(pointer);
  }

  // As high as there is room for; where there is little, without the last.
  #rows() {
    const nested = this.#model.lanes.calls.some(({ depth }) => depth > 0);
    const room = this.#height - RULER - DENSITY[0];
    const total = (rows) => rows.reduce((sum, { height }) => sum + height, 0);
    let rows = ROWS.filter(({ depth }) => nested || depth !== 1);
    if (total(rows) > room) rows = rows.slice(0, -1);
    const scale = Math.min(Math.max(room / total(rows), SCALE[0]), SCALE[1]);
    return rows.map((row) => ({ ...row, height: Math.floor(row.height * scale) }));
  }

  /** @param {number} width @param {number} height in px of the page */
  resize(width, height) {
    const scale = window.devicePixelRatio || 1;
    this.#width = width;
    this.#height = height;
    this.canvas.width = Math.round(width * scale);
    this.canvas.height = Math.round(height * scale);
    this.#context.setTransform(scale, 0, 0, scale, 0, 0);
  }

  /** The page has other colours now. */
  forgetColors() {
    this.#colors = null;
  }

  #takeColors() {
    if (this.#colors) return;
    this.#colors = {};
    const style = getComputedStyle(this.#probe);
    for (const name of COLORS) {
      this.#probe.style.color = `var(--${name})`;
      this.#colors[name] = style.color;
    }
    this.#font = style.fontFamily;
  }

  #x(place) {
    return LABELS + this.#view.at(place) * this.axis.width;
  }

  #fill(color, x, y, width, height) {
    this.#context.fillStyle = this.#colors[color];
    this.#context.fillRect(x, y, width, height);
  }

  #text(text, x, y, color = "dim", align = "left") {
    this.#context.fillStyle = this.#colors[color];
    this.#context.textAlign = align;
    this.#context.fillText(text, x, y);
  }

  // The text, cut to a width.
  #fitted(text, width) {
    const letters = Math.floor(width / 6);
    if (letters < 2) return "";
    return text.length <= letters ? text : `${text.slice(0, letters - 1)}…`;
  }

  #ruler() {
    const { axis, from, span } = this.#view;
    const step = rulerStep(span, Math.max(this.axis.width / 90, 1));
    const digits = Math.max(0, 3 - Math.floor(Math.log10(step)));
    for (let point = Math.ceil(from / step) * step; point <= from + span; point += step) {
      if (point < -step / 2) continue;
      const x = this.#x({ [axis]: point });
      this.#fill("line", x, RULER - 5, 1, this.#height);
      const text =
        axis === "t" ? (point / 1000).toFixed(Math.min(digits, 6)) : count(Math.abs(point));
      this.#text(text, x + 3, RULER / 2);
    }
    const { name, unit } = AXES[axis];
    this.#text(name + (unit && ` (${unit})`), 0, RULER / 2, "dim");
  }

  #rowName(name, y, height) {
    this.#fill("line", 0, y, this.#width, 1);
    this.#text(name, 0, y + height / 2 + 1);
  }

  // Draws things of a row from left to right; those that would lie upon each other are one.
  #clusters(row, things, draw) {
    const { width } = this.axis;
    let last = null;
    const drawLast = () => {
      if (!last) return;
      draw(last);
      this.#hits.push(last);
    };
    for (const thing of things) {
      if (!this.#view.sees(thing)) continue;
      const x = Math.max(this.#x(thing.from), LABELS - 2);
      const end = Math.min(this.#x(thing.to ?? this.#model.now), LABELS + width + 2);
      const short = end - x < LEAST;
      if (last && short && last.short && x < last.end + 1) {
        last.things.push(thing);
        last.end = Math.max(last.end, Math.min(x + LEAST, end));
        continue;
      }
      drawLast();
      const bottom = row.y + row.height;
      last = { x, end: Math.max(end, x + LEAST), y: row.y, bottom, short, things: [thing] };
    }
    drawLast();
  }

  #calls(row, y) {
    const calls = this.#model.lanes.calls.filter(
      ({ depth }) => depth === row.depth || (depth > 1 && row.depth === 1),
    );
    this.#clusters({ ...row, y }, calls, ({ x, end, things }) => {
      const bad = things.some(({ result }) => result && failed(result));
      const open = things.at(-1).to === null;
      const width = end - x;
      const height = row.height - 5;
      this.#fill(bad ? "bad" : "accent", x, y + 3, width, height);
      if (things.length > 1) this.#fill("ink", x, y + height, width, 3);
      // Not by colour alone: a failed call is notched, one that is under way has a second edge.
      if (bad) this.#fill("surface", x, y + 3, Math.min(width, 3), height / 3);
      if (open) this.#fill("surface", end - 3, y + 5, 1, height - 4);
      const name = things.length > 1 ? `×${things.length}` : this.#title(things[0]);
      const text = this.#fitted(name, width - 6);
      if (text) this.#text(text, x + 4, y + row.height / 2 + 1, "surface");
    });
    if (row.depth > 0) return;
    // Where the host sleeps and waits, in its calls.
    const bottom = { ...row, y: y + row.height - 6, height: 6 };
    this.#clusters(bottom, this.#pausesOf("host"), ({ x, end, y: top }) => {
      this.#fill("raised", x, top, end - x, 4);
      this.#fill("dim", x, top + 1, end - x, 2);
    });
  }

  #pausesOf(by) {
    return this.#model.lanes.pauses.filter((pause) => pause.by === by);
  }

  #worker(row, y) {
    const height = row.height - 5;
    for (const thing of this.#model.lanes.threads) {
      if (!this.#view.sees(thing)) continue;
      const x = Math.max(this.#x(thing.from), LABELS);
      const end = Math.min(this.#x(thing.to ?? this.#model.now), this.#width);
      this.#fill("good", x, y + 3, Math.max(end - x, 2), height);
      this.#hits.push({ x, end, y, bottom: y + row.height, things: [thing] });
    }
    this.#clusters({ ...row, y }, this.#pausesOf("worker"), ({ x, end }) => {
      this.#fill("raised", x, y + 5, end - x, height - 4);
      this.#fill("dim", x, y + 2 + Math.floor(row.height / 2), end - x, 1);
    });
  }

  #points(row, y) {
    const middle = y + row.height / 2 + 1;
    const clusters = [];
    const things = row.lanes
      .flatMap((lane) => this.#model.lanes[lane].filter((thing) => this.#view.sees(thing)))
      .sort((one, other) => one.id - other.id);
    this.#clusters({ ...row, y }, things, (cluster) => clusters.push(cluster));
    clusters.forEach(({ x, things: here }, i) => {
      const bad = here.some(({ event }) => event.ok === false);
      this.#point(row, x, middle, bad, here);
      const room = (clusters[i + 1]?.x ?? this.#width) - x - 12;
      const name = here.length > 1 ? `×${here.length}` : this.#title(here[0]);
      const text = this.#fitted(name, Math.min(room, 300));
      if (text) this.#text(text, x + 9, middle, bad ? "bad" : "dim");
    });
  }

  #point(row, x, y, bad, things) {
    const context = this.#context;
    const half = things.length > 1 ? 5 : 4;
    const color = bad ? "bad" : { Messages: "warn", Board: "accent" }[row.name];
    context.fillStyle = this.#colors[color ?? "dim"];
    context.beginPath();
    if (bad) {
      // A cross: it failed.
      context.strokeStyle = this.#colors.bad;
      context.lineWidth = 2;
      context.moveTo(x - 3, y - 3);
      context.lineTo(x + 3, y + 3);
      context.moveTo(x + 3, y - 3);
      context.lineTo(x - 3, y + 3);
      context.stroke();
    } else if (row.name === "Messages") {
      context.moveTo(x, y - half);
      context.lineTo(x + half, y);
      context.lineTo(x, y + half);
      context.lineTo(x - half, y);
    } else if (things[0].lane === "drivers") {
      context.arc(x, y, half - 1, 0, 2 * Math.PI);
    } else if (row.name === "Board") {
      context.moveTo(x - half, y - half);
      context.lineTo(x + half, y);
      context.lineTo(x - half, y + half);
    } else {
      context.rect(x - 1, y - half, things.length > 1 ? 4 : 2, 2 * half);
    }
    context.fill();
  }

  // Bus cycles where they fall, on the axis of bus cycles the time that passed.
  #density(y, height) {
    const ofTime = this.#view.axis === "cycle";
    const member = ofTime ? "t" : "cycle";
    this.#rowName(ofTime ? "Time passed" : "Bus cycles", y, height);
    const { axis, from, span } = this.#view;
    const { samples } = this.#model;
    if (samples.length < 2) return;
    const step = 3;
    const columns = Math.ceil(this.axis.width / step);
    const amounts = [];
    const amount = (point) => {
      const i = firstAfter(samples, axis, point);
      if (i === 0) return samples[0][member];
      if (i === samples.length) return samples.at(-1)[member];
      // Between two places it went on evenly, as far as anybody knows.
      const [before, after] = [samples[i - 1], samples[i]];
      const share = (point - before[axis]) / (after[axis] - before[axis]);
      return before[member] + share * (after[member] - before[member]);
    };
    let last = amount(from);
    for (let column = 1; column <= columns; ++column) {
      const next = amount(from + (span * column * step) / this.axis.width);
      amounts.push(Math.max(next - last, 0));
      last = next;
    }
    const most = Math.max(...amounts);
    if (most <= 0) return;
    amounts.forEach((here, column) => {
      if (here <= 0) return;
      const tall = Math.max((Math.log1p(here) / Math.log1p(most)) * (height - 6), 1);
      this.#fill("accent", LABELS + column * step, y + height - tall, step - 1, tall);
    });
    const each = (step * span) / this.axis.width;
    const rounded = each < 10 ? each.toFixed(1) : count(Math.round(each));
    const per = `${rounded} ${axis === "t" ? "ms" : AXES[axis].name.toLowerCase()}`;
    const text = ofTime ? `${seconds(most)} s` : `${count(Math.round(most))} cycles`;
    const label = `most: ${text} in ${per}`;
    this.#context.globalAlpha = 0.8;
    this.#fill("surface", this.#width - this.#context.measureText(label).width - 8, y + 2, 999, 14);
    this.#context.globalAlpha = 1;
    this.#text(label, this.#width - 4, y + 9, "dim", "right");
  }

  // Stops, time that was turned back, and what is not known, through all rows.
  #marks() {
    const context = this.#context;
    const marks = [...this.#model.lanes.marks, ...this.#model.lanes.gaps];
    for (const mark of marks) {
      const { ev } = mark.event;
      if (ev === "continued" || !this.#view.sees(mark)) continue;
      const x = Math.round(this.#x(mark.from)) + 0.5;
      if (x < LABELS) continue;
      const color = this.#colors[ev === "stopped" ? "bad" : "warn"];
      context.strokeStyle = color;
      context.lineWidth = 1;
      context.setLineDash(ev === "stopped" ? [] : [4, 3]);
      context.beginPath();
      context.moveTo(x, 2);
      context.lineTo(x, this.#height);
      context.stroke();
      context.setLineDash([]);
      const sign = { stopped: "■", rewound: "↶", missed: "?" }[ev];
      this.#text(sign, x + 2, RULER - 5, ev === "stopped" ? "bad" : "warn");
      this.#hits.push({ x, end: x + 8, y: 0, bottom: RULER, things: [mark] });
    }
  }

  #outline(selected) {
    const hit = this.#hits.find(({ things }) => things.some(({ id }) => id === selected));
    if (!hit) return;
    const context = this.#context;
    context.strokeStyle = this.#colors.ink;
    context.lineWidth = 2;
    context.strokeRect(hit.x - 2, hit.y + 2, hit.end - hit.x + 4, hit.bottom - hit.y - 3);
  }

  #pointer(x) {
    this.#context.globalAlpha = 0.5;
    this.#fill("ink", x, 0, 1, this.#height);
    this.#context.globalAlpha = 1;
    const point = this.#view.from + ((x - LABELS) / this.axis.width) * this.#view.span;
    const text = this.#view.axis === "t" ? `${seconds(point)} s` : count(Math.round(point));
    const right = x > this.#width - 90;
    const width = this.#context.measureText(text).width + 8;
    this.#fill("raised", right ? x - width : x + 1, 1, width, RULER - 3);
    this.#text(text, right ? x - 4 : x + 5, RULER / 2, "ink", right ? "right" : "left");
  }
}
