// The binary commands: what each needs, what it does to its record, what it answers.
#include <algorithm>
#include <memory>

#include "VexoCtrlSDK.h"
#include "chip/video_state.h"
#include "display/display_state.h"
#include "harness/host.h"
#include "report/library_state.h"
#include "tests/api/trace_lines.h"
#include "tests/model/command_model.h"
#include "tests/support/at_events.h"
#include "tests/support/library_test.h"

namespace {

using Lines = std::vector<std::string>;
using Bytes = std::vector<std::uint8_t>;
using test::W;

constexpr std::size_t kRecordBytes = harness::kCommandRecordBytes;

// What every command needs, by code.
struct Needs {
  std::uint32_t code;
  bool record;
  bool chips;
};

constexpr Needs kCommands[] = {
    {0xF002, false, false}, {0xF003, true, false}, {0xF004, true, false}, {0xF005, true, true},
    {0xF006, true, true},   {0xF007, true, true},  {0xF008, true, true},  {0xF009, true, true},
    {0xF00A, true, true},   {0xF00B, true, true},  {0xF00C, true, true},  {0xF00D, false, true},
    {0xF00E, true, true},   {0xF00F, false, true}, {0xF010, true, true},  {0xF011, true, true},
    {0xFF00, false, true},  {0xFF01, false, true}, {0xFF02, false, true}, {0xFF03, false, true},
    {0xFF04, false, true},  {0xFF05, false, true}, {0xFF06, false, true}, {0xFF07, false, true},
    {0xFF08, false, true},  {0xFF09, false, true}, {0xFF0A, false, true}, {0xFF0B, false, true},
};

constexpr std::uint32_t kUnknownCodes[] = {
    0x0000, 0x0001, 0x2401, 0xEFFF, 0xF000, test::kUnknownCommand, 0xF0FF, 0xFEFF, 0xFF0C, 0xFFFF};

class Dispatcher : public test::LibraryTest {
 protected:
  bool LockHeld() { return world().kernel.MutexHeld(u"CS4_GlobalLock"); }

