#!/usr/bin/env bash
# Tells where a source file is not formatted as .clang-format asks.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
find include src sim tools tests bench -name '*.h' -o -name '*.cpp' -o -name '*.c' |
  xargs clang-format --dry-run -Werror
