// A hundred thousand random binary commands on random boards: every answer is the one that a host
// is promised, and nothing outside the caller's record and the library's own state is touched.
#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <optional>
#include <random>
#include <set>

#include "VexoCtrlSDK.h"
#include "chip/video_state.h"
#include "display/display_state.h"
#include "display/play_layout.h"
#include "harness/host.h"
#include "motion/motion_state.h"
#include "report/library_state.h"
#include "tests/api/fenced_record.h"
#include "tests/model/command_model.h"
#include "tests/support/library_test.h"

namespace {

using Bytes = std::vector<std::uint8_t>;
using Side = test::FencedRecord::Side;

constexpr unsigned kShards = 20;
constexpr unsigned kCommandsPerShard = 5000;  // 100,000 in all
constexpr unsigned kCommandsPerBoard = 100;

constexpr std::uint32_t kDumpsAsOne = 0xFF00;     // every dump counts as this
constexpr std::uint32_t kUnknownAsOne = 0x0000;   // and every unknown code as this
constexpr std::uint32_t kMotionInfo = 0x1'0000u;  // stands for VEXOAPI_SetMotionInfo

bool IsKnown(std::uint32_t code) {
  code &= 0xFFFF;
  return (code >= VEXO_CMD_INIT && code <= VEXO_CMD_MOTION_REG) ||
         (code >= VEXO_CMD_DUMP_MASTER_P0 && code <= VEXO_CMD_DUMP_SLAVE3_P2);
}

class RandomCommands : public test::LibraryTest, public ::testing::WithParamInterface<unsigned> {
 protected:
  RandomCommands() { ExpectReports(); }  // random registers, and reads with several chips selected

  // The engine gives the same numbers everywhere; the distributions of the standard do not.
  unsigned Pick(unsigned below) { return static_cast<unsigned>(random_() % below); }
  bool OneIn(unsigned n) { return Pick(n) == 0; }
  std::uint8_t PickByte() { return static_cast<std::uint8_t>(Pick(256)); }
  Bytes PickBytes(std::size_t count) {
    Bytes bytes(count);
    for (std::uint8_t& byte : bytes) byte = PickByte();
    return bytes;
  }

  // ---- Boards ---------------------------------------------------------------------------------

  void PickCamera() {
    constexpr sim::Camera kCameras[] = {sim::Camera::Ntsc, sim::Camera::Pal, sim::Camera::Off};
    const unsigned channel = Pick(16);
    world().board.SetCamera(channel, kCameras[Pick(3)]);
    world().board.SetWeak(channel, OneIn(4));
    world().board.SetMotion(channel, OneIn(2));
  }

  // 0 to 4 chips, sometimes with a gap or a chip of another make among them.
  void PickChips() {
    world().board.FitChips(Pick(8) < 7 ? 1 + Pick(4) : 0);
    if (OneIn(4))
      world().board.SetId(Pick(4),
                          OneIn(2) ? static_cast<std::uint8_t>(0x28 + Pick(8)) : PickByte());
    for (unsigned position = 0; position < kChipsMax; ++position) {
      model_.chip_ids[position] = world().board.Peek(position, kChipId);
    }
  }

  void NewBoard() {
    harness::Restart();
    world().trace.SetEnabled(false);
    model_ = {};
    PickChips();
    const bool mixed = OneIn(2);
    const bool pal = OneIn(2);
    for (unsigned n = 0; n < 16; ++n) {
      if (mixed) PickCamera();
      if (!mixed) world().board.SetCamera(n, pal ? sim::Camera::Pal : sim::Camera::Ntsc);
    }
    if (OneIn(4)) world().nvram.SetRecord(OneIn(4) ? "?" : "MDVR", PickByte(), PickByte());
    if (OneIn(8)) world().nvram.SetBlank();
    if (OneIn(8)) world().nvram.SetFailure(sim::Nvram::Failure::Read);
    world().board.SetSettle(OneIn(16) ? -1 : static_cast<int>(Pick(3)));
    world().windows.deaf = OneIn(32);
    // Now and then another process has the library.
    if (++boards_ % 16 == 0) world().faults.Set(sim::Fault::EventExists, true);
    AttachAndBind();
    model_.initialized = model_.bound = g_library.g_initialized != 0;
    EXPECT_EQ(model_.initialized, world().faults.Hits(sim::Fault::EventExists) == 0);
    harness::SetEnableOutputMsg(OneIn(4) ? 1 : 0);
    harness::SetEnableDebug(OneIn(4) ? 1 : 0);
    CheckState();
    if (!OneIn(4)) RunCommand(VEXO_CMD_INIT, PickBytes(sizeof(VexoInitRecord)));
  }

