"""A host program of the sample, whose page the Linux desk library serves."""

from .boards import Recorder
from .page_test import PageTest


class ProgramTest(PageTest):

    def test_shows_the_board_of_a_program(self) -> None:
        recorder = self.keep(Recorder("9"))
        browser = self.browser
        browser.open(recorder.url)
        browser.wait_for_windows(9)
        self.assertEqual(browser.driver.title, "recorder – bench")

        # What the page does comes to the program's window.
        browser.find('.plug[data-channel="5"] [data-does="turn"]').click()
        browser.wait_for(lambda: any("no video on 0020" in line for line in recorder.said),
                         "the program that is told of the camera")
        browser.wait_for(lambda: "channel 5 lost" in browser.text("#messages [role=log]"),
                         "the message on the page")

    def test_leaves_the_library_to_the_program(self) -> None:
        recorder = self.keep(Recorder())
        browser = self.browser
        browser.open(recorder.url)
        browser.wait_for_windows(16)
        for text in ("Attach", "Window", "Unbind", "Detach"):
            self.assertFalse(browser.button(text, "#host").is_enabled(), text)
        self.assertIn("refused", browser.line("undo"))
        browser.find('[data-command="live-split"][data-mode="4"]').click()
        browser.wait_for_windows(4)
