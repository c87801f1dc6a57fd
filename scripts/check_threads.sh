#!/usr/bin/env bash
# Calls the Linux desk library from several threads at once, and runs the tests of the ports, under the
# thread sanitizer. Builds no more than that needs.
# Holds: Exports ""Any thread" says that a call may be made beside other calls."
# Holds: VEXOAPI_GetVersion "Any thread."
# Holds: VEXOAPI_CommandProc "Any thread, but for VEXO_CMD_BLANK_MASK"
# Holds: VEXOAPI_SetMotionInfo "Any thread: waits for "CS4_GlobalLock" without"
# Holds: VexoDesk.h "Any thread may call the exports of VexoCtrlSDK.h"
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/build.sh thread desk_stress port_tests
for time in virtual real; do
  TSAN_OPTIONS="halt_on_error=1" build/thread/tests/desk/library/desk_stress "$time" 4000
done
TSAN_OPTIONS="halt_on_error=1" build/thread/tests/port_tests --gtest_brief=1
