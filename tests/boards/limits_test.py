"""limits_test.py PROGRAM: the program of a board is small, and needs nothing of the board but its kernel."""

import os
import re
import subprocess
import sys

program = sys.argv[1]
size, parts = os.path.getsize(program), subprocess.check_output(["readelf", "-lSW", program], text=True)
assert size < (1_000_000 if "/armhf/" in program else 1_700_000), size
assert not re.search(r"INTERP|\.symtab", parts), parts
