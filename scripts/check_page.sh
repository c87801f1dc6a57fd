#!/usr/bin/env bash
# Tries the page in a real browser: scripts/check_page.sh [--documents] [OPTION...], such as -k monitor
# for the tests whose names have that.
#
# What it needs is built: scripts/build.sh gcc vexosim vexo_desk. Screenshots come to build/page/,
# and with --documents to docs/images/.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# Looks for what keeps people out; fetched once, from the registry of its makers.
axe_version=4.10.3
axe_sha512=5e6edba515e70d25f6604d9815f064d859c5d1ea7ab661bbc4f87c88779ef0c21cae0abbeb636471ef39e9d62d2582e4b88a1866f19f4ecfcf6d986275e4dc12
fetch_axe() {
  local archive=build/page/axe-core-$axe_version.tgz
  mkdir -p build/page
  if ! sha512sum --status -c <<<"$axe_sha512  $archive" 2>/dev/null; then
    curl -fsSL --connect-timeout 10 --max-time 60 -o "$archive" \
      "https://registry.npmjs.org/axe-core/-/axe-core-$axe_version.tgz" || return 0
    sha512sum --status -c <<<"$axe_sha512  $archive" || {
      echo "axe-core $axe_version is not what it was."
      rm -f "$archive"
      return 1
    }
  fi
  tar -xzOf "$archive" package/axe.min.js >build/page/axe.min.js
}

images=""
if [[ "${1:-}" == --documents ]]; then
  images=docs/images
  shift
fi
fetch_axe
# The system's own python, which has Debian's packages, whatever else there is. Two browsers at once:
# much of the time a test waits for the board.
/usr/bin/python3 -m pytest -p no:cacheprovider -n 2 -v -rs tests/page "$@"
[[ -z "$images" ]] || install -D -m 644 -t "$images" build/page/bench-light.png build/page/bench-dark.png
