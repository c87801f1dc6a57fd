#include "tools/vexosim/shell/line_reader.h"

#include <histedit.h>
#include <unistd.h>

#include <clocale>
#include <csignal>
#include <cstdio>
#include <istream>
#include <ostream>

#include "script/help/completion.h"
#include "tools/vexosim/terminal.h"

namespace vexosim {
namespace {

class PlainReader : public LineReader {
 public:
  PlainReader(std::istream& in, std::ostream& out) : in_(in), out_(out) {}

  std::optional<std::string> Next() override {
    std::string line;
    if (!std::getline(in_, line)) return std::nullopt;
    out_ << kPrompt << line << std::endl;
    return line;
  }

 private:
  std::istream& in_;
  std::ostream& out_;
};

class TerminalReader : public LineReader {
 public:
  explicit TerminalReader(const LineHistory& lines)
      : lines_(lines),
        edit_(el_init("vexosim", stdin, stdout, stderr), el_end),
        history_(history_init(), history_end) {
    HistEvent event;
    history(history_.get(), &event, H_SETSIZE, static_cast<int>(LineHistory::kMost));
    EditLine* const edit = edit_.get();
    el_set(edit, EL_CLIENTDATA, this);
    el_set(
        edit, EL_PROMPT, +[](EditLine*) { return const_cast<char*>(kPrompt); });
    el_set(edit, EL_EDITOR, "emacs");
    el_set(edit, EL_SIGNAL, 1);  // redraws when the terminal changes its size
    el_set(edit, EL_HIST, history, history_.get());
    // Ctrl-C and Ctrl-Z are keys like any other while a line is typed.
    el_set(edit, EL_SETTY, "-d", "-isig", nullptr);
    el_set(edit, EL_ADDFN, "vexosim-abandon", "Gives up the line", Abandon);
    el_set(edit, EL_ADDFN, "vexosim-complete", "Completes a word or says what is expected",
           CompleteWord);
    el_set(edit, EL_ADDFN, "vexosim-suspend", "Stops the shell for a while", Suspend);
    el_set(edit, EL_BIND, "^C", "vexosim-abandon", nullptr);
    el_set(edit, EL_BIND, "^Z", "vexosim-suspend", nullptr);
    el_set(edit, EL_BIND, "^I", "vexosim-complete", nullptr);
    el_set(edit, EL_BIND, "^R", "em-inc-search-prev", nullptr);
    el_source(edit, nullptr);  // the user's own keys
    for (const std::string& line : lines_.Lines()) Remember(line);
  }

  std::optional<std::string> Next() override {
    if (!lines_.Lines().empty()) Remember(lines_.Lines().back());
    abandoned_ = false;
    int length = 0;
    const char* const text = el_gets(edit_.get(), &length);
    if (text == nullptr || length <= 0) {
      std::fputs("\n", stdout);
      return std::nullopt;
    }
    if (abandoned_) return "";
    std::string line(text, static_cast<std::size_t>(length));
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.pop_back();
    return line;
  }

 private:
  static TerminalReader& Of(EditLine* edit) {
    void* self = nullptr;
    el_get(edit, EL_CLIENTDATA, &self);
    return *static_cast<TerminalReader*>(self);
  }

  static unsigned char Abandon(EditLine* edit, int) {
    Of(edit).abandoned_ = true;
    std::fputs("^C\n", stdout);
    return CC_NEWLINE;
  }

  // The editor's own handlers give the terminal back and redraw the line afterwards.
  static unsigned char Suspend(EditLine*, int) {
    std::raise(SIGTSTP);
    return CC_REDISPLAY;
  }

  static unsigned char CompleteWord(EditLine* edit, int) {
    const LineInfo* const info = el_line(edit);
    const std::string typed(info->buffer, info->cursor);
    const script::CompletionStep step = script::CompleteStep(typed);
    if (!step.insert.empty()) {
      return el_insertstr(edit, step.insert.c_str()) == 0 ? CC_REFRESH : CC_ERROR;
    }
    if (step.show.empty()) return CC_REFRESH_BEEP;
    std::fprintf(stdout, "\n%s", step.show.c_str());
    return CC_REDISPLAY;
  }

  // The history leaves out a line that is its last one again, and so does this.
  void Remember(const std::string& line) {
    if (line == last_) return;
    last_ = line;
    HistEvent event;
    history(history_.get(), &event, H_ENTER, line.c_str());
  }

  const InterruptWatch watch_;  // lines that run are ended, the shell is not
  const LineHistory& lines_;
  std::string last_;  // of the lines that the editor has
  bool abandoned_ = false;
  std::unique_ptr<EditLine, void (*)(EditLine*)> edit_;
  std::unique_ptr<History, void (*)(History*)> history_;
};

}  // namespace

bool OnTerminal() { return isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0; }

std::unique_ptr<LineReader> MakeTerminalReader(const LineHistory& history) {
  std::setlocale(LC_CTYPE, "");
  return std::make_unique<TerminalReader>(history);
}

std::unique_ptr<LineReader> MakePlainReader(std::istream& in, std::ostream& out) {
  return std::make_unique<PlainReader>(in, out);
}

}  // namespace vexosim
