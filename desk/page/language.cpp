#include "desk/page/language.h"

#include <array>
#include <bit>
#include <limits>
#include <nlohmann/json.hpp>

#include "chip/registers.h"
#include "script/command_table.h"
#include "script/line.h"
#include "script/message_words.h"
#include "script/register_words.h"
#include "sim/board/drivers.h"
#include "sim/faults.h"

namespace desk {
namespace {

using Json = nlohmann::ordered_json;

// The bits lie between the two; which of them are the field's the mask says.
Json FieldOf(const Field& field) {
  return {{"name", field.name},
          {"bits", {std::bit_width(field.bits) - 1, std::countr_zero(field.bits)}},
          {"mask", field.bits},
          {"help", field.meaning}};
}

Json RegisterOf(std::uint8_t page, std::uint8_t number) {
  const Register* const row = FindRegister(page, number);
  if (row == nullptr) return nullptr;
  Json json = {{"name", row->name}};
  if (row->count > 1) json["position"] = (number - row->first) / row->stride;
  json["fields"] = Json::array();
  for (const Field& field : script::FieldsOf(*row)) json["fields"].push_back(FieldOf(field));
  return json;
}

Json Pages() {
  Json pages = Json::array();
  for (std::uint8_t page = 0; page < kPageCount; ++page) {
    Json registers = Json::array();
    for (unsigned number = 0; number < kRegistersPerPage; ++number) {
      registers.push_back(RegisterOf(page, static_cast<std::uint8_t>(number)));
    }
    pages.push_back(std::move(registers));
  }
  return pages;
}

Json RecordFieldOf(const script::RecordField& field) {
  constexpr std::array kKinds = {"number", "byte", "choice", "mask", "channels", "bytes"};
  constexpr std::array kFlows = {"in", "out", "inout"};
  Json json = {{"name", field.name},
               {"kind", kKinds[static_cast<std::size_t>(field.kind)]},
               {"flow", kFlows[static_cast<std::size_t>(field.flow)]},
               {"offset", field.offset},
               {"width", field.width},
               {"count", field.count}};
  if (field.most != std::numeric_limits<std::uint32_t>::max()) json["most"] = field.most;
  if (!field.beyond.empty()) json["beyond"] = field.beyond;
  json["help"] = field.help;
  json["values"] = Json::array();
  for (const script::NamedValue& value : field.values) {
    json["values"].push_back({{"name", value.name}, {"value", value.value}});
  }
  return json;
}

Json Commands() {
  Json commands = Json::array();
  for (const script::CommandKind& command : script::Commands()) {
    Json fields = Json::array();
    for (const script::RecordField& field : command.fields) fields.push_back(RecordFieldOf(field));
    commands.push_back({{"name", command.name},
                        {"code", command.code},
                        {"help", command.help},
                        {"fields", std::move(fields)}});
  }
  return commands;
}

Json Messages() {
  Json messages = Json::array();
  for (const std::string_view name : script::MessageNames()) {
    messages.push_back({{"code", script::FindMessage(name).value()}, {"name", name}});
  }
  return messages;
}

Json Faults() {
  Json faults = Json::array();
  for (const sim::FaultWords& fault : sim::kFaults) {
    faults.push_back({{"name", fault.word}, {"help", fault.help}});
  }
  return faults;
}

Json Lines() {
  constexpr std::array kGroups = {"board", "action", "check", "output", "switch", "tool"};
  Json lines = Json::array();
  for (const script::LineKind* const line : script::AllLines()) {
    lines.push_back({{"words", line->words},
                     {"arguments", line->arguments},
                     {"help", line->help},
                     {"group", kGroups[static_cast<std::size_t>(line->group)]}});
  }
  return lines;
}

}  // namespace

std::string LanguageJson(std::string_view title, bool bench) {
  const Json json = {{"board", bench ? "bench" : "program"},
                     {"title", title},
                     {"pages", Pages()},
                     {"commands", Commands()},
                     {"messages", Messages()},
                     {"drivers", sim::kDriverNames},
                     {"faults", Faults()},
                     {"lines", Lines()}};
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace desk
