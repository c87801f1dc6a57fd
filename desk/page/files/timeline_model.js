// What happened on the board, as things that lie on an axis: calls from their begin to their end,
// pauses, and what has no length. It keeps the last of each.

const MOST = 4000; // things of a lane
const MOST_SAMPLES = 16000;
const MOST_TEXT = 300; // characters
const LATE = 50; // ms that a thread may come back after the end of its pause, in real time

/**
 * A place on all axes: the board's time in ms, bus cycles before it, and its turn among the events.
 * @typedef {{t: number, cycle: number, n: number}} Place
 *
 * @typedef {object} Thing
 * @property {number} id
 * @property {string} lane
 * @property {string} by "host" or "worker", empty where it is neither's
 * @property {Place} from
 * @property {Place|null} to null: it has not ended
 * @property {object} event which began it
 * @property {object|null} result the `return` of a call
 * @property {number} depth of a call in others of its thread
 * @property {number} times of pauses that follow each other
 * @property {number} last turn of what was joined to a text
 */

// Lanes by kind of event.
const LANES = {
  line: "lines",
  send: "messages",
  post: "messages",
  debug: "texts",
  kernel: "texts",
  open: "drivers",
  ioctl: "drivers",
  close: "drivers",
  nvram: "drivers",
  map: "drivers",
  unmap: "drivers",
  lock: "locks",
  unlock: "locks",
  stopped: "marks",
  continued: "marks",
  rewound: "marks",
};

export class TimelineModel {
  /** @type {Place} Where the board is now. */
  now = { t: 0, cycle: 0, n: 0 };
  /** @type {Place|null} The first thing that is known. */
  first = null;
  lanes = {};
  /** @type {Place[]} How time and bus cycles went on. */
  samples = [];

  #open = []; // calls without their end
  #worker = null;
  #pauses = new Map(); // by thread, as long as it does nothing else
  #next = 1; // identification

  constructor() {
    this.forget();
  }

  /** Another board. */
  forget() {
    this.now = { t: 0, cycle: 0, n: 0 };
    this.first = null;
    for (const lane of ["calls", "pauses", "threads", "gaps", ...Object.values(LANES)]) {
      this.lanes[lane] = [];
    }
    this.samples = [];
    this.#open = [];
    this.#worker = null;
    this.#pauses.clear();
  }

  /** A moment of the board, without an event. */
  tick(t, cycle) {
    if (t < this.now.t || cycle < this.now.cycle) return; // older than what events have told
    this.now = { ...this.now, t, cycle };
    this.#sample();
  }

  /** An event of the feed. */
  take(event) {
    if (event.ev === "rewound") this.#cut(event);
    if (event.ev === "sleep" || event.ev === "wait") return this.#pause(event);
    // The host's idle time is told in small pieces: it is seen as nothing that happens.
    if (event.ev === "line" && /^run \d+$/.test(event.text)) return this.tick(event.t, event.cycle);
    const place = this.#step(event);
    if (event.ev === "call") return this.#call(event, place);
    if (event.ev === "return") return this.#return(event, place);
    if (event.ev === "thread") return this.#thread(event, place);
    const lane = LANES[event.ev];
    if (!lane) return;
    if (lane === "texts" && this.#goesOn(event, place)) return;
    const short =
      event.text?.length > MOST_TEXT ? { ...event, text: event.text.slice(0, MOST_TEXT) } : event;
    this.#add(lane, short, place, place);
  }

  /** Events that are not known here. */
  gap(count) {
    const place = { ...this.now };
    for (const call of this.#open) call.to = place; // its end may be among them
    this.#open = [];
    this.#add("gaps", { ev: "missed", count }, place, place);
  }

  /** @returns {Thing[]} of these lanes, in order */
  things(lanes) {
    return lanes.flatMap((lane) => this.lanes[lane]).sort((a, b) => a.id - b.id);
  }

  find(id) {
    return Object.values(this.lanes)
      .flat()
      .find((thing) => thing.id === id);
  }

  #step({ t, cycle, by }) {
    this.#pauses.delete(by);
    this.now = { t, cycle: cycle ?? this.now.cycle, n: this.now.n + 1 };
    this.#sample();
    this.first ??= this.now;
    return this.now;
  }

  // The worker pauses hundreds of times a second: pauses without anything of its own between are one.
  #pause(event) {
    const { t, by, ms } = event;
    this.now = { ...this.now, t, cycle: event.cycle ?? this.now.cycle };
    this.#sample();
    this.first ??= this.now;
    const end = { ...this.now, t: t + ms };
    const last = this.#pauses.get(by);
    if (last && last.event.ev === event.ev && t - last.to.t <= LATE) {
      last.to = end;
      last.times += 1;
    } else {
      this.#pauses.set(by, this.#add("pauses", event, this.now, end));
    }
  }

