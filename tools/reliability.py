# SPDX-License-Identifier: Apache-2.0
"""Writes docs/reliability.md from what the tests said about the faults that they play.

usage: reliability.py [--check] BUILD_DIRECTORY

Reads the reports that the library's tests leave in BUILD_DIRECTORY when CTest runs them.
With --check nothing is written: it fails when the document is not up to date.
"""

import argparse
import pathlib
import re
import subprocess
import sys
import textwrap
import xml.etree.ElementTree

DOCUMENT = pathlib.Path(__file__).resolve().parent.parent / "docs" / "reliability.md"
PROGRAMS = ("provider_entry_point_tests", "provider_tests", "mapper_tests",
            "provider_library_tests")
EXCEPTIONS = """
## When things happen at once

The library calls out at every step, and has one lock for its table of active devices. So the order
of all that can be observed is decided at those calls, and all orders can be tried:
`tests/interleavings/` runs the library's own code on real threads, one at a time, and chooses at
every call who goes on. Every two operations are tried in every order by the tests (but for 19 of
235 pairs, whose orders are too many: all with one interruption, and random ones), every three by
`make interleavings` as far as that goes, which says of how many it tried all orders with so many
interruptions and random ones; the order of each case below is what it found, and
`interleavings replay SCENARIO ORDER` shows it step by step. No order ends in a deadlock, calls out
under the lock, gives an answer twice or never, leaves a thread, or calls what nobody holds.

What comes of it is what comes of some order of the whole operations, or one of the following. The
required behaviour brings them along: the library has no lock around more than its table, so that a
provider or a framework that hangs hangs nobody else.

"""
INTRODUCTION = """\
# Reliability

What the library does when something around it fails. Every call that leaves the library is here:
each row is a fault that a test plays, and what that test holds the library to. `make reliability`
writes this table from the tests' own output, and a test fails while it is not up to date.

Faults that the library answers for by itself come back as a false, a null or a camera status, with
a line in the log. A transport failure in the middle of `getCameraIdList` or `getVendorTags` ends the
process on purpose, and the platform starts it afresh. A transport failure that goes back to the
caller does so as long as the caller is in the same process: the stub that would have to send one to
another process ends its own instead (`DeviceTest` and `Recovery*` hold that with real processes).
Errors of the standard library, for want of memory or threads, are not caught.

| what is called | fault | what happens | test |
|---|---|---|---|
"""


def properties(case):
    return {item.get("name"): item.get("value") for item in case.iter("property")}


def plain_name(case):
    """The test as its source names it: without what its parameters add."""
    suite = re.sub(r"^[^/]+/(?=[A-Z])", "", case.get("classname"))
    return f"{suite.split('/')[0]}.{case.get('name').split('/')[0]}"


def place(case):
    """Where GoogleTest runs a case: those of death tests first, those with a parameter last."""
    return ("DeathTest" not in case.get("classname"), "value_param" in case.keys(),
            case.get("file"), int(case.get("line")), case.get("name"))


def cases(build):
    """The newest report of every test. An older one than the program is of a test that is no more."""
    for name in PROGRAMS:
        built = (build / "bin" / name).stat().st_mtime
        found = []
        for report in (build / "reports" / name).rglob("*.xml"):
            if report.stat().st_mtime >= built:
                found += xml.etree.ElementTree.parse(report).iter("testcase")
        yield from sorted(found, key=place)


def rows(build):
    """Rows (call, fault, outcome, test), each once, the faults of one call together."""
    found = {}
    for case in cases(build):
        said = properties(case)
        if "fault" not in said:
            continue
        if case.get("result") != "completed":
            sys.exit(f"{plain_name(case)} did not run, but has a fault to tell of")
        row = (said["call"], said["fault"], said["outcome"], f"`{plain_name(case)}`")
        found.setdefault(said["call"], {})[row] = None
    return [row for call in found.values() for row in call]


def chapter(build):
    """The exceptions as the explorer found them, in lines as long as those of other documents."""
    ended = subprocess.run([build / "bin" / "interleavings", "chapter"], stdout=subprocess.PIPE,
                           check=True, text=True)
    lines = []
    for line in ended.stdout.rstrip().split("\n"):
        indent = "   " if re.match(r"\d+\. ", line) else ""
        lines += textwrap.wrap(line, 100, subsequent_indent=indent, break_on_hyphens=False) or [""]
    return EXCEPTIONS + "\n".join(lines) + "\n"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--check", action="store_true")
    parser.add_argument("build", type=pathlib.Path, metavar="BUILD_DIRECTORY")
    arguments = parser.parse_args()
    table = [f"| {' | '.join(row)} |\n" for row in rows(arguments.build)]
    text = INTRODUCTION + "".join(table) + chapter(arguments.build)
    if not arguments.check:
        DOCUMENT.write_text(text, encoding="utf-8")
        print(f"{len(table)} faults: {DOCUMENT}")
    elif not DOCUMENT.exists() or DOCUMENT.read_text(encoding="utf-8") != text:
        sys.exit("docs/reliability.md is not what the tests say: run make reliability")


if __name__ == "__main__":
    main()
