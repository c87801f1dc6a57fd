#!/usr/bin/env bash
# Links hosts with the package's import libraries, by another maker's linker: device/check_link.sh FOLDER
#
# The folder is the unpacked package. The sample recorder, built to be linked with the library
# instead of loading it, and a host in C++ that names all eight exports are linked; what they
# import of the library must be the names that they use, and a name that the library lacks must be
# found missing. The linker is LLVM's, which knows no objects of this system's machine numbers: the hosts
# are compiled for its later ARM, and show how names are resolved, no more; they are never run.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
top="$(realpath "$1")"
status=0
. "$root/scripts/expect.sh"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
cd "$work"

# compile SOURCE OBJECT OPTION...
compile() {
  clang --target=thumbv7-windows-msvc -Os -ffreestanding -fshort-wchar -isystem /usr/include/newlib \
    -I"$top/samples/recorder/ce" -I"$top/include" "${@:3}" -c -o "$2" "$1"
}

# link PROGRAM ENTRY OBJECT...: with the import library of $machine and that of the system.
link() {
  lld-link /machine:arm /subsystem:windows /nodefaultlib "/entry:$2" "/out:$1" "${@:3}" \
    "$top/device/$machine/VexoCtrlSDK.lib" coredll.lib
}

# imports PROGRAM: of the library.
imports() {
  llvm-readobj --coff-imports "$1" |
    awk '/^ *Name:/ {library = $2} /Symbol:/ && library == "VexoCtrlSDK.DLL" {print $2}'
}

# The system's names that the recorder may use, and the division that compilers for it call.
{ printf 'LIBRARY COREDLL.dll\nEXPORTS\n__rt_udiv\n'; sed 's/.* //' "$root/device/recorder/imports.txt"; } >coredll.def
llvm-dlltool -m arm -d coredll.def -l coredll.lib
for source in main board layouts library; do
  compile "$top/samples/recorder/$source.c" "$source.obj" -std=c90 -DRECORDER_IS_LINKED
done
compile "$root/tests/support/header_host.c" host.obj -x c++
echo 'extern "C" int VEXOAPI_Nothing(); extern "C" int Start() { return VEXOAPI_Nothing(); }' >wrong.cpp
compile wrong.cpp wrong.obj

for machine in arm thumb; do
  checked="VexoCtrlSDK.lib ($machine)"
  link recorder.exe WinMain main.obj board.obj layouts.obj library.obj || status=1
  expect "what the linked recorder imports" \
    "$(printf 'VEXOAPI_%s\n' CommandProc Initialize Uninitialize)" "$(imports recorder.exe)"
  link host.exe main host.obj || status=1
  expect "what a host in C++ imports" "$(llvm-readobj --coff-exports "$top/device/$machine/VexoCtrlSDK.DLL" |
    sed -n 's/^ *Name: //p')" "$(imports host.exe)"
  found="$(link wrong.exe Start wrong.obj 2>&1 || true)"
  grep -q 'undefined symbol: VEXOAPI_Nothing' <<<"$found" || {
    echo "$checked: a name that it lacks is not found missing: $found"
    status=1
  }
done
((status)) || echo "VexoCtrlSDK.lib: LLVM's linker finds all that the recorder and a host in C++ ask for."
exit "$status"
