#include "script/help/help.h"

#include <array>
#include <span>
#include <stdexcept>
#include <vector>

#include "script/grammar/did_you_mean.h"
#include "script/grammar/pattern_walk.h"
#include "script/grammar/text_help.h"
#include "script/help/command_help.h"
#include "script/help/first_words.h"
#include "script/line.h"
#include "sim/faults.h"

namespace script {
namespace {

constexpr std::string_view kScript = "script";  // help on the script language
constexpr std::string_view kCommands = "commands";
constexpr std::string_view kMessages = "messages";
constexpr std::array kTopics = {kScript, kCommands, kMessages};

std::string Wrapped(std::span<const std::string_view> words) {
  constexpr std::size_t kWidth = 78;
  std::string text;
  std::string line;
  for (const std::string_view word : words) {
    if (!line.empty() && line.size() + 1 + word.size() > kWidth) {
      text += line + '\n';
      line.clear();
    }
    line += line.empty() ? "  " : " ";
    line += word;
  }
  return text + line + '\n';
}

std::string HelpOnHeader(const TextGrammar& grammar) {
  std::string text;
  for (const std::string_view pattern : PatternWalk(grammar).Patterns()) {
    text += "  " + std::string(grammar.header) + ' ' + std::string(pattern) + '\n';
  }
  return text;
}

std::string HelpOnFaults() {
  constexpr std::size_t kColumn = 20;
  std::string text;
  for (const sim::FaultWords& fault : sim::kFaults) {
    std::string line = "    " + std::string(fault.word);
    line.resize(kColumn, ' ');
    text += line + std::string(fault.help) + '\n';
  }
  return text;
}

std::string HelpOnScriptWord(std::string_view word) {
  std::string text;
  for (const LineKind* kind : AllLines()) {
    if (KeywordOf(kind->words) == word) {
      text += kind->Usage() + "\n    " + std::string(kind->help) + '\n';
    }
  }
  if (word == "fault") text += HelpOnFaults();
  if (word == "command") text += HelpOnCommands();
  return text;
}

std::vector<std::string_view> AllWords() {
  std::vector<std::string_view> words = ScriptWords();
  for (const TextGrammar* grammar : TextGrammars()) {
    const std::vector<std::string_view> keywords = Keywords(*grammar);
    words.insert(words.end(), keywords.begin(), keywords.end());
    words.emplace_back(grammar->header);
  }
  words.insert(words.end(), CommandNames().begin(), CommandNames().end());
  words.insert(words.end(), kTopics.begin(), kTopics.end());
  return words;
}

}  // namespace

std::string HelpOverview() {
  std::string text = "Text commands, for the chips (vexo) and the video back-end (vpb):\n";
  for (const TextGrammar* grammar : TextGrammars()) {
    std::vector<std::string_view> words = Keywords(*grammar);
    words.insert(words.begin(), grammar->header);
    text += Wrapped(words);
  }
  text +=
      "  The blank at the end is added. A header may be left out where only one family has the\n"
      "  keyword: lsplit 6 0 is vexo lsplit 6 0.\n\n"
      "Script lines, which change the board, call the library, let time pass and look:\n" +
      Wrapped(ScriptWords());
  text +=
      "\nTab completes a word, or says which number is expected. Below a line stand\n"
      "  | what the library wrote to the debug output (! to the kernel debug output)\n"
      "  > a message to the host window, in words\n"
      "  w a register write, after writes on\n"
      "  = the result\n"
      "A line takes no virtual time but what it waits for itself; run 1000 lets a second pass.\n";
  return text;
}

std::string HelpOnWord(std::string_view word) {
  if (word == kScript) return LanguageHelp();
  if (word == kCommands) return HelpOnCommands();
  if (word == kMessages) return HelpOnMessages();
  if (const TextGrammar* grammar = FindGrammar(word)) return HelpOnHeader(*grammar);
  return HelpOnKeyword(word) + HelpOnScriptWord(word) + HelpOnCommand(word);
}

std::string Help(std::span<const std::string> words) {
  if (words.empty()) return HelpOverview();
  // A whole command line is explained by its keyword.
  const std::string& word =
      words.size() > 1 && FindGrammar(words[0]) != nullptr ? words[1] : words[0];
  std::string text = HelpOnWord(word);
  if (!text.empty()) return text;
  const std::string near = HelpSuggestion(word);
  throw std::runtime_error("unknown: '" + word + '\'' +
                           (near.empty() ? "; help lists what there is" : near));
}

std::span<const std::string_view> HelpTopics() { return kTopics; }

std::string HelpSuggestion(std::string_view word) { return DidYouMean(word, AllWords()); }

}  // namespace script
