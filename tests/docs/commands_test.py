"""commands_test.py: runs the commands of the documentation, unchanged, in the root of the checkout.

A code block names its language. A block of "sh" is a script. A block of "console" is a command after "$" and lines
of its output in this order ("..." means other lines). A block whose first line begins with "# Example" is not run.
"""

import glob
import os
import re
import signal
import subprocess
import tempfile
import unittest
import urllib.request

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
# fleet_test.py runs the commands of this page, among the instruments that they need.
TESTED_APART = "docs/fleet.md"
PAGES = ["README.md", *sorted(glob.glob("docs/*.md", root_dir=ROOT))]
# These cannot run as a step of this test: the first is the suite, the second has a test below.
NOT_HERE = {"./test", "./demo"}


def blocks(page):
    """Returns (language, text) of each fenced block. The rest of the page has the language None."""
    with open(os.path.join(ROOT, page), encoding="utf-8") as file:
        parts = re.split(r"^```(.*)\n((?:.*\n)*?)^```\n", file.read(), flags=re.M)
    for plain, language, text in zip(parts[::3], parts[1::3] + [None], parts[2::3] + [None]):
        yield None, plain
        if text is not None:
            yield language, text


def run(script):
    return subprocess.run(("bash", "-euo", "pipefail", "-c", script), cwd=ROOT, stdin=subprocess.DEVNULL, text=True,
                          capture_output=True, check=False)


def masked(text):
    """Removes the parts that differ from day to day."""
    return re.sub(r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d", "<date>", text)


class Commands(unittest.TestCase):
    def of(self, wanted):
        for page in PAGES:
            for language, text in blocks(page) if page != TESTED_APART else ():
                if language == wanted and not text.startswith("# Example"):
                    yield page, text

    def test_every_block_says_what_it_is(self):
        for page in PAGES:
            for language, text in blocks(page):
                with self.subTest(page, language=language):
                    self.assertNotEqual(language, "", text)
                    if language is None:
                        self.assertNotRegex(text, r"\n\n    \S", "an indented block has no language")

    def test_the_scripts_run_as_they_stand(self):
        for page, text in self.of("sh"):
            lines = [line for line in text.splitlines() if line.split("#")[0].strip() not in NOT_HERE]
            with self.subTest(page, lines=lines):
                done = run("\n".join(lines))
                self.assertEqual(done.returncode, 0, done.stderr)

    def test_the_sessions_show_what_the_page_shows(self):
        for page, text in self.of("console"):
            command, *shown = masked(text).removeprefix("$ ").splitlines()
            with self.subTest(page, command=command):
                done = run(command)
                self.assertEqual(done.returncode, 0, done.stderr)
                said = iter(masked(done.stdout).splitlines())
                for line in shown:
                    self.assertTrue(line.strip() == "..." or line in said, f"{line}\n{done.stdout}")

    def test_the_demo_serves_the_list_until_it_is_interrupted(self):
        with subprocess.Popen("./demo", cwd=ROOT, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, text=True,
                              stderr=subprocess.PIPE, start_new_session=True) as demo:
            told = ""
            while line := demo.stdout.readline():
                told += line
                if line.startswith("Ctrl-C"):
                    break
            if demo.poll() is not None:
                problem = demo.stderr.read()
                if "in use" in problem:
                    self.skipTest(problem)
                self.fail(problem)
            try:
                for address in re.findall(r"http://\S+", told):
                    with urllib.request.urlopen(address, timeout=30) as answer:
                        self.assertIn(b"</html>", answer.read(), address)
            finally:
                os.killpg(demo.pid, signal.SIGINT)
                demo.communicate(timeout=30)
        self.assertIn("http://127.0.0.1:8080/", told)


class Linking(unittest.TestCase):
    """Tests the other promises of docs/linking.md. Its commands have installed the archive before."""

    @classmethod
    def setUpClass(cls):
        done = run(next(text for language, text in blocks("docs/linking.md") if language == "sh"))
        assert done.returncode == 0, done.stderr
        cls.archive = os.path.join(ROOT, "build/sdk/lib/libfileman_conf.a")

    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.dir = scratch.name

    def test_the_archive_is_machine_code_for_programs_and_shared_libraries(self):
        sections = subprocess.run(("readelf", "-SW", self.archive), capture_output=True, text=True, check=True).stdout
        self.assertIn(".text", sections)
        self.assertNotIn(".gnu.lto", sections)
        subprocess.run(("c++", "-shared", "-o", f"{self.dir}/lib.so", "-Wl,--whole-archive", self.archive,
                        "-Wl,--no-whole-archive", "-Wl,-z,defs", "-ltinyxml"), check=True)
        said = run("scripts/with-storage - tests/unit/conf/run-example build/store-example")
        self.assertEqual(said.returncode, 0, said.stdout + said.stderr)

    def test_a_project_around_ours_keeps_its_own_options(self):
        os.symlink(ROOT, f"{self.dir}/fileman")
        block = next(text for language, text in blocks("docs/linking.md") if language == "cmake")
        with open(f"{self.dir}/CMakeLists.txt", "w", encoding="utf-8") as file:
            file.write(f"cmake_minimum_required(VERSION 3.25)\nproject(around CXX C)\nadd_executable(tool tool.cpp)\n{block}")
        with open(f"{self.dir}/tool.cpp", "w", encoding="utf-8") as file:
            file.write('#include "conf/CFileManConf.h"\nint main() {}\n')
        for options in ([], ["-DFILEMAN_STATIC=ON", "-DCMAKE_BUILD_TYPE=Release"]):
            subprocess.run(("cmake", "-S", self.dir, "-B", f"{self.dir}/b", *options), check=True, capture_output=True)
            flags = ""
            for name in ("flags.make", "link.txt"):
                with open(f"{self.dir}/b/CMakeFiles/tool.dir/{name}", encoding="utf-8") as file:
                    flags += file.read()
            self.assertIn("libfm_conf.a", flags)
            self.assertNotRegex(flags, r" -(W|Wl|static|no-pie|fno-pie|f)\b")
            self.assertFalse(os.path.exists(f"{self.dir}/b/fileman/tests"))


if __name__ == "__main__":
    unittest.main()
