#include "text/back_end_text.h"

#include <array>

#include "VexoCtrlSDK.h"
#include "report/diagnostics.h"
#include "report/host_messages.h"

BackEndState g_back_end;

namespace {

constexpr const char16_t* kDriverName = u"VBE1:";

// ---- Requests -----------------------------------------------------------------------------------

// A 32-bit slot of an input record: a number of the line, cut to a byte or made 0 or 1 or left
// whole, or zero. Numbers count from 1, as typed.
struct Slot {
  enum class Kind : std::uint8_t { kZero, kWhole, kByte, kFlag };
  Kind kind;
  std::uint8_t number;
};
constexpr Slot kZero = {Slot::Kind::kZero, 0};
constexpr Slot Whole(std::uint8_t number) { return {Slot::Kind::kWhole, number}; }
constexpr Slot Byte(std::uint8_t number) { return {Slot::Kind::kByte, number}; }
constexpr Slot Flag(std::uint8_t number) { return {Slot::Kind::kFlag, number}; }

constexpr std::uint8_t kSlotsMax = 10;
constexpr std::uint8_t kSlotBytes = 4;

// Control codes that are no request.
constexpr std::uint32_t kOpenDriver = 1;
constexpr std::uint32_t kCloseDriver = 2;

struct BackEndCommand {
  const char* pattern;
  std::uint32_t code;
  std::uint8_t input_bytes;
  Slot slots[kSlotsMax];
};

// Quirk: the slot orders are the driver's; they are not the order typed.
constexpr std::array kBackEndCommands = {
    BackEndCommand{"init", kOpenDriver, 0, {}},
    BackEndCommand{"uninit", kCloseDriver, 0, {}},
    BackEndCommand{"trans on", 0x224800, 0, {}},
    BackEndCommand{"trans off", 0x224804, 0, {}},
    BackEndCommand{"blen on LEVEL", 0x224808, 1, {Byte(1)}},
    BackEndCommand{"blen off", 0x22480C, 0, {}},
    BackEndCommand{"setp A B C D E F G H I J",
                   0x224810,
                   40,
                   {Whole(1), Whole(2), Whole(7), Whole(8), Whole(9), Whole(10), Whole(3), Whole(4),
                    Whole(5), Whole(6)}},
    BackEndCommand{"default", 0x224814, 0, {}},
    BackEndCommand{"setp_base A B", 0x224828, 40, {Whole(1), Whole(2)}},
    BackEndCommand{
        "setp_vdo A B C D",
        0x22482C,
        40,
        {kZero, kZero, kZero, kZero, kZero, kZero, Whole(1), Whole(2), Whole(3), Whole(4)}},
    BackEndCommand{
        "setp_bmp A B C D", 0x224830, 40, {kZero, kZero, Whole(1), Whole(2), Whole(3), Whole(4)}},
    BackEndCommand{"set_osd A B C D E F",
                   0x224850,
                   24,
                   {Whole(1), Whole(2), Whole(3), Whole(4), Whole(5), Whole(6)}},
    BackEndCommand{"set_vdownd A B C D", 0x224854, 16, {Whole(1), Whole(2), Whole(3), Whole(4)}},
    BackEndCommand{"set_bmpwnd A B", 0x224858, 8, {Whole(1), Whole(2)}},
    BackEndCommand{"set_wndcfg A B C D E F G H",
                   0x22485C,
                   40,
                   {kZero, kZero, Whole(2), Whole(3), Whole(4), Whole(5), Whole(6), Whole(7),
                    Whole(8), Byte(1)}},
    BackEndCommand{"set_bmpcfg A B C D E F G H",
                   0x224860,
                   32,
                   {Byte(2), Byte(3), Byte(4), Byte(5), Byte(6), Byte(7), Byte(8), Byte(1)}},
    BackEndCommand{"set_curcfg A B C D E F G H",
                   0x224864,
                   32,
                   {Byte(1), Byte(2), Byte(3), Byte(4), Byte(5), Byte(6), Byte(7), Byte(8)}},
    BackEndCommand{"set_wndenable WINDOW ON", 0x224868, 8, {Byte(1), Flag(2)}},
    BackEndCommand{"set_wndpos WINDOW X Y", 0x22486C, 12, {Byte(1), Byte(2), Byte(3)}},
    BackEndCommand{"set_wndsize WINDOW WIDTH HEIGHT", 0x224878, 12, {Byte(1), Byte(2), Byte(3)}},
};

const char* BackEndPattern(std::uint8_t i) { return kBackEndCommands[i].pattern; }

std::uint32_t ValueOf(const Slot& slot, const TextNumbers& numbers) {
  switch (slot.kind) {
    case Slot::Kind::kWhole:
      return numbers.value[slot.number - 1];
    case Slot::Kind::kByte:
      return numbers.U8(slot.number - 1u);
    case Slot::Kind::kFlag:
      return numbers.U8(slot.number - 1u) != 0 ? 1 : 0;
    case Slot::Kind::kZero:
      break;
  }
  return 0;
}

// ---- The driver ---------------------------------------------------------------------------------

void OpenDriver() {
  if (g_back_end.driver != kPlatNoHandle) {
    VexoSDK_SendHostMessage(VEXO_MSG_STATUS, VEXO_STATUS_VBE_ALREADY_OPEN, 0);
    return;
  }
  g_back_end.driver =
      Plat_OpenDriver(kDriverName, kPlatReadWrite, kPlatNoSharing, kPlatOpenExisting);
  if (g_back_end.driver == kPlatInvalidHandle) {
    // Quirk: the invalid handle is kept, so that a second open answers "already open".
    VexoSDK_SendHostMessage(VEXO_MSG_STATUS, VEXO_STATUS_VBE_OPEN_FAILED, 0);
  }
}

void CloseDriver() {
  if (g_back_end.driver == kPlatNoHandle) return;
  Plat_CloseDriver(g_back_end.driver);
  g_back_end.driver = kPlatNoHandle;
}

void SendRequest(const BackEndCommand& command, const TextNumbers& numbers) {
  if (g_back_end.driver == kPlatNoHandle) return;
  alignas(4) std::uint8_t input[kSlotsMax * kSlotBytes];  // the driver reads it word by word
  for (std::size_t i = 0; i < sizeof input; ++i) {
    const std::uint32_t value = ValueOf(command.slots[i / kSlotBytes], numbers);
    input[i] = static_cast<std::uint8_t>(value >> (8 * (i % kSlotBytes)));
  }
  Plat_ControlDriver(g_back_end.driver, command.code, command.input_bytes == 0 ? nullptr : input,
                     command.input_bytes);
}

}  // namespace

const TextGrammar kBackEndGrammar = {
    kBackEndHeader, static_cast<std::uint8_t>(kBackEndCommands.size()), BackEndPattern};

std::int32_t VPB_ParseText(const char* line) {
  TextMatch match;
  TextResult result = ReadKeyword(kBackEndGrammar, line, match);
  if (result == TextResult::kWrongHeader) {
    VexoDbg_Print(u">> Parse VPB TEXT Not Found Header!\r\n");
  }
  if (result != TextResult::kMatched) return 0;
  if (ReadArguments(kBackEndGrammar, match) != TextResult::kMatched) return 0;

  const BackEndCommand& command = kBackEndCommands[match.row];
  if (command.code == kOpenDriver) {
    OpenDriver();
  } else if (command.code == kCloseDriver) {
    CloseDriver();
  } else {
    SendRequest(command, match.numbers);
  }
  return match.tokens;
}
