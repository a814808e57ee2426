import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

BENCH_SH = pathlib.Path(__file__).resolve().parents[4] / "bench.sh"


class BenchSh(unittest.TestCase):
    """bench.sh with scripts and with a cmake that only print their arguments."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        (self.folder / "scripts" / "bench").mkdir(parents=True)
        (self.folder / "bin").mkdir()
        shutil.copy(BENCH_SH, self.folder)
        (self.folder / "scripts" / "bench" / "__main__.py").write_text("import sys; print('bench', *sys.argv[1:])\n")
        for script in ("scripts/setup.sh", "scripts/build.sh", "bin/cmake"):
            (self.folder / script).write_text(f"#!/bin/sh\necho {script} \"$@\"\n")
            (self.folder / script).chmod(0o755)

    def run_it(self, tao=None):
        environment = {**os.environ, "PATH": f"{self.folder / 'bin'}:{os.environ['PATH']}", "TOPO_TAO_BUILD": tao or ""}
        return subprocess.run([self.folder / "bench.sh", "view_scaling"], env=environment, capture_output=True,
                              text=True, timeout=60, check=False)

    def write_cache(self, orb, build_type):
        (self.folder / "build").mkdir()
        (self.folder / "build" / "CMakeCache.txt").write_text(
            f"TOPO_ORB:STRING={orb}\nCMAKE_BUILD_TYPE:STRING={build_type}\n")

    def test_measures_the_release_build(self):
        ended = self.run_it()
        self.assertEqual(0, ended.returncode, ended.stderr)
        self.assertIn("scripts/build.sh release bench_programs\nbench --bin build/release/bin --output build/bench "
                      "--document docs/benchmarks.md view_scaling\n", ended.stdout)

    def test_measures_a_build_on_tao_too(self):
        self.write_cache("tao", "RelWithDebInfo")
        ended = self.run_it("build")
        self.assertEqual(0, ended.returncode, ended.stderr)
        self.assertIn("bench --bin build/release/bin --bin-on-tao build/bin ", ended.stdout)

    def rejects(self, folder):
        ended = self.run_it(folder)
        self.assertEqual((2, "", f"bench.sh: TOPO_TAO_BUILD: {folder} is not a build folder of the preset tao\n"),
                         (ended.returncode, ended.stdout, ended.stderr))

    def test_rejects_a_missing_folder(self):
        self.rejects("build")

    def test_rejects_a_build_on_another_orb(self):
        self.write_cache("other", "RelWithDebInfo")
        self.rejects("build")

    def test_rejects_a_build_without_optimization(self):
        self.write_cache("tao", "Debug")
        self.rejects("build")


if __name__ == "__main__":
    unittest.main()
