#!/usr/bin/env bash
# Runs the sample recorder with the image on the emulated device: alone, beside a second one, and
# beside the check program: device/run_recorder.sh [VEXOSIM [DIRECTORY]]
#
# The directory holds recorder.exe, VexoCheck.exe and VexoCtrlSDK.DLL. What the recorder's window
# says, and what the library writes to the debug output meanwhile, must be as it stands here.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
vexosim="$(realpath "${1:-$root/build/gcc/vexosim}")"
images="$(realpath "${2:-$root/build/device}")"
status=0
. "$root/scripts/expect.sh"
card="$(mktemp -d)"
trap 'rm -rf "$card"' EXIT
mkdir "$card/DLL" "$card/Windows"
cp "$images"/{recorder,VexoCheck}.exe "$card"
cp "$images/VexoCtrlSDK.DLL" "$card/Windows"
(cd "$root/tests/scripts" &&
  "$vexosim" plan live_split_16ch.vexo --variant ntsc --output "$card/VexoCheck.plan")

# play PROGRAM: runs it with the script on standard input; its output goes to output.txt.
play() {
  { echo 'file \Windows\Main.exe 1.0.0.0'; cat; } >"$card/script.vexo"
  "$vexosim" device "$card" "$1" --script "$card/script.vexo" >"$card/output.txt" 2>&1 || true
}

# wanted WHAT LINE...: of the output, without what the library writes, in this order.
wanted() {
  local what="$1"
  shift
  in_order "$what" "$(printf '%s\n' "$@")" "$(grep -v '^|' "$card/output.txt")"
}

# in_order WHAT WANTED FOUND
in_order() {
  local difference
  difference="$(diff <(echo "$2") <(echo "$3"))" && return
  echo "$checked: $1 (< wanted, > found):"
  grep '^[<>]' <<<"$difference"
  status=1
}

# ---- Alone ----------------------------------------------------------------------------------------

checked="recorder.exe alone"
play recorder.exe <<'SCRIPT'
wait 2000
camera 5 off
wait 1000
weak 12 on
wait 1000
motion 2 on
wait 1000
key 9
wait 500
key right
wait 500
key p
wait 500
key p
wait 500
key m
wait 500
key up
wait 500
key k
wait 500
key m
wait 500
motion 2 off
wait 1000
weak 12 off
camera 5 ntsc
wait 1000
key esc
SCRIPT
all="lost 1020 | motion 0004"
wanted "titles" \
  "= starting" \
  "= starting | lost 0000 | motion 0000 | 0x0000 = 0" \
  "= live 16: 0-15 | lost 0000 | motion 0000 | 0xF001 = 0" \
  "= live 16: 0-15 | lost 0020 | motion 0000 | 0xF001 = 0" \
  "= live 16: 0-15 | lost 1020 | motion 0000 | 0xF001 = 0" \
  "= live 16: 0-15 | $all | 0xF001 = 0" \
  "= live 9: 0-8 | $all | 0xF005 = 0" \
  "= live 9: 7-15 | $all | 0xF005 = 0" \
  "= playback 9: 7-15 | $all | 0xF00D = 0" \
  "= live 9: 7-15 | $all | 0xF009 = 0" \
  "= motion 7, level 1, whole | $all | 0xF00E = 0" \
  "= motion 7, level 2, whole (preview) | $all | 0xF010 = 0" \
  "= motion 7, level 2, whole | $all | 0xF007 = 0" \
  "= live 9: 7-15 | $all | 0xF005 = 0" \
  "= live 9: 7-15 | lost 1020 | motion 0000 | 0xF005 = 0" \
  "= live 9: 7-15 | lost 0000 | motion 0000 | 0xF005 = 0" \
  "= ended | lost 0000 | motion 0000 | 0xF002 = 0" \
  "recorder.exe ended with exit code 0"
