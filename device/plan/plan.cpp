#include "device/plan/plan.h"

#include <algorithm>
#include <array>

#include "device/plan/words.h"
#include "script/words.h"

namespace plan {
namespace {

using script::Arguments;
using script::Malformed;

constexpr std::size_t kMostSwitch = 1;

bool IsNull(Arguments& words) { return words.Take("-"); }

MaskedBytes ReadMasked(Arguments& words) {
  MaskedBytes masked{ReadHex(words, kRecordBytes), {}};
  if (!words.AtEnd()) masked.mask = ReadHex(words, kRecordBytes);
  return masked;
}

std::string MaskedInWords(const MaskedBytes& masked) {
  return ' ' + HexWord(masked.bytes) + (masked.mask.empty() ? "" : ' ' + HexWord(masked.mask));
}

// ---- Actions ------------------------------------------------------------------------------------

struct ActionWord {
  std::string_view word;
  ActionKind kind;
  void (*read)(Arguments& words, Action& action);
  std::string (*print)(const Action& action);
};

void ReadNothing(Arguments&, Action&) {}
std::string PrintNothing(const Action&) { return {}; }

void ReadInitialize(Arguments& words, Action& action) {
  if (words.Take("invalid")) action.kind = ActionKind::InitializeInvalid;
}

void ReadSwitch(Arguments& words, Action& action) {
  action.number = words.Number("0 or 1", 0, kMostSwitch);
}
std::string PrintNumber(const Action& action) { return ' ' + std::to_string(action.number); }

void ReadVersion(Arguments& words, Action& action) {
  if (IsNull(words)) action.kind = ActionKind::VersionNull;
}

void ReadCommand(Arguments& words, Action& action) {
  action.number = words.Number("a command code");
  if (!IsNull(words)) action.record = ReadHex(words, kRecordBytes);
}
std::string PrintCommand(const Action& action) {
  return ' ' + HexNumber(action.number) + ' ' + (action.record ? HexWord(*action.record) : "-");
}

void ReadMotion(Arguments& words, Action& action) {
  action.number = words.Byte("a channel");
  action.level = words.Byte("a level");
  action.record = ReadHex(words, kMotionBytes);
  action.record->resize(kMotionBytes);
}
std::string PrintMotion(const Action& action) {
  return ' ' + std::to_string(action.number) + ' ' + std::to_string(action.level) + ' ' +
         HexWord(*action.record);
}

void ReadText(Arguments& words, Action& action) {
  const Arguments before = words;
  action.text = words.Text("a line of text");
  if (action.text.size() > kLongestText || action.text.find('\0') != std::string::npos) {
    before.Expected("a line of text of 255 characters at most, without a byte 00");
  }
}
std::string PrintText(const Action& action) { return ' ' + script::Quoted(action.text); }

void ReadWait(Arguments& words, Action& action) {
  action.number = words.Number("a number of milliseconds");
}

constexpr std::array kActions = {
    ActionWord{"load", ActionKind::Load, ReadNothing, PrintNothing},
    ActionWord{"unload", ActionKind::Unload, ReadNothing, PrintNothing},
    ActionWord{"initialize", ActionKind::Initialize, ReadInitialize, PrintNothing},
    ActionWord{"initialize invalid", ActionKind::InitializeInvalid, nullptr, PrintNothing},
    ActionWord{"uninitialize", ActionKind::Uninitialize, ReadNothing, PrintNothing},
    ActionWord{"debug", ActionKind::Debug, ReadSwitch, PrintNumber},
    ActionWord{"output", ActionKind::Output, ReadSwitch, PrintNumber},
    ActionWord{"version", ActionKind::Version, ReadVersion, PrintNothing},
    ActionWord{"version -", ActionKind::VersionNull, nullptr, PrintNothing},
    ActionWord{"command", ActionKind::Command, ReadCommand, PrintCommand},
    ActionWord{"motion", ActionKind::Motion, ReadMotion, PrintMotion},
    ActionWord{"text", ActionKind::Text, ReadText, PrintText},
    ActionWord{"wait", ActionKind::Wait, ReadWait, PrintNumber},
};

// ---- Expectations -------------------------------------------------------------------------------

struct ExpectWord {
  std::string_view word;
  void (*read)(Arguments& words, Step& step, unsigned line);
};

// Throws for what stands a second time.
template <typename T>
void Set(std::optional<T>& place, T value, std::string_view word) {
  if (place) throw Malformed("expected one " + std::string(word) + " line, found a second");
  place = std::move(value);
}

void ReadResult(Arguments& words, Step& step, unsigned) {
  Set(step.result, words.SignedNumber("a result"), "result");
}

void ReadRecord(Arguments& words, Step& step, unsigned) {
  if (!step.action.record) throw Malformed("expected a call with a record before it, found none");
  Set(step.record, ReadMasked(words), "record");
}

void ReadAnswer(Arguments& words, Step& step, unsigned) {
  Set(step.answer, words.Text("the version's text"), "answer");
}

void ReadMessage(Arguments& words, Step& step, unsigned line) {
  ExpectedMessage expected;
  expected.line = line;
  expected.message = words.Number("a message");
  expected.wparam = words.Number("its wParam");
  expected.lparam = words.Number("its lParam");
  if (!words.AtEnd()) expected.record = ReadMasked(words);
  step.messages.push_back(std::move(expected));
}

void ReadAnyMessages(Arguments& words, Step& step, unsigned) {
  static constexpr std::array<std::string_view, 1> kAny = {"any"};
  words.Choice(kAny);
  step.any_messages = true;
}

void ReadRegister(Arguments& words, Step& step, unsigned line) {
  constexpr std::size_t kChips = 4;
  ExpectedRegister expected;
  expected.line = line;
  expected.chip = static_cast<unsigned>(words.Choice(script::ChipWords().first(kChips)));
  expected.page = words.Page();
  expected.number = words.Byte("a register");
  expected.value = words.Byte("a value");
  if (!words.AtEnd()) expected.mask = words.Byte("a mask");
  step.registers.push_back(expected);
}

void ReadCycles(Arguments& words, Step& step, unsigned) {
  const std::uint32_t cycles = words.Number("a number of bus cycles");
  Set(step.cost, Cost{cycles, words.Number("a number of milliseconds")}, "cycles");
}

void ReadPrinted(Arguments& words, Step& step, unsigned) {
  step.prints.push_back(words.Text("a line of debug output"));
}

constexpr std::array kExpectations = {
    ExpectWord{"result", ReadResult},        ExpectWord{"record", ReadRecord},
    ExpectWord{"answer", ReadAnswer},        ExpectWord{"message", ReadMessage},
    ExpectWord{"messages", ReadAnyMessages}, ExpectWord{"register", ReadRegister},
    ExpectWord{"cycles", ReadCycles},        ExpectWord{"prints", ReadPrinted},
};

// ---- Reading ------------------------------------------------------------------------------------

class PlanReader {
 public:
  void Line(unsigned line, std::span<const std::string> split) {
    if (split.empty()) return;
    Arguments words(split);
    if (!begun_) {
      static constexpr std::array<std::string_view, 1> kName = {"vexoplan"};
      words.Choice(kName);
      words.Number("1, the format of this program", 1, 1);
      begun_ = true;
    } else if (ended_) {
      words.Expected("nothing behind the end");
    } else {
      Read(words, line);
    }
    words.End();
  }

