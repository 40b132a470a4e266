"""papers_test.py BUILD: the version, the list of components and the pages that go with a release."""

import json
import os
import re
import subprocess
import sys
import unittest

BUILD = sys.argv.pop(1)
PROGRAM = BUILD + "/fileman.cgi"


def text(path):
    with open(path, encoding="utf-8") as file:
        return file.read()


# Archives that are not named like their part.
KNOWN_AS = {"archive": "libarchive", "z": "zlib"}
VERSION = re.search(r"project\(fileman VERSION (\S+)", text("CMakeLists.txt"))[1]


def run(*arguments, **variables):
    return subprocess.run([PROGRAM, *arguments], env={"PATH": "/usr/bin:/bin", **variables}, text=True,
                          capture_output=True, check=True).stdout


class Version(unittest.TestCase):
    def test_a_person_is_told(self):
        self.assertEqual(run("--version"), f"fileman.cgi {VERSION}\n")

    def test_no_web_request_is(self):
        # A server may pass a query without "=" on as arguments, as RFC 3875 allows: the query "--version".
        requests = ({"QUERY_STRING": "--version"}, {"QUERY_STRING": ""}, {"REQUEST_METHOD": "GET"},
                    {"GATEWAY_INTERFACE": "CGI/1.1"})
        for variables in requests:
            with self.subTest(variables):
                self.assertEqual(run("--version", **variables), run(**variables))
        self.assertEqual(run("--version", "more"), run())
        self.assertEqual(run("--Version"), run())

    def test_the_changes_tell_about_it(self):
        self.assertEqual(re.search(r"^## (\S+)$", text("CHANGELOG.md"), re.M)[1], VERSION)


class Components(unittest.TestCase):
    def test_every_linked_archive_is_named(self):
        bill = json.loads(text(BUILD + "/fileman.cdx.json"))
        self.assertEqual((bill["bomFormat"], bill["metadata"]["component"]["version"]), ("CycloneDX", VERSION))
        names = {part["name"] for part in bill["components"]}
        links = text(BUILD + "/cgi/CMakeFiles/fileman.cgi.dir/link.txt")
        linked = {os.path.basename(word)[3:-2] for word in links.split() if word.startswith("/") and word.endswith(".a")}
        linked = {KNOWN_AS.get(name, name) for name in linked}
        # The system's own libraries carry no version of themselves in their names.
        self.assertLessEqual(linked | {"glibc", "libstdc++", "slickgrid"}, names)
        notices = text("THIRD-PARTY.md").lower()
        for name in names - {"glibc", "libstdc++"}:
            self.assertIn(name, notices)


class ManualPages(unittest.TestCase):
    PAGES = sorted(os.listdir("man"))

    def test_the_formatter_finds_no_fault(self):
        self.assertEqual(self.PAGES, ["fileman-check.1", "fileman.cgi.8", "fileman.conf.5"])
        for page in self.PAGES:
            done = subprocess.run(["mandoc", "-T", "lint", "-W", "style", "man/" + page], text=True, capture_output=True,
                                  check=False)
            # References to the pages of other packages are no fault.
            faults = [line for line in done.stdout.splitlines() if "referenced manual not found" not in line]
            self.assertEqual(faults, [])

    def test_they_name_every_option_and_every_section(self):
        usage = subprocess.run([BUILD + "/fileman-check", "--help"], text=True, capture_output=True, check=True).stdout
        page = text("man/fileman-check.1")
        for option in set(re.findall(r"--([a-z-]+)", usage)):
            self.assertIn(f".It Fl Fl {option}", page)
        for section in re.findall(r"element ([a-zA-Z]+) ", text("docs/configuration.rnc")):
            self.assertRegex(text("man/fileman.conf.5"), rf"\.(It )?Ic {section}\b")


if __name__ == "__main__":
    unittest.main(verbosity=2)
