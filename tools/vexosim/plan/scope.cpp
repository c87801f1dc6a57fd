#include "tools/vexosim/plan/scope.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "device/plan/plan.h"
#include "files/printable.h"
#include "script/line.h"
#include "script/words.h"

namespace vexosim {
namespace {

using script::LineGroup;

// What somebody can see to before the program begins. A word may name some forms of a line alone.
constexpr std::array<std::string_view, 7> kBenchLines = {
    "board chips", "board id", "camera", "nvram record", "nvram blank", "file", "driver"};
// Lines that say how a run is shown.
constexpr std::array<std::string_view, 3> kShown = {"writes", "quiet", "mark"};

class Scope {
 public:
  // Why the line cannot be played, if it cannot.
  std::optional<std::string> Refuse(const script::Statement& statement) {
    const std::vector<std::string> words = script::SplitWords(statement.text);
    switch (statement.group) {
      case LineGroup::Board:
        return Board(script::FindLine(words).words, words);
      case LineGroup::Action:
        return Act(words);
      case LineGroup::Check:
      case LineGroup::Output:
        return std::nullopt;
      case LineGroup::Switch:
      case LineGroup::Tool:
        break;
    }
    const std::string_view kind = script::FindLine(words).words;
    if (std::find(kShown.begin(), kShown.end(), kind) != kShown.end()) return std::nullopt;
    return "it is about a session on the simulated board; a plan runs once, from its begin to its "
           "end";
  }

 private:
  std::optional<std::string> Board(std::string_view kind,
                                   const std::vector<std::string>& words) const {
    if (acted_) return "nobody is at the board while a plan runs: it changes before the first call";
    if (kind == "motion") return "what moves before the cameras is in no plan";
    const bool bench = std::find(kBenchLines.begin(), kBenchLines.end(), kind) != kBenchLines.end();
    const std::string& state = words.back();
    if (!bench || state == "unreadable" || state == "noroot" || state == "null") {
      return "a real board cannot be told so";
    }
    return std::nullopt;
  }

  std::optional<std::string> Act(const std::vector<std::string>& words) {
    const std::string& kind = words.front();
    acted_ = true;
    if (kind == "run" || kind == "wait") return std::nullopt;
    if (kind == "lowmem" || kind == "entry") {
      return "the system alone calls the library's entry: attach and detach load and unload it";
    }
    if (kind == "attach") {
      if (attached_) return "the library is loaded once in a script: it would begin anew";
      attached_ = loaded_ = true;
      return std::nullopt;
    }
    if (!loaded_) return "the library is not loaded here: attach comes first";
    if (kind == "detach") loaded_ = false;
    if (kind == "text" && words.back().size() > plan::kLongestText) {
      return "a plan's texts have 255 characters at most";
    }
    return std::nullopt;
  }

  bool acted_ = false;
  bool attached_ = false;
  bool loaded_ = false;
};

}  // namespace

void CheckScope(const script::Script& script) {
  Scope scope;
  for (const script::Statement& statement : script.statements) {
    if (const auto reason = scope.Refuse(statement)) {
      throw NoPlan(script.name + ':' + std::to_string(statement.line) + ": " +
                   files::Printable(statement.text) + ": " + *reason);
    }
  }
}

}  // namespace vexosim
