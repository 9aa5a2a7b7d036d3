# SPDX-License-Identifier: Apache-2.0
"""Runs test programs in a build with --coverage and says what of provider/ and mapper/ they ran.

usage: coverage.py BUILD_DIRECTORY PROGRAM...

Fails while there is a line that no test runs and that tools/coverage-exceptions.txt does not name.
"""

import json
import pathlib
import subprocess
import sys

import gtest_programs

ROOT = pathlib.Path(__file__).resolve().parent.parent
EXCEPTIONS = ROOT / "tools" / "coverage-exceptions.txt"


def measure(build, programs):
    """gcovr's report of each file, after the tests have run."""
    for counters in build.rglob("*.gcda"):
        counters.unlink()
    for program in programs:
        gtest_programs.run(build / "bin" / program)
    report = build / "coverage.json"
    html = build / "coverage" / "index.html"
    html.parent.mkdir(exist_ok=True)
    subprocess.run(["gcovr", "--root", ROOT, "--object-directory", build, "--filter", "provider/",
                    "--filter", "mapper/", "--exclude-throw-branches",
                    "--exclude-unreachable-branches", "--json", report, "--html-details", html,
                    build / "provider", build / "mapper", build / "tests"],
                   cwd=ROOT, check=True)
    print(f"line by line: {html.relative_to(ROOT)}\n")
    return json.loads(report.read_text(encoding="utf-8"))["files"]


def read_exceptions():
    """Reasons by (file, source line without its indentation)."""
    exceptions = {}
    for line in EXCEPTIONS.read_text(encoding="utf-8").splitlines():
        if line and not line.startswith("#"):
            file, text, reason = (part.strip() for part in line.split(" | "))
            exceptions[file, text] = reason
    return exceptions


def share(run, total):
    return f"{run}/{total} ({100 * run / total:.1f} %)" if total else "-"


def main():
    try:
        files = measure(pathlib.Path(sys.argv[1]).resolve(), sys.argv[2:])
    except (gtest_programs.ProgramFailed, subprocess.TimeoutExpired) as error:
        sys.exit(str(error))
    exceptions = read_exceptions()
    named, unnamed, totals = {}, [], [0, 0, 0, 0]
    print(f"{'file':56}{'lines':22}branches")
    for file in files:
        source = (ROOT / file["file"]).read_text(encoding="utf-8").splitlines()
        lines = [line for line in file["lines"] if not line["gcovr/noncode"]]
        branches = [branch for line in lines for branch in line["branches"]]
        counts = [sum(line["count"] > 0 for line in lines), len(lines),
                  sum(branch["count"] > 0 for branch in branches), len(branches)]
        totals = [total + count for total, count in zip(totals, counts)]
        print(f"{file['file']:56}{share(*counts[:2]):22}{share(*counts[2:])}")
        for line in lines:
            if line["count"] > 0:
                continue
            text = source[line["line_number"] - 1].strip()
            if (file["file"], text) in exceptions:
                named[file["file"], text] = exceptions[file["file"], text]
            else:
                unnamed.append(f"{file['file']}:{line['line_number']}: {text}")
    print(f"{'together':56}{share(*totals[:2]):22}{share(*totals[2:])}")

    for (file, text), reason in named.items():
        print(f"\nnot run: {file}: {text}\n    {reason}")
    stale = [f"{file}: {text}" for file, text in exceptions if (file, text) not in named]
    if stale:
        sys.exit(f"\n{EXCEPTIONS.name} names what is run or gone:\n" + "\n".join(stale))
    if unnamed:
        sys.exit(f"\nNo test runs these lines, and {EXCEPTIONS.name} does not say why:\n" +
                 "\n".join(unnamed))


if __name__ == "__main__":
    main()
