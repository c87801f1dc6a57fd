#!/usr/bin/env python3
"""Says which lines and branches of each room the tests have run: scripts/check_coverage.py

The tests of the preset sanitize leave their counts in build/sanitize/coverage. Fails when
a room falls below tests/coverage.txt, or when a line of the library that no test runs is not in
tests/coverage_exceptions.txt, or when one that is there is run or gone.

  --update   keeps the figures of this run, where they rose
  --missing  names the lines of all rooms that no test runs
"""

import argparse
import collections
import math
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
KEPT = ROOT / "tests/coverage.txt"
EXCEPTIONS = ROOT / "tests/coverage_exceptions.txt"
LIBRARY = "library"
# Threads of the control port meet as the machine lets them, so some lines run only now and then.
SLACK = {"control port": 1.0}

# The first that fits has the file. The platform layer of the device is in none: it is not linked here,
# the tests of the image are its own.
ROOMS = (
    (LIBRARY, r"src/(?!platform/)"),
    ("simulated PC", r"sim/"),
    ("script language", r"script/"),
    ("reader of images", r"device/emulator/(pe_image|loaded_image|loader)\."),
    ("emulated device", r"device/emulator/"),
    ("trace reader", r"tools/vexosim/traces/(json_events|events|file_lines)\."),
    ("trace tools", r"tools/vexosim/traces/"),
    ("control port", r"desk/port/"),
)


class File:
    """Counts of a file's lines, and of the two ways of each of its conditions."""

    def __init__(self):
        self.lines = {}
        self.branches = {}

    def missing_lines(self):
        return {line for line, count in self.lines.items() if count == 0}

    def missing_branches(self):
        return {place for place, count in self.branches.items() if count == 0}

    def missing(self):
        return sorted(self.missing_lines() | {line for line, *_ in self.missing_branches()})


def source_of(path):
    return (ROOT / path).read_text().splitlines()


def indent_of(row):
    return len(row) - len(row.lstrip())


def block_from(source, line, indent):
    """The lines from this one to the brace that closes what it opens; itself, when it opens nothing."""
    if not source[line - 1].endswith("{"):
        return {line}
    end = line + 1
    while not (source[end - 1].lstrip().startswith("}") and indent_of(source[end - 1]) <= indent):
        end += 1
    return set(range(line, end + 1))


def leave_to_the_compiler(path, file):
    """Drops what only the compiler runs: functions of tables and static_asserts."""
    source = source_of(path)
    for number, row in enumerate(source, start=1):
        if not re.match(r"\s*(static |inline )*constexpr\b.*\(", row):
            continue
        first = number
        while not re.search(r"[{};]$", source[first - 1]):
            first += 1
        lines = set(range(number, first)) | block_from(source, first, indent_of(row))
        if any(file.lines.get(line, 0) for line in lines):
            continue
        file.lines = {line: count for line, count in file.lines.items() if line not in lines}
        file.branches = {place: count for place, count in file.branches.items() if place[0] not in lines}


def tool(name, *arguments):
    ran = subprocess.run([name, *map(str, arguments)], check=True, capture_output=True, text=True)
    print(ran.stderr, end="", file=sys.stderr)
    return ran.stdout


def read_lcov(text):
    """The project's files by their path; a line of several binaries has the counts of all."""
    files = collections.defaultdict(File)
    file = None
    for row in text.splitlines():
        key, _, value = row.partition(":")
        if key == "SF":
            path = pathlib.Path(value).resolve()
            file = files[str(path.relative_to(ROOT))] if path.is_relative_to(ROOT) else None
        elif file is None:
            continue
        elif key == "DA":
            line, count = map(int, value.split(",")[:2])
            file.lines[line] = file.lines.get(line, 0) + count
        elif key == "BRDA":
            line, block, way, count = value.split(",")
            place = (int(line), int(block), int(way))
            file.branches[place] = file.branches.get(place, 0) + (0 if count == "-" else int(count))
    return files


def measure(build):
    """Merges what the processes of the tests left, and reads it with the programs that wrote it."""
    profiles = sorted((build / "coverage").glob("*.profraw"))
    if not profiles:
        sys.exit(f"{build}/coverage is empty: run scripts/run_tests.sh sanitize first.")
    merged = build / "coverage/all.profdata"
    # A process that a test kills may leave half of its counts; what is left out for that is said.
    tool("llvm-profdata", "merge", "-sparse", "-failure-mode=all", "-o", merged, *profiles)
    programs = [build / "tests/vexo_tests", "-object", build / "vexosim"]
    return read_lcov(
        tool("llvm-cov", "export", "-format=lcov", "-skip-functions", f"-instr-profile={merged}", *programs)
    )


