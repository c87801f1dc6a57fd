#include "tools/vexosim/commands/man_page.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

#include "tests/support/command_output.h"

namespace vexosim {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

constexpr const char* kCommitted = VEXO_SOURCE_DIR "/docs/vexosim.1";

TEST(ManPage, IsTheOneThatTheProgramMakes) {
  std::ifstream file(kCommitted);
  const std::string committed(std::istreambuf_iterator<char>(file), {});
  EXPECT_EQ(test::CommandOutput(VEXOSIM " manual --man"), committed)
      << "scripts/update_documents.sh makes it anew";
}

TEST(ManPage, IsCleanTroff) {
  EXPECT_EQ(
      test::CommandOutput(std::string("groff -man -ww -Tutf8 ") + kCommitted + " 2>&1 >/dev/null"),
      "");
}

TEST(ManPage, SaysWhatTheHelpSays) {
  const std::string page =
      test::CommandOutput(std::string("groff -man -Tascii -P-cbou ") + kCommitted);
  EXPECT_THAT(page, AllOf(HasSubstr("vexosim - runs VexoCtrlSDK on a simulated board"),
                          HasSubstr("vexosim run [OPTIONS] SCRIPT\n"),
                          HasSubstr("vexosim compare [OPTIONS] IMAGE SCRIPT ...\n"),
                          HasSubstr("--color, --colour auto|always|never\n"),
                          HasSubstr("camera CH ntsc|pal|off   "), HasSubstr("EXIT STATUS\n"),
                          HasSubstr("'lsplit 6 0\\nprint\\n'"), HasSubstr("~/.vexosim_history")));
}

TEST(ManPage, KeepsTextsAsTheyStand) {
  CLI::App app("Does things: all", "tool");
  app.footer("Notes: a\n.b 'c' \\d\n\nOther");
  app.add_subcommand("go", "Goes -- `there'")->add_option("WHERE", "A ~place^")->required();
  EXPECT_THAT(
      ManPage(app),
      AllOf(HasSubstr("tool \\- does things\n"), HasSubstr("\\fBtool go\\fR \\fIWHERE\\fR\n"),
            HasSubstr("Goes \\-\\- \\(gathere\\(aq.\n"), HasSubstr("\nA \\(tiplace\\(ha\n"),
            HasSubstr(".SH NOTES\n.nf\na\n\\&.b \\(aqc\\(aq \\ed\n.fi\n.SH OTHER\n"),
            Not(HasSubstr("OPTIONS"))));
}

}  // namespace
}  // namespace vexosim