  // A record of the given bytes at their offset, everything else a pattern.
  static Bytes Patterned(std::size_t offset, const Bytes& fields) {
    Bytes record(kRecordBytes, 0xA5);
    std::copy(fields.begin(), fields.end(), record.begin() + static_cast<std::ptrdiff_t>(offset));
    return record;
  }
};

// ---- Preconditions ---------------------------------------------------------------------------

// Holds: VEXOAPI_CommandProc "While the library is not initialized or no window"
TEST_F(Dispatcher, BeforeAttachEveryCodeIsRefusedWithoutTheLock) {
  g_library.g_host_wnd = world().windows.Create();
  for (const Needs& command : kCommands) EXPECT_EQ(CommandNull(command.code), -8);
  for (const std::uint32_t code : kUnknownCodes) EXPECT_EQ(CommandNull(code), -8);
  EXPECT_EQ(CommandNull(VEXO_CMD_INIT), -8);
  EXPECT_EQ(test::Texts(world().trace, 0, "lock"), Lines{});
}

// Holds: Result codes "VEXO_ERROR_NOT_READY: no host window"
// Holds: VEXOAPI_CommandProc "While the library is not initialized or no window"
TEST_F(Dispatcher, WithoutAWindowEveryCodeIsRefusedWithoutTheLock) {
  PretendBoard(4);
  harness::Uninitialize();
  const Bytes record(kRecordBytes, 0x11);
  for (const Needs& command : kCommands) {
    EXPECT_EQ(Command(command.code, record), -8) << std::hex << command.code;
    EXPECT_EQ(last_record, record);
  }
  for (const std::uint32_t code : kUnknownCodes) EXPECT_EQ(CommandNull(code), -8);
  EXPECT_EQ(Command(VEXO_CMD_INIT, record), -8);
  EXPECT_EQ(test::Texts(world().trace, 0, "lock"), Lines{});
  EXPECT_EQ(world().trace.Cycles(), 0u);
}

// Holds: Result codes "VEXO_ERROR_PARAMETER: required record missing"
TEST_F(Dispatcher, AMissingRecordIsRefusedWhereOneIsNeeded) {
  PretendBoard(4);
  for (const Needs& command : kCommands) {
    if (!command.record) continue;
    EXPECT_EQ(CommandNull(command.code), -5) << std::hex << command.code;
    EXPECT_FALSE(LockHeld());
  }
  EXPECT_EQ(Cycles(), 0u);
}

// Holds: Command codes of VEXOAPI_CommandProc "VEXO_CMD_STOP_MONITOR: no record"
// Holds: VEXOAPI_CommandProc "Only the low 16 bits of code count"
TEST_F(Dispatcher, CommandsWithoutARecordTakeANullPointer) {
  PretendBoard(4);
  for (const std::uint32_t code : {0xF002u, 0xF00Du, 0xF00Fu}) {
    EXPECT_EQ(CommandNull(code), 0) << std::hex << code;
    EXPECT_FALSE(LockHeld());
  }
}

// Holds: Result codes "VEXO_ERROR_NOT_READY: no host window"
TEST_F(Dispatcher, BeforeInitializationDisplayCommandsAndDumpsAreRefused) {
  AttachAndBind();
  const Bytes record(kRecordBytes, 0x11);
  for (const Needs& command : kCommands) {
    if (!command.chips) continue;
    EXPECT_EQ(Command(command.code, record), -8) << std::hex << command.code;
    EXPECT_EQ(last_record, record);
    EXPECT_FALSE(LockHeld());
  }
  EXPECT_EQ(Cycles(), 0u);
}

TEST_F(Dispatcher, TheMissingRecordIsNoticedBeforeTheMissingChips) {
  AttachAndBind();
  for (const Needs& command : kCommands) {
    if (command.record || command.chips) {
      EXPECT_EQ(CommandNull(command.code), command.record ? -5 : -8) << std::hex << command.code;
    }
    EXPECT_FALSE(LockHeld());
  }
}

// Holds: VEXOAPI_CommandProc "Only the low 16 bits of code count"
TEST_F(Dispatcher, TheUpperSixteenBitsOfTheCodeDoNotCount) {
  PretendBoard(4);
  for (const std::uint32_t upper : {0x10000u, 0xFFFF0000u, 0xF0050000u}) {
    EXPECT_EQ(CommandNull(upper | 0xF002u), 0);
    EXPECT_EQ(CommandNull(upper | 0xF005u), -5);
    EXPECT_EQ(Command(upper | 0xF005u, {0, 0, 0, 0, VEXO_SPLIT_FULL, 0, 2}), 0);
    EXPECT_FALSE(LockHeld());
  }
  EXPECT_EQ(g_display.live_split, VEXO_SPLIT_FULL);
}

// Holds: Result codes "VEXO_ERROR_FAILED: unknown code"
TEST_F(Dispatcher, UnknownCodesFailAndTouchNothing) {
  PretendBoard(16);
  Mark();
  const Bytes record(kRecordBytes, 0x11);
  for (const std::uint32_t code : kUnknownCodes) {
    EXPECT_EQ(CommandNull(code), -1) << std::hex << code;
    EXPECT_EQ(Command(code, record), -1) << std::hex << code;
    EXPECT_EQ(last_record, record);
  }
  EXPECT_EQ(Cycles(), 0u);
  EXPECT_EQ(Debug(), Lines{});
}

TEST_F(Dispatcher, AFailureHasNoTextOfItsOwn) {
  AttachAndBind();
  Mark();
  CommandNull(0xF005);
  CommandNull(0xF00D);
  CommandNull(0xFF00);
  CommandNull(test::kUnknownCommand);
  CommandNull(VEXO_CMD_INIT);
  EXPECT_EQ(Debug(), Lines{});
}

// ---- Records ---------------------------------------------------------------------------------

// A command with fields that it can work on, and which bytes of its record it reads and writes.
struct RecordCase {
  std::uint32_t code;
  std::size_t offset;
  Bytes fields;        // at offset: every byte that the command reads
  std::size_t length;  // of the shortest record that a caller may pass
  std::size_t write_from, write_to;
};

const RecordCase kRecordCases[] = {
    {0xF003, 0, {kChipMaster, 0, 0xFE}, 4, 3, 4},
    {0xF004, 0, {kChipMaster, 2, 0x67, 0x12}, 4, 0, 0},
    {0xF005, 4, {VEXO_SPLIT_FULL}, 7, 0, 0},
    {0xF008, 0, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}, 12, 0, 0},
    {0xF00B, 0, {0x0A, 0, 0, 0}, 4, 0, 0},
    {0xF00C, 0, {0x0A, 0, 0, 0}, 4, 0, 0},
    {0xF00E, 0, {1, 3, 3, 2}, 4, 0, 0},
    {0xF011, 0, {2, 3, 4}, 3, 0, 0},
};

