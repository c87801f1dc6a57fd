// The camera stream driver "CAM1:", halted while the chips are set up.
#pragma once

#include <cstdint>

// Halts (0) or resumes (non-zero) the camera stream. Returns the driver's close result, 0 when the
// driver gave no handle.
std::int32_t VexoProc_CameraControl(std::uint32_t resume);
