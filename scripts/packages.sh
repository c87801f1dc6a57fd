#!/usr/bin/env bash
# Installs the Debian packages that this project needs and that are missing.
#
#   scripts/packages.sh build   what ./run.sh needs: compiler, build tools, libraries
#   scripts/packages.sh device  what device/build.sh needs besides: the ARM compiler, llvm
#   scripts/packages.sh package what ./run.sh package needs besides: MinGW-w64, zip
#   scripts/packages.sh test    what ./test.sh needs besides: clang and its tools, MinGW-w64, Wine
#
# Asks the package manager for nothing when all are there, so it needs no network then.
set -euo pipefail

build_packages=(
  binutils cmake g++ gcc libbenchmark-dev libboost-dev libc6-dev libcli11-dev libedit-dev libgmock-dev
  libgtest-dev libpng-dev libstb-dev libunicorn-dev ninja-build nlohmann-json3-dev pkgconf
)
# The image: the ARM compiler with the headers of its C and C++ libraries (none of their code is
# used), and llvm, which compiles the version resource and reads the image.
device_packages=(
  "${build_packages[@]}" gcc-arm-none-eabi libnewlib-dev libstdc++-arm-none-eabi-dev llvm python3
)
# The package: the desk kits for Windows, documents as pages.
package_packages=(
  "${device_packages[@]}" clang g++-mingw-w64-i686-posix g++-mingw-w64-x86-64-posix python3-markdown-it zip
)
# llvm also has the symbolizer that puts function names into sanitizer reports, and counts which lines
# ran; groff reads the manual page; MinGW-w64 and Wine build and run the library as a DLL. The page is
# tried in Chromium.
# The package is read by pefile, tidy and unzip, and hosts are linked with its import library by lld.
test_packages=(
  "${package_packages[@]}" ca-certificates clang-format clang-tidy curl groff-base libclang-rt-14-dev
  chromium chromium-driver gtkwave lld python3-pefile python3-pil python3-pytest-xdist
  python3-selenium python3-websockets sigrok-cli tidy unzip wine wine64
)

case "${1:-}" in
  build) wanted=("${build_packages[@]}") ;;
  device) wanted=("${device_packages[@]}") ;;
  package) wanted=("${package_packages[@]}") ;;
  test) wanted=("${test_packages[@]}") ;;
  *)
    echo "usage: $0 build|device|package|test" >&2
    exit 2
    ;;
esac

if ! command -v dpkg-query >/dev/null; then
  echo "This is not Debian. Please install what these packages hold: ${wanted[*]}" >&2
  exit 0
fi

states="$(dpkg-query -W -f='${Package} ${db:Status-Status}\n' "${wanted[@]}" 2>/dev/null || true)"
missing=()
for package in "${wanted[@]}"; do
  grep -qx "$package installed" <<<"$states" || missing+=("$package")
done
((${#missing[@]})) || exit 0

as_root=()
if ((EUID != 0)); then
  if ! command -v sudo >/dev/null; then
    echo "Packages are missing. Run this line once as root:" >&2
    echo "apt-get update && apt-get install -y --no-install-recommends ${missing[*]}" >&2
    exit 1
  fi
  as_root=(sudo)
fi

echo "Installing ${missing[*]} (some minutes)" >&2
apt=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq -o Dpkg::Use-Pty=0)
log="$(mktemp)"
trap 'rm -f "$log"' EXIT
# The package lists of this machine may be old or absent, so they are fetched first; when that
# fails for one archive, the others may still have all that is needed.
"${apt[@]}" update </dev/null >"$log" 2>&1 || true
if ! "${apt[@]}" install -y --no-install-recommends "${missing[@]}" </dev/null >>"$log" 2>&1; then
  cat "$log" >&2
  echo "Installing the packages failed." >&2
  exit 1
fi
