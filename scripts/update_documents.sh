#!/usr/bin/env bash
# Makes the documents anew that the program itself knows best: the manual of the text commands, the
# manual page of vexosim, its completion for bash, the outputs in the first hour, the pictures of the
# page, and the promises with their tests.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/build.sh gcc vexosim vexo_desk
build/gcc/vexosim manual >docs/text-commands.md
build/gcc/vexosim manual --man >docs/vexosim.1
build/gcc/vexosim completion bash >docs/vexosim.bash
scripts/first_hour.sh build/gcc/vexosim --update
scripts/check_page.sh --documents -k is_light_and_dark
scripts/promises.py --update
