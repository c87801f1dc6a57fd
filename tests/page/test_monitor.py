"""The monitor, the cameras and the host's buttons."""

import json
import tempfile
from pathlib import Path

from PIL import Image, ImageChops
from selenium.webdriver.common.keys import Keys

from .boards import Bench, vexosim
from .page_test import PageTest

BLUE = (16, 28, 140)  # a window whose camera is lost


def difference(one: Image.Image, other: Image.Image) -> tuple | None:
    """Where two pictures differ: left, top, right, bottom; none where they are the same."""
    if one.size != other.size:
        return (0, 0, *other.size)
    return ImageChops.difference(one, other).getbbox()


class MonitorTest(PageTest):

    def picture_of_run(self, lines: list[str], time_ms: int) -> Image.Image:
        """What `vexosim run` shows of a board with these lines at this time of it."""
        with tempfile.TemporaryDirectory() as folder:
            script = Path(folder) / "lines.vexo"
            trace = Path(folder) / "lines.json"
            picture = Path(folder) / "lines.png"
            script.write_text("\n".join(lines) + "\n")
            vexosim("run", script, "--trace", trace)
            past = json.loads(trace.read_text().splitlines()[-1])["t"]
            self.assertLess(past, time_ms, "the lines take longer than the board has run")
            script.write_text("\n".join([*lines, f"run {time_ms - past}"]) + "\n")
            vexosim("run", script, "--picture", picture)
            return Image.open(picture).convert("RGB")

    def test_shows_sixteen_pictures(self) -> None:
        self.open()
        self.browser.wait_for_windows(16)
        picture, time_ms = self.browser.canvas()
        self.assertEqual(picture.size, (720, 480))
        expected = self.picture_of_run(["attach", "window", "command init"], time_ms)
        self.assertIsNone(difference(picture, expected))

    def test_shows_576_lines_on_pal(self) -> None:
        self.open("detach", "camera all pal", "nvram record MDVR 1 16", "attach", "window",
                  "command init")
        self.browser.wait_for(lambda: "PAL" in self.browser.text("#monitor header"), "PAL")
        picture, time_ms = self.browser.canvas()
        self.assertEqual(picture.size, (720, 576))
        box = self.browser.run(
            "const { width, height } = document.querySelector('#monitor canvas')"
            ".getBoundingClientRect(); return [width, height]")
        self.assertAlmostEqual(box[0] / box[1], 4 / 3, delta=0.02)

    def test_is_live(self) -> None:
        self.open()
        self.browser.wait_for_windows(16)
        first, before = self.browser.canvas()
        self.browser.wait_for(lambda: self.browser.canvas()[1] > before + 500, "later pictures")
        self.assertIsNotNone(difference(first, self.browser.canvas()[0]), "no bar has moved")

    def test_a_pulled_camera_is_seen_on_the_monitor_in_a_message_and_in_the_registers(self) -> None:
        self.open()
        browser = self.browser
        browser.wait_for_windows(16)
        # The middle of window 5 of 4 x 4, and the chip's register of lost channels.
        def middle() -> tuple:
            return browser.canvas()[0].getpixel((276, 179 + 50))
        browser.pane("registers")
        browser.button("slave1", "#registers").click()
        browser.button("page 1", "#registers").click()
        def lost() -> int:  # a bit a channel; it has a second one
            return int(browser.text('#registers [data-number="120"]'), 16) & 0x0F
        browser.wait_for(lambda: lost() == 0x00, "no channel lost")
        self.assertNotEqual(middle(), BLUE)

        browser.find('.plug[data-channel="5"] [data-does="turn"]').click()

        browser.wait_for(lambda: middle() == BLUE, "a blue window")
        browser.wait_for(lambda: "channel 5 lost" in browser.text("#messages [role=log]"),
                         "the message")
        browser.wait_for(lambda: lost() == 0x02, "the register")
        plug = browser.find('.plug[data-channel="5"] [data-does="turn"]')
        self.assertEqual(plug.get_attribute("aria-pressed"), "false")

        plug.click()

        browser.wait_for(lambda: middle() != BLUE, "a picture")
        browser.wait_for(lambda: "no channel lost" in browser.text("#messages [role=log]"),
                         "the message")
        browser.wait_for(lambda: lost() == 0x00, "the register")

    def test_nine_pictures_are_those_of_a_run_pixel_by_pixel(self) -> None:
        self.open()
        self.browser.wait_for_windows(16)
        self.browser.find('[data-command="live-split"][data-mode="9"]').click()
        self.browser.wait_for_windows(9)
        lines = ["attach", "window", "command init",
                 "command live-split mode 9 channels 0-8"]
        for _ in range(3):
            picture, time_ms = self.browser.canvas()
            self.assertIsNone(difference(picture, self.picture_of_run(lines, time_ms)), time_ms)
        self.assertIn("live-split mode 9", self.browser.text("#host output.answer"))

    def test_a_layout_is_reached_and_pressed_by_keyboard_alone(self) -> None:
        self.open()
        browser = self.browser
        browser.wait_for_windows(16)
        for _ in range(60):
            browser.driver.switch_to.active_element.send_keys(Keys.TAB)
            if browser.run("return document.activeElement.closest('.layouts') !== null"):
                break
        else:
            self.fail("the tab key does not come to the layouts")
        for _ in range(20):
            if browser.run("return document.activeElement.dataset.mode") == "4":
                break
            browser.driver.switch_to.active_element.send_keys(Keys.ARROW_RIGHT)
        self.assertEqual(browser.run("return document.activeElement.ariaLabel"), "live-split 4")
        outline = browser.run("return getComputedStyle(document.activeElement).outlineStyle")
        self.assertNotEqual(outline, "none", "the focus is not seen")
        browser.driver.switch_to.active_element.send_keys(Keys.ENTER)
        browser.wait_for_windows(4)

    def test_a_window_tells_its_channel_and_its_registers(self) -> None:
        self.open()
        browser = self.browser
        browser.wait_for_windows(16)
        browser.button("Windows", "#monitor").click()
        browser.run("document.querySelector('.windows [data-channel=\"6\"]').focus()")
        card = browser.wait_for(lambda: browser.text("#monitor .card"), "the window's card")
        self.assertIn("Channel 6: slave1, position 2", card)
        self.assertIn("1 0x38", card)  # its edges
        self.assertIn("x 360–532, y 124–240 of 720 × 480", card)
        self.assertIn("window 25A 85 1F 3C", card)


