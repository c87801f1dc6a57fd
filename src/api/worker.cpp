#include "api/worker.h"

#include "VexoCtrlSDK.h"
#include "chip/registers.h"
#include "report/diagnostics.h"
#include "report/host_messages.h"
#include "setup/video_detection.h"

WorkerState g_worker;

namespace {

constexpr std::uint32_t kExitStarted = 0xF0000001u;
constexpr std::uint32_t kExitNoBlock = 0xFF00FF00u;
constexpr std::uint32_t kExitTerminated = 0xFFFF0000u;

constexpr std::uint32_t kStartPauseMs = 200;
constexpr std::uint32_t kQuantumMs = 2;
constexpr std::uint32_t kStopPauseMs = 1;
constexpr unsigned kStopPasses = 20;

constexpr std::uint32_t kFirstSyncPauseMs = 3;
constexpr std::uint32_t kUnchangedPauseMs = 2;
constexpr std::uint32_t kIgnoredEdgePauseMs = 5;
constexpr std::uint32_t kMotionRepeatMs = 900;

constexpr std::int32_t kLevelThreadStart = 0;

bool ReadSync() { return (TW_ReadStatusFlags() & kStatusSync) != 0; }

// Where the event cannot be waited on, as when it could not be made, the thread sleeps: polling
// without a pause it would take the processor from the host.
void Pause(PlatHandle event, std::uint32_t duration_ms) {
  if (Plat_Wait(event, duration_ms) == kPlatWaitFailed) Plat_Sleep(duration_ms);
}

// What the host was told last, and the record that its messages point to.
struct Reported {
  VideoDetectRecord detect = {};
  std::uint32_t loss_mask = 0xFFFFFFFFu;  // no mask: the first one is always told
  std::uint32_t motion_mask = 0;
};

void ReportVideo(Reported& reported) {
  VexoProc_ReadVideoDetect(&reported.detect);
  const std::uint32_t loss_mask = reported.detect.loss_mask;  // the host may write to the record
  if (loss_mask == reported.loss_mask) return;
  VexoSDK_SendHostMessage(VEXO_MSG_VIDEO_INFO, reinterpret_cast<std::uintptr_t>(&reported.detect),
                          0);
  reported.loss_mask = loss_mask;
}

// A changed mask is told at once, an unchanged one every 900 ms. Quirk: only the repeat clears the
// stamp, so after a change it may come early.
void ReportMotion(Reported& reported) {
  const std::uint32_t mask = VexoProc_ReadMotionStatus();
  if (mask != reported.motion_mask) {
    reported.motion_mask = mask;
    VexoSDK_SendHostMessage(VEXO_MSG_MOTION_STATUS, mask, 0);
    return;
  }
  if (g_worker.motion_stamp == 0) g_worker.motion_stamp = Plat_TickCount();
  if (Plat_TickCount() - g_worker.motion_stamp < kMotionRepeatMs) return;
  VexoSDK_SendHostMessage(VEXO_MSG_MOTION_STATUS, mask, 0);
  g_worker.motion_stamp = 0;
}

}  // namespace

std::int32_t VexoSDK_StartWorker() {
  VexoSDK_StopWorker();
  g_worker.block = {};
  g_worker.block.exit_code = kExitStarted;
  g_worker.thread = Plat_CreateThread(VexoSDK_WorkerProc, &g_worker.block, &g_worker.thread_id);
  if (g_worker.thread == kPlatNoHandle) {
    const std::uint32_t error = Plat_LastError();
    VexoDbg_Print(u">> Fail Create Worker Thread!! \r\n");
    VexoDbg_PrintLastError(error);
    return 0;
  }
  Plat_Sleep(kStartPauseMs);
  VexoDbg_PrintLevel(kLevelThreadStart,
                     u">> [THREAD_ID 0x%08x] check worker thread set run flag!\r\n",
                     g_worker.thread_id);
  Plat_SetThreadQuantum(g_worker.thread, kQuantumMs);
  return 1;
}

void VexoSDK_StopWorker() {
  if (g_worker.thread == kPlatNoHandle) return;
  g_worker.block.stop_request = 1;
  unsigned passes = 0;
  std::uint32_t exit_code = 0;
  // Quirk: a thread whose exit code cannot be asked is taken for one that has ended, and forgotten.
  while (Plat_GetExitCodeThread(g_worker.thread, &exit_code) && exit_code == kPlatStillActive) {
    if (++passes > kStopPasses) Plat_TerminateThread(g_worker.thread, kExitTerminated);
    Plat_Sleep(kStopPauseMs);
  }
  Plat_CloseHandle(g_worker.thread);
  g_worker.block = {};
  g_worker.thread = kPlatNoHandle;
}

std::uint32_t VexoSDK_WorkerProc(void* block) {
  // Never signalled: its time-outs pace the thread. Quirk: never closed.
  const PlatHandle pause = Plat_CreateEvent(nullptr, false, false);
  if (block == nullptr) return kExitNoBlock;
  auto* worker = static_cast<WorkerBlock*>(block);
  worker->running = 1;
  worker->thread_id = Plat_CurrentThreadId();

  Reported reported;
  const bool rising = TW_ReadStatusRef() != 0;
  // Quirk: this wait does not look at the stop request; a stuck bit takes a termination.
  while (!ReadSync()) Pause(pause, kFirstSyncPauseMs);
  bool sync = true;
  if (worker->stop_request != 0) return worker->exit_code;

  do {
    const bool now = ReadSync();
    if (now == sync) {
      Pause(pause, kUnchangedPauseMs);
      continue;
    }
    sync = now;
    if (sync != rising) {
      Pause(pause, kIgnoredEdgePauseMs);
      continue;
    }
    ReportVideo(reported);
    ReportMotion(reported);
  } while (worker->stop_request == 0);
  return worker->exit_code;
}
