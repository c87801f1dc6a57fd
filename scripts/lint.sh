#!/usr/bin/env bash
# Runs clang-tidy on one file: scripts/lint.sh BUILD_DIRECTORY SOURCE. Silent when it is clean.
set -uo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
# All headers but the public one, which is C.
headers="^$(sed 's/[^a-zA-Z0-9_/-]/\\&/g' <<<"$root")/(src|sim|harness|script|device|tools|tests|bench|fuzz)/"
if ! findings="$(clang-tidy --quiet --header-filter="$headers" -p "$1" "$2" 2>&1)"; then
  grep -vE '^[0-9]+ (warnings?|errors?).* generated\.$|^[0-9]+ warnings? treated as errors?$' \
    <<<"$findings"
  exit 1
fi
