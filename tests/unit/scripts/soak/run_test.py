import os
import pathlib
import subprocess
import sys
import unittest

SCRIPTS = pathlib.Path(__file__).resolve().parents[4] / "scripts"


def soak(*arguments):
    return subprocess.run([sys.executable, SCRIPTS / "soak", *arguments], capture_output=True, text=True, timeout=240,
                          check=False, env={**os.environ, "PYTHONPATH": str(SCRIPTS / "abuse")})


class Run(unittest.TestCase):
    """A run of a few seconds with the programs in the folder TOPO_BIN."""

    @unittest.skipUnless("TOPO_BIN" in os.environ, "without programs")
    def test_prints_the_use_of_the_system_and_a_verdict(self):
        seconds = 6
        ended = soak(os.environ["TOPO_BIN"], str(seconds / 3600))
        self.assertEqual((0, ""), (ended.returncode, ended.stderr), ended.stdout)
        *samples, verdict = ended.stdout.splitlines()
        self.assertLess(5, len(samples))
        for line in samples:
            self.assertRegex(line, r"^ +\d+\.\d s +\d+\.\d MiB +\d+ descriptors +\d+ threads  views \d+, ")
        self.assertLessEqual(seconds, float(samples[-1].split()[0]))
        self.assertRegex(samples[-1], r" [1-9]\d*(,|$)", "no client has done a round")
        self.assertRegex(verdict, "^soak: descriptors, threads are flat from .* to ")

    def test_refuses_what_is_no_number_of_hours(self):
        for hours in ("many", "0", "-1", "nan"):
            ended = soak("bin", hours)
            self.assertEqual((2, f"soak: {hours} is not a number of hours\n"), (ended.returncode, ended.stderr))


if __name__ == "__main__":
    unittest.main()
