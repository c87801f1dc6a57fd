// Brings the page up: what the board can, the connection to it, and a module for each pane.

import { Bench } from "./bench.js";

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

async function start() {
  const language = await (await fetch("language.json")).json();
  const bench = new Bench();
  await Promise.all(
    PANES.map(async (name) => {
      const { mount } = await import(`./${name}.js`);
      mount(document.getElementById(name), bench, language);
    }),
  );
  bench.open();
}

start();
