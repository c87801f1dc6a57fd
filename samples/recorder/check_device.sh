#!/usr/bin/env bash
# Compiles the recorder for the device's processor as far as it goes without the system's SDK: every
# source, with ce/windows.h in the place of the system's header; nothing is linked.
# usage: check_device.sh
set -euo pipefail
here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
objects="$(mktemp -d)"
trap 'rm -rf "$objects"' EXIT

for source in "$here"/*.c; do
  arm-none-eabi-gcc -std=c90 -march=armv4t -marm -mfloat-abi=soft -fshort-wchar -fsigned-char \
    -fno-short-enums -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wdeclaration-after-statement \
    -Werror -Os -I "$here/ce" -I "$here/../../include" -c "$source" \
    -o "$objects/$(basename "$source" .c).o"
done
arm-none-eabi-size "$objects"/*.o
