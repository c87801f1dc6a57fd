#!/usr/bin/env bash
# Installs what is missing, builds everything with two compilers, and runs every test and check.
# Goes on after a failure; the exit status is 0 only when all is well.
set -uo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
cd "$root" || exit 1
jobs="$(nproc)"
scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT

stages=16
started=0
failed=0
tests_passed=0
tests_failed=0
summary=()

# stage NAME COMMAND...: runs it, tells how it went and how long it took.
stage() {
  local name="$1" begin="$SECONDS" result=ok
  shift
  started=$((started + 1))
  echo
  echo "== [$started/$stages] $name"
  if ! "$@" </dev/null; then
    result=FAILED
    failed=$((failed + 1))
  fi
  local line
  line="$(printf '%-6s %-48s %4d s' "$result" "$name" $((SECONDS - begin)))"
  echo "-- $line"
  summary+=("$line")
}

# Runs the tests of a preset and adds their numbers to the totals. The cases share a process for
# each processor, because starting one for each case takes longer than they do; ctest runs the rest.
run_tests() {
  local program="build/$1/tests/vexo_tests" log="$scratch/tests" status=0 shard totals ran passed
  local -a processes=()
  for ((shard = 0; shard < jobs; ++shard)); do
    GTEST_TOTAL_SHARDS="$jobs" GTEST_SHARD_INDEX="$shard" timeout 1800 "$program" --gtest_brief=1 \
      >"$log.$shard" 2>&1 &
    processes+=($!)
  done
  for ((shard = 0; shard < jobs; ++shard)); do
    wait "${processes[shard]}" || status=1
    cat "$log.$shard"
    ran="$(sed -nE 's/^\[=+\] ([0-9]+) tests? from .* ran\..*/\1/p' "$log.$shard")"
    passed="$(sed -nE 's/^\[  PASSED  \] ([0-9]+) tests?\.$/\1/p' "$log.$shard")"
    if ((${ran:-0} == 0)); then
      echo "A process of the tests did not come to its end."
      status=1
    fi
    tests_passed=$((tests_passed + ${passed:-0}))
    tests_failed=$((tests_failed + ${ran:-0} - ${passed:-0}))
  done

  ctest --preset "$1" -j "$jobs" -LE case 2>&1 | tee "$log" || status=1
  totals="$(grep -E '^[0-9]+% tests passed, [0-9]+ tests failed out of [0-9]+' "$log" | tail -1)"
  if [[ "$totals" =~ ,\ ([0-9]+)\ tests\ failed\ out\ of\ ([0-9]+) ]]; then
    tests_failed=$((tests_failed + BASH_REMATCH[1]))
    tests_passed=$((tests_passed + BASH_REMATCH[2] - BASH_REMATCH[1]))
    ((BASH_REMATCH[2] > 0)) || status=1
  else
    status=1
  fi
  return "$status"
}

# As hosts in C and C++ include it, old and new; at last as one whose compiler has no <stdint.h>.
check_header() {
  local compiler language old=(-D_MSC_VER=1400 -D__int8=char -D__int16=short -D__int32=int)
  local check=(-Wall -Wextra -Wpedantic -Wconversion -Werror -Iinclude -fsyntax-only)
  for compiler in gcc clang; do
    for language in "c -std=c99" "c -std=c11" "c++ -std=c++98" "c++ -std=c++17"; do
      # shellcheck disable=SC2086  # two words
      "$compiler" -x $language "${check[@]}" tests/support/header_compiles.c || return 1
    done
    "$compiler" -x c++ -std=c++98 "${check[@]}" -nostdinc "${old[@]}" \
      tests/support/header_compiles.c || return 1
  done
}

# Every script and check through the DLLs; the 32-bit one where there is a 32-bit Wine.
run_hosts() {
  local processor status=0
  for processor in x86_64 i686; do
    windows/run_host.sh "build/windows-$processor" || status=1
  done
  return "$status"
}

# Each benchmark runs for a moment, so that it cannot rot. Times are shown, not judged.
run_benchmarks() {
  local program count=0
  for program in build/gcc/bench/bench_*; do
    [[ -f "$program" && -x "$program" ]] || continue
    count=$((count + 1))
    "$program" --benchmark_min_time=0.02 2>&1 || return 1
  done
  ((count > 0)) || { echo "There are no benchmarks."; return 1; }
}

# A short run of each fuzzer from its kept corpus; always the same one, so that a failure is the
# change's own. What an input looks like that fails stands in the output.
run_fuzzers() {
  local name runs
  for name in text_command tokenizer; do
    runs=20000
    [[ "$name" == tokenizer ]] && runs=200000
    mkdir -p "$scratch/fuzz-$name"
    if ! build/sanitize/fuzz/fuzz_"$name" -seed=1 -runs="$runs" -max_len=4200 \
      -dict=fuzz/text_commands.dict -artifact_prefix="$scratch/" \
      "$scratch/fuzz-$name" "fuzz/corpus/$name" >"$scratch/fuzz.log" 2>&1; then
      cat "$scratch/fuzz.log"
      return 1
    fi
    echo "$name: $(tail -n 1 "$scratch/fuzz.log")"
  done
}

# The demo, away from the sources, because it leaves a picture where it runs.
run_demo() {
  local log="$scratch/demo.log"
  if ! (cd "$scratch" && "$root/build/gcc/vexosim" demo) >"$log" 2>&1; then
    cat "$log"
    return 1
  fi
  tail -n 15 "$log"
}

stage "packages" scripts/packages.sh test
stage "format (clang-format)" scripts/check_format.sh
stage "public header in C and C++ (gcc, clang)" check_header
stage "build (g++)" scripts/build.sh gcc -k 0 all
stage "tests (g++)" run_tests gcc
stage "library needs no runtime" scripts/check_library.sh build/gcc/src/libvexo_library.a
stage "build (clang++, sanitizers)" scripts/build.sh sanitize -k 0 all
stage "tests (clang++, sanitizers)" run_tests sanitize
stage "fuzzers (clang++, sanitizers)" run_fuzzers
stage "lint (clang-tidy)" scripts/build.sh sanitize -k 0 tidy
stage "DLL (MinGW-w64, 64 and 32 bits)" windows/build.sh
stage "DLL in a host (Wine)" run_hosts
stage "image for the device (ARM)" device/build.sh
stage "image on the emulated device" device/run_tests.sh
stage "benchmarks (g++)" run_benchmarks
stage "demo" run_demo

echo
echo "== Summary"
printf '%s\n' "${summary[@]}"
echo "Took $((SECONDS / 60)) min $((SECONDS % 60)) s."
echo "Stages: $((started - failed)) passed, $failed failed."
echo "Tests: $tests_passed passed, $tests_failed failed."
((failed == 0 && tests_failed == 0))
