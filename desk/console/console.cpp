#include "desk/console/console.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <list>
#include <optional>
#include <span>
#include <sstream>
#include <stdexcept>
#include <utility>
#include <vector>

#include "desk/console/board_surroundings.h"
#include "desk/console/margin.h"
#include "desk/console/refusals.h"
#include "script/access_log.h"
#include "script/action_printer.h"
#include "script/help/first_words.h"
#include "script/parse.h"
#include "script/report_words.h"
#include "script/session.h"
#include "sim/picture/png.h"
#include "sim/world.h"

namespace desk {
namespace {

using script::LineGroup;
using script::Statement;

constexpr std::size_t kMostEvents = 1'000'000;    // of lines in the library that stay in memory
constexpr std::streamoff kMostPrinted = 1 << 18;  // of what a line, which may take hours, brings

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

// A line that calls the library or lets time pass, and all that happens until the next one begins.
struct Action {
  Action(std::ostream& out, script::Surroundings& around, const std::string& name,
         const script::LibraryFacts& facts, const script::AccessLog& accesses)
      : session(out, around) {
    session.facts = facts;
    session.accesses = &accesses;
    session.BeginAction(name);
  }

  std::size_t first_report = sim::TheWorld().reports.All().size();
  script::Session session;  // what expectations ask for
  std::ostringstream printed;
  std::optional<script::ActionPrinter> printer;  // while the line runs
};

}  // namespace

struct Console::Impl {
  explicit Impl(BoardAccess& of) : access(of), around(of) {
    script::Retell(World().trace, 0, facts);
    World().trace.AddListener(facts, sim::Trace::Hears::AllButCycles);
    World().trace.AddListener(accesses);
    World().windows.keep_received = false;
    World().windows.on_received = [this](const sim::ReceivedMessage& message) {
      for (Action& action : actions) {
        action.session.OnReceived(message);
        if (action.printer) action.printer->OnReceived(message);
      }
    };
    actions.emplace_back(out, around, "the program", facts, accesses);
    KeepEvents();
  }
  ~Impl() {
    World().windows.on_received = nullptr;
    World().trace.RemoveListener(facts);
    World().trace.RemoveListener(accesses);
  }
  Impl(const Impl&) = delete;
  Impl& operator=(const Impl&) = delete;

  // All that follows is called inside. Adds what there is to say to `said`.
  void Do(const Statement& statement, std::string& said);
  void Act(const Statement& statement, std::string& said);
  void End(std::list<Action>::iterator action, std::string& said);
  void KeepEvents();

  static sim::World& World() { return sim::TheWorld(); }

  BoardAccess& access;
  BoardSurroundings around;
  script::LibraryFacts facts;
  script::AccessLog accesses;
  std::ostringstream out;     // of a line that takes no time
  std::list<Action> actions;  // those that run, and the last that began
};

void Console::Impl::Do(const Statement& statement, std::string& said) {
  if (statement.completed) said += statement.text + '\n';
  script::Session& session = actions.back().session;
  switch (statement.group) {
    case LineGroup::Action:
      return Act(statement, said);
    case LineGroup::Check:
      statement.step(session);
      said += "met\n";
      return;
    case LineGroup::Board:
      World().Record(sim::LineEvent{statement.text});
      return statement.step(session);
    case LineGroup::Output:
    case LineGroup::Switch:
    case LineGroup::Tool:
      out.str({});
      statement.step(session);
      said += WithoutMargin(out.str());
      return;
  }
}

void Console::Impl::Act(const Statement& statement, std::string& said) {
  if (!actions.back().printer) actions.pop_back();
  KeepEvents();
  actions.emplace_back(out, around, statement.text, facts, accesses);
  const auto action = std::prev(actions.end());
  action->printer.emplace(World(), action->printed);
  action->printer->before_output = [action](const std::string&) {
    action->printer->silent = action->printed.tellp() > kMostPrinted;
  };
  action->printer->Begin();
  try {
    statement.step(action->session);
  } catch (...) {
    End(action, said);
    throw;
  }
  End(action, said);
}

void Console::Impl::End(std::list<Action>::iterator action, std::string& said) {
  action->printer->End();
  said += WithoutMargin(action->printed.str());
  if (action->printer->silent) said += "(there is more, which was not kept)\n";
  action->printer.reset();
  for (const std::string& line : action->session.ResultInWords()) said += line + '\n';
  const std::span<const sim::Report> reports = World().reports.All();
  for (const std::string& line : script::WarningsInWords(reports.subspan(action->first_report))) {
    said += "warning: " + line + '\n';
  }
  if (action != std::prev(actions.end())) actions.erase(action);
  KeepEvents();
}

// What a text command did is read from the trace, as long as one may be in the library.
void Console::Impl::KeepEvents() {
  const auto running = std::count_if(actions.begin(), actions.end(), [](const Action& action) {
    return action.printer.has_value();
  });
  if (running > static_cast<std::ptrdiff_t>(around.Passing())) return;
  World().trace.ForgetEvents();
  World().trace.SetCapacity(running == 0 ? 0 : kMostEvents);
}

Console::Console(BoardAccess& access) : impl_(std::make_unique<Impl>(access)) {}
Console::~Console() = default;

Answer Console::Run(std::string_view line) {
  Answer answer;
  std::string said;
  try {
    impl_->around.RefuseWhenEnding();
    const std::optional<Statement> statement = Read(line);
    if (!statement) return answer;
    std::vector<BoardSurroundings::Picture> pictures;
    {
      const Inside inside(impl_->access);
      impl_->Do(*statement, said);
      pictures = impl_->around.TakePictures();
    }
    for (const auto& [path, image] : pictures) sim::WritePng(image, path);
  } catch (const script::Unmet& unmet) {
    answer.result = Answer::Result::Unmet;
    said += unmet.found;
  } catch (const std::exception& error) {
    answer.result = Answer::Result::Refused;
    said += error.what();
  } catch (...) {
    answer.result = Answer::Result::Refused;
    said += "the line was ended from outside";
  }
  answer.text = AnswerText(std::move(said));
  return answer;
}

void Console::EndLines() { impl_->around.EndLines(); }

}  // namespace desk
