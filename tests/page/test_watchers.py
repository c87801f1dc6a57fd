"""Many watchers, without a browser: events in order, and what is missed."""

import asyncio
import functools
import unittest
from typing import Callable

from .boards import Bench
from .page_test import PageTest
from .watchers import Control, Picture, open_monitor

LINES = [line for channel in range(16) for line in
         (f"camera {channel} off", "run 60", f"camera {channel} ntsc", "command live-split mode 9 "
          "channels 0-8")]


def asynchronous(test: Callable) -> Callable:
    """Not unittest's own, whose event loop looks for errors and is ten times as slow."""

    @functools.wraps(test)
    def run(self: unittest.TestCase) -> None:
        asyncio.run(test(self))

    return run


class WatchersTest(unittest.TestCase):

    def setUp(self) -> None:
        self.board = Bench()
        self.addCleanup(lambda: self.assertEqual(self.board.end(), 0))

    def expect_no_gap(self, first: int, events: list[dict]) -> None:
        self.assertEqual([event["event"] for event in events],
                         list(range(first, first + len(events))))

    @asynchronous
    async def test_ten_watchers_get_the_same_events_in_order_and_without_gaps(self) -> None:
        watchers = [await Control.open(self.board) for _ in range(10)]
        sender = watchers[0]
        told = [asyncio.create_task(one.until_line("camera 15 off")) for one in watchers[1:]]
        own: list[dict] = []
        for line in LINES:
            answer, events = await sender.run(line)
            self.assertEqual(answer["result"], "done", answer)
            own += events
        self.expect_no_gap(sender.next, own)
        self.assertGreater(len(own), 200)
        by_number = {event["event"]: event for event in own}
        for watcher, task in zip(watchers[1:], told):
            events = await task
            self.expect_no_gap(watcher.next, events)
            both = [event for event in events if event["event"] in by_number]
            self.assertGreater(len(both), 200)
            for event in both:
                self.assertEqual(event, by_number[event["event"]])
        for watcher in watchers:
            await watcher.close()

    @asynchronous
    async def test_who_was_cut_off_sees_in_the_greeting_how_many_it_missed(self) -> None:
        stays = await Control.open(self.board)
        leaves = await Control.open(self.board)
        _, events = await leaves.run("camera 3 off")
        await leaves.close()
        seen = events[-1]["event"] + 1
        _, before = await stays.run("camera 4 off")
        answer, meanwhile = await stays.run("run 200")
        self.assertEqual(answer["result"], "done")
        back = await Control.open(self.board)
        known = {event["event"] for event in before + meanwhile}
        self.assertTrue(set(range(seen, max(known) + 1)) <= known)
        self.assertGreaterEqual(back.next, max(known) + 1)
        await back.close()
        await stays.close()

    @asynchronous
    async def test_who_reads_too_slowly_is_told_how_many_it_missed(self) -> None:
        # It takes a little, and then nothing until the board has kept as much as it does.
        slow = await Control.open(self.board, "events cycles", max_queue=1, read_limit=4096)
        busy = await Control.open(self.board)
        for _ in range(400):
            answer, _ = await busy.run("command live-split mode 16 channels 0-15")
            self.assertEqual(answer["result"], "done")
        await busy.run("camera 7 off")
        number = slow.next
        missed = 0
        while True:
            said = await slow.take()
            if "missed" in said:
                missed += said["missed"]
                number += said["missed"]
                continue
            self.assertEqual(said["event"], number)
            number += 1
            if said.get("ev") == "line" and said["text"] == "camera 7 off":
                break
        self.assertGreater(missed, 0)
        await slow.close()
        await busy.close()

    @asynchronous
    async def test_a_watcher_that_takes_no_pictures_holds_up_nobody(self) -> None:
        stalled = await open_monitor(self.board)
        control = await Control.open(self.board)
        watched = await open_monitor(self.board)
        first = Picture.read(await watched.recv()).header
        while True:
            picture = Picture.read(await watched.recv())
            if picture.header["t"] > first["t"] + 2000:
                break
        self.assertEqual(len(picture.pixels), 720 * 480 * 3)
        answer, _ = await control.run("run 10")
        self.assertEqual(answer["result"], "done")
        for socket in (stalled, watched):
            await socket.close()
        await control.close()


class PageWatcherTest(PageTest):

    def test_a_page_that_was_cut_off_says_what_it_missed(self) -> None:
        board = self.open()
        browser = self.browser
        browser.run("window.held = []; sockets.find((one) => one.url.endsWith('/control')).close()")
        browser.wait_for(lambda: browser.run("return held.length === 1"), "a greeting")
        self.assertNotEqual(browser.text("#link"), "connected")
        asyncio.run(self.pull(board))
        browser.run("const { held } = window; window.held = null; held.forEach((go) => go())")
        browser.wait_for(lambda: browser.text("#link") == "connected", "the connection")
        notice = browser.find('#notices [aria-label="Missed"]')
        browser.wait_for(notice.is_displayed, "the notice")
        self.assertRegex(notice.text, r"^\d[\d,]* events were missed\.")
        plug = browser.find('.plug[data-channel="5"] [data-does="turn"]')
        browser.wait_for(lambda: plug.get_attribute("aria-pressed") == "false",
                         "the camera that was pulled meanwhile")

    @staticmethod
    async def pull(board: Bench) -> None:
        control = await Control.open(board)
        for line in ("camera 5 off", "run 200"):
            await control.run(line)
        await control.close()
