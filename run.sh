#!/usr/bin/env bash
# Installs what is missing, builds vexosim, and runs it: the demo, or with the arguments given.
# ./run.sh --image builds the image for the device too and shows the demo with it, on the emulated
# device. ./run.sh package makes the package, out/VexoCtrlSDK-VERSION.zip (scripts/package.sh).
# Everything but vexosim's own output goes to standard error.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"

(($#)) || set -- demo

if [[ "$1" == package ]]; then
  shift
  "$root/scripts/packages.sh" package
  exec "$root/scripts/package.sh" "$@"
elif [[ "$1" == --image ]]; then
  shift
  "$root/scripts/packages.sh" device
  "$root/device/build.sh" >&2
  set -- demo --image "$root/build/device/VexoCtrlSDK.DLL" "$@"
else
  "$root/scripts/packages.sh" build
fi
"$root/scripts/build.sh" gcc vexosim >&2
exec "$root/build/gcc/vexosim" "$@"
