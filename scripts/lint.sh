#!/usr/bin/env bash
# Runs clang-tidy: scripts/lint.sh [FOLDER|FILE]... on what is named, or on every source.
#
# Most of the time goes into the standard headers, so the sources of a folder are read together, as
# one file that includes them; those whose names collide are read apart. What ships is read file by
# file, for each machine that it is compiled for. What was clean is not read again until one of its
# sources, a header or a setting changes.
set -uo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
cd "$root" || exit 1
work="$root/build/lint"

# A row a group: how the sources are compiled, whether they are read together or each alone, and
# their folders. (Folders below one count only where they are named too.)
groups='
windows together windows windows/kit
windows together windows/checks windows/drive
library alone    src/report src/chip src/display src/motion src/setup src/text src/api
windows alone    src/platform/ce
device  alone    src/platform/ce device/library device/program device/check/ce
pc      together files
pc      together sim sim/board
pc      together sim/kernel
pc      together sim/platform
pc      together sim/screen sim/picture
pc      together harness script script/grammar script/help script/outcome script/listing
pc      together device/emulator
pc      together desk/console desk/page desk/port desk/bench
pc      together desk/library
pc      together device/ceimage
pc      together device/plan device/verdict
pc      together device/check
pc      together tools/vexosim
pc      together tools/vexosim/commands tools/vexosim/listing tools/vexosim/shell
pc      together tools/vexosim/traces
pc      together tools/vexosim/plan
pc      together bench
pc      together fuzz
pc      together tests/display tests/files
pc      together tests/api tests/harness tests/soak tests/support
pc      together tests/text tests/model
pc      together tests/setup tests/chip tests/motion tests/report
pc      together tests/sim tests/sim/board tests/sim/kernel tests/sim/picture tests/sim/platform tests/sim/screen
pc      together tests tests/script tests/tools tests/tools/commands tests/tools/plan tests/tools/shell tests/tools/traces tests/script/grammar tests/script/help tests/script/listing tests/script/outcome
pc      together tests/desk/console tests/desk/page tests/desk/port tests/desk/bench
pc      together tests/desk/library
pc      together tests/device/ceimage tests/device/check tests/device/emulator tests/device/library tests/device/plan tests/device/verdict
pc      together tests/device/image
pc      together scripts/mutants
'

# Where a compiler for another machine finds its headers, but for those of the compiler itself.
headers_of() {
  echo -nostdlibinc
  "$1" -x c++ -E -v /dev/null 2>&1 | sed -n '/^#include <\.\.\.>/,/^End/s/^ //p' |
    awk '!/\/(include|include-fixed|backward)$/ || /\.\./ {print "-isystem" $0}'
}

# flags HOW: of the compiler, a line each.
flags() {
  local common=(-Iinclude -Isrc -ferror-limit=0)
  local library=(-std=c++17 -fno-exceptions -fno-rtti -fno-threadsafe-statics)
  # Else the analyzer spends most of its time inside the standard library.
  local others=(-std=c++20 -I. -Xclang -analyzer-config -Xclang c++-stdlib-inlining=false)
  case "$1" in
    library) printf '%s\n' "${common[@]}" "${library[@]}" -Isim/platform ;;
    pc)
      printf '%s\n' "${common[@]}" "${others[@]}" -Isim/platform "-DVEXO_SOURCE_DIR=\"$root\"" \
        '-DVEXO_DEFAULT_IMAGE=""' '-DVEXOSIM=""'
      ;;
    windows)
      printf '%s\n' "${common[@]}" "${others[@]}" -Isrc/platform/ce -Iwindows/kit \
        --target=x86_64-w64-mingw32 -isystem"$work/headers"
      headers_of x86_64-w64-mingw32-g++-posix
      ;;
    device)
      printf '%s\n' "${common[@]}" "${library[@]}" -I. -Isrc/platform/ce -ffreestanding -fshort-wchar \
        -fsigned-char -fno-short-enums --target=armv4t-none-eabi
      headers_of arm-none-eabi-g++
      ;;
  esac
}

