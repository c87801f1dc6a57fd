#include "setup/video_detection.h"

#include "chip/register_bus.h"
#include "chip/video_state.h"
#include "motion/motion_state.h"
#include "report/diagnostics.h"

VideoDetectState g_video_detect;

namespace {

std::uint8_t ReadChannelStandard(std::uint8_t position, unsigned c) {
  const std::uint8_t status = Read(kChipByPosition[position], kInputStatus, c);
  return (status & kInputIsNtsc) != 0 ? kStandardNtsc : kStandardPal;
}

constexpr bool BitIsSet(unsigned bits, unsigned n) { return ((bits >> n) & 1u) != 0; }

// Four bits of a chip at their place in a channel mask.
constexpr std::uint32_t ChipBits(unsigned bits, std::uint8_t position) {
  return static_cast<std::uint32_t>(bits & 0x0Fu) << (kChannelsPerChip * position);
}

const char16_t* StandardText(std::uint8_t standard) {
  if (standard == kStandardNtsc) return u"[NTSC]\r\n";
  if (standard == kStandardPal) return u"[PAL]\r\n";
  return u"[ALL LOSS]\r\n";
}

}  // namespace

void TW_DetectVideoStandard() {
  std::uint8_t status[kChipsMax] = {};
  for (std::uint8_t p = 0; p < g_video.chip_count; ++p) {
    // Read before the loss status, its value dropped.
    Read(kChipByPosition[p], kEventStatus);
    status[p] = Read(kChipByPosition[p], kLossStatus);
  }

  VideoDetectState& detect = g_video_detect;
  detect.ntsc_count = 0;
  detect.pal_count = 0;
  for (std::uint8_t p = 0; p < g_video.chip_count; ++p) {
    // Quirk: added to what is there; only TW_ReadVideoDetect starts the mask anew. And only the low
    // nibble counts here.
    g_video.g_vid_loss_mask |= ChipBits(status[p], p);
    for (unsigned c = 0; c < kChannelsPerChip; ++c) {
      std::uint8_t& standard = detect.channel_standard[kChannelsPerChip * p + c];
      if (BitIsSet(status[p], c)) {
        standard = kStandardNone;
        continue;
      }
      standard = ReadChannelStandard(p, c);
      ++(standard == kStandardNtsc ? detect.ntsc_count : detect.pal_count);
    }
  }

  if (detect.ntsc_count > detect.pal_count) {
    g_video.video_standard = kStandardNtsc;
  } else if (detect.ntsc_count < detect.pal_count) {
    g_video.video_standard = kStandardPal;
  } else {
    // Quirk: a tie goes to neither; the stored setting decides.
    VexoDbg_Print(u"\r\n VIDEO DET : %d %d \r\n", detect.ntsc_count, detect.pal_count);
    g_video.video_standard = kStandardNone;
  }
  VexoDbg_Print(u"\r\n g_vid_loss_mask : %04X SYSTEM : ", g_video.g_vid_loss_mask);
  VexoDbg_Print(StandardText(g_video.video_standard));
}

void TW_ReadVideoDetect(VideoDetectRecord* record) {
  VideoDetectState& detect = g_video_detect;
  detect.previous_loss_mask = g_video.g_vid_loss_mask;
  g_video.g_vid_loss_mask = 0;

  std::uint8_t status[kChipsMax] = {};
  for (std::uint8_t p = 0; p < g_video.chip_count; ++p) {
    status[p] = Read(kChipByPosition[p], kLossStatus);
    g_video.g_vid_loss_mask |= ChipBits(status[p], p);
  }
  for (std::uint8_t p = 0; p < g_video.chip_count; ++p) {
    // Quirk: either nibble makes a channel lost; only the high one makes its standard "no video".
    const auto high = static_cast<std::uint8_t>(status[p] >> 4);
    g_video.g_vid_loss_mask |= ChipBits(high, p);
    for (unsigned c = 0; c < kChannelsPerChip; ++c) {
      record->standard[kChannelsPerChip * p + c] =
          BitIsSet(high, c) ? kStandardNone : ReadChannelStandard(p, c);
    }
  }

  if (detect.first_read != 0) {
    detect.first_read = 0;
  } else if (g_video.g_vid_loss_mask != detect.previous_loss_mask) {
    VexoDbg_Print(u">> VIDEO LOSS DETECT 0x%08X\r\n", g_video.g_vid_loss_mask);
  }
  record->loss_mask = g_video.g_vid_loss_mask;
}

std::uint32_t TW_ReadMotionStatus() {
  if (g_motion.ready == 0) return 0;
  std::uint32_t mask = 0;
  for (std::uint8_t p = 0; p < g_video.chip_count; ++p) {
    mask |= ChipBits(Read(kChipByPosition[p], kMotionStatus), p);
  }
  return mask;
}

std::uint8_t TW_ReadStatusFlags() { return Read(kChipMaster, kStatusFlags) & kStatusFlagBits; }

std::uint8_t TW_ReadStatusRef() { return Read(kChipMaster, kStatusRef) & kStatusRefEdge; }

void VexoProc_ReadVideoDetect(VideoDetectRecord* record) {
  if (g_video.g_chip_ready == 1) TW_ReadVideoDetect(record);
}

std::uint32_t VexoProc_ReadMotionStatus() {
  return g_video.g_chip_ready == 1 ? TW_ReadMotionStatus() : 0u;
}