  // What happens around a host between two commands.
  void MeanWhile() {
    if (OneIn(8)) PickCamera();
    if (OneIn(50)) PickChips();
    if (OneIn(10)) world().kernel.Pump(Pick(60));
    if (model_.initialized && OneIn(model_.bound ? 100 : 4)) {
      if (model_.bound) {
        harness::Uninitialize();
      } else {
        harness::Initialize(world().windows.Create());
      }
      model_.bound = !model_.bound;
    }
    world().windows.received.clear();
  }

  // ---- Commands -------------------------------------------------------------------------------

  std::uint32_t PickCode() {
    const std::uint32_t upper = OneIn(2) ? 0 : Pick(0x10000) << 16;
    const unsigned kind = Pick(100);
    if (kind == 0) return upper | (VEXO_CMD_DUMP_MASTER_P0 + Pick(12));
    if (kind < 3) return upper | VEXO_CMD_INIT;
    if (kind < 6) {
      constexpr std::uint32_t kNear[] = {0x0000, 0xF000, test::kUnknownCommand, 0xF0FF, 0xFEFF,
                                         0xFF0C, 0xFFFF};
      const std::uint32_t code = OneIn(2) ? kNear[Pick(7)] : Pick(0x10000);
      return upper | (IsKnown(code) ? 0 : code);
    }
    return upper | (VEXO_CMD_STOP_MONITOR + Pick(16));
  }

  // Bytes that lead somewhere, in place of some of the random ones.
  void Tame(std::uint32_t code, Bytes& record) {
    const auto below = [this](unsigned n) { return static_cast<std::uint8_t>(Pick(n)); };
    switch (code & 0xFFFF) {
      case VEXO_CMD_READ_REG:
      case VEXO_CMD_WRITE_REG:
        record[0] = OneIn(8) ? kChipAll : kChipByPosition[Pick(4)];
        record[1] = below(4);
        break;
      case VEXO_CMD_LIVE_SPLIT:
      case VEXO_CMD_PLAY_SPLIT:
        record[4] = below(8);
        record[5] = below(2);
        TameList(record, 6);
        break;
      case VEXO_CMD_LIVE_MODE:
        record[4] = below(8);
        TameList(record, 5);
        break;
      case VEXO_CMD_PLAY_MODE:
        record[5] = below(8);
        TameList(record, 6);
        break;
      case VEXO_CMD_MOTION_MASK:
      case VEXO_CMD_MOTION_MASK_PREVIEW:
        record[0] = below(18);
        record[1] = below(5);
        break;
      case VEXO_CMD_MOTION_SETUP:
        for (std::uint8_t& byte : record) byte = below(17);
        break;
      case VEXO_CMD_MOTION_REG:
        record[0] = below(18);
        break;
      default:
        break;
    }
  }

  void TameList(Bytes& record, std::size_t at) {
    const unsigned first = Pick(17);
    const unsigned count = OneIn(2) ? 16 : 17;
    const bool ascending = !OneIn(4);
    for (std::size_t k = 0; at + k < record.size(); ++k) {
      const auto step = static_cast<unsigned>(k);
      record[at + k] = static_cast<std::uint8_t>(ascending ? (first + step) % count : Pick(count));
    }
  }

