// What the registers were and are, from one moment to the next.

const LIT = [700, 1500, 3000]; // ms of the clock that a change is bright, less bright, to be seen
const RESTLESS = 12; // of the last moments: a register that keeps changing is no news
const BYTES = 4 * 3 * 256;

/**
 * A register's place.
 * @typedef {{chip: number, page: number, number: number}} Register
 */

export class RegisterHistory {
  #now = null;
  #before = new Uint8Array(BYTES); // the value before the last change
  #changedAt = new Float64Array(BYTES).fill(-1); // the board's time of it
  #score = new Uint8Array(BYTES);
  #lit = new Map(); // index: {since, level}, by the clock

  index({ chip, page, number }) {
    return (chip * 3 + page) * 256 + number;
  }

  /**
   * The registers of a moment.
   * @param {Uint8Array} registers
   * @param {number} time the board's
   * @returns {Set<number>} indexes of those that differ from the moment before; all at first
   */
  take(registers, time) {
    const changed = new Set();
    const first = this.#now === null;
    const since = performance.now();
    for (let i = 0; i < BYTES; ++i) {
      if (first) {
        changed.add(i);
      } else if (registers[i] !== this.#now[i]) {
        changed.add(i);
        this.#before[i] = this.#now[i];
        this.#changedAt[i] = time;
        this.#score[i] = Math.min(this.#score[i] + 3, 3 * RESTLESS);
        this.#lit.set(i, { since, level: LIT.length });
      } else if (this.#score[i] > 0) {
        this.#score[i] -= 1;
      }
    }
    this.#now = registers.slice();
    return changed;
  }

  /** Another board: nothing is known any more. */
  forget() {
    this.#now = null;
    this.#changedAt.fill(-1);
    this.#score.fill(0);
    this.#lit.clear();
  }

  /** @returns {Register[]} those whose change is less to be seen than before */
  fade() {
    const now = performance.now();
    const faded = [];
    for (const [index, lit] of this.#lit) {
      const level = LIT.filter((end) => now - lit.since < end).length;
      if (level === lit.level) continue;
      lit.level = level;
      if (level === 0) this.#lit.delete(index);
      faded.push({ chip: Math.floor(index / 768), page: (index >> 8) % 3, number: index & 255 });
    }
    return faded;
  }

  /** @returns {number|null} null before the first moment */
  value(register) {
    return this.#now?.[this.index(register)] ?? null;
  }

  /** The last change that was seen: {value, time}, null when there was none. */
  before(register) {
    const index = this.index(register);
    const time = this.#changedAt[index];
    return time < 0 ? null : { value: this.#before[index], time };
  }

  /** How bright a change is, 3 to 1; 0: there is none to be seen. */
  brightness(register) {
    return this.#lit.get(this.index(register))?.level ?? 0;
  }

  /** Whether a register keeps changing. */
  restless(register) {
    return this.#score[this.index(register)] > RESTLESS;
  }

  /** Whether something changed on a page of a chip that is to be seen. */
  news(chip, page) {
    const from = this.index({ chip, page, number: 0 });
    for (const index of this.#lit.keys()) {
      if (index >= from && index < from + 256 && this.#score[index] <= RESTLESS) return true;
    }
    return false;
  }
}
