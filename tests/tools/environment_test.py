"""The runner that keeps storage private, and the sample instrument's lay-out."""

import os
import subprocess
import sys
import tempfile
import unittest

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
RUNNER = os.path.join(ROOT, "scripts/with-storage")
LAY_OUT = os.path.join(ROOT, "sample/lay-out")
METHODS = ("unshare", "userns", "bwrap", "proot")


def run(*command, **options):
    return subprocess.run(command, capture_output=True, text=True, **options)


class Environment(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.dir = scratch.name
        os.makedirs(f"{self.dir}/home/1ge")
        os.makedirs(f"{self.dir}/usr-local/ktb")
        with open(f"{self.dir}/usr-local/ktb/ours", "w", encoding="ascii") as file:
            file.write("ours")

    def each_method(self):
        for method in METHODS:
            with self.subTest(method):
                if run(RUNNER, "-m", method, "-", "true").returncode != 0:
                    self.skipTest(f"{method} does not work here")
                yield method

    def test_every_method_lays_the_same_storage(self):
        script = """
            pwd; ls demo; ls -A /home; ls -A /tmp; cat /usr/local/ktb/ours; ls -d /usr/local/bin
            echo " $FILEMAN_PRIVATE_STORAGE"; echo new >/home/1ge/made; : >/tmp/made; exit 7"""
        for method in self.each_method():
            done = run(RUNNER, "-m", method, self.dir, "sh", "-c", script)
            self.assertEqual((done.stdout.split(), done.returncode),
                             (["/srv", "demo", "1ge", ".private-storage", "ours/usr/local/bin", "1"], 7), done.stderr)
            self.assertTrue(os.path.exists(f"{self.dir}/home/1ge/made"))
            self.assertFalse(os.path.exists("/tmp/made"))
            os.unlink(f"{self.dir}/home/1ge/made")

    def test_storage_can_be_empty_or_bring_its_own_tmp(self):
        os.mkdir(f"{self.dir}/tmp")
        for method in self.each_method():
            empty = run(RUNNER, "-m", method, "-", "sh", "-c", "ls -A /home /tmp; : >/home/made && : >/tmp/made")
            self.assertEqual((empty.stdout.split(), empty.returncode), (["/home:", "/tmp:", ".private-storage"], 0))
            run(RUNNER, "-m", method, self.dir, "touch", "/tmp/made")
            self.assertEqual(sorted(os.listdir(f"{self.dir}/tmp")), [".private-storage", "made"])

    def test_wrong_calls_are_told_apart_by_their_status(self):
        self.assertEqual(run(RUNNER, self.dir).returncode, 64)
        self.assertEqual(run(RUNNER, "-m", "magic", "-", "true").returncode, 64)
        self.assertEqual(run(RUNNER, f"{self.dir}/home", "true").returncode, 66)
        # A machine that offers none of the four ways: every tool they need fails.
        for tool in ("unshare", "bwrap", "proot"):
            os.symlink("/bin/false", f"{self.dir}/{tool}")
        environment = {**os.environ, "PATH": f"{self.dir}:{os.environ['PATH']}"}
        nothing = run(RUNNER, "-", "true", env=environment)
        self.assertEqual((nothing.returncode, nothing.stderr.startswith("with-storage: nothing here")), (69, True))

    def test_sample_is_laid_out_alike_each_time_and_once(self):
        for name in ("one", "two"):
            self.assertEqual(run(LAY_OUT, f"{self.dir}/{name}").returncode, 0)
        self.assertEqual(run("diff", "-r", f"{self.dir}/one", f"{self.dir}/two").stdout, "")
        self.assertIn("not empty", run(LAY_OUT, f"{self.dir}/one").stderr)

    def test_sample_leaves_the_machines_own_home_alone(self):
        environment = {name: value for name, value in os.environ.items() if name != "FILEMAN_PRIVATE_STORAGE"}
        refused = run(LAY_OUT, "/home/.", env=environment)
        self.assertEqual((refused.returncode, refused.stderr.count("the machine's own")), (1, 1))
        self.assertEqual(run(RUNNER, "-", "sample/lay-out", "/home").returncode, 0)


if __name__ == "__main__":
    sys.exit(unittest.main())
