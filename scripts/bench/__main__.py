"""bench PROGRAMS [ROW...]: measures the rows of docs/benchmarks.md with the programs of a build."""

import argparse
import os
import pathlib
import statistics
import sys
import tempfile
import time

import results as outcome
from measurements import GROUPS, Bench
from programs import Failure
from rows import SUFFIX_ON_TAO, listing, named
from sizes import Sizes
from stores import Stores

PROCESSORS = 2


def arguments():
    parser = argparse.ArgumentParser(prog="bench.sh", description=__doc__)
    parser.add_argument("--list", action="store_true", help="print the rows with their thresholds")
    parser.add_argument("--bin", type=pathlib.Path, help="folder of the programs")
    parser.add_argument("--bin-on-tao", type=pathlib.Path, help="folder of the programs of a build on TAO")
    parser.add_argument("--output", type=pathlib.Path, help="write results.json into this folder")
    parser.add_argument("--document", type=pathlib.Path, help="write the table into this document")
    parser.add_argument("--nodes", type=int, help="nodes of the smaller network; nothing is judged then")
    parser.add_argument("rows", nargs="*", metavar="ROW", help="measure these rows only")
    return parser.parse_args()


def ratios_of(group, names, bench):
    """The rounds of these rows of a group. Raises Failure when a row cannot be measured."""
    try:
        measured = group(bench)
    except (OSError, ValueError, ArithmeticError) as failure:  # of a program that ended too early
        raise Failure(f"{type(failure).__name__}: {failure}") from failure
    if not names <= measured.keys():
        raise Failure("a row of the group has no rounds")
    return {name: measured[name] for name in sorted(names)}


def measure(programs, suffix, rows, sizes, stores):
    """Measures the rows with the programs of one build. Returns the medians, and the names that cannot be measured."""
    wanted = {row.name for row in rows}
    bench = Bench(programs.resolve(), stores, sizes)
    values, failed = {}, []
    for group, names in GROUPS:
        if not names & wanted:
            continue
        begin = time.monotonic()
        try:
            for name, rounds in ratios_of(group, names & wanted, bench).items():
                values[name + suffix] = statistics.median(rounds)
                print(outcome.line_of(name + suffix, rounds), flush=True)
        except Failure as failure:
            unmeasured = sorted(name + suffix for name in names & wanted)
            print(f"bench: {', '.join(unmeasured)}: {failure}", file=sys.stderr)
            failed += unmeasured
        print(f"  ({group.__name__}: {time.monotonic() - begin:.0f} s)", flush=True)
    return values, failed


def measure_all(options, rows):
    """Measures the rows on every ORB. Returns the medians, and the names that cannot be measured."""
    sizes = Sizes(options.nodes, 1, 0.02) if options.nodes else Sizes()
    with tempfile.TemporaryDirectory(prefix="topo-bench-", dir=options.output) as folder:
        stores = Stores(pathlib.Path(folder))
        values, failed = measure(options.bin, "", rows, sizes, stores)
        if options.bin_on_tao:
            on_tao, failed_on_tao = measure(options.bin_on_tao, SUFFIX_ON_TAO, rows, sizes, stores)
            values.update(on_tao)
            failed += failed_on_tao
        else:
            print("bench: no build on TAO (TOPO_TAO_BUILD is not set): the rows on TAO are skipped")
    return values, failed


def write(options, values):
    file = options.output / "results.json"
    content = outcome.merged(outcome.read_results(file), values, not options.rows)
    outcome.write_results(file, content)
    if options.document:
        options.document.write_text(outcome.with_table(options.document.read_text(), content))


def main():
    options = arguments()
    if options.list:
        print(listing())
        return 0
    try:
        rows = named(options.rows)
    except KeyError as unknown:
        print(f"bench: there is no row {unknown}; --list prints the rows", file=sys.stderr)
        return 2
    if options.output:
        options.output.mkdir(parents=True, exist_ok=True)
    os.sched_setaffinity(0, sorted(os.sched_getaffinity(0))[:PROCESSORS])
    values, failed = measure_all(options, rows)
    if options.output:
        write(options, values)
    short = [] if options.nodes else outcome.missed(values, rows)
    for line in short:
        print(f"falls short: {line}")
    for name in failed:
        print(f"not measured: {name}")
    return 2 if failed else 1 if short else 0


if __name__ == "__main__":
    sys.exit(main())
