#include "setup/initialization.h"

#include <cstring>

#include "VexoCtrlSDK.h"
#include "chip/register_bus.h"
#include "chip/video_state.h"
#include "display/display_state.h"
#include "display/live_mode.h"
#include "display/record_path.h"
#include "display/window_tables.h"
#include "motion/motion_detect.h"
#include "motion/motion_state.h"
#include "report/diagnostics.h"
#include "report/host_messages.h"
#include "setup/camera_driver.h"
#include "setup/host_version.h"
#include "setup/init_tables.h"
#include "setup/stored_settings.h"
#include "setup/video_detection.h"

namespace {

constexpr std::uint32_t kLiveSettleMs = 240;
constexpr std::uint32_t kCameraSettleMs = 500;

constexpr std::uint8_t kMotionLevelDefault = 1;
constexpr std::uint8_t kOutputModeLive = 0x45;

// Hosts with this second number in their version (1.5.x.x) expect a different cascade adjustment.
constexpr std::uint16_t kAdjustedHostVersion = 5;
constexpr std::uint8_t kCascadeAdjusted = 0x20;

// Takes over what is stored. Quirk: the stored standard overrides the detected one; a channel count
// that differs is only told. Quirk: the texts are spelled so; hosts may look for them.
void ReconcileStoredSettings() {
  const StoredSettings stored = ReadStoredSettings({g_video.video_standard, g_video.max_channel});
  if (stored.max_channel != g_video.max_channel) {
    VexoDbg_Print(u">>Invalide MAX CHANNEL INFO!\r\n");
  }
  if (stored.video_standard != g_video.video_standard) {
    VexoDbg_Print(u">>Invalide VIDEO SIGNAL INFO!\r\n");
    g_video.video_standard = stored.video_standard;
  }
  g_video.report.video_standard = g_video.video_standard;
}

void AdjustForHostVersion() {
  if (TW_GetHostAppVersion() != kAdjustedHostVersion) return;
  for (std::uint8_t p = 0; p < g_video.chip_count; ++p) {
    const std::uint8_t old = Read(kChipByPosition[p], kCascadeAdjust);
    Write(kChipByPosition[p], kCascadeAdjust,
          static_cast<std::uint8_t>((old & ~kCascadeAdjustStep) | kCascadeAdjusted));
  }
}

void SetMotionDefaults() {
  std::memset(g_motion.level, kMotionLevelDefault, sizeof g_motion.level);
  std::memset(g_motion.mask, 0xFF, sizeof g_motion.mask);
}

std::uint8_t DefaultSplitMode() {
  if (g_video.max_channel == 4) return VEXO_SPLIT_4;
  if (g_video.max_channel == 8) return VEXO_SPLIT_9;
  return VEXO_SPLIT_16;
}

void PrintStandard() {
  if (g_video.video_standard == kStandardNtsc) {
    VexoDbg_Print(u">> FINISH NTSC CAMERA!!\r\n");
  } else if (g_video.video_standard == kStandardPal) {
    VexoDbg_Print(u">> FINISH PAL CAMERA!!\r\n");
  } else {
    VexoDbg_Print(u">> FINISH LOSS CAMERA!!\r\n");
  }
}

void ShowLive() {
  VexoLiveModeRecord record = {};
  record.mode = g_video.default_live_split;
  for (std::uint8_t n = 0; n < kChannelsMax; ++n) record.channels[n] = n;
  TW_SetLiveModeInfo(&record);
}

void ReportSuccess(std::int32_t channels) {
  VexoDbg_Print(u">>NEXT TW_InitializeSetup MAX CH %d\r\n", channels);
  VexoSDK_PostHostMessage(VEXO_MSG_INIT_RESULT, reinterpret_cast<std::uintptr_t>(&g_video.report),
                          0);
  VideoDetectRecord detect = {};
  VexoProc_ReadVideoDetect(&detect);
  VexoSDK_SendHostMessage(VEXO_MSG_VIDEO_INFO, reinterpret_cast<std::uintptr_t>(&detect), 0);
}

void ReportFailure(const char16_t* text, std::uint32_t status) {
  VexoDbg_Print(text);
  VexoSDK_PostHostMessage(VEXO_MSG_STATUS, status, 0);
}

}  // namespace

