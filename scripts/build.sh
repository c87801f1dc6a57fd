#!/usr/bin/env bash
# Configures a preset and builds targets of it, quietly: scripts/build.sh PRESET TARGET...
# On a terminal one line counts the steps; elsewhere only what goes wrong is shown.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
preset="$1"
shift

# The presets file is found from the source directory, whatever directory the caller is in.
cd "$root"
log="$(mktemp)"
trap 'rm -f "$log"' EXIT
if ! cmake --preset "$preset" </dev/null >"$log" 2>&1; then
  cat "$log"
  exit 1
fi

cd "build/$preset"
[[ "$(ninja -n "$@" </dev/null 2>&1)" != *"no work to do"* ]] || exit 0
quiet=(--quiet)
if [[ -t 1 ]]; then
  quiet=()
  export NINJA_STATUS="[%f/%t] "
fi
ninja "${quiet[@]}" "$@" </dev/null
