"""Ten watchers beside a busy host, for a while: does the board keep real time, does memory grow?

/usr/bin/python3 -m tests.page.load [MINUTES] [WATCHERS]     ten minutes and ten watchers

Each watcher has the events and the pictures, as a page has. The host changes layouts, pulls cameras
and reads registers ten times a second. The first minute is for what grows once; of the time behind
it the last line says what it came to.
"""

import asyncio
import json
import os
import statistics
import struct
import sys
import time
from dataclasses import dataclass, field
from pathlib import Path

from .boards import Bench
from .watchers import Control, open_monitor

WARM_UP = 60  # seconds; less where all of it is shorter
HOST_PAUSE = 0.1
REPORT_EACH = 30
TICKS = os.sysconf("SC_CLK_TCK")


@dataclass
class Watched:
    """What one watcher saw."""
    pictures: int = 0
    events: int = 0
    missed: int = 0
    gaps: int = 0
    lags: list[int] = field(default_factory=list)


def resident(pid: int) -> int:
    """Memory of a process, in KiB."""
    for line in Path(f"/proc/{pid}/status").read_text().splitlines():
        if line.startswith("VmRSS:"):
            return int(line.split()[1])
    raise RuntimeError("no VmRSS")


def processor(pid: int) -> float:
    """Seconds of processors that a process has taken."""
    fields = Path(f"/proc/{pid}/stat").read_text().rsplit(")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / TICKS


async def watch_events(board: Bench, seen: Watched) -> None:
    control = await Control.open(board)
    number = control.next
    while True:
        said = await control.take()
        if "missed" in said:
            seen.missed += said["missed"]
            number += said["missed"]
            continue
        seen.gaps += said["event"] != number
        number = said["event"] + 1
        seen.events += 1


async def watch_pictures(board: Bench, seen: Watched) -> None:
    socket = await open_monitor(board)
    while True:
        message = await socket.recv()
        (length,) = struct.unpack_from("<I", message)
        seen.pictures += 1
        seen.lags.append(json.loads(message[4:4 + length])["lag"])


async def be_busy(board: Bench, answers: list[float]) -> None:
    control = await Control.open(board, "")
    turn = 0
    while True:
        turn += 1
        channel = turn // 2 % 16
        lines = [
            f"command live-split mode {(4, 9, 16)[turn % 3]} channels 0-15",
            f"camera {channel} {('off', 'ntsc')[turn % 2]}",
            f"command read-reg chip master page 0 reg {turn % 256}",
        ]
        for line in lines:
            begin = time.monotonic()
            answer, _ = await control.run(line)
            answers.append(time.monotonic() - begin)
            if answer["result"] != "done":
                raise RuntimeError(f"{line}: {answer['text']}")
        await asyncio.sleep(HOST_PAUSE)


def in_words(values: list[float], unit: str) -> str:
    ordered = sorted(values)
    return (f"{ordered[0]:.4g} / {statistics.median(ordered):.4g} / "
            f"{ordered[int(len(ordered) * 0.99)]:.4g} / {ordered[-1]:.4g} {unit}"
            " (least, median, 99 of 100, most)")


async def load(board: Bench, seconds: float, count: int) -> None:
    pid = board.process.pid
    answers: list[float] = []
    watched = [Watched() for _ in range(count)]
    tasks = [asyncio.create_task(be_busy(board, answers))]
    for seen in watched:
        tasks.append(asyncio.create_task(watch_events(board, seen)))
        tasks.append(asyncio.create_task(watch_pictures(board, seen)))

    async def pause(length: float) -> None:
        done, _ = await asyncio.wait(tasks, timeout=length, return_when=asyncio.FIRST_COMPLETED)
        for task in done:
            await task  # none of them ends but by an error

    await pause(min(WARM_UP, seconds / 4))
    for seen in watched:
        seen.__init__()
    answers.clear()
    begin, used, memory = time.monotonic(), processor(pid), resident(pid)
    end = begin + seconds
    while (left := end - time.monotonic()) > 0:
        await pause(min(left, REPORT_EACH))
        lags = [lag for seen in watched for lag in seen.lags[-100:]]
        print(f"{time.monotonic() - begin:5.0f} s: {resident(pid)} KiB, "
              f"lag {max(lags, default=0)} ms at most", flush=True)
    passed = time.monotonic() - begin
    for task in tasks:
        task.cancel()
    print(f"{count} watchers, {passed:.0f} s, {len(answers)} lines of the host")
    print("lag:", in_words([lag for seen in watched for lag in seen.lags], "ms"))
    print("a line's answer:", in_words([1000 * one for one in answers], "ms"))
    rates = [seen.pictures / passed for seen in watched]
    print(f"pictures a second, by watcher: {min(rates):.1f} to {max(rates):.1f}")
    print(f"events: {sum(seen.events for seen in watched)}, "
          f"missed {sum(seen.missed for seen in watched)}, "
          f"gaps {sum(seen.gaps for seen in watched)}")
    print(f"processor: {100 * (processor(pid) - used) / passed:.0f} % of one")
    print(f"memory: {memory} KiB at the beginning, {resident(pid)} KiB at the end")


def main() -> None:
    minutes = float(sys.argv[1]) if len(sys.argv) > 1 else 10
    count = int(sys.argv[2]) if len(sys.argv) > 2 else 10
    board = Bench()
    try:
        asyncio.run(load(board, 60 * minutes, count))
    finally:
        print(f"the board ends with {board.end()}")


if __name__ == "__main__":
    main()
