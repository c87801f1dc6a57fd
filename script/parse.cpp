#include "script/parse.h"

#include <span>
#include <string_view>

#include "script/variants.h"

namespace script {
namespace {

std::string Trim(const std::string& text) {
  const std::size_t begin = text.find_first_not_of(kBlanks);
  if (begin == std::string::npos) return {};
  return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

using Lines = std::vector<std::string>;

[[noreturn]] void Wrong(const std::string& name, std::size_t line, const Malformed& error) {
  throw ScriptError(name + ':' + std::to_string(line) + ": " + error.what());
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

std::vector<Script> ParseScript(std::istream& in, const std::string& name) {
  Lines lines;
  for (std::string text; std::getline(in, text);) lines.push_back(text);
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
