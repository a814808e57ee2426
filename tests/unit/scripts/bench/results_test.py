import json
import pathlib
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[4] / "scripts" / "bench"))

import results
from rows import ROWS, Row, named


class Ratios(unittest.TestCase):
    def test_are_formed_for_each_round(self):
        self.assertEqual([1, 3, 100], results.ratios([2, 9, 100], [2, 3, 1]))

    def test_of_rounds_that_differ_in_number_are_rejected(self):
        with self.assertRaises(ValueError):
            results.ratios([1, 2], [1])

    def test_are_printed_as_their_median_and_range(self):
        self.assertEqual("row 3 (1 to 100)", " ".join(results.line_of("row", [1, 3, 100]).split()))


class Thresholds(unittest.TestCase):
    ROWS = [Row("time", "", 1.1), Row("speed", "", 2, at_least=True)]

    def test_are_reached_by_the_limit_itself(self):
        self.assertEqual([], results.missed({"time": 1.1, "speed": 2}, self.ROWS))

    def test_name_every_row_that_falls_short(self):
        self.assertEqual(["time: 1.11, reach at most 1.1", "speed: 1.99, reach at least 2"],
                         results.missed({"time": 1.11, "speed": 1.99}, self.ROWS))

    def test_apply_to_tao(self):
        self.assertEqual(["time_tao: 1.2, reach at most 1.1"],
                         results.missed({"time": 1, "time_tao": 1.2}, self.ROWS))

    def test_ignore_rows_that_are_not_measured(self):
        self.assertEqual([], results.missed({}, self.ROWS))


class ResultsFile(unittest.TestCase):
    def test_is_one_flat_object_from_names_to_numbers(self):
        with tempfile.TemporaryDirectory() as folder:
            file = pathlib.Path(folder) / "new" / "results.json"
            results.write_results(file, {"a": 1.23456, "b_tao": 12345.6})
            self.assertEqual({"a": 1.235, "b_tao": 12350}, json.loads(file.read_text()))
            self.assertEqual({"a": 1.235, "b_tao": 12350}, results.read_results(file))

    def test_that_does_not_exist_is_empty(self):
        self.assertEqual({}, results.read_results(pathlib.Path("/nonexistent/results.json")))

    def test_keeps_other_rows_of_an_earlier_run_of_some_rows(self):
        self.assertEqual({"a": 1, "b": 3}, results.merged({"a": 1, "b": 2}, {"b": 3}, is_whole_run=False))

    def test_keeps_nothing_of_an_earlier_whole_run(self):
        self.assertEqual({"b": 3}, results.merged({"a": 1, "b": 2}, {"b": 3}, is_whole_run=True))


class Table(unittest.TestCase):
    def test_has_a_line_for_every_row(self):
        lines = results.table({}).splitlines()
        self.assertEqual(2 + len(ROWS), len(lines))
        self.assertIn("| not measured | not measured |", lines[2])

    def test_has_the_values_of_both_orbs(self):
        text = results.table({"small_call_over_ping": 1.0345, "small_call_over_ping_tao": 1.5})
        self.assertIn("| 1.03 | 1.5 | at most 1.2 |", text)

    def test_replaces_what_is_between_the_marks(self):
        document = f"before\n{results.BEGIN}\nold\n{results.END}\nafter\n"
        once = results.with_table(document, {})
        self.assertNotIn("old", once)
        self.assertTrue(once.startswith(f"before\n{results.BEGIN}\n| row |"))
        self.assertTrue(once.endswith(f"|\n{results.END}\nafter\n"))
        self.assertEqual(once, results.with_table(once, {}))

    def test_is_not_written_into_a_document_without_the_marks(self):
        with self.assertRaises(ValueError):
            results.with_table("text", {})


class Rows(unittest.TestCase):
    def test_are_all_rows_without_names(self):
        self.assertEqual(list(ROWS), named([]))

    def test_with_names_keep_the_order_of_the_table(self):
        self.assertEqual(["view_scaling", "events_over_raw"],
                         [row.name for row in named(["events_over_raw", "view_scaling"])])

    def test_with_an_unknown_name_are_rejected(self):
        with self.assertRaises(KeyError):
            named(["view"])


if __name__ == "__main__":
    unittest.main()
