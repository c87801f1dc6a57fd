#!/usr/bin/env bash
# Sets the pictures that the desk kit made beside those that vexosim makes of a script that does the
# same: compare_pictures.sh VEXOSIM SCRIPT FOLDER
#
# FOLDER holds the kit's pictures, and pictures.txt with a line for each: its name, and two times of
# the board in milliseconds, before it was taken and after it. Cards have a bar that moves and tapes a
# time code: so the script is run to each moment between the two, and one of its pictures must be
# the kit's to the byte.
set -euo pipefail
vexosim="$(realpath "$1")"
script="$(realpath "$2")"
folder="$(realpath "$3")"
step_ms=5 # the bar moves on after 5 to 6 ms
at_once=8
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
cd "$work"

# at NAME: the script's line of a picture, and the time that the line has without any wait.
"$vexosim" run "$script" >echo
at() {
  sed -n "s/^ *\([0-9]*\) ms  picture $1\.png\$/\1/p" echo
}

# moments BEFORE_LINE FROM COUNT: pictures of so many moments, from this time on.
moments() {
  local t
  rm -f at-*.png
  {
    head -n "$1" "$script" | grep -v '^picture '
    echo "run $(($2 - now))"
    for ((t = $2; t < $2 + $3 * step_ms; t += step_ms)); do
      echo "picture at-$t.png"
      echo "run $step_ms"
    done
  } >moments.vexo
  "$vexosim" run moments.vexo --quiet >/dev/null
}

# finds NAME BEFORE AFTER: whether a picture of a moment is the kit's.
finds() {
  local end from picture
  end="$(grep -nx "picture $1\.png" "$script" | cut -d : -f 1)"
  for ((from = $2; from <= $3 + step_ms; from += at_once * step_ms)); do
    moments $((end - 1)) "$from" "$at_once"
    for picture in at-*.png; do
      ! cmp -s "$picture" "$folder/$1.png" || return 0
    done
  done
  return 1
}

status=0
count=0
while read -r name before after; do
  count=$((count + 1))
  now="$(at "$name")"
  finds "$name" "$before" "$after" && continue
  echo "$name.png: no picture of $(basename "$script") between $before and $after ms is like it"
  status=1
done <"$folder/pictures.txt"
wanted="$(grep -c '^picture ' "$script")"
[ "$count" = "$wanted" ] || { echo "$count pictures of the kit, $wanted in $script"; status=1; }
((status)) || echo "$count pictures through the kit are those that vexosim makes of $(basename "$script")"
exit "$status"
