#include "tools/vexosim/commands/bash_completion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/command_output.h"
#include "tests/support/temp_path.h"

namespace vexosim {
namespace {

using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::UnorderedElementsAre;

constexpr const char* kCommitted = VEXO_SOURCE_DIR "/docs/vexosim.bash";

TEST(BashCompletion, IsTheOneThatTheProgramMakes) {
  std::ifstream file(kCommitted);
  const std::string committed(std::istreambuf_iterator<char>(file), {});
  EXPECT_EQ(test::CommandOutput(VEXOSIM " completion bash"), committed)
      << "scripts/update_documents.sh makes it anew";
}

TEST(BashCompletion, KnowsNoOtherShell) { test::CommandOutput(VEXOSIM " completion fish 2>&1", 2); }

// A real bash in a folder with some files.
class BashCompletionOfWords : public testing::Test {
 protected:
  void SetUp() override {
    std::filesystem::create_directories(folder_ + "/scripts");
    for (const char* name : {"a b.vexo", "live.vexo", "live.VEXO", "Vexo.DLL", "x.dll", "p.png"}) {
      std::ofstream(folder_ + '/' + name) << '\n';
    }
  }
  void TearDown() override { std::filesystem::remove_all(folder_); }

  // The words that Tab offers for the last of these, as bash splits the line.
  std::vector<std::string> Offered(const std::string& words, const std::string& made = "") const {
    const std::string script = made.empty() ? kCommitted : made;
    std::istringstream out(test::CommandOutput(
        "cd '" + folder_ + "' && bash -c 'set -u; source " + script + "; COMP_WORDS=(" + words +
        "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _vexosim; "
        "((${#COMPREPLY[@]} == 0)) || printf \"%s\\n\" \"${COMPREPLY[@]}\"'"));
    std::vector<std::string> offered;
    for (std::string line; std::getline(out, line);) offered.push_back(line);
    return offered;
  }

  const std::string folder_ = test::TempPath("completion");
};

TEST_F(BashCompletionOfWords, OffersSubcommands) {
  EXPECT_THAT(Offered("vexosim sh"), UnorderedElementsAre("shell"));
  EXPECT_THAT(Offered("vexosim \"\""), IsSupersetOf({"run", "demo", "completion", "--help"}));
}

TEST_F(BashCompletionOfWords, OffersTheOptionsOfTheSubcommand) {
  EXPECT_THAT(Offered("vexosim shell --p"), UnorderedElementsAre("--pal"));
  EXPECT_THAT(Offered("vexosim run x.vexo --reg"), UnorderedElementsAre("--registers"));
  EXPECT_THAT(Offered("vexosim fly --"), IsEmpty());
}

TEST_F(BashCompletionOfWords, OffersFilesByTheirEnding) {
  EXPECT_THAT(Offered("vexosim run \"\""),
              UnorderedElementsAre("a b.vexo", "live.vexo", "live.VEXO", "scripts"));
  EXPECT_THAT(Offered("vexosim run live.v"), UnorderedElementsAre("live.vexo"));
  EXPECT_THAT(Offered("vexosim run --image \"\""),
              UnorderedElementsAre("scripts", "Vexo.DLL", "x.dll"));
  EXPECT_THAT(Offered("vexosim run --picture \"\""), UnorderedElementsAre("p.png", "scripts"));
  EXPECT_THAT(Offered("vexosim run --trace li"), UnorderedElementsAre("live.vexo", "live.VEXO"));
}

TEST_F(BashCompletionOfWords, CountsArgumentsWithoutOptionsAndTheirValues) {
  EXPECT_THAT(Offered("vexosim compare \"\""),
              UnorderedElementsAre("scripts", "Vexo.DLL", "x.dll"));
  EXPECT_THAT(Offered("vexosim compare --seed 7 --image-base = 0 V"),
              UnorderedElementsAre("Vexo.DLL"));
  EXPECT_THAT(Offered("vexosim compare --relocations x.dll l"),
              UnorderedElementsAre("live.vexo", "live.VEXO"));
  EXPECT_THAT(Offered("vexosim compare x.dll live.vexo a"), UnorderedElementsAre("a b.vexo"));
  EXPECT_THAT(Offered("vexosim run live.vexo \"\""), IsEmpty());
}

TEST_F(BashCompletionOfWords, OffersWhatAnOptionTakes) {
  EXPECT_THAT(Offered("vexosim demo --color \"\""),
              UnorderedElementsAre("auto", "always", "never"));
  EXPECT_THAT(Offered("vexosim run --colour al"), UnorderedElementsAre("always"));
  EXPECT_THAT(Offered("vexosim run --color ="), UnorderedElementsAre("auto", "always", "never"));
  EXPECT_THAT(Offered("vexosim run --color = n"), UnorderedElementsAre("never"));
  EXPECT_THAT(Offered("vexosim run --seed \"\""), IsEmpty());
}

TEST_F(BashCompletionOfWords, PicksUpWhatTheCommandLineHas) {
  CLI::App app("Another", "vexosim");
  CLI::App* const play = app.add_subcommand("play", "Plays");
  std::string taken;
  play->add_option("--speed", taken, "How fast")->type_name("slow|fast");
  play->add_option("TRACE", taken, "A trace")->type_name("");
  std::ofstream(folder_ + "/made.bash") << BashCompletion(app);
  EXPECT_THAT(Offered("vexosim \"\"", "made.bash"), IsSupersetOf({"play"}));
  EXPECT_THAT(Offered("vexosim play --speed s", "made.bash"), UnorderedElementsAre("slow"));
  std::ofstream(folder_ + "/scripts.jsonl") << '\n';
  EXPECT_THAT(Offered("vexosim play s", "made.bash"),
              UnorderedElementsAre("scripts", "scripts.jsonl"));
}

}  // namespace
}  // namespace vexosim
