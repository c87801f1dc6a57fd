#!/usr/bin/env bash
# Runs each benchmark for a moment, so that it cannot rot. Times are shown, not judged.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
count=0
for program in build/gcc/bench/bench_*; do
  [[ -f "$program" && -x "$program" ]] || continue
  count=$((count + 1))
  "$program" --benchmark_min_time=0.02 2>&1
done
((count > 0)) || { echo "There are no benchmarks."; exit 1; }
