"""What a run leaves behind: results.json, the table in a document, and the judgement."""

import json
import statistics

from rows import ROWS, SUFFIX_ON_TAO

BEGIN = "<!-- bench.sh writes the lines from here -->"
END = "<!-- to here -->"


def ratios(numerators, denominators):
    """The ratio of each round. Raises ValueError for lists of different lengths."""
    return [a / b for a, b in zip(numerators, denominators, strict=True)]


def line_of(name, rounds):
    """The line that reports a row: the median, and the least and the greatest round."""
    return f"{name:32} {statistics.median(rounds):7.3g}   ({min(rounds):.3g} to {max(rounds):.3g})"


def missed(results, rows):
    """One line for every measured name that does not reach its threshold."""
    lines = []
    for row in rows:
        for name in (row.name, row.name + SUFFIX_ON_TAO):
            if name in results and not row.is_reached_by(results[name]):
                lines.append(f"{name}: {results[name]:.3g}, reach {row.reach()}")
    return lines


def merged(earlier, results, is_whole_run):
    """The content of results.json: a run of some rows keeps the other names of the earlier run."""
    return dict(sorted({**({} if is_whole_run else earlier), **results}.items()))


def read_results(file):
    return json.loads(file.read_text()) if file.exists() else {}


def write_results(file, results):
    file.parent.mkdir(parents=True, exist_ok=True)
    file.write_text(json.dumps({name: float(f"{value:.4g}") for name, value in results.items()}, indent=2) + "\n")


def table(results):
    def cell(name):
        return f"{results[name]:.3g}" if name in results else "not measured"
    lines = ["| row | measures | default ORB | TAO | reach |", "| --- | --- | --- | --- | --- |"]
    lines += [f"| `{row.name}` | {row.measures} | {cell(row.name)} | {cell(row.name + SUFFIX_ON_TAO)} | {row.reach()} |"
              for row in ROWS]
    return "\n".join(lines)


def with_table(document, results):
    """The document with the table between its two marks. Raises ValueError for a document without the marks."""
    head, begin, rest = document.partition(BEGIN)
    _, end, tail = rest.partition(END)
    if not begin or not end:
        raise ValueError("the document has no marks for the table")
    return f"{head}{BEGIN}\n{table(results)}\n{END}{tail}"
