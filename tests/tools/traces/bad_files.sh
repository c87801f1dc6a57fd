#!/usr/bin/env bash
# Files that are no traces: tests/tools/traces/bad_files.sh VEXOSIM. Each is told in one sentence on
# standard error, without control bytes, and the exit status is 2.
set -euo pipefail
vexosim="$1"
folder="$(mktemp -d)"
trap 'rm -rf "$folder"' EXIT
cd "$folder"
fail() {
  echo "$1" >&2
  exit 1
}
refused() { # WANTED ARGUMENT...
  local status=0
  "$vexosim" "${@:2}" >out.txt 2>err.txt </dev/null || status=$?
  [ "$status" -eq 2 ] || fail "${*:2}: status $status"
  [ "$(wc -l <err.txt)" -eq 1 ] || fail "${*:2}: $(wc -l <err.txt) lines of complaint"
  grep -qF -- "$1" err.txt || fail "${*:2}: $(cat err.txt)"
  ! LC_ALL=C grep -q '[^ -~]' err.txt || fail "${*:2}: control bytes"
}

printf 'attach\nversion\n' >run.vexo
"$vexosim" run run.vexo --quiet --trace good.jsonl >/dev/null
"$vexosim" trace good.jsonl --vcd good.vcd
{ head -n 3 good.jsonl; printf '\x00\x1b[31m\xff\n'; } >rubbish.jsonl
head -c 100 good.jsonl >cut.jsonl
head -c 100000000 /dev/zero | tr '\0' '{' >long.jsonl
printf '#0\n1w\n' >headless.vcd
: >empty.csv
printf 'time,clock\n0,1\n' >columns.csv
printf '{"t":0,"by":"host","ev":"sleep","ms":1}\n' >calls.jsonl

for command in trace replay; do
  refused 'rubbish.jsonl:4: expected a JSON object' "$command" rubbish.jsonl
  refused 'cut.jsonl:2: expected the end of the object' "$command" cut.jsonl
  refused 'line 1 has more than 1 MiB' "$command" long.jsonl
  refused 'headless.vcd:1: expected a header' "$command" headless.vcd
  refused 'empty.csv: expected column names' "$command" empty.csv
  refused 'found none named select' "$command" columns.csv
  refused 'it is a folder' "$command" .
  refused 'No such file' "$command" none.jsonl
done
refused 'rubbish.jsonl:4' diff good.jsonl rubbish.jsonl
refused 'rubbish.jsonl:4' diff rubbish.jsonl good.jsonl
refused 'which has no calls' replay good.vcd
refused 'expected calls to replay, found none' replay calls.jsonl
refused 'used for something else too' trace good.jsonl --vcd good.jsonl
refused 'used for something else too' replay good.jsonl -o good.jsonl
refused 'cannot write' trace good.jsonl --vcd none/good.vcd
refused 'cannot write' replay good.jsonl -o /dev/full
# Nothing was lost or left behind.
"$vexosim" diff good.jsonl good.jsonl >/dev/null
status=0
"$vexosim" replay rubbish.jsonl -o left.vexo 2>/dev/null || status=$?
[ "$status" -eq 2 ] && [ ! -e left.vexo ] || fail 'a script of a bad trace is left behind'
for arguments in '--chip slave9' '--register windo' '--register 3' '--thread gui' '--from -1' \
  '--to 4294967296' '--column clock=c' '--column data=d:low' '--cycle-ns 10' '--vcd x.vcd --cycle-ns 1'; do
  status=0
  # shellcheck disable=SC2086
  "$vexosim" trace good.jsonl $arguments >out.txt 2>err.txt || status=$?
  [ "$status" -eq 2 ] || fail "trace $arguments: status $status"
done
