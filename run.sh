#!/usr/bin/env bash
# Installs what is missing, builds vexosim, and runs it: the demo, or with the arguments given.
# Everything but vexosim's own output goes to standard error.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"

"$root/scripts/packages.sh" build
"$root/scripts/build.sh" gcc vexosim >&2

(($#)) || set -- demo
exec "$root/build/gcc/vexosim" "$@"
