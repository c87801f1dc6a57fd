// Lines of the script language, and what comes of them.

import { atEnd, button, enlarger } from "./controls.js";
import { make } from "./dom.js";
import { quoted } from "./state.js";
import { count, printable } from "./words.js";

const HISTORY = "vexo.console.lines";
const MOST_HISTORY = 500;
const MOST_LINES = 4000; // of answers
const MARKS = {
  done: ["✓", "done"],
  unmet: ["✗", "not met"],
  refused: ["⊘", "refused"],
  lost: ["?", "no answer"],
};
// Lines that panes ask for themselves: nobody pressed a button for them.
const UNSEEN = /^(accesses|complete|peek|fields)\b|^(board|break|where)$/;

/**
 * @param {HTMLElement} element
 * @param {import("./bench.js").Bench} bench
 * @param {object} language
 */
export function mount(element, bench) {
  const history = readHistory();
  let place = history.length; // in it; its length: the line that is being typed
  let typed = ""; // it, while the history is walked
  let lines = 0; // of all answers
  const own = new WeakSet(); // answers to lines that were typed here

  const output = make("div", {
    class: "fill console-output mono",
    role: "log",
    "aria-label": "Answers",
    tabindex: 0,
  });
  const input = make("input", {
    class: "mono",
    id: "console-line",
    autocomplete: "off",
    autocapitalize: "off",
    spellcheck: "false",
    enterkeyhint: "send",
    role: "combobox",
    "aria-label": "Line",
    "aria-autocomplete": "list",
    "aria-controls": "console-choices",
    "aria-expanded": "false",
    placeholder: "A line, such as camera 5 off; Tab completes it",
  });
  const completer = new Completer(input, bench);
  const form = make(
    "form",
    { class: "console-line", submit },
    make("span", { class: "mono dim", "aria-hidden": "true" }, ">"),
    input,
    make("button", { type: "submit", class: "primary" }, "Run"),
    button("Help", help, { title: "Explains the word that the line begins with" }),
    button("Clear", clear),
    enlarger(element),
  );
  element.append(output, make("div", { class: "console-entry" }, completer.element, form));

  input.addEventListener("keydown", (key) => {
    if (completer.onKey(key)) return;
    if (key.key === "ArrowUp" || key.key === "ArrowDown") {
      key.preventDefault();
      walk(key.key === "ArrowUp" ? -1 : 1);
    }
  });
  bench.addEventListener("answer", ({ detail: answer }) => {
    // Behind whoever waits for the answer.
    queueMicrotask(() => {
      if (own.has(answer) || UNSEEN.test(answer.line.trim())) return;
      finish(begin(answer.line, "of the page"), answer);
    });
  });

  function submit(event) {
    event.preventDefault();
    const line = input.value.trim();
    if (line === "") return;
    completer.close();
    remember(line);
    input.value = "";
    run(line);
  }

  async function run(line) {
    const entry = begin(line);
    const answer = await bench.send(line);
    own.add(answer);
    finish(entry, answer);
  }

  function help() {
    const [word] = input.value.trim().split(/\s+/);
    run(word ? `help ${word}` : "help");
    input.focus();
  }

  // An entry: the line, then its answer. `from` says whose it is, unless it was typed here.
  function begin(line, from) {
    const mark = make("span", { class: "mark dim" }, "…");
    const entry = make(
      "article",
      { class: from ? "entry other" : "entry" },
      make(
        "p",
        { class: "asked" },
        mark,
        make("span", { class: "line" }, printable(line)),
        ...(from ? [make("span", { class: "dim from" }, from)] : []),
      ),
    );
    atEnd(output, () => output.append(entry));
    return { entry, mark };
  }

  function finish({ entry, mark }, { result, text }) {
    const [sign, words] = MARKS[result];
    entry.classList.add(result);
    mark.className = "mark";
    mark.title = words;
    mark.replaceChildren(
      make("span", { "aria-hidden": "true" }, sign),
      make("span", { class: "spoken" }, `${words}: `),
    );
    if (result !== "done") entry.firstChild.append(make("span", { class: "verdict" }, words));
    const said = text.replace(/\n+$/, "").split("\n");
    const left = said.length - MOST_LINES;
    const kept = said.slice(0, MOST_LINES).map(printable);
    if (left > 0) kept.push(`(${count(left)} lines more)`);
    atEnd(output, () => {
      if (text !== "") entry.append(make("pre", {}, kept.join("\n")));
    });
    lines += kept.length + 1;
    entry.dataset.lines = kept.length + 1;
    while (lines > MOST_LINES && output.firstElementChild !== entry) {
      lines -= Number(output.firstElementChild.dataset.lines ?? 0);
      output.firstElementChild.remove();
    }
  }

  function clear() {
    output.replaceChildren();
    lines = 0;
    input.focus();
  }

  function walk(step) {
    const next = place + step;
    if (next < 0 || next > history.length) return;
    if (place === history.length) typed = input.value;
    place = next;
    input.value = place === history.length ? typed : history[place];
    input.setSelectionRange(input.value.length, input.value.length);
  }

  function remember(line) {
    if (history.at(-1) !== line) history.push(line);
    if (history.length > MOST_HISTORY) history.shift();
    place = history.length;
    try {
      sessionStorage.setItem(HISTORY, JSON.stringify(history));
    } catch {
      // Not kept by this browser: it is here as long as the page is.
    }
  }
}

