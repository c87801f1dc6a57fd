#include "script/parse.h"

#include <span>
#include <string_view>

namespace script {
namespace {

constexpr std::string_view kBlanks = " \t\r";

std::string Trim(const std::string& text) {
  const std::size_t begin = text.find_first_not_of(kBlanks);
  if (begin == std::string::npos) return {};
  return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

}  // namespace

std::optional<Statement> ParseLine(const std::string& text, bool after_action) {
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
    return Statement{0, Trim(text), kind.group, std::move(step)};
  } catch (const Malformed& error) {
    throw Malformed(std::string(error.what()) + " (" + UsagesOf(words.front()) + ')');
  }
}

std::vector<Statement> ParseScript(std::istream& in, const std::string& name) {
  std::vector<Statement> statements;
  bool after_action = false;
  std::string text;
  for (unsigned line = 1; std::getline(in, text); ++line) {
    try {
      std::optional<Statement> statement = ParseLine(text, after_action);
      if (!statement) continue;
      statement->line = line;
      after_action = after_action || statement->group == LineGroup::Action;
      statements.push_back(std::move(*statement));
    } catch (const Malformed& error) {
      throw ScriptError(name + ':' + std::to_string(line) + ": " + error.what());
    }
  }
  return statements;
}

}  // namespace script
