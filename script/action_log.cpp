#include "script/action_log.h"

#include "script/message_words.h"
#include "sim/text.h"

namespace script {
namespace {

constexpr std::string_view kIndent = "      ";

// Joins writes into lines: the library writes a prefix and its message apart, and a register dump
// byte by byte. What a write leaves unfinished stands before the next one; the blank that ends a
// dump is shown only when something follows it.
class DebugLines {
 public:
  DebugLines(std::ostream& out, char mark) : out_(out), mark_(mark) {}

  void Add(const std::string& text) {
    pending_ += text;
    const std::size_t end = pending_.rfind('\n');
    if (end == std::string::npos) return;
    Print(pending_.substr(0, end));
    pending_.erase(0, end + 1);
  }
  void Flush() {
    Print(pending_);
    pending_.clear();
  }

 private:
  void Print(const std::string& text) {
    for (const std::string& line : sim::TextLines(text))
      out_ << kIndent << mark_ << ' ' << line << '\n';
  }

  std::ostream& out_;
  char mark_;
  std::string pending_;
};

std::string InWords(const sim::World& world, const sim::MessageEvent& event) {
  std::string text = MessageInWords(event, kChannelsPerChip * world.board.FittedCount());
  if (event.post) text += event.ok ? " (posted)" : " (not posted)";
  if (!event.post && !event.ok) text += " (not answered)";
  return text;
}

std::string InWords(const sim::World& world, const sim::ReceivedMessage& message) {
  return MessageInWords(message.message, message.wparam, message.record,
                        kChannelsPerChip * world.board.FittedCount()) +
         " (taken from the queue)";
}

}  // namespace

void PrintEvents(std::ostream& out, const sim::World& world, std::size_t first_event,
                 std::size_t first_received) {
  DebugLines debug(out, '|');
  DebugLines kernel(out, '!');
  const auto flush = [&] {
    debug.Flush();
    kernel.Flush();
  };
  std::size_t next_received = first_received;
  const auto print_received = [&](std::uint32_t until) {
    for (; next_received < world.windows.received.size(); ++next_received) {
      const sim::ReceivedMessage& message = world.windows.received[next_received];
      if (message.t > until) break;
      if (!message.posted) continue;  // its send is an event of its own
      flush();
      out << kIndent << "> " << InWords(world, message) << '\n';
    }
  };

  const sim::Trace& trace = world.trace;
  for (std::size_t i = first_event; i < trace.Mark(); ++i) {
    const sim::Event& event = trace.Events()[i];
    print_received(event.t);
    if (const auto* text = trace.As<sim::DebugEvent>(event)) {
      (text->kernel ? kernel : debug).Add(text->text);
    } else if (const auto* message = trace.As<sim::MessageEvent>(event)) {
      flush();
      out << kIndent << "> " << InWords(world, *message) << '\n';
    }
  }
  flush();
  print_received(world.kernel.Now());
}

std::vector<std::string> MessagesInWords(const Session& session) {
  const sim::World& world = session.World();
  std::vector<std::string> messages;
  for (std::size_t i = session.FirstEvent(); i < world.trace.Mark(); ++i) {
    const auto* event = world.trace.As<sim::MessageEvent>(world.trace.Events()[i]);
    if (event != nullptr) messages.push_back(InWords(world, *event));
  }
  const auto& received = world.windows.received;
  for (std::size_t i = session.FirstReceived(); i < received.size(); ++i) {
    if (received[i].posted) messages.push_back(InWords(world, received[i]));
  }
  return messages;
}

}  // namespace script
