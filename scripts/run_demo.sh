#!/usr/bin/env bash
# Runs the demo, away from the sources, because it leaves a picture where it runs.
set -euo pipefail
vexosim="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)/build/gcc/vexosim"
scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"
if ! "$vexosim" demo >log 2>&1; then
  cat log
  exit 1
fi
tail -n 15 log
