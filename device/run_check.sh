#!/usr/bin/env bash
# Plays a check of the library on the emulated device, with a good board, as somebody does with a
# real one: device/run_check.sh [VEXOSIM [DIRECTORY]]
#
# The directory holds VexoCheck.exe and VexoCtrlSDK.DLL. The plan is made of scripts, the log must
# have no difference from it, and a plan that is wrong must not reach the board.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
vexosim="$(realpath "${1:-$root/build/gcc/vexosim}")"
images="$(realpath "${2:-$root/build/device}")"
status=0
. "$root/scripts/expect.sh"
scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT

# check NAME BOARD SCRIPT...: the board's lines, and the scripts of the plan.
check() {
  local name="$1" board="$2" card="$scratch/$1"
  shift 2
  mkdir -p "$card/DLL"
  cp "$images/VexoCheck.exe" "$card"
  cp "$images/VexoCtrlSDK.DLL" "$card/DLL"
  (cd "$root/tests/scripts" && "$vexosim" plan "$@" --output "$card/VexoCheck.plan")
  printf '%s\n' "$board" "file \\Windows\\Main.exe 1.0.0.0" >"$card/board.vexo"
  play "$card"
  checked="$card/VexoCheck.log"
  expect "what the program printed at its end" "VexoCheck.exe ended with exit code 0" \
    "$(tail -n 1 "$card/output.txt")"
  expect "imports that are missing" "0" "$(sed -n 's/^0 [0-9]* imports [0-9]* //p' "$checked")"
  expect "exports that are missing" "" "$(grep -E '^0 [0-9]+ export .* 0x0$' "$checked" || true)"
  expect "second process" '"ended" 31' "$(sed -n 's/^0 [0-9]* process //p' "$checked")"
  expect "stored settings" "" "$(grep -E ' nvram "(lost|unknown)"' "$checked" || true)"
  expect "differences" "0" "$(sed -n 's/^0 [0-9]* end [0-9]* //p' "$checked")"
  echo "$name: $(wc -c <"$card/VexoCheck.plan") bytes of plan, $(wc -l <"$checked") lines of log," \
    "$(tail -n 1 "$checked" | cut -d ' ' -f 2) ms of the board's time:" \
    "$(sed -n 's/^0 [0-9]* summary //p' "$checked")"
}

# play CARD: runs the check program of a card.
play() {
  "$vexosim" device "$1" VexoCheck.exe --script "$1/board.vexo" --cycle-ns 200 >"$1/output.txt" 2>&1 || true
}

check four "board chips 1" --variant ntsc live_split_4ch.vexo
check sixteen "board chips 4" live_split_16ch.vexo --variant ntsc play_and_back_16ch.vexo \
  channel_masks.vexo write_register.vexo dump_output_off.vexo

# A plan that has lost its end.
card="$scratch/four"
checked="$card/VexoCheck.log"
sed -i '$d' "$card/VexoCheck.plan"
play "$card"
expect "a plan that is cut" '"expected the line end, found the end of the file"' \
  "$(sed -n 's/^[0-9]* [0-9]* wrong //p' "$checked")"
expect "calls of a plan that is cut" "" "$(grep called "$checked" || true)"

# A plan that expects something else.
sed -i 's/^result 0$/result 3/' "$card/VexoCheck.plan"
echo end >>"$card/VexoCheck.plan"
play "$card"
expect "a plan that expects something else" "VexoCheck.exe ended with exit code 1" \
  "$(tail -n 1 "$card/output.txt")"
exit "$status"
