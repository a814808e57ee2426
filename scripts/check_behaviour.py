#!/usr/bin/env python3
"""Checks that every test named in docs/behaviour.md and docs/security.md exists.

The last cell of each table row names the tests of the behaviour as `Suite.Name`; `Suite.*` names all tests of a suite.
The name of a typed test has no type. A test with parameters may have the prefix of its instantiation and the suffix `/*`.
"""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
DOCUMENTS = ("docs/behaviour.md", "docs/security.md")
FOLDERS = ("tests", "orb")

DEFINITION = re.compile(
    r"^[ \t]*(?:TEST|TEST_F|TEST_P|TYPED_TEST|TYPED_TEST_P)\(\s*(\w+)\s*,\s*(\w+)\s*\)", re.MULTILINE)
CELL_END = re.compile(r"(?<!\\)\|")  # "\|" is a bar within a cell
NAMED = re.compile(r"`(?:\w+/)?([A-Z]\w*)\.(\w+|\*)(?:/\*)?`")
RULE = re.compile(r"\|[\s|:-]+")  # the line between a table's head and its rows


def defined_tests():
    """The names of the tests of each suite."""
    tests = {}
    for path in (path for folder in FOLDERS for path in (ROOT / folder).rglob("*.cpp")):
        for suite, name in DEFINITION.findall(path.read_text(encoding="utf-8")):
            tests.setdefault(suite, set()).update((name, "*"))
    return tests


def rows(text):
    """The rows of all tables without their heads, each as line number and last cell."""
    lines = text.splitlines()
    for number, line in enumerate(lines, 1):
        is_head = number < len(lines) and RULE.fullmatch(lines[number])
        if line.startswith("|") and not RULE.fullmatch(line) and not is_head:
            yield number, CELL_END.split(line.strip())[-2]


def problems(document, tests):
    found = list(rows((ROOT / document).read_text(encoding="utf-8")))
    if not found:
        yield f"{document}: has no table"
    for number, cell in found:
        named = NAMED.findall(cell)
        if not named:
            yield f"{document}:{number}: names no test"
        for suite, name in named:
            if name not in tests.get(suite, ()):
                yield f"{document}:{number}: there is no test {suite}.{name}"


def main():
    tests = defined_tests()
    found = [problem for document in DOCUMENTS for problem in problems(document, tests)]
    for problem in found:
        print(problem, file=sys.stderr)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
