#!/usr/bin/env bash
# Checks what the desk kit says and keeps, with the smallest program that there is beside it, in
# copies of the kit with settings of their own: windows/check_kit.sh KIT. In a Wine prefix.
set -u
kit=$(cd "$1" && pwd) || exit 2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
status=0
checked="$kit"
. "$(dirname "${BASH_SOURCE[0]}")/../scripts/expect.sh"

# run LINE...: VexoLine with these lines; what it and the kit say, and its exit status.
run() {
  (
    cd "$work/kit" || exit 2
    timeout 60 wine ./VexoLine.exe "$@" 2>&1
    echo "status $?"
  ) | tr -d '\r'
}

# run_with_page: the page's first file and its first picture, while a line lets time pass.
run_with_page() {
  local said="$work/said" address host line length picture
  run "run 5000" >"$said" &
  for ((i = 0; i < 300; i++)); do
    address="$(sed -n 's/^VexoDesk: page \(.*\)$/\1/p' "$said")"
    [ -n "$address" ] && break
    sleep 0.1
  done
  host="${address#http://}"
  host="${host%/}"
  exec 3<>"/dev/tcp/${host%:*}/${host#*:}" || return
  printf 'GET / HTTP/1.1\r\nHost: %s\r\n\r\n' "$host" >&3
  read -r line <&3
  echo "${line#HTTP/1.1 }" | tr -d '\r'
  exec 3<>"/dev/tcp/${host%:*}/${host#*:}"
  printf 'GET /monitor HTTP/1.1\r\nHost: %s\r\nOrigin: http://%s\r\nUpgrade: websocket\r\n' "$host" "$host" >&3
  printf 'Connection: Upgrade\r\nSec-WebSocket-Version: 13\r\nSec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n\r\n' >&3
  read -r line <&3
  echo "${line#HTTP/1.1 }" | tr -d '\r'
  while read -r line <&3 && [ "$line" != $'\r' ]; do
    sed -n 's/^Sec-WebSocket-Accept: \(.*\)\r$/\1/p' <<<"$line"
  done
  head -c 2 <&3 | od -An -tx1 | sed 's/^ //'
  exec 3>&-
  wait
  tail -1 "$said"
}

# settings [LINE...]: a fresh copy of the kit with these in its file, or without one.
settings() {
  rm -rf "$work/kit"
  cp -r "$kit" "$work/kit"
  [ $# = 0 ] || printf '%s\n' "$@" >"$work/kit/VexoDesk.txt"
}

settings
expect "no settings" "= 0
Initialize Complete
status 0" "$(run "command init" | grep -o 'Initialize Complete\|^= 0\|^status .*' | sort -u)"
expect "the texts of the library's attach" "[VexoCtrlSDK]: >> VEXO SDK Version : 1. 0. 1. 6" \
  "$(run | grep 'SDK Version')"

settings "desk texts none"
expect "an unmet expectation" "returned 0
status 5" "$(run "command init" "expect return 1" | tail -2)"

settings "desk texts log.txt" "board chips 1"
run "registers slave1 0" | grep -q . || status=1
expect "texts in a file" "1" "$(grep -c 'VEXO SDK Version' "$work/kit/log.txt")"

settings "# a comment" "board chips 2" "camera 5 of"
expect "a wrong line" "status 3" "$(run | tail -1)"
expect "a wrong line's words" "VexoDesk: VexoDesk.txt:3: expected ntsc, pal or off, found 'of'" \
  "$(run | sed -n 's/ (camera .*//; 1p')"
settings "desk colour"
expect "an own line that is none" "VexoDesk: VexoDesk.txt:1: expected port, page, texts or nvram, found 'colour'
status 3" "$(run)"
settings "run 100"
expect "a line that makes no board" \
  "VexoDesk: VexoDesk.txt:1: expected a line that makes the board, found 'run 100'
status 3" "$(run)"

settings "desk texts none" "desk nvram kept.bin" "nvram record MDVR 0 16"
run "command init" 'text "vexo change_vdo pal "' >/dev/null
expect "what the library stores" "4d4456520110" "$(od -An -tx1 "$work/kit/kept.bin" | tr -d ' ')"
expect "what an earlier run has stored" "" "$(run "registers" >/dev/null; cmp <(printf 'MDVR\1\20') "$work/kit/kept.bin" 2>&1)"
echo "too long" >"$work/kit/kept.bin"
expect "a file that holds no setting" "status 3" "$(run | tail -1)"

settings "desk texts none" "desk port any"
expect "the port's number" "1" "$(run "camera 5 off" | grep -c '^VexoDesk: control port [1-9][0-9]* on 127.0.0.1$')"

# A picture by hand: the key's answer is the one of RFC 6455, and a server's frame begins with its kind.
settings "desk texts none" "desk page any"
fetched="$(run_with_page)"
expect "the page and a picture" "200 OK
101 Switching Protocols
s3pPLMBiTxaQ9kYGzzhZRbK+xOo=
82 7f
status 0" "$fetched"

settings "desk texts none" "fault map-data on"
expect "a window that cannot be mapped" "VexoDesk: the bus window at 0x06200000 cannot be mapped
status 0" "$(run)"
expect "a line that has no meaning here" "'seed' is refused: the system chooses among threads here
status 4" "$(run "seed 3" | grep -v mapped)"
rm "$work/kit/VexoCtrlSDK.dll"
expect "no library" "VexoLine: VexoCtrlSDK.dll cannot be loaded: error 126
status 2" "$(run)"

((status)) || echo "The kit says and keeps what it should."
exit "$status"
