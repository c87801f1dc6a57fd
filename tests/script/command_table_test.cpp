#include "script/command_table.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <regex>
#include <set>

#include "VexoCtrlSDK.h"
#include "sim/text.h"

namespace script {
namespace {

using testing::MatchesRegex;

// The public header's commands: VEXO_CMD_LIVE_SPLIT is live-split.
std::map<std::string, std::uint32_t> CommandsOfTheHeader() {
  std::ifstream file(VEXO_SOURCE_DIR "/include/VexoCtrlSDK.h");
  const std::regex define("#define VEXO_CMD_(\\w+) (0x[0-9A-F]+)u.*");
  std::map<std::string, std::uint32_t> commands;
  for (std::string line; std::getline(file, line);) {
    std::smatch match;
    if (!std::regex_match(line, match, define)) continue;
    std::string name = sim::ToLower(match[1]);
    std::replace(name.begin(), name.end(), '_', '-');
    commands[name] = static_cast<std::uint32_t>(std::stoul(match[2], nullptr, 16));
  }
  return commands;
}

TEST(CommandTable, HasEveryCommandOfThePublicHeaderByItsName) {
  std::map<std::string, std::uint32_t> commands;
  for (const CommandKind& command : Commands()) {
    commands[std::string(command.name)] = command.code;
  }
  EXPECT_EQ(commands.size(), 29u);
  EXPECT_EQ(commands, CommandsOfTheHeader());
}

TEST(CommandTable, FindsARowByNameAndByTheLowBitsOfACode) {
  EXPECT_EQ(FindCommand("live-split")->code, VEXO_CMD_LIVE_SPLIT);
  EXPECT_EQ(FindCommand(0xABCDF005u)->name, "live-split");
  EXPECT_EQ(FindCommand("live_split"), nullptr);
  EXPECT_EQ(FindCommand(0xF012u), nullptr);
}

// What the header says of each record's size.
TEST(CommandTable, KeepsFieldsWithinTheirRecords) {
  const std::map<std::string_view, std::size_t> sizes = {
      {"init", sizeof(VexoInitRecord)},
      {"read-reg", sizeof(VexoRegRecord)},
      {"write-reg", sizeof(VexoRegRecord)},
      {"live-split", sizeof(VexoSplitRecord)},
      {"play-split", sizeof(VexoSplitRecord)},
      {"motion-mask", sizeof(VexoMotionMaskRecord)},
      {"motion-mask-preview", sizeof(VexoMotionMaskRecord)},
      {"channel-masks", sizeof(VexoChannelMasksRecord)},
      {"live-mode", sizeof(VexoLiveModeRecord)},
      {"play-mode", sizeof(VexoPlayModeRecord)},
      {"blank-mask", sizeof(VexoMaskRecord)},
      {"bit0-mask", sizeof(VexoMaskRecord)},
      {"motion-setup", sizeof(VexoMotionSetupRecord)},
      {"motion-reg", sizeof(VexoMotionRegRecord)},
  };
  for (const CommandKind& command : Commands()) {
    const auto size = sizes.find(command.name);
    EXPECT_EQ(command.fields.empty(), size == sizes.end()) << command.name;
    std::size_t end = 0;
    for (const RecordField& field : command.fields) {
      EXPECT_GE(field.offset, end) << command.name << ' ' << field.name;
      end = field.offset + field.Bytes();
    }
    EXPECT_EQ(end, size == sizes.end() ? 0 : size->second) << command.name;
  }
}

TEST(CommandTable, NamesFieldsSoThatAByteIsNoField) {
  for (const CommandKind& command : Commands()) {
    std::set<std::string_view> names;
    for (const RecordField& field : command.fields) {
      EXPECT_THAT(std::string(field.name), MatchesRegex("[a-z][a-z0-9-]+")) << command.name;
      EXPECT_THAT(std::string(field.name), testing::Not(MatchesRegex("[a-f0-9][a-f0-9]")));
      EXPECT_TRUE(names.insert(field.name).second) << command.name << ' ' << field.name;
      EXPECT_EQ(field.kind == FieldKind::Choice, !field.values.empty()) << field.name;
      EXPECT_FALSE(field.help.empty()) << field.name;
    }
  }
}

}  // namespace
}  // namespace script
