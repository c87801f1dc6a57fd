#!/usr/bin/env bash
# Compiles the public header as hosts in C and C++ include it, old and new; at last as one whose
# compiler has no <stdint.h>.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
check=(-Wall -Wextra -Wpedantic -Wconversion -Werror -Iinclude -fsyntax-only)
old=(-nostdinc -D_MSC_VER=1400 -D__int8=char -D__int16=short -D__int32=int)
source=tests/support/header_compiles.c
for compiler in gcc clang; do
  for standard in c99 c11; do "$compiler" -x c -std="$standard" "${check[@]}" "$source"; done
  for standard in c++98 c++17; do "$compiler" -x c++ -std="$standard" "${check[@]}" "$source"; done
  "$compiler" -x c++ -std=c++98 "${check[@]}" "${old[@]}" "$source"
done
