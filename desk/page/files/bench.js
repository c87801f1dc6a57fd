// The board at the other end: lines and their answers, events, and pictures, over two WebSockets
// that open again by themselves.

const GREETING = "vexo 1 events\n";
const MOST_BYTES = 4096; // of a line
const MOST_WAITING = 32; // lines that are sent and not answered
const REGISTER_BYTES = 4 * 3 * 256;
const BACK_OFF = [250, 500, 1000, 2000, 4000, 8000]; // ms
const LOST = "the connection was lost before the answer came";

/**
 * @typedef {object} Answer
 * @property {"done"|"unmet"|"refused"|"lost"} result `lost`: nobody knows whether the line was run
 * @property {string} text what the line says, lines with a line feed between them
 * @property {string} line the line that was sent
 */

/**
 * @typedef {object} Moment
 * @property {object} header as the server sends it
 * @property {Uint8Array} registers by position, page and number; 3 x 256 bytes a position
 * @property {ImageData} picture the same one every time: draw it before the next one comes
 */

/**
 * Events, all of them CustomEvents with what they tell in `detail`:
 *   "event"   an event of the feed
 *   "moment"  a Moment
 *   "missed"  {count, anew}: so many events are not known here; `anew`: the board is another one
 *   "status"  {connected, attempt, wait}: `wait` ms until the next attempt
 *   "sent"    {line}: a line is on its way
 *   "answer"  an Answer, also of lines that other panes sent
 *   "select"  what is selected now, of all panes
 *
 * @fires Bench#event
 */
export class Bench extends EventTarget {
  /** @type {boolean} Lines can be sent and are answered. */
  connected = false;
  /** @type {Moment|null} The last one that came. */
  moment = null;
  /** @type {string|null} Why the run is stopped; null: it is not. */
  stopped = null;
  /** What all panes look at: {channel, chip, page, register}, each a number or null. */
  selection = { channel: null, chip: null, page: null, register: null };

  #place;
  #control = null;
  #monitor = null;
  #waiting = []; // to be sent
  #sent = []; // to be answered, in order
  #rest = ""; // of a line that has not come whole
  #next = null; // number of the next event
  #attempt = 0;
  #timer = 0;
  #stopTold = false; // whether events have told of `stopped`
  #decoding = false;
  #latest = null; // came while another one was decoded
  #image = null;

  /** @param {URL|Location|string} place where the page came from */
  constructor(place = location) {
    super();
    this.#place = new URL("./", String(place));
    this.#place.protocol = this.#place.protocol === "https:" ? "wss:" : "ws:";
  }

  /** Opens the connections, and keeps them open; pictures only while the page is seen. */
  open() {
    this.#openControl();
    document.addEventListener("visibilitychange", () => this.#watchWhileSeen());
  }

  /**
   * Sends a line of the script language. Never throws: what goes wrong is in the answer.
   * @param {string} line
   * @returns {Promise<Answer>}
   */
  send(line) {
    if (/[\n\r]/.test(line)) return refused(line, "a line has no line feed");
    if (new TextEncoder().encode(line).length >= MOST_BYTES) {
      return refused(line, `a line has ${MOST_BYTES} bytes at most`);
    }
    if (!this.connected) {
      return Promise.resolve({ result: "lost", text: "there is no connection", line });
    }
    return new Promise((resolve) => {
      this.#waiting.push({ line, resolve });
      this.#sendWaiting();
    });
  }

  /**
   * Selects a channel, a chip, a page or a register for all panes; what is not named stays.
   * @param {{channel?: number|null, chip?: number|null, page?: number|null, register?: number|null}} what
   */
  select(what) {
    this.selection = { ...this.selection, ...what };
    this.#tell("select", this.selection);
  }

  /** Tries at once to connect again. */
  retry() {
    if (this.#control) return;
    clearTimeout(this.#timer);
    this.#openControl();
  }

  #tell(type, detail) {
    this.dispatchEvent(new CustomEvent(type, { detail }));
  }

  // ---- Lines and events -------------------------------------------------------------------------

  #openControl() {
    const socket = new WebSocket(new URL("control", this.#place));
    this.#control = socket;
    this.#rest = "";
    socket.onopen = () => socket.send(GREETING);
    socket.onmessage = ({ data }) => this.#take(data);
    socket.onclose = () => this.#onLost();
  }

  #onLost() {
    this.#control = null;
    this.connected = false;
    this.#monitor?.close();
    const lost = [...this.#sent, ...this.#waiting];
    this.#sent = [];
    this.#waiting = [];
    for (const { line, resolve } of lost) resolve({ result: "lost", text: LOST, line });
    const wait =
      BACK_OFF[Math.min(this.#attempt, BACK_OFF.length - 1)] * (0.8 + Math.random() * 0.4);
    this.#attempt += 1;
    this.#timer = setTimeout(() => this.#openControl(), wait);
    this.#tell("status", { connected: false, attempt: this.#attempt, wait });
  }

  #sendWaiting() {
    let text = "";
    while (this.#waiting.length > 0 && this.#sent.length < MOST_WAITING) {
      const one = this.#waiting.shift();
      this.#sent.push(one);
      text += `${one.line}\n`;
      this.#tell("sent", { line: one.line });
    }
    if (text) this.#control.send(text);
  }

  #take(text) {
    const lines = (this.#rest + text).split("\n");
    this.#rest = lines.pop();
    for (const line of lines) this.#takeObject(JSON.parse(line));
  }

  #takeObject(said) {
    if ("event" in said) return this.#takeEvent(said);
    if ("answer" in said) return this.#takeAnswer(said);
    if ("vexo" in said) return this.#takeGreeting(said);
    if ("missed" in said) {
      this.#stopTold = false;
      this.#next += said.missed;
      return this.#tell("missed", { count: said.missed, anew: false });
    }
    if ("error" in said) console.warn(`the board closes the connection: ${said.error}`);
  }

  #takeGreeting({ next }) {
    const count = this.#next === null ? 0 : next - this.#next;
    this.#next = next;
    this.#attempt = 0;
    this.#stopTold = false;
    this.connected = true;
    this.#watchWhileSeen();
    if (count !== 0) this.#tell("missed", { count: Math.max(count, 0), anew: count < 0 });
    this.#tell("status", { connected: true, attempt: 0, wait: 0 });
  }

  #takeEvent(event) {
    this.#next = event.event + 1;
    if (["stopped", "continued", "rewound"].includes(event.ev)) {
      this.stopped = event.ev === "stopped" ? event.text : null;
      this.#stopTold = true;
    }
    this.#tell("event", event);
  }

  #takeAnswer({ line, result, text }) {
    const one = this.#sent.shift();
    const answer = { result, text, line: one?.line ?? line };
    one?.resolve(answer);
    this.#tell("answer", answer);
    this.#sendWaiting();
  }

