// What can be kept: the session as a script, the picture, the trace, a waveform.

import { make, setText } from "./dom.js";

const REFUSED = "lines are sent one by one, and the sender keeps them";

/**
 * @param {HTMLElement} pane
 * @param {import("./bench.js").Bench} bench
 * @param {object} language
 */
export function mount(pane, bench, language) {
  const answer = make("output", { class: "answer", "aria-live": "polite" });
  const tell = (text, good) => {
    setText(answer, text);
    answer.className = good ? "answer" : "answer bad";
  };
  const refused = language.board === "program";
  const button = (text, click) =>
    make("button", { type: "button", disabled: refused, title: refused ? REFUSED : null, click }, text);

  const script = async () => {
    const { result, text } = await bench.send("history");
    if (result !== "done") return tell(text, false);
    download(new Blob([scriptOf(text)], { type: "text/plain" }), "session.vexo");
    tell("session.vexo is in the downloads.", true);
  };
  const picture = () => {
    document.querySelector("#monitor canvas").toBlob((blob) => {
      download(blob, `board-${bench.moment?.header.t ?? 0}ms.png`);
      tell("The picture is in the downloads.", true);
    });
  };
  const onServer = (kind, name, help) => {
    const file = make("input", { id: `save-${kind}`, class: "mono", size: 16, value: name, disabled: refused });
    const save = async () => {
      const line = `save ${kind} ${file.value.trim()}`;
      tell(`${line} …`, true);
      const { result, text } = await bench.send(line);
      tell(text.trim() || `${file.value.trim()} is written.`, result === "done");
    };
    return row(help, make("label", { for: file.id }, "File"), file, button(`Save ${kind}`, save));
  };
  pane.append(
    make(
      "div",
      { class: "fill saves" },
      row("Session as a script, to be run again", button("Download script", script)),
      row(
        "Picture of the monitor, as PNG",
        make("button", { type: "button", click: picture }, "Download picture"),
      ),
      onServer("trace", "session.json", "Trace of the session: every touch of the platform"),
      onServer("waveform", "session.vcd", "Waveform of the bus, for a logic analyser's viewer"),
      make("p", { class: "dim" }, "Trace and waveform are written where the board runs."),
      answer,
    ),
  );
}

function row(help, ...inside) {
  return make("div", { class: "row" }, make("span", {}, help), make("div", { class: "toolbar" }, ...inside));
}

// `history` numbers its lines.
function scriptOf(history) {
  return history
    .split("\n")
    .map((line) => line.replace(/^\s*\d+ {2}/, ""))
    .filter(Boolean)
    .join("\n")
    .concat("\n");
}

function download(blob, name) {
  const link = make("a", { href: URL.createObjectURL(blob), download: name });
  link.click();
  setTimeout(() => URL.revokeObjectURL(link.href), 1000);
}
