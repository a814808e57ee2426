#!/usr/bin/env python3
"""tidy.py BUILD: runs clang-tidy in parallel on every compiled source file of agent, client and module.

Tests and benchmarks are excluded: the macros of their frameworks take most of an hour and give few findings.

A passed file is cached by a digest of the file, all headers and all settings, so a second run takes seconds.
"""

import concurrent.futures
import hashlib
import json
import os
import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent

# The static analyzer examines at most this number of program states of a function. With its default of 225,000 it takes
# two thirds of the time of all checks.
ANALYZER_BUDGET = [f"--extra-arg={word}" for word in ("-Xclang", "-analyzer-config", "-Xclang", "max-nodes=20000")]


def commands_for_clang(build, folder):
    """Removes options that clang does not know from the build's compile commands; writes and returns the commands."""
    commands = json.loads((build / "compile_commands.json").read_text())
    for command in commands:
        # -Wthread-safety: the analysis of sync/ThreadAnnotations.h.
        command["command"] = (command["command"].replace(" -fno-gnu-unique", "")
                              .replace(" -c ", " -Wthread-safety -c "))
    (folder / "compile_commands.json").write_text(json.dumps(commands))
    return commands


def our_sources(build, commands):
    files = {pathlib.Path(command["file"]) for command in commands}
    return sorted(f for f in files
                  if ROOT in f.parents and build not in f.parents
                  and not {"tests", "bench"} & set(f.relative_to(ROOT).parts))


def context_digest():
    """Digest of all headers and settings: after a change in one of them every file is checked again."""
    digest = hashlib.sha256()
    for pattern in ("*.h", "*.idl", "CMakeLists.txt", "*.cmake"):
        for path in sorted(ROOT.rglob(pattern)):
            if "build" not in path.relative_to(ROOT).parts:
                digest.update(path.read_bytes())
    digest.update((ROOT / ".clang-tidy").read_bytes())
    return digest


def check(passed, context, source):
    digest = context.copy()
    digest.update(source.read_bytes())
    mark = passed / digest.hexdigest()
    if mark.exists():
        return True, ""
    result = subprocess.run(
        ["clang-tidy", "--quiet", "-p", str(passed), *ANALYZER_BUDGET, str(source)],
        capture_output=True, text=True, check=False)
    if result.returncode == 0:
        mark.touch()
    return result.returncode == 0, result.stdout + result.stderr


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    passed = build / "tidy"
    passed.mkdir(exist_ok=True)
    context = context_digest()
    sources = our_sources(build, commands_for_clang(build, passed))
    failed = 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        results = pool.map(lambda source: check(passed, context, source), sources)
        for source, (fine, output) in zip(sources, results):
            if not fine:
                failed += 1
                print(output.strip())
                print(f"tidy: {source.relative_to(ROOT)} has findings")
    print(f"tidy: {len(sources)} files, {failed} with findings")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