// Holds: VexoRegRecord "VEXO_CMD_READ_REG (reads bytes 0-2"
TEST_F(Dispatcher, WritesOnlyTheBytesOfTheRecordThatAreItsOwn) {
  StartBoard(4);
  for (const RecordCase& c : kRecordCases) {
    const Bytes before = Patterned(c.offset, c.fields);
    EXPECT_EQ(Command(c.code, before), 0) << std::hex << c.code;
    for (std::size_t i = 0; i < kRecordBytes; ++i) {
      if (i >= c.write_from && i < c.write_to) continue;
      EXPECT_EQ(last_record[i], before[i]) << std::hex << c.code << " byte " << std::dec << i;
    }
    EXPECT_FALSE(LockHeld());
  }
}

// Records of the exact size, so that a read or write past the end is noticed.
// Holds: VexoRegRecord "VEXO_CMD_READ_REG (reads bytes 0-2"
// Holds: VexoMaskRecord "Read: all 4 bytes."
// Holds: VexoMotionSetupRecord "Read: all 4 bytes."
// Holds: VexoMotionRegRecord "Read: all 3 bytes."
TEST_F(Dispatcher, KeepsInsideTheShortestRecord) {
  StartBoard(4);
  for (const RecordCase& c : kRecordCases) {
    const Bytes full = Patterned(c.offset, c.fields);
    const auto record = std::make_unique<std::uint8_t[]>(c.length);
    std::copy_n(full.begin(), c.length, record.get());
    EXPECT_EQ(VEXOAPI_CommandProc(c.code, record.get()), 0) << std::hex << c.code;
  }
  const auto init = std::make_unique<std::uint8_t[]>(24);
  EXPECT_EQ(VEXOAPI_CommandProc(VEXO_CMD_INIT, init.get()), 0);
  const auto live = std::make_unique<std::uint8_t[]>(9);
  live[4] = VEXO_SPLIT_4;
  EXPECT_EQ(VEXOAPI_CommandProc(VEXO_CMD_LIVE_MODE, live.get()), 0);
  const auto mask = std::make_unique<std::uint8_t[]>(26);
  EXPECT_EQ(VEXOAPI_CommandProc(VEXO_CMD_MOTION_MASK, mask.get()), 0);
  EXPECT_EQ(VEXOAPI_CommandProc(VEXO_CMD_MOTION_MASK_PREVIEW, mask.get()), 0);
}