in_order "texts of the library" "| [VexoCtrlSDK]: >> build : TIME
| [VexoCtrlSDK]: >> VEXO SDK Version : 1. 0. 1. 6
| [VexoCtrlSDK]: 
|  g_vid_loss_mask : 0000 SYSTEM : [VexoCtrlSDK]: [NTSC]
| [VEXOSDK]: APP Ver : Ver 1. 0. 0. 0
| [VexoCtrlSDK]: >> TW2835 Initialize Complete!
| [VexoCtrlSDK]: >> FINISH NTSC CAMERA!!
| [VexoCtrlSDK]: >> TW_SetLiveModeInfo ALREADY LIVE MODE
| [VEXOSDK]: >> [THREAD_ID 0x00001004] check worker thread set run flag!
| [VexoCtrlSDK]: >> VIDEO LOSS DETECT 0x00000020
| [VexoCtrlSDK]: >> VIDEO LOSS DETECT 0x00001020
| [VexoCtrlSDK]: ==>> VEXO MOTDET CELL TYPE 1 
| [VexoCtrlSDK]: >> VIDEO LOSS DETECT 0x00000000" \
  "$(sed -nE 's/(>> build : ).*/\1TIME/; /^\|/p' "$card/output.txt")"

# ---- Two of them ----------------------------------------------------------------------------------

# The second one is told that the library is taken, and ends by the key; so does a third one when the
# first has worked on meanwhile.
checked="two recorders"
play recorder.exe <<'SCRIPT'
wait 1000
start recorder.exe
wait 1000
key 4
key esc
wait 500
key 9
wait 500
start \recorder.exe
wait 500
key esc
wait 500
key esc
SCRIPT
taken="uninitialized: another process has the library"
wanted "titles" \
  "= starting" \
  "= starting | lost 0000 | motion 0000 | 0x0000 = 0" \
  "= live 16: 0-15 | lost 0000 | motion 0000 | 0xF001 = 0" \
  "=2 starting" \
  "=2 $taken | lost 0000 | motion 0000 | 0x0000 = 0" \
  "=2 ended | lost 0000 | motion 0000 | 0x0000 = 0" \
  "program 2 (recorder.exe) ended with exit code 0" \
  "= live 9: 0-8 | lost 0000 | motion 0000 | 0xF005 = 0" \
  "=3 starting" \
  "=3 $taken | lost 0000 | motion 0000 | 0x0000 = 0" \
  "=3 ended | lost 0000 | motion 0000 | 0x0000 = 0" \
  "program 3 (recorder.exe) ended with exit code 0" \
  "= ended | lost 0000 | motion 0000 | 0xF002 = 0" \
  "recorder.exe ended with exit code 0"

# ---- Beside the check -----------------------------------------------------------------------------

# The check finds the library taken, and starts a second process itself.
checked="the check beside a recorder"
play recorder.exe <<'SCRIPT'
wait 1000
start VexoCheck.exe
wait 5000
key 4
wait 500
key esc
SCRIPT
wanted "titles" \
  "= starting" \
  "= starting | lost 0000 | motion 0000 | 0x0000 = 0" \
  "= live 16: 0-15 | lost 0000 | motion 0000 | 0xF001 = 0" \
  "program 3 (VexoCheck.exe) ended with exit code 31" \
  "program 2 (VexoCheck.exe) ended with exit code 1" \
  "= live 4: 0-3 | lost 0000 | motion 0000 | 0xF005 = 0" \
  "= ended | lost 0000 | motion 0000 | 0xF002 = 0" \
  "recorder.exe ended with exit code 0"
"$vexosim" verdict "$card/VexoCheck.plan" "$card/VexoCheck.log" >"$card/verdict.txt" || true
expect "cause that the verdict names" taken "$(sed -nE 's/^Cause \[(.*)\]: .*/\1/p' "$card/verdict.txt")"

# The recorder comes second, and the check goes on undisturbed.
checked="a recorder beside the check"
play VexoCheck.exe <<'SCRIPT'
wait 100
start recorder.exe
wait 100
key 4
key esc
SCRIPT
wanted "titles" \
  "=2 starting" \
  "=2 $taken | lost 0000 | motion 0000 | 0x0000 = 0" \
  "=2 ended | lost 0000 | motion 0000 | 0x0000 = 0" \
  "program 2 (recorder.exe) ended with exit code 0" \
  "program 3 (VexoCheck.exe) ended with exit code 31" \
  "VexoCheck.exe ended with exit code 0"
expect "differences" "0" "$(sed -n 's/^0 [0-9]* end [0-9]* //p' "$card/VexoCheck.log")"

((status)) || echo "recorder.exe: $(stat -c %s "$images/recorder.exe") bytes; alone, beside a second one and beside" \
  "VexoCheck.exe as wanted."
exit "$status"
