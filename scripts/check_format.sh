#!/usr/bin/env bash
# Names the source files that are not formatted as .clang-format asks.
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit 1
find include src sim desk samples harness script tools tests bench fuzz windows device -name '*.h' -o -name '*.cpp' -o -name '*.c' |
  xargs clang-format --dry-run -Werror 2>&1 |
  awk -F: '/error: code should be clang-formatted/ {
             if (!seen[$1]++) print $1 ": run clang-format -i on it"
             quoted = 2
             next
           }
           quoted-- > 0 {next}
           {print}'
