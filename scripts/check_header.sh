#!/usr/bin/env bash
# Compiles the public header as hosts in C and C++ of all years include it: for this machine, for
# Windows with MinGW and as Microsoft's compilers do; as one whose compiler has no <stdint.h>; and the
# programs of docs/host-programs.md.
# Holds: VexoCtrlSDK.h "C89 and C++98 will do"
# Holds: VexoCtrlSDK.h "One UTF-16 unit"
# Holds: VexoCtrlSDK.h "Stops the compiler when a record is not laid out as below."
# Holds: VexoDesk.h "C99 and C++98 will do."
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source=tests/support/header_host.c
check=(-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -Iinclude -fsyntax-only)

# every_year COMPILER [OPTION...]
every_year() {
  local standard
  for standard in c89 c99 c11 c17; do
    "$1" -x c -std="$standard" -Wstrict-prototypes -Wdeclaration-after-statement "${check[@]}" \
      "${@:2}" "$source"
  done
  for standard in c++98 c++11 c++14 c++17 c++20; do
    "$1" -x c++ -std="$standard" "${check[@]}" "${@:2}" "$source"
  done
}

every_year gcc
every_year clang
for processor in x86_64 i686; do
  every_year "$processor-w64-mingw32-gcc-posix"
  # Without the system's headers, which clang would look for.
  every_year clang --target="$processor-w64-mingw32" -ffreestanding
  every_year clang --target="$processor-pc-windows-msvc" -ffreestanding
done

for compiler in gcc clang; do
  "$compiler" -x c -std=c99 "${check[@]}" include/VexoDesk.h
  "$compiler" -x c++ -std=c++98 "${check[@]}" include/VexoDesk.h
done

# A record of another size stops each of them.
for language in c:c89 c:c11 c++:c++98 c++:c++11; do
  if gcc -x "${language%:*}" -std="${language#*:}" -Iinclude -fsyntax-only - 2>/dev/null \
    <<<$'#include "VexoCtrlSDK.h"\nVEXO_ASSERT_SIZE(VexoRegRecord, 5);'; then
    echo "${language#*:}: a record of a wrong size is not noticed"
    exit 1
  fi
done

# wchar_t is all that the older ones need from outside.
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
mkdir "$work/outside"
cp "$(gcc -print-file-name=include/stddef.h)" "$work/outside"
old=(-nostdinc -isystem "$work/outside" -fshort-wchar -D_WIN32 -D_MSC_VER=1400 -D__int8=char
  -D__int16=short -D__int32=int)
for compiler in gcc clang; do
  "$compiler" -x c -std=c89 "${check[@]}" "${old[@]}" "$source"
  "$compiler" -x c++ -std=c++98 "${check[@]}" "${old[@]}" "$source"
done

awk -v folder="$work" '/^```c$/ {name = folder "/program" ++count ".c"; next}
  /^```/ {name = ""}
  name != "" {print > name}' docs/host-programs.md
for program in "$work"/program*.c; do
  compilers=(gcc clang)
  if grep -q '<windows.h>' "$program"; then
    compilers=(x86_64-w64-mingw32-gcc-posix i686-w64-mingw32-gcc-posix)
  fi
  for compiler in "${compilers[@]}"; do
    for language in c c++; do
      "$compiler" -x "$language" -Wall -Werror -Iinclude -DWIN32_LEAN_AND_MEAN -fsyntax-only "$program"
    done
  done
done
