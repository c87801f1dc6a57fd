// Which part of an axis is seen, and how it is moved: pure numbers, no element.

/** Axes: the member of a place, its name, its unit, and the least that is seen. */
export const AXES = {
  t: { name: "Time", unit: "s", least: 1, start: 2000 },
  cycle: { name: "Cycles", unit: "", least: 16, start: 4000 },
  n: { name: "Events", unit: "", least: 4, start: 60 },
};

const MARGIN = 0.02; // behind the newest, of what is seen

export class TimelineView {
  axis = "t";
  from = 0;
  span = AXES.t.start;
  follow = true;

  constructor(model) {
    this.model = model;
  }

  get to() {
    return this.from + this.span;
  }

  /** Where a place is, 0 to 1 of what is seen. */
  at(place) {
    return (place[this.axis] - this.from) / this.span;
  }

  /** Goes along with the board. */
  keepUp() {
    if (this.follow) this.from = this.model.now[this.axis] - this.span * (1 - MARGIN);
  }

  setAxis(axis) {
    const seen = this.nearest(this.from + this.span / 2);
    this.axis = axis;
    this.span = AXES[axis].start;
    if (seen) this.from = seen[axis] - this.span / 2;
    this.keepUp();
  }

  /** Keeps what is at `share` of the width in its place. */
  zoom(factor, share = 0.5) {
    const most = Math.max(this.model.now[this.axis] - this.begin(), AXES[this.axis].start) * 1.2;
    const fixed = this.follow ? 1 - MARGIN : share;
    const point = this.from + this.span * fixed;
    this.span = Math.min(Math.max(this.span * factor, AXES[this.axis].least), most);
    this.from = point - this.span * fixed;
    this.keepUp();
  }

  /** By a share of the width. */
  pan(share) {
    this.follow = false;
    const half = this.span / 2;
    const least = this.begin() - half;
    const most = this.model.now[this.axis] - half;
    this.from = Math.min(Math.max(this.from + share * this.span, least), Math.max(most, least));
  }

  fit(from = this.begin(), to = this.model.now[this.axis]) {
    const length = Math.max(to - from, AXES[this.axis].least);
    this.follow = false;
    this.span = length * 1.1;
    this.from = from - length * 0.05;
  }

  toBegin() {
    this.follow = false;
    this.from = this.begin() - this.span * MARGIN;
  }

  begin() {
    return this.model.first?.[this.axis] ?? 0;
  }

  /** What is known of where the board was at a point of the axis. */
  nearest(point) {
    const { samples } = this.model;
    return samples[Math.min(firstAfter(samples, this.axis, point), samples.length - 1)];
  }

  /** Whether any of a thing is seen. */
  sees({ from, to }) {
    const end = (to ?? this.model.now)[this.axis];
    return end >= this.from && from[this.axis] <= this.to;
  }
}

/** The index of the first place at or behind a point. */
export function firstAfter(places, axis, point) {
  let low = 0;
  let high = places.length;
  while (low < high) {
    const middle = (low + high) >> 1;
    if (places[middle][axis] < point) low = middle + 1;
    else high = middle;
  }
  return low;
}

/** Distance of the marks of a ruler: 1, 2 or 5 times a power of ten, `most` of them at most. */
export function rulerStep(span, most) {
  const least = span / most;
  const power = 10 ** Math.floor(Math.log10(least));
  return power * [1, 2, 5, 10].find((times) => times * power >= least);
}