def room_of(path):
    return next((room for room, pattern in ROOMS if re.match(pattern, path)), None)


def share(run, total):
    return 100.0 * run / total if total else 100.0


def tally(files):
    """Of each room: the shares of lines and branches that ran, and how many did not."""
    totals = collections.defaultdict(lambda: [0, 0, 0, 0])
    for path, file in files.items():
        total = totals[room_of(path)]
        total[0] += len(file.lines)
        total[1] += len(file.missing_lines())
        total[2] += len(file.branches)
        total[3] += len(file.missing_branches())
    return {
        room: (share(n - lost, n), share(m - gone, m), lost, gone)
        for room, (n, lost, m, gone) in totals.items()
    }


def print_table(table):
    print(f"{'room':30} {'lines':>8} {'branches':>9} {'missing':>15}")
    for room, _ in ROOMS:
        if room not in table:
            continue
        lines, branches, lost, gone = table[room]
        print(f"{room:30} {lines:7.2f}% {branches:8.2f}% {f'{lost} and {gone}':>15}")


def rows_of(path):
    for row in path.read_text().splitlines():
        if row and not row.startswith("#"):
            yield [field.strip() for field in row.split(" | ")]


def check_exceptions(files):
    """Lines of the library that no test runs, against the kept ones: by their text."""
    kept = {(path, text) for path, text, _ in rows_of(EXCEPTIONS)}
    used = set()
    mistakes = []
    for path, file in files.items():
        if room_of(path) != LIBRARY:
            continue
        source = source_of(path)
        missing = file.missing()
        # A kept line that opens a block stands for all of it.
        excused = set()
        for line in missing:
            if (path, source[line - 1].strip()) in kept:
                used.add((path, source[line - 1].strip()))
                excused |= block_from(source, line, indent_of(source[line - 1]))
        for line in missing:
            if line not in excused:
                mistakes.append(f"{path}:{line}: no test runs all of this: {source[line - 1].strip()}")
    for path, text in kept - used:
        mistakes.append(f"{EXCEPTIONS.name}: this is run now, or gone: {path} | {text}")
    return mistakes


def down(figure):
    return math.floor(figure * 10) / 10


def check_kept(table, update):
    kept = {room: (float(lines), float(branches)) for room, lines, branches in rows_of(KEPT)}
    mistakes = []
    rose = False
    for room, (lines, branches, *_) in table.items():
        least = kept.get(room, (0.0, 0.0))
        slack = SLACK.get(room, 0.0)
        for what, now, before in (("lines", lines, least[0]), ("branches", branches, least[1])):
            if now < before:
                mistakes.append(f"{room}: {now:.2f}% of its {what} ran; it was {before}%.")
        now = (down(lines - slack), down(branches - slack))
        rose = rose or now[0] > least[0] or now[1] > least[1]
        kept[room] = (max(now[0], least[0]), max(now[1], least[1]))
    for room in set(kept) - set(table):
        mistakes.append(f"{KEPT.name}: there is no room {room}.")
    if rose and update:
        comments = [row for row in KEPT.read_text().splitlines() if row.startswith("#")]
        rows = [f"{room} | {kept[room][0]} | {kept[room][1]}" for room, _ in ROOMS if room in kept]
        KEPT.write_text("\n".join(comments + rows) + "\n")
    elif rose:
        print("Some of it rose. To keep that: scripts/check_coverage.py --update")
    return mistakes


def main():
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter, usage=argparse.SUPPRESS
    )
    parser.add_argument("--update", action="store_true", help=argparse.SUPPRESS)
    parser.add_argument("--missing", action="store_true", help=argparse.SUPPRESS)
    options = parser.parse_args()

    measured = measure(ROOT / "build/sanitize")
    files = {path: file for path, file in measured.items() if room_of(path)}
    for path, file in files.items():
        leave_to_the_compiler(path, file)
    table = tally(files)
    print_table(table)
    if options.missing:
        for path, file in sorted(files.items()):
            for line in file.missing():
                print(f"{path}:{line}: {source_of(path)[line - 1].strip()}")
    mistakes = check_exceptions(files) + check_kept(table, options.update)
    for mistake in mistakes:
        print(mistake)
    return 1 if mistakes else 0


if __name__ == "__main__":
    sys.exit(main())
