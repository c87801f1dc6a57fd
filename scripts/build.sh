#!/usr/bin/env bash
# Configures a preset and builds targets of it, quietly: scripts/build.sh PRESET TARGET...
# On a terminal one line counts the steps; elsewhere a line now and then, and what goes wrong.
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
scripts/ninja.sh "build/$preset" "$@"
