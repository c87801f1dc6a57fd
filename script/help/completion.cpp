#include "script/help/completion.h"

#include <algorithm>
#include <span>
#include <sstream>

#include "script/command_words.h"
#include "script/grammar/pattern_walk.h"
#include "script/grammar/text_help.h"
#include "script/grammar/text_line.h"
#include "script/help/command_help.h"
#include "script/help/first_words.h"
#include "script/help/help.h"
#include "script/line.h"
#include "script/register_names.h"

namespace script {
namespace {

// A line before the cursor: its finished words, and what is typed of the next.
struct Typed {
  std::vector<std::string> words;
  std::string part;  // with its opening quote
};

Typed CutText(std::string_view line) {
  Typed typed;
  for (;;) {
    const std::size_t end = line.find_first_of(" ,\t");
    if (end == std::string_view::npos) break;
    if (end != 0) typed.words.emplace_back(line.substr(0, end));
    line.remove_prefix(end + 1);
  }
  typed.part = line;
  return typed;
}

// A script line has words in quotes, which may hold blanks.
Typed CutScript(std::string_view line) {
  Typed typed;
  bool quoted = false;
  for (std::size_t at = 0; at < line.size(); ++at) {
    const char c = line[at];
    if (c == '"') quoted = !quoted;
    if (quoted || (c != ' ' && c != '\t')) {
      typed.part += c;
      if (quoted && c == '\\' && at + 1 < line.size()) typed.part += line[++at];
      continue;
    }
    const bool in_quotes = typed.part.size() > 1 && typed.part.front() == '"';
    if (in_quotes) typed.part = typed.part.substr(1, typed.part.size() - 2);
    if (!typed.part.empty()) typed.words.push_back(std::move(typed.part));
    typed.part.clear();
  }
  return typed;
}

Typed Cut(std::string_view line) {
  return FindGrammar(FirstWordOf(line)) != nullptr ? CutText(line) : CutScript(line);
}

class Choice {
 public:
  explicit Choice(std::string_view part) : part_(part) {}

  void Word(std::string_view word) {
    const bool known =
        std::find(result_.words.begin(), result_.words.end(), word) != result_.words.end();
    if (word.starts_with(part_) && !known) result_.words.emplace_back(word);
  }
  void Words(std::span<const std::string_view> words) {
    for (const std::string_view word : words) Word(word);
  }
  void Hint(std::string hint) {
    const auto& hints = result_.hints;
    if (std::find(hints.begin(), hints.end(), hint) == hints.end()) {
      result_.hints.push_back(std::move(hint));
    }
  }
  // A word that is quoted when it has a blank.
  void Quotable(std::string_view word) {
    const bool quote = part_.starts_with('"') || word.find(' ') != std::string_view::npos;
    Word(quote ? '"' + std::string(word) + '"' : std::string(word));
  }
  // More than an opening quote is typed.
  bool Begun() const { return part_.size() > 1; }
  Completion Result() const { return result_; }

