#include "script/help/command_help.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

#include "script/command_words.h"
#include "script/help/help.h"
#include "script/line.h"
#include "script/message_words.h"
#include "sim/text.h"

namespace script {
namespace {

using testing::HasSubstr;

TEST(CommandHelp, ListsFieldsAndResultsOfACommand) {
  EXPECT_EQ(HelpOnCommand("live-split"),
            "command live-split [FIELD VALUE...]\n"
            "    0xF005: lays out live pictures\n"
            "  mode      full, 4, 6, 8, 9, 13 or 16  how many pictures\n"
            "  channels  16 channels (0-3,7)         channel of each window, 0-15; others show "
            "nothing\n"
            "  = -1  mode: the board lacks it\n"
            "  = -1  mode: playback is shown\n");
  EXPECT_EQ(HelpOnCommand("motion-clear"),
            "command motion-clear\n    0xF00F: hides the motion cells\n");
  EXPECT_THAT(HelpOnCommand("init"), HasSubstr("chip-count      0-4294967295"));
  EXPECT_THAT(HelpOnCommand("init"), HasSubstr("chips found, four channels each (filled in)\n"));
  EXPECT_EQ(HelpOnCommand("nothing"), "");
}

TEST(CommandHelp, IsFoundByHelp) {
  EXPECT_EQ(HelpOnWord("live-split"), HelpOnCommand("live-split"));
  EXPECT_EQ(HelpOnWord("commands"), HelpOnCommands());
  EXPECT_EQ(HelpOnWord("messages"), HelpOnMessages());
  EXPECT_THAT(HelpOnWord("command"), HasSubstr(HelpOnCommands()));
  EXPECT_THAT(HelpSuggestion("live-splt"), HasSubstr("did you mean live-split?"));
  EXPECT_THAT(HelpOnMessages(), HasSubstr("  0x2403  video-info\n"));
  EXPECT_THAT(HelpOnCommands(),
              HasSubstr("  0xFF0B  dump-slave3-p2       prints page 2 of slave3"));
}

std::string Manual() {
  std::ifstream file(VEXO_SOURCE_DIR "/docs/script-language.md");
  return {std::istreambuf_iterator<char>(file), {}};
}

TEST(CommandHelp, IsWhatTheManualSays) {
  std::string table = "| Command | Code | Fields |\n|---|---|---|\n";
  for (const CommandKind& command : Commands()) {
    if (command.name.starts_with("dump-")) continue;  // a line of their own
    table += "| `" + std::string(command.name) + "` | " + sim::Hex(command.code, 4) + " | ";
    std::string fields;
    for (const RecordField& field : command.fields) {
      if (!fields.empty()) fields += "<br>";
      fields += '`' + std::string(field.name) + "` " + ValuesInWords(field) + ": " +
                std::string(field.help) + (field.flow == Flow::Out ? " (filled in)" : "");
    }
    table += fields + " |\n";
  }
  EXPECT_NE(Manual().find(table + '\n'), std::string::npos)
      << "docs/script-language.md lacks this table:\n"
      << table;
}

TEST(MessageHelp, IsWhatTheManualSays) {
  std::string list;
  for (const std::string_view name : MessageNames()) {
    list +=
        "| `" + std::string(name) + "` | " + sim::Hex(FindMessage(name).value_or(0), 4) + " |\n";
  }
  const std::string table = "| Message | Code |\n|---|---|\n" + list + '\n';
  EXPECT_NE(Manual().find(table), std::string::npos) << table;
}

TEST(ScriptHelp, HasALineInTheManualForEveryKind) {
  const std::string manual = Manual();
  for (const LineKind* kind : AllLines()) {
    const std::string begin = '`' + std::string(kind->words);
    const bool alone = manual.find(begin + '`') != std::string::npos;
    const bool with_arguments = manual.find(begin + ' ') != std::string::npos;
    EXPECT_TRUE(kind->arguments.empty() || kind->arguments.starts_with('[')
                    ? alone || with_arguments
                    : with_arguments)
        << "docs/script-language.md lacks " << kind->Usage();
  }
}

}  // namespace
}  // namespace script
