// The registers that make a channel's window what it is: those of its position on page 1, and its
// scaler's on page 0.

const LIVE_PAGE = 1;
const SCALER_PAGE = 0;

const known = new Map(); // by channel

/**
 * @param {object} language
 * @param {number} channel
 * @returns {{chip: number, page: number, name: string, numbers: number[], fields: object[]}[]} runs of
 *   registers of one name
 */
export function registersOf({ pages }, channel) {
  if (!known.has(channel)) {
    const position = channel & 3;
    const scaler = runs(pages, SCALER_PAGE, position).filter(({ name }) =>
      name.startsWith("scaler "),
    );
    const all = [...runs(pages, LIVE_PAGE, position), ...scaler];
    known.set(
      channel,
      all.map((run) => ({ ...run, chip: channel >> 2 })),
    );
  }
  return known.get(channel);
}

function runs(pages, page, position) {
  const found = [];
  pages[page].forEach((register, number) => {
    if (register?.position !== position) return;
    const last = found.at(-1);
    if (last?.name === register.name && last.numbers.at(-1) === number - 1)
      last.numbers.push(number);
    else found.push({ ...register, page, numbers: [number] });
  });
  return found;
}