// Holds: VexoCtrlSDK.h "Records belong to the caller"
TEST_F(Dispatcher, RecordsNeedNoAlignment) {
  PretendBoard(4);
  const auto memory = std::make_unique<std::uint8_t[]>(16);
  memory[1] = 0x05;
  EXPECT_EQ(VEXOAPI_CommandProc(VEXO_CMD_BLANK_MASK, memory.get() + 1), 0);
  EXPECT_EQ(g_display.blank_mask.live, 0x00000005u);
  memory[1 + 11] = 0x80;
  EXPECT_EQ(VEXOAPI_CommandProc(VEXO_CMD_CHANNEL_MASKS, memory.get() + 1), 0);
  EXPECT_EQ(g_display.play_mask, 0x80000000u);
}

// ---- 0xF003, 0xF004 --------------------------------------------------------------------------

// Holds: Command codes of VEXOAPI_CommandProc "VEXO_CMD_READ_REG: VexoRegRecord,"
// Holds: VexoRegRecord "VEXO_CMD_READ_REG (reads bytes 0-2"
// Holds: VexoRegRecord "chip_select: 0 VEXO_CHIP_..."
// Holds: VexoRegRecord "page: 1 register page"
// Holds: VexoRegRecord "reg: 2 register number"
// Holds: VexoRegRecord "value: 3 value read or to write"
// Holds: Host window messages "VEXO_MSG_REG_VALUE: wParam: address of a VexoRegRecord"
TEST_F(Dispatcher, ReadRegisterPutsTheValueIntoTheRecordAndTellsTheHost) {
  PretendBoard(8);
  world().board.Poke(1, 2, 0x67, 0x5A);
  EXPECT_EQ(Command(VEXO_CMD_READ_REG, {kChipSlave1, 2, 0x67, 0xEE}), 0);
  EXPECT_EQ(last_record[3], 0x5A);
  EXPECT_EQ(DebugText(), "[VexoCtrlSDK]: >> VEXO READ REG 0x0C 0x02 0x67 0x5A \r\n");
  ASSERT_EQ(world().windows.received.size(), 1u);
  EXPECT_EQ(world().windows.received[0].message, 0x2406u);
  EXPECT_EQ(world().windows.received[0].record, (sim::Bytes{0x0C, 0x02, 0x67, 0x5A}));
}

// Holds: VEXOAPI_CommandProc "VEXO_OK comes back although nothing was done"
TEST_F(Dispatcher, ReadRegisterBeforeInitializationAnswersDoneWithZero) {
  AttachAndBind();
  Mark();
  EXPECT_EQ(Command(VEXO_CMD_READ_REG, {kChipMaster, 0, 0xFE, 0xEE}), 0);
  EXPECT_EQ(last_record[3], 0x00);
  EXPECT_EQ(Cycles(), 0u);
  EXPECT_EQ(Debug(), Lines{});
  EXPECT_EQ(MessageEvents().size(), 0u);
  EXPECT_FALSE(LockHeld());
}

// Holds: Command codes of VEXOAPI_CommandProc "VEXO_CMD_WRITE_REG: VexoRegRecord"
// Holds: VexoRegRecord "chip_select: 0 VEXO_CHIP_..."
// Holds: VexoRegRecord "value: 3 value read or to write"
TEST_F(Dispatcher, WriteRegisterTakesTheValueFromTheRecord) {
  PretendBoard(8);
  EXPECT_EQ(Command(VEXO_CMD_WRITE_REG, {kChipAll, 2, 0x67, 0x5A}), 0);
  EXPECT_EQ(Accesses(), std::vector{W(0xFF, 2, 0x67, 0x5A)});
  EXPECT_EQ(Cycles(), 4u);
  EXPECT_EQ(DebugText(), "[VexoCtrlSDK]: >> VEXO WRITE REG 0xFF 0x02 0x67 0x5A \r\n");
}

// Holds: VEXOAPI_CommandProc "VEXO_OK comes back although nothing was done"
TEST_F(Dispatcher, WriteRegisterBeforeInitializationAnswersDoneAndWritesNothing) {
  AttachAndBind();
  Mark();
  EXPECT_EQ(Command(VEXO_CMD_WRITE_REG, {kChipMaster, 2, 0x67, 0x5A}), 0);
  EXPECT_EQ(Cycles(), 0u);
  EXPECT_EQ(Debug(), Lines{});
  EXPECT_FALSE(LockHeld());
}

