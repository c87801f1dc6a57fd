#include "tools/vexosim/shell/shell.h"

#include <utility>

#include "script/parse.h"

namespace vexosim {
namespace {

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
  out_ << script::BringUp(interpreter_, options) << '\n';
  acted_ = !options.bare;
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
