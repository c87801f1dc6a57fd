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

# page_of LINE...: runs VexoLine with these lines; meanwhile fetches the page, and of a picture what
# its WebSocket says first. The key's answer is that of RFC 6455, and 82 begins a message of bytes.
page_of() {
  local said="$work/said" host='' line
  : >"$said"
  (cd "$work/kit" && exec timeout 60 wine ./VexoLine.exe "$@") >"$said" 2>&1 &
  for ((i = 0; i < 300; i++)); do
    host="$(tr -d '\r' <"$said" | sed -n 's,^VexoDesk: page http://\(.*\)/$,\1,p')"
    [ -n "$host" ] && break
    sleep 0.1
  done
  exec 3<>"/dev/tcp/${host%:*}/${host#*:}" || return
  printf 'GET / HTTP/1.1\r\nHost: %s\r\n\r\n' "$host" >&3
  read -r line <&3 && echo "$line"
  exec 3<>"/dev/tcp/${host%:*}/${host#*:}" || return
  printf '%s\r\n' "GET /monitor HTTP/1.1" "Host: $host" "Origin: http://$host" "Upgrade: websocket" \
    "Connection: Upgrade" "Sec-WebSocket-Version: 13" \
    "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==" "" >&3
  while read -r line <&3 && [ "$line" != $'\r' ]; do
    grep -E '^HTTP|^Sec-WebSocket-Accept' <<<"$line"
  done
  head -c 1 <&3 | od -An -tx1
  exec 3>&-
  wait
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

settings "desk texts none" "desk page any"
expect "the page, and a picture of it" "HTTP/1.1 200 OK
HTTP/1.1 101 Switching Protocols
Sec-WebSocket-Accept: s3pPLMBiTxaQ9kYGzzhZRbK+xOo=
 82" "$(page_of "run 3000" | tr -d '\r')"

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
