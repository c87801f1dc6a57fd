#include "script/line.h"

#include <algorithm>

#include "script/help/help.h"

namespace script {
namespace {

std::string_view FirstWord(std::string_view words) { return words.substr(0, words.find(' ')); }

bool Fits(const LineKind& kind, std::span<const std::string> words) {
  const std::vector<std::string> own = SplitWords(kind.words);
  return own.size() <= words.size() && std::equal(own.begin(), own.end(), words.begin());
}

// One kind: its usage, and its help beside or below it, wrapped.
void AppendKind(std::string& text, const LineKind& kind) {
  constexpr std::size_t kColumn = 38;
  constexpr std::size_t kWidth = 96;
  std::string line = "  " + kind.Usage();
  if (line.size() + 2 > kColumn) {
    text += line + '\n';
    line.clear();
  }
  line.resize(kColumn, ' ');
  for (std::string_view help = kind.help; !help.empty();) {
    const std::size_t end = std::min(help.find(' '), help.size());
    if (line.size() > kColumn && line.size() + 1 + end > kWidth) {
      text += line + '\n';
      line.assign(kColumn, ' ');
    }
    if (line.size() > kColumn) line += ' ';
    line += help.substr(0, end);
    help.remove_prefix(std::min(end + 1, help.size()));
  }
  text += line + '\n';
}

void AppendGroup(std::string& text, std::string_view title, std::span<const LineKind> kinds) {
  text += title;
  text += '\n';
  for (const LineKind& kind : kinds) AppendKind(text, kind);
}

}  // namespace

std::string LineKind::Usage() const {
  std::string usage(words);
  if (!arguments.empty()) usage += ' ' + std::string(arguments);
  return usage;
}

std::vector<const LineKind*> AllLines() {
  std::vector<const LineKind*> all;
  for (const auto& kinds : {BoardLines(), ActionLines(), ExpectLines(), RegisterLines(),
                            OutputLines(), StopLines(), SessionLines()}) {
    for (const LineKind& kind : kinds) all.push_back(&kind);
  }
  return all;
}

std::size_t WordCount(const LineKind& kind) {
  return static_cast<std::size_t>(std::count(kind.words.begin(), kind.words.end(), ' ')) + 1;
}

const LineKind& FindLine(std::span<const std::string> words) {
  const LineKind* best = nullptr;
  for (const LineKind* kind : AllLines()) {
    if (Fits(*kind, words) && (best == nullptr || WordCount(*kind) > WordCount(*best))) best = kind;
  }
  if (best != nullptr) return *best;
  const std::string usages = UsagesOf(words.front());
  if (usages.empty()) {
    const std::string near = HelpSuggestion(words.front());
    throw Malformed("unknown: '" + words.front() + '\'' +
                    (near.empty() ? "; help lists what there is" : near));
  }
  Arguments rest(words.subspan(1));
  rest.Expected(usages);
}

std::string UsagesOf(std::string_view first_word) {
  std::string text;
  for (const LineKind* kind : AllLines()) {
    if (FirstWord(kind->words) != first_word) continue;
    if (!text.empty()) text += " | ";
    text += kind->Usage();
  }
  return text;
}

std::string LanguageHelp() {
  std::string text;
  AppendGroup(text, "Board lines (at any time, at once):", BoardLines());
  AppendGroup(text, "\nActions:", ActionLines());
  AppendGroup(text, "\nExpectations about the last action:", ExpectLines());
  AppendGroup(text, "\nRegisters, at once and without a bus cycle:", RegisterLines());
  AppendGroup(text, "\nOutput:", OutputLines());
  AppendGroup(text,
              "\nStops, where the lines that follow run before the action goes on:", StopLines());
  AppendGroup(text, "\nThe session:", SessionLines());
  text +=
      "\nAfter the line variants NAME NAME... a script runs once for each NAME: {a|b} reads a in\n"
      "the first and b in the second, and only NAME LINE is a line for that one alone.\n"
      "\nWords are separated by blanks; # starts a comment; a word in double quotes may hold\n"
      "\\n \\r \\t \\\\ \\\" \\xHH. Numbers are decimal or 0x-hexadecimal. CH is 0 to 15 or all,\n"
      "CHIP is master, slave1, slave2, slave3 or all, PAGE is 0 to 2, and a BYTE of a record or\n"
      "a register has two hexadecimal digits. COMMAND and MESSAGE are a name or a number; the\n"
      "shell's help commands, help messages and help NAME list names and fields.\n";
  return text;
}

}  // namespace script
