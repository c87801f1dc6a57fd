#!/usr/bin/env bash
# Builds the image, VexoCtrlSDK.DLL for Windows CE 5 on ARM, with what hosts are linked with, and the
# program that checks it on the board, VexoCheck.exe, and the sample recorder, recorder.exe, each with
# its map, and checks them: device/build.sh [arm|thumb]
#
# The argument is what the image calls its processor: arm (0x01C0, the default, into build/device) or
# thumb (0x01C2, into build/device-thumb), for systems that take only that one. The code is ARM code
# in both.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
machine="${1:-arm}"
build="$root/build/device"
[[ "$machine" == arm ]] || build+="-$machine"
log="$(mktemp)"
trap 'rm -f "$log"' EXIT

# Shows only what goes wrong.
quietly() {
  if ! "$@" </dev/null >"$log" 2>&1; then
    cat "$log"
    exit 1
  fi
}

"$root/scripts/build.sh" gcc ceimage
quietly cmake -S "$root/device/library" -B "$build" -G Ninja \
  -DCMAKE_TOOLCHAIN_FILE="$root/device/library/toolchain.cmake" \
  -DCEIMAGE="$root/build/gcc/ceimage" -DVEXO_MACHINE="$machine"
"$root/scripts/ninja.sh" "$build"
"$root/device/check_image.sh" "$build" "$machine"
"$root/device/check_import_library.py" "$build" "$machine"
"$root/device/check_program.sh" "$build" "$machine" VexoCheck device/check/imports.txt 40
"$root/device/check_program.sh" "$build" "$machine" recorder device/recorder/imports.txt 16
