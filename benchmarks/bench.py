#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Measures what every call costs, and writes docs/performance.md from it.

usage: bench.py BUILD_DIRECTORY [DOCS_DIRECTORY]
"""

import sys
from pathlib import Path

from arithmetic import largest_ratio
from document import write
from measure import measure


def main(arguments):
    if len(arguments) not in (1, 2):
        sys.exit("usage: bench.py BUILD_DIRECTORY [DOCS_DIRECTORY]")
    build = Path(arguments[0])
    if not (build / "bin" / "benchmark_timing").exists():
        sys.exit(f"there are no benchmarks in {build}: install libbenchmark-dev and valgrind, "
                 "and build again")
    docs = Path(arguments[1]) if len(arguments) == 2 else Path(__file__).parent.parent / "docs"
    report = measure(build)
    write(report, docs)
    print(f"wrote {docs / 'performance.md'}")
    for entry in report.operations:
        if entry.misses:
            print(f"misses the bar: {entry.title}: {' and '.join(entry.misses)}")
    worst = largest_ratio(report.operations)
    print(f"largest instruction ratio: {worst.instructions.ratio:.2f} ({worst.title})")


if __name__ == "__main__":
    main(sys.argv[1:])
