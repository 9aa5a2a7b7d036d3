#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Checks the links of Markdown files: every file and every heading that one names must exist.

usage: check-links.py FILE.md...

Links to other machines are not followed. Prints one line for each link that leads nowhere; ends
with 1 if there is one, with 2 if it was called wrongly.
"""

import re
import sys
from pathlib import Path
from urllib.parse import unquote

# From the end of its text, which may have begun on the line before.
LINK = re.compile(r"\]\(\s*<?([^)\s>]+)>?(?:\s+\"[^\"]*\")?\s*\)")
DEFINITION = re.compile(r"^ {0,3}\[[^\]]+\]:\s+<?([^\s>]+)>?")
HEADING = re.compile(r"^ {0,3}(#{1,6})\s+(.*?)\s*#*\s*$")
FENCE = re.compile(r"^ {0,3}(```+|~~~+)")
ELSEWHERE = re.compile(r"^[a-z][a-z0-9+.-]*:", re.IGNORECASE)


def prose(path):
    """The lines of a file outside code blocks, with their numbers."""
    fence = None
    before_is_blank = True
    in_code = False
    in_list = False
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        mark = FENCE.match(line)
        if fence:
            if mark and line.strip().startswith(fence) and not line.strip().strip(fence[0]):
                fence = None
            continue
        if mark:
            fence = mark.group(1)
            continue
        if re.match(r"^ {0,3}([-*+]|\d+[.)])\s", line):
            in_list = True
        elif line.strip() and not line.startswith(" "):
            in_list = False
        # Four blanks after an empty line begin a code block; in a list, seven are sure to.
        depth = 7 if in_list else 4
        indented = line.startswith(" " * depth)
        in_code = indented and (in_code or before_is_blank) or (in_code and not line.strip())
        before_is_blank = not line.strip()
        if not in_code:
            yield number, line


def without_code(line):
    """The line with its code spans blanked out."""
    return re.sub(r"(`+)(?:(?!\1).)+?\1(?!`)", "``", line)


def anchors(path, known={}):
    """The names by which the headings of a file can be linked to."""
    if path in known:
        return known[path]
    names = set()
    counts = {}
    for _, line in prose(path):
        heading = HEADING.match(line)
        if heading:
            text = re.sub(r"\[([^\]]*)\]\([^)]*\)", r"\1", heading.group(2))
            name = re.sub(r"[^\w\- ]", "", text.lower()).replace(" ", "-")
            repeats = counts.get(name, 0)
            counts[name] = repeats + 1
            names.add(f"{name}-{repeats}" if repeats else name)
        names.update(re.findall(r"<a (?:id|name)=\"([^\"]+)\"", line))
    known[path] = names
    return names


def targets(path):
    """The links of a file, with the numbers of their lines."""
    for number, line in prose(path):
        text = without_code(line)
        for link in LINK.finditer(text):
            yield number, link.group(1)
        definition = DEFINITION.match(text)
        if definition:
            yield number, definition.group(1)


def complaint(path, target):
    """What is wrong with a link; nothing if it leads somewhere."""
    if ELSEWHERE.match(target):
        return None
    name, _, anchor = target.partition("#")
    file = path if not name else (path.parent / unquote(name))
    if name.startswith("/"):
        return "write it relative to this file"
    if not file.exists():
        return f"there is no {file}"
    if anchor and file.suffix == ".md" and unquote(anchor) not in anchors(file.resolve()):
        return f"{file} has no heading for #{anchor}"
    return None


def main(arguments):
    if not arguments:
        print("check-links.py: name the Markdown files to check", file=sys.stderr)
        return 2
    failed = False
    for argument in arguments:
        path = Path(argument)
        if not path.is_file():
            print(f"check-links.py: there is no file {path}", file=sys.stderr)
            return 2
        for number, target in targets(path):
            problem = complaint(path, target)
            if problem:
                print(f"{path}:{number}: the link {target} leads nowhere: {problem}")
                failed = True
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
