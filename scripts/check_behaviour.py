#!/usr/bin/env python3
"""Checks that every test named in docs/behaviour.md exists.

The last cell of each table row names the tests of the behaviour as `Suite.Name`. The name of a typed test has no type.
"""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
DOCUMENT = "docs/behaviour.md"

DEFINITION = re.compile(
    r"^[ \t]*(?:TEST|TEST_F|TEST_P|TYPED_TEST|TYPED_TEST_P)\(\s*(\w+)\s*,\s*(\w+)\s*\)", re.MULTILINE)
CELL_END = re.compile(r"(?<!\\)\|")  # "\|" is a bar within a cell
NAMED = re.compile(r"`(\w+\.\w+)`")
RULE = re.compile(r"\|[\s|:-]+")  # the line between a table's head and its rows


def defined_tests():
    tests = set()
    for path in (ROOT / "tests").rglob("*.cpp"):
        text = path.read_text(encoding="utf-8")
        tests.update(f"{suite}.{name}" for suite, name in DEFINITION.findall(text))
    return tests


def rows(text):
    """The rows of all tables without their heads, each as line number and last cell."""
    lines = text.splitlines()
    for number, line in enumerate(lines, 1):
        is_head = number < len(lines) and RULE.fullmatch(lines[number])
        if line.startswith("|") and not RULE.fullmatch(line) and not is_head:
            yield number, CELL_END.split(line.strip())[-2]


def problems(text, tests):
    found = list(rows(text))
    if not found:
        yield f"{DOCUMENT}: has no table"
    for number, cell in found:
        named = NAMED.findall(cell)
        if not named:
            yield f"{DOCUMENT}:{number}: names no test"
        for test in named:
            if test not in tests:
                yield f"{DOCUMENT}:{number}: there is no test {test}"


def main():
    found = list(problems((ROOT / DOCUMENT).read_text(encoding="utf-8"), defined_tests()))
    for problem in found:
        print(problem, file=sys.stderr)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
