// Registers, messages, calls and records in words, as the shell says them.

const CHIP_SELECTS = new Map([
  [0x03, "master"],
  [0x0c, "slave1"],
  [0x30, "slave2"],
  [0xc0, "slave3"],
  [0xff, "all chips"],
]);
const STANDARDS = ["NTSC", "PAL", "no video"];
const STATUSES = new Map([
  [0x1003, "chip initialization found no chip"],
  [0x1004, "chip initialization met a device problem"],
  [0x1005, "chip initialization gave no channel"],
  [0x2001, "the video back-end driver could not be opened"],
  [0x2002, "the video back-end driver was open already"],
]);
const RESULTS = new Map([
  [0, "done"],
  [-1, "failed"],
  [-4, "no header word"],
  [-5, "refused argument"],
  [-6, "not initialized"],
  [-8, "not ready"],
]);
const REASONS = ["detach", "attach"]; // of DllMain

/** 0x0A; `digits` at least. */
export function hex(value, digits = 2) {
  return `0x${(value >>> 0).toString(16).toUpperCase().padStart(digits, "0")}`;
}

/** Milliseconds as seconds: 1.520. */
export function seconds(ms) {
  return (ms / 1000).toFixed(3);
}

const NUMBERS = new Intl.NumberFormat("en");

/** 1,234 */
export function count(number) {
  return NUMBERS.format(number);
}

/** A text with what would not be seen, or turn the rest of the line around, made visible. */
export function printable(text) {
  return text.replace(
    /[\u0000-\u0008\u000b-\u001f\u007f-\u009f\u200e\u200f\u202a-\u202e\u2066-\u2069]/g,
    (c) =>
      c < "\u0100"
        ? `\\x${c.charCodeAt(0).toString(16).toUpperCase().padStart(2, "0")}`
        : `\\u${c.charCodeAt(0).toString(16).toUpperCase()}`,
  );
}

/** The bits that are set in a mask: 0-4,6-15. */
export function bitList(mask, bits = 16) {
  const runs = [];
  for (let bit = 0; bit < bits; ++bit) {
    if (((mask >>> bit) & 1) === 0) continue;
    const last = runs.at(-1);
    if (last && last[1] === bit - 1) last[1] = bit;
    else runs.push([bit, bit]);
  }
  return runs.map(([first, last]) => (first === last ? first : `${first}-${last}`)).join(",");
}

// ---- Registers ----------------------------------------------------------------------------------

/** The description of a register, null for one without a name. */
export function registerAt(language, page, number) {
  return language.pages[page]?.[number] ?? null;
}

/** A register's name, with the channel's position on its chip where the name repeats. */
export function registerLabel(register) {
  if (!register) return "(no name)";
  return register.position === undefined ? register.name : `${register.name} ${register.position}`;
}

function fieldMask(field) {
  const [high, low] = field.bits;
  return field.mask ?? (1 << (high + 1)) - (1 << low);
}

/** 7, or 1-0 */
export function fieldBits(field) {
  const [high, low] = field.bits;
  return high === low ? `${high}` : `${high}-${low}`;
}

/** What a field holds in a register's byte, counted from its lowest bit. */
export function fieldValue(field, byte) {
  return (byte & fieldMask(field)) >>> field.bits[1];
}

/** "enable, hold, position 2": what is set; a register of wide fields alone shows all of them. */
export function fieldsInWords(register, byte) {
  const fields = register?.fields ?? [];
  const wide = ({ bits }) => bits[0] !== bits[1];
  const all = fields.every(wide);
  return fields
    .filter((field) => all || fieldValue(field, byte) !== 0)
    .map((field) => (wide(field) ? `${field.name} ${fieldValue(field, byte)}` : field.name))
    .join(", ");
}

// ---- Messages -----------------------------------------------------------------------------------

/** Bytes of a record in hexadecimal. */
export function bytesOf(record) {
  return Uint8Array.from(record?.match(/../g) ?? [], (digits) => parseInt(digits, 16));
}

function number(bytes, offset, width) {
  let value = 0;
  for (let i = width - 1; i >= 0; --i) value = value * 256 + bytes[offset + i];
  return value;
}

function standardInWords(standard) {
  return STANDARDS[standard] ?? `standard ${standard}`;
}

function channelList(mask, bits) {
  const list = bitList(mask, bits);
  return (/[,-]/.test(list) ? "channels " : "channel ") + list;
}

function videoInfo({ record, channels }) {
  const lost = number(record, 0, 4);
  const standards = new Map();
  for (let channel = 0; channel < Math.min(channels, 16); ++channel) {
    if ((lost >>> channel) & 1) continue;
    const standard = record[4 + channel];
    standards.set(standard, (standards.get(standard) ?? 0) | (1 << channel));
  }
  const words = [lost === 0 ? "no channel lost" : `${channelList(lost, 32)} lost`];
  for (const [standard, mask] of standards) {
    words.push(`${standardInWords(standard)} on ${bitList(mask)}`);
  }
  return `loss mask ${hex(lost, 4)}: ${words.join("; ")}`;
}

