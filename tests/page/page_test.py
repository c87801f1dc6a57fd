"""What all tests of the page have: a browser, boards, and no complaint at the end."""

import unittest

import pytest

from .boards import Bench, Board
from .browser import Browser


class PageTest(unittest.TestCase):
    """A test of the page in the browser."""

    @pytest.fixture(autouse=True)
    def take_browser(self, shared_browser: Browser) -> None:
        self.browser = shared_browser

    def setUp(self) -> None:
        self.browser.reset()
        self.addCleanup(self.browser.reset)

    def serve(self, *lines: str) -> Bench:
        return self.keep(Bench(*lines))

    def keep(self, board: Board) -> Board:
        """Ends the board with the test, which must end well."""
        self.addCleanup(lambda: self.assertEqual(board.end(), 0, "".join(board.said)))
        # Before it: a page whose board is gone complains, and rightly.
        self.addCleanup(self.expect_no_complaints)
        return board

    def expect_no_complaints(self) -> None:
        self.assertEqual(self.browser.complaints(), [], "the browser's console")
        self.browser.driver.get("about:blank")

    def open(self, *lines: str) -> Bench:
        """A board with these lines, and its page."""
        board = self.serve(*lines)
        self.browser.open(board.url)
        return board
