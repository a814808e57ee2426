#!/usr/bin/env python3
"""Checks that docs/embedding.md quotes files that the tests compile, and that the sample host is short.

A line that has only a path in backticks and a colon names a file of examples/host, of examples/timeout, or of the code
that the sample host uses. The indented block after it must be a run of lines of that file; the common indentation of
either may differ.
"""

import pathlib
import re
import sys
import textwrap

ROOT = pathlib.Path(__file__).resolve().parent.parent
DOCUMENT = "docs/embedding.md"
FEWEST = 10  # quotations; a document without any would pass otherwise
SAMPLE = "examples/host"
MOST_LINES = 500  # of the sample host for all ORBs: a reader should be able to read all of it

QUOTED_FILE = re.compile(r"^`((?:examples/(?:host|timeout)|host_defaults|orb)/[\w./]+)`:$")


def quotations(lines):
    """The quotations: line number, file, quoted lines."""
    for number, line in enumerate(lines, 1):
        match = QUOTED_FILE.match(line)
        if match is None:
            continue
        quoted = []
        for following in lines[number + 1:]:
            if following and not following.startswith("    "):
                break
            quoted.append(following)
        yield number, match.group(1), textwrap.dedent("\n".join(quoted)).strip("\n").splitlines()


def contains(text, quoted):
    lines = text.splitlines()
    for start in range(len(lines) - len(quoted) + 1):
        if textwrap.dedent("\n".join(lines[start:start + len(quoted)])).splitlines() == quoted:
            return True
    return False


def problems(text):
    found = list(quotations(text.splitlines()))
    if len(found) < FEWEST:
        yield f"{DOCUMENT}: has only {len(found)} quotations"
    for number, name, quoted in found:
        path = ROOT / name
        if not quoted:
            yield f"{DOCUMENT}:{number}: quotes nothing"
        elif not path.is_file():
            yield f"{DOCUMENT}:{number}: there is no {name}"
        elif not contains(path.read_text(encoding="utf-8"), quoted):
            yield f"{DOCUMENT}:{number}: {name} does not contain the quoted lines"


def length_problems():
    files = [file for ending in ("*.cpp", "*.h") for file in (ROOT / SAMPLE).rglob(ending)]
    lines = sum(len(file.read_text(encoding="utf-8").splitlines()) for file in files)
    if not 0 < lines <= MOST_LINES:
        yield f"{SAMPLE}: has {lines} lines, and may have {MOST_LINES}"


def main():
    found = list(problems((ROOT / DOCUMENT).read_text(encoding="utf-8"))) + list(length_problems())
    for problem in found:
        print(problem, file=sys.stderr)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
