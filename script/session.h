// What a script's lines act on while it runs: its outputs, and what the last action did.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <ostream>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "script/outcome/library_facts.h"
#include "script/surroundings.h"
#include "sim/board/snapshot.h"
#include "sim/world.h"

namespace script {

class AccessLog;
class Interpreter;

// An expectation that was not met; the text says what was found.
struct Unmet {
  std::string found;
};

// A message that an expectation asks for; what it leaves open may be anything.
struct WantedMessage {
  std::uint32_t message = 0;
  std::optional<std::uint32_t> wparam = std::nullopt;  // that of a number: an address equals none
  std::optional<std::uint32_t> lparam = std::nullopt;
};

// Hears what the library does from its beginning to its end, and keeps what an expectation can ask
// for. The world must not be reset meanwhile.
class Session : public sim::TraceListener {
 public:
  Session(std::ostream& out, Surroundings& around, Interpreter* interpreter = nullptr);
  ~Session() override;
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  sim::World& World() const { return sim::TheWorld(); }
  std::ostream& Out() const { return out_; }
  Surroundings& Around() const { return around_; }
  // What runs the lines; a program that runs them itself has none, and no lines that need it.
  Interpreter& Runner() const;
  bool HasRunner() const { return interpreter_ != nullptr; }

  // An action begins: what is looked at from now on is its own.
  void BeginAction(std::string name);
  // The last action's name and result, none when its call has none.
  const std::string& ActionName() const { return action_; }
  std::optional<std::int64_t> returned;
  const AccessLog* accesses = nullptr;  // none where nobody keeps them
  LibraryFacts facts;                   // what all calls so far have shown
  std::vector<std::string>
      outcome;                     // the result in words, when there is more to say than its number
  std::vector<std::string> notes;  // what is said below it
  // The last action's result and notes, as they are told when it is over.
  std::vector<std::string> ResultInWords() const;
  // Hears of the messages that reach the host window.
  std::function<void(const sim::ReceivedMessage&)> on_received;

  // The registers at moments that have a name; "start" is when the last action began.
  std::map<std::string, sim::RegisterSnapshot, std::less<>> moments;

  // ---- What the last action did -------------------------------------------------------------

  std::size_t FirstEvent() const { return first_event_; }
  std::size_t FirstReceived() const { return first_received_; }
  std::uint64_t Cycles() const { return World().trace.Cycles() - first_cycle_; }
  // The caller's record as its call left it; null when the call had none.
  const sim::Bytes* Record() const { return record_ ? &*record_ : nullptr; }
  // The code of the binary command that it called, the last of several.
  std::optional<std::uint32_t> CommandCode() const { return command_; }
  // All its debug and kernel debug writes, in order; 16 MiB at most.
  const std::string& DebugText() const { return debug_text_; }
  // Whether it sent or posted such a message with success, or the host window handled one.
  bool HasMessage(const WantedMessage& wanted) const;
  // Its messages, each kind once, with how often it came.
  std::vector<std::string> MessagesInWords() const;

  // sim::TraceListener
  void OnEvent(const sim::Event& event, const sim::EventDetail* detail) override;
  // A message reached the host window. The windows tell the session of each, unless they told
  // somebody else when it was made, who hands them on.
  void OnReceived(const sim::ReceivedMessage& message);

 private:
  void CountMessage(const std::string& words);

  std::ostream& out_;
  Surroundings& around_;
  Interpreter* interpreter_;
  bool asks_windows_;
  std::string action_;
  std::size_t first_event_ = 0;
  std::size_t first_received_ = 0;
  std::uint64_t first_cycle_ = 0;

  std::optional<sim::Bytes> record_;
  std::optional<std::uint32_t> command_;
  std::string debug_text_;
  // Number, wParam where it is no address, and lParam of the messages that came.
  std::set<std::tuple<std::uint32_t, std::optional<std::uint32_t>, std::uint32_t>> messages_;
  std::vector<std::pair<std::string, std::uint64_t>> message_words_;
};

}  // namespace script
