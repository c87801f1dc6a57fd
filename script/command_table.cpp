#include "script/command_table.h"

#include <algorithm>
#include <array>
#include <type_traits>

#include "VexoCtrlSDK.h"

namespace script {
namespace {

// ---- Records ------------------------------------------------------------------------------------

// Offset, width and count of a record's member.
template <typename T>
constexpr std::size_t kCount = 1;
template <typename T, std::size_t kElements>
constexpr std::size_t kCount<T[kElements]> = kElements;

#define MEMBER(record, member)                                                      \
  offsetof(record, member), sizeof(std::remove_extent_t<decltype(record::member)>), \
      kCount<decltype(record::member)>

constexpr std::array kSplits = {
    NamedValue{"full", VEXO_SPLIT_FULL}, NamedValue{"4", VEXO_SPLIT_4},
    NamedValue{"6", VEXO_SPLIT_6},       NamedValue{"8", VEXO_SPLIT_8},
    NamedValue{"9", VEXO_SPLIT_9},       NamedValue{"13", VEXO_SPLIT_13},
    NamedValue{"16", VEXO_SPLIT_16},
};
// Those that need no switch into playback.
constexpr std::array kPlaySplits = {
    NamedValue{"full", VEXO_SPLIT_FULL},
    NamedValue{"4", VEXO_SPLIT_4},
    NamedValue{"9", VEXO_SPLIT_9},
    NamedValue{"16", VEXO_SPLIT_16},
};
constexpr std::array kStandards = {
    NamedValue{"ntsc", VEXO_VIDEO_NTSC},
    NamedValue{"pal", VEXO_VIDEO_PAL},
    NamedValue{"none", VEXO_VIDEO_NONE},
};
constexpr std::array kChips = {
    NamedValue{"master", VEXO_CHIP_MASTER}, NamedValue{"slave1", VEXO_CHIP_SLAVE1},
    NamedValue{"slave2", VEXO_CHIP_SLAVE2}, NamedValue{"slave3", VEXO_CHIP_SLAVE3},
    NamedValue{"all", VEXO_CHIP_ALL},
};
constexpr std::span<const NamedValue> kOneChip = std::span(kChips).first<VEXO_MAX_CHIPS>();

constexpr std::uint32_t kLastChannel = VEXO_MAX_CHANNELS - 1;
constexpr std::uint32_t kLastPage = 2;
constexpr std::uint32_t kNoLimit = std::numeric_limits<std::uint32_t>::max();

using enum FieldKind;
using enum Flow;

constexpr std::string_view kWindowList = "channel of each window, 0-15; others show nothing";

constexpr std::array kInitFields = {
    RecordField{"reserved1", MEMBER(VexoInitRecord, reserved1), Number, In, "passed on, ignored"},
    RecordField{"reserved2", MEMBER(VexoInitRecord, reserved2), Number, In, "passed on, ignored"},
    RecordField{"chip-count", MEMBER(VexoInitRecord, chip_count), Number, Out,
                "chips found, four channels each"},
    RecordField{"video-standard", MEMBER(VexoInitRecord, video_standard), Choice, Out,
                "another stored byte counts as pal", kStandards},
    RecordField{"chip-id", MEMBER(VexoInitRecord, chip_id), Bytes, Out,
                "identification of master, slave 1, 2, 3"},
};
constexpr std::array kReadRegFields = {
    RecordField{"chip", MEMBER(VexoRegRecord, chip_select), Choice, In, "which chip", kOneChip,
                kNoLimit, "no single chip is selected"},
    RecordField{"page",
                MEMBER(VexoRegRecord, page),
                Number,
                In,
                "register page",
                {},
                kLastPage,
                "nothing is read, the value is 0"},
    RecordField{"reg", MEMBER(VexoRegRecord, reg), Byte, In, "register number"},
    RecordField{"value", MEMBER(VexoRegRecord, value), Byte, Out,
                "what it reads; 0 while the chips are not ready"},
};
constexpr std::array kWriteRegFields = {
    RecordField{"chip", MEMBER(VexoRegRecord, chip_select), Choice, In, "which chips", kChips,
                kNoLimit, "no chip is selected"},
    RecordField{"page",
                MEMBER(VexoRegRecord, page),
                Number,
                In,
                "register page",
                {},
                kLastPage,
                "nothing is written"},
    RecordField{"reg", MEMBER(VexoRegRecord, reg), Byte, In, "register number"},
    RecordField{"value", MEMBER(VexoRegRecord, value), Byte, In,
                "to write; nothing is written while the chips are not ready"},
};
constexpr std::array kLiveSplitFields = {
    RecordField{"mode", MEMBER(VexoSplitRecord, mode), Choice, In, "how many pictures", kSplits},
    RecordField{"channels", MEMBER(VexoSplitRecord, channels), Channels, In, kWindowList},
};
constexpr std::array kPlaySplitFields = {
    RecordField{"mode", MEMBER(VexoSplitRecord, mode), Choice, In,
                "how many pictures; play-mode lays out the others", kPlaySplits},
    RecordField{"option", MEMBER(VexoSplitRecord, option), Number, In,
                "other than 0: mode full fills the screen, else the picture is centred"},
    RecordField{"channels", MEMBER(VexoSplitRecord, channels), Channels, In, kWindowList},
};
constexpr std::array kMotionMaskFields = {
    RecordField{"channel", MEMBER(VexoMotionMaskRecord, channel), Number, In,
                "below the board's channel count"},
    RecordField{"level",
                MEMBER(VexoMotionMaskRecord, level),
                Number,
                In,
                "sensitivity",
                {},
                3,
                "the chip keeps its level"},
    RecordField{"mask", MEMBER(VexoMotionMaskRecord, mask), Bytes, InOut,
                "12 rows of 16 cells, two bytes a row; comes back as the chip has it"},
};
constexpr std::array kChannelMasksFields = {
    RecordField{"live-display", MEMBER(VexoChannelMasksRecord, live_display), Mask, In,
                "channels shown in live display"},
    RecordField{"record", MEMBER(VexoChannelMasksRecord, record), Mask, In,
                "channels that are recorded"},
    RecordField{"play-display", MEMBER(VexoChannelMasksRecord, play_display), Mask, In,
                "channels shown in playback"},
};
constexpr std::array kLiveModeFields = {
    RecordField{"mode", MEMBER(VexoLiveModeRecord, mode), Choice, In, "how many pictures", kSplits,
                kNoLimit, "live pictures are shown, their split is not laid out"},
    RecordField{"channels", MEMBER(VexoLiveModeRecord, channels), Channels, In, kWindowList},
};
constexpr std::array kPlayModeFields = {
    RecordField{"mode", MEMBER(VexoPlayModeRecord, mode), Choice, In, "how many pictures", kSplits,
                kNoLimit, "recorded pictures are shown, their split is not laid out"},
    RecordField{"channels", MEMBER(VexoPlayModeRecord, channels), Channels, In, kWindowList},
};
constexpr std::array kBlankMaskFields = {
    RecordField{"mask", MEMBER(VexoMaskRecord, mask), Mask, In, "channels that are black"},
};
constexpr std::array kBit0MaskFields = {
    RecordField{"mask", MEMBER(VexoMaskRecord, mask), Mask, In,
                "channels whose attribute has bit 0"},
};
constexpr std::array kMotionSetupFields = {
    RecordField{"cell-type",
                MEMBER(VexoMotionSetupRecord, cell_type),
                Number,
                In,
                "look of the cell boxes",
                {},
                4,
                "they look as with 0"},
    RecordField{"timing-low",
                MEMBER(VexoMotionSetupRecord, timing_low),
                Number,
                In,
                "low half of the shared parameter",
                {},
                11,
                "it is 3"},
    RecordField{"timing-high",
                MEMBER(VexoMotionSetupRecord, timing_high),
                Number,
                In,
                "high half of the shared parameter",
                {},
                11,
                "it is 9"},
    RecordField{"channel",
                MEMBER(VexoMotionSetupRecord, channel),
                Number,
                In,
                "shown full screen with its cells",
                {},
                kLastChannel,
                "no picture is shown"},
};
constexpr std::array kMotionRegFields = {
    RecordField{"channel",
                MEMBER(VexoMotionRegRecord, channel),
                Number,
                In,
                "whose box",
                {},
                kLastChannel,
                "nothing is written"},
    RecordField{"high",
                MEMBER(VexoMotionRegRecord, high),
                Number,
                In,
                "high half of the value",
                {},
                15,
                "it is cut to four bits"},
    RecordField{"low",
                MEMBER(VexoMotionRegRecord, low),
                Number,
                In,
                "low half of the value",
                {},
                15,
                "it is cut to four bits"},
};
#undef MEMBER

// ---- Results ------------------------------------------------------------------------------------

constexpr std::string_view kNoLayout = "no layout fits the board (12 channels)";

constexpr std::array kInitResults = {
    ResultWords{VEXO_ERROR_FAILED, "", "no chip answers; the lock stays held"},
    ResultWords{VEXO_ERROR_PARAMETER, "", "the command needs a record; the lock stays held"},
};
constexpr std::array kLiveSplitResults = {
    ResultWords{VEXO_ERROR_FAILED, "mode", kBoardLacks},
    ResultWords{VEXO_ERROR_FAILED, "mode", "playback is shown"},
};
constexpr std::array kPlaySplitResults = {
    ResultWords{VEXO_ERROR_FAILED, "mode", kBoardLacks},
    ResultWords{VEXO_ERROR_FAILED, "mode", "live pictures are shown"},
};
constexpr std::array kMotionMaskResults = {
    ResultWords{VEXO_ERROR_PARAMETER, "channel", "the board has no such channel"},
};
constexpr std::array kPlayModeResults = {
    ResultWords{VEXO_ERROR_NOT_READY, "",
                "not ready: not attached, no window, chips not initialized, or 12 channels, which "
                "no layout fits"},
};
constexpr std::array kMaskResults = {
    ResultWords{VEXO_ERROR_FAILED, "", kNoLayout},
};

// ---- The table ----------------------------------------------------------------------------------

#define DUMP(chip, name, page)                                  \
  CommandKind {                                                 \
    VEXO_CMD_DUMP_##chip##_P##page, "dump-" name "-p" #page,    \
        "prints page " #page " of " name " to the debug output" \
  }

constexpr std::array kCommands = {
    CommandKind{VEXO_CMD_INIT, "init", "detects and initializes the chips, starts the monitor",
                kInitFields, kInitResults},
    CommandKind{VEXO_CMD_STOP_MONITOR, "stop-monitor", "stops the worker thread"},
    CommandKind{VEXO_CMD_READ_REG, "read-reg", "reads a register, and tells the host its value",
                kReadRegFields},
    CommandKind{VEXO_CMD_WRITE_REG, "write-reg", "writes a register", kWriteRegFields},
    CommandKind{VEXO_CMD_LIVE_SPLIT, "live-split", "lays out live pictures", kLiveSplitFields,
                kLiveSplitResults},
    CommandKind{VEXO_CMD_PLAY_SPLIT, "play-split", "lays out recorded pictures", kPlaySplitFields,
                kPlaySplitResults},
    CommandKind{VEXO_CMD_MOTION_MASK, "motion-mask", "sets and keeps the motion cells of a channel",
                kMotionMaskFields, kMotionMaskResults},
    CommandKind{VEXO_CMD_CHANNEL_MASKS, "channel-masks", "which channels are shown and recorded",
                kChannelMasksFields},
    CommandKind{VEXO_CMD_LIVE_MODE, "live-mode", "shows live pictures", kLiveModeFields},
    CommandKind{VEXO_CMD_PLAY_MODE, "play-mode", "shows recorded pictures", kPlayModeFields,
                kPlayModeResults},
    CommandKind{VEXO_CMD_BLANK_MASK, "blank-mask", "blanks channels", kBlankMaskFields,
                kMaskResults},
    CommandKind{VEXO_CMD_BIT0_MASK, "bit0-mask", "sets bit 0 of channels' attributes",
                kBit0MaskFields, kMaskResults},
    CommandKind{VEXO_CMD_RESTORE_BLANK,
                "restore-blank",
                "blanks what channel-masks leaves out",
                {},
                kMaskResults},
    CommandKind{VEXO_CMD_MOTION_SETUP, "motion-setup", "shows the motion cells of a channel",
                kMotionSetupFields},
    CommandKind{VEXO_CMD_MOTION_CLEAR, "motion-clear", "hides the motion cells"},
    CommandKind{VEXO_CMD_MOTION_MASK_PREVIEW, "motion-mask-preview",
                "sets the motion cells of a channel without keeping them", kMotionMaskFields,
                kMotionMaskResults},
    CommandKind{VEXO_CMD_MOTION_REG, "motion-reg", "sets the colour of a channel's cells",
                kMotionRegFields},
    DUMP(MASTER, "master", 0),
    DUMP(SLAVE1, "slave1", 0),
    DUMP(SLAVE2, "slave2", 0),
    DUMP(SLAVE3, "slave3", 0),
    DUMP(MASTER, "master", 1),
    DUMP(SLAVE1, "slave1", 1),
    DUMP(SLAVE2, "slave2", 1),
    DUMP(SLAVE3, "slave3", 1),
    DUMP(MASTER, "master", 2),
    DUMP(SLAVE1, "slave1", 2),
    DUMP(SLAVE2, "slave2", 2),
    DUMP(SLAVE3, "slave3", 2),
};
#undef DUMP

}  // namespace

const RecordField* CommandKind::Find(std::string_view field) const {
  for (const RecordField& one : fields) {
    if (one.name == field) return &one;
  }
  return nullptr;
}

std::span<const CommandKind> Commands() { return kCommands; }

const CommandKind* FindCommand(std::string_view name) {
  for (const CommandKind& command : kCommands) {
    if (command.name == name) return &command;
  }
  return nullptr;
}

const CommandKind* FindCommand(std::uint32_t code) {
  for (const CommandKind& command : kCommands) {
    if (command.code == (code & 0xFFFF)) return &command;
  }
  return nullptr;
}

std::span<const std::string_view> CommandNames() {
  static constexpr auto kNames = [] {
    std::array<std::string_view, kCommands.size()> names;
    std::transform(kCommands.begin(), kCommands.end(), names.begin(),
                   [](const CommandKind& one) { return one.name; });
    return names;
  }();
  return kNames;
}

}  // namespace script
