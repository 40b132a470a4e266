"""commands_test.py: runs the commands of the documentation, unchanged, in the root of the checkout.

A code block names its language. A block of "sh" is a script. A block of "console" is a command after "$" and lines
of its output in this order ("..." means other lines). A block whose first line begins with "# Example" is not run.
"""

import glob
import os
import re
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
# fleet_test.py runs the commands of this page, among the instruments that they need.
TESTED_APART = "docs/fleet.md"
PAGES = ["README.md", *sorted(glob.glob("docs/*.md", root_dir=ROOT))]
# These cannot run as a step of this test: the first is the suite, the second has its own test in tests/tools.
NOT_HERE = {"./test", "./demo"}


def blocks(page):
    """Returns (language, text) of each fenced block. The rest of the page has the language None."""
    parts = re.split(r"^```(.*)\n((?:.*\n)*?)^```\n", Path(ROOT, page).read_text(encoding="utf-8"), flags=re.M)
    return [*zip(parts[1::3], parts[2::3]), *((None, plain) for plain in parts[::3])]


def first_block(page, language):
    return next(text for its_language, text in blocks(page) if its_language == language)


def run(script, place=ROOT):
    done = subprocess.run(("bash", "-euo", "pipefail", "-c", script), cwd=place, stdin=subprocess.DEVNULL, text=True,
                          capture_output=True, check=False)
    assert done.returncode == 0, f"{script}: {done.stdout}{done.stderr}"
    return done.stdout


def masked(text):
    """Removes the parts that differ from day to day."""
    return re.sub(r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d", "<date>", text)


class Commands(unittest.TestCase):
    def test_every_block_has_a_language_and_its_commands_work(self):
        for page in PAGES:
            for language, text in blocks(page):
                with self.subTest(page, language=language):
                    self.assertNotEqual(language, "", text)
                    if language is None:
                        self.assertNotRegex(text, r"\n\n    \S", "an indented block has no language")
                    elif page != TESTED_APART and not text.startswith("# Example"):
                        self.try_block(language, text)

    def try_block(self, language, text):
        if language == "sh":
            run("\n".join(line for line in text.splitlines() if line.split("#")[0].strip() not in NOT_HERE))
        if language == "console":
            command, *shown = masked(text).removeprefix("$ ").splitlines()
            said = masked(run(command))
            rest = iter(said.splitlines())
            for line in shown:
                self.assertTrue(line.strip() == "..." or line in rest, f"{line} is not in {said}")


class Linking(unittest.TestCase):
    """Tests the other promises of docs/linking.md."""

    def setUp(self):
        self.dir = self.enterContext(tempfile.TemporaryDirectory())

    def test_the_archive_is_machine_code_for_programs_and_shared_libraries(self):
        run(first_block("docs/linking.md", "sh"))
        archive = f"{ROOT}/build/sdk/lib/libfileman_conf.a"
        sections = run(f"readelf -SW {archive}")
        self.assertIn(".text", sections)
        self.assertNotIn(".gnu.lto", sections)
        run(f"c++ -shared -o {self.dir}/lib.so -Wl,--whole-archive {archive} -Wl,--no-whole-archive -Wl,-z,defs -ltinyxml")
        run("scripts/with-storage - tests/unit/conf/run-example build/store-example")

    def test_a_project_around_ours_keeps_its_own_options(self):
        os.symlink(ROOT, f"{self.dir}/fileman")
        Path(self.dir, "CMakeLists.txt").write_text(
            "cmake_minimum_required(VERSION 3.25)\nproject(around CXX C)\nadd_executable(tool tool.cpp)\n"
            + first_block("docs/linking.md", "cmake"), encoding="utf-8")
        Path(self.dir, "tool.cpp").write_text('#include "conf/CFileManConf.h"\nint main() {}\n', encoding="utf-8")
        for options in ("", "-DFILEMAN_STATIC=ON -DCMAKE_BUILD_TYPE=Release"):
            run(f"cmake -S {self.dir} -B {self.dir}/b {options}")
            flags = run(f"cd {self.dir}/b/CMakeFiles/tool.dir && cat flags.make link.txt")
            self.assertIn("libfm_conf.a", flags)
            self.assertNotRegex(flags, r" -(W|Wl|static|no-pie|fno-pie|f)\b")
            self.assertFalse(os.path.exists(f"{self.dir}/b/fileman/tests"))


if __name__ == "__main__":
    unittest.main()
