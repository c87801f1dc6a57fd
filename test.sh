#!/usr/bin/env bash
# Installs what is missing, builds everything with two compilers, and runs every test and check.
# Goes on after a failure; the exit status is 0 only when all is well.
#
#   ./test.sh            everything
#   ./test.sh STAGE...   these stages, after those that they need
#   ./test.sh quick      format, layers, promises and tests: after each change
#   ./test.sh list       names the stages (--help does too)
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")" || exit 1

# Name, what it needs, seconds on two idle cores from nothing, title, command. A command that begins
# with "beside" waits more than it works: it runs while the stages after it do, and is told of last.
stages='
packages |                | 1   | the packages are there              | scripts/packages.sh test
format   |                | 6   | format (clang-format)               | scripts/check_format.sh
layers   |                | 1   | who includes whom                   | scripts/check_layers.sh --self-check && scripts/check_layers.sh
promises |                | 1   | each promise has its tests          | scripts/promises.py
header   |                | 9   | public header in C and C++          | scripts/check_header.sh
build    |                | 306 | build (g++)                         | scripts/build.sh gcc -k 0 all
tests    | build          | 70  | tests (g++)                         | scripts/run_tests.sh gcc
library  | build          | 1   | library needs no runtime            | scripts/check_library.sh build/gcc/src/libvexo_library.a
dll      |                | 198 | DLL (MinGW-w64, 64 and 32 bits)     | windows/build.sh
wine64   | build dll      | 89  | 64-bit kit under Wine               | beside windows/run_kit.sh build/windows-x86_64
wine32   | build dll      | 1   | 32-bit kit under Wine               | windows/run_kit.sh build/windows-i686
sanbuild |                | 1020| build (clang++, sanitizers)         | scripts/build.sh sanitize -k 0 all
santests | sanbuild       | 270 | tests (clang++, sanitizers)         | scripts/run_tests.sh sanitize
coverage | santests       | 4   | which lines those have run          | scripts/check_coverage.py
fuzz     | sanbuild       | 45  | fuzzers (clang++, sanitizers)       | scripts/run_fuzzers.sh
threads  |                | 170 | threads of a program (sanitizer)    | scripts/check_threads.sh
lint     |                | 1107 | lint (clang-tidy)                   | scripts/lint.sh
image    | build          | 5   | image for the device (ARM)          | device/build.sh && samples/recorder/check_device.sh
package  | dll image        | 46  | package                             | scripts/check_package.sh
day      | package        | 101 | first day on the emulated device    | scripts/check_first_day.sh
emulated | build image    | 69  | image on the emulated device        | device/run_tests.sh && device/run_check.sh && device/run_recorder.sh
bench    | build image    | 13  | benchmarks (g++)                    | scripts/run_benchmarks.sh
page     | build          | 100 | page in Chromium                    | scripts/check_page.sh
demo     | build          | 1   | demo                                | scripts/run_demo.sh
'
quick=(format layers promises build tests)

# Fills the row's fields, without the blanks around them.
row() {
  local IFS='|' field
  read -r name needs seconds title command <<<"$(sed -E 's/ *\| */|/g' <<<"$1")"
}

list() {
  local line
  sed -n '2,/^set /{/^#/s/^# \{0,1\}//p}' "${BASH_SOURCE[0]}"
  echo
  echo "Stages, with their seconds on two idle cores from nothing, and those that they need:"
  while IFS= read -r line; do
    row "$line"
    printf '  %-9s %4d  %-34s %s\n' "$name" "$seconds" "$title" "$needs"
  done < <(grep . <<<"$stages")
}

# choose NAME: it and what it needs are wanted.
declare -A wanted=()
choose() {
  local line need name needs seconds title command
  line="$(grep "^$1 " <<<"$stages")" || return 1
  row "$line"
  for need in $needs; do choose "$need"; done
  wanted[$name]=1
}

case "${1:-}" in
  list | --help | -h)
    list
    exit
    ;;
  quick) set -- "${quick[@]}" "${@:2}" ;;
  "") mapfile -t all < <(awk 'NF {print $1}' <<<"$stages") && set -- "${all[@]}" ;;
esac
choose packages
for stage in "$@"; do
  choose "$stage" || { echo "There is no stage $stage; ./test.sh list names them." >&2; exit 2; }
done

scratch="$(mktemp -d)"
log="$scratch/log"
beat=""
trap 'rm -rf "$scratch"; [[ -z "$beat" ]] || kill "$beat" 2>/dev/null' EXIT
passed=0
failed=0
skipped=()
tests_passed=0
tests_failed=0
summary=()

# Away from a terminal a stage that is long says now and then that it is still there.
start_beat() {
  [[ ! -t 1 && "$name" != *build ]] || return 0  # a build counts its steps
  (
    trap 'kill "$pause" 2>/dev/null; exit' TERM
    while sleep 30 & pause=$!; wait "$pause"; do echo "   ... $title: $((SECONDS - begin)) s"; done
  ) &
  beat=$!
}
stop_beat() {
  [[ -n "$beat" ]] || return 0
  kill "$beat" 2>/dev/null
  wait "$beat" 2>/dev/null
  beat=""
}

# The stage in the row is done: its status, and what it says of tests in its log's last line.
conclude() {
  case "$status" in
    0) result=ok passed=$((passed + 1)) ;;
    77) result=skipped skipped+=("$name") ;;
    *) result=FAILED failed=$((failed + 1)) ;;
  esac
  if [[ "$(tail -n 1 "$log")" =~ :\ ([0-9]+)\ tests\ passed,\ ([0-9]+)\ failed\.$ ]]; then
    tests_passed=$((tests_passed + BASH_REMATCH[1]))
    tests_failed=$((tests_failed + BASH_REMATCH[2]))
  fi
  : >"$log"
  line="$(printf '%-7s %-9s %-36s %4d s' "$result" "$name" "$title" "$1")"
  echo "-- $line"
  summary+=("$line")
}

title_line() {
  echo
  echo "== [$((++told))/${#wanted[@]}] $title"
}
told=0
beside=()  # rows of the stages that run beside the others; their output is in files of their own

while IFS= read -r line <&3; do
  row "$line"
  [[ -n "${wanted[$name]:-}" ]] || continue
  begin="$SECONDS"
  if [[ "$command" == "beside "* ]]; then
    (bash -c "${command#beside }" </dev/null >"$scratch/$name" 2>&1
     echo "$? $((SECONDS - begin))" >"$scratch/$name.end") &
    beside+=("$! $line")
    continue
  fi
  title_line
  start_beat
  if [[ -t 1 && "$name" == *build ]]; then
    # One line that counts the steps, which only a terminal has.
    bash -c "$command" </dev/null
  else
    bash -c "$command" </dev/null 2>&1 | tee "$log"
  fi
  status="${PIPESTATUS[0]}"
  stop_beat
  conclude $((SECONDS - begin))
done 3< <(grep . <<<"$stages")

for line in "${beside[@]}"; do
  wait "${line%% *}"
  row "${line#* }"
  title_line
  tee "$log" <"$scratch/$name"
  read -r status seconds <"$scratch/$name.end"
  conclude "$seconds"
done

echo
echo "== Summary"
printf '%s\n' "${summary[@]}"
echo "Took $((SECONDS / 60)) min $((SECONDS % 60)) s."
[[ -z "${skipped[*]}" ]] || echo "Skipped, for what this machine lacks: ${skipped[*]}."
echo "Stages: $passed passed, $failed failed."
echo "Tests: $tests_passed passed, $tests_failed failed."
((failed == 0 && tests_failed == 0))
