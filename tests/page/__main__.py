"""Runs the tests of the page; the last line counts them.

/usr/bin/python3 -m tests.page [NAME...]: a name is a part of a test's, such as monitor.
"""

import sys
import unittest
from pathlib import Path

HERE = Path(__file__).parent


def main() -> int:
    loader = unittest.TestLoader()
    loader.testNamePatterns = [f"*{name}*" for name in sys.argv[1:]] or None
    suite = loader.discover(str(HERE), top_level_dir=str(HERE.parents[1]))
    result = unittest.TextTestRunner(stream=sys.stdout, verbosity=2).run(suite)
    for test, reason in result.skipped:
        print(f"NOT CHECKED: {test.id()}: {reason}")
    # A test whose parts fail is one.
    failed = len({str(getattr(test, "test_case", test))
                  for test, _ in result.failures + result.errors})
    passed = result.testsRun - failed - len(result.skipped)
    print(f"Page in Chromium: {passed} tests passed, {failed} failed.")
    return 0 if result.wasSuccessful() and passed > 0 else 1


sys.exit(main())
