#!/usr/bin/env bash
# Makes the package twice, in build/package, and checks it with tools that did not make it: that it is
# the same both times, that it has the files of package/manifest.txt and no other, what each of them
# is, that links lead somewhere, that nothing tells of the machine where it was made, and that the
# samples are built from it alone.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
root="$PWD"
work="$root/build/package"
status=0
checked="the package"
. scripts/expect.sh

# fail WHAT: and goes on.
fail() {
  echo "$checked: $1"
  status=1
}

# A copy without its history is of no time.
if [[ -z "${SOURCE_DATE_EPOCH:-}" ]] && ! git rev-parse HEAD >/dev/null 2>&1; then
  SOURCE_DATE_EPOCH="$(stat -c %Y CMakeLists.txt)"
  export SOURCE_DATE_EPOCH
fi

rm -rf "$work"
scripts/package.sh "$work/first"
scripts/package.sh "$work/second" >"$work/second.log" 2>&1 || { cat "$work/second.log"; exit 1; }
archive="$(echo "$work"/first/*.zip)"
name="$(basename "$archive" .zip)"
cmp "$archive" "$work/second/$name.zip" || fail "made again it is another one"

# ---- The archive ----------------------------------------------------------------------------------

unzip -tqq "$archive" || fail "unzip does not take it"
expect "modes" "-rw-r--r-- -rwxr-xr-x" "$(zipinfo -l "$archive" | awk '/^-/ {print $1}' | sort -u | xargs)"
stamp="$(zipinfo -T "$archive" | awk '/^-/ {print $(NF - 1)}' | sort -u)"
[[ "$stamp" =~ ^[0-9]{8}\.[0-9]{6}$ ]] || fail "its files are of several times: $stamp"
unzip -q "$archive" -d "$work/unpacked"
top="$work/unpacked/$name"

files="$(cd "$top" && find . -type f | sed 's|^\./||')"
expect "files (package/manifest.txt)" "$(sed "s/@NAME@/$name/" package/manifest.txt)" "$files"
expect "files with a checksum" "$(grep -vx SHA256SUMS <<<"$files")" "$(cut -c 67- "$top/SHA256SUMS")"
(cd "$top" && sha256sum --strict --quiet -c SHA256SUMS) || fail "checksums differ"
expect "version" "${name#VexoCtrlSDK-}" "$(cat "$top/VERSION")"

# ---- The source -----------------------------------------------------------------------------------

mkdir "$work/source"
tar -xzf "$top/source/$name.tar.gz" -C "$work/source"
expect "what its source lacks of, or has otherwise than, the project" "" \
  "$(diff -rq . "$work/source/$name" --exclude=.git --exclude=build --exclude=out --exclude='vexosim-demo*.png' \
    --exclude=__pycache__ || true)"

# ---- Nothing tells of this machine ----------------------------------------------------------------

for place in "$root" "$HOME" "$(dirname "$work")"; do
  found="$(cd "$work" && grep -rlaF "$place/" unpacked source || true)"
  [[ -z "$found" ]] || fail "files that name $place: $found"
done

# ---- Files by their kinds -------------------------------------------------------------------------

for machine in arm thumb; do
  device/check_import_library.py "$top/device/$machine" "$machine" || fail "import library for $machine"
  llvm-readobj --file-headers --sections --coff-exports --coff-imports --coff-resources \
    "$top/device/$machine/VexoCtrlSDK.DLL" >"$work/readobj.txt" || fail "LLVM does not read the image for $machine"
done
device/check_link.sh "$top" || fail "hosts do not link"
times="$(tar --utc --full-time -tvzf "$top/source/$name.tar.gz" | awk '{print $4, $5}' | sort -u)"
/usr/bin/python3 package/check.py "$top" "$(date -u -d "$times" +%s)" || status=1
while IFS= read -r page; do
  tidy -q -e "$page" 2>"$work/tidy.txt" || fail "$page: $(cat "$work/tidy.txt")"
done < <(find "$top" -name '*.html')

# ---- The samples, from the package alone ----------------------------------------------------------

"$top/samples/recorder/check_device.sh" >"$work/samples.txt" 2>&1 ||
  { cat "$work/samples.txt"; fail "the sample recorder is not compiled for the device"; }
for processor in x86_64 i686; do
  (cd "$top" && "$processor-w64-mingw32-gcc-posix" -Iinclude samples/recorder/*.c -mwindows -o "$work/recorder.exe") ||
    fail "the sample recorder is not built for $processor"
done

((status)) || echo "$(basename "$archive"): $(wc -l <<<"$files") files, $(stat -c %s "$archive") bytes; all as wanted."
exit "$status"
