#!/usr/bin/env bash
# Checks who includes whom: scripts/check_layers.sh [ROOT]. Arrows go down only, and all of them
# stand in this table. --self-check shows that what is forbidden is found.
set -euo pipefail
here="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"

# ROOM: a folder or a file without its ending; the longest that fits a file is its room.
# After the colon what it may include besides itself: rooms, single headers, and +ROOM, which is
# that room with all that it may include. * is everything.
table='
include:
src/platform:           src/platform/ce/plat_bus.h  # each platform has its own
src/platform/ce:        src/platform
src/report:             +src/platform include
src/chip:               +src/report
src/display:            +src/chip
src/motion:             +src/display
src/setup:              +src/motion
src/text:               +src/setup
src/api:                +src/text

files:

sim/text:
sim/faults:
sim/board:              sim/text include src/platform/platform.h src/chip/registers.h
sim/trace:              +sim/board sim/register_decoder
sim/register_decoder:   +sim/trace
sim/screen:             sim/board
sim/polling:            sim/board
sim/picture:            +sim/screen files
sim/kernel:             +sim/trace sim/faults sim/kernel/kernel_impl
sim/kernel/kernel_impl: +sim/kernel sim/world  # the world holds the kernel, and the kernel it
sim/world:              +sim/kernel sim/polling
sim/trace_json:         +sim/world
sim/platform:           +sim/world

harness:                +sim/platform sim/trace_json +sim/picture +src/api
script:                 files harness +sim/platform sim/trace_json script/grammar script/help script/outcome
script/listing:         script +sim/world
script/grammar:         sim/text include src/text src/display
script/outcome:         script/grammar +sim/world src/text src/display
script/help:            script +script/grammar sim/faults
device/ceimage:         files
device/emulator:        +harness files
device/plan:            files sim/text script/words.h
device/verdict:         device/plan files sim/text include script/words.h script/message_words.h script/register_words.h
device/check:           include
device/check/ce:        include device/check device/program src/platform/ce
device/program:         src/platform/ce
device/library:         include src/platform/ce
desk/console:           files +harness +script script/listing script/help script/grammar sim/picture include
desk/bench:             +desk/console desk/port/moment
desk/page:              sim/board sim/screen sim/faults +script desk/port/moment
desk/port/moment:       sim/board
desk/port:              files desk/console desk/page desk/port/moment +sim/trace_json
desk/library:           files desk/console desk/port harness +sim/world include script sim/trace_json
tools/vexosim/terminal:
tools/vexosim/listing:  +script script/listing files sim/screen sim/picture tools/vexosim/terminal
tools/vexosim/shell:    +tools/vexosim/listing script/grammar script/help
tools/vexosim/demo:     +tools/vexosim/listing
tools/vexosim/traces:   +tools/vexosim/listing sim/register_decoder
tools/vexosim/compare:  +tools/vexosim/listing +device/emulator tools/vexosim/traces
tools/vexosim/plan:     +tools/vexosim/listing device/plan tools/vexosim/traces/build_time.h
tools/vexosim/card_script: +tools/vexosim/listing +device/emulator
tools/vexosim/card_run: +tools/vexosim/card_script
tools/vexosim/commands: +tools/vexosim/card_run +tools/vexosim/shell +tools/vexosim/demo +tools/vexosim/compare +tools/vexosim/plan +tools/vexosim/traces device/verdict desk/bench desk/console desk/port
tools/vexosim/cli:      files sim/text script script/grammar tools/vexosim/commands
tools/vexosim/main:     tools/vexosim/cli files
windows/kit:            +script +harness files include sim/picture desk/console desk/port
samples/recorder:       include
samples/desk:           include
windows/checks:         include windows/kit
windows/drive:
windows:                src/platform src/platform/ce

tests:                  *
scripts/mutants:
bench:                  *
fuzz:                   *
'

# Where the compilers look for a header, and the folders whose files name their neighbours barely.
search='. include src src/platform/ce sim/platform windows/kit'
neighbours='windows/kit windows/checks windows/drive samples/recorder samples/desk'