std::uint8_t TW_DetectChips() {
  // Quirk: chips are counted, not placed: a gap in the fitting is not compensated, every loop over
  // chips takes the first ones.
  std::uint8_t count = 0;
  for (std::uint8_t p = 0; p < kChipsMax; ++p) {
    const std::uint8_t id = Read(kChipByPosition[p], kChipId);
    g_video.report.chip_id[p] = id;
    g_video.chip_present[p] = (id & kChipIdFamily) == kChipIdTw2835 ? 1 : 0;
    count = static_cast<std::uint8_t>(count + g_video.chip_present[p]);
  }
  g_video.chip_count = count;
  g_video.max_channel = static_cast<std::uint8_t>(count * kChannelsPerChip);
  g_video.report.chip_count = count;
  return count;
}

std::uint32_t TW_GetChipPresence() {
  std::uint32_t flags = 0;
  for (unsigned p = 0; p < kChipsMax; ++p) {
    flags |= static_cast<std::uint32_t>(g_video.chip_present[p]) << (8 * p);
  }
  return flags;
}

std::int32_t TW_InitializeSetup(std::uint16_t /*reserved1*/, std::uint16_t /*reserved2*/) {
  // Quirk: a new event every time; the one before stays open.
  g_display.wait_event = Plat_CreateEvent(nullptr, false, false);
  TW_ReleaseChip(kChipAll);
  g_video.broadcast_select = kChipAll;
  // Quirk: chips that were ready stay ready, though none answers any more.
  if (TW_DetectChips() == 0) return kInitNoChip;
  TW_DetectVideoStandard();
  ReconcileStoredSettings();

  TW_InitPage0Tables();
  TW_InitPage1Tables();
  TW_InitPage2Tables();
  AdjustForHostVersion();
  VexoDbg_Print(u">> TW2835 Initialize Complete!\r\n");

  SetMotionDefaults();
  TW_InitMotionDetect();
  g_video.default_live_split = DefaultSplitMode();
  g_video.default_play_split = DefaultSplitMode();
  TW_BuildLiveLayout();
  TW_BuildPlayLayout();
  PrintStandard();

  Write(kChipMaster, kOutputMode, kOutputModeLive);
  ShowLive();
  Plat_Sleep(kLiveSettleMs);
  TW_SetRecordSetupDefault(0);
  TW_InitMotionDetect();

  g_video.g_chip_ready = 1;
  g_display.view = kViewLive;
  return g_video.max_channel;
}

void ReportInitialization(std::int32_t result) {
  if (result == kInitNoChip) {
    ReportFailure(u">>DETECT DEVICE ERROR TW_InitializeSetup\r\n", VEXO_STATUS_DETECT_ERROR);
  } else if (result == kInitDeviceProblem) {
    ReportFailure(u">>DEVICE PROBLEM ERROR TW_InitializeSetup\r\n", VEXO_STATUS_DEVICE_PROBLEM);
  } else if (result == 0) {
    ReportFailure(u">>NOT DETECT ERROR TW_InitializeSetup\r\n", VEXO_STATUS_NOT_DETECTED);
  } else {
    ReportSuccess(result);
  }
}

void VexoProc_Initialize(std::uint16_t argument1, std::uint16_t argument2) {
  if (g_bus.select == nullptr || g_bus.address == nullptr || g_bus.data == nullptr) {
    VexoDbg_Print(u">>ERROR NULL REGISTER VexoProc_Initialize!!\r\n");
    return;
  }
  VexoDbg_Print(u">>VEXO INIT INFO %d %d  \r\n", argument1, argument2);
  VexoProc_CameraControl(0);
  Plat_Sleep(kCameraSettleMs);
  const std::int32_t result = TW_InitializeSetup(argument1, argument2);
  Plat_Sleep(kCameraSettleMs);
  VexoProc_CameraControl(1);
  VexoDbg_Print(u">>VEXO INIT NEW !!! \r\n");

  ReportInitialization(result);
}