function initResult({ record }) {
  const chips = number(record, 0, 4);
  const ids = [...record.subarray(8, 12)].map((id) => hex(id).slice(2));
  return (
    `${chips} ${chips === 1 ? "chip" : "chips"}, ${standardInWords(number(record, 4, 4))}, ` +
    `identification ${ids.join(" ")}`
  );
}

function registerValue({ record, language }) {
  const [select, page, reg, value] = record;
  const register = registerAt(language, page, reg);
  const name = register ? ` (${registerLabel(register)})` : "";
  const fields = fieldsInWords(register, value);
  return (
    `${CHIP_SELECTS.get(select) ?? hex(select)} page ${page} register ${hex(reg)}${name} = ` +
    hex(value) +
    (fields && ` (${fields})`)
  );
}

// By the messages' names: bytes of the record that wParam points to, and what it says.
const CONTENTS = {
  status: [0, ({ wparam }) => `${hex(wparam, 4)} ${STATUSES.get(wparam) ?? "(unknown)"}`],
  "init-result": [12, initResult],
  "video-info": [20, videoInfo],
  "motion-status": [
    0,
    ({ wparam }) =>
      `mask ${hex(wparam, 4)}: ` +
      (wparam === 0 ? "no motion" : `motion on ${channelList(wparam, 32)}`),
  ],
  "chip-version": [0, ({ wparam }) => hex(wparam, 8)],
  "register-value": [4, registerValue],
};

/** The name of a message's code, empty for one that is none of the library's. */
export function messageName(language, code) {
  const name = language.messages.find((message) => message.code === code)?.name;
  return name ? name.replaceAll("-", " ") : "";
}

/**
 * What a `send` or `post` event says.
 * @param {object} language
 * @param {object} event
 * @param {number} channels of the board
 */
export function messageInWords(language, event, channels = 16) {
  const row = language.messages.find((message) => message.code === event.message);
  const wparam = event.wparam ?? 0;
  let text = `no message of the library, wParam ${hex(wparam, 8)}`;
  if (row) {
    const [length, words] = CONTENTS[row.name] ?? [0, () => hex(wparam, 8)];
    const record = bytesOf(event.record);
    text = messageName(language, event.message);
    text +=
      record.length < length
        ? " without its record"
        : `: ${words({ wparam, record, channels, language })}`;
  }
  if (event.ev === "post") text += event.ok ? " (posted)" : " (not posted)";
  else if (!event.ok) text += " (not answered)";
  return text;
}

// ---- Calls --------------------------------------------------------------------------------------

function command(language, event) {
  if (event.fn !== "VEXOAPI_CommandProc") return undefined;
  return language.commands.find(({ code }) => code === (event.args[0] & 0xffff));
}

/** A call in a few words: live-split; pip stop; set motion info 3, level 2. */
export function callInWords(language, event) {
  const args = event.args ?? [];
  switch (event.fn) {
    case "VEXOAPI_CommandProc":
      return command(language, event)?.name ?? `command ${hex(args[0], 4)}`;
    case "VEXOAPI_TextCommandProc":
      return printable(event.text?.trim() ?? "text");
    case "VEXOAPI_SetMotionInfo":
      return `motion info of channel ${args[0]}, level ${args[1]}`;
    case "DllMain":
      return REASONS[args[0]] ?? `entry ${args[0]}`;
    default:
      return [event.fn.replace(/^VEXOAPI_/, ""), ...args.map((arg) => hex(arg, 1))].join(" ");
  }
}

/** -5: refused argument */
export function resultInWords(event) {
  if (event.value === null || event.value === undefined) return "no result";
  const words = event.fn === "DllMain" ? undefined : RESULTS.get(event.value);
  return words ? `${event.value}: ${words}` : `${event.value}`;
}

/** Whether a call's result tells of a failure. */
export function failed(event) {
  return event.fn !== "DllMain" && event.value < 0;
}

function fieldInWords(field, record) {
  const values = [];
  for (let i = 0; i < field.count; ++i) {
    values.push(number(record, field.offset + i * field.width, field.width));
  }
  const [value] = values;
  const bytes = (list) => list.map((byte) => hex(byte).slice(2)).join(" ");
  switch (field.kind) {
    case "choice":
      return field.values.find((named) => named.value === value)?.name ?? hex(value);
    case "mask":
      return `${hex(value, 4)}: ${value === 0 ? "none" : bitList(value, 32)}`;
    case "channels":
      return values.join(" ");
    case "bytes":
      return bytes(values);
    case "byte":
      return hex(value);
    default:
      return values.join(" ");
  }
}

/**
 * The fields of a call's record, before and after; empty where the record has none.
 * @returns {{name: string, help: string, before: string, after: string|null}[]}
 */
export function recordInWords(language, call, before, after) {
  const fields = command(language, call)?.fields ?? [];
  const fits = ({ offset, width, count: many }, bytes) => offset + width * many <= bytes.length;
  const old = bytesOf(before);
  const now = bytesOf(after);
  return fields
    .filter((field) => field.offset !== undefined && fits(field, old))
    .map((field) => ({
      name: field.name,
      help: field.help,
      before: fieldInWords(field, old),
      after: fits(field, now) ? fieldInWords(field, now) : null,
    }));
}
