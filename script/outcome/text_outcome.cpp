#include "script/outcome/text_outcome.h"

#include <algorithm>
#include <array>

#include "VexoCtrlSDK.h"
#include "script/grammar/pattern_walk.h"
#include "script/outcome/text_action.h"
#include "script/outcome/typed_line.h"
#include "text/back_end_text.h"

namespace script {
namespace {

// These keywords need no initialized chips, and may have nothing to do all the same.
constexpr std::array<std::string_view, 3> kWithoutChips = {"init", "uninit", "set_emif"};

bool NeedsChips(const TypedLine& line) {
  const std::string_view keyword = KeywordOf(line.pattern);
  return line.grammar != &kBackEndGrammar &&
         std::find(kWithoutChips.begin(), kWithoutChips.end(), keyword) == kWithoutChips.end();
}

void SayOfWholeLine(TextAction& action) {
  const TypedLine& line = action.Line();
  if (NeedsChips(line) && !action.Facts().ready && !action.Acted()) {
    return action.Say("the chips are not initialized: nothing was done");
  }
  for (const std::string& note : line.notes) action.Say(note);
  if (line.grammar == &kBackEndGrammar) return SayOfBackEndCommand(action);
  SayOfChipCommand(action);
}

std::string Joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += (text.empty() ? "" : "\n") + line;
  return text;
}

}  // namespace

std::optional<std::string> OutcomeOfText(std::string_view line, int result, const sim::World& world,
                                         std::size_t first_event, const LibraryFacts& facts) {
  if (result == VEXO_ERROR_UNINITIALIZED) {
    return facts.attached ? "the library is not initialized: another process has it"
                          : "the library is not initialized: attach comes first";
  }
  const TypedLine typed = ReadTypedLine(line);
  TextAction action(typed, world, first_event, facts);
  if (!typed.Whole()) {
    const bool in_vain = result == VEXO_OK && !action.Acted();
    return typed.fault + (in_vain ? ": nothing was done" : "");
  }
  if (result != VEXO_OK) return std::nullopt;
  SayOfWholeLine(action);
  if (action.Said().empty()) return std::nullopt;
  return Joined(action.Said());
}

}  // namespace script
