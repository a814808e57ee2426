#!/usr/bin/env python3
"""Checks rules that the compiler does not check: include arrows and paths, ORB names, unsalted hash tables,
clocks, line ends, timeouts of tests, names of test suites, folders of unit tests, paths in documents.

docs/architecture.md draws the arrows: a folder may include its own headers and those of the folders in its row of
ALLOWED.
"""

import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent

# Folder -> the folders whose headers it may include. An entry that no include needs is a problem too. idl stands for
# the generated headers, which only orb includes; the build makes them, so their includes are not checked.
ALLOWED = {
    "hash": set(),
    "sync": set(),
    "fdn": set(),
    "orb": {"idl"},
    "include/platform": {"orb"},
    "host_defaults": {"fdn", "include/platform", "orb"},
    "include/topo": {"include/platform", "orb"},
    "topomanagementmgr": {"hash", "include/topo", "include/platform", "orb"},
    "topomanagementmgrimpl": {"topomanagementmgr", "include/topo", "include/platform", "orb"},
    "topoevent": {"hash", "topomanagementmgr", "include/topo", "include/platform"},
    "toposvc": {"topoevent", "topomanagementmgrimpl", "include/topo", "include/platform"},
    "agent/process": set(),
    "agent/base": {"agent/process", "orb"},
    "agent/access": {"agent/base", "agent/process", "orb"},
    "agent/metrics": {"orb"},
    "agent/network": {"agent/base", "fdn", "hash", "include/platform", "orb"},
    "agent/formats": {"agent/network", "agent/base", "hash"},
    "agent/store": {"agent/network", "agent/base"},
    "agent/store/sqlite": {"agent/store", "agent/network", "agent/base"},
    "agent/model": {"agent/network", "hash", "include/platform"},
    "agent/changes": {"agent/model", "agent/store", "agent/network", "agent/base", "hash",
                      "include/platform", "orb"},
    "agent/events": {"agent/base", "include/platform"},
    "agent/notifications": {"agent/network", "agent/base", "include/platform", "orb"},
    "agent/northbound": {"agent/model", "agent/network", "agent/base", "host_defaults",
                         "include/platform", "orb"},
    "agent/bundle": {"host_defaults", "include/platform"},
    "agent/host": {"agent/changes", "agent/model", "agent/network", "agent/northbound",
                   "agent/notifications", "agent/base", "host_defaults", "include/platform", "orb"},
    "agent/console": {"agent/changes", "agent/formats", "agent/base",
                      "include/platform", "orb"},
    "agent": {"agent/access", "agent/console", "agent/host", "agent/bundle", "agent/northbound",
              "agent/notifications", "agent/events", "agent/changes", "agent/model", "agent/store",
              "agent/store/sqlite", "agent/formats", "agent/metrics", "agent/network", "agent/base",
              "agent/process",
              "orb"},
    "client/base": set(),
    "client/output/Format.h": set(),
    "client/commandline": {"client/base", "client/output/Format.h"},
    "client/agent": {"client/base", "orb"},
    "client/output": {"client/base", "client/agent", "client/output/Format.h", "hash", "orb"},
    "client/watch": {"client/base", "client/agent", "client/output", "client/output/Format.h", "hash",
                     "orb"},
    "client/commands": {"client/base", "client/commandline", "client/agent", "client/output",
                        "client/watch", "orb"},
    "client": {"client/base", "client/commandline", "client/agent", "client/output", "client/commands", "orb"},
    "conformance/shared": {"orb"},
    "conformance/probe": {"conformance/shared", "include/platform", "orb"},
    "conformance": {"conformance/shared", "client/agent", "client/base", "orb"},
}

USED_BY_ALL = {"sync"}

# How an include path begins -> the folder it leads to.
PREFIXES = [
    ("hash/", "hash"),
    ("sync/", "sync"),
    ("fdn/", "fdn"),
    ("host_defaults/", "host_defaults"),
    ("platform/", "include/platform"),
    ("topo/", "include/topo"),
    ("orb/", "orb"),
    ("topomanagementmgr/", "topomanagementmgr"),
    ("topomanagementmgrimpl/", "topomanagementmgrimpl"),
    ("topoevent/", "topoevent"),
    ("toposvc/", "toposvc"),
    ("agent/process/", "agent/process"),
    ("agent/base/", "agent/base"),
    ("agent/access/", "agent/access"),
    ("agent/metrics/", "agent/metrics"),
    ("agent/network/", "agent/network"),
    ("agent/formats/", "agent/formats"),
    ("agent/store/sqlite/", "agent/store/sqlite"),
    ("agent/store/", "agent/store"),
    ("agent/model/", "agent/model"),
    ("agent/changes/", "agent/changes"),
    ("agent/events/", "agent/events"),
    ("agent/notifications/", "agent/notifications"),
    ("agent/northbound/", "agent/northbound"),
    ("agent/bundle/", "agent/bundle"),
    ("agent/host/", "agent/host"),
    ("agent/console/", "agent/console"),
    ("agent/", "agent"),
    ("client/output/Format.h", "client/output/Format.h"),
    ("client/base/", "client/base"),
    ("client/commandline/", "client/commandline"),
    ("client/agent/", "client/agent"),
    ("client/output/", "client/output"),
    ("client/watch/", "client/watch"),
    ("client/commands/", "client/commands"),
    ("client/", "client"),
    ("conformance/shared/", "conformance/shared"),
    ("conformance/probe/", "conformance/probe"),
    ("conformance/", "conformance"),
]

