#!/usr/bin/env bash
# Builds the DLL for 64- and 32-bit Windows with MinGW-w64, and its test host, and checks what the
# DLLs offer and ask for, and that hosts link: windows/build.sh
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
log="$(mktemp)"
trap 'rm -f "$log"' EXIT

for processor in x86_64 i686; do
  build="$root/build/windows-$processor"
  if ! cmake -S "$root/windows" -B "$build" -G Ninja \
    -DCMAKE_TOOLCHAIN_FILE="$root/windows/toolchain.cmake" -DVEXO_PROCESSOR="$processor" \
    </dev/null >"$log" 2>&1; then
    cat "$log"
    exit 1
  fi
  "$root/scripts/ninja.sh" "$build"
  "$root/windows/check_dll.sh" "$build/VexoCtrlSDK.dll" "$processor"
  "$root/windows/check_import_library.sh" "$build" "$processor"
  "$processor-w64-mingw32-size" "$build/VexoCtrlSDK.dll"
done
