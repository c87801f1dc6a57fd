"""How the page looks, what it weighs, and who can use it."""

import json

from PIL import Image
from .boards import ROOT
from .page_test import PageTest

SHOTS = ROOT / "build" / "page"
AXE = SHOTS / "axe.min.js"

MOST_BYTES = 300_000  # of all that the page loads
MOST_PAINT = 10_000  # ms, on a machine that does much else; 1000 where it does not
MOST_SHOT_BYTES = 200_000
SIZES = ((320, 240), (1024, 768), (1440, 900), (2560, 1440))

# Controls that cannot be reached by scrolling, or whose text is cut.
CUT = """
const cut = [];
const tell = (one, why) => cut.push(`${one.tagName} ${one.getAttribute("aria-label") ??
  (one.id || one.textContent.trim().slice(0, 40))}: ${why}`);
for (const one of arguments[0].querySelectorAll("button, input, select, summary, a[href]")) {
  if (!one.checkVisibility({ checkOpacity: true, checkVisibilityCSS: true })) continue;
  if (one.disabled || one.closest(".skip, .windows")) continue;
  one.scrollIntoView({ block: "center", inline: "center" });
  // What only a script can scroll is cut.
  for (let up = one.parentElement; up; up = up.parentElement) {
    const { overflowX, overflowY } = up.scrollLeft || up.scrollTop ? getComputedStyle(up) : {};
    if ((up.scrollTop && overflowY === "hidden") || (up.scrollLeft && overflowX === "hidden")) {
      tell(one, `is outside of ${up.tagName} ${up.id || up.className}`);
      up.scrollTo(0, 0);
    }
  }
  const { left, top, right, bottom } = one.getBoundingClientRect();
  if (right - left < 1 || bottom - top < 1) { tell(one, "has no size"); continue; }
  const under = document.elementFromPoint((left + right) / 2, (top + bottom) / 2);
  const label = one.closest("label");
  if (!under || !(one.contains(under) || under.contains(one) && under === label)) {
    tell(one, `is under ${under?.tagName} ${under?.className}`);
  }
  if (one.tagName === "BUTTON" && one.scrollWidth > one.clientWidth + 1) tell(one, "is cut");
}
scrollTo(0, 0);
return cut;
"""

WIDER = """
const { scrollWidth, clientWidth } = document.scrollingElement;
return scrollWidth - clientWidth;
"""

LOADED = """
const [page] = performance.getEntriesByType("navigation");
return [page, ...performance.getEntriesByType("resource")].map(
  ({ name, encodedBodySize, transferSize }) => [name, encodedBodySize, transferSize]);
"""

PAINT = """
return performance.getEntriesByName("first-contentful-paint")[0]?.startTime ?? null;
"""


class LookTest(PageTest):

    def test_cuts_no_content_at_any_size(self) -> None:
        self.open()
        browser = self.browser
        browser.wait_for_windows(16)
        for width, height in SIZES:
            browser.size(width, height)
            panes = {"the page": None}
            panes |= {tab.get_attribute("aria-controls"): tab for tab in browser.all(".tabs button")
                      if tab.is_displayed()}
            for name, tab in panes.items():
                with self.subTest(size=f"{width} x {height}", pane=name):
                    if tab is not None:
                        browser.run("arguments[0].click()", tab)
                    wide = browser.run(WIDER)
                    self.assertLessEqual(wide, 0, "the page is wider than its window")
                    within = browser.find("body" if tab is None else f"#{name}")
                    self.assertEqual(browser.run(CUT, within), [])

    def test_the_monitor_keeps_its_shape_and_is_seen_whole(self) -> None:
        self.open()
        browser = self.browser
        browser.wait_for_windows(16)
        for width, height in SIZES:
            with self.subTest(size=f"{width} x {height}"):
                browser.size(width, height)
                box = browser.run(
                    "const canvas = document.querySelector('#monitor canvas');"
                    "canvas.scrollIntoView({ block: 'center' });"
                    "const { left, right, top, bottom } = canvas.getBoundingClientRect();"
                    "return [left, right, top, bottom, innerWidth, innerHeight]")
                left, right, top, bottom, wide, high = box
                self.assertAlmostEqual((right - left) / (bottom - top), 4 / 3, delta=0.02)
                self.assertGreaterEqual(left, 0)
                self.assertLessEqual(right, wide)
                if width >= 1024:
                    self.assertGreaterEqual(top, 0)
                    self.assertLessEqual(bottom, high)

    def test_weighs_little_and_comes_from_nowhere_else(self) -> None:
        board = self.open()
        self.browser.wait_for_windows(16)
        loaded = self.browser.run(LOADED)
        for name, _, _ in loaded:
            self.assertTrue(name.startswith(board.url), name)
        weight = sum(size for _, size, _ in loaded)
        paint = self.browser.run(PAINT)
        print(f"page: {weight} bytes in {len(loaded)} files, first paint after {paint:.0f} ms")
        self.assertGreater(weight, 50_000)
        self.assertLessEqual(weight, MOST_BYTES)
        self.assertLess(paint, MOST_PAINT)

    def test_is_light_and_dark_as_the_system_is(self) -> None:
        self.open()
        browser = self.browser
        browser.size(1440, 960)
        browser.wait_for_windows(16)
        # Something to see.
        browser.line("camera 13 off")
        browser.line("command live-split mode 16 channels 0-15")
        browser.wait_for(lambda: "channel 13 lost" in browser.text("#messages [role=log]"),
                         "the message")
        shades = {}
        for theme in ("light", "dark"):
            browser.theme(theme)
            shot = browser.screenshot()
            shades[theme] = shot.convert("L").resize((1, 1)).getpixel((0, 0))
            # A palette of its own halves the file.
            SHOTS.mkdir(parents=True, exist_ok=True)
            file = SHOTS / f"bench-{theme}.png"
            shot.quantize(256, dither=Image.Dither.NONE).save(file, optimize=True)
            self.assertLess(file.stat().st_size, MOST_SHOT_BYTES)
        self.assertGreater(shades["light"], 170)
        self.assertLess(shades["dark"], 80)


