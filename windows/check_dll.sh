#!/usr/bin/env bash
# Checks what a DLL offers and asks for: windows/check_dll.sh DLL x86_64|i686
set -euo pipefail
dll="$1"
processor="$2"
tools="$processor-w64-mingw32"
status=0
checked="$dll"
. "$(dirname "${BASH_SOURCE[0]}")/../scripts/expect.sh"

case "$processor" in
  x86_64) format=pei-x86-64 pointer=PEAE ;;
  i686) format=pei-i386 pointer=PAE ;;
esac
private="$("$tools-objdump" -p "$dll")"

expect "kind" "$format" "$(sed -n 's/.*file format //p' <<<"$private")"

# Holds: VEXOAPI_SetMotionInfo "The DLL exports it under its C++ name alone"
expect "exports" "VEXOAPI_CommandProc
VEXOAPI_GetVersion
VEXOAPI_Initialize
VEXOAPI_SetEnableDebug
VEXOAPI_SetEnableOutputMsg
VEXOAPI_TextCommandProc
VEXOAPI_Uninitialize
?VEXOAPI_SetMotionInfo@@YAHEE$pointer@Z" \
  "$(awk '/^\[Ordinal\/Name Pointer\] Table/ {on = 1; next} /^$/ {on = 0}
          on && /^\t\[/ {print $NF}' <<<"$private")"

# Each import as LIBRARY NAME, or LIBRARY #ORDINAL.
expect "imports" "$(cat "$(dirname "${BASH_SOURCE[0]}")/../windows/imports.txt")" \
  "$(awk '/DLL Name:/ {library = $3; next}
          /^The / {library = ""}
          library != "" && NF == 3 && $3 == "<none>" {print library, "#" $2 + 0; next}
          library != "" && NF == 3 && $1 ~ /^[0-9a-f]+$/ && $2 ~ /^[0-9]+$/ {print library, $3}' \
    <<<"$private")"

sections="$("$tools-objdump" -h "$dll")"
expect "shared section" "SHARED" "$(awk '$2 == ".shared" {getline; print}' <<<"$sections" | grep -o SHARED || true)"
# Programs that know of its word expect a 1 there; nothing in the library writes it.
expect "shared word" "01000000" \
  "$("$tools-objdump" -s -j .shared "$dll" | awk '/^ / {for (i = 2; i < NF; ++i) print $i}')"

resource="$("$tools-windres" -J coff -O rc -i "$dll" 2>/dev/null || true)"
expect "versions" "FILEVERSION 1, 0, 1, 6
PRODUCTVERSION 1, 0, 1, 6" "$(sed -nE 's/^ *((FILE|PRODUCT)VERSION .*)/\1/p' <<<"$resource")"
expect "version's texts" 'BLOCK "StringFileInfo"
BLOCK "040904B0"
VALUE "FileDescription", "TW2835 video controller library"
VALUE "FileVersion", "1, 0, 1, 6"
VALUE "InternalName", "VexoCtrlSDK"
VALUE "OriginalFilename", "VexoCtrlSDK.DLL"
VALUE "ProductName", "VexoCtrlSDK"
VALUE "ProductVersion", "1, 0, 1, 6"
BLOCK "VarFileInfo"
VALUE "Translation", 0x409, 1200' "$(sed -nE 's/^ *((BLOCK|VALUE) .*)/\1/p' <<<"$resource")"

((status)) || echo "$(basename "$dll") ($processor): exports, imports, sections and version are as wanted."
exit "$status"
