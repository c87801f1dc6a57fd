// What the page is told of registers, commands and lines: all of it, as the tables have it.
#include "desk/page/language.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "chip/registers.h"
#include "script/command_table.h"
#include "script/line.h"
#include "script/message_words.h"

namespace desk {
namespace {

using Json = nlohmann::json;

class Language : public testing::Test {
 protected:
  const Json json = Json::parse(LanguageJson("recorder", false));
};

TEST_F(Language, SaysWhoseTheBoardIs) {
  EXPECT_EQ(json["board"], "program");
  EXPECT_EQ(json["title"], "recorder");
  EXPECT_EQ(Json::parse(LanguageJson("", true))["board"], "bench");
}

TEST_F(Language, NamesEachRegisterThatHasAName) {
  ASSERT_EQ(json["pages"].size(), 3u);
  for (std::uint8_t page = 0; page < kPageCount; ++page) {
    ASSERT_EQ(json["pages"][page].size(), 256u);
    for (unsigned number = 0; number < kRegistersPerPage; ++number) {
      const char* const name = RegisterNameOf(page, static_cast<std::uint8_t>(number));
      const Json& found = json["pages"][page][number];
      EXPECT_EQ(found.is_null() ? Json(nullptr) : found["name"],
                name == nullptr ? Json(nullptr) : Json(name))
          << +page << ' ' << number;
    }
  }
}

TEST_F(Language, HasARegistersPositionAndFields) {
  EXPECT_EQ(json["pages"][1][0x18], Json::parse(R"({"name": "channel display", "position": 1,
    "fields": [
      {"name": "enable", "bits": [7, 7], "mask": 128, "help": "shown"},
      {"name": "front", "bits": [6, 6], "mask": 64, "help": "above channels without it"},
      {"name": "hold", "bits": [4, 4], "mask": 16, "help": "held while the layout changes"},
      {"name": "decoded", "bits": [2, 2], "mask": 4, "help": "the decoded picture of its path"},
      {"name": "position", "bits": [1, 0], "mask": 3, "help": "whose scaler"}]})"));
  EXPECT_FALSE(json["pages"][1][0x00].contains("position"));
  EXPECT_EQ(json["pages"][1][0x0C]["fields"][2]["mask"], 0x3D);  // its bits do not lie together
  EXPECT_EQ(json["pages"][1][0x0C]["fields"][2]["bits"], Json({5, 0}));
  EXPECT_EQ(json["pages"][1][0x0D]["fields"], Json::array());
}

TEST_F(Language, HasEveryCommandWithItsRecord) {
  ASSERT_EQ(json["commands"].size(), script::Commands().size());
  for (std::size_t i = 0; i < json["commands"].size(); ++i) {
    const script::CommandKind& command = script::Commands()[i];
    EXPECT_EQ(json["commands"][i]["name"], command.name);
    EXPECT_EQ(json["commands"][i]["code"], command.code);
    EXPECT_EQ(json["commands"][i]["help"], command.help);
    EXPECT_EQ(json["commands"][i]["fields"].size(), command.fields.size());
  }
  const auto field = [&](const char* command, std::size_t index) {
    for (const Json& each : json["commands"]) {
      if (each["name"] == command) return each["fields"][index];
    }
    return Json();
  };
  EXPECT_EQ(field("play-split", 0), Json::parse(R"({"name": "mode", "kind": "choice", "flow": "in",
    "offset": 4, "width": 1, "count": 1, "help": "how many pictures; play-mode lays out the others",
    "values": [{"name": "full", "value": 0}, {"name": "4", "value": 1}, {"name": "9", "value": 4},
               {"name": "16", "value": 6}]})"));
  EXPECT_EQ(field("motion-mask", 1)["most"], 3);
  EXPECT_EQ(field("motion-mask", 1)["beyond"], "the chip keeps its level");
  EXPECT_EQ(field("motion-mask", 2)["flow"], "inout");
}

TEST_F(Language, HasMessagesDriversFaultsAndLines) {
  ASSERT_EQ(json["messages"].size(), script::MessageNames().size());
  EXPECT_EQ(json["messages"][0], Json({{"code", 0x2401}, {"name", "status"}}));
  EXPECT_EQ(json["drivers"], Json({"CAM1:", "VBE1:"}));
  EXPECT_EQ(json["faults"][0], Json({{"name", "mutex"}, {"help", "the mutex cannot be created"}}));
  ASSERT_EQ(json["lines"].size(), script::AllLines().size());
  for (std::size_t i = 0; i < json["lines"].size(); ++i) {
    EXPECT_EQ(json["lines"][i]["words"], script::AllLines()[i]->words);
    EXPECT_EQ(json["lines"][i]["arguments"], script::AllLines()[i]->arguments);
    EXPECT_EQ(json["lines"][i]["help"], script::AllLines()[i]->help);
  }
  EXPECT_EQ(json["lines"][0]["group"], "board");
}

}  // namespace
}  // namespace desk
