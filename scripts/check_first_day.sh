#!/usr/bin/env bash
# Plays the first day on a board, from the package alone, on the emulated device: with a good board,
# and with boards and systems in which something is wrong. Each gets a verdict that names the cause.
#
#   scripts/check_first_day.sh [PACKAGE [VEXOSIM]]   the folder that the package was unpacked to
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
package="$(realpath "${1:-$(echo "$root"/build/package/unpacked/*)}")"
vexosim="$(realpath "${2:-$root/build/gcc/vexosim}")"
scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT
passed=0
failed=0

# day NAME CAUSE BOARD [OPTION...]: cards are made of the package's files; BOARD is lines that make
# the board otherwise, and PREPARE, run in the card, what is done to the card. CAUSE is what the
# verdict names first, and "none" that all is well.
day() {
  local name="$1" cause="$2" board="$3" card="$scratch/card" found status=0
  shift 3
  rm -rf "$card"
  mkdir "$card"
  cp "$package/device/${machine:-arm}"/VexoC*.{exe,DLL} "$package/device/plans/16-ntsc/VexoCheck.plan" "$card"
  (cd "$card" && eval "${prepare:-:}")
  printf '%s\n' "$board" >"$scratch/board.vexo"
  "$vexosim" device "$card" VexoCheck.exe --script "$scratch/board.vexo" --cycle-ns "${cycle_ns:-200}" "$@" \
    >"$scratch/device.txt" 2>&1 || true
  "$vexosim" verdict "$package/device/plans/16-ntsc/VexoCheck.plan" "$card/VexoCheck.log" \
    >"$scratch/verdict.txt" 2>&1 || status=$?
  found="$(sed -nE 's/^Cause \[(.*)\]: .*/\1/p' "$scratch/verdict.txt")"
  ((status != 0)) || found=none
  if [[ "$found" == "$cause" ]]; then
    passed=$((passed + 1))
    printf '%-34s %s\n' "$name" "$(sed -nE 's/^Cause \[.*\]: //p; 1{/^The device/p}' "$scratch/verdict.txt")"
    return
  fi
  failed=$((failed + 1))
  echo "$name: expected the cause $cause, found ${found:-none named}"
  tail -n 3 "$scratch/device.txt"
  head -n 40 "$scratch/verdict.txt"
}

day "a good board" none "seed 0"
echo "    $(grep ^Bus: "$scratch/verdict.txt"; grep ^Ended: "$scratch/verdict.txt")" | tr '\n' ' '
echo
machine=thumb day "a system that takes thumb alone" none "seed 0" --machine thumb
day "a wanted base that is taken" none "seed 0" --base-taken
day "another order of threads" none "seed 7"

# ---- Card and system ------------------------------------------------------------------------------

prepare='rm VexoCtrlSDK.DLL' day "no library" library-absent "seed 0"
prepare='rm VexoCheck.plan' day "no plan" plan-absent "seed 0"
prepare='head -c 60000 VexoCheck.plan >x; mv x VexoCheck.plan' day "a plan that was cut" plan-damaged "seed 0"
prepare='cp "$package/windows/x86_64/VexoCtrlSDK.dll" VexoCtrlSDK.DLL' day "the desktop's library" not-for-arm "seed 0"
prepare='cp "$package/device/thumb/VexoCheck.exe" .' day "the wrong machine number" machine-number "seed 0" \
  --machine thumb
day "an import missing" import-missing "seed 0" --without-import SendMessageTimeout
day "an import by number missing" import-missing "seed 0" --without-import '#8'
day "no NVRAM library" import-missing "seed 0" --without-import RTCNVRAM_Init
day "switched off" log-cut "seed 0" --limit 5000ms
day "another process has the library" taken "fault event-exists on"
day "a shared section that is not shared" not-shared "seed 0" --unshared

# ---- The board ------------------------------------------------------------------------------------

day "a dead chip" chip-id "board id slave1 0"
day "another chip" chip-id "board id slave2 0x30"
day "no chips" no-chip "board chips 0"
day "a window that cannot be mapped" no-chip "fault map-select on"
day "data lines 2 and 7 exchanged" data-lines "bus exchange 2 7"
day "data lines 1 and 4 exchanged" data-lines "bus exchange 1 4"
day "data lines 0 and 2 exchanged" no-chip "bus exchange 0 2"
day "a data line that is always 0" no-chip "bus hold 1 0"
day "a stuck settle bit" settle "settle never"
day "an NVRAM that cannot be read" nvram-unreadable "nvram fail read"
day "an NVRAM that cannot be written" nvram-unwritable "nvram fail write"
day "no camera driver" driver-absent "driver CAM1: absent"
day "no video back-end" driver-absent "driver VBE1: absent"
cycle_ns=20000 day "a slow bus" slow-bus "seed 0"
day "a deaf window" no-messages "window deaf"
day "no thread" no-monitor "fault thread on"
day "a sync bit that never comes" no-monitor "sync hold 0"
day "cameras unplugged" cameras "$(printf 'camera 4 off\ncamera 9 off')"
day "PAL cameras" cameras "camera all pal"

echo "First day: $passed tests passed, $failed failed."
((failed == 0))
