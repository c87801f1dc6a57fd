#!/usr/bin/env bash
# Runs the image's own tests on the emulated device, then every script and the demo, and compares with
# the library in the tool: device/run_tests.sh [VEXOSIM [IMAGE]]
#
# The image is loaded at two bases; every trace must be the same, event for event, also when a seed
# chooses among threads that could run. Each base relocation is left out in turn, and those that no
# script misses must be the ones that are known to be out of a script's reach. What a register write
# costs is judged too: instructions of the emulated processor are the same on every run.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
vexosim="$(realpath "${1:-$root/build/gcc/vexosim}")"
image="$(realpath "${2:-$root/build/device/VexoCtrlSDK.DLL}")"
bench="$(dirname "$vexosim")/bench/bench_image"
tests="$(dirname "$vexosim")/tests/device/image/image_tests"
for program in "$bench" "$tests"; do
  [[ -x "$program" ]] || { echo "There is no $program: scripts/build.sh gcc all"; exit 2; }
done
status=0
checked="$image"
. "$root/scripts/expect.sh"
scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT

VEXO_IMAGE="$image" "$tests" --gtest_brief=1 || status=1

scripts=("$root"/tests/scripts/*.vexo "$root"/tests/image_scripts/*.vexo)
((${#scripts[@]} > 100)) || { echo "There are no scripts in tests/scripts."; exit 1; }

# By the function that has the word, and what the word points to.
out_of_reach=(
  # The system has a text for each error that a script can cause, so no other module is asked.
  'VexoDbg_GetErrorText(unsigned long, char16_t*) -> "netmsg.dll"'
  'import.LoadLibraryExW -> iat'
  'import.FreeLibrary -> iat'
  # The address window is tested a second time, after a first test that it has passed.
  'VexoSDK_Attach() -> ">> ERROR TW2835 IO BASE REGISTER!!!"'
  # Outcomes that initialization does not have.
  'ReportInitialization(long) -> ">>DEVICE PROBLEM ERROR TW_InitializeSetup"'
  'ReportInitialization(long) -> ">>NOT DETECT ERROR TW_InitializeSetup"'
  # A switch's case that the compiler tests for and enters before it comes to the table of cases.
  'SetPlaySplit(BoardVariant const&, unsigned char, unsigned char, unsigned char const*) -> SetPlaySplit(BoardVariant const&, unsigned char, unsigned char, unsigned char const*)'
)
"$vexosim" compare "$image" "${scripts[@]}" --relocations | tee "$scratch/compare.txt"
expect "relocations that no script misses" "$(printf '%s\n' "${out_of_reach[@]}")" \
  "$(sed -nE '/^relocation /{s/^relocation [0-9]+ at [^,]+, (.*): (no script loads its word|loaded, but no script needs it)$/\1/;p}' "$scratch/compare.txt")"

# cost BENCHMARK COUNTER MOST WHAT: judges a counter.
cost() {
  local found
  found="$(VEXO_IMAGE="$image" "$bench" --benchmark_filter="^$1" --benchmark_min_time=0 \
    --benchmark_format=json | awk -v name="\"$2\":" '$1 == name {print $2 + 0}')"
  echo "$4: ${found:-unknown} instructions, of at most $3."
  awk -v found="${found:-0}" -v most="$3" 'BEGIN {exit !(found > 0 && found <= most)}' || status=1
}
cost RegisterWrite instructions 24 "A register write by number"
cost NamedWrite instructions 18 "A register write by name"
cost Initialization per_cycle 9 "Initialization, for each bus cycle"

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
exit "$status"
