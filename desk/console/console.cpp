#include "desk/console/console.h"

#include <algorithm>
#include <exception>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <utility>
#include <vector>

#include "desk/console/board_surroundings.h"
#include "desk/console/refusals.h"
#include "files/printable.h"
#include "script/action_printer.h"
#include "script/help/first_words.h"
#include "script/parse.h"
#include "script/report_words.h"
#include "script/session.h"
#include "sim/picture/png.h"
#include "sim/text.h"
#include "sim/world.h"

namespace desk {
namespace {

using script::LineGroup;
using script::Statement;

constexpr std::size_t kMostEvents = 1'000'000;  // of lines in the library that stay in memory
constexpr std::size_t kMostShown = 2000;        // of a line of an answer

// Throws std::runtime_error for a line that is none, or none for a running program.
std::optional<Statement> Read(std::string_view line) {
  constexpr std::string_view kNoneOfALine{"\n\0", 2};
  if (line.find_first_of(kNoneOfALine) != std::string_view::npos) {
    throw std::runtime_error("expected one line, found a line feed or a byte 00 in it");
  }
  const std::string text(line);
  std::optional<Statement> statement = script::ParseLine(text, true);
  if (!statement) return statement;
  const std::vector<std::string> words = script::SplitWords(text);
  if (!script::IsScriptWord(words.front())) return statement;  // a text command
  const script::LineKind& kind = script::FindLine(words);
  if (const std::string_view why = WhyRefused(kind); !why.empty()) {
    throw std::runtime_error("'" + std::string(kind.words) + "' is refused: " + std::string(why));
  }
  return statement;
}

// Lines of a session without the margin that all of them have.
std::string WithoutMargin(std::string_view text) {
  constexpr std::string_view kMargin = "      ";
  std::vector<std::string_view> lines;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    lines.push_back(text.substr(begin, end - begin));
    begin = end + 1;
  }
  const bool margin = std::all_of(lines.begin(), lines.end(), [=](std::string_view line) {
    return line.empty() || line.starts_with(kMargin);
  });
  std::string result;
  for (std::string_view line : lines) {
    if (margin) line.remove_prefix(std::min(kMargin.size(), line.size()));
    result.append(line).append("\n");
  }
  return result;
}

// What a thread does between the two.
class Inside {
 public:
  explicit Inside(BoardAccess& access) : access_(access) { access_.Enter(); }
  ~Inside() { access_.Leave(); }
  Inside(const Inside&) = delete;
  Inside& operator=(const Inside&) = delete;

 private:
  BoardAccess& access_;
};

// A line that calls the library or lets time pass: what is said while it runs, and what
// expectations can ask for until the next one begins.
struct Action {
  Action(std::ostream& out, script::Surroundings& around, const std::string& name,
         const script::LibraryFacts& facts)
      : session(out, around), printer(sim::TheWorld(), printed) {
    session.facts = facts;
    session.BeginAction(name);
    printer.Begin();
  }

  std::ostringstream printed;
  script::Session session;
  script::ActionPrinter printer;
};

}  // namespace

struct Console::Impl {
  explicit Impl(BoardAccess& of) : access(of), around(of) {
    script::Retell(World().trace, 0, facts);
    World().trace.AddListener(facts, sim::Trace::Hears::AllButCycles);
    World().windows.keep_received = false;
    World().windows.on_received = [this](const sim::ReceivedMessage& message) {
      for (const std::shared_ptr<Action>& action : running) action->printer.OnReceived(message);
      for (Action* action : Listening()) action->session.OnReceived(message);
    };
    KeepEvents(false);
    last = std::make_shared<Action>(out, around, "the program", facts);
    last->printer.silent = true;
  }
  ~Impl() {
    World().windows.on_received = nullptr;
    World().trace.RemoveListener(facts);
  }
  Impl(const Impl&) = delete;
  Impl& operator=(const Impl&) = delete;

  static sim::World& World() { return sim::TheWorld(); }
};

}  // namespace desk
