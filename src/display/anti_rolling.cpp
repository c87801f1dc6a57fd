#include "display/anti_rolling.h"

#include "chip/register_bus.h"
#include "display/display_state.h"

namespace {

constexpr unsigned kSettlePolls = 200;
constexpr std::uint32_t kSettlePauseMs = 5;

constexpr std::uint8_t kDisplayKept = 0xFC;      // on hold: all but the position
constexpr std::uint8_t kDisplayReleased = 0x2C;  // on release: what of the channel stays

// The low nibbles of all chips' settle status, ORed.
std::uint8_t ReadSettleStatus() {
  std::uint8_t busy = 0;
  for (std::uint8_t p = 0; p < g_video.chip_count; ++p) {
    const std::uint8_t status = Read(kChipByPosition[p], kSettleStatus);
    busy = static_cast<std::uint8_t>(busy | (status & kSettleBits));
  }
  return busy;
}

}  // namespace

bool WaitUntilSettled(unsigned max_polls) {
  for (unsigned poll = 1; ReadSettleStatus() != 0; ++poll) {
    if (max_polls != kPollWithoutLimit && poll == max_polls) return false;
    Plat_Wait(g_display.wait_event, kSettlePauseMs);
  }
  return true;
}

void TW_ApplyAntiRolling() {
  for (unsigned i = 0; i < kChannelsPerChip; ++i) {
    // The master speaks for all: a broadcast read would set the chips against each other.
    const std::uint8_t old = Read(kChipMaster, kChannelDisplay, i);
    Write(kChipAll, kChannelDisplay, i,
          static_cast<std::uint8_t>((old & kDisplayKept) | kDisplayHold | i));
  }
  if (!WaitUntilSettled(kSettlePolls)) {
    // Quirk: the text is spelled so; hosts may look for it.
    Plat_KernelDebugOutput(u"<VEXOCtrlSDK.DLL> : ERROR : fail to apply anti-rolling !!! \r\n");
  }
}

void TW_ReleaseAntiRolling() {
  for (std::uint8_t p = 0; p < g_video.chip_count; ++p) {
    for (unsigned i = 0; i < kChannelsPerChip; ++i) {
      const std::uint8_t old = Read(kChipByPosition[p], kChannelDisplay, i);
      Write(
          kChipByPosition[p], kChannelDisplay, i,
          static_cast<std::uint8_t>((old & kDisplayReleased) | kDisplayEnable | kDisplayFront | i));
    }
  }
}
