// How the board is: what its lines have made of it, from the answer to `board` and from the lines
// that anybody sends afterwards.

export const CHANNELS = 16;
export const CHIPS = ["master", "slave1", "slave2", "slave3"];

/** As the test cards of the cameras have them. */
export const CHANNEL_COLORS = [
  "#a82c2c",
  "#227096",
  "#967614",
  "#683296",
  "#1c8054",
  "#b03e74",
  "#3850b0",
  "#6e8018",
  "#ac581a",
  "#147e80",
  "#8c2884",
  "#3e7828",
  "#2c326c",
  "#c46452",
  "#566274",
  "#8c602c",
];

const FITTED = 0x28;
const FAMILY = 0xf8;

/** The words of a line, without their quotes and escapes. */
export function words(line) {
  const escapes = { n: "\n", r: "\r", t: "\t" };
  return [...line.matchAll(/"((?:[^"\\]|\\.)*)"|#.*|[^\s"#]+/g)]
    .filter(([word]) => !word.startsWith("#"))
    .map(([word, quoted]) =>
      quoted === undefined
        ? word
        : quoted.replace(/\\(x[0-9A-Fa-f]{2}|.)/g, (_, one) =>
            one[0] === "x"
              ? String.fromCharCode(parseInt(one.slice(1), 16))
              : (escapes[one] ?? one),
          ),
    );
}

/** A word as it stands in a line: in quotes where it must be. */
export function quoted(word) {
  if (/^[^\s"#]+$/.test(word)) return word;
  const special = { "\n": "\\n", "\r": "\\r", "\t": "\\t", "\\": "\\\\", '"': '\\"' };
  return `"${word.replace(/[\n\r\t\\"]/g, (one) => special[one])}"`;
}

/** The numbers that `0-3,7` or `all` names. */
export function numbers(text, count = CHANNELS) {
  if (text === "all") return [...Array(count).keys()];
  return text.split(",").flatMap((part) => {
    const [first, last = first] = part.split("-").map(Number);
    return Array.from({ length: Math.max(0, last - first + 1) }, (_, at) => first + at);
  });
}

function fresh() {
  return {
    ids: CHIPS.map(() => FITTED),
    plugged: Array(CHANNELS).fill(true),
    standards: Array(CHANNELS).fill("ntsc"), // also of a camera that is not plugged
    weak: Array(CHANNELS).fill(false),
    motion: Array(CHANNELS).fill(false),
    faults: new Set(),
    drivers: new Map(), // those that are not present
    nvram: { record: null, blank: false, fail: "none" },
    settle: "0",
    sync: "period 20",
    deaf: false,
    files: new Map(),
  };
}

/** Fires "change" whenever something may have changed. */
export class State extends EventTarget {
  #bench;
  #since = []; // lines that came while the answer to `board` was awaited
  #asking = 0;

  constructor(bench) {
    super();
    this.#bench = bench;
    this.board = fresh();
    bench.addEventListener("status", ({ detail }) => detail.connected && this.#ask());
    bench.addEventListener("missed", () => bench.connected && this.#ask());
    bench.addEventListener("event", ({ detail }) => {
      if (detail.ev === "rewound") this.#ask();
      if (detail.ev === "line") this.#take(detail.text);
    });
  }

  /** Whether the board has the chip at this position, 0 to 3. */
  fitted(chip) {
    return (this.board.ids[chip] & FAMILY) === FITTED;
  }

  /** Whether there is a chip for this channel. */
  has(channel) {
    return this.fitted(channel >> 2);
  }

  async #ask() {
    const asked = ++this.#asking;
    this.#since = [];
    const { result, text } = await this.#bench.send("board");
    if (asked !== this.#asking || result !== "done") return;
    this.board = fresh();
    for (const line of [...text.split("\n"), ...this.#since]) this.#apply(words(line));
    this.dispatchEvent(new Event("change"));
  }

  #take(line) {
    this.#since.push(line);
    if (this.#apply(words(line))) this.dispatchEvent(new Event("change"));
  }

  // Whether it is a line that says how the board is.
  #apply([word, first, second, ...rest]) {
    const { board } = this;
    const onChannels = (list, value) => {
      for (const channel of numbers(first)) list[channel] = value;
    };
    switch (word) {
      case "board":
        return this.#fit(first, second, rest[0]);
      case "camera":
        onChannels(board.plugged, second !== "off");
        if (second !== "off") onChannels(board.standards, second);
        return true;
      case "weak":
      case "motion":
        onChannels(board[word], second === "on");
        return true;
      case "fault":
        board.faults[second === "off" ? "delete" : "add"](first);
        return true;
      case "driver":
        board.drivers.set(first, second);
        return true;
      case "nvram":
        if (first === "fail") board.nvram.fail = second;
        if (first === "blank") Object.assign(board.nvram, { record: null, blank: true });
        if (first === "record")
          Object.assign(board.nvram, { record: [second, ...rest], blank: false });
        return true;
      case "settle":
        board.settle = first;
        return true;
      case "sync":
        board.sync = `${first} ${second}`;
        return true;
      case "window":
        if (first === "deaf" || first === "hearing") board.deaf = first === "deaf";
        return true;
      case "file":
        board.files.set(first, second);
        return true;
      default:
        return false;
    }
  }

  #fit(what, where, id) {
    if (what === "chips")
      this.board.ids = CHIPS.map((_, chip) => (chip < Number(where) ? FITTED : 0));
    if (what === "id") {
      this.board.ids = this.board.ids.map((was, chip) =>
        where === "all" || where === CHIPS[chip] ? Number(id) : was,
      );
    }
    return true;
  }
}
