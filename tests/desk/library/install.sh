#!/usr/bin/env bash
# Installs what is built, and builds and runs programs on it outside of the tree, in C and in C++,
# with pkg-config and with CMake's find_package: install.sh CMAKE BUILD_FOLDER. CC and CXX are the
# compilers.
set -euo pipefail
cmake="$1"
build="$2"
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/../../.." && pwd)"
scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT

# Where it is installed is not where it stays.
"$cmake" --install "$build" --prefix "$scratch/here" >"$scratch/log" || { cat "$scratch/log"; exit 1; }
mv "$scratch/here" "$scratch/there"
prefix="$scratch/there"
diff - <(cd "$prefix" && find . ! -type d | sed 's|/x86_64-linux-gnu||; s|Config-[a-z]*.cmake|Config-TYPE.cmake|' | sort) <<'END'
./include/VexoCtrlSDK.h
./include/VexoDesk.h
./lib/cmake/VexoCtrlSDK/VexoCtrlSDKConfig-TYPE.cmake
./lib/cmake/VexoCtrlSDK/VexoCtrlSDKConfig.cmake
./lib/cmake/VexoCtrlSDK/VexoCtrlSDKConfigVersion.cmake
./lib/libVexoCtrlSDK.so
./lib/libVexoCtrlSDK.so.1
./lib/libVexoCtrlSDK.so.1.0.1.6
./lib/pkgconfig/vexoctrlsdk.pc
./share/doc/VexoCtrlSDK/control-port.md
./share/doc/VexoCtrlSDK/host-programs.md
./share/doc/VexoCtrlSDK/script-language.md
./share/doc/VexoCtrlSDK/trace-format.md
END
export PKG_CONFIG_PATH="$prefix/lib/pkgconfig"
export LD_LIBRARY_PATH="$prefix/lib"
[[ "$(pkg-config --modversion vexoctrlsdk)" == 1.0.1.6 ]]

# A program of both languages: it links each of the eight exports, and is told of a cable.
mkdir "$scratch/outside"
cd "$scratch/outside"
cat >program.c <<'END'
#include <stdio.h>
#include <string.h>
#include <VexoDesk.h>

static uint32_t loss;

static intptr_t OnMessage(VexoWindow window, uint32_t message, uintptr_t wparam, intptr_t lparam,
                          void* context) {
  VideoDetectRecord record;
  (void)window;
  (void)lparam;
  (void)context;
  if (message == VEXO_MSG_VIDEO_INFO) {
    memcpy(&record, (const void*)wparam, sizeof record);
    loss = record.loss_mask;
  }
  return 0;
}

int main(void) {
  VexoDeskOptions options = VEXODESK_DEFAULTS;
  VexoInitRecord init;
  VexoChar16 version[20];
  uint8_t mask[VEXO_MOTION_MASK_BYTES];
  memset(&init, 0, sizeof init);
  memset(mask, 0, sizeof mask);
  options.board = "board chips 2\ncamera 5 off";
  if (VexoDesk_Open(&options) != VEXODESK_OK) {
    puts(VexoDesk_Error());
    return 1;
  }
  if (VEXOAPI_Initialize(VexoDesk_CreateWindow(OnMessage, NULL)) != VEXO_OK) return 2;
  VEXOAPI_SetEnableDebug(0);
  VEXOAPI_SetEnableOutputMsg(0);
  if (VEXOAPI_CommandProc(VEXO_CMD_INIT, &init) != VEXO_OK || init.chip_count != 2) return 3;
  if (VexoDesk_Pump(1000) < 1 || loss != 1u << 5) return 4;
  if (VEXOAPI_GetVersion(version) != 10) return 5;
  if (VEXOAPI_SetMotionInfo(1, 1, mask) != VEXO_OK) return 6;
  if (VEXOAPI_TextCommandProc("vexo rver ") != VEXO_OK) return 7;
  VEXOAPI_Uninitialize();
  if (VexoDesk_Close() != VEXODESK_OK) return 8;
  puts("done");
  return 0;
}
END
cp program.c program.cpp

warnings=(-Wall -Wextra -pedantic -Werror)
read -ra flags <<<"$(pkg-config --cflags --libs vexoctrlsdk)"
built=0
# try NAME COMPILER...
try() {
  local name="$1"
  shift
  "$@" "${warnings[@]}" -o "$name" "${flags[@]}"
  [[ "$("./$name")" == done ]] || { echo "$name does not do it."; exit 1; }
  built=$((built + 1))
}
try c99 "$CC" -std=c99 program.c
try c11 "$CC" -std=c11 program.c
try cxx98 "$CXX" -std=c++98 -Wno-long-long program.cpp
try cxx17 "$CXX" -std=c++17 program.cpp

cat >CMakeLists.txt <<'END'
cmake_minimum_required(VERSION 3.16)
project(Outside LANGUAGES C CXX)
find_package(VexoCtrlSDK 1.0.1 REQUIRED)
foreach(language c cpp)
  add_executable(in_${language} program.${language})
  target_link_libraries(in_${language} PRIVATE VexoCtrlSDK::VexoCtrlSDK)
endforeach()
END
# with_cmake FOLDER: configures and builds it with the installed package.
with_cmake() {
  { "$cmake" -S "$1" -B "$1/build" -DCMAKE_PREFIX_PATH="$prefix" && "$cmake" --build "$1/build"; } \
    >log 2>&1 || { cat log; exit 1; }
}
with_cmake .
for language in c cpp; do
  [[ "$(build/in_$language)" == done ]] || { echo "in_$language does not do it."; exit 1; }
  built=$((built + 1))
done

# The sample stands alone, and its unit test is its own.
cp -r "$root/samples/desk" sample
with_cmake sample
(cd sample && build/recorder_test)
(cd sample && build/recorder 4 9 p 1 p 6 >said)
grep -q '^ *[0-9]* ms: key 6: 0$' sample/said
file_kind="$(head -c 8 sample/recorder.png | od -An -tx1 | tr -d ' \n')"
[[ "$file_kind" == 89504e470d0a1a0a ]] || { echo "The sample's picture is none."; exit 1; }
# In real time it stays until its input ends.
(cd sample && build/recorder --real 4 </dev/null >said)
grep -q '^ *[0-9]* ms: key 4: 0$' sample/said
! readelf -d "$prefix/lib/libVexoCtrlSDK.so" | grep -E 'NEEDED.*(unicorn|edit|CLI11)|RUNPATH|RPATH'
echo "$built programs and the sample, outside of the tree."
