#include "script/action_printer.h"

#include <algorithm>
#include <utility>

#include "files/printable.h"
#include "script/message_words.h"
#include "sim/text.h"

namespace script {
namespace {

constexpr std::string_view kIndent = "      ";
constexpr std::size_t kMostFolded = 1000;

}  // namespace

std::string MessageInWords(const sim::World& world, const sim::MessageEvent& event) {
  std::string text = MessageInWords(event, kChannelsPerChip * world.board.FittedCount());
  if (event.post) text += event.ok ? " (posted)" : " (not posted)";
  if (!event.post && !event.ok) text += " (not answered)";
  return text;
}

std::string MessageInWords(const sim::World& world, const sim::ReceivedMessage& message) {
  return MessageInWords(message.message, message.wparam, message.record,
                        kChannelsPerChip * world.board.FittedCount()) +
         " (taken from the queue)";
}

std::vector<std::string> DebugLines::Add(const std::string& text) {
  pending_ += text;
  const std::size_t end = pending_.rfind('\n');
  if (end == std::string::npos) return {};
  std::vector<std::string> lines = sim::TextLines(pending_.substr(0, end));
  pending_.erase(0, end + 1);
  return lines;
}

std::vector<std::string> DebugLines::Flush() { return sim::TextLines(std::exchange(pending_, {})); }

ActionPrinter::ActionPrinter(sim::World& world, std::ostream& out) : world_(world), out_(out) {
  world_.trace.AddListener(*this, sim::Trace::Hears::AllButCycles);
}

ActionPrinter::~ActionPrinter() { world_.trace.RemoveListener(*this); }

void ActionPrinter::Begin() {
  begin_ = world_.kernel.Now();
  older_ = queued_;
}

void ActionPrinter::End() {
  Flush();
  for (const Folded& folded : std::exchange(folded_, {})) {
    if (folded.count > 1) {
      Put(folded.line.substr(0, folded.line.find_last_not_of(' ') + 1) + ", " +
          std::to_string(folded.count) + " times, the last at " + std::to_string(folded.last) +
          " ms");
    } else {
      const bool later = folded.last != begin_ && folded.line.front() == '>';
      Put(folded.line + (later ? ", at " + std::to_string(folded.last) + " ms" : ""));
    }
  }
}

void ActionPrinter::OnEvent(const sim::Event&, const sim::EventDetail* detail) {
  if (const auto* text = std::get_if<sim::DebugEvent>(detail)) {
    Print(text->kernel ? '!' : '|', (text->kernel ? kernel_ : debug_).Add(text->text));
  } else if (const auto* message = std::get_if<sim::MessageEvent>(detail)) {
    if (message->post && message->ok) ++queued_;
    Message(MessageInWords(world_, *message));
  }
}

void ActionPrinter::OnReceived(const sim::ReceivedMessage& message) {
  if (!message.posted) return;  // its send is an event of its own
  if (queued_ != 0) --queued_;
  if (older_ == 0) return;  // told when it was posted
  --older_;
  Message(MessageInWords(world_, message));
}

void ActionPrinter::Flush() {
  Print('|', debug_.Flush());
  Print('!', kernel_.Flush());
}

void ActionPrinter::Print(char mark, const std::vector<std::string>& lines) {
  for (const std::string& line : lines) {
    // A text command's bytes may come back in what the library says of it.
    Line(std::string(1, mark) + ' ' + files::Printable(line, 4 * line.size()));
  }
}

void ActionPrinter::Message(const std::string& words) {
  Flush();
  const std::uint32_t now = world_.kernel.Now();
  const bool later = now != begin_ && !fold;
  Line("> " + words + (later ? ", at " + std::to_string(now) + " ms" : ""));
}

void ActionPrinter::Line(const std::string& line) {
  if (silent) return;
  if (fold && folded_.size() < kMostFolded) {
    const auto found = std::find_if(folded_.begin(), folded_.end(),
                                    [&line](const Folded& folded) { return folded.line == line; });
    if (found == folded_.end()) {
      folded_.push_back({line, 1, world_.kernel.Now()});
    } else {
      ++found->count;
      found->last = world_.kernel.Now();
    }
    return;
  }
  Put(line);
}

void ActionPrinter::Put(const std::string& line) {
  if (before_output) before_output(line);
  out_ << kIndent << line << '\n';
}

}  // namespace script
