#include "script/variants.h"

#include <algorithm>

#include "script/words.h"
#include "sim/text.h"

namespace script {
namespace {

std::string NamesInWords(std::span<const std::string> names) {
  return sim::OneOf(std::vector<std::string_view>(names.begin(), names.end()));
}

// The alternative between braces that is the variant's.
std::string_view Alternative(std::string_view braces, std::span<const std::string> variants,
                             std::size_t which) {
  const std::string_view all = braces.substr(1, braces.size() - 2);
  if (static_cast<std::size_t>(std::count(all.begin(), all.end(), '|')) + 1 != variants.size()) {
    throw Malformed("expected " + std::to_string(variants.size()) +
                    " alternatives, one for each variant, found '" + std::string(braces) + "'");
  }
  std::size_t begin = 0;
  for (; which > 0; --which) begin = all.find('|', begin) + 1;
  return all.substr(begin, all.find('|', begin) - begin);
}

// The line with the variant's alternatives; its comment stays as it is.
std::string WithAlternatives(std::string_view line, std::span<const std::string> variants,
                             std::size_t which) {
  std::string_view rest = line.substr(0, CommentBegin(line));
  const std::string_view comment = line.substr(rest.size());
  std::string text;
  for (std::size_t open; (open = rest.find('{')) != std::string_view::npos;) {
    const std::size_t close = rest.find('}', open);
    if (close == std::string_view::npos) throw Malformed("expected '}', found the end of the line");
    text += rest.substr(0, open);
    text += Alternative(rest.substr(open, close + 1 - open), variants, which);
    rest.remove_prefix(close + 1);
  }
  text += rest;
  text += comment;
  return text;
}

// Takes the first word, and the blanks before it.
std::string_view TakeWord(std::string_view& text) {
  const std::size_t begin = std::min(text.find_first_not_of(kBlanks), text.size());
  const std::size_t end = std::min(text.find_first_of(kBlanks, begin), text.size());
  const std::string_view word = text.substr(begin, end - begin);
  text.remove_prefix(end);
  return word;
}

}  // namespace

std::vector<std::string> VariantNames(const std::string& line) {
  std::vector<std::string> words = SplitWords(line);
  if (words.empty() || words.front() != "variants") return {};
  words.erase(words.begin());
  if (words.size() < 2) throw Malformed("expected two variants or more (variants NAME NAME...)");
  for (auto name = words.begin(); name != words.end(); ++name) {
    if (std::find(words.begin(), name, *name) != name) {
      throw Malformed("expected each variant once, found '" + *name + "' again");
    }
  }
  return words;
}

std::string LineOfVariant(const std::string& line, std::span<const std::string> variants,
                          std::size_t which) {
  std::string text = variants.empty() ? line : WithAlternatives(line, variants, which);
  std::string_view rest = text;
  const std::string_view first = TakeWord(rest);
  if (first == "variants") {
    throw Malformed("expected 'variants' before every other line, found it behind one");
  }
  if (first != "only") return text;
  if (variants.empty()) {
    throw Malformed("expected 'variants NAME NAME...' before every other line, found 'only'");
  }
  const std::string_view name = TakeWord(rest);
  const auto found = std::find(variants.begin(), variants.end(), name);
  if (found == variants.end()) {
    throw Malformed("expected " + NamesInWords(variants) + ", found '" + std::string(name) +
                    "' (only VARIANT LINE)");
  }
  return *found == variants[which] ? std::string(rest) : std::string();
}

}  // namespace script