  // The library writes a prefix and its message apart: they are one text.
  #goesOn({ by, ev, text }, { n }) {
    const last = this.lanes.texts.at(-1);
    if (!last || last.by !== by || last.event.ev !== ev || last.last !== n - 1) return false;
    if (last.event.text.endsWith("\n") || last.event.text.length + text.length > MOST_TEXT)
      return false;
    last.event = { ...last.event, text: last.event.text + text };
    last.last = n;
    return true;
  }

  #call(event, place) {
    const depth = this.#open.filter(({ by }) => by === event.by).length;
    this.#open.push(this.#add("calls", event, place, null, depth));
    if (this.#open.length > MOST) this.#open.shift();
  }

  // Calls of several threads of a host may end in any order.
  #return(event, place) {
    const open = this.#open.findLast(({ by, event: { fn } }) => by === event.by && fn === event.fn);
    if (!open) return;
    this.#open.splice(this.#open.indexOf(open), 1);
    open.to = place;
    open.result = event;
  }

  #thread(event, place) {
    if (event.what === "start") {
      this.#worker = this.#add("threads", event, place, null);
    } else if (this.#worker) {
      this.#worker.to = place;
      this.#worker.result = event;
      this.#worker = null;
    }
  }

  #add(lane, event, from, to, depth = 0) {
    const things = this.lanes[lane];
    const by = event.by ?? "";
    const id = this.#next++;
    const thing = { id, lane, by, from, to, event, result: null, depth, times: 1, last: from.n };
    things.push(thing);
    if (things.length > MOST) things.splice(0, MOST / 8);
    return thing;
  }

  #sample() {
    // A picture may be older than the turning back of time that it comes after.
    const later = ({ t, cycle }) => t > this.now.t || cycle > this.now.cycle;
    while (this.samples.length > 0 && later(this.samples.at(-1))) this.samples.pop();
    const last = this.samples.at(-1);
    if (last && last.t === this.now.t && last.cycle === this.now.cycle && last.n === this.now.n) {
      return;
    }
    this.samples.push(this.now);
    if (this.samples.length <= MOST_SAMPLES) return;
    // The older half is kept with half as much of detail.
    const half = MOST_SAMPLES / 2;
    this.samples = this.samples.filter((_, i) => i >= half || i % 2 === 0);
  }

  // Time was turned back: what came later has not happened.
  #cut({ t, cycle }) {
    const later = ({ from }) => from.t > t || (cycle !== undefined && from.cycle > cycle);
    for (const [lane, things] of Object.entries(this.lanes)) {
      this.lanes[lane] = things.filter((thing) => !later(thing));
      for (const thing of this.lanes[lane]) if (thing.to?.t > t) thing.to = { ...thing.to, t };
    }
    this.samples = this.samples.filter((from) => !later({ from }));
    this.#open = this.#open.filter((call) => !later(call));
    if (this.#worker && later(this.#worker)) this.#worker = null;
    this.#pauses.clear();
    this.now = { ...this.now, t, cycle: cycle ?? this.now.cycle };
  }
}
