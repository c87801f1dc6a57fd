"""The console, stops at registers, and texts that look like markup."""

from selenium.webdriver.common.keys import Keys

from .page_test import PageTest

MARKUP = "<img src=x onerror=alert(1)><b>bold</b>"

# As if the board had said it; events that a board of the simulator never has are among them.
SAY = """
const control = sockets.find((one) => one.url.endsWith("/control"));
arguments[0].forEach((event, at) => {
  const said = { event: 1000000 + at, cycle: 0, t: 0, ...event };
  control.onmessage({ data: `${JSON.stringify(said)}\\n` });
});
"""


class ConsoleTest(PageTest):

    def test_completes_a_line_and_runs_it(self) -> None:
        self.open()
        browser = self.browser
        line = browser.find("#console-line")

        def typed(text: str) -> None:
            browser.wait_for(lambda: line.get_property("value") == text, f"the line {text!r}")

        line.send_keys("came", Keys.TAB)
        typed("camera ")
        line.send_keys("5 ", Keys.TAB)
        options = browser.wait_for(
            lambda: [one.text for one in browser.all("#console [role=option]")], "completions")
        self.assertEqual(options, ["ntsc", "pal", "off"])
        line.send_keys("o")
        browser.wait_for(lambda: [one.text for one in browser.all("#console [role=option]")]
                         == ["off"], "the one completion")
        line.send_keys(Keys.TAB, Keys.ENTER)
        typed("camera 5 off ")
        line.send_keys(Keys.ENTER)
        browser.wait_for(lambda: browser.all("#console article.entry.done"), "the answer")
        plug = browser.find('.plug[data-channel="5"] [data-does="turn"]')
        browser.wait_for(lambda: plug.get_attribute("aria-pressed") == "false",
                         "the camera that is pulled")

    def test_says_why_a_line_is_refused(self) -> None:
        self.open()
        answer = self.browser.line("camera 16 off")
        self.assertIn("refused", answer)
        self.assertIn("16", answer)

    def test_explains_a_word(self) -> None:
        self.open()
        self.browser.find("#console-line").send_keys("camera")
        self.browser.button("Help", "#console").click()
        self.browser.wait_for(lambda: "camera CH" in self.browser.text("#console [role=log]"),
                              "the help")

    def test_goes_back_to_lines_before(self) -> None:
        self.open()
        self.browser.line("camera 3 pal")
        self.browser.line("camera 4 pal")
        line = self.browser.find("#console-line")
        line.send_keys(Keys.ARROW_UP, Keys.ARROW_UP)
        self.assertEqual(line.get_property("value"), "camera 3 pal")

    def test_takes_back_what_a_line_did(self) -> None:
        self.open()
        self.browser.wait_for_windows(16)
        self.browser.line("command live-split mode 9 channels 0-8")
        self.browser.wait_for_windows(9)
        self.assertNotIn("refused", self.browser.line("undo"))
        self.browser.wait_for_windows(16)

    def test_markup_stays_text(self) -> None:
        self.open()
        browser = self.browser
        browser.line(MARKUP)
        self.assertIn(MARKUP, browser.text("#console [role=log]"))
        browser.line(f'vexo "{MARKUP}"')
        browser.run(SAY, [
            {"ev": "debug", "by": "host", "text": f"{MARKUP}\n"},
            {"ev": "kernel", "by": "worker", "text": f"{MARKUP}\n"},
            {"ev": "call", "by": "host", "fn": "VEXOAPI_TextCommandProc", "text": MARKUP},
            {"ev": "return", "by": "host", "fn": "VEXOAPI_TextCommandProc", "value": 0},
            {"ev": "line", "text": MARKUP},
            {"ev": "stopped", "text": f"stopped: {MARKUP}\n{MARKUP}\n{MARKUP}"}])
        browser.wait_for(lambda: browser.text("#messages [role=log]").count(MARKUP) >= 3,
                         "the texts")
        browser.pane("host")
        browser.wait_for(lambda: MARKUP in browser.text("#host"), "the call")
        self.assertEqual(browser.all("body b, main img, #notices img, body script"), [])

class StopsTest(PageTest):

    def test_stops_at_a_register_and_continues(self) -> None:
        self.open()
        browser = self.browser
        browser.wait_for_windows(16)
        notice = browser.find("#notices .stopped")
        self.assertFalse(notice.is_displayed())

        # The left edge of window 0.
        browser.pane("registers")
        cell = browser.find('#registers [data-number="48"]')
        browser.run("arguments[0].focus()", cell)
        cell.send_keys("b")
        browser.wait_for(lambda: "master page 1 0x30" in browser.text("#registers .stops"),
                         "the stop")
        browser.pane("host")
        browser.find('[data-command="live-split"][data-mode="9"]').click()

        browser.wait_for(notice.is_displayed, "the notice")
        self.assertIn("w master page 1 0x30 window 0", notice.text)
        browser.wait_for(lambda: browser.all("#messages .note"), "the note")
        # Time stands.
        before = browser.line("where")
        time_ms = browser.canvas()[1]
        browser.line("where")
        self.assertEqual(browser.line("where"), before)
        self.assertEqual(browser.canvas()[1], time_ms)

        browser.button("Step", "#notices .stopped").click()
        browser.wait_for(lambda: "step" in browser.text("#console [role=log]"), "the step")
        self.assertTrue(notice.is_displayed())
        browser.line("break off")
        browser.button("Continue", "#notices .stopped").click()

        browser.wait_for(lambda: not notice.is_displayed(), "time that goes on")
        browser.wait_for_windows(9)
        browser.wait_for(lambda: browser.canvas()[1] > time_ms, "later pictures")

    def test_a_page_that_comes_while_the_board_is_stopped_says_so(self) -> None:
        self.open()
        browser = self.browser
        browser.wait_for_windows(16)
        browser.line("break write master page 1 0x30")
        browser.find('[data-command="live-split"][data-mode="9"]').click()
        notice = browser.find("#notices .stopped")
        browser.wait_for(notice.is_displayed, "the notice")
        browser.driver.refresh()
        browser.wait_for(lambda: browser.find("#notices .stopped").is_displayed(), "the notice")
        browser.line("break off")
        browser.line("continue")
        browser.wait_for_windows(9)
