#include "desk/port/json_lines.h"

#include <array>
#include <nlohmann/json.hpp>

#include "files/printable.h"

namespace desk {
namespace {

using Json = nlohmann::ordered_json;

std::string Line(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace) + '\n';
}

}  // namespace

std::string GreetingLine(Wants wants, std::uint64_t next) {
  constexpr std::array kWords = {"none", "all but cycles", "all"};
  return Line({{"vexo", 1}, {"events", kWords[static_cast<std::size_t>(wants)]}, {"next", next}});
}

std::string AnswerLine(std::uint64_t number, std::string_view line, const Answer& answer) {
  constexpr std::array kWords = {"done", "unmet", "refused"};
  return Line({{"answer", number},
               {"line", files::Printable(line, line.size() * 4)},
               {"result", kWords[static_cast<std::size_t>(answer.result)]},
               {"text", answer.text}});
}

std::string MissedLine(std::uint64_t count) { return Line({{"missed", count}}); }

std::string ErrorLine(std::string_view what) { return Line({{"error", what}}); }

std::string ToldRest(Port::Tells what, std::uint32_t t, std::uint64_t cycle,
                     std::string_view text) {
  constexpr std::array kWords = {"stopped", "continued", "rewound"};
  Json json = {{"cycle", cycle}, {"t", t}, {"ev", kWords[static_cast<std::size_t>(what)]}};
  if (!text.empty()) json["text"] = text;
  return Line(json).substr(1);
}

std::string EventLines::Rest(const sim::Event& event, const sim::EventDetail* detail,
                             std::uint64_t cycle) {
  out_.str({});
  writer_.OnEvent(event, detail);
  return "\"cycle\":" + std::to_string(cycle) + ',' + out_.str().substr(1);
}

std::string EventLines::Line(std::uint64_t number, std::string_view rest) {
  return "{\"event\":" + std::to_string(number) + ',' + std::string(rest);
}

}  // namespace desk
