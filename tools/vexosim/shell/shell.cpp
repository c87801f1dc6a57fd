#include "tools/vexosim/shell/shell.h"

#include <utility>

#include "VexoCtrlSDK.h"
#include "script/parse.h"

namespace vexosim {
namespace {

constexpr std::uint32_t kBringUpMs = 300;  // until the worker has told the host what it sees

// What somebody types.
class TypedLines : public script::LineSource {
 public:
  TypedLines(LineReader& reader, LineHistory& history, std::ostream& out, bool& acted)
      : reader_(reader), history_(history), out_(out), acted_(acted) {}

  std::optional<script::Statement> Next() override {
    for (;;) {
      out_.flush();
      const std::optional<std::string> line = reader_.Next();
      if (!line) return std::nullopt;
      if (line->find_first_not_of(script::kBlanks) == std::string::npos) continue;
      history_.Add(*line);
      std::optional<script::Statement> statement = script::ParseLine(*line, acted_);
      if (!statement) continue;
      if (statement->group == script::LineGroup::Action) acted_ = true;
      return statement;
    }
  }

 private:
  LineReader& reader_;
  LineHistory& history_;
  std::ostream& out_;
  bool& acted_;
};

class OneLine : public LineReader {
 public:
  explicit OneLine(std::string line) : line_(std::move(line)) {}
  std::optional<std::string> Next() override { return std::exchange(line_, std::nullopt); }

 private:
  std::optional<std::string> line_;
};

script::InterpreterOptions Interactive(script::InterpreterOptions options) {
  options.interactive = true;
  return options;
}

}  // namespace

Shell::Shell(const ShellOptions& options, LineHistory& history, std::ostream& out)
    : history_(history),
      out_(out),
      around_(options.style, Progress::OnTerminal()),
      interpreter_(Interactive(options.run), around_, out, out) {
  BringUp(options);
}

void Shell::Prepare(const std::string& line) {
  interpreter_.Prepare(*script::ParseLine(line, true));
}

void Shell::BringUp(const ShellOptions& options) {
  const unsigned channels = options.chips * kChannelsPerChip;
  Prepare("pump on");
  Prepare("board chips " + std::to_string(options.chips));
  if (options.pal) {
    Prepare("camera all pal");
    Prepare("nvram record MDVR " + std::to_string(VEXO_VIDEO_PAL) + ' ' + std::to_string(channels));
  }
  out_ << "A board of " << channels << " channels with " << (options.pal ? "PAL" : "NTSC")
       << " cameras, ";
  if (options.bare) {
    out_ << "the library not attached: attach, window, command 0xF001.\n";
  } else {
    acted_ = true;
    Prepare("attach");
    Prepare("window");
    Prepare("command 0xF001");
    const std::int64_t result = interpreter_.State().returned.value_or(VEXO_OK);
    Prepare("run " + std::to_string(kBringUpMs));
    if (result == VEXO_OK) {
      out_ << "initialized; the worker runs.\n";
    } else {
      out_ << "initialization returned " << result << ".\n";
    }
  }
  interpreter_.KeepWhatRan();
  out_ << "Type a text command (vexo lsplit 6 0), a script line (camera 2 off), or help.\n";
  if (options.script) Execute("source \"" + *options.script + '"');
}

bool Shell::Run(LineReader& reader) {
  TypedLines lines(reader, history_, out_, acted_);
  const bool goes_on = interpreter_.Run(lines);
  out_.flush();
  return goes_on;
}

bool Shell::Execute(const std::string& typed) {
  OneLine line(typed);
  return Run(line);
}

int RunShell(const ShellOptions& options, LineHistory& history, LineReader& reader,
             std::ostream& out) {
  Shell shell(options, history, out);
  shell.Run(reader);
  return shell.Status();
}

}  // namespace vexosim