  // ---- Pictures ---------------------------------------------------------------------------------

  #watchWhileSeen() {
    const wanted = this.connected && document.visibilityState === "visible";
    if (!wanted) return this.#monitor?.close();
    if (this.#monitor) return;
    const socket = new WebSocket(new URL("monitor", this.#place));
    this.#monitor = socket;
    socket.binaryType = "arraybuffer";
    socket.onmessage = ({ data }) => this.#takePicture(data);
    socket.onclose = () => {
      this.#monitor = null;
      if (this.connected) setTimeout(() => this.#watchWhileSeen(), BACK_OFF[2]);
    };
  }

  // One is decoded at a time; of those that come meanwhile the last is the next.
  async #takePicture(bytes) {
    this.#latest = bytes;
    if (this.#decoding) return;
    this.#decoding = true;
    while (this.#latest) {
      const next = this.#latest;
      this.#latest = null;
      try {
        this.moment = await this.#decode(next);
      } catch (error) {
        console.warn("a picture cannot be read", error);
        continue;
      }
      // A picture may be older than what events have told since.
      if (!this.#stopTold) this.stopped = this.moment.header.stopped;
      this.#tell("moment", this.moment);
    }
    this.#decoding = false;
  }

  async #decode(bytes) {
    const length = new DataView(bytes).getUint32(0, true);
    const header = JSON.parse(new TextDecoder().decode(new Uint8Array(bytes, 4, length)));
    const registers = new Uint8Array(bytes, 4 + length, REGISTER_BYTES);
    const deflated = new Uint8Array(bytes, 4 + length + REGISTER_BYTES);
    const { width, height } = header;
    if (this.#image?.width !== width || this.#image?.height !== height) {
      this.#image = new ImageData(width, height);
    }
    const colors = await inflate(deflated, 3 * width * height);
    unpack(colors, new Uint32Array(this.#image.data.buffer));
    return { header, registers, picture: this.#image };
  }
}

async function inflate(deflated, length) {
  const stream = new DecompressionStream("deflate-raw");
  const writer = stream.writable.getWriter();
  const written = Promise.all([writer.write(deflated), writer.close()]);
  const whole = new Uint8Array(length);
  const reader = stream.readable.getReader();
  let at = 0;
  for (let piece = await reader.read(); !piece.done; piece = await reader.read()) {
    whole.set(piece.value, at);
    at += piece.value.length;
  }
  await written;
  return whole;
}

// Pixels of three bytes into such of four.
function unpack(colors, pixels) {
  for (let at = 0, from = 0; at < pixels.length; at += 1, from += 3) {
    pixels[at] = 0xff000000 | (colors[from + 2] << 16) | (colors[from + 1] << 8) | colors[from];
  }
}

function refused(line, text) {
  return Promise.resolve({ result: "refused", text, line });
}
