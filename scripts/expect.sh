# For scripts that check a file: says what is not as wanted, and sets status to 1.
# $checked is the file's name.

# expect WHAT WANTED FOUND: both are lists, a line each.
expect() {
  local difference
  if ! difference="$(diff <(sort <<<"$2") <(sort <<<"$3"))"; then
    echo "$checked: $1 (< wanted, > found):"
    grep '^[<>]' <<<"$difference"
    status=1
  fi
}
