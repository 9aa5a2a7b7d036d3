# SPDX-License-Identifier: Apache-2.0
"""Runs GoogleTest programs and gives what they wrote about themselves.

usage: gtest_programs.py [--launcher COMMAND] [--leave-out FILE] PROGRAM...

Runs each program, whole, behind the launcher. The file names tests to leave out, one pattern a
line, each with its reason behind a "#". A test that skips itself because another one ran before it
in the same process is run again alone.
"""

import argparse
import pathlib
import shlex
import subprocess
import sys
import tempfile
import xml.etree.ElementTree

TIMEOUT_SECONDS = 500


class ProgramFailed(Exception):
    """A test failed, or the program did not end as it should."""


def run_once(program, launcher, test_filter):
    """The test cases of one run, as elements of the program's XML report."""
    with tempfile.TemporaryDirectory() as directory:
        report = pathlib.Path(directory) / "report.xml"
        command = launcher + [str(program), f"--gtest_output=xml:{report}", "--gtest_brief=1"]
        if test_filter:
            command.append(f"--gtest_filter={test_filter}")
        ended = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                               timeout=TIMEOUT_SECONDS, check=False)
        if ended.returncode != 0:
            text = ended.stdout.decode(errors="replace")
            raise ProgramFailed(f"{program} ended with {ended.returncode}:\n{text}")
        return list(xml.etree.ElementTree.parse(report).iter("testcase"))


def full_name(case):
    return f"{case.get('classname')}.{case.get('name')}"


def run(program, launcher=(), left_out=()):
    """The test cases of a program, those of which were run that can be."""
    launcher = list(launcher)
    cases = []
    for case in run_once(program, launcher, "-" + ":".join(left_out) if left_out else ""):
        if case.get("result") == "skipped":
            case = run_once(program, launcher, full_name(case))[0]
        if case.get("status") == "run":
            cases.append(case)
    return cases


def read_patterns(path):
    lines = pathlib.Path(path).read_text(encoding="utf-8").splitlines()
    return [line.split("#")[0].strip() for line in lines if line.split("#")[0].strip()]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--launcher", default="")
    parser.add_argument("--leave-out", metavar="FILE")
    parser.add_argument("programs", nargs="+", metavar="PROGRAM")
    arguments = parser.parse_args()
    left_out = read_patterns(arguments.leave_out) if arguments.leave_out else []
    for program in arguments.programs:
        try:
            cases = run(program, shlex.split(arguments.launcher), left_out)
        except (ProgramFailed, subprocess.TimeoutExpired) as error:
            sys.exit(str(error))
        skipped = sum(case.get("result") == "skipped" for case in cases)
        print(f"{pathlib.Path(program).name}: {len(cases) - skipped} tests, {skipped} skipped",
              flush=True)


if __name__ == "__main__":
    main()