// ---- 0xF005, 0xF008, 0xF009 ------------------------------------------------------------------

// Holds: Command codes of VEXOAPI_CommandProc "VEXO_CMD_LIVE_SPLIT: VexoSplitRecord"
TEST_F(Dispatcher, LiveSplitTakesModeAndChannelsFromBytesFourAndSix) {
  StartBoard(4);
  EXPECT_EQ(Command(VEXO_CMD_LIVE_SPLIT, {9, 9, 9, 9, VEXO_SPLIT_FULL, 9, 2}), 0);
  EXPECT_EQ(g_display.live_split, VEXO_SPLIT_FULL);
  EXPECT_EQ(Register(0, 1, 0x38), 0x04);  // channel 2 fills the screen
  EXPECT_EQ(Register(0, 1, 0x39), 0xB0);
  EXPECT_EQ(Register(0, 1, 0x31), 0x00);  // channel 0 has no window
}

// Holds: Result codes "VEXO_ERROR_FAILED: unknown code"
TEST_F(Dispatcher, LiveSplitHandsThroughWhatTheOperationAnswers) {
  PretendBoard(4);
  EXPECT_EQ(Command(VEXO_CMD_LIVE_SPLIT, {0, 0, 0, 0, 7}), -5);              // no such mode
  EXPECT_EQ(Command(VEXO_CMD_LIVE_SPLIT, {0, 0, 0, 0, VEXO_SPLIT_16}), -1);  // not on this board
  g_display.view = kViewPlayback;
  EXPECT_EQ(Command(VEXO_CMD_LIVE_SPLIT, {0, 0, 0, 0, VEXO_SPLIT_4, 0, 0, 1, 2, 3}), -1);
  EXPECT_FALSE(LockHeld());
}

// Holds: VexoCtrlSDK.h "All multi-byte fields are little-endian."
// Holds: Command codes of VEXOAPI_CommandProc "VEXO_CMD_CHANNEL_MASKS"
// Holds: VexoChannelMasksRecord "Read: all 12 bytes."
TEST_F(Dispatcher, ChannelMasksAreStoredInOrderLittleEndian) {
  PretendBoard(4);
  EXPECT_EQ(Command(VEXO_CMD_CHANNEL_MASKS,
                    {0x01, 0x02, 0x03, 0x04, 0x11, 0x12, 0x13, 0x14, 0x21, 0x22, 0x23, 0x24}),
            0);
  EXPECT_EQ(g_display.live_mask, 0x04030201u);
  EXPECT_EQ(g_display.record_mask, 0x14131211u);
  EXPECT_EQ(g_display.play_mask, 0x24232221u);
}

// Holds: Command codes of VEXOAPI_CommandProc "VEXO_CMD_LIVE_MODE: VexoLiveModeRecord"
// Holds: VexoLiveModeRecord "mode: 4 VEXO_SPLIT_..."
// Holds: VexoLiveModeRecord "channels: 5 channel of each window"
TEST_F(Dispatcher, LiveModeTakesModeAndChannelsFromBytesFourAndFive) {
  StartBoard(4);
  g_display.view = kViewPlayback;
  EXPECT_EQ(Command(VEXO_CMD_LIVE_MODE, {9, 9, 9, 9, VEXO_SPLIT_FULL, 3}), 0);
  EXPECT_EQ(g_display.view, kViewLive);
  EXPECT_EQ(g_display.live_split, VEXO_SPLIT_FULL);
  EXPECT_EQ(Register(0, 1, 0x3D), 0xB0);  // channel 3 fills the screen
}

