"""What a run of the tests of the page has for all of them, and its last line, which counts them."""

from typing import Iterator

import pytest

from .browser import Browser


@pytest.fixture(scope="session")
def shared_browser() -> Iterator[Browser]:
    """One browser for all tests of a process: starting it takes longer than most of them."""
    browser = Browser()
    yield browser
    browser.close()


def pytest_unconfigure(config: pytest.Config) -> None:
    reporter = config.pluginmanager.get_plugin("terminalreporter")
    if reporter is None or hasattr(config, "workerinput"):
        return
    passed, failed, errors = (
        {report.nodeid for report in reporter.stats.get(what, ())}
        for what in ("passed", "failed", "error"))
    failed |= errors
    for report in reporter.stats.get("passed", ()):
        print(report.capstdout, end="")  # figures
    print(f"Page in Chromium: {len(passed - failed)} tests passed, {len(failed)} failed.")