# tidy NAME HOW FOLDERS SOURCE...: findings go to the output. Several sources are read together.
tidy() {
  local name="$1" how="$2" headers="$3" status=0 found source
  shift 3
  local input="$1" log="$work/$name.log"
  local -a arguments=()
  mapfile -t arguments < <(flags "$how")
  if (($# > 1)); then
    # The analyzer looks into what such a file includes.
    input="$work/$name/UnifiedSource.cpp"
    mkdir -p "${input%/*}"
    printf '#include "%s"  // NOLINT\n' "$@" >"$input"
    # The compiler alone says soon whose names collide.
    if ! clang++ "${arguments[@]}" -fsyntax-only "$input" >"$log" 2>&1; then
      found="$(sed -nE "s|^($root/)?(\./)?([^ :]*\.cpp):[0-9:]+ error: .*|\3|p" "$log" | sort -u)"
      local -a clean=() apart=()
      for source in "$@"; do
        if grep -qxF "$source" <<<"$found"; then apart+=("$source"); else clean+=("$source"); fi
      done
      if ((${#apart[@]} == 0 || ${#clean[@]} == 0)); then
        clean=("${@:1:$#/2}")
        apart=("${@:$#/2+1}")
      fi
      tidy "$name" "$how" "$headers" "${clean[@]}" || status=1
      tidy "$name" "$how" "$headers" "${apart[@]}" || status=1
      return "$status"
    fi
  fi
  clang-tidy --quiet --header-filter="^($root/|\./)?($headers)/[^/]*$" "$input" -- \
    "${arguments[@]}" >"$log" 2>&1 && { rm "$log"; return; }
  grep -vE '^[0-9]+ (warnings?|errors?).* generated\.$|^[0-9]+ warnings? treated as errors?$|^Error while processing ' "$log"
  return 1
}

# lint_group HOW MODE FOLDER...: a row of the table. Of all its sources only those that are named in
# $only, if any; and nothing when nothing has changed since all were clean.
lint_group() {
  local how="$1" mode="$2" name="${3%%/*}/$1-${3//\//-}" status=0 source sum=""
  shift 2
  local headers="$*"
  headers="${headers// /|}"
  local -a sources=()
  mapfile -t sources < <(find "$@" -maxdepth 1 -name '*.cpp' | sort | grep -E "$only")
  ((${#sources[@]})) || return 0
  # The device's system needs nothing of what stands in for it on the desktop.
  [[ "$how" != device ]] ||
    mapfile -t sources < <(printf '%s\n' "${sources[@]}" | grep -v /desktop.cpp)
  if [[ -z "$only" ]]; then
    sum="$({ flags "$how"; cat "${sources[@]}" "$work/settings"; } | sha1sum)"
    [[ "$(cat "$work/$name.ok" 2>/dev/null)" != "$sum" ]] || return 0
  fi

  if [[ "$mode" == together ]]; then
    tidy "$name" "$how" "$headers" "${sources[@]}" || status=1
  else
    for source in "${sources[@]}"; do
      tidy "$name" "$how" "$headers" "$source" || status=1
    done
  fi
  if ((status)); then
    rm -f "$work/$name.ok"
  elif [[ -n "$sum" ]]; then
    echo "$sum" >"$work/$name.ok"
  fi
  return "$status"
}

# A process for each group, as many at a time as there are processors; each prints all at once.
if [[ "${1:-}" == --group ]]; then
  findings="$(lint_group "${@:2}" 2>&1)"
  status=$?
  [[ -z "$findings" ]] || printf '%s\n' "$findings"
  exit "$status"
fi

only=""
(($# == 0)) || only="^($(sed -E 's|/*( \|$)|\1|g; s/[.]/\\./g; s/ /|/g' <<<"$*"))(/|$)"
export only
for folder in $(awk '{for (i = 3; i <= NF; ++i) print $i}' <<<"$groups" | cut -d / -f 1 | sort -u); do
  mkdir -p "$work/$folder"
  # The joined files take the folder's own settings, too.
  [[ ! -e "$folder/.clang-tidy" ]] || cp "$folder/.clang-tidy" "$work/$folder"
done
mkdir -p "$work/headers"
ln -sfn /usr/include/nlohmann "$work/headers/nlohmann"
# What every group depends on.
find files include src sim harness script desk tools tests bench fuzz windows device \
  \( -name '*.h' -o -name .clang-tidy \) -print0 | sort -z |
  xargs -0 cat .clang-tidy scripts/lint.sh >"$work/settings"

grep . <<<"$groups" | xargs -P "$(nproc)" -L 1 scripts/lint.sh --group