TEST_F(Dispatcher, LiveModePutsTheViewWordToZeroOnceItsConditionsAreMet) {
  AttachAndBind();
  g_display.g_view_mode = 7;
  EXPECT_EQ(Command(VEXO_CMD_LIVE_MODE, Bytes(24)), -8);
  EXPECT_EQ(CommandNull(VEXO_CMD_LIVE_MODE), -5);
  EXPECT_EQ(g_display.g_view_mode, 7u);
  g_video.g_chip_ready = 1;  // a board of no chips
  EXPECT_EQ(Command(VEXO_CMD_LIVE_MODE, Bytes(24)), 0);
  EXPECT_EQ(g_display.g_view_mode, 0u);
}

TEST_F(Dispatcher, TheViewWordIsSetBeforeTheOperationAsksTheChips) {
  StartBoard(4);
  for (const auto& [code, word] : {std::pair{VEXO_CMD_PLAY_MODE, 1u}, {VEXO_CMD_LIVE_MODE, 0u}}) {
    g_display.g_view_mode = 7;
    std::vector<std::uint32_t> words;
    const test::AtEvents watch([&words](const sim::Event& event, const sim::EventDetail*) {
      if (words.empty() && test::IsBusCycle(event)) words.push_back(g_display.g_view_mode);
    });
    EXPECT_EQ(Command(code, Bytes(kRecordBytes)), 0) << std::hex << code;
    EXPECT_EQ(words, std::vector{word}) << std::hex << code;
  }
}

// ---- 0xF00B, 0xF00C, 0xF00D ------------------------------------------------------------------

// Holds: Command codes of VEXOAPI_CommandProc "VEXO_CMD_BLANK_MASK: VexoMaskRecord"
// Holds: Command codes of VEXOAPI_CommandProc "VEXO_CMD_BIT0_MASK: VexoMaskRecord"
// Holds: VexoMaskRecord "mask: 0 bit n"
TEST_F(Dispatcher, BlankMaskAndBit0MaskSetTheirBitOfEachChannel) {
  PretendBoard(4);
  EXPECT_EQ(Command(VEXO_CMD_BLANK_MASK, {0x05, 0, 0, 0xF0}), 0);
  EXPECT_EQ(Command(VEXO_CMD_BIT0_MASK, {0x06, 0, 0, 0}), 0);
  EXPECT_EQ(Register(0, 1, 0x11), 0x04);
  EXPECT_EQ(Register(0, 1, 0x19), 0x01);
  EXPECT_EQ(Register(0, 1, 0x21), 0x05);
  EXPECT_EQ(Register(0, 1, 0x29), 0x00);
  EXPECT_EQ(g_display.blank_mask.live, 0xF0000005u);
  EXPECT_EQ(g_display.bit0_mask.live, 0x00000006u);
}

// Holds: Result codes "VEXO_ERROR_FAILED: unknown code"
TEST_F(Dispatcher, MasksFailOnABoardWithoutAVariant) {
  PretendBoard(12);
  EXPECT_EQ(Command(VEXO_CMD_BLANK_MASK, Bytes(4)), -1);
  EXPECT_EQ(Command(VEXO_CMD_BIT0_MASK, Bytes(4)), -1);
  EXPECT_EQ(CommandNull(VEXO_CMD_RESTORE_BLANK), -1);
  EXPECT_FALSE(LockHeld());
  EXPECT_EQ(Cycles(), 0u);
}

