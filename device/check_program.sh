#!/usr/bin/env bash
# Checks a program beside the ELF file that it was made of, with other tools than the one that made
# it: device/check_program.sh DIRECTORY arm|thumb NAME IMPORTS MOST_KB
#
# The directory holds NAME.exe, NAME.elf and NAME.res; IMPORTS is a file of what the program asks of
# the system, MOST_KB how large it may be.
set -euo pipefail
program="$1/$3.exe"
elf="$1/$3.elf"
resource="$1/$3.res"
machine="$2"
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
imports="$root/$4"
most_bytes=$(($5 * 1024))
status=0
checked="$program"
. "$root/device/image_headers.sh"
expect "program, no library" "" "$(grep -o IMAGE_FILE_DLL <<<"$headers" || true)"
expect "never moved" "IMAGE_FILE_RELOCS_STRIPPED" \
  "$(grep -o IMAGE_FILE_RELOCS_STRIPPED <<<"$headers" || true)"
expect "base" "0x10000" "$(field ImageBase)"
expect "stack of a thread, and of it at once" "65536 4096" \
  "$(field SizeOfStackReserve) $(field SizeOfStackCommit)"
symbols="$(arm-none-eabi-nm "$elf")"
entry="$(awk '$3 == "WinMainCRTStartup" {print $1}' <<<"$symbols")"
expect "entry" "$(printf '0x%X' $((0x$entry - 0x10000)))" "$(field AddressOfEntryPoint)"
expect "sections and flags" ".text 0x60000020
.data 0xC0000040
.pdata 0x40000040
.rsrc 0x40000040" "$(awk '{print $1, $5}' <<<"$sections")"
expect "exports" "" "$("$readobj" --coff-exports "$program" | grep Name: || true)"

# Each as LIBRARY NAME, or LIBRARY #ORDINAL.
expect "imports" "$(LC_ALL=C sort "$imports")" \
  "$("$readobj" --coff-imports "$program" |
    awk '/^ *Name:/ {library = $2} /Symbol:/ {
           if (NF == 3) print library, $2
           else {gsub(/[()]/, "", $2); print library, "#" $2}}' | LC_ALL=C sort)"
while read -r table; do
  grep -qE " T ${table#address_}\$" <<<"$symbols" || {
    echo "$program: nothing calls ${table#address_}."
    status=1
  }
done < <(sed -n 's/.* [dD] \(address_.*\)/\1/p' <<<"$symbols")

expect "processor" "v4T" "$(arm-none-eabi-readelf -A "$elf" | sed -n 's/.*Tag_CPU_arch: *//p')"
odd="$(arm-none-eabi-objdump -d "$elf" |
  awk '$3 ~ /^(ldrd|strd)/ || ($3 ~ /^(ldr|str)s?h/ && /#-?[0-9]*[13579]\]/)')"
expect "code" "" "$odd"

# Where each function first moves the stack down, as the disassembly has it.
wanted="$(arm-none-eabi-objdump -d --no-show-raw-insn "$elf" |
  awk '/^[0-9a-f]+ <.*>:$/ {found = 0; next}
       !found && ($2 ~ /^(push|stmfd)/ || /\tsub[a-z]*\tsp, sp/ || /\[sp, #-[0-9]+\]!/) {
         sub(":", "", $1); printf "%8s\n", $1; found = 1}' | tr 'a-f ' 'A-F0')"
entries=$(($(section .pdata 2) / 8))
found="$(od -An -v -tx4 -w8 -j "$(section .pdata 4)" -N $((entries * 8)) "$program" |
  awk '{print toupper($1)}')"
expect "functions" "$wanted" "$found"

resources="$("$readobj" --coff-resources "$program")"
expect "resources" "Type: VERSIONINFO (ID 16) [
Name: (ID 1) [
Language: (ID 1033) [" "$(sed -n 's/^ *\(\(Type\|Name\|Language\): .*\)/\1/p' <<<"$resources")"
offset=$(($(sed -n 's/.*DataRVA: *//p' <<<"$resources")))
size=$(($(sed -n 's/.*DataSize: *//p' <<<"$resources")))
position=$((offset - $(section .rsrc 3) + $(section .rsrc 4)))
if ! cmp -s <(tail -c +$((position + 1)) "$program" | head -c "$size") \
  <(tail -c +65 "$resource" | head -c "$size") || ((size < 92)); then
  echo "$program: the version resource is not the compiled one."
  status=1
fi
expect "version 1.0.1.6 of a program" "feef04bd 00010000 00010006 00000001" \
  "$(for at in 40 48 52 76; do word $((position + at)); done | paste -s -d ' ')"

bytes="$(stat -c %s "$program")"
if ((bytes > most_bytes)); then
  echo "$program: it has $bytes bytes, of at most $most_bytes."
  status=1
fi
((status)) || echo "$(basename "$program") ($machine): $bytes bytes, $entries functions," \
  "$(wc -l <"$imports") imports; all as wanted."
exit "$status"