function readHistory() {
  try {
    return JSON.parse(sessionStorage.getItem(HISTORY)) ?? [];
  } catch {
    return [];
  }
}

/**
 * What may stand next in the line, asked of the board with `complete`. Tab asks; with nothing
 * typed, and after Escape, it goes to the next control as it does everywhere.
 */
class Completer {
  #input;
  #bench;
  #list = make("ul", { id: "console-choices", role: "listbox", "aria-label": "Completions" });
  #hints = make("div", { class: "hints", role: "status" });
  #lines = []; // whole lines that may come of the one that is typed
  #active = -1;
  #left = false; // Escape was pressed: the next Tab is not for us
  #asked = 0;

  constructor(input, bench) {
    this.#input = input;
    this.#bench = bench;
    this.element = make("div", { class: "completions", hidden: true }, this.#list, this.#hints);
    input.addEventListener("input", () => this.#onTyped());
    input.addEventListener("blur", () => this.close());
    // A click on the list leaves the line focused.
    this.element.addEventListener("pointerdown", (event) => event.preventDefault());
  }

  close() {
    this.#asked += 1;
    this.#show([], []);
  }

  /** True: the key was for the list. */
  onKey(key) {
    const open = this.#lines.length > 0;
    switch (key.key) {
      case "Tab":
        if (key.shiftKey || this.#left || this.#input.value.trim() === "") return false;
        if (open) this.#activate((this.#active + 1) % this.#lines.length);
        else this.#ask(true);
        break;
      case "Escape":
        this.#left = true;
        if (this.element.hidden) return false;
        this.close();
        break;
      case "ArrowDown":
      case "ArrowUp": {
        if (!open) return false;
        const step = key.key === "ArrowDown" ? 1 : -1;
        const all = this.#lines.length;
        this.#activate((Math.max(this.#active, step < 0 ? 0 : -1) + step + all) % all);
        break;
      }
      case "Enter":
        if (this.#active < 0) return false;
        this.#accept(this.#lines[this.#active]);
        break;
      default:
        return false;
    }
    key.preventDefault();
    return true;
  }

  #onTyped() {
    this.#left = false;
    if (this.element.hidden) return;
    if (this.#input.value.trim() === "") this.close();
    else this.#ask(false);
  }

  // `step`: goes on in the line as far as there is no choice.
  async #ask(step) {
    const asked = ++this.#asked;
    const end = this.#input.selectionStart;
    const line = this.#input.value.slice(0, end);
    const { result, text } = await this.#bench.send(`complete ${quoted(line)}`);
    if (asked !== this.#asked || this.#input.value.slice(0, end) !== line) return;
    const said = text.split("\n").filter((words) => words.trim() !== "");
    if (result !== "done") return this.#show([], said);
    const hints = said.filter((words) => words.startsWith("#"));
    const lines = said.filter((words) => !words.startsWith("#"));
    const common = lines.reduce(commonBeginning, lines[0] ?? "");
    if (step && lines.length === 1) this.#accept(lines[0]);
    else if (step && common.length > line.length && common.startsWith(line)) this.#put(common);
    if (step && lines.length === 1) return;
    this.#show(
      lines,
      hints.map((hint) => hint.replace(/^# ?/, "")),
    );
    if (step && lines.length + hints.length === 0) this.#show([], ["nothing can stand here"]);
  }

  #accept(line) {
    this.#put(line.endsWith(" ") ? line : `${line} `);
    this.close();
  }

  #put(line) {
    const rest = this.#input.value.slice(this.#input.selectionStart);
    this.#input.value = line + rest;
    this.#input.setSelectionRange(line.length, line.length);
  }

  #show(lines, hints) {
    this.#lines = lines;
    this.#active = -1;
    this.#list.replaceChildren(
      ...lines.map((line, i) =>
        make(
          "li",
          {
            id: `console-choice-${i}`,
            role: "option",
            "aria-selected": "false",
            click: () => this.#accept(line),
          },
          lastWord(line),
        ),
      ),
    );
    this.#hints.replaceChildren(...hints.map((hint) => make("p", {}, hint)));
    this.#list.hidden = lines.length === 0;
    this.element.hidden = lines.length + hints.length === 0;
    this.#input.setAttribute("aria-expanded", lines.length > 0);
    this.#input.removeAttribute("aria-activedescendant");
  }

  #activate(index) {
    const options = this.#list.children;
    options[this.#active]?.setAttribute("aria-selected", "false");
    this.#active = index;
    options[index].setAttribute("aria-selected", "true");
    options[index].scrollIntoView({ block: "nearest" });
    this.#input.setAttribute("aria-activedescendant", options[index].id);
  }
}

function commonBeginning(a, b) {
  let end = 0;
  while (end < a.length && a[end] === b[end]) ++end;
  return a.slice(0, end);
}

// What a line ends in: a word, or a quoted text with its blanks.
function lastWord(line) {
  return line.trimEnd().match(/"(?:[^"\\]|\\.)*"?$|\S+$/)?.[0] ?? line;
}