  void RunRandomCommand() {
    if (OneIn(20)) return RunSetMotionInfo();
    const std::uint32_t code = PickCode();
    std::optional<Bytes> record;
    if (const std::optional<std::size_t> length = test::CommandModel::RecordBytes(code)) {
      if (!OneIn(12)) record = PickBytes(*length);
      if (record && !OneIn(4)) Tame(code, *record);
    } else if (OneIn(2)) {
      record = PickBytes(Pick(5));  // not even looked at
    }
    RunCommand(code, record);
  }

  void RunCommand(std::uint32_t code, const std::optional<Bytes>& record) {
    SCOPED_TRACE(testing::Message() << "code 0x" << std::hex << code);
    std::uint8_t* parameter =
        record ? fenced_.Place(*record, OneIn(2) ? Side::Left : Side::Right) : nullptr;
    std::optional<Bytes> expected = record;
    std::vector<bool> free;
    const int promised = model_.Run(code, expected, free);
    const int result = VEXOAPI_CommandProc(code, parameter);
    EXPECT_EQ(result, promised);
    if (record) CheckRecord(*expected, free);
    const std::uint32_t low = code & 0xFFFF;
    Count(!IsKnown(low) ? kUnknownAsOne : low >= kDumpsAsOne ? kDumpsAsOne : low, result);
    if (low == VEXO_CMD_INIT && result == 0) KeepLayouts();
    CheckState();
  }

  void RunSetMotionInfo() {
    const std::uint8_t channel = OneIn(4) ? PickByte() : static_cast<std::uint8_t>(Pick(17));
    const std::uint8_t level = OneIn(4) ? PickByte() : static_cast<std::uint8_t>(Pick(5));
    std::optional<Bytes> mask;
    if (!OneIn(12)) mask = PickBytes(VEXO_MOTION_MASK_BYTES);
    std::uint8_t* parameter =
        mask ? fenced_.Place(*mask, OneIn(2) ? Side::Left : Side::Right) : nullptr;
    const int promised = model_.SetMotionInfo(channel, level, mask);
    const int result = VEXOAPI_SetMotionInfo(channel, level, parameter);
    EXPECT_EQ(result, promised);
    if (mask) CheckRecord(*mask, std::vector<bool>(mask->size()));
    Count(kMotionInfo, result);
    CheckState();
  }

  void Count(std::uint32_t code, int result) {
    ++commands_;
    results_[code].insert(result);
  }

  // ---- Checks ---------------------------------------------------------------------------------

  void CheckRecord(Bytes expected, const std::vector<bool>& free) {
    EXPECT_TRUE(fenced_.Intact()) << "written beside the record";
    const Bytes record = fenced_.Content();
    for (std::size_t i = 0; i < record.size(); ++i) {
      if (free[i]) expected[i] = record[i];
    }
    EXPECT_EQ(record, expected);
  }

  void KeepLayouts() {
    layouts_ = g_layout;
    const int split = test::DefaultSplitOf(model_.display.channels);
    EXPECT_EQ(g_video.default_live_split, split);
    EXPECT_EQ(g_video.default_play_split, split);
  }

  // What the library remembers is what the commands said, no more.
  void CheckState() {
    EXPECT_EQ(world().kernel.MutexDepth(u"CS4_GlobalLock"), model_.lock_depth);
    EXPECT_EQ(g_video.g_chip_ready, model_.ready ? 1 : 0);
    EXPECT_EQ(g_video.max_channel, model_.display.channels);
    EXPECT_EQ(g_video.chip_count, model_.display.channels / 4);
    EXPECT_EQ(g_display.view, model_.display.view);
    EXPECT_EQ(g_display.g_view_mode, model_.display.view_word);
    EXPECT_EQ(g_display.live_mask, model_.display.masks.live);
    EXPECT_EQ(g_display.record_mask, model_.display.masks.record);
    EXPECT_EQ(g_display.play_mask, model_.display.masks.play);
    EXPECT_EQ(g_display.live_split, model_.display.live_split);
    EXPECT_EQ(g_display.play_split, model_.display.play_split);
    EXPECT_LE(g_playback.full_picture + g_playback.centred_picture, 1);
    for (std::size_t n = 0; n < kChannelsMax; ++n) {
      EXPECT_TRUE(
          std::equal(model_.motion_mask[n].begin(), model_.motion_mask[n].end(), g_motion.mask[n]))
          << "motion mask of channel " << n;
      EXPECT_EQ(g_motion.level[n], model_.motion_level[n]) << "channel " << n;
    }
    if (model_.ready) {
      EXPECT_EQ(std::memcmp(&g_layout, &layouts_, sizeof g_layout), 0) << "a window table changed";
    }
    EXPECT_LE(world().kernel.LiveThreads(), 1u);
  }

