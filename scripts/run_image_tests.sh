#!/usr/bin/env bash
# Runs every script and the demo on the binary for the board, on an emulated ARM, and compares with
# the library in the tool: scripts/run_image_tests.sh [VEXOSIM [IMAGE]]
#
# The image is loaded at two bases; every trace must be the same, event for event, also when a seed
# chooses among threads that could run. Then each base relocation is left out in turn, and those
# that no script misses are listed. They belong to what cannot be reached from a script:
#   - the texts of errors that the system has no text for, and the module asked for them;
#   - version information when there is no memory for it;
#   - texts of outcomes that initialization does not have, of a page that no table write has, and of
#     a window that is tested twice;
#   - a case of a switch that the compiler enters directly, and the other window of a full picture.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
vexosim="$(realpath "${1:-$root/build/gcc/vexosim}")"
image="$(realpath "${2:-$root/build/device/VexoCtrlSDK.DLL}")"
scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT

scripts=("$root"/tests/scripts/*.vexo "$root"/tests/image_scripts/*.vexo)
((${#scripts[@]} > 100)) || { echo "There are no scripts in tests/scripts."; exit 1; }

unreached=10
"$vexosim" compare "$image" "${scripts[@]}" --relocations | tee "$scratch/compare.txt"
missed="$(grep -c '^relocation ' "$scratch/compare.txt" || true)"
if ((missed > unreached)); then
  echo "$missed relocations are missed by no script, $unreached are known."
  exit 1
fi
for seed in 1 2; do
  echo "With seed $seed:"
  "$vexosim" compare "$image" "${scripts[@]}" --seed "$seed"
done

# The demo prints real time and what the emulation took, which only one of the two has.
demo() {
  local out="$scratch/$1" status=0
  mkdir "$out"
  shift
  (cd "$out" && "$vexosim" demo "$@") >"$out/all.txt" 2>&1 || status=1
  if ((status != 0)); then
    cat "$out/all.txt"
    return 1
  fi
  grep -vE '^   (real time|instructions|deepest stack) |>> build : ' "$out/all.txt" >"$out/text"
}
demo library
demo image --image "$image"
demo moved --image "$image" --image-base 0x01E40000
for run in image moved; do
  for file in text vexosim-demo.png vexosim-demo-playback.png; do
    cmp "$scratch/library/$file" "$scratch/$run/$file"
  done
done
echo "The demo is the same."
