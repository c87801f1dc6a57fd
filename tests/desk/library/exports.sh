#!/usr/bin/env bash
# Checks what the shared object shows to a program, and what it needs: exports.sh LIBRARY
set -euo pipefail
library="$1"
headers="$(cd "$(dirname "${BASH_SOURCE[0]}")/../../.." && pwd)/include"

# The functions that the two headers declare, and the one that C++ has under its own name besides.
wanted="$({
  grep -ohE '\b(VEXOAPI_[A-Za-z]+|VexoDesk_[A-Za-z]+)\(' "$headers"/Vexo{CtrlSDK,Desk}.h | tr -d '('
  echo _Z21VEXOAPI_SetMotionInfohhPh
} | sort -u)"
shown="$(nm -D --defined-only "$library" | awk '{print $3}' | sort -u)"
diff <(echo "$wanted") <(echo "$shown") || {
  echo "Above: < what the headers declare, > what the library shows."
  exit 1
}
foreign="$(readelf -d "$library" | sed -nE 's/.*\(NEEDED\).*\[(.*)\]/\1/p' |
  grep -vE '^(libstdc\+\+|libgcc_s|libc|libm|libpthread|libpng16|libz|libasan|libubsan|libtsan|ld-linux-x86-64)\.so' || true)"
[[ -z "$foreign" ]] || { echo "It needs $foreign."; exit 1; }
echo "$(wc -l <<<"$shown") names, all declared."
