// ExtRtcNVramCtl.dll for a machine without the board: the simulated NVRAM.
#include "board_host.h"

extern "C" {

DWORD RTCNVRAM_Init() { return TheBoardHost().nvram_init(); }
DWORD RTCNVRAM_DeInit() { return TheBoardHost().nvram_deinit(); }
DWORD RTCNVRAM_Read(DWORD block, void* request) {
  return TheBoardHost().nvram_read(block, request);
}
DWORD RTCNVRAM_Write(DWORD block, void* request) {
  return TheBoardHost().nvram_write(block, request);
}

}  // extern "C"
