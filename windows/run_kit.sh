#!/usr/bin/env bash
# Runs what is made for Windows under Wine, on the desk kit: every script through the DLL, with the
# trace that the PC has of it; and the checks of processes, threads and the bus. The Wine prefixes
# are the build's own, and no display is needed.
#
# usage: run_kit.sh BUILD [SCRIPT...]    BUILD: the folder of the Windows build
# Exit status 77: nothing was run, because this machine has no Wine for the build's processor.
set -u

root=$(cd "$(dirname "$0")/.." && pwd)
build=$(cd "$1" && pwd) || exit 2
shift
[ $# -gt 0 ] || set -- "$root"/tests/scripts/*.vexo
vexosim=$root/build/gcc/vexosim

for program in wine "$vexosim"; do
  command -v "$program" >/dev/null || { echo "run_kit: there is no $program" >&2 && exit 2; }
done

unset DISPLAY WAYLAND_DISPLAY
export WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe=d" WINEARCH=win64
ulimit -u 4000  # a program that starts processes without end does not take the machine along

# An empty folder to be in: a file called "CAM1:" there would be opened in the driver's place.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Debian's Wine for 64 bits comes without the one for 32, which refuses its programs at once.
if grep -qx 'VEXO_PROCESSOR:.*=i686' "$build/CMakeCache.txt"; then
  WINEARCH=win32
  if WINEPREFIX=$work/none timeout 120 wine cmd /c exit 2>&1 | grep -q 'cannot support 64-bit'; then
    echo "Windows kit: there is no 32-bit Wine here, so the 32-bit kit was not run."
    exit 77  # skipped
  fi
fi

# A prefix whose windows need no display.
make_prefix() {
  WINEPREFIX=$1
  export WINEPREFIX
  [ -e "$WINEPREFIX/ready" ] && return
  rm -rf "$WINEPREFIX"
  timeout 120 wine reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f >/dev/null 2>&1 &&
    timeout 60 wineserver -w && : >"$WINEPREFIX/ready"
}

# in_wine PROGRAM WORD...: its standard error goes to the file "errors", and is shown on failure.
in_wine() {
  timeout --kill-after=10 240 wine "$@" 2>>errors
}

# ---- The parts: each in a prefix and a folder of its own ----------------------------------------

# The trace of each script and variant is that of the PC, but for the time of the build.
run_scripts() {
  local script name variants variant differing=0 compared=0
  local -a inputs=()
  for script in "$@"; do inputs+=("Z:$(realpath "$script")"); done
  mkdir dll pc
  in_wine "$build/kit/VexoRun.exe" "${inputs[@]}" --traces dll >expectations || return
  for script in "$@"; do
    name=$(basename "$script" .vexo)
    variants=$(sed -n 's/#.*//; s/^ *variants //p' "$script")
    for variant in ${variants:--}; do
      set -- "$name" --quiet
      [ "$variant" = - ] || set -- "$name.$variant" --quiet --variant "$variant"
      "$vexosim" run "$script" "${@:2}" --trace "pc/$1" >/dev/null 2>>errors
      sed -Ei 's/(>> build : ).{20}/\1/' "pc/$1" "dll/$1.jsonl"
      compared=$((compared + 1))
      cmp -s "pc/$1" "dll/$1.jsonl" && continue
      differing=$((differing + 1))
      echo "$1: the traces differ (< PC, > DLL):"
      diff "pc/$1" "dll/$1.jsonl" | cut -c1-200 | head -5
    done
  done
  echo "$((compared - differing)) of $compared traces the same through the DLL," \
    "$(awk '{sum += $(NF - 2)} END {print sum}' expectations) expectations met," \
    "$(cat pc/* | wc -l) events"
  ((compared != 0 && differing == 0))
}

# What the kit says and keeps.
run_kit() {
  "$root/windows/check_kit.sh" "$build/kit" 2>>errors
}

# beside_kit FOLDER PROGRAM: a folder with the program and the kit, and no settings.
beside_kit() {
  mkdir "$1"
  cp "$build"/kit/{CEDDK,ExtRtcNVramCtl,VexoCtrlSDK}.dll "$2" "$1"
}

run_checks() {
  beside_kit one "$build/checks/Checks.exe"
  in_wine one/Checks.exe
}

# The sample recorder by its keys; its pictures are those of a script that does the same.
run_recorder() {
  beside_kit one "$build/recorder/recorder.exe"
  beside_kit other "$build/recorder/recorder.exe"
  in_wine "$build/drive/DriveRecorder.exe" one other &&
    "$root/windows/compare_pictures.sh" "$vexosim" "$root/windows/drive/pictures.vexo" one
}

# part NAME WORD...: its output and status go to files.
part() {
  local name=$1
  shift
  mkdir "$work/$name"
  (
    make_prefix "$build/wine-$name" || { echo "run_kit: no Wine prefix" && exit 2; }
    cd "$work/$name" || exit 2
    "run_$name" "$@"
    status=$?
    timeout 30 wineserver -k
    exit $status
  ) >"$work/$name.out" 2>&1
  echo $? >"$work/$name.status"
}

begin=$(date +%s)
parts="scripts checks kit recorder"
part scripts "$@" &
part checks &
part kit &
part recorder &
wait

result=0
for name in $parts; do
  cat "$work/$name.out"
  [ "$(cat "$work/$name.status")" = 0 ] && continue
  result=1
  echo "run_kit: $name: exit status $(cat "$work/$name.status")"
  [ ! -s "$work/$name/errors" ] || tail -20 "$work/$name/errors"
done
echo "Windows kit: $([ $result = 0 ] && echo passed || echo FAILED) in $(($(date +%s) - begin)) s"
exit $result
