#!/usr/bin/env bash
# Checks the image beside the ELF file that it was made of, with other tools than the
# one that made it: device/check_image.sh DIRECTORY [arm|thumb]
#
# The directory holds VexoCtrlSDK.DLL, VexoCtrlSDK.elf and version.res.
set -euo pipefail
image="$1/VexoCtrlSDK.DLL"
elf="$1/VexoCtrlSDK.elf"
resource="$1/version.res"
machine="${2:-arm}"
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
most_text=$((42 * 1024))
status=0
checked="$image"
. "$root/device/image_headers.sh"
expect "library" "IMAGE_FILE_DLL" "$(grep -o IMAGE_FILE_DLL <<<"$headers" || true)"
expect "relocatable" "" "$(grep -o IMAGE_FILE_RELOCS_STRIPPED <<<"$headers" || true)"

# ---- Sections -----------------------------------------------------------------------------------

expect "sections and flags" ".text 0x60000020
.data 0xC0000040
.shared 0xD0000040
.pdata 0x40000040
.rsrc 0x40000040
.reloc 0x42000040" "$(awk '{print $1, $5}' <<<"$sections")"

while read -r name _ _ _ flags; do
  if (((flags & 0xA0000000) == 0xA0000000)); then
    echo "$image: $name holds code that can be written."
    status=1
  fi
done <<<"$sections"

# Programs that know of the shared word expect a 1 there; nothing in the library writes it.
expect "shared section" "4 bytes: 00000001" \
  "$(section .shared 2) bytes: $(word "$(section .shared 4)")"

text_bytes="$(section .text 2)"
if ((text_bytes == 0 || text_bytes > most_text)); then
  echo "$image: text and read-only data are $text_bytes bytes, of at most $most_text."
  status=1
fi

# Register names are for listings; the library has the registers' places alone.
names="$(sed -nE 's/^REGISTER\(.*"([^"]+)", FIELDS.*/\1/p' "$root/src/chip/registers.inc")"
(($(wc -l <<<"$names") > 50)) || { echo "There are no register names."; status=1; }
expect "register names" "" "$(strings -a -n 5 "$image" | grep -Fx "$names" || true)"

# ---- Code ---------------------------------------------------------------------------------------

expect "processor" "v4T" "$(arm-none-eabi-readelf -A "$elf" | sed -n 's/.*Tag_CPU_arch: *//p')"
base=$(($(field ImageBase)))
symbols="$(arm-none-eabi-nm "$elf")"

# address SYMBOL: its offset in the image.
address() { printf '0x%X\n' $((0x$(awk -v name="$1" '$3 == name {print $1}' <<<"$symbols") - base)); }

expect "entry" "$(address VexoCtrlSdkEntry)" "$(field AddressOfEntryPoint)"

# Loads and stores of two words, and of half words at odd addresses, are none of this processor's.
odd="$(arm-none-eabi-objdump -d "$elf" |
  awk '$3 ~ /^(ldrd|strd)/ || ($3 ~ /^(ldr|str)s?h/ && /#-?[0-9]*[13579]\]/)')"
expect "code" "" "$odd"

# ---- Function table -----------------------------------------------------------------------------

# Where each function first moves the stack down, as the disassembly has it.
wanted="$(arm-none-eabi-objdump -d --no-show-raw-insn "$elf" |
  awk '/^[0-9a-f]+ <.*>:$/ {found = 0; next}
       !found && ($2 ~ /^(push|stmfd)/ || /\tsub[a-z]*\tsp, sp/ || /\[sp, #-[0-9]+\]!/) {
         sub(":", "", $1); print toupper($1); found = 1}')"
position="$(section .pdata 4)"
entries=$(($(section .pdata 2) / 8))
found="$(od -An -v -tx4 -w8 -j "$position" -N $((entries * 8)) "$image" | awk '{print toupper($1)}')"
expect "functions" "$wanted" "$found"
if ! LC_ALL=C sort -c <<<"$found" 2>/dev/null; then
  echo "$image: the function table is not in order."
  status=1
fi

# ---- Base relocations ---------------------------------------------------------------------------

# Every address that the linker wrote, but for the tables of offsets; and the function table's own.
wanted="$(
  arm-none-eabi-readelf -rW "$elf" |
    awk -v base="$base" '/^Relocation section/ {wanted = $3 ~ /rel\.(text|data|shared)/}
      wanted && $3 == "R_ARM_ABS32" {print $1}' |
    while read -r at; do printf '0x%X\n' $((0x$at - base)); done
  for ((i = 0; i < entries; i++)); do printf '0x%X\n' $(($(section .pdata 3) + 8 * i)); done
)"
found="$("$readobj" --coff-basereloc "$image" |
  awk '/Type:/ {type = $2} /Address:/ && type != "ABSOLUTE" {print type, $2}')"