  bool Ended() const { return ended_; }
  Plan plan;

 private:
  void Read(Arguments& words, unsigned line) {
    if (words.Take("end")) {
      ended_ = true;
    } else if (words.Take("board")) {
      if (in_script_) throw Malformed("expected board lines before the first script, found one");
      plan.board.push_back(words.Text("a board line"));
    } else if (words.Take("script")) {
      script_ = words.Text("a script's name");
      in_script_ = true;
      place_.reset();
      acted_ = false;
    } else if (words.Take("step")) {
      if (!in_script_) throw Malformed("expected a script before the first step, found none");
      const std::uint32_t number = words.Number("a script's line");
      place_ = {number, words.Text("what stands there")};
      acted_ = false;
    } else if (!Act(words, line) && !Expect(words, line)) {
      words.Expected("a line of a plan");
    }
  }

  bool Act(Arguments& words, unsigned line) {
    const auto* const found =
        std::find_if(kActions.begin(), kActions.end(),
                     [&words](const ActionWord& action) { return words.Peek() == action.word; });
    if (found == kActions.end()) return false;
    if (!place_) throw Malformed("expected a step before the first action, found none");
    words.Take(found->word);
    Step step;
    step.line = line;
    step.script = script_;
    step.script_line = place_->first;
    step.source = place_->second;
    step.action.kind = found->kind;
    found->read(words, step.action);
    plan.steps.push_back(std::move(step));
    acted_ = true;
    return true;
  }

