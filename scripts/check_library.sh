#!/usr/bin/env bash
# Checks that the library asks nothing of a C++ runtime: scripts/check_library.sh ARCHIVE
#
# The device loads it as a DLL: no code may run before its entry, and all that it may need from
# outside is the platform layer and the memory and string routines that the compiler itself calls.
set -euo pipefail
archive="$1"

objects="$(ar t "$archive" | wc -l)"
if ((objects == 0)); then
  echo "$archive is empty."
  exit 1
fi
status=0

initializers="$(
  {
    nm -A "$archive" 2>/dev/null | grep -E ' [tT] (_GLOBAL__|__cxx_global_var_init)' || true
    objdump -h "$archive" | awk '/:     file format/ {object = $1}
      $2 ~ /^\.(init_array|ctors|fini_array|dtors|preinit_array)/ {print object, $2}'
  }
)"
if [[ -n "$initializers" ]]; then
  echo "Code that runs before the library's entry:"
  echo "$initializers"
  status=1
fi

# What one object lacks and no other object of the archive has. (The PC's header turns atoi into
# strtol.)
symbols="$(nm -P "$archive" 2>/dev/null)"
defined="$(awk '$2 ~ /^[ABCDGIRSTVWiu]$/ {print $1}' <<<"$symbols" | sort -u)"
needed="$(awk '$2 ~ /^[Uvw]$/ {print $1}' <<<"$symbols" | sort -u)"
allowed='^Plat_[A-Za-z]+\(|^mem(cpy|move|set|cmp|chr)$|^str(len|cmp|ncmp|chr|cpy|ncpy|str)$|^atoi$|^strtol$'
foreign="$(comm -13 <(echo "$defined") <(echo "$needed") | c++filt |
  grep -vE "$allowed|^_GLOBAL_OFFSET_TABLE_$" || true)"
if [[ -n "$foreign" ]]; then
  echo "Needed from outside, but neither of the platform layer nor a memory or string routine:"
  echo "$foreign"
  status=1
fi

((status)) || echo "$objects objects: nothing runs at load, nothing foreign is needed."
exit "$status"
