#include "desk/console/refusals.h"

#include <algorithm>
#include <array>

namespace desk {
namespace {

using script::LineGroup;

// What would pull the library out from under the program, and what only a session with a script's
// memory of itself can do.
constexpr std::string_view kLoading = "the library is loaded and unloaded by the program's system";
constexpr std::string_view kWindow = "which window the library has is for the program to say";
constexpr std::string_view kPump = "when messages are handled is for the program to say";
constexpr std::string_view kPasses = "time passes by itself; run MS says what happens meanwhile";
constexpr std::string_view kOneWay = "a running program cannot be turned back";
constexpr std::string_view kNoStops = "a running program is not stopped";
constexpr std::string_view kNoShow = "an answer has what its line did, in one form";
constexpr std::string_view kNoFiles = "lines are sent one by one, and the sender keeps them";
constexpr std::string_view kNoEnd = "the board is the program's, and ends with it";

struct Row {
  LineGroup group;
  std::string_view first_word;
  std::string_view why;
};
constexpr std::array kRows = {
    Row{LineGroup::Action, "attach", kLoading}, Row{LineGroup::Action, "detach", kLoading},
    Row{LineGroup::Action, "entry", kLoading},  Row{LineGroup::Action, "window", kWindow},
    Row{LineGroup::Action, "unbind", kWindow},  Row{LineGroup::Board, "pump", kPump},
    Row{LineGroup::Action, "wait", kPasses},    Row{LineGroup::Tool, "undo", kOneWay},
    Row{LineGroup::Switch, "mark", kOneWay},    Row{LineGroup::Tool, "back", kOneWay},
    Row{LineGroup::Switch, "break", kNoStops},  Row{LineGroup::Tool, "break", kNoStops},
    Row{LineGroup::Tool, "where", kNoStops},    Row{LineGroup::Switch, "continue", kNoStops},
    Row{LineGroup::Switch, "step", kNoStops},   Row{LineGroup::Switch, "writes", kNoShow},
    Row{LineGroup::Switch, "quiet", kNoShow},   Row{LineGroup::Tool, "source", kNoFiles},
    Row{LineGroup::Tool, "save", kNoFiles},     Row{LineGroup::Tool, "history", kNoFiles},
    Row{LineGroup::Tool, "quit", kNoEnd},       Row{LineGroup::Tool, "exit", kNoEnd},
};

}  // namespace

std::string_view WhyRefused(const script::LineKind& kind) {
  const std::string_view word = kind.words.substr(0, kind.words.find(' '));
  const auto* const row = std::find_if(kRows.begin(), kRows.end(), [&](const Row& one) {
    return one.group == kind.group && one.first_word == word;
  });
  return row == kRows.end() ? std::string_view() : row->why;
}

}  // namespace desk
