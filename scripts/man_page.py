#!/usr/bin/env python3
"""man_page.py PROGRAM SECTION VERSION DATE [MORE]: prints the manual page of a program, made from its --help and from that
of its commands. MORE is a file with further sections in the language of man(7).
"""

import pathlib
import re
import subprocess
import sys

TEXT_COLUMN = 30  # where --help begins the texts
BLOCKS = ("Positionals", "Options", "Subcommands")
# NAME:TYPE in [1 - 10]=5, NAME:{a,b}=a, NAME=5, HOST:PORT
VALUE = re.compile(r"^(?P<name>[^={]*?)"
                   r"(?::(?:U?INT|FLOAT|TEXT)(?: in \[(?P<least>\S+) - (?P<most>\S+)\])?|:\{(?P<words>[^}]*)\})?"
                   r"(?:=(?P<default>.*))?$")


class Help:
    """The parts of a --help text."""

    def __init__(self, program, words=()):
        ended = subprocess.run([program, *words, "--help"], capture_output=True, text=True, check=True, timeout=60,
                               stdin=subprocess.DEVNULL)
        self.description = []
        self.usage = ""
        self.footer = []
        self.blocks = {block: [] for block in BLOCKS}
        block = None
        for line in ended.stdout.splitlines():
            if line.startswith("Usage: "):
                self.usage = line.removeprefix("Usage: ")
            elif line.rstrip(":") in BLOCKS:
                block = self.blocks[line.rstrip(":")]
            elif line.startswith("  ") and block is not None:
                self.add(block, line)
            elif line and not self.usage:
                self.description.append(line)
            elif line:
                self.footer.append(line)

    @staticmethod
    def add(block, line):
        if line[:TEXT_COLUMN].strip() == "":
            name, text = block.pop()
            block.append((name, (text + " " + line.strip()).strip()))
            return
        name, _, text = line.strip().partition("  ")
        block.append((name, text.strip()))


def escaped(text):
    """Text that troff prints as it is."""
    text = text.replace("\\", "\\e").replace("-", "\\-").replace("'", "\\(aq").replace("`", "\\(ga").replace("^", "\\(ha")
    text = text.replace("~", "\\(ti")
    return "\\&" + text if text.startswith(".") else text


def sentence(text):
    """The text as a sentence, which other sentences can follow."""
    text = text[:1].upper() + text[1:]
    return text if text.endswith((".", "!", "?")) else text + "."


def tag(name):
    """The names of an option in bold, its value in italics; sentences about the value."""
    names, _, typed = name.partition(" ")
    notes = []
    bare = re.match(r"^([-\w,]+)(\{[^}]*\})?$", names)
    names = bare.group(1) if bare else names
    shown = ", ".join(f"\\fB{escaped(each)}\\fR" for each in names.split(","))
    match = VALUE.match(typed)
    if not match:
        return f"{shown} \\fI{escaped(typed)}\\fR", notes
    if match["name"]:
        shown += f" \\fI{escaped(match['name'].strip())}\\fR"
    if match["least"]:
        notes.append(f"From {match['least']} to {match['most']}.")
    if match["words"]:
        notes.append(f"One of {', '.join(match['words'].split(','))}.")
    if match["default"]:
        notes.append(f"Default: {match['default']}.")
    return shown, notes


def items(block):
    for name, text in block:
        shown, notes = tag(name)
        yield ".TP"
        yield shown
        yield escaped(" ".join([sentence(text), *notes]))


def commands(program, block, before=()):
    """The commands and the commands of groups, with their arguments."""
    for name, _ in block:
        words = (*before, name)
        text = Help(program, words)
        if text.blocks["Subcommands"]:
            yield from commands(program, text.blocks["Subcommands"], words)
            continue
        usage = text.usage.split(" ", 1)[1]
        yield f".SS {escaped(usage)}"
        yield from (escaped(sentence(line)) for line in text.description)
        options = [item for item in text.blocks["Options"] if not item[0].startswith("-h,")]
        yield from items(text.blocks["Positionals"] + options)


def page(path, section, version, date, more):
    program = pathlib.Path(path).name
    text = Help(path)
    summary = text.description[0].removeprefix(program + ": ").rstrip(".")
    yield f'.TH {escaped(program).upper()} {section} "{date}" "topo\\-manager {version}" "Topology manager"'
    yield ".SH NAME"
    yield f"{escaped(program)} \\- {escaped(summary[:1].lower() + summary[1:])}"
    yield ".SH SYNOPSIS"
    yield f"\\fB{escaped(program)}\\fR {escaped(text.usage.partition(' ')[2])}"
    yield ".SH DESCRIPTION"
    for line in (sentence(summary), *text.footer):
        yield escaped(line)
        yield ".br"
    if text.blocks["Positionals"]:
        yield ".SH ARGUMENTS"
        yield from items(text.blocks["Positionals"])
    yield ".SH OPTIONS"
    yield from items(text.blocks["Options"])
    if text.blocks["Subcommands"]:
        yield ".SH COMMANDS"
        yield from commands(path, text.blocks["Subcommands"])
    if more:
        yield pathlib.Path(more).read_text(encoding="utf-8").rstrip("\n")


def main():
    if len(sys.argv) not in (5, 6):
        sys.exit(__doc__)
    more = sys.argv[5] if len(sys.argv) == 6 else ""
    print("\n".join(page(*sys.argv[1:5], more)))


if __name__ == "__main__":
    main()