check() {
  cd "$1"
  find . -path ./build\* -prune -o -path ./.git -prune -o \
    \( -name '*.h' -o -name '*.cpp' -o -name '*.c' -o -name '*.inc' \) -printf '%P\n' | sort |
    TABLE="$table" SEARCH="$search" NEIGHBOURS="$neighbours" awk '
      function room_of(file,    stem) {
        stem = file
        sub(/\.[a-z]+$/, "", stem)
        while (!(stem in rows) && sub(/\/[^\/]*$/, "", stem)) {}
        return stem in rows ? stem : ""
      }
      # Whether a room may include a file of another; `all` follows what stands behind a +.
      function may(room, other, file,    count, words, i, word) {
        count = split(rows[room], words, " ")
        for (i = 1; i <= count; ++i) {
          word = words[i]
          if (word == "*" || word == other || word == file) return 1
          if (sub(/^\+/, "", word) && (word == other || may(word, other, file))) return 1
        }
        return 0
      }
      function exists(file) { return file in files }
      function found(from, name,    folder, i) {
        folder = from
        sub(/\/[^\/]*$/, "", folder)
        if ((" " ENVIRON["NEIGHBOURS"] " ") ~ (" " folder " ") && exists(folder "/" name)) {
          return folder "/" name
        }
        for (i = 1; i <= places; ++i) {
          if (exists((place[i] == "." ? "" : place[i] "/") name)) {
            return (place[i] == "." ? "" : place[i] "/") name
          }
        }
        return ""
      }
      function complain(file, line, text) { print file ":" line ": " text; status = 1 }
      BEGIN {
        count = split(ENVIRON["TABLE"], lines, "\n")
        for (i = 1; i <= count; ++i) {
          sub(/ *#.*/, "", lines[i])
          if (split(lines[i], parts, ":") < 2) continue
          rows[parts[1]] = parts[2]
        }
        for (row in rows) {
          count = split(rows[row], words, " ")
          for (i = 1; i <= count; ++i) {
            word = words[i]
            sub(/^\+/, "", word)
            if (word != "*" && word !~ /\.h$/ && !(word in rows)) {
              complain("scripts/check_layers.sh", 0, "the row of " row " names " word ", which has none")
            }
          }
        }
        places = split(ENVIRON["SEARCH"], place, " ")
      }
      {files[$0] = 1; order[++total] = $0}
      END {
        for (f = 1; f <= total; ++f) {
          file = order[f]
          room = room_of(file)
          if (room == "") {
            complain(file, 1, "its folder is not in the table of scripts/check_layers.sh")
            continue
          }
          number = 0
          while ((getline text < file) > 0) {
            ++number
            if (text !~ /^[ \t]*#[ \t]*include[ \t]*"/) continue
            ++includes
            name = text
            sub(/^[^"]*"/, "", name)
            sub(/".*/, "", name)
            target = found(file, name)
            if (name ~ /\.\.\//) {
              complain(file, number, "\"" name "\" goes out of its folder: name it from the root")
            } else if (target == "") {
              complain(file, number, "\"" name "\" is not found from the root")
            } else if (room_of(target) != room && !may(room, room_of(target), target)) {
              complain(file, number, room " may not include " target)
            }
          }
          close(file)
        }
        if (!includes) complain(".", 0, "there are no includes to check")
        if (!status) print total " files, " includes " includes: all as the table of rooms has it."
        exit status
      }'
}

self_check() {
  local found status=0
  root="$(mktemp -d)"
  trap 'rm -rf "$root"' EXIT
  # put FILE LINE...
  put() {
    mkdir -p "$root/$(dirname "$1")"
    printf '%s\n' "${@:2}" >"$root/$1"
  }
  put include/VexoCtrlSDK.h
  put src/chip/registers.h
  put src/chip/register_bus.h '#include "VexoCtrlSDK.h"' '#include "display/zoom.h"'
  put src/display/zoom.h '#include "chip/registers.h"' '#include "sim/world.h"'
  put src/platform/ce/plat_bus.h '#include "chip/registers.h"'
  put sim/world.h '#include "chip/registers.h"' '#include "chip/register_bus.h"'
  put sim/kernel/objects.cpp '#include "sim/world.h"'
  put sim/kernel/kernel_impl.h '#include "sim/world.h"'
  put script/run.cpp '#include "chip/registers.h"' '// a line' ' # include "display/zoom.h"'
  put tests/near.h
  put tests/zoom_test.cpp '#include "display/zoom.h"' '#include "near.h"' '#include "../tests/near.h"'
  put attic/old.h
  if found="$(check "$root")"; then
    echo "Forbidden includes are not found."
    status=1
  fi
  diff - <(sort <<<"$found") <<'END' || status=1
attic/old.h:1: its folder is not in the table of scripts/check_layers.sh
script/run.cpp:3: script may not include src/display/zoom.h
sim/kernel/objects.cpp:1: sim/kernel may not include sim/world.h
sim/world.h:2: sim/world may not include src/chip/register_bus.h
src/chip/register_bus.h:2: src/chip may not include src/display/zoom.h
src/display/zoom.h:2: src/display may not include sim/world.h
src/platform/ce/plat_bus.h:1: src/platform/ce may not include src/chip/registers.h
tests/zoom_test.cpp:2: "near.h" is not found from the root
tests/zoom_test.cpp:3: "../tests/near.h" goes out of its folder: name it from the root
END
  return "$status"
}

case "${1:-}" in
  --self-check) self_check ;;
  *) check "${1:-$here}" ;;
esac