 private:
  std::string_view part_;
  Completion result_;
};

void Headers(Choice& choice) {
  for (const TextGrammar* grammar : TextGrammars()) choice.Word(grammar->header);
}

void FirstWords(Choice& choice, bool nothing_typed) {
  Headers(choice);
  choice.Words(ScriptWords());
  // Too many to offer unasked, and the header leads to them.
  if (!nothing_typed) choice.Words(ShortKeywords());
}

void HelpWords(Choice& choice) {
  Headers(choice);
  for (const TextGrammar* grammar : TextGrammars()) choice.Words(Keywords(*grammar));
  choice.Words(ScriptWords());
  choice.Words(HelpTopics());
  choice.Words(CommandNames());
}

// After the words of a text command from its keyword on.
void TextWords(Choice& choice, const TextGrammar& grammar, const std::vector<std::string>& words,
               std::size_t first) {
  PatternWalk walk(grammar);
  for (std::size_t i = first; i < words.size(); ++i) {
    if (!walk.Take(words[i])) return choice.Hint("'" + words[i] + "' is not known here");
  }
  for (const std::string_view word : walk.Next()) {
    if (!IsNumber(word)) {
      choice.Word(word);
      continue;
    }
    const PlaceholderHelp* const number = FindPlaceholder(grammar, word);
    choice.Hint(std::string(word) + (number == nullptr ? "" : ": " + std::string(number->range)));
  }
}

// The words among the alternatives of an argument, such as "ntsc|pal|off".
void Alternatives(Choice& choice, std::string_view argument) {
  choice.Words(WordsOf(argument));
  while (!argument.empty()) {
    const std::size_t end = std::min(argument.find('|'), argument.size());
    const std::string_view word = argument.substr(0, end);
    const bool small =
        std::all_of(word.begin(), word.end(), [](char c) { return c >= 'a' && c <= 'z'; });
    if (small) choice.Word(word);
    argument.remove_prefix(std::min(end + 1, argument.size()));
  }
}

// ---- Arguments of a script line -----------------------------------------------------------------

// Positions are too many to offer unasked.
void RegisterNameWords(Choice& choice) {
  for (const std::string_view name : RegisterNames()) {
    if (choice.Begun() || name.back() < '0' || name.back() > '9') choice.Quotable(name);
  }
}

constexpr std::string_view kRegisterName = "\"NAME\"";

// "[CHIP [PAGE]]" as two words. Quotes stay: they tell a register's name from others.
std::vector<std::string> ArgumentWords(std::string_view arguments) {
  std::vector<std::string> words;
  std::istringstream in{std::string(arguments)};
  for (std::string word; in >> word;) {
    std::erase_if(word, [](char c) { return c == '[' || c == ']'; });
    words.push_back(word);
  }
  return words;
}

// The patterns of a kind, each alternative one, and one more without a chip that may be left out.
std::vector<std::vector<std::string>> Patterns(const LineKind& kind) {
  constexpr std::string_view kMayBeLeftOut = "[CHIP] ";
  std::vector<std::vector<std::string>> patterns;
  std::string_view rest = kind.arguments;
  for (;;) {
    const std::size_t end = rest.find(" | ");
    const std::string_view one = rest.substr(0, end);
    patterns.push_back(ArgumentWords(one));
    if (one.starts_with(kMayBeLeftOut)) {
      patterns.push_back(ArgumentWords(one.substr(kMayBeLeftOut.size())));
    }
    if (end == std::string_view::npos) return patterns;
    rest.remove_prefix(end + 3);
  }
}

// Whether words fit the beginning of a pattern: registers have their name, and a word in small
// letters stands for itself.
bool Fits(const std::vector<std::string>& pattern, std::span<const std::string> words) {
  for (std::size_t i = 0; i < words.size() && i < pattern.size(); ++i) {
    const std::string& own = pattern[i];
    const bool literal = own.find_first_not_of("abcdefghijklmnopqrstuvwxyz") == std::string::npos;
    if (own == kRegisterName && RegistersOf(words[i]).empty()) return false;
    if (own == "PAGE" && (words[i].empty() || words[i][0] < '0' || words[i][0] > '9')) return false;
    if (literal && own != words[i]) return false;
  }
  return true;
}

void PatternWords(Choice& choice, const std::vector<std::string>& pattern,
                  std::span<const std::string> words) {
  if (words.size() >= pattern.size() || !Fits(pattern, words)) return;
  const std::string& next = pattern[words.size()];
  if (next == kRegisterName) return RegisterNameWords(choice);
  if (next == "FIELD" && !words.empty()) {
    for (const Field& field : FieldsOf(words.back())) choice.Quotable(field.name);
    return;
  }
  Alternatives(choice, next);
}

// After FIELD VALUE... of a command's record.
void RecordWords(Choice& choice, const CommandKind& command, std::span<const std::string> words,
                 bool filled_in_too) {
  const NextOfRecord next = AfterFields(command, words);
  if (next.wrong) return;
  for (const RecordField* field : next.fields) {
    if (filled_in_too || field->flow != Flow::Out) choice.Word(field->name);
  }
  if (next.value == nullptr) return;
  for (const NamedValue& value : next.value->values) choice.Word(value.name);
  if (next.value->kind == FieldKind::Mask) {
    choice.Word("all");
    choice.Word("none");
  }
  choice.Hint(std::string(next.value->name) + ": " + ValuesInWords(*next.value) + "; " +
              std::string(next.value->help));
}

void CommandWords(Choice& choice, std::span<const std::string> words) {
  if (words.empty()) return choice.Words(CommandNames());
  const CommandKind* const command = CommandOfWord(words.front());
  if (command == nullptr) return;
  if (words.size() == 1) choice.Word("null");
  RecordWords(choice, *command, words.subspan(1), false);
}

void ArgumentsOf(Choice& choice, const LineKind& kind, std::span<const std::string> words) {
  if (kind.words == "command") return CommandWords(choice, words);
  if (kind.words == "expect record") {
    for (const CommandKind& command : Commands()) RecordWords(choice, command, words, true);
    return;
  }
  for (const std::vector<std::string>& pattern : Patterns(kind)) {
    PatternWords(choice, pattern, words);
  }
}

void ScriptLineWords(Choice& choice, const std::vector<std::string>& words) {
  const LineKind* found = nullptr;
  std::size_t found_words = 0;
  for (const LineKind* kind : AllLines()) {
    const std::vector<std::string> own = SplitWords(kind->words);
    const std::size_t common = std::min(own.size(), words.size());
    if (!std::equal(own.begin(), own.begin() + static_cast<std::ptrdiff_t>(common),
                    words.begin())) {
      continue;
    }
    if (own.size() > words.size()) {
      choice.Word(own[words.size()]);
    } else if (own.size() > found_words) {
      found = kind;
      found_words = own.size();
    }
  }
  if (found == nullptr || found->arguments.empty()) return;
  ArgumentsOf(choice, *found, std::span(words).subspan(found_words));
  choice.Hint(found->Usage() + ": " + std::string(found->help));
}

std::string CommonBeginning(const std::vector<std::string>& words) {
  std::string common = words.front();
  for (const std::string& word : words) {
    const auto end = std::mismatch(common.begin(), common.end(), word.begin(), word.end()).first;
    common.erase(end, common.end());
  }
  return common;
}

// In columns as wide as the widest word.
std::string InColumns(const std::vector<std::string>& words) {
  constexpr std::size_t kWidth = 78;
  std::size_t widest = 0;
  for (const std::string& word : words) widest = std::max(widest, word.size() + 2);
  std::string text;
  std::string line;
  for (const std::string& word : words) {
    if (!line.empty() && line.size() + widest > kWidth) {
      text += line.substr(0, line.find_last_not_of(' ') + 1) + '\n';
      line.clear();
    }
    line += word + std::string(widest - word.size(), ' ');
  }
  return text + line.substr(0, line.find_last_not_of(' ') + 1) + '\n';
}

}  // namespace

Completion Complete(std::string_view line) {
  const Typed typed = Cut(line);
  Choice choice(typed.part);
  const std::vector<std::string>& words = typed.words;
  if (words.empty()) {
    FirstWords(choice, typed.part.empty());
    return choice.Result();
  }
  const std::string& first = words.front();
  if (const TextGrammar* grammar = FindGrammar(first)) {
    TextWords(choice, *grammar, words, 1);
  } else if (first == "help" || first == "?") {
    if (words.size() == 1) HelpWords(choice);
  } else if (IsScriptWord(first)) {
    ScriptLineWords(choice, words);
  } else if (GrammarsWith(first).size() == 1) {
    TextWords(choice, *GrammarsWith(first).front(), words, 0);
  }
  return choice.Result();
}

std::vector<std::string> CompletedLines(std::string_view line) {
  const std::string before(line.substr(0, line.size() - Cut(line).part.size()));
  std::vector<std::string> lines = Complete(line).words;
  for (std::string& word : lines) word.insert(0, before);
  return lines;
}

CompletionStep CompleteStep(std::string_view line) {
  const Completion completion = Complete(line);
  const std::size_t typed = Cut(line).part.size();
  CompletionStep step;
  // Where a number may stand as well, nothing is put in before something is typed.
  if (!completion.words.empty() && (typed != 0 || completion.hints.empty())) {
    step.insert = CommonBeginning(completion.words).substr(typed);
    if (completion.words.size() == 1) step.insert += ' ';
    if (!step.insert.empty()) return step;
  }
  if (!completion.words.empty()) step.show = InColumns(completion.words);
  for (const std::string& hint : completion.hints) step.show += hint + '\n';
  return step;
}

}  // namespace script
