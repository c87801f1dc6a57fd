#!/usr/bin/env bash
# Makes the package, VexoCtrlSDK-VERSION.zip, in the folder out/: the library for the device in both
# machine numbers, the check for the board with its plans, the sample recorder, the desk kits, headers,
# samples, documents, and the source of all.
#
#   scripts/package.sh [FOLDER]   another folder than out/
#
# The same sources give the same package, byte for byte, when SOURCE_DATE_EPOCH is the same: the time,
# in seconds since 1970, that the libraries call that of their build. Where it is not given, the last
# commit's is taken. The version is that of CMakeLists.txt.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
out="$(mkdir -p "${1:-$root/out}" && cd "${1:-$root/out}" && pwd)"
umask 022
export LC_ALL=C TZ=UTC

version="$(sed -n 's/^project(VexoCtrlSDK VERSION \([0-9.]*\) .*/\1/p' "$root/CMakeLists.txt")"
name="VexoCtrlSDK-$version"
if [[ -z "${SOURCE_DATE_EPOCH:-}" ]]; then
  SOURCE_DATE_EPOCH="$(git -C "$root" log -1 --format=%ct)" || {
    echo "This is no clone of the repository, so set SOURCE_DATE_EPOCH to the time of the package." >&2
    exit 1
  }
fi
export SOURCE_DATE_EPOCH

# ---- What goes into it is built -------------------------------------------------------------------

# The one source that has the time of its build in it; a cache may be set to overlook that.
export CCACHE_SLOPPINESS=pch_defines
find "$root"/build/device* "$root"/build/windows-* -name 'lifecycle.cpp.*' -delete 2>/dev/null || true
"$root/device/build.sh" arm >&2
"$root/device/build.sh" thumb >&2
"$root/windows/build.sh" >&2
"$root/scripts/build.sh" gcc vexosim >&2

# ---- It is laid out -------------------------------------------------------------------------------

work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
top="$work/$name"

# put FOLDER FILE...: into a folder of the package; programs and libraries are none that Linux runs.
put() {
  mkdir -p "$top/$1"
  install -m 644 -t "$top/$1" "${@:2}"
}

# sources [FOLDER...]: the project's files, tracked or not yet; without a repository all that is
# there but what builds leave.
sources() {
  if git -C "$root" rev-parse --git-dir >/dev/null 2>&1; then
    git -C "$root" ls-files -co --exclude-standard "$@"
  else
    (cd "$root" && find "${@:-.}" -type f -not -path './build*' -not -path './out/*' -not -path './.git/*' \
      -not -name '*.pyc' | sed 's|^\./||')
  fi | while IFS= read -r file; do
    # One that is gone and not committed as such.
    [[ ! -e "$root/$file" ]] || printf '%s\n' "$file"
  done | sort
}

for machine in arm thumb; do
  build="$root/build/device"
  [[ "$machine" == arm ]] || build+="-$machine"
  put "device/$machine" "$build"/VexoCtrlSDK.{DLL,lib,def} "$build"/{VexoCheck,recorder}.exe
  # The linker calls objects by where they were built.
  for map in VexoCtrlSDK.map VexoCheck.map recorder.map; do
    sed "s|$root/|/|g" "$build/$map" >"$top/device/$machine/$map"
  done
done
put device/plans "$root/package/first_day.vexo"
while IFS= read -r board; do
  mkdir "$top/device/plans/$board"
  # Named as the plan is to name it.
  (cd "$root/package" && "$root/build/gcc/vexosim" plan --variant "$board" first_day.vexo \
    --output "$top/device/plans/$board/VexoCheck.plan")
done < <(sed -n 's/^variants //p' "$root/package/first_day.vexo" | tr ' ' '\n')
for processor in x86_64 i686; do
  build="$root/build/windows-$processor"
  put "windows/$processor" "$build"/kit/{VexoCtrlSDK,CEDDK,ExtRtcNVramCtl}.dll \
    "$build"/kit/Vexo{Run,Line}.exe "$build/libVexoCtrlSDK.dll.a" "$build/recorder/recorder.exe"
done
put include "$root"/include/*.h
while IFS= read -r file; do
  put "$(dirname "$file")" "$root/$file"
done < <(sources samples)
chmod 755 "$top/samples/recorder/check_device.sh"

put docs "$root"/docs/*.{md,csv} "$root/package/style.css"
put docs/images "$root"/docs/images/*
put . "$root/package/README.md" "$root/CHANGELOG.md"
"$root/package/pages.py" "$top" "$version"
printf '%s\n' "$version" >"$top/VERSION"

mkdir "$top/source"
sources | tar -C "$root" --no-recursion --mtime="@$SOURCE_DATE_EPOCH" --owner=0 --group=0 --numeric-owner \
  --mode='u=rwX,go=rX' --format=ustar --transform="s|^|$name/|S" -T - -cf - |
  gzip -9n >"$top/source/$name.tar.gz"

(cd "$top" && find . -type f | sed 's|^\./||' | sort | xargs -d '\n' sha256sum >"$work/sums")
install -m 644 "$work/sums" "$top/SHA256SUMS"

# ---- It is packed ---------------------------------------------------------------------------------

find "$top" -exec touch -h -d "@$SOURCE_DATE_EPOCH" {} +
rm -f "$out/$name.zip"
(cd "$work" && find "$name" -type f | sort | zip -q -9 -X -D -@ "$out/$name.zip")
echo "$out/$name.zip: $(find "$top" -type f | wc -l) files, $(stat -c %s "$out/$name.zip") bytes," \
  "time $(date -d "@$SOURCE_DATE_EPOCH" '+%Y-%m-%d %H:%M:%S') UTC"
