"""A browser at the page."""

import base64
import io
import time
from typing import Any, Callable

from PIL import Image
from selenium import webdriver
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.remote.webelement import WebElement

LIMIT = 30  # seconds until something must have happened: generous, for a machine that is busy

# The page's own sockets are kept where a test can close one; what the page says waits while the
# test holds it. Of the pictures it gets five a second, always the latest: drawing all of them takes
# a processor that has no help most of its time.
KEEP_SOCKETS = """
window.sockets = [];
window.held = null;
window.WebSocket = class extends WebSocket {
  #take = null;
  #latest = null;
  constructor(place) {
    super(place);
    window.sockets.push(this);
    if (!this.url.endsWith("/monitor")) return;
    this.addEventListener("message", (event) => {
      if (!this.#latest) setTimeout(() => this.#show(), 200);
      this.#latest = event;
    });
  }
  #show() {
    const event = this.#latest;
    this.#latest = null;
    if (this.readyState === WebSocket.OPEN) this.#take?.(event);
  }
  get onmessage() { return this.url.endsWith("/monitor") ? this.#take : super.onmessage; }
  set onmessage(take) {
    if (this.url.endsWith("/monitor")) this.#take = take;
    else super.onmessage = take;
  }
  send(text) {
    if (window.held) window.held.push(() => super.send(text));
    else super.send(text);
  }
};
"""

# The picture with what the page says of it: both are of one moment, as nothing runs in between.
READ_CANVAS = """
const canvas = document.querySelector("#monitor canvas");
const { width, height } = canvas;
const copy = new OffscreenCanvas(width, height).getContext("2d", { willReadFrequently: true });
copy.drawImage(canvas, 0, 0);
const bytes = copy.getImageData(0, 0, width, height).data;
let text = "";
for (let at = 0; at < bytes.length; at += 32768) {
  text += String.fromCharCode(...bytes.subarray(at, at + 32768));
}
const time = document.querySelector("#readings dd").textContent;
return { width, height, time, bytes: btoa(text) };
"""


COUNT_WINDOWS = """
const all = [...document.querySelectorAll(".windows button")].map((one) => one.style);
const top = all.reduce((one, other) => (Number(other.zIndex) > Number(one.zIndex) ? other : one),
  { zIndex: 0 });
const near = (one, what) => Math.abs(parseFloat(one[what]) - parseFloat(top[what])) < 2;
return all.filter((one) => near(one, "width") && near(one, "height")).length;
"""


class Browser:
    """Headless Chromium with one window or more."""

    def __init__(self) -> None:
        options = Options()
        options.binary_location = "/usr/bin/chromium"
        for argument in (
                "--headless=new", "--no-sandbox", "--disable-dev-shm-usage", "--disable-gpu",
                "--force-device-scale-factor=1", "--window-size=1440,900", "--no-first-run",
                "--disable-background-networking", "--disable-component-update",
                "--disable-background-timer-throttling", "--disable-renderer-backgrounding",
                "--disable-backgrounding-occluded-windows"):
            options.add_argument(argument)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        self.driver = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)
        self.driver.set_script_timeout(LIMIT)
        self.command("Page.addScriptToEvaluateOnNewDocument", source=KEEP_SOCKETS)

    def close(self) -> None:
        self.driver.quit()

    def command(self, name: str, **parameters: Any) -> dict:
        """A command of the browser's debugging protocol."""
        return self.driver.execute_cdp_cmd(name, parameters)

    def open(self, url: str) -> None:
        """Opens the page, and waits until its panes are there."""
        self.driver.get(url)
        self.wait_for(lambda: self.text("#link") == "connected", "a connection")

    def size(self, width: int, height: int) -> None:
        self.command("Emulation.setDeviceMetricsOverride", width=width, height=height,
                     deviceScaleFactor=1, mobile=False)

    def theme(self, name: str) -> None:
        """light or dark, as the system would have it."""
        self.command("Emulation.setEmulatedMedia",
                     features=[{"name": "prefers-color-scheme", "value": name}])

    def reset(self) -> None:
        """As it was at first, without what pages have kept."""
        self.driver.get("about:blank")
        self.command("Emulation.clearDeviceMetricsOverride")
        self.theme("light")
        self.complaints()

    # ---- What is there ----------------------------------------------------------------------

    def run(self, script: str, *arguments: Any) -> Any:
        return self.driver.execute_script(script, *arguments)

    def find(self, selector: str) -> WebElement:
        return self.driver.find_element(By.CSS_SELECTOR, selector)

    def all(self, selector: str) -> list[WebElement]:
        return self.driver.find_elements(By.CSS_SELECTOR, selector)

    def text(self, selector: str) -> str:
        """All of its text, seen or not."""
        return self.run("return document.querySelector(arguments[0])?.textContent ?? ''", selector)

    def button(self, text: str, within: str = "body") -> WebElement:
        found = self.run(
            "return [...document.querySelectorAll(`${arguments[0]} button`)]"
            ".find((one) => one.textContent.trim() === arguments[1])", within, text)
        if found is None:
            raise AssertionError(f"no button {text!r} in {within}")
        return found

    def pane(self, name: str) -> None:
        """Brings a pane to the front where the page has tabs."""
        tab = self.find(f'[aria-controls="{name}"]')
        if tab.is_displayed():
            tab.click()

    def canvas(self) -> tuple[Image.Image, int]:
        """The monitor's picture, and its time in milliseconds."""
        read = self.run(READ_CANVAS)
        picture = Image.frombytes("RGBA", (read["width"], read["height"]),
                                  base64.b64decode(read["bytes"]))
        hours, minutes, seconds = read["time"].split(":")
        whole, thousandths = seconds.split(".")
        minutes = 60 * int(hours) + int(minutes)
        return picture.convert("RGB"), 1000 * (60 * minutes + int(whole)) + int(thousandths)

    def screenshot(self) -> Image.Image:
        return Image.open(io.BytesIO(self.driver.get_screenshot_as_png())).convert("RGB")

    def complaints(self) -> list[str]:
        """What the browser's console has said of errors since it was last asked."""
        return [entry["message"] for entry in self.driver.get_log("browser")
                if entry["level"] in ("WARNING", "SEVERE")]

    # ---- Waiting and doing ------------------------------------------------------------------

    def wait_for(self, condition: Callable[[], Any], what: str) -> Any:
        """Waits until the condition holds, and returns what it gave."""
        deadline = time.monotonic() + LIMIT
        while True:
            found = condition()
            if found:
                return found
            if time.monotonic() > deadline:
                raise AssertionError(f"waited {LIMIT} s for {what}")
            time.sleep(0.05)

    def wait_for_windows(self, count: int) -> None:
        """Waits for so many windows of the topmost one's size: others may lie behind them."""
        self.wait_for(lambda: self.run(COUNT_WINDOWS) == count, f"{count} windows")

    def line(self, text: str) -> str:
        """Types a line into the console; its answer."""
        before = len(self.all("#console article.entry:not(.other)"))
        self.pane("console")
        line = self.find("#console-line")
        line.clear()
        line.send_keys(text)
        line.send_keys(Keys.ESCAPE, Keys.ENTER)
        entry = self.wait_for(
            lambda: self.run(
                "const all = document.querySelectorAll('#console article.entry:not(.other)');"
                "const one = all[arguments[0]];"
                "return one && /done|unmet|refused|lost/.test(one.className) ? one : null",
                before), f"the answer to {text!r}")
        return self.run(
            "const [{ classList, className }] = arguments;"
            "const text = arguments[0].querySelector('pre')?.textContent ?? '';"
            "return classList.contains('done') ? text : `${className}: ${text}`", entry)
