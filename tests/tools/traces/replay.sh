#!/usr/bin/env bash
# Traces made into scripts: tests/tools/traces/replay.sh VEXOSIM SCRIPT... Each script in each of its
# variants gives a trace; the script made from that gives the same one, byte for byte.
set -euo pipefail
vexosim="$1"
shift
folder="$(mktemp -d)"
trap 'rm -rf "$folder"' EXIT
cd "$folder"
for script in "$@"; do
  variants="$(sed -nE '/^[[:space:]]*(#|$)/d; s/^variants +([^#]*).*/\1/p; q' "$script")"
  for variant in ${variants:-none}; do
    only=()
    [ "$variant" = none ] || only=(--variant "$variant")
    "$vexosim" run "$script" "${only[@]}" --quiet --trace a.jsonl >/dev/null 2>&1
    "$vexosim" replay a.jsonl -o again.vexo
    "$vexosim" run again.vexo --quiet --trace b.jsonl >/dev/null 2>&1
    [ -s a.jsonl ]
    cmp a.jsonl b.jsonl || { echo "$script ($variant) is not replayed" >&2; exit 1; }
    "$vexosim" diff a.jsonl b.jsonl >/dev/null
  done
done
# A session has more than a script: the host handles its messages after each line.
printf 'lsplit 6 0\ncamera 2 off\nrun 200\nundo\nmotion 3 on\nrun 3000\n' |
  HOME="$folder" "$vexosim" shell --trace a.jsonl >/dev/null
"$vexosim" replay a.jsonl -o again.vexo
"$vexosim" run again.vexo --quiet --trace b.jsonl >/dev/null
cmp a.jsonl b.jsonl || { echo 'a session is not replayed' >&2; exit 1; }
