// What the registers were and are, from one moment to the next.

const LIT = 3000; // ms of the clock that a change is to be seen
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
  #lit = new Map(); // index: {until, turn}, by the clock
  #turn = false;

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
    const until = performance.now() + LIT;
    this.#turn = !this.#turn;
    for (let i = 0; i < BYTES; ++i) {
      if (first) {
        changed.add(i);
      } else if (registers[i] !== this.#now[i]) {
        changed.add(i);
        this.#before[i] = this.#now[i];
        this.#changedAt[i] = time;
        this.#score[i] = Math.min(this.#score[i] + 3, 3 * RESTLESS);
        this.#lit.set(i, { until, turn: this.#turn });
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

  /** @returns {Register[]} those whose change is no longer to be seen */
  settle() {
    const now = performance.now();
    const settled = [];
    for (const [index, { until }] of this.#lit) {
      if (until > now) continue;
      this.#lit.delete(index);
      settled.push({ chip: Math.floor(index / 768), page: (index >> 8) % 3, number: index & 255 });
    }
    return settled;
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

  /** How a register is to be marked: "even" and "odd" are changes, in turn; null: not. */
  change(register) {
    const index = this.index(register);
    const lit = this.#lit.get(index);
    if (!lit) return null;
    if (this.#score[index] > RESTLESS) return "restless";
    return lit.turn ? "odd" : "even";
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
