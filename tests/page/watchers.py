"""Programs at the page's sockets, without a browser."""

import asyncio
import json
import struct
import zlib
from dataclasses import dataclass
from typing import Any

import websockets

LIMIT = 60  # seconds for anything that must come

# For both sockets. Closing does not wait long for the board's answer, which stands behind all that
# nobody has read.
OPTIONS = {"max_size": None, "ping_interval": None, "close_timeout": 0.1}


class Control:
    """A connection to /control that has greeted."""

    def __init__(self, socket: Any) -> None:
        self._socket = socket
        self._rest = ""
        self._said: list[dict] = []
        self.next = 0  # number of the next event

    @classmethod
    async def open(cls, board: Any, events: str = "events", **options: Any) -> "Control":
        options = {**OPTIONS, "max_queue": None, **options}
        socket = await websockets.connect(
            f"ws://127.0.0.1:{board.port}/control", origin=board.origin, **options)
        control = cls(socket)
        await socket.send(f"vexo 1 {events}".strip() + "\n")
        control.next = (await control.take()).get("next", 0)
        return control

    async def take(self) -> dict:
        """The next thing that the board says."""
        while not self._said:
            self._rest += await asyncio.wait_for(self._socket.recv(), LIMIT)
            *lines, self._rest = self._rest.split("\n")
            self._said = [json.loads(line) for line in lines]
        return self._said.pop(0)

    async def send(self, line: str) -> None:
        await self._socket.send(line + "\n")

    async def run(self, line: str) -> tuple[dict, list[dict]]:
        """The answer to a line, and the events before it."""
        await self.send(line)
        events = []
        while True:
            said = await self.take()
            if "answer" in said:
                return said, events
            events.append(said)

    async def until_line(self, line: str) -> list[dict]:
        """Events up to the one that tells of a line."""
        events = []
        while True:
            said = await self.take()
            events.append(said)
            if said.get("ev") == "line" and said.get("text") == line:
                return events

    async def close(self) -> None:
        await self._socket.close()


@dataclass
class Picture:
    """A message of /monitor."""
    header: dict
    registers: bytes
    pixels: bytes

    @classmethod
    def read(cls, message: bytes) -> "Picture":
        (length,) = struct.unpack_from("<I", message)
        header = json.loads(message[4:4 + length])
        rest = message[4 + length:]
        return cls(header, rest[:3072], zlib.decompress(rest[3072:], -15))


async def open_monitor(board: Any) -> Any:
    return await websockets.connect(
        f"ws://127.0.0.1:{board.port}/monitor", origin=board.origin, **OPTIONS)
