# What the checks of the image and of the check program have in common: sourced with $checked, the
# file, and $machine, arm or thumb. Leaves its headers and sections, and functions that read them.
readobj="$(command -v llvm-readobj || command -v llvm-readobj-14)"
. "$(dirname "${BASH_SOURCE[0]}")/../scripts/expect.sh"

# word OFFSET: a word of the file, in hexadecimal.
word() { od -An -v -tx4 -j "$1" -N 4 "$checked" | tr -d ' '; }

# field NAME: of the headers.
field() { sed -n "s/^ *$1: *//p" <<<"$headers" | head -n 1; }

headers="$("$readobj" --file-headers "$checked")"
sections="$("$readobj" --sections "$checked" |
  awk '/Section \{/ {name = ""} /^ *Name:/ {name = $2} /VirtualSize:/ {size = $2}
       /VirtualAddress:/ {offset = $2} /PointerToRawData:/ {position = $2}
       /Characteristics \[/ {gsub(/[()]/, "", $3); print name, size, offset, position, $3}')"

# section NAME COLUMN: 2 size, 3 offset in memory, 4 position in the file.
section() { echo $(($(awk -v name="$1" -v column="$2" '$1 == name {print $column}' <<<"$sections"))); }

case "$machine" in
  arm) code=0x1C0 ;;
  thumb) code=0x1C2 ;;
  *)
    echo "usage: $0 DIRECTORY [arm|thumb]" >&2
    exit 2
    ;;
esac
expect "machine" "($code)" "$(field Machine | grep -o '(.*)')"
expect "kind" "0x10B" "$(field Magic)"
expect "subsystem" "IMAGE_SUBSYSTEM_WINDOWS_CE_GUI (0x9)" "$(field Subsystem)"
expect "versions of system and subsystem" "5.0 5.0" \
  "$(field MajorOperatingSystemVersion).$(field MinorOperatingSystemVersion) $(field MajorSubsystemVersion).$(field MinorSubsystemVersion)"
expect "time" "(0x0)" "$(field TimeDateStamp | grep -o '(.*)')"
