#include "setup/camera_driver.h"

#include "platform/platform.h"

namespace {
constexpr const char16_t* kCameraDriver = u"CAM1:";
constexpr std::uint32_t kCameraResume = 0x220860;
constexpr std::uint32_t kCameraHalt = 0x220864;
}  // namespace

std::int32_t VexoProc_CameraControl(std::uint32_t resume) {
  const PlatHandle camera =
      Plat_OpenDriver(kCameraDriver, kPlatReadWrite, kPlatNoSharing, kPlatOpenExisting);
  // Quirk: only a zero handle ends here. The invalid handle of a failed open goes on to the
  // control call, which then fails and does no harm.
  if (camera == kPlatNoHandle) return 0;
  Plat_ControlDriver(camera, resume != 0 ? kCameraResume : kCameraHalt, nullptr, 0);
  return Plat_CloseDriver(camera) ? 1 : 0;
}
