#include "script/parse.h"

#include <span>
#include <string_view>

#include "files/input.h"
#include "files/printable.h"
#include "script/grammar/pattern_walk.h"
#include "script/grammar/text_line.h"
#include "script/help/first_words.h"
#include "script/text_step.h"
#include "script/variants.h"

namespace script {
namespace {

std::string Trim(const std::string& text) {
  const std::size_t begin = text.find_first_not_of(kBlanks);
  if (begin == std::string::npos) return {};
  return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

using Lines = std::vector<std::string>;

// Far more than any script needs; what is longer is none.
constexpr std::size_t kLongestScript = std::size_t{16} << 20;

// Throws ScriptError for what is no text, or has no end.
Lines ReadLines(std::istream& in, const std::string& name) {
  Lines lines;
  std::size_t bytes = 0;
  try {
    files::LineInput input(in, name, kLongestLine);
    for (std::string text; input.Next(text);) {
      const std::string where = name + ':' + std::to_string(input.Number()) + ": ";
      bytes += text.size() + 1;
      if (bytes > kLongestScript) {
        throw ScriptError(where + "expected a script of 16 MiB at most, found more");
      }
      if (text.find('\0') != std::string::npos) {
        throw ScriptError(where + "expected text, found a byte 00");
      }
      lines.push_back(text);
    }
  } catch (const files::FileError& error) {
    throw ScriptError(error.what());
  }
  return lines;
}

[[noreturn]] void Wrong(const std::string& name, std::size_t line, const Malformed& error) {
  constexpr std::size_t kMost = 2000;  // a wrong word may be as long as its line
  throw ScriptError(name + ':' + std::to_string(line) + ": " +
                    files::PrintableLines(error.what(), kMost));
}

// The variants that the first line with words names, and how many lines that takes up; else none.
Lines ReadVariants(const Lines& lines, const std::string& name, std::size_t& taken) {
  for (std::size_t i = 0; i < lines.size(); ++i) {
    try {
      if (SplitWords(lines[i]).empty()) continue;
      Lines variants = VariantNames(lines[i]);
      if (!variants.empty()) taken = i + 1;
      return variants;
    } catch (const Malformed& error) {
      Wrong(name, i + 1, error);
    }
  }
  return {};
}

}  // namespace

namespace {

// A text command: its header, and what the library gets.
Statement TextStatement(const std::string& line, bool completed) {
  const std::string text = WithSeparator(line);
  return {0, line, LineGroup::Action, TextStep(text), false, completed};
}

// A line that is a text command, with its header or without; none when it is another.
std::optional<Statement> ParseTextLine(const std::string& typed) {
  const std::string line = Trim(typed.substr(0, CommentBegin(typed)));
  const std::string_view word = FirstWordOf(line);
  if (FindGrammar(word) != nullptr) return TextStatement(line, false);
  if (IsScriptWord(word)) return std::nullopt;
  const std::vector<const TextGrammar*> grammars = GrammarsWith(word);
  if (grammars.empty()) return std::nullopt;
  if (grammars.size() == 1) return TextStatement(grammars.front()->header + (' ' + line), true);
  std::string text = "several families have " + std::string(word) + "; say which:";
  for (const TextGrammar* grammar : grammars) text += '\n' + (grammar->header + (' ' + line));
  throw Malformed(text);
}

}  // namespace

std::optional<Statement> ParseLine(const std::string& text, bool after_action) {
  if (std::optional<Statement> command = ParseTextLine(text)) return command;
  const std::vector<std::string> words = SplitWords(text);
  if (words.empty()) return std::nullopt;
  const LineKind& kind = FindLine(words);
  if (kind.group == LineGroup::Check && !after_action) {
    throw Malformed("expected an action before the first expectation, found '" + words.front() +
                    "'");
  }
  Arguments arguments{std::span(words).subspan(WordCount(kind))};
  try {
    Step step = kind.parse(arguments);
    arguments.End();
    return Statement{0, Trim(text), kind.group, std::move(step), kind.goes_on};
  } catch (const Malformed& error) {
    // A word alone may have been meant to begin another line.
    const std::string usage = WordCount(kind) > 1 ? kind.Usage() : UsagesOf(words.front());
    throw Malformed(std::string(error.what()) + " (" + usage + ')');
  }
}

std::vector<Script> ParseScript(std::istream& in, const std::string& name) {
  const Lines lines = ReadLines(in, name);
  std::size_t first = 0;
  const Lines variants = ReadVariants(lines, name, first);
  std::vector<Script> scripts;
  do {
    const std::size_t which = scripts.size();
    Script& script = scripts.emplace_back();
    if (!variants.empty()) script.variant = variants[which];
    script.name = variants.empty() ? name : name + " (" + script.variant + ')';
    bool after_action = false;
    for (std::size_t i = first; i < lines.size(); ++i) {
      try {
        auto statement = ParseLine(LineOfVariant(lines[i], variants, which), after_action);
        if (!statement) continue;
        statement->line = static_cast<unsigned>(i + 1);
        after_action = after_action || statement->group == LineGroup::Action;
        script.statements.push_back(std::move(*statement));
      } catch (const Malformed& error) {
        Wrong(script.name, i + 1, error);
      }
    }
  } while (scripts.size() < variants.size());
  return scripts;
}

}  // namespace script
