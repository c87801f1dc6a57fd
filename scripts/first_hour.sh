#!/usr/bin/env bash
# docs/first-hour.md, as its commands make it now: scripts/first_hour.sh VEXOSIM [--update]. Runs them
# in order in one temporary folder and prints how the document differs, or with --update writes it.
#
# An output that is still as it stands there stays, with its cuts: a line of ... stands for any lines.
# Where it differs, the whole output of the line takes its place. What each build has of its own is
# no difference: its time, and the numbers of the library's lines in a stack.
set -euo pipefail
vexosim="$(realpath "$1")"
document="$(dirname "$(realpath "${BASH_SOURCE[0]}")")/../docs/first-hour.md"
folder="$(mktemp -d)"
trap 'rm -rf "$folder"' EXIT
ln -s "$vexosim" "$folder/vexosim"
mkdir "$folder/work"
prompt='vexosim> '

run() { # command, what is typed into it
  cd "$folder/work"
  HOME="$folder" PATH="$folder:$PATH" NO_COLOR=1 bash -c "(exit $status); $1" <<<"$2" 2>&1
}

comparable() { sed -E 's/(>> build : ).*/\1/; s/(\.(cpp|h):)[0-9]+\)$/\1)/'; }

matches() { # text, text with lines of ...
  local line pattern=''
  while IFS= read -r line; do
    if [[ $line == ... ]]; then pattern+='*'; else pattern+="$line"$'\n'; fi
  done < <(comparable <<<"${2%$'\n'}" | sed -E 's/[][*?\\]/\\&/g; s/^ *\.\.\.$/.../')
  # shellcheck disable=SC2053 # a pattern is wanted
  [[ "$(comparable <<<"$1")"$'\n' == $pattern ]]
}

split() { # array, text: cuts it in front of the prompts
  local -n parts="$1"
  local line
  parts=('')
  [[ $2 ]] || return 0
  while IFS= read -r line; do
    [[ $line == "$prompt"* ]] && parts+=('')
    parts[-1]+="$line"$'\n'
  done <<<"${2%$'\n'}"
}

status=0
flush() { # runs the command whose output was read
  [[ -v command ]] || return 0
  local actual old=() new=() i
  actual="$(run "$command" "$(sed -n "s/^$prompt//p" <<<"$output")")" && status=0 || status=$?
  split old "$output"
  split new "$actual"
  for ((i = 0; i < ${#new[@]}; ++i)); do
    if [[ $i -lt ${#old[@]} ]] && matches "${new[i]}" "${old[i]}"; then
      printf %s "${old[i]}"
    else
      printf %s "${new[i]}"
    fi
  done
  unset command
}

fresh() {
  local line inside=''
  while IFS= read -r line; do
    if [[ $line == '```'* || ($inside && $line == '$ '*) ]]; then flush; fi
    [[ -v command ]] || printf '%s\n' "$line"
    if [[ $line == '```'* ]]; then
      inside=''
      [[ $line != '```console' ]] || inside=yes
    elif [[ $inside && $line == '$ '* ]]; then
      command="${line#'$ '}"
      output=''
    elif [[ -v command ]]; then
      output+="$line"$'\n'
    fi
  done <"$document"
}

fresh >"$folder/fresh.md"
if [[ "${2:-}" == --update ]]; then
  cp "$folder/fresh.md" "$document"
else
  diff -u "$document" "$folder/fresh.md"
fi
