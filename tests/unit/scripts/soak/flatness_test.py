import pathlib
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[4] / "scripts" / "soak"))

from flatness import Sample, growth, settled  # noqa: E402


def samples(memory=lambda n: 100, descriptors=lambda n: 50, threads=lambda n: 30, count=30):
    return [Sample(10.0 * n, memory(n), descriptors(n), threads(n)) for n in range(count)]


class Flatness(unittest.TestCase):
    def test_accepts_constant_values(self):
        self.assertEqual([], growth(samples()))

    def test_accepts_a_burst(self):
        self.assertEqual([], growth(samples(descriptors=lambda n: 500 if n == 28 else 50)))

    def test_accepts_values_that_fall(self):
        self.assertEqual([], growth(samples(memory=lambda n: 500 - n)))

    def test_finds_memory_that_grows(self):
        self.assertEqual(["memory_mib grows from 105.0 to 129.0"],
                         growth(samples(memory=lambda n: 100 + n, count=35)))

    def test_does_not_judge_the_memory_of_a_short_run(self):
        self.assertEqual([], growth(samples(memory=lambda n: 100 + n, count=29)))

    def test_finds_descriptors_that_grow(self):
        self.assertEqual(["descriptors grows from 59.0 to 99.0"], growth(samples(descriptors=lambda n: 50 + 2 * n)))

    def test_finds_threads_that_grow(self):
        self.assertEqual(["threads grows from 34.5 to 54.5"], growth(samples(threads=lambda n: 30 + n)))

    def test_refuses_too_few_samples(self):
        self.assertEqual(["the run was too short: 2 samples"], growth(samples(count=2)))

    def test_leaves_the_warm_up_out(self):
        self.assertEqual([100.0, 110.0], [sample.seconds for sample in settled(samples(count=12), 100)])


if __name__ == "__main__":
    unittest.main()
