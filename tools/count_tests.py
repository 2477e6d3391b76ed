#!/usr/bin/env python3
"""Counts the test cases of one CTest run.

Usage: count_tests.py BUILD_DIRECTORY CTEST_STATUS

Reads ctest.xml, CTest's own report, and test-results/<test>.xml, what each GoogleTest program wrote. Prints three
numbers: passed, failed and skipped test cases. A test without a report of its own counts as one. CTEST_STATUS is 0 if
CTest succeeded; otherwise at least one failure is counted.
"""

import pathlib
import sys
from xml.etree import ElementTree


def count_googletest(report, ctest_passed):
    """Test cases in one GoogleTest report, as (passed, failed, skipped)."""
    root = ElementTree.parse(report).getroot()
    failed = int(root.get("failures", 0)) + int(root.get("errors", 0))
    skipped = int(root.get("disabled", 0)) + sum(int(suite.get("skipped", 0)) for suite in root)
    passed = int(root.get("tests", 0)) - failed - skipped
    # A program may fail after its last test case, for example when a sanitizer finds a leak at exit.
    if not ctest_passed and failed == 0:
        failed = 1
    return passed, failed, skipped


def count_test(case, results):
    """Test cases behind one test of CTest's report, as (passed, failed, skipped)."""
    status = case.get("status")
    if status == "disabled":
        return 0, 0, 1
    if status == "notrun":
        # Left out by its own choice; with any other message, such as a missing program, it is a fault.
        skip = case.find("skipped")
        chosen = skip is not None and skip.get("message", "").startswith("SKIP_")
        return (0, 0, 1) if chosen else (0, 1, 0)
    ctest_passed = status == "run"
    report = results / (case.get("name") + ".xml")
    try:
        return count_googletest(report, ctest_passed)
    except (OSError, ElementTree.ParseError):
        return (1, 0, 0) if ctest_passed and not report.exists() else (0, 1, 0)


def main():
    build = pathlib.Path(sys.argv[1])
    ctest_succeeded = sys.argv[2] == "0"
    try:
        cases = list(ElementTree.parse(build / "ctest.xml").getroot().iter("testcase"))
    except (OSError, ElementTree.ParseError):
        cases = []
    counts = [count_test(case, build / "test-results") for case in cases]
    passed, failed, skipped = (sum(column) for column in zip(*counts)) if counts else (0, 0, 0)
    if failed == 0 and not (ctest_succeeded and cases):
        failed = 1
    print(passed, failed, skipped)


if __name__ == "__main__":
    main()
