import argparse
import contextlib
import io
import json
import pathlib
import sys
import tempfile
import unittest
from unittest import mock

BENCH = pathlib.Path(__file__).resolve().parents[4] / "scripts" / "bench"
sys.path.insert(0, str(BENCH))

import memory
import networks
from importlib import util
from measurements import GROUPS
from programs import Failure, Program, run_rounds
from rows import ROWS, named

spec = util.spec_from_file_location("bench_main", BENCH / "__main__.py")
bench_main = util.module_from_spec(spec)
spec.loader.exec_module(bench_main)

SHELL = ["/bin/sh", "-c"]


class Rounds(unittest.TestCase):
    def test_are_columns_of_the_output(self):
        self.assertEqual([[1, 3], [2, 4]], run_rounds([*SHELL, "printf '1 2\n3 4\n'"], 1, 2, ["a", "b"]))

    def test_that_are_missing_are_a_failure(self):
        with self.assertRaises(Failure):
            run_rounds([*SHELL, "echo 1 2"], 1, 2, ["a", "b"])

    def test_of_a_failed_program_report_its_error(self):
        with self.assertRaisesRegex(Failure, "no memory"):
            run_rounds([*SHELL, "echo no memory >&2; exit 2"], 1, 1, ["a"])

    def test_of_a_program_that_hangs_are_a_failure(self):
        with self.assertRaisesRegex(Failure, "not finished"):
            run_rounds([*SHELL, "exec sleep 60"], 1, 1, ["a"], seconds=0.1)


class Programs(unittest.TestCase):
    def test_are_read_line_by_line(self):
        with Program([*SHELL, "printf 'one\ntwo\n'; cat"]) as program:
            self.assertEqual(["one", "two"], [program.read_line(), program.read_line()])

    def test_that_end_without_a_line_report_their_error(self):
        with Program([*SHELL, "echo bad option >&2; exit 1"]) as program:
            with self.assertRaisesRegex(Failure, "sh: bad option"):
                program.read_line()

    def test_end_with_their_context(self):
        with Program([*SHELL, "exec sleep 60"]) as program:
            process = program.process
        self.assertIsNotNone(process.returncode)


class Memory(unittest.TestCase):
    def test_is_in_bytes(self):
        self.assertEqual(2048, memory.value_of("Name:\tx\nVmHWM:\t       2 kB\nVmRSS:\t 1 kB\n", "VmHWM"))


class Networks(unittest.TestCase):
    def test_have_one_subnetwork_in_ten_nodes(self):
        kinds = [node["type"] for node in networks.nodes(200)]
        self.assertEqual((20, 180), (kinds.count(2), kinds.count(1)))

    def test_have_parents_before_their_children(self):
        known = {""}
        for node in networks.nodes(500):
            self.assertIn(node["parent"], known)
            known.add(node["id"])

    def test_have_links_between_their_elements(self):
        ends = {f"NE={number}" for number in networks.element_numbers(20)}
        links = list(networks.clock_links(20, 50))
        self.assertEqual(50, len({link["id"] for link in links}))
        self.assertTrue(all({link["a"], link["z"]} <= ends for link in links))


class Groups(unittest.TestCase):
    def test_measure_every_row_once(self):
        names = [name for _, names in GROUPS for name in names]
        self.assertEqual(sorted(row.name for row in ROWS), sorted(names))