expect "kinds of base relocations" "HIGHLOW" "$(awk '{print $1}' <<<"$found" | sort -u)"
expect "base relocations" "$wanted" "$(awk '{print $2}' <<<"$found")"
relocations="$(wc -l <<<"$found")"

# ---- Imports and exports --------------------------------------------------------------------------

# Each import as LIBRARY NAME, or LIBRARY #ORDINAL.
expect "imports" "$(cat "$root/device/library/imports.txt")" "$("$readobj" --coff-imports "$image" |
  awk '/^ *Name:/ {library = $2} /Symbol:/ {
         if (NF == 3) print library, $2
         else {gsub(/[()]/, "", $2); print library, "#" $2}}')"

# The loader's own table begins as the table of names and ordinals.
lookups="$("$readobj" --coff-imports "$image" | sed -n 's/.*ImportLookupTableRVA: *//p' | head -n 1)"
lookups=$((lookups - $(section .text 3) + $(section .text 4)))
addresses=$(($(field IATRVA) - $(section .data 3) + $(section .data 4)))
size=$(($(field IATSize)))
if ! cmp -s <(tail -c +$((lookups + 1)) "$image" | head -c "$size") \
  <(tail -c +$((addresses + 1)) "$image" | head -c "$size"); then
  echo "$image: the table of the imports' addresses is not that of their names."
  status=1
fi

# An import without its caller is one that the linker has dropped the code of.
while read -r table; do
  name="${table#address_}"
  if ! grep -qE " T (Import_)?$name\$" <<<"$symbols"; then
    echo "$image: nothing calls $name."
    status=1
  fi
done < <(sed -n 's/.* [dD] \(address_.*\)/\1/p' <<<"$symbols")

# Holds: VEXOAPI_SetMotionInfo "The DLL exports it under its C++ name alone"
# Holds: VEXOAPI_SetMotionInfo "Where neither is at hand"
expect "exports" "?VEXOAPI_SetMotionInfo@@YAHEEPAE@Z $(address Export_SetMotionInfo)
$(for name in CommandProc GetVersion Initialize SetEnableDebug SetEnableOutputMsg TextCommandProc \
  Uninitialize; do echo "VEXOAPI_$name $(address VEXOAPI_$name)"; done)" \
  "$("$readobj" --coff-exports "$image" | awk '/Name:/ {name = $2} /RVA:/ {print name, $2}')"

# ---- Version resource ---------------------------------------------------------------------------

resources="$("$readobj" --coff-resources "$image")"
expect "resources" "Type: VERSIONINFO (ID 16) [
Name: (ID 1) [
Language: (ID 1033) [" "$(sed -n 's/^ *\(\(Type\|Name\|Language\): .*\)/\1/p' <<<"$resources")"
offset=$(($(sed -n 's/.*DataRVA: *//p' <<<"$resources")))
size=$(($(sed -n 's/.*DataSize: *//p' <<<"$resources")))
position=$((offset - $(section .rsrc 3) + $(section .rsrc 4)))
if ! cmp -s <(tail -c +$((position + 1)) "$image" | head -c "$size") \
  <(tail -c +65 "$resource" | head -c "$size") || ((size < 92)); then
  echo "$image: the version resource is not the compiled one."
  status=1
fi
expect "file and product version 1.0.1.6" "feef04bd 00010000 00010006 00010000 00010006" \
  "$(for at in 40 48 52 56 60; do word $((position + at)); done | paste -s -d ' ')"
expect "version's texts" "StringFileInfo: 040904B0
FileDescription: TW2835 video controller library
FileVersion: 1, 0, 1, 6
InternalName: VexoCtrlSDK
OriginalFilename: VexoCtrlSDK.DLL
ProductName: VexoCtrlSDK
ProductVersion: 1, 0, 1, 6" \
  "$(tail -c +$((position + 1)) "$image" | head -c "$size" | strings -e l -n 4 |
    sed -n '/^StringFileInfo$/,/^VarFileInfo$/p' | sed '$d' | paste -d ':' - - |
    sed 's/:/: /')"
expect "version's language" "0409 04b0" \
  "$(tail -c +$((position + size - 3)) "$image" | head -c 4 | od -An -v -tx2 | xargs)"

((status)) || echo "$(basename "$image") ($machine): $text_bytes bytes of text and read-only data," \
  "$(section .data 2) of data, $entries functions, $relocations base relocations; all as wanted."
exit "$status"