ORB_NAME = re.compile(r"(?<![A-Za-z0-9_])(?:-D)?TAO_|ACE_TAO|(?<![A-Za-z])(?:lib)?omni", re.IGNORECASE)
# Documents, packages and examples name the ORBs for users; this script names them to find them.
ORB_NAMES_ALLOWED = ("orb/", "cmake/", "docs/", "examples/", "README.md", "scripts/packages.txt",
                     "scripts/check_tree.py")
ADDED_TEST = re.compile(r"add_test\(\s*NAME\s+(\S+)")
# Keys that come from outside need a salted table. Pointers and the agent's own object keys do not.
PLAIN_TABLE = re.compile(r"std::unordered_(?:map|set)<(?!(?:const )?[\w:]+\*)")
PLAIN_TABLES_ALLOWED = ("hash/", "tests/", "bench/", "agent/northbound/IteratorRegistry.h")
# Timeouts use the steady clock, so that a step of the time of day neither ends nor prolongs them. These files use the
# time of day as a time stamp, as a number that rises over restarts, or because the ORB's deadlines are times of day.
TIME_OF_DAY = re.compile(r"system_clock|CLOCK_REALTIME|gettimeofday|(?<![\w.>])(?:std::)?time\((?:nullptr|NULL|0|&)")
TIME_OF_DAY_ALLOWED = (
    "agent/Agent.cpp", "agent/OptionChecks.cpp", "agent/access/AuditLog.", "agent/notifications/Notifier.h",
    "agent/notifications/StructuredEvents.", "agent/store/sqlite/SqliteStore.cpp", "client/watch/EventLines.h",
    "client/watch/Watch.cpp", "orb/omniorb/incoming/channel.", "orb/omniorb/incoming/connection.cpp",
    "topomanagementmgr/FileStamp.h")
TEST_DEFINITION = re.compile(
    r"^[ \t]*(?:TEST|TEST_F|TEST_P|TYPED_TEST|TYPED_TEST_P)\(\s*(\w+)\s*,", re.MULTILINE)
# Only one of these folders is built, so two of them may have the same suite.
ORB_TESTS = re.compile(r"^orb/\w+/tests$")
# A path in backticks; a link to a file of the repository.
NAMED_PATH = re.compile(r"`([\w./-]+(?:/|\.(?:h|cpp|idl|md|py|sh|txt)))`")
LINK = re.compile(r"\]\((?!https?:)([^)#]+)")
TEXT = {".supp", ".h", ".cpp", ".idl", ".py", ".sh", ".md", ".json", ".cmake", ".txt", ".map", ".hh", ""}


def tracked():
    listing = subprocess.run(
        ["git", "ls-files", "--cached", "--others", "--exclude-standard"],
        cwd=ROOT, capture_output=True, text=True, check=True).stdout
    return [name for name in listing.splitlines() if (ROOT / name).is_file()]


def folder_of(name):
    """The most specific folder with a rule, or None."""
    matches = [folder for folder in ALLOWED if name.startswith(folder + "/")]
    return max(matches, key=len) if matches else None


def target_of(include):
    for prefix, folder in PREFIXES:
        if include.startswith(prefix):
            return folder
    return None


def includes_of(text):
    """The folder of each include of a file, with the number of the line."""
    for number, line in enumerate(text.splitlines(), 1):
        match = re.match(r'\s*#\s*include\s+"([^"]+)"', line)
        target = target_of(match.group(1)) if match else None
        if target:
            yield number, target


def include_problems(name, text):
    folder = folder_of(name)
    if folder is None:
        return
    allowed = ALLOWED[folder] | USED_BY_ALL | {folder}
    for number, target in includes_of(text):
        if target not in allowed:
            yield f"{name}:{number}: {folder} may not include {target}"


def unused_arrow_problems(names):
    used = {folder: set() for folder in ALLOWED}
    for name in names:
        folder = folder_of(name)
        if folder and name.endswith((".h", ".cpp")):
            used[folder].update(target for _, target in includes_of((ROOT / name).read_text(encoding="utf-8")))
    for folder, targets in ALLOWED.items():
        for target in sorted(targets - used[folder] - {"idl"}):
            yield f"scripts/check_tree.py: {folder} includes nothing of {target}"


