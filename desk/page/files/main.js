// Brings the page up: what the board can, the connection to it, and a module for each pane.

import { Bench } from "./bench.js";
import { make, setText } from "./dom.js";
import { showNotices } from "./notices.js";
import { State } from "./state.js";

const PANES = [
  "monitor",
  "cameras",
  "host",
  "registers",
  "board",
  "save",
  "console",
  "messages",
  "timeline",
];

// ---- Light and dark -----------------------------------------------------------------------------

function switchThemes(button) {
  const root = document.documentElement;
  const dark = matchMedia("(prefers-color-scheme: dark)");
  const now = () => root.dataset.theme ?? (dark.matches ? "dark" : "light");
  const show = () => {
    setText(button, now() === "dark" ? "Light" : "Dark");
    button.title = `Show the page ${now() === "dark" ? "light" : "dark"}`;
  };
  button.addEventListener("click", () => {
    const next = now() === "dark" ? "light" : "dark";
    root.dataset.theme = next;
    try {
      localStorage.setItem("theme", next);
    } catch {
      // A browser that keeps nothing forgets it with the page.
    }
    show();
  });
  dark.addEventListener("change", show);
  show();
}

// ---- Tabs ---------------------------------------------------------------------------------------

// Where there is room a stack shows all of its panes, and the buttons are not there.
function stackPanes(stack) {
  const buttons = [...stack.querySelectorAll(".tabs > button")];
  const show = (name) => {
    for (const button of buttons) {
      const pane = button.getAttribute("aria-controls");
      button.setAttribute("aria-expanded", pane === name);
      document.getElementById(pane).classList.toggle("shown", pane === name);
    }
  };
  for (const button of buttons) {
    button.addEventListener("click", () => show(button.getAttribute("aria-controls")));
  }
  show(buttons[0].getAttribute("aria-controls"));
  return show;
}

// ---- Readings -----------------------------------------------------------------------------------

const two = (number) => String(Math.floor(number)).padStart(2, "0");

/** 83456 ms are 00:01:23.456. */
function clock(ms) {
  const seconds = ms / 1000;
  const rest = String(Math.floor(ms % 1000)).padStart(3, "0");
  return `${two(seconds / 3600)}:${two((seconds / 60) % 60)}:${two(seconds % 60)}.${rest}`;
}

function showReadings(list, bench) {
  const values = ["Board time", "Bus cycles", "Lag", "Pictures"].map((name) => {
    const value = make("dd", {}, "–");
    list.append(make("div", {}, make("dt", {}, name), value));
    return value;
  });
  const [time, cycles, lag, rate] = values;
  let times = [];
  bench.addEventListener("moment", ({ detail: { header } }) => {
    const now = performance.now();
    times = [...times.filter((one) => one > now - 2000), now];
    setText(time, clock(header.t));
    setText(cycles, header.cycles.toLocaleString("en"));
    setText(lag, `${header.lag} ms`);
    lag.classList.toggle("warn", header.lag > 100);
    const span = now - times[0];
    if (span > 500) setText(rate, `${(((times.length - 1) * 1000) / span).toFixed(1)}/s`);
  });
  bench.addEventListener("status", ({ detail: { connected } }) => {
    if (connected) return;
    times = [];
    for (const value of values) setText(value, "–");
  });
}

// ---- Start --------------------------------------------------------------------------------------

async function start() {
  switchThemes(document.getElementById("theme"));
  const shows = [...document.querySelectorAll(".stack")].map(stackPanes);
  const learn = async () => (await fetch("language.json")).text();
  const learnt = await learn();
  const language = JSON.parse(learnt);
  setText(document.getElementById("board-title"), language.title);
  document.title = `${language.title} – bench`;
  const bench = new Bench();
  const state = new State(bench);
  showReadings(document.getElementById("readings"), bench);
  showNotices(document.getElementById("notices"), bench);
  document.querySelector(".skip").addEventListener("click", () => shows[1]("console"));
  await Promise.all(
    PANES.map(async (name) => {
      const { mount } = await import(`./${name}.js`);
      mount(document.getElementById(name), bench, language, state);
    }),
  );
  bench.addEventListener("select", ({ detail }) => {
    if (detail.register !== null) shows[0]("registers");
  });
  // The board of another program may have other chips, and refuse other lines.
  bench.addEventListener("missed", async ({ detail: { anew } }) => {
    if (anew && (await learn()) !== learnt) location.reload();
  });
  bench.open();
}

start();
