"""limits_test.py BUILT PROGRAM: the program of a board is small, and handles numbers beyond 32 bits."""

import os
import shutil
import subprocess
import sys
import unittest
from pathlib import Path

PROGRAM = sys.argv.pop()
BUILT = sys.argv.pop()
DIRECTORY = "/home/osa-rslt/osa-result"
LARGE = (4 << 30) + 123
DOCUMENT = """<config><filter>
<module><m name="OSA" checked="true"><o mode_name="OSA"><h test_name="Result" dir_name="osa-rslt/osa-result"
 under_port_dir="false"/></o></m></module>
<mode><o name="OSA" rslt_dir_name="osa-rslt" prof_dir_name="" checked="true"/></mode>
<category><o name="osa" key="osa" checked="true"/></category>
</filter></config>
"""


def answer(query, largest=1 << 20):
    """Returns the start of an answer, and does not wait for the end of the program."""
    with subprocess.Popen([PROGRAM], env={"PATH": "/usr/bin:/bin", "TZ": "UTC", "QUERY_STRING": query},
                          stdin=subprocess.DEVNULL, stdout=subprocess.PIPE) as program:
        start = program.stdout.read(largest)
        program.stdout.close()
    return start.decode(errors="replace")


class Limits(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        os.makedirs("/home/.resultmanager")
        os.makedirs(DIRECTORY)
        Path("/home/.resultmanager/result-config-ktd.xml").write_text(DOCUMENT, encoding="utf-8")

    def test_it_is_small_static_and_stripped(self):
        self.assertLess(os.path.getsize(BUILT), 1_000_000 if "/armhf/" in BUILT else 1_700_000)
        said = subprocess.run(["readelf", "-lSW", BUILT], text=True, capture_output=True, check=True).stdout
        self.assertNotRegex(said, r"INTERP|\.symtab")

    def test_a_file_over_4_gib_is_listed_and_sent_with_its_size(self):
        Path(DIRECTORY + "/large.html").touch()
        os.truncate(DIRECTORY + "/large.html", LARGE)
        self.addCleanup(os.unlink, DIRECTORY + "/large.html")
        self.assertIn(f"path: '{DIRECTORY}/large.html'", answer("fmtype=all"))
        self.assertTrue(answer("opertype=view&rsltid=OSA__osa_Result_large", 400).startswith(f"Content-Length:{LARGE}\r\n"))

    def test_a_change_after_2038_has_its_date(self):
        # Only the debugger of a file system can set the change time of a file.
        if not all(shutil.which(tool, path="/usr/sbin:/sbin:/usr/bin:/bin") for tool in ("mke2fs", "debugfs")):
            self.skipTest("mke2fs and debugfs are missing")
        image = "/tmp/image"
        os.makedirs("/tmp/stored")
        Path("/tmp/stored/late.html").touch()
        Path(image).touch()
        os.truncate(image, 8 << 20)
        path = {"PATH": "/usr/sbin:/sbin:/usr/bin:/bin"}
        subprocess.run(["mke2fs", "-q", "-t", "ext4", "-I", "256", "-d", "/tmp/stored", image], check=True, env=path)
        subprocess.run(["debugfs", "-w", "-R", "sif /late.html ctime @2500000000", image], check=True, capture_output=True,
                       env=path)
        mounted = subprocess.run(["mount", "-o", "loop,ro", image, DIRECTORY], capture_output=True, check=False)
        if mounted.returncode != 0:
            self.skipTest(f"no image can be mounted here: {mounted.stderr}")
        self.addCleanup(subprocess.run, ["umount", DIRECTORY], check=True)
        self.assertEqual(int(os.stat(DIRECTORY + "/late.html").st_ctime), 2500000000)
        self.assertIn("datetime: '2049-03-22 04:26:40'", answer("fmtype=all"))


if __name__ == "__main__":
    done = unittest.main(verbosity=2, exit=False).result
    # CTest shows a skipped part as skipped, not as passed.
    sys.exit(77 if done.skipped and done.wasSuccessful() else not done.wasSuccessful())
