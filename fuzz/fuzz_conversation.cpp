// Any bytes as what a peer of the control port sends. The first byte says how many bytes come at a
// time; what they mean must not depend on it.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "desk/port/conversation.h"
#include "desk/port/json_lines.h"

namespace {

using desk::Conversation;
using Step = Conversation::Step;
using Kind = Step::Kind;

void Require(bool condition) {
  if (!condition) std::abort();
}

// A step, so that it can be compared, with its beginning and its end checked on the way.
std::vector<std::string> StepsOf(std::string_view bytes, std::size_t at_a_time) {
  Conversation conversation;
  std::vector<std::string> steps;
  std::uint64_t lines = 0;
  bool over = false;
  while (!bytes.empty()) {
    const std::string_view part = bytes.substr(0, at_a_time);
    conversation.Take(part);
    bytes.remove_prefix(part.size());
    while (const std::optional<Step> step = conversation.Next()) {
      Require(!over);
      over = step->kind == Kind::Over;
      Require(over || (step->kind == Kind::Greeting) == steps.empty());
      Require(over == !step->why.empty() || step->kind == Kind::NoLine);
      Require(step->line.size() <= Conversation::kLongestLine);
      Require(step->line.find('\n') == std::string::npos);
      if (step->number != 0) Require(step->number == ++lines);
      Require(conversation.Greeted() == !over);
      const std::string said = desk::AnswerLine(step->number, step->line, {});
      Require(std::count(said.begin(), said.end(), '\n') == 1);
      steps.push_back(std::to_string(static_cast<int>(step->kind)) + step->why + '\n' + said);
    }
  }
  return steps;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
  Require(StepsOf(bytes, data[0] + std::size_t{1}) == StepsOf(bytes, size));
  return 0;
}
