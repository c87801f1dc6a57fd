#!/usr/bin/env bash
# Runs the Windows host under Wine: every script through the DLL and on the PC, and the checks of
# processes, threads and the bus. The Wine prefixes are the build's own, and no display is needed.
#
# usage: run_host.sh BUILD [SCRIPT...]    BUILD: the folder of the Windows build
# Exit status 77: nothing was run, because this machine has no Wine for the build's processor.
set -u

here=$(cd "$(dirname "$0")" && pwd)
build=$(cd "$1" && pwd) || exit 2
shift
[ $# -gt 0 ] || set -- "$here"/../tests/scripts/*.vexo

if ! command -v wine >/dev/null; then
  echo "run_host: there is no wine" >&2
  exit 2
fi

unset DISPLAY WAYLAND_DISPLAY
export WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe=d" WINEARCH=win64
ulimit -u 4000  # a host that starts processes without end does not take the machine along

# An empty folder to be in: a file called "CAM1:" there would be opened in the driver's place.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/scripts" "$work/checks"

# Debian's Wine for 64 bits comes without the one for 32, which refuses its programs at once.
if grep -qx 'VEXO_PROCESSOR:.*=i686' "$build/CMakeCache.txt"; then
  WINEARCH=win32
  if WINEPREFIX=$work/none timeout 120 wine cmd /c exit 2>&1 | grep -q 'cannot support 64-bit'; then
    echo "Windows host: there is no 32-bit Wine here, so the 32-bit DLL was not run."
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

# One part in a prefix of its own; its output and status go to files.
run_part() {
  part=$1
  shift
  (
    make_prefix "$build/wine-$part" || { echo "run_host: no Wine prefix" && exit 2; }
    cd "$work/$part" || exit 2
    timeout --kill-after=10 240 wine "$build/run/Main.exe" "$@" 2>errors
    status=$?
    timeout 30 wineserver -k
    exit $status
  ) >"$work/$part.out" 2>&1
  echo $? >"$work/$part.status"
}

begin=$(date +%s)
for script in "$@"; do
  (cd "$(dirname "$script")" && printf '%s/%s\n' "$(pwd)" "$(basename "$script")")
done >"$work/list"
# shellcheck disable=SC2046  # the names have no blanks
run_part scripts compare $(cat "$work/list") &
scripts=$!
run_part checks check &
wait $scripts
wait

result=0
for part in scripts checks; do
  [ "$(cat "$work/$part.status")" = 0 ] || result=1
  if [ "$part" = scripts ]; then
    grep -v ': the same: ' "$work/$part.out"
  else
    cat "$work/$part.out"
  fi
  if [ "$(cat "$work/$part.status")" != 0 ]; then
    echo "run_host: $part: exit status $(cat "$work/$part.status")"
    [ ! -s "$work/$part/errors" ] || tail -20 "$work/$part/errors"
  fi
done
echo "Windows host: $([ $result = 0 ] && echo passed || echo FAILED) in $(($(date +%s) - begin)) s"
exit $result
