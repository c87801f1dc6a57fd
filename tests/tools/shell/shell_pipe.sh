#!/usr/bin/env bash
# Lines from a pipe: tests/tools/shell/shell_pipe.sh VEXOSIM. The lines run, nothing is kept, status
# 0.
set -euo pipefail
vexosim="$1"
home="$(mktemp -d)"
trap 'rm -rf "$home"' EXIT
unset XDG_STATE_HOME
expect() { # name, wanted, output
  grep -qxF -- "$2" <<<"$3" || { echo "$1: no line '$2' in:" >&2; echo "$3" >&2; exit 1; }
}

out="$(printf 'lsplit 6 0\n' | HOME="$home" "$vexosim" shell)"
expect 'end of input' 'vexosim> lsplit 6 0' "$out"
expect 'end of input' '      = 0' "$out"
out="$(printf 'quit\nlsplit 6 0\n' | HOME="$home" "$vexosim" shell --chips 1 --pal)"
expect 'options' 'A board of 4 channels with PAL cameras, initialized; the worker runs.' "$out"
if grep -q 'lsplit 6 0$' <<<"$out"; then echo 'a line ran after quit' >&2; exit 1; fi
out="$(printf 'vexo rver' | HOME="$home" "$vexosim" shell --bare)"
expect 'bare' '      = -6' "$out"
[ -z "$(ls -A "$home")" ] || { echo 'a pipe left a history' >&2; exit 1; }
for arguments in '--chips 0' '--chips 5' '--seed x' 'file'; do
  status=0
  # shellcheck disable=SC2086
  "$vexosim" shell $arguments </dev/null >/dev/null 2>&1 || status=$?
  [ "$status" -eq 2 ] || { echo "shell $arguments: status $status" >&2; exit 1; }
done
