#!/usr/bin/env bash
# Runs the tests of a build and says how many passed: scripts/run_tests.sh PRESET
#
# The cases share a few processes, because starting one for each case takes longer than they do; ctest
# runs the rest.
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit 1
preset="$1"
jobs="$(nproc)"
scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT
# Where the processes of a build that counts its lines leave their counts (scripts/check_coverage.py).
# Those of the tool are many, and add theirs to a few files.
counts="$PWD/build/$preset/coverage"
rm -rf "$counts"
status=0
all_passed=0
all_failed=0

# More parts than processors, so that all are busy until the end.
parts=$((4 * jobs))
run_part() {
  GTEST_TOTAL_SHARDS="$parts" GTEST_SHARD_INDEX="$1" \
    LLVM_PROFILE_FILE="$counts/cases_%p.profraw" timeout 1800 \
    "build/$preset/tests/vexo_tests" --gtest_brief=1 >"$scratch/$1" 2>&1
}
running=0
for ((part = 0; part < parts; ++part)); do
  ((running++ < jobs)) || wait -n || status=1
  run_part "$part" &
done
for ((running = jobs; running > 0; --running)); do wait -n || status=1; done
for ((part = 0; part < parts; ++part)); do
  cat "$scratch/$part"
  ran="$(sed -nE 's/^\[=+\] ([0-9]+) tests? from .* ran\..*/\1/p' "$scratch/$part")"
  passed="$(sed -nE 's/^\[  PASSED  \] ([0-9]+) tests?\.$/\1/p' "$scratch/$part")"
  if ((${ran:-0} == 0)); then
    echo "A process of the tests did not come to its end."
    status=1
  fi
  all_passed=$((all_passed + ${passed:-0}))
  all_failed=$((all_failed + ${ran:-0} - ${passed:-0}))
done

# One line for each of those that pass is no news.
LLVM_PROFILE_FILE="$counts/%2m.profraw" ctest --preset "$preset" -j "$jobs" -LE case >"$scratch/ctest" 2>&1 || status=1
grep -vE '^ *[0-9]+/[0-9]+ Test .* Passed |^ *Start +[0-9]+: ' "$scratch/ctest"
totals="$(grep -E '^[0-9]+% tests passed, [0-9]+ tests failed out of [0-9]+' "$scratch/ctest" | tail -1)"
if [[ "$totals" =~ ,\ ([0-9]+)\ tests\ failed\ out\ of\ ([0-9]+) ]] && ((BASH_REMATCH[2] > 0)); then
  all_failed=$((all_failed + BASH_REMATCH[1]))
  all_passed=$((all_passed + BASH_REMATCH[2] - BASH_REMATCH[1]))
else
  status=1
fi

echo "$preset: $all_passed tests passed, $all_failed failed."
((status == 0 && all_failed == 0))