class PagesTest(PageTest):

    def test_two_pages_see_the_same(self) -> None:
        board = self.open()
        browser = self.browser
        first = browser.driver.current_window_handle
        browser.wait_for_windows(16)
        browser.driver.switch_to.new_window("window")
        try:
            browser.open(board.url)
            browser.wait_for_windows(16)
            browser.line("command live-split mode 4 channels 4-7")
            browser.wait_for_windows(4)
            said = browser.text("#messages [role=log]")
            browser.find('.plug[data-channel="2"] [data-does="turn"]').click()
            browser.driver.switch_to.window(first)
            browser.wait_for_windows(4)
            plug = browser.find('.plug[data-channel="2"] [data-does="turn"]')
            browser.wait_for(lambda: plug.get_attribute("aria-pressed") == "false",
                             "the camera that the other page pulled")
            browser.wait_for(lambda: "channel 2 lost" in browser.text("#messages [role=log]"),
                             "the message")
        finally:
            for handle in browser.driver.window_handles:
                if handle != first:
                    browser.driver.switch_to.window(handle)
                    browser.driver.close()
            browser.driver.switch_to.window(first)

    def test_a_page_that_is_loaded_again_shows_how_the_board_is(self) -> None:
        self.open()
        browser = self.browser
        browser.wait_for_windows(16)
        browser.find('.plug[data-channel="5"] [data-does="turn"]').click()
        browser.line("command live-split mode 9 channels 0-8")
        browser.wait_for_windows(9)
        browser.driver.refresh()
        browser.wait_for_windows(9)
        browser.wait_for(
            lambda: browser.find('.plug[data-channel="5"] [data-does="turn"]')
            .get_attribute("aria-pressed") == "false", "the camera that is pulled")