def relative_include_problems(name, text):
    """A quoted include begins at the root of the repository. The layers of an ORB include their neighbours, and so
    does the sample host, which is a project of its own."""
    if name.startswith(("orb/", "examples/host/")):
        return
    for number, line in enumerate(text.splitlines(), 1):
        match = re.match(r'\s*#\s*include\s+"([^"]+)"', line)
        if match and not (ROOT / match.group(1)).is_file() and ((ROOT / name).parent / match.group(1)).is_file():
            yield f"{name}:{number}: an include that does not begin at the root of the repository"


def orb_name_problems(name, text):
    if name.startswith(ORB_NAMES_ALLOWED):
        return
    for number, line in enumerate(text.splitlines(), 1):
        if ORB_NAME.search(line):
            yield f"{name}:{number}: an ORB's name outside orb/, cmake/ and docs/"


def plain_table_problems(name, text):
    if name.startswith(PLAIN_TABLES_ALLOWED):
        return
    for number, line in enumerate(text.splitlines(), 1):
        if PLAIN_TABLE.search(line):
            yield f"{name}:{number}: an unsalted hash table; see hash/SaltedHash.h"


def clock_problems(name, text):
    if folder_of(name) is None or "/tests/" in name or name.startswith(TIME_OF_DAY_ALLOWED):
        return
    for number, line in enumerate(text.splitlines(), 1):
        if TIME_OF_DAY.search(line):
            yield f"{name}:{number}: the time of day; see TIME_OF_DAY_ALLOWED in scripts/check_tree.py"


def line_end_problems(name, text):
    if text and not text.endswith("\n"):
        yield f"{name}: does not end with a newline"
    if "\r" in text:
        yield f"{name}: has carriage returns"


def test_problems(name, text):
    """topo_tests gives every test a timeout; gtest_discover_tests and add_test do not."""
    if not name.endswith("CMakeLists.txt"):
        return
    if "gtest_discover_tests(" in text:
        yield f"{name}: registers tests without topo_tests"
    for test in ADDED_TEST.findall(text):
        if not re.search(rf"set_tests_properties\({re.escape(test)}\s[^)]*\bTIMEOUT\b", text):
            yield f"{name}: the test {test} has no timeout"


def suite_problems(names):
    """A suite belongs to one folder, so that a test's name says where to find it."""
    folder_of_suite = {}
    for name in names:
        if not name.endswith(".cpp"):
            continue
        folder = ORB_TESTS.sub("orb/*/tests", name.rpartition("/")[0])
        for suite in sorted(set(TEST_DEFINITION.findall((ROOT / name).read_text(encoding="utf-8")))):
            first = folder_of_suite.setdefault(suite, folder)
            if folder != first:
                yield f"{name}: {first} has a test suite {suite} too"


def mirror_problems(names):
    """A folder of tests/unit has the path of the tested folder; support/ has what its tests share."""
    folders = {name.rpartition("/")[0] for name in names if name.startswith("tests/unit/") and name.endswith(".cpp")}
    for folder in sorted(folders):
        source = folder.removeprefix("tests/unit/")
        if not (ROOT / source).is_dir() and not source.endswith("/support"):
            yield f"{folder}: there is no folder {source}"


def link_problems(name, text):
    for link in LINK.findall(text):
        if not (ROOT / name).parent.joinpath(link).exists():
            yield f"{name}: links to {link}, which does not exist"


def path_problems(name, text, names):
    """docs/architecture.md names a file by its path, or by its name alone after its folder."""
    files = {path.rpartition("/")[2] for path in names}
    for path in NAMED_PATH.findall(text):
        if not (ROOT / path).exists() and not (ROOT / "tests" / path).exists() and path not in files:
            yield f"{name}: names {path}, which does not exist"


def document_problems(names):
    for name in names:
        if name == "README.md" or name.startswith("docs/") and name.endswith(".md"):
            text = (ROOT / name).read_text(encoding="utf-8")
            yield from link_problems(name, text)
            if name == "docs/architecture.md":
                yield from path_problems(name, text, names)


def problems():
    yield from suite_problems(tracked())
    yield from mirror_problems(tracked())
    yield from document_problems(tracked())
    yield from unused_arrow_problems(tracked())
    for name in tracked():
        path = ROOT / name
        if path.suffix not in TEXT:
            continue
        text = path.read_text(encoding="utf-8")
        yield from line_end_problems(name, text)
        if path.suffix in {".h", ".cpp"}:
            yield from include_problems(name, text)
            yield from relative_include_problems(name, text)
            yield from plain_table_problems(name, text)
            yield from clock_problems(name, text)
        yield from orb_name_problems(name, text)
        yield from test_problems(name, text)


def main():
    found = list(problems())
    for problem in found:
        print(problem, file=sys.stderr)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
