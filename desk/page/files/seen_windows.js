// Which windows are seen: chips keep showing channels that a layout has left behind others.

/**
 * @param {{left: number, right: number, top: number, bottom: number}[]} windows the topmost first
 * @returns {object[]} those of which something is seen, in the same order
 */
export function seenWindows(windows) {
  return windows.filter((window, at) => {
    let left = [window];
    for (const above of windows.slice(0, at)) left = left.flatMap((part) => without(part, above));
    return left.some((part) => part.left < part.right && part.top < part.bottom);
  });
}

// What is left of a rectangle when another one covers it: four at most.
function without(part, above) {
  const left = Math.max(part.left, above.left);
  const right = Math.min(part.right, above.right);
  const top = Math.max(part.top, above.top);
  const bottom = Math.min(part.bottom, above.bottom);
  if (left >= right || top >= bottom) return [part];
  return [
    { ...part, bottom: top },
    { ...part, top: bottom },
    { left: part.left, right: left, top, bottom },
    { left: right, right: part.right, top, bottom },
  ].filter((one) => one.left < one.right && one.top < one.bottom);
}