  bool Expect(Arguments& words, unsigned line) {
    const auto* const found =
        std::find_if(kExpectations.begin(), kExpectations.end(),
                     [&words](const ExpectWord& expect) { return words.Peek() == expect.word; });
    if (found == kExpectations.end()) return false;
    if (!acted_) throw Malformed("expected an action before what is expected of it, found none");
    words.Take(found->word);
    found->read(words, plan.steps.back(), line);
    return true;
  }

  bool begun_ = false;
  bool ended_ = false;
  bool in_script_ = false;
  bool acted_ = false;  // an action stands behind the last step
  std::string script_;
  std::optional<std::pair<unsigned, std::string>> place_;  // in the script
};

std::size_t CountLines(std::string_view text) {
  const auto ends = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
  return ends + (text.empty() || text.ends_with('\n') ? 0 : 1);
}

}  // namespace

bool MaskedBytes::Matches(const Bytes& found) const {
  for (std::size_t i = 0; i < std::max(bytes.size(), found.size()); ++i) {
    const unsigned wanted = i < bytes.size() ? bytes[i] : 0;
    const unsigned byte = i < found.size() ? found[i] : 0;
    const unsigned counts = i < mask.size() ? mask[i] : 0xFF;
    if (((wanted ^ byte) & counts) != 0) return false;
  }
  return true;
}

std::string ActionInWords(const Action& action) {
  const auto* const found =
      std::find_if(kActions.begin(), kActions.end(),
                   [&action](const ActionWord& row) { return row.kind == action.kind; });
  return std::string(found->word) + found->print(action);
}

std::uint32_t Checksum(std::string_view text) {
  std::uint32_t sum = 0x811C9DC5;
  for (const char c : text) sum = (sum ^ static_cast<unsigned char>(c)) * 0x01000193;
  return sum;
}

Plan ParsePlan(std::string_view text, const std::string& name) {
  const std::size_t lines = CountLines(text);
  if (text.size() > kMostBytes || lines > kMostLines) {
    throw FormatError(name + ": expected a plan of 1 MiB and 100,000 lines at most, found " +
                      std::to_string(text.size()) + " bytes and " + std::to_string(lines) +
                      " lines");
  }
  PlanReader reader;
  ReadLines(text, name, [&reader](unsigned line, std::span<const std::string> words) {
    reader.Line(line, words);
  });
  if (!reader.Ended()) {
    throw FormatError(name + ':' + std::to_string(lines + 1) +
                      ": expected the line 'end', found the end of the file");
  }
  reader.plan.lines = static_cast<unsigned>(lines);
  reader.plan.checksum = Checksum(text);
  return std::move(reader.plan);
}

std::string PrintPlan(const Plan& plan) {
  std::string text = "vexoplan 1\n";
  const auto line = [&text](std::string_view words) { text += std::string(words) + '\n'; };
  for (const std::string& board : plan.board) line("board " + script::Quoted(board));
  const Step* before = nullptr;
  for (const Step& step : plan.steps) {
    const bool same_script = before != nullptr && before->script == step.script;
    if (!same_script) line("script " + script::Quoted(step.script));
    if (!same_script || before->script_line != step.script_line || before->source != step.source) {
      line("step " + std::to_string(step.script_line) + ' ' + script::Quoted(step.source));
    }
    before = &step;
    line(ActionInWords(step.action));
    if (step.result) line("result " + std::to_string(*step.result));
    if (step.record) line("record" + MaskedInWords(*step.record));
    if (step.answer) line("answer " + script::Quoted(*step.answer));
    if (step.any_messages) line("messages any");
    for (const ExpectedMessage& expected : step.messages) {
      line("message " + HexNumber(expected.message) + ' ' + HexNumber(expected.wparam) + ' ' +
           HexNumber(expected.lparam) + (expected.record ? MaskedInWords(*expected.record) : ""));
    }
    if (step.cost) {
      line("cycles " + std::to_string(step.cost->cycles) + ' ' +
           std::to_string(step.cost->slept_ms));
    }
    for (const std::string& printed : step.prints) line("prints " + script::Quoted(printed));
    for (const ExpectedRegister& expected : step.registers) {
      line("register " + std::string(script::ChipWords()[expected.chip]) + ' ' +
           std::to_string(expected.page) + ' ' + HexNumber(expected.number) + ' ' +
           HexNumber(expected.value) +
           (expected.mask == 0xFF ? "" : ' ' + HexNumber(expected.mask)));
    }
  }
  line("end");
  return text;
}

}  // namespace plan
