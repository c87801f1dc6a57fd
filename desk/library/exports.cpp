// The exports of VexoCtrlSDK.h: the library's own, called in the board's turn and with their trace.
// Without a board they answer as a library that is not initialized.
#include "VexoCtrlSDK.h"
#include "desk/library/board.h"
#include "desk/library/record_size.h"
#include "harness/host.h"
#include "sim/world.h"

namespace {
using desk::Call;
}  // namespace

int VEXOAPI_Initialize(VexoWindow window) {
  const Call call;
  if (!call) return VEXO_ERROR_UNINITIALIZED;
  return harness::Initialize(reinterpret_cast<PlatWindow>(window));
}

void VEXOAPI_Uninitialize(void) {
  if (const Call call; call) harness::Uninitialize();
}

int VEXOAPI_GetVersion(VexoChar16* buffer) {
  const Call call;
  return call ? harness::GetVersion(buffer) : 0;
}

void VEXOAPI_SetEnableDebug(std::uint32_t enable) {
  if (const Call call; call) harness::SetEnableDebug(enable);
}

void VEXOAPI_SetEnableOutputMsg(std::uint32_t enable) {
  if (const Call call; call) harness::SetEnableOutputMsg(enable);
}

int VEXOAPI_CommandProc(std::uint32_t code, void* parameter) {
  const Call call;
  if (!call) return VEXO_ERROR_NOT_READY;
  const unsigned channels = 4 * sim::TheWorld().board.FittedCount();
  return harness::CommandProc(code, parameter, desk::RecordBytes(code, parameter, channels));
}

int VEXOAPI_TextCommandProc(const char* line) {
  const Call call;
  return call ? harness::TextCommandProc(line) : VEXO_ERROR_UNINITIALIZED;
}

// A C program links its plain name, a C++ program the one that the compiler makes of it.
extern "C" int SetMotionInfoOfC(std::uint8_t channel, std::uint8_t level,
                                std::uint8_t* mask) __asm__("VEXOAPI_SetMotionInfo");
extern "C" int SetMotionInfoOfCxx(std::uint8_t channel, std::uint8_t level,
                                  std::uint8_t* mask) __asm__("_Z21VEXOAPI_SetMotionInfohhPh");

int SetMotionInfoOfC(std::uint8_t channel, std::uint8_t level, std::uint8_t* mask) {
  const Call call;
  return call ? harness::SetMotionInfo(channel, level, mask) : VEXO_ERROR_UNINITIALIZED;
}

int SetMotionInfoOfCxx(std::uint8_t channel, std::uint8_t level, std::uint8_t* mask) {
  return SetMotionInfoOfC(channel, level, mask);
}
