#!/usr/bin/env python3
"""tidy.py BUILD: clang-tidy on every source file that ships and that the build compiles, in parallel.

Tests and benchmarks are left out: the macros of their frameworks take most of an hour and say little.

A file that passed is remembered by the content of everything it was checked with, so that a second
run takes seconds.
"""

import concurrent.futures
import hashlib
import json
import os
import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent


def commands_for_clang(build, folder):
    """The build's compile commands without what clang does not know; returns them, and writes them."""
    commands = json.loads((build / "compile_commands.json").read_text())
    for command in commands:
        command["command"] = command["command"].replace(" -fno-gnu-unique", "")
    (folder / "compile_commands.json").write_text(json.dumps(commands))
    return commands


def our_sources(build, commands):
    files = {pathlib.Path(command["file"]) for command in commands}
    left_out = (build, ROOT / "tests", ROOT / "bench")
    return sorted(f for f in files
                  if ROOT in f.parents and not any(folder in f.parents for folder in left_out))


def context_digest():
    """Of all headers and settings: a change in any of them checks every file again."""
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
        ["clang-tidy", "--quiet", "-p", str(passed), str(source)],
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
