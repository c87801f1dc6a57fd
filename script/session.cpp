#include "script/session.h"

#include <algorithm>
#include <stdexcept>

#include "script/action_printer.h"
#include "script/register_diff.h"

namespace script {
namespace {

constexpr std::size_t kMostDebugText = std::size_t{16} << 20;
constexpr std::size_t kMostMessageWords = 1000;

}  // namespace

Session::Session(std::ostream& out, Surroundings& around, Interpreter* interpreter)
    : out_(out),
      around_(around),
      interpreter_(interpreter),
      asks_windows_(!World().windows.on_received) {
  World().trace.AddListener(*this, sim::Trace::Hears::AllButCycles);
  World().trace.AddListener(facts, sim::Trace::Hears::AllButCycles);
  if (!asks_windows_) return;
  World().windows.on_received = [this](const sim::ReceivedMessage& message) {
    OnReceived(message);
  };
}

Session::~Session() {
  World().trace.RemoveListener(*this);
  World().trace.RemoveListener(facts);
  if (asks_windows_) World().windows.on_received = nullptr;
}

Interpreter& Session::Runner() const {
  if (interpreter_ == nullptr) throw std::runtime_error("this program has no such lines");
  return *interpreter_;
}

void Session::BeginAction(std::string name) {
  action_ = std::move(name);
  returned.reset();
  outcome.clear();
  notes.clear();
  first_event_ = World().trace.Mark();
  first_received_ = World().windows.received.size();
  first_cycle_ = World().trace.Cycles();
  record_.reset();
  command_.reset();
  debug_text_.clear();
  messages_.clear();
  message_words_.clear();
  moments.insert_or_assign(std::string(kStartMoment), sim::TakeSnapshot(World().board));
}

std::vector<std::string> Session::ResultInWords() const {
  std::vector<std::string> lines = outcome;
  if (lines.empty() && returned) lines.push_back("= " + std::to_string(*returned));
  lines.insert(lines.end(), notes.begin(), notes.end());
  return lines;
}

void Session::OnEvent(const sim::Event&, const sim::EventDetail* detail) {
  if (const auto* call = std::get_if<sim::CallEvent>(detail)) {
    if (call->fn == "VEXOAPI_CommandProc")
      command_ = static_cast<std::uint32_t>(call->args.front());
  } else if (const auto* ended = std::get_if<sim::ReturnEvent>(detail)) {
    record_ = ended->record;
  } else if (const auto* debug = std::get_if<sim::DebugEvent>(detail)) {
    if (debug_text_.size() < kMostDebugText) debug_text_ += debug->text;
  } else if (const auto* message = std::get_if<sim::MessageEvent>(detail)) {
    if (message->ok) messages_.emplace(message->message, message->wparam, message->lparam);
    CountMessage(script::MessageInWords(World(), *message));
  }
}

void Session::OnReceived(const sim::ReceivedMessage& message) {
  // An address is no number that a script could know.
  messages_.emplace(message.message,
                    message.record.empty() ? std::optional(message.wparam) : std::nullopt,
                    message.lparam);
  if (message.posted) CountMessage(script::MessageInWords(World(), message));
  if (on_received) on_received(message);
}

void Session::CountMessage(const std::string& words) {
  const auto found = std::find_if(message_words_.begin(), message_words_.end(),
                                  [&words](const auto& counted) { return counted.first == words; });
  if (found != message_words_.end()) {
    ++found->second;
  } else if (message_words_.size() < kMostMessageWords) {
    message_words_.emplace_back(words, 1);
  }
}

bool Session::HasMessage(const WantedMessage& wanted) const {
  return std::any_of(messages_.begin(), messages_.end(), [&wanted](const auto& came) {
    const auto& [message, wparam, lparam] = came;
    return message == wanted.message && (!wanted.wparam || wparam == wanted.wparam) &&
           (!wanted.lparam || lparam == wanted.lparam);
  });
}

std::vector<std::string> Session::MessagesInWords() const {
  std::vector<std::string> lines;
  for (const auto& [words, count] : message_words_) {
    lines.push_back(count == 1 ? words : words + ", " + std::to_string(count) + " times");
  }
  return lines;
}

}  // namespace script
