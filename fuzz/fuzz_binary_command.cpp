// Any binary commands, on boards of every size, beside the model of what they promise. A record
// lies against memory that may not be touched, before it or behind it, and is as long as it must
// be.
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "VexoCtrlSDK.h"
#include "chip/registers.h"
#include "chip/video_state.h"
#include "display/display_state.h"
#include "fuzz/input_bytes.h"
#include "fuzz/require.h"
#include "harness/host.h"
#include "sim/world.h"
#include "tests/api/fenced_record.h"
#include "tests/model/command_model.h"

namespace {

using fuzz::InputBytes;
using fuzz::Require;
using Bytes = std::vector<std::uint8_t>;
using Side = test::FencedRecord::Side;

// The bits of the first byte.
constexpr unsigned kChips = 0x03;  // one less than the board has
constexpr unsigned kPal = 0x04;
constexpr unsigned kOtherMake = 0x08;  // the chip at position 1 is no TW2835
constexpr unsigned kBlankNvram = 0x10;
constexpr unsigned kUnbound = 0x20;
constexpr unsigned kNoBackEnd = 0x40;
constexpr unsigned kPrints = 0x80;

// The bits of the byte that a step begins with.
constexpr unsigned kWhat = 0x1F;
constexpr unsigned kAnyCode = 0x20;  // two bytes more are the code
constexpr unsigned kLeft = 0x40;     // the record lies against the memory before it
constexpr unsigned kNull = 0x80;     // there is no record

// What a step is: commands and dumps by their number, then these.
constexpr unsigned kCommands = VEXO_CMD_MOTION_REG - VEXO_CMD_INIT + 1;
constexpr unsigned kDumps = VEXO_CMD_DUMP_SLAVE3_P2 - VEXO_CMD_DUMP_MASTER_P0 + 1;
constexpr unsigned kMotionInfo = kCommands + kDumps;
constexpr unsigned kCamera = kMotionInfo + 1;
constexpr unsigned kTime = kCamera + 1;

constexpr unsigned kMostSteps = 64;

class Board {
 public:
  explicit Board(unsigned choice) {
    harness::Restart();
    sim::World& world = sim::TheWorld();
    world.trace.SetEnabled(false);
    world.windows.keep_received = false;
    world.board.FitChips((choice & kChips) + 1);
    if ((choice & kOtherMake) != 0) world.board.SetId(1, 0x50);
    const sim::Camera camera = (choice & kPal) != 0 ? sim::Camera::Pal : sim::Camera::Ntsc;
    for (unsigned n = 0; n < kChannelsMax; ++n) world.board.SetCamera(n, camera);
    if ((choice & kBlankNvram) != 0) world.nvram.SetBlank();
    if ((choice & kNoBackEnd) != 0) world.drivers.Set("VBE1:", sim::Drivers::State::Absent);
    for (unsigned position = 0; position < kChipsMax; ++position) {
      model_.chip_ids[position] = world.board.Peek(position, kChipId);
    }
    harness::Entry(1);
    model_.bound = (choice & kUnbound) == 0;
    if (model_.bound) harness::Initialize(world.windows.Create());
    harness::SetEnableOutputMsg((choice & kPrints) != 0 ? 1 : 0);
  }

  void Step(InputBytes& input) {
    const unsigned step = input.Byte();
    const unsigned what = step & kWhat;
    const Side side = (step & kLeft) != 0 ? Side::Left : Side::Right;
    const bool null = (step & kNull) != 0;
    if ((step & kAnyCode) != 0) {
      const std::uint32_t low = input.Byte();
      return Command(low | std::uint32_t{input.Byte()} << 8 | what << 16, null, side, input);
    }
    if (what < kCommands) return Command(VEXO_CMD_INIT + what, null, side, input);
    if (what < kMotionInfo) {
      return Command(VEXO_CMD_DUMP_MASTER_P0 + what - kCommands, null, side, input);
    }
    if (what == kMotionInfo) return MotionInfo(null, side, input);
    if (what == kCamera) return ChangeCamera(input.Byte());
    if (what == kTime) sim::TheWorld().kernel.Pump(input.Byte());
  }

 private:
  void Command(std::uint32_t code, bool null, Side side, InputBytes& input) {
    std::optional<Bytes> record;
    const std::optional<std::size_t> bytes = test::CommandModel::RecordBytes(code);
    if (bytes && !null) record = input.Bytes(*bytes);
    std::uint8_t* const parameter = record ? fenced_.Place(*record, side) : nullptr;
    std::optional<Bytes> expected = record;
    std::vector<bool> free;
    const int promised = model_.Run(code, expected, free);
    Require(VEXOAPI_CommandProc(code, parameter) == promised);
    if (expected) CheckRecord(*expected, free);
    CheckState();
  }

  void MotionInfo(bool null, Side side, InputBytes& input) {
    const std::uint8_t channel = input.Byte();
    const std::uint8_t level = input.Byte();
    std::optional<Bytes> mask;
    if (!null) mask = input.Bytes(VEXO_MOTION_MASK_BYTES);
    std::uint8_t* const parameter = mask ? fenced_.Place(*mask, side) : nullptr;
    const int promised = model_.SetMotionInfo(channel, level, mask);
    Require(VEXOAPI_SetMotionInfo(channel, level, parameter) == promised);
    if (mask) CheckRecord(*mask, std::vector<bool>(mask->size()));
    CheckState();
  }

  static void ChangeCamera(unsigned choice) {
    constexpr std::array kCameras = {sim::Camera::Ntsc, sim::Camera::Pal, sim::Camera::Off};
    sim::Board& board = sim::TheWorld().board;
    const unsigned channel = choice % kChannelsMax;
    board.SetCamera(channel, kCameras[choice / kChannelsMax % kCameras.size()]);
    board.SetMotion(channel, choice % 2 != 0);
    board.SetWeak(channel, choice >= 0xC0);
  }

  // What the library does not decide itself is as it left it.
  void CheckRecord(const Bytes& expected, const std::vector<bool>& free) {
    Require(fenced_.Intact());
    const Bytes record = fenced_.Content();
    for (std::size_t i = 0; i < record.size(); ++i) Require(free[i] || record[i] == expected[i]);
  }

  void CheckState() const {
    Require(sim::TheWorld().kernel.MutexDepth(u"CS4_GlobalLock") == model_.lock_depth);
    Require(g_video.g_chip_ready == (model_.ready ? 1 : 0));
    Require(g_video.max_channel == model_.display.channels);
    Require(g_display.view == model_.display.view);
    Require(g_display.live_split == model_.display.live_split);
    Require(g_display.play_split == model_.display.play_split);
    Require(sim::TheWorld().kernel.LiveThreads() <= 1);
  }

  test::CommandModel model_;
  test::FencedRecord fenced_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  InputBytes input(data, size);
  Board board(input.Byte());
  for (unsigned n = 0; n < kMostSteps && !input.AtEnd(); ++n) board.Step(input);
  return 0;
}