// Holds: Command codes of VEXOAPI_CommandProc "VEXO_CMD_RESTORE_BLANK: no record"
// Holds: VexoChannelMasksRecord "Bit n stands for channel n."
TEST_F(Dispatcher, RestoreBlankTakesTheFirstMaskInLiveViewAndTheThirdOtherwise) {
  struct Case {
    std::uint8_t view;
    Bytes blank_bits;  // of channels 0 to 3
  };
  PretendBoard(4);
  // Live: channels 0 and 1 shown; recorded: none; playback: channels 1 and 3 shown.
  EXPECT_EQ(Command(VEXO_CMD_CHANNEL_MASKS, {0x03, 0, 0, 0, 0, 0, 0, 0, 0x0A, 0, 0, 0}), 0);
  for (const Case& c : {Case{1, {0, 0, 4, 4}}, Case{2, {4, 0, 4, 0}}, Case{0, {4, 0, 4, 0}}}) {
    g_display.view = c.view;
    EXPECT_EQ(CommandNull(VEXO_CMD_RESTORE_BLANK), 0);
    for (int n = 0; n < 4; ++n) {
      EXPECT_EQ(Register(0, 1, 0x11 + 8 * n), c.blank_bits[static_cast<std::size_t>(n)])
          << "channel " << n << ", view " << +c.view;
    }
  }
}

// ---- 0xF00E, 0xF00F, 0xF011 ------------------------------------------------------------------

class DispatcherMotionSetup : public Dispatcher {
 protected:
  using AccessList = std::vector<test::Access>;

  // Accesses before and after the print of the cell type.
  void Run(const Bytes& record) {
    Mark();
    const std::size_t from = world().trace.Mark();
    EXPECT_EQ(Command(VEXO_CMD_MOTION_SETUP, record), 0);
    std::size_t after = 0;
    const sim::Trace& trace = world().trace;
    for (std::size_t i = from; i < trace.Events().size(); ++i) {
      const auto* debug = trace.As<sim::DebugEvent>(trace.Events()[i]);
      if (debug == nullptr || debug->text.rfind("==>> VEXO MOTDET CELL TYPE", 0) != 0) continue;
      text = debug->text;
      after = sim::DecodeAccesses(trace, i).size();
    }
    const AccessList all = Accesses();
    const auto middle = all.end() - static_cast<std::ptrdiff_t>(after);
    before_print.assign(all.begin(), middle);
    after_print.assign(middle, all.end());
  }

  std::string text;
  AccessList before_print;
  AccessList after_print;
};

// Holds: Command codes of VEXOAPI_CommandProc "VEXO_CMD_MOTION_SETUP"
// Holds: VexoMotionSetupRecord "Read: all 4 bytes."
// Holds: VexoMotionSetupRecord "cell_type: 0 look of the cell boxes"
// Holds: VexoMotionSetupRecord "timing_low: 1 low half of the shared parameter"
// Holds: VexoMotionSetupRecord "timing_high: 2 high half of the shared parameter"
// Holds: VexoMotionSetupRecord "channel: 3 channel shown full screen with its cells"
TEST_F(DispatcherMotionSetup, HidesTheCellsShowsTheChannelAndDrawsItsCells) {
  StartBoard(4);
  // Twice, so that the registers it reads are settled.
  EXPECT_EQ(Command(VEXO_CMD_LIVE_SPLIT, {0, 0, 0, 0, VEXO_SPLIT_FULL, 0, 2}), 0);
  Mark();
  EXPECT_EQ(Command(VEXO_CMD_LIVE_SPLIT, {0, 0, 0, 0, VEXO_SPLIT_FULL, 0, 2}), 0);
  const AccessList split = Accesses();

  Run({1, 5, 7, 2});

  AccessList expected;
  for (int p = 0; p < 4; ++p) {
    expected.push_back(W(0xFF, 2, 0x60 + 8 * p, p));
    expected.push_back(W(0xFF, 2, 0x61 + 8 * p, 0));
  }
  expected.insert(expected.end(), split.begin(), split.end());
  EXPECT_EQ(before_print, expected);

  EXPECT_EQ(text, "==>> VEXO MOTDET CELL TYPE 1 \r\n");

  expected.clear();
  for (int reg = 0x5B; reg <= 0x5E; ++reg) expected.push_back(W(0xFF, 2, reg, 0x75));
  expected.push_back(W(0xFF, 2, 0x5F, 0xAA));
  for (int p = 0; p < 4; ++p) {
    expected.push_back(W(0xFF, 2, 0x60 + 8 * p, p));
    expected.push_back(W(0xFF, 2, 0x61 + 8 * p, p));
  }
  ASSERT_GE(after_print.size(), expected.size());
  EXPECT_EQ(AccessList(after_print.begin(),
                       after_print.begin() + static_cast<std::ptrdiff_t>(expected.size())),
            expected);

  EXPECT_EQ(Register(0, 2, 0x70), 0xA0 | 0x08 | 2);
  EXPECT_EQ(Register(0, 2, 0x71), 0x10 | 0x32);
  EXPECT_EQ(Register(0, 2, 0x72), 0x04);
  EXPECT_EQ(Register(0, 2, 0x73), 0x15);
  EXPECT_EQ(Register(0, 2, 0x74), 0x01);
  EXPECT_EQ(Register(0, 2, 0x75), 0x13);
  EXPECT_FALSE(LockHeld());
}

