// What can be kept: the session as a script, the picture, the trace, a waveform.

import { make, setText } from "./dom.js";
import { quoted } from "./state.js";

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
  const button = (text, title, click) =>
    make(
      "button",
      { type: "button", disabled: refused, title: refused ? REFUSED : title, click },
      text,
    );

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
  const onServer = (kind, name) => {
    const file = make("input", {
      id: `save-${kind}`,
      class: "mono",
      size: 12,
      value: name,
      disabled: refused,
    });
    const save = async () => {
      const line = `save ${kind} ${quoted(file.value.trim())}`;
      tell(`${line} …`, true);
      const { result, text } = await bench.send(line);
      tell(text.trim() || `${file.value.trim()} is written.`, result === "done");
    };
    return make("div", { class: "toolbar" }, file, button("Save", `save ${kind} FILE`, save));
  };
  const label = (kind, text) => make("label", { for: `save-${kind}` }, text);
  pane.append(
    make(
      "div",
      { class: "fill saves" },
      make("span", {}, "Script"),
      make("div", { class: "toolbar" }, button("Download", "the session, to be run again", script)),
      make("span", {}, "Picture"),
      make(
        "div",
        { class: "toolbar" },
        make("button", { type: "button", title: "the monitor as PNG", click: picture }, "Download"),
      ),
      label("trace", "Trace"),
      onServer("trace", "session.json"),
      label("waveform", "Waveform"),
      onServer("waveform", "session.vcd"),
      make("p", { class: "dim" }, "Trace and waveform are written where the board runs."),
      answer,
    ),
  );
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
