"""limits_test.py BUILT: the program of a board is small, and needs nothing of the board but its kernel."""

import os
import subprocess
import sys
import unittest

BUILT = sys.argv.pop(1)


class Limits(unittest.TestCase):
    def test_it_is_small_static_and_stripped(self):
        self.assertLess(os.path.getsize(BUILT), 1_000_000 if "/armhf/" in BUILT else 1_700_000)
        said = subprocess.check_output(["readelf", "-lSW", BUILT], text=True)
        self.assertNotRegex(said, r"INTERP|\.symtab")


if __name__ == "__main__":
    unittest.main()
