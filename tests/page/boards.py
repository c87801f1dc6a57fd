"""Programs that serve the page, each with a board of its own."""

import functools
import os
import re
import signal
import subprocess
import tempfile
import threading
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
BUILD = ROOT / "build" / "gcc"
VEXOSIM = BUILD / "vexosim"
LIBRARY = BUILD / "desk" / "library"

START_LIMIT = 30  # seconds
END_LIMIT = 30


class Board:
    """A program that says on standard output where its page is."""

    def __init__(self, command: list, folder: Path | None = None) -> None:
        self._folder = None if folder else tempfile.TemporaryDirectory()
        self.folder = folder or Path(self._folder.name)
        self.said: list[str] = []
        self.process = subprocess.Popen(
            [str(part) for part in command], cwd=self.folder, text=True, errors="replace",
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        self._found = threading.Event()
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()
        self._found.wait(START_LIMIT)
        found = re.search(r"http://127\.0\.0\.1:(\d+)/", "".join(self.said))
        if found is None:
            self.process.kill()
            raise RuntimeError(f"{command[0]} says no address: {''.join(self.said)!r}")
        self.url = found.group(0)
        self.port = int(found.group(1))
        self.origin = self.url.rstrip("/")

    def _read(self) -> None:
        for line in self.process.stdout:
            self.said.append(line)
            if "http://" in line:
                self._found.set()
        self._found.set()

    def end(self) -> int:
        """Ends the program as its user would; its exit status."""
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGINT)
        self.process.stdin.close()
        try:
            status = self.process.wait(END_LIMIT)
        except subprocess.TimeoutExpired:
            self.process.kill()
            raise
        self._reader.join()
        self.process.stdout.close()
        if self._folder:
            self._folder.cleanup()
        return status


class Bench(Board):
    """vexosim serve on a free port, with lines to begin with."""

    def __init__(self, *lines: str, options: tuple = ()) -> None:
        command = [VEXOSIM, "serve", "--port", "0", *options]
        self._script = None
        if lines:
            self._script = tempfile.NamedTemporaryFile("w", suffix=".vexo")
            self._script.write("".join(line + "\n" for line in lines))
            self._script.flush()
            command.append(self._script.name)
        super().__init__(command)

    def end(self) -> int:
        if self._script:
            self._script.close()
        return super().end()


class Recorder(Board):
    """The host program of the sample, in real time; it ends with its input."""

    def __init__(self, *keys: str) -> None:
        # What it prints comes line by line.
        super().__init__(["stdbuf", "-oL", self.build(), "--page", "--real", *keys])

    @staticmethod
    @functools.cache
    def build() -> Path:
        # Each process that runs tests has its own.
        worker = os.environ.get("PYTEST_XDIST_WORKER", "alone")
        program = BUILD.parent / "page" / worker / "recorder"
        program.parent.mkdir(parents=True, exist_ok=True)
        sample = ROOT / "samples" / "desk"
        subprocess.run(
            ["cc", "-std=c99", f"-I{ROOT / 'include'}", sample / "main.c", sample / "recorder.c",
             f"-L{LIBRARY}", "-lVexoCtrlSDK", f"-Wl,-rpath,{LIBRARY}", "-o", program],
            check=True)
        return program

    def end(self) -> int:
        self.process.stdin.close()
        deadline = time.monotonic() + END_LIMIT
        while self.process.poll() is None and time.monotonic() < deadline:
            time.sleep(0.02)
        return super().end()


def vexosim(*arguments: object) -> None:
    """Runs a command of the tool that must succeed."""
    subprocess.run([str(VEXOSIM), *map(str, arguments)], check=True, capture_output=True)
