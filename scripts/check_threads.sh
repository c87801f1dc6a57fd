#!/usr/bin/env bash
# Calls the Linux desk library from several threads at once, and runs the tests of the ports, under the
# thread sanitizer. Builds no more than that needs.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/build.sh thread desk_stress port_tests
for time in virtual real; do
  TSAN_OPTIONS="halt_on_error=1" build/thread/tests/desk/library/desk_stress "$time" 4000
done
TSAN_OPTIONS="halt_on_error=1" build/thread/tests/port_tests --gtest_brief=1
