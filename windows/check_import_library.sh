#!/usr/bin/env bash
# Links a host in C and in C++ with the import library, as g++, clang and Microsoft's compilers name
# things, and checks what it then asks the DLL for:
#   windows/check_import_library.sh BUILD x86_64|i686
# Holds: VEXOAPI_SetMotionInfo "C and the C++ of g++ and clang ask for other names"
# Holds: VexoInitializeFunction "They have C's calling convention"
set -euo pipefail
build="$1"
processor="$2"
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
tools="$processor-w64-mingw32"
library="$build/libVexoCtrlSDK.dll.a"
source="$root/tests/support/header_host.c"
status=0
checked="$library"
. "$root/scripts/expect.sh"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT

# The DLL's own names: a host that asks for another one would not start.
exports="$("$tools-objdump" -p "$build/VexoCtrlSDK.dll" |
  awk '/^\[Ordinal\/Name Pointer\] Table/ {on = 1; next} /^$/ {on = 0}
       on && /^\t\[/ {print $NF}')"

# Holds: VEXOAPI_SetMotionInfo "Where neither is at hand"
# Holds: Loading by hand "Each export's name"
expect "names in the header" "$exports" \
  "$("$tools-gcc-posix" -dM -E "$root/include/VexoCtrlSDK.h" |
    sed -n 's/^#define VEXO_EXPORT_[A-Z_]* "\(.*\)"$/\1/p')"

for language in c c++; do
  "$tools-gcc-posix" -x "$language" -I"$root/include" "$source" -x none -o "$work/gcc-$language.exe" \
    "$library"
  # clang's own runtime for Windows is not here, and need not be: the host's object file is enough.
  for system in w64-mingw32 pc-windows-msvc; do
    clang --target="$processor-$system" -ffreestanding -I"$root/include" -x "$language" -c "$source" \
      -o "$work/host.o"
    "$tools-gcc-posix" "$work/host.o" -o "$work/clang-$system-$language.exe" "$library"
  done
done

for host in "$work"/*.exe; do
  expect "what $(basename "$host" .exe) asks for" "$exports" "$("$tools-objdump" -p "$host" |
    awk '/DLL Name:/ {on = $3 == "VexoCtrlSDK.dll"; next}
         /^The / {on = 0}
         on && NF == 3 && $1 ~ /^[0-9a-f]+$/ && $2 ~ /^[0-9]+$/ {print $3}')"
done

((status)) || echo "$(basename "$library") ($processor): hosts in C and C++ link, by every compiler's names."
exit "$status"