  void EndBoard() {
    if (!model_.initialized) return;
    if (!model_.bound) harness::Initialize(world().windows.Create());
    model_.bound = true;
    RunCommand(VEXO_CMD_STOP_MONITOR, std::nullopt);
    EXPECT_EQ(world().kernel.LiveThreads(), 0u);
  }

  unsigned commands_ = 0;
  std::map<std::uint32_t, std::set<int>> results_;  // of each code
  std::mt19937_64 random_;

 private:
  test::CommandModel model_;
  test::FencedRecord fenced_;
  LayoutState layouts_;  // as the last initialization left them
  unsigned boards_ = 0;
};

// Holds: VexoCtrlSDK.h "The library answers with result codes and tells the host about"
// Holds: VexoCtrlSDK.h "Records belong to the caller"
// Holds: VexoCtrlSDK.h "Reserved bytes are neither read nor written."
// Holds: VEXOAPI_CommandProc "Runs one binary command."
// Holds: VEXOAPI_CommandProc "Returns VEXO_OK or the operation's own result"
// Holds: VEXOAPI_SetMotionInfo "A channel below 16 that the board lacks is stored"
TEST_P(RandomCommands, AnswerAsPromisedAndStayInTheirRecord) {
  random_.seed(GetParam());
  while (commands_ < kCommandsPerShard) {
    NewBoard();
    for (unsigned n = 0; n < kCommandsPerBoard; ++n) {
      MeanWhile();
      RunRandomCommand();
      if (HasFailure()) FAIL() << "at command " << commands_ << " of shard " << GetParam();
    }
    EndBoard();
  }

  // The commands led everywhere, or all of this would prove little.
  using Results = std::map<std::uint32_t, std::set<int>>;
  Results all = {
      {kUnknownAsOne, {-8, -1}},
      {VEXO_CMD_INIT, {-8, -5, -1, 0}},
      {VEXO_CMD_STOP_MONITOR, {-8, 0}},
      {VEXO_CMD_READ_REG, {-8, -5, 0}},
      {VEXO_CMD_WRITE_REG, {-8, -5, 0}},
      {VEXO_CMD_LIVE_SPLIT, {-8, -5, -1, 0}},
      {VEXO_CMD_PLAY_SPLIT, {-8, -5, -1, 0}},
      {VEXO_CMD_MOTION_MASK, {-8, -5, 0}},
      {VEXO_CMD_CHANNEL_MASKS, {-8, -5, 0}},
      {VEXO_CMD_LIVE_MODE, {-8, -5, 0}},
      {VEXO_CMD_PLAY_MODE, {-8, -5, 0}},
      {VEXO_CMD_BLANK_MASK, {-8, -5, -1, 0}},
      {VEXO_CMD_BIT0_MASK, {-8, -5, -1, 0}},
      {VEXO_CMD_RESTORE_BLANK, {-8, -1, 0}},
      {VEXO_CMD_MOTION_SETUP, {-8, -5, 0}},
      {VEXO_CMD_MOTION_CLEAR, {-8, 0}},
      {VEXO_CMD_MOTION_MASK_PREVIEW, {-8, -5, 0}},
      {VEXO_CMD_MOTION_REG, {-8, -5, 0}},
      {kDumpsAsOne, {-8, 0}},
      {kMotionInfo, {-6, 0}},
  };
  EXPECT_EQ(results_, all);
}

INSTANTIATE_TEST_SUITE_P(HundredThousand, RandomCommands, ::testing::Range(0u, kShards));

}  // namespace
