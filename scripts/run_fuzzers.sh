#!/usr/bin/env bash
# Runs the fuzzers from their kept corpora (fuzz/corpus/), as many at once as there are processors.
#
#   scripts/run_fuzzers.sh                  a short run of each, with a new seed
#   scripts/run_fuzzers.sh --seed N NAME    the same run again, of this one
#   scripts/run_fuzzers.sh --hours H        a long one: each for so many hours (0.5 is half of one)
#
# An input that fails is printed and kept in build/fuzz/NAME.found/; give it to the fuzzer as its
# only argument to run it alone. What a long run learns is kept in build/fuzz/NAME.corpus/, from
# which the next one goes on.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# Name, runs of a short run (some ten seconds of one processor), and the longest input. Those of the
# board's own lines have a dictionary.
table='
binary_command   3000  1200
conversation     3000  4200
elf             30000  4096
image           60000  4608
script           1500  2000
text_command    10000  4200
tokenizer      200000  4200
trace            6000  4200
'

seed=$((RANDOM << 15 | RANDOM))
seconds=0
names=()
while (($# > 0)); do
  case "$1" in
    --seed) seed="$2" && shift ;;
    --hours) seconds="$(awk -v hours="$2" 'BEGIN {printf "%d", hours * 3600}')" && shift ;;
    -*) sed -n '2,/^set /{/^#/s/^# \{0,1\}//p}' "${BASH_SOURCE[0]}" && exit 2 ;;
    *) names+=("$1") ;;
  esac
  shift
done

# run_one NAME RUNS LONGEST: prints a line, or what went wrong.
run_one() {
  local found="build/fuzz/$1.found" corpus log status=0
  log="$(mktemp)"
  mkdir -p "$found"
  local options=(-seed="$seed" -max_len="$3" -timeout=60 -rss_limit_mb=1024 -print_final_stats=1
                 -artifact_prefix="$found/")
  [[ ! -f "fuzz/$1.dict" ]] || options+=(-dict="fuzz/$1.dict")
  if ((seconds > 0)); then
    corpus="build/fuzz/$1.corpus"
    options+=(-max_total_time="$seconds")
  else
    corpus="$(mktemp -d)"
    options+=(-runs="$2")
  fi
  mkdir -p "$corpus"
  "build/sanitize/fuzz/fuzz_$1" "${options[@]}" "$corpus" "fuzz/corpus/$1" \
    >"$log" 2>&1 </dev/null || status=$?
  if ((status == 0)); then
    echo "$1: $(grep '^Done ' "$log"), seed $seed"
  else
    grep -vE '^#[0-9]+\s+(NEW|REDUCE|pulse)' "$log" | tail -n 60
    echo "$1 FAILED: the run is scripts/run_fuzzers.sh --seed $seed $1; the input, as base64 and in a file:"
    sed -n 's/^.*Test unit written to //p' "$log" | while IFS= read -r input; do
      base64 "$input"
      echo "$input"
    done
  fi
  ((seconds > 0)) || rm -rf "$corpus"
  rm -f "$log"
  return "$status"
}

processors="$(nproc)"
running=0
failed=0
await_one() {
  wait -n || failed=1
  running=$((running - 1))
}
while read -r name runs longest; do
  [[ -n "$name" ]] || continue
  [[ -z "${names[*]}" || " ${names[*]} " == *" $name "* ]] || continue
  ((running < processors)) || await_one
  run_one "$name" "$runs" "$longest" &
  running=$((running + 1))
done <<<"$table"
while ((running > 0)); do await_one; done
exit "$failed"
