#include "tools/vexosim/shell/line_reader.h"

#include <histedit.h>
#include <unistd.h>

#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <istream>
#include <ostream>

#include "files/input.h"
#include "files/printable.h"
#include "script/help/completion.h"
#include "tools/vexosim/shell/terminal_input.h"
#include "tools/vexosim/terminal.h"

namespace vexosim {
namespace {

class PlainReader : public LineReader {
 public:
  PlainReader(std::istream& in, std::ostream& out)
      : lines_(in, "standard input", kLongestLine), out_(out) {}

  std::optional<std::string> Next() override {
    std::string line;
    if (!lines_.Next(line)) return std::nullopt;
    out_ << kPrompt << files::Printable(line, kLongestLine) << std::endl;
    return line;
  }

 private:
  static constexpr std::size_t kLongestLine = std::size_t{64} << 10;

  files::LineInput lines_;
  std::ostream& out_;
};

// Makes characters of bytes.
class Characters {
 public:
  // Whether the byte completes a character, which Given() has: U+FFFD for bytes that are none.
  bool Take(char byte) {
    const bool begun = std::mbsinit(&state_) == 0;
    switch (std::mbrtowc(&given_, &byte, 1, &state_)) {
      case kIncomplete:
        return false;
      case kWrong:
        state_ = {};
        // What had begun is given up; the byte may be a character, or begin one.
        if (begun) return Take(byte);
        given_ = kReplacement;
        return true;
      default:
        return true;
    }
  }
  wchar_t Given() const { return given_; }

 private:
  static constexpr auto kIncomplete = static_cast<std::size_t>(-2);
  static constexpr auto kWrong = static_cast<std::size_t>(-1);
  static constexpr wchar_t kReplacement = 0xFFFD;
  std::mbstate_t state_{};
  wchar_t given_ = 0;
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
    el_set(edit, EL_GETCFN, ReadKey);
    el_set(edit, EL_HIST, history, history_.get());
    // Ctrl-C and Ctrl-Z are keys like any other while a line is typed: the editor has the terminal,
    // and must have given it back before anything ends or stops.
    el_set(edit, EL_SETTY, "-d", "-isig", nullptr);
    // Narrow names would be copied and never freed.
    el_wset(edit, EL_ADDFN, L"vexosim-abandon", L"Gives up the line", Abandon);
    el_wset(edit, EL_ADDFN, L"vexosim-complete", L"Completes a word or says what is expected",
            CompleteWord);
    el_wset(edit, EL_ADDFN, L"vexosim-suspend", L"Stops the shell for a while", Suspend);
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
    ForgetInterrupt();  // it was for the line before
    int length = 0;
    const char* const text = el_gets(edit_.get(), &length);
    if (abandoned_) return "";
    if (text == nullptr || length <= 0) {
      std::fputs("\n", stdout);
      return std::nullopt;
    }
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

  static unsigned char Abandon(EditLine* edit, wint_t) {
    Of(edit).abandoned_ = true;
    std::fputs("^C\n", stdout);
    return CC_NEWLINE;
  }

  // Stops what the terminal's owner has started, all of it, as the terminal itself would.
  static unsigned char Suspend(EditLine* edit, wint_t) {
    el_set(edit, EL_PREP_TERM, 0);
    kill(0, SIGTSTP);
    return CC_NORM;  // ReadKey is told that it went on
  }

  // The editor's source of keys: 1, 0 at the end.
  static int ReadKey(EditLine* edit, wchar_t* key) {
    TerminalReader& self = Of(edit);
    for (;;) {
      const TerminalInput::Input input = self.input_.Next();
      switch (input.kind) {
        case TerminalInput::Kind::Byte:
          if (!self.characters_.Take(input.byte)) break;
          *key = self.characters_.Given();
          return 1;
        case TerminalInput::Kind::Interrupt:
          *key = kCtrlC;
          return 1;
        case TerminalInput::Kind::Resized:
          el_resize(edit);
          break;
        case TerminalInput::Kind::Resumed:  // somebody else had the terminal
          el_set(edit, EL_PREP_TERM, 0);
          el_set(edit, EL_PREP_TERM, 1);
          std::fputs("\r", stdout);
          el_set(edit, EL_REFRESH);
          break;
        case TerminalInput::Kind::End:
          return 0;
      }
    }
  }

  static unsigned char CompleteWord(EditLine* edit, wint_t) {
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

  static constexpr wchar_t kCtrlC = 3;

  const InterruptWatch watch_;  // lines that run are ended, the shell is not
  TerminalInput input_;
  Characters characters_;
  const LineHistory& lines_;
  std::string last_;  // of the lines that the editor has
  bool abandoned_ = false;
  std::unique_ptr<EditLine, void (*)(EditLine*)> edit_;
  std::unique_ptr<History, void (*)(History*)> history_;
};

// On a terminal that can only print: it edits the line itself, as well as it can.
class DumbReader : public LineReader {
 public:
  std::optional<std::string> Next() override {
    ForgetInterrupt();  // it was for the line before
    std::fputs(kPrompt, stdout);
    std::fflush(stdout);
    std::string line;
    for (;;) {
      const TerminalInput::Input input = input_.Next();
      if (input.kind == TerminalInput::Kind::Byte) {
        if (input.byte == '\n') return line;
        line += input.byte;
      } else if (input.kind == TerminalInput::Kind::Interrupt) {
        std::fputs("\n", stdout);
        return "";
      } else if (input.kind == TerminalInput::Kind::End) {
        std::fputs("\n", stdout);
        if (line.empty()) return std::nullopt;
        return line;
      }
    }
  }

 private:
  const InterruptWatch watch_;
  TerminalInput input_;
};

}  // namespace

bool OnTerminal() { return isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0; }

std::unique_ptr<LineReader> MakeTerminalReader(const LineHistory& history) {
  if (!TerminalMovesItsCursor()) return std::make_unique<DumbReader>();
  // Terminals send UTF-8 today, also where nobody has chosen a language.
  std::setlocale(LC_CTYPE, "");
  if (MB_CUR_MAX == 1) std::setlocale(LC_CTYPE, "C.UTF-8");
  return std::make_unique<TerminalReader>(history);
}

std::unique_ptr<LineReader> MakePlainReader(std::istream& in, std::ostream& out) {
  return std::make_unique<PlainReader>(in, out);
}

}  // namespace vexosim
