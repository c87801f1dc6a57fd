#include "setup/host_version.h"

#include "report/diagnostics.h"
#include "setup/initialization.h"
#include "tests/model/board.h"
#include "tests/setup/setup_test.h"

namespace test {
namespace {

constexpr const char* kFirst = "\\Windows\\Main.exe";
constexpr const char* kSecond = "\\NAND Flash\\MDVR\\Main.exe";
using State = sim::VersionFile::State;

class HostVersion : public SetupTest {
 protected:
  void SetUp() override {
    AttachAndBind();
    world().files.Remove(kFirst);
    world().files.asked.clear();
    Mark();
  }
  void Install(const char* path, State state, std::array<std::uint16_t, 4> version) {
    world().files.Set(path, {state, version});
  }
  void ExpectPrints(const std::vector<std::string>& texts) {
    std::vector<std::string> expected;
    expected.reserve(texts.size());
    for (const std::string& text : texts) expected.push_back(Levelled(text));
    EXPECT_EQ(Prints(), expected);
  }
  void ExpectAsked(const std::vector<std::string>& paths) {
    EXPECT_EQ(world().files.asked, paths);
    EXPECT_EQ(world().allocations, 0u);  // nothing is left allocated
  }
};

TEST_F(HostVersion, IsTheSecondPartOfTheFileVersion) {
  Install(kFirst, State::Present, {1, 2, 3, 4});
  EXPECT_EQ(TW_GetHostAppVersion(), 2);
  ExpectPrints({"APP Ver : Ver 1. 2. 3. 4\r\n"});
  ExpectAsked({kFirst});
}

TEST_F(HostVersion, MayBeAny16BitNumber) {
  Install(kFirst, State::Present, {0xFFFF, 0xABCD, 0x8000, 65535});
  EXPECT_EQ(TW_GetHostAppVersion(), 0xABCD);
  ExpectPrints({"APP Ver : Ver 65535. 43981. 32768. 65535\r\n"});
}

TEST_F(HostVersion, OfTheSecondPathIsAskedOnlyWhenTheFirstHasNoResource) {
  Install(kSecond, State::Present, {9, 8, 7, 6});
  EXPECT_EQ(TW_GetHostAppVersion(), 8);
  ExpectPrints({"APP Ver : Ver 9. 8. 7. 6\r\n"});
  ExpectAsked({kFirst, kSecond});
}

TEST_F(HostVersion, OfTheFirstPathWins) {
  Install(kFirst, State::Present, {1, 1, 0, 0});
  Install(kSecond, State::Present, {2, 2, 0, 0});
  EXPECT_EQ(TW_GetHostAppVersion(), 1);
  ExpectAsked({kFirst});
}

TEST_F(HostVersion, Is255WhenNeitherPathHasAResource) {
  EXPECT_EQ(TW_GetHostAppVersion(), 255);
  ExpectPrints({"ERROR|| Ver Unknown 3\r\n", "APP Ver : Ver Unknown 3\r\n"});
  ExpectAsked({kFirst, kSecond});
}

TEST_F(HostVersion, Is255WhenTheResourceCannotBeLoadedAndTheSecondPathIsNotAsked) {
  Install(kFirst, State::Unreadable, {1, 5, 0, 0});
  Install(kSecond, State::Present, {1, 5, 0, 0});
  EXPECT_EQ(TW_GetHostAppVersion(), 255);
  ExpectPrints({"ERROR|| Ver Unknown 2 \r\n", "APP Ver : Ver Unknown 2 \r\n"});
  ExpectAsked({kFirst});
}

TEST_F(HostVersion, Is255WhenThereIsNoRootBlock) {
  Install(kFirst, State::NoRoot, {1, 5, 0, 0});
  Install(kSecond, State::Present, {1, 5, 0, 0});
  EXPECT_EQ(TW_GetHostAppVersion(), 255);
  ExpectPrints({"ERROR|| Ver Unknown 1 \r\n", "APP Ver : Ver Unknown 1 \r\n"});
  ExpectAsked({kFirst});
}

TEST_F(HostVersion, OfTheSecondPathFailsInTheSameWays) {
  Install(kSecond, State::Unreadable, {1, 5, 0, 0});
  EXPECT_EQ(TW_GetHostAppVersion(), 255);
  Install(kSecond, State::NoRoot, {1, 5, 0, 0});
  EXPECT_EQ(TW_GetHostAppVersion(), 255);
  ExpectPrints({"ERROR|| Ver Unknown 2 \r\n", "APP Ver : Ver Unknown 2 \r\n",
                "ERROR|| Ver Unknown 1 \r\n", "APP Ver : Ver Unknown 1 \r\n"});
  ExpectAsked({kFirst, kSecond, kFirst, kSecond});
}

TEST_F(HostVersion, Is255WhenThereIsNoMemoryForTheResource) {
  Install(kFirst, State::Present, {1, 5, 0, 0});
  world().faults.Set(sim::Fault::Allocate, true);
  EXPECT_EQ(TW_GetHostAppVersion(), 255);
  EXPECT_EQ(world().faults.Hits(sim::Fault::Allocate), 1u);
  ExpectPrints({"ERROR|| new lpVersionInfo\r\n", "ERROR|| Ver Unknown 2 \r\n",
                "APP Ver : Ver Unknown 2 \r\n"});
  ExpectAsked({kFirst});
}

// ---- The level of each text -------------------------------------------------------------------

TEST_F(HostVersion, TextsAreOfLevel2AndTheAllocationTextOfLevel3) {
  Install(kFirst, State::Present, {1, 5, 0, 0});
  world().faults.Set(sim::Fault::Allocate, true);
  g_debug.level_threshold = 2;
  TW_GetHostAppVersion();
  EXPECT_EQ(Prints().size(), 3u);
  Mark();
  g_debug.level_threshold = 3;
  TW_GetHostAppVersion();
  ExpectPrints({"ERROR|| new lpVersionInfo\r\n"});
  Mark();
  g_debug.level_threshold = 4;
  TW_GetHostAppVersion();
  ExpectPrints({});
}

TEST_F(HostVersion, TextsOfEveryFailureAndOfSuccessAreOfLevel2) {
  struct Row {
    bool present;
    State state;
    std::size_t prints;
  };
  for (const Row& row : {Row{false, State::Present, 2}, Row{true, State::Unreadable, 2},
                         Row{true, State::NoRoot, 2}, Row{true, State::Present, 1}}) {
    world().files.Remove(kFirst);
    if (row.present) Install(kFirst, row.state, {1, 2, 3, 4});
    g_debug.level_threshold = 2;
    Mark();
    TW_GetHostAppVersion();
    EXPECT_EQ(Prints().size(), row.prints);
    g_debug.level_threshold = 3;
    Mark();
    TW_GetHostAppVersion();
    ExpectPrints({});
  }
}

TEST_F(HostVersion, TextsHangOnTheDebugSwitchAndNotOnTheOutputSwitch) {
  g_debug.output_message = 0;
  TW_GetHostAppVersion();
  EXPECT_EQ(Prints().size(), 2u);
  Mark();
  g_debug.output_message = 1;
  g_debug.debug_output = 0;
  TW_GetHostAppVersion();
  ExpectPrints({});
}

// ---- What initialization makes of it ----------------------------------------------------------

struct AdjustCase {
  std::array<std::uint16_t, 4> version;
  bool adjusted;
};

class HostAdjustment : public HostVersion {
 protected:
  std::vector<Access> AdjustAccesses(int chips) {
    Fit(chips, 0);
    Mark();
    TW_InitializeSetup(0, 0);
    std::vector<Access> found;
    for (const Access& access : Accesses()) {
      // The table of page 1 goes to all chips; the adjustment to each on its own.
      if (access.page == 1 && access.reg == 0x0F && access.chip != kAll) {
        found.push_back(access);
      }
    }
    return found;
  }
};

TEST_F(HostAdjustment, IsMadeForVersion1500AndNotFor5100) {
  for (const AdjustCase& c : {AdjustCase{{1, 5, 0, 0}, true}, AdjustCase{{5, 1, 0, 0}, false},
                              AdjustCase{{5, 5, 9, 9}, true}, AdjustCase{{1, 4, 5, 5}, false},
                              AdjustCase{{1, 6, 0, 0}, false}, AdjustCase{{1, 0x105, 0, 0}, false},
                              AdjustCase{{1, 255, 5, 0}, false}}) {
    SCOPED_TRACE(c.version[1]);
    Install(kFirst, State::Present, c.version);
    EXPECT_EQ(AdjustAccesses(2).size(), c.adjusted ? 4u : 0u);
    EXPECT_EQ(Register(0, 1, 0x0F), c.adjusted ? 0xA3 : 0x93);
  }
}

TEST_F(HostAdjustment, ReadsAndWritesEachChipOfTheBoardInTurn) {
  Install(kFirst, State::Present, {1, 5, 0, 0});
  // The table left 0x93: bits 5 and 4 are 01, and become 10.
  EXPECT_EQ(
      AdjustAccesses(4),
      (std::vector<Access>{R(0x03, 1, 0x0F, 0x93), W(0x03, 1, 0x0F, 0xA3), R(0x0C, 1, 0x0F, 0x93),
                           W(0x0C, 1, 0x0F, 0xA3), R(0x30, 1, 0x0F, 0x93), W(0x30, 1, 0x0F, 0xA3),
                           R(0xC0, 1, 0x0F, 0x93), W(0xC0, 1, 0x0F, 0xA3)}));
  EXPECT_EQ(AdjustAccesses(2).size(), 4u);
}

TEST_F(HostAdjustment, ChangesBits5And4Alone) {
  Install(kFirst, State::Present, {1, 5, 0, 0});
  // A board of three chips has no table for this register: it keeps what was there.
  Fit(3, 0);
  world().board.Poke(0, 1, 0x0F, 0x00);
  world().board.Poke(1, 1, 0x0F, 0xFF);
  world().board.Poke(2, 1, 0x0F, 0x5A);
  TW_InitializeSetup(0, 0);
  EXPECT_EQ(Register(0, 1, 0x0F), 0x20);
  EXPECT_EQ(Register(1, 1, 0x0F), 0xEF);
  EXPECT_EQ(Register(2, 1, 0x0F), 0x6A);
}

TEST_F(HostAdjustment, IsNotMadeForAVersionThatCannotBeRead) {
  for (const State state : {State::Unreadable, State::NoRoot}) {
    Install(kFirst, state, {1, 5, 0, 0});
    EXPECT_TRUE(AdjustAccesses(1).empty());
  }
  world().files.Remove(kFirst);
  EXPECT_TRUE(AdjustAccesses(1).empty());
}

}  // namespace
}  // namespace test
