#!/usr/bin/env bash
# Waveforms in other programs: tests/tools/traces/waveform.sh VEXOSIM. GTKWave's converter and
# sigrok-cli read what vexosim writes, and vexosim what they make of it.
set -euo pipefail
vexosim="$1"
folder="$(mktemp -d)"
trap 'rm -rf "$folder"' EXIT
cd "$folder"
fail() {
  echo "$1" >&2
  exit 1
}
same() { # FILE: as the trace
  "$vexosim" diff "$1" start.jsonl >diff.txt || { cat diff.txt >&2; fail "$1 differs from the trace"; }
  grep -qE '^the same: [1-9][0-9]+ register accesses$' diff.txt || fail "$1 has no accesses"
}

# The first moment of an initialization; --vcd as it runs and from its trace are the same.
printf 'board chips 1\nattach\nwindow\ncommand 0xF001\n' >init.vexo
"$vexosim" run init.vexo --quiet --trace init.jsonl --vcd init.vcd >/dev/null
"$vexosim" trace init.jsonl --vcd again.vcd
cmp init.vcd again.vcd || fail 'the waveform of a run is not that of its trace'
grep '"t":0,' init.jsonl >start.jsonl
"$vexosim" trace start.jsonl --vcd start.vcd
same start.vcd

vcd2fst start.vcd start.fst
fst2vcd start.fst -o gtkwave.vcd
same gtkwave.vcd
# The identification of the master is read first: its register as text, by GTKWave's programs.
grep -qE '^sr\\040master\\040page\\0400\\0400xFE\\040chip\\040identification\\040=\\0400x28' gtkwave.vcd ||
  fail 'GTKWave does not have the register'

sigrok-cli -I vcd:downsample=50 -i start.vcd -O csv:label=channel -o sigrok.csv 2>sigrok.txt
same sigrok.csv
# Bits 7 to 0 of the data while the first read strobe is active: 0x28.
sed '1,/^select/d' sigrok.csv |
  awk -F, '$26 == 1 && !found++ {for (i = 17; i <= 24; ++i) printf "%s", $i}' >data.txt
[ "$(cat data.txt)" = 00101000 ] || fail "sigrok-cli reads $(cat data.txt)"
sigrok-cli -I vcd -i start.vcd -O vcd -o sigrok.vcd 2>sigrok.txt
same sigrok.vcd

# Another value on the bus is noticed.
sed '0,/"window":"data","value":40/s//"window":"data","value":41/' start.jsonl >other.jsonl
status=0
"$vexosim" diff start.vcd other.jsonl >diff.txt || status=$?
[ "$status" -eq 1 ] || fail "a difference gives status $status"
grep -q 'chip identification = 0x29' diff.txt || fail 'the difference is not told'
