#include "desk/port/conversation.h"

#include <algorithm>
#include <array>
#include <utility>

#include "files/printable.h"

namespace desk {
namespace {

constexpr std::array<std::pair<std::string_view, Wants>, 3> kGreetings = {{
    {"vexo 1", Wants::Nothing},
    {"vexo 1 events", Wants::Events},
    {"vexo 1 events cycles", Wants::AllEvents},
}};

// Tabs, and what a terminal shows; in valid UTF-8.
bool IsText(std::string_view line) { return files::Printable(line, 4 * line.size()) == line; }

}  // namespace

void Conversation::Take(std::string_view bytes) {
  if (over_) return;
  bytes_.erase(0, std::exchange(begin_, 0));
  bytes_ += bytes;
}

std::optional<Conversation::Step> Conversation::Next() {
  if (over_) return std::nullopt;
  const std::size_t end = bytes_.find('\n', begin_);
  const std::size_t length = std::min(end, bytes_.size()) - begin_;
  if (length > kLongestLine + 1) {  // with a carriage return
    return End("a line has " + std::to_string(kLongestLine) + " bytes at most");
  }
  if (end == std::string::npos) return std::nullopt;
  std::string_view line = std::string_view(bytes_).substr(begin_, length);
  begin_ = end + 1;
  if (line.ends_with('\r')) line.remove_suffix(1);
  if (line.size() > kLongestLine) {
    return End("a line has " + std::to_string(kLongestLine) + " bytes at most");
  }
  if (!greeted_) return Greet(line);
  Step step{.kind = Step::Kind::Line, .number = ++lines_, .line = std::string(line)};
  if (!IsText(line)) {
    step.kind = Step::Kind::NoLine;
    step.why = "a line is text in UTF-8, without control characters";
  }
  return step;
}

Conversation::Step Conversation::End(std::string why) {
  over_ = true;
  bytes_.clear();
  return {.kind = Step::Kind::Over, .why = std::move(why)};
}

// Nothing that a browser can be made to send begins like this.
Conversation::Step Conversation::Greet(std::string_view line) {
  for (const auto& [greeting, wants] : kGreetings) {
    if (line != greeting) continue;
    greeted_ = true;
    return {.kind = Step::Kind::Greeting, .wants = wants};
  }
  return End("the first line must be 'vexo 1', 'vexo 1 events' or 'vexo 1 events cycles'");
}

}  // namespace desk
