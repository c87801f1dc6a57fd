// The bar below the header: a stopped run, a lost connection, and what was missed meanwhile.

import { make, setText } from "./dom.js";

const SAID_FOR = 12000; // ms
const STEP = 800; // ms in which a step mostly stops again

/**
 * @param {HTMLElement} place
 * @param {import("./bench.js").Bench} bench
 */
export function showNotices(place, bench) {
  place.append(stopped(bench), connection(bench), missed(bench));
}

// ---- A stopped run ------------------------------------------------------------------------------

function stopped(bench) {
  const large = make("span", { class: "large" });
  const cause = make("strong", { class: "mono" });
  const where = make("span", { class: "mono" });
  const calls = make("pre", {});
  const stack = make("details", {}, make("summary", {}, "Functions"), calls);
  const goOn = (line, text, properties = {}) =>
    make("button", { type: "button", click: () => bench.send(line), ...properties }, text);
  const notice = make(
    "section",
    { class: "notice stopped", "aria-label": "Stopped", hidden: true },
    large,
    make("div", { class: "words" }, cause, where, stack),
    make(
      "div",
      { class: "toolbar" },
      goOn("continue", "Continue", { class: "primary", title: "continue: to the next stop" }),
      goOn("step", "Step", { title: "step: one bus cycle" }),
      goOn("step call", "Step call", { title: "step call: to the end of a call" }),
    ),
  );
  const is = (stopped) => {
    document.documentElement.classList.toggle("is-stopped", stopped);
    setText(large, stopped ? "Stopped" : "Goes on");
    if (stopped) notice.hidden = false;
  };
  // Where it is, and in which functions, the board tells when it is asked.
  const tell = async () => {
    setText(cause, bench.stopped.split("\n")[0]);
    is(true);
    const { result, text } = await bench.send("where");
    const [, place = "", ...functions] = result === "done" ? text.split("\n") : [];
    setText(where, place.trim());
    setText(calls, functions.map((line) => line.trim()).join("\n"));
    stack.hidden = functions.length === 0;
  };
  let last = null;
  let timer = 0;
  const show = ({ detail: { ev } }) => {
    const { stopped: now } = bench;
    if (now === last && ev !== "stopped") return;
    last = now;
    clearTimeout(timer);
    if (now !== null) return tell();
    // A step goes on and stops again: what is below stays where it is.
    is(false);
    timer = setTimeout(() => (notice.hidden = true), STEP);
  };
  bench.addEventListener("event", show);
  bench.addEventListener("moment", show);
  return notice;
}

// ---- The connection -----------------------------------------------------------------------------

function connection(bench) {
  const link = document.getElementById("link");
  // How often and when is not read out: it changes with every attempt.
  const attempts = make("span", { class: "dim", "aria-hidden": "true" });
  const notice = make(
    "section",
    { class: "notice lost", "aria-label": "Connection", hidden: true },
    make("span", { class: "words" }, make("span", {}, "The board cannot be reached."), attempts),
    make("button", { type: "button", click: () => bench.retry() }, "Try now"),
  );
  bench.addEventListener("status", ({ detail: { connected, attempt, wait } }) => {
    setText(link, connected ? "connected" : "no connection");
    link.className = connected ? "state good" : "state bad";
    notice.hidden = connected;
    setText(attempts, `Attempt ${attempt} in ${(wait / 1000).toFixed(1)} s`);
  });
  return notice;
}

function missed(bench) {
  const text = make("span", { class: "words" });
  const notice = make("section", { class: "notice", "aria-label": "Missed", hidden: true }, text);
  const close = make("button", { type: "button", click: () => (notice.hidden = true) }, "Close");
  notice.append(close);
  let timer = 0;
  bench.addEventListener("missed", ({ detail: { count, anew } }) => {
    const many = `${count.toLocaleString("en")} ${count === 1 ? "event was" : "events were"} missed.`;
    setText(text, anew ? "Another board answers: all begins anew." : many);
    notice.hidden = false;
    clearTimeout(timer);
    timer = setTimeout(() => (notice.hidden = true), SAID_FOR);
  });
  return notice;
}
