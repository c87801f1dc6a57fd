// What initialization costs on the bus, counted by hand: an access takes 4 cycles (select, address,
// data, release), a table of n bytes n + 3.
#include "setup/initialization.h"
#include "tests/setup/setup_test.h"

namespace test {
namespace {

constexpr int kAccess = 4;
constexpr int TableOf(int bytes) { return bytes + 3; }

// The bus put to idle, and four identifications read.
constexpr int kFindChips = 1 + 4 * kAccess;

// Per chip two status reads; per channel with video one more.
constexpr int FindVideo(int chips, int channels_with_video) {
  return 2 * chips * kAccess + channels_with_video * kAccess;
}

// Per position two tables and three bytes; three tables; output; delay, width and offset of four
// inputs. PAL writes the delays once more.
constexpr int kPage0Ntsc = 4 * (TableOf(15) + TableOf(16) + 3 * kAccess) +
                           (TableOf(21) + TableOf(21) + TableOf(11)) + kAccess + 12 * kAccess;
constexpr int kPage0Pal = kPage0Ntsc + 4 * kAccess;
static_assert(kPage0Ntsc == 310 && kPage0Pal == 326);

// Two broadcast tables, then two tables and two bytes for each chip of the board.
constexpr int Page1Board(int chips) {
  return TableOf(47) + TableOf(80) + chips * (2 * TableOf(16) + 2 * kAccess);
}
// 13 registers, five crop bytes of four positions, one register of page 0.
constexpr int kPage1Common = 13 * kAccess + 4 * 5 * kAccess + kAccess;
static_assert(Page1Board(1) == 179 && Page1Board(2) == 225 && Page1Board(4) == 317);
static_assert(kPage1Common == 136);

constexpr int kPage2 = TableOf(80) + TableOf(32) + 4 * TableOf(32) + kAccess;
static_assert(kPage2 == 262);

// Per channel a mask and three level registers; five shared ones.
constexpr int Motion(int channels) { return channels * (TableOf(24) + 3 * kAccess) + 5 * kAccess; }

constexpr int kOutputMode = kAccess;

// Overlays, display mode and zoom off; at the end the record bit of every channel.
constexpr int LiveSwitch(int channels) { return 6 * kAccess + channels * kAccess; }
// Display, path and overlay of four positions; decoder table; display mode read and written;
// four attributes of every chip read and written.
constexpr int LiveVariant(int chips) {
  return 12 * kAccess + TableOf(21) + 2 * kAccess + chips * 4 * 2 * kAccess;
}
// Hold: four registers read and written, one poll of each chip. Per channel four scaler bytes and
// four window bytes. Release: four registers of each chip read and written.
constexpr int LiveSplit(int chips, int layout_codes) {
  const int channels = 4 * chips;
  return 4 * 2 * kAccess + chips * kAccess + channels * 8 * kAccess + layout_codes * kAccess +
         chips * 4 * 2 * kAccess;
}
constexpr int Blank(int channels) { return channels * 2 * kAccess; }

// Mode; a layout of each channel; queues of four chip codes; positions; controls; three registers;
// a bit of each channel.
constexpr int Record(int channels) {
  return kAccess + channels * kAccess + (4 + 4 + 4 + 3) * kAccess + channels * kAccess;
}

// Everything that does not hang on the standard.
constexpr int Common(int chips, int layout_codes) {
  const int channels = 4 * chips;
  return kFindChips + Page1Board(chips) + kPage1Common + kPage2 + 2 * Motion(channels) +
         kOutputMode + LiveSwitch(channels) + LiveVariant(chips) + LiveSplit(chips, layout_codes) +
         Blank(channels) + Record(channels);
}
// 12 channels: no page 1 tables, no live variant, no split, no blanking.
constexpr int kCommon12 =
    kFindChips + kPage1Common + kPage2 + 2 * Motion(12) + kOutputMode + LiveSwitch(12) + Record(12);

struct CyclesCase {
  const char* name;
  int chips;
  int cameras;
  int cycles;
};
void PrintTo(const CyclesCase& c, std::ostream* out) { *out << c.name; }

class InitCycles : public SetupTest, public ::testing::WithParamInterface<CyclesCase> {
 protected:
  std::uint64_t Run() {
    const CyclesCase& c = GetParam();
    Fit(c.chips, c.cameras);
    world().nvram.SetRecord("MDVR", static_cast<std::uint8_t>(c.cameras),
                            static_cast<std::uint8_t>(4 * c.chips));
    AttachAndBind();
    Mark();
    EXPECT_EQ(TW_InitializeSetup(0, 0), 4 * c.chips);
    return Cycles();
  }
};

TEST_P(InitCycles, AreExactlyThese) {
  EXPECT_EQ(Run(), static_cast<std::uint64_t>(GetParam().cycles));
}

TEST_P(InitCycles, GrowByAReadAndAWriteOfEachChipForAHostOfVersion5) {
  world().files.Set("\\Windows\\Main.exe", {sim::VersionFile::State::Present, {1, 5, 0, 0}});
  EXPECT_EQ(Run(), static_cast<std::uint64_t>(GetParam().cycles + 2 * kAccess * GetParam().chips));
}

TEST_P(InitCycles, GrowByOnePollOfEachChipForEachRepeatedPoll) {
  world().board.SetSettle(3);
  const bool splits = GetParam().chips != 3;
  const int more = splits ? 3 * GetParam().chips * kAccess : 0;
  EXPECT_EQ(Run(), static_cast<std::uint64_t>(GetParam().cycles + more));
}

// The 2 x 2 writes its layout code to four positions, the 3 x 3 and 4 x 4 to each channel. A board
// whose standard is PAL, and only that, ends its split with the field mode.
INSTANTIATE_TEST_SUITE_P(
    Boards, InitCycles,
    ::testing::Values(
        CyclesCase{"Ntsc4", 1, 0, Common(1, 4) + FindVideo(1, 4) + kPage0Ntsc},
        CyclesCase{"Pal4", 1, 1, Common(1, 4) + FindVideo(1, 4) + kPage0Pal + kAccess},
        CyclesCase{"NoVideo4", 1, 2, Common(1, 4) + FindVideo(1, 0) + kPage0Pal},
        CyclesCase{"Ntsc8", 2, 0, Common(2, 8) + FindVideo(2, 8) + kPage0Ntsc},
        CyclesCase{"Pal8", 2, 1, Common(2, 8) + FindVideo(2, 8) + kPage0Pal + kAccess},
        CyclesCase{"NoVideo8", 2, 2, Common(2, 8) + FindVideo(2, 0) + kPage0Pal},
        CyclesCase{"Ntsc12", 3, 0, kCommon12 + FindVideo(3, 12) + kPage0Ntsc},
        CyclesCase{"Pal12", 3, 1, kCommon12 + FindVideo(3, 12) + kPage0Pal},
        CyclesCase{"NoVideo12", 3, 2, kCommon12 + FindVideo(3, 0) + kPage0Pal},
        CyclesCase{"Ntsc16", 4, 0, Common(4, 16) + FindVideo(4, 16) + kPage0Ntsc},
        CyclesCase{"Pal16", 4, 1, Common(4, 16) + FindVideo(4, 16) + kPage0Pal + kAccess},
        CyclesCase{"NoVideo16", 4, 2, Common(4, 16) + FindVideo(4, 0) + kPage0Pal}),
    [](const auto& row) { return std::string(row.param.name); });

// The sums, so that a slip in the arithmetic above shows as well.
static_assert(Common(1, 4) + FindVideo(1, 4) + kPage0Ntsc == 1776);
static_assert(Common(2, 8) + FindVideo(2, 8) + kPage0Ntsc == 2450);
static_assert(Common(4, 16) + FindVideo(4, 16) + kPage0Ntsc == 3798);
static_assert(kCommon12 + FindVideo(3, 12) + kPage0Ntsc == 2009);

using InitCyclesOfAnEmptyBoard = SetupTest;

TEST_F(InitCyclesOfAnEmptyBoard, EndAfterTheFourIdentifications) {
  Fit(0, 0);
  AttachAndBind();
  Mark();
  EXPECT_EQ(TW_InitializeSetup(0, 0), -1);
  EXPECT_EQ(Cycles(), static_cast<std::uint64_t>(kFindChips));
}

}  // namespace
}  // namespace test