// Holds: VEXOAPI_CommandProc "It comes back although a part was not done"
TEST_F(DispatcherMotionSetup, GoesOnWhenTheSplitIsRefused) {
  StartBoard(4);
  g_display.view = kViewPlayback;
  Run({0, 3, 3, 1});
  EXPECT_EQ(before_print.size(), 8u);
  EXPECT_EQ(text, "==>> VEXO MOTDET CELL TYPE 0 \r\n");
  EXPECT_EQ(Register(0, 2, 0x68), 0xA0 | 0x08 | 1);
}

// Holds: Command codes of VEXOAPI_CommandProc "VEXO_CMD_MOTION_CLEAR: no record"
TEST_F(Dispatcher, MotionClearHidesTheCells) {
  PretendBoard(4);
  EXPECT_EQ(CommandNull(VEXO_CMD_MOTION_CLEAR), 0);
  std::vector<test::Access> expected;
  for (int p = 0; p < 4; ++p) {
    expected.push_back(W(0xFF, 2, 0x60 + 8 * p, p));
    expected.push_back(W(0xFF, 2, 0x61 + 8 * p, 0));
  }
  EXPECT_EQ(Accesses(), expected);
  EXPECT_FALSE(LockHeld());
}

// Holds: Command codes of VEXOAPI_CommandProc "VEXO_CMD_MOTION_REG"
// Holds: VexoMotionRegRecord "Read: all 3 bytes."
// Holds: VexoMotionRegRecord "channel: 0 channel"
// Holds: VexoMotionRegRecord "high: 1 high half of the value"
// Holds: VexoMotionRegRecord "low: 2 low half of the value"
TEST_F(Dispatcher, MotionRegTakesChannelHighAndLow) {
  PretendBoard(16);
  EXPECT_EQ(Command(VEXO_CMD_MOTION_REG, {13, 0x0B, 0x3C}), 0);
  EXPECT_EQ(Accesses(), std::vector{W(0xC0, 2, 0x6F, 0xBC)});
}

// ---- Without the mutex -----------------------------------------------------------------------

TEST_F(Dispatcher, WithoutAMutexCommandsRunUnserialized) {
  world().faults.Set(sim::Fault::Mutex, true);
  PretendBoard(4);
  EXPECT_EQ(world().faults.Hits(sim::Fault::Mutex), 1u);
  const std::size_t from = world().trace.Mark();
  EXPECT_EQ(Command(VEXO_CMD_MOTION_REG, {1, 2, 3}), 0);
  EXPECT_EQ(test::Texts(world().trace, from, "lock"), Lines{"lock  failed"});
  EXPECT_EQ(test::Texts(world().trace, from, "unlock"), Lines{"unlock  failed"});
  EXPECT_EQ(Accesses(), std::vector{W(0x03, 2, 0x6F, 0x23)});
  EXPECT_EQ(CommandNull(test::kUnknownCommand), -1);
  EXPECT_EQ(CommandNull(VEXO_CMD_STOP_MONITOR), 0);
}

}  // namespace