class Runs(unittest.TestCase):
    def measured(self, folder, rows=()):
        """The medians, the folders of the programs and the output of a run."""
        folders = []

        def fake_group(bench):
            folders.append(bench.programs.name)
            return {"small_call_over_ping": [9, 1.5, 1], "view_scaling": [10]}

        out = io.StringIO()
        options = argparse.Namespace(nodes=None, output=None, bin=pathlib.Path("/own"), bin_on_tao=folder)
        with mock.patch.object(bench_main, "GROUPS", [(fake_group, {"small_call_over_ping", "view_scaling"})]), \
                contextlib.redirect_stdout(out):
            values, failed = bench_main.measure_all(options, named(rows))
        self.assertEqual([], failed)
        return values, folders, out.getvalue()

    def measured_beside(self, broken):
        """What a run returns when the group of view_scaling is broken, and its error output."""
        def whole_group(_):
            return {"small_call_over_ping": [1.5]}

        options = argparse.Namespace(nodes=None, output=None, bin=pathlib.Path("/own"), bin_on_tao=None)
        groups = [(broken, {"view_scaling"}), (whole_group, {"small_call_over_ping"})]
        with mock.patch.object(bench_main, "GROUPS", groups), contextlib.redirect_stdout(io.StringIO()), \
                contextlib.redirect_stderr(io.StringIO()) as errors:
            return bench_main.measure_all(options, named([])), errors.getvalue()

    def test_continue_after_a_row_that_cannot_be_measured(self):
        def broken(_):
            raise Failure("topo-agentd: no answer")

        result, errors = self.measured_beside(broken)
        self.assertEqual(({"small_call_over_ping": 1.5}, ["view_scaling"]), result)
        self.assertEqual("bench: view_scaling: topo-agentd: no answer\n", errors)

    def test_continue_after_a_program_that_ends_too_early(self):
        def broken(_):
            raise BrokenPipeError("the client has ended")

        result, errors = self.measured_beside(broken)
        self.assertEqual(["view_scaling"], result[1])
        self.assertIn("view_scaling: BrokenPipeError: the client has ended", errors)

    def test_report_a_row_that_its_group_leaves_out(self):
        self.assertEqual(["view_scaling"], self.measured_beside(lambda _: {})[0][1])

    def test_without_a_build_on_tao_say_so_and_measure_the_rest(self):
        values, folders, out = self.measured(None)
        self.assertEqual({"small_call_over_ping": 1.5, "view_scaling": 10}, values)
        self.assertEqual(["own"], folders)
        self.assertIn("the rows on TAO are skipped", out)

    def test_with_a_build_on_tao_add_names_that_end_in_tao(self):
        values, folders, out = self.measured(pathlib.Path("/tao"))
        self.assertEqual({"small_call_over_ping", "view_scaling", "small_call_over_ping_tao", "view_scaling_tao"},
                         set(values))
        self.assertEqual(["own", "tao"], folders)
        self.assertNotIn("skipped", out)

    def test_of_some_rows_return_no_other_rows(self):
        self.assertEqual({"view_scaling": 10}, self.measured(None, ["view_scaling"])[0])

    def main(self, values, *words, failed=()):
        with tempfile.TemporaryDirectory() as folder, contextlib.redirect_stdout(io.StringIO()) as out, \
                mock.patch.object(bench_main, "measure_all", lambda *unused: (values, failed)), \
                mock.patch.object(bench_main.os, "sched_setaffinity"), \
                mock.patch.object(sys, "argv", ["bench", "--bin", folder, *words]):
            return bench_main.main(), out.getvalue()

    def test_that_fall_short_end_with_status_1_and_name_the_rows(self):
        self.assertEqual((1, "falls short: small_call_over_ping: 1.5, reach at most 1.2\n"),
                         self.main({"small_call_over_ping": 1.5, "view_scaling": 10}))

    def test_that_reach_their_thresholds_end_with_status_0(self):
        self.assertEqual((0, ""), self.main({"view_scaling": 10}))

    def test_with_rows_that_cannot_be_measured_end_with_status_2_and_keep_the_others(self):
        with tempfile.TemporaryDirectory() as folder:
            self.assertEqual((2, "not measured: events_over_raw\n"),
                             self.main({"view_scaling": 10}, "--output", folder, failed=["events_over_raw"]))
            self.assertEqual({"view_scaling": 10}, json.loads((pathlib.Path(folder) / "results.json").read_text()))

    def test_of_small_sizes_are_not_judged(self):
        self.assertEqual((0, ""), self.main({"small_call_over_ping": 1.5}, "--nodes", "10"))


if __name__ == "__main__":
    unittest.main()
