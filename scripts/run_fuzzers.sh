#!/usr/bin/env bash
# A short run of each fuzzer from its kept corpus; always the same one, so that a failure is the
# change's own. What an input looks like that fails stands in the output.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT
while read -r name runs; do
  mkdir "$scratch/$name"
  if ! "build/sanitize/fuzz/fuzz_$name" -seed=1 -runs="$runs" -max_len=4200 \
    -dict=fuzz/text_commands.dict -artifact_prefix="$scratch/" \
    "$scratch/$name" "fuzz/corpus/$name" >"$scratch/log" 2>&1 </dev/null; then
    cat "$scratch/log"
    exit 1
  fi
  echo "$name: $(tail -n 1 "$scratch/log")"
done <<'END'
conversation 5000
text_command 20000
tokenizer 200000
END