class AccessibilityTest(PageTest):
    """With axe-core, which scripts/check_page.sh fetches."""

    def setUp(self) -> None:
        if not AXE.exists():
            self.skipTest(f"axe-core is not there ({AXE}): the network was not reached")
        super().setUp()

    def expect_none(self, what: str, within: str = "html") -> None:
        for theme in ("light", "dark"):
            self.browser.theme(theme)
            # In the dark the colours differ, nothing else.
            rules = ["color-contrast", "link-in-text-block"]
            options = {"runOnly": {"type": "rule", "values": rules}} if theme == "dark" else {}
            found = self.browser.driver.execute_async_script(
                "const [within, options, done] = arguments; axe.run(within, options).then("
                "({ violations, passes }) => done({ passes: passes.length, violations: violations"
                ".map(({ id, help, nodes }) => [id, help, nodes.map(({ target, failureSummary }) =>"
                " `${target.join(' ')}: ${failureSummary}`)]) }), (error) => done(String(error)))",
                within, options)
            with self.subTest(theme=theme, state=what):
                self.assertIsInstance(found, dict, found)
                whole = within == "html" and theme == "light"
                self.assertGreater(found["passes"], 20 if whole else 0)
                self.assertEqual(found["violations"], [], json.dumps(found["violations"], indent=1))

    def test_breaks_no_rule_in_any_state_light_and_dark(self) -> None:
        self.open()
        browser = self.browser
        browser.wait_for_windows(16)
        browser.run(AXE.read_text())
        browser.line("camera 16 off")
        browser.line("camera 5 off")
        self.expect_none("as it opens")
        for tab in browser.all(".tabs button"):
            name = tab.get_attribute("aria-controls")
            browser.pane(name)
            self.expect_none(name, f".stack:has(> #{name})")
        browser.button("Windows", "#monitor").click()
        browser.run("document.querySelector('.windows [data-channel=\"6\"]').focus()")
        self.expect_none("the windows' registers", "#monitor")
        browser.button("Windows", "#monitor").click()
        browser.pane("registers")
        browser.button("Names", "#registers").click()
        self.expect_none("registers by name", "#registers")
        browser.button("Grid", "#registers").click()
        browser.find('#registers [data-number="48"]').click()
        self.expect_none("a register's menu", "#registers")
        browser.find('#registers [data-number="48"]').send_keys("w")
        browser.pane("console")
        browser.find("#console-line").send_keys("camera 5 ", "\t")
        browser.wait_for(lambda: browser.all("#console [role=option]"), "completions")
        self.expect_none("completions", "#console")
        browser.find("#console-line").clear()
        browser.line("break write master page 1 0x30")
        browser.pane("host")
        browser.find('[data-command="live-split"][data-mode="9"]').click()
        browser.wait_for(browser.find("#notices .stopped").is_displayed, "the notice")
        self.expect_none("stopped")
        browser.line("break off")
        browser.line("continue")
