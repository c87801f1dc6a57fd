#!/usr/bin/env bash
# Builds what is configured: scripts/ninja.sh DIRECTORY [TARGET...]
# On a terminal one line counts the steps; elsewhere a line now and then, and what goes wrong.
set -euo pipefail
cd "$1"
shift
# Configures anew where there are new sources, so that the next line knows what there is to do.
ninja build.ninja </dev/null >/dev/null 2>&1 || true
[[ "$(ninja -n "$@" </dev/null 2>&1)" != *"no work to do"* ]] || exit 0
export NINJA_STATUS="[%f/%t] "
if [[ -t 1 ]]; then
  ninja "$@" </dev/null
  exit
fi

next=$((SECONDS + 30))
ninja "$@" </dev/null 2>&1 | while IFS= read -r line; do
  if [[ ! "$line" =~ ^\[([0-9]+/[0-9]+)\]\  ]]; then
    [[ "$line" == "ninja: no work to do." ]] || printf '%s\n' "$line"
  elif ((SECONDS >= next)); then
    next=$((SECONDS + 30))
    echo "   ${BASH_REMATCH[1]} built"
  fi
done
