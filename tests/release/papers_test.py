"""papers_test.py BUILD: the version, the list of components and the pages that go with a release."""

import datetime
import json
import os
import re
import subprocess
import sys
import unittest
from pathlib import Path

BUILD = sys.argv.pop(1)


def text(path):
    return Path(path).read_text(encoding="utf-8")


# Archives that are not named like their part.
KNOWN_AS = {"archive": "libarchive", "z": "zlib"}
VERSION = re.search(r"project\(fileman VERSION (\S+)", text("CMakeLists.txt"))[1]


def run(*arguments, **variables):
    return subprocess.run([f"{BUILD}/fileman.cgi", *arguments], env={"PATH": "/usr/bin:/bin", **variables}, text=True,
                          capture_output=True, check=True).stdout


class Version(unittest.TestCase):
    def test_only_a_person_is_told_and_no_web_request(self):
        self.assertEqual(run("--version"), f"fileman.cgi {VERSION}\n")
        # A server may pass a query without "=" on as arguments, as RFC 3875 allows: the query "--version".
        for variables in ({"QUERY_STRING": "--version"}, {"QUERY_STRING": ""}, {"REQUEST_METHOD": "GET"},
                          {"GATEWAY_INTERFACE": "CGI/1.1"}):
            with self.subTest(variables):
                self.assertEqual(run("--version", **variables), run(**variables))
        for arguments in (("--version", "more"), ("--Version",)):
            self.assertEqual(run(*arguments), run())

    def test_changes_packages_and_recipes_name_it_with_one_date(self):
        version, date = re.search(r"^## (\S+) \((\S+)\)$", text("CHANGELOG.md"), re.M).groups()
        self.assertEqual(version, VERSION)
        self.assertRegex(text("packaging/debian/changelog"), rf"\Afileman \({VERSION}\) [^-]*\n -- .*  " +
                         datetime.date.fromisoformat(date).strftime("%a, %d %b %Y"))
        for recipe, line in (("buildroot/fileman/fileman.mk", f"FILEMAN_VERSION = {VERSION}\n"),
                             ("openwrt/fileman/Makefile", f"PKG_VERSION:={VERSION}\n"), (f"yocto/fileman_{VERSION}.bb", "")):
            self.assertIn(line, text("packaging/" + recipe))


class Components(unittest.TestCase):
    def test_every_linked_archive_is_named(self):
        bill = json.loads(text(BUILD + "/fileman.cdx.json"))
        self.assertEqual((bill["bomFormat"], bill["metadata"]["component"]["version"]), ("CycloneDX", VERSION))
        names = {part["name"] for part in bill["components"]}
        archives = re.findall(r" /\S*/lib(\S+)\.a\b", text(BUILD + "/cgi/CMakeFiles/fileman.cgi.dir/link.txt"))
        linked = {KNOWN_AS.get(name, name) for name in archives}
        self.assertIn("tinyxml", linked)
        # The compiler links these without naming their archives.
        own = {"glibc", "libstdc++"}
        bundled = set(json.loads(text("web/package.json"))["dependencies"])
        self.assertLessEqual(linked | own | bundled, names)
        notices = text("THIRD-PARTY.md").lower()
        for name in names - own:
            self.assertIn(name, notices)


class ManualPages(unittest.TestCase):
    def test_the_formatter_finds_no_mistake(self):
        pages = [f"man/{page}" for page in sorted(os.listdir("man"))]
        self.assertEqual(pages, ["man/fileman-check.1", "man/fileman.cgi.8", "man/fileman.conf.5"])
        done = subprocess.run(["mandoc", "-T", "lint", "-W", "style", *pages], text=True, capture_output=True,
                              check=False)
        # References to the pages of other packages are allowed.
        self.assertEqual([line for line in done.stdout.splitlines() if "referenced manual not found" not in line], [])

    def test_they_name_every_option_and_every_section(self):
        usage = subprocess.run([BUILD + "/fileman-check", "--help"], text=True, capture_output=True, check=True).stdout
        for option in set(re.findall(r"--([a-z-]+)", usage)):
            self.assertRegex(text("man/fileman-check.1"), rf"\.It Fl Fl {option}\b")
        for section in re.findall(r"element ([a-zA-Z]+) ", text("docs/configuration.rnc")):
            self.assertRegex(text("man/fileman.conf.5"), rf"\.(It )?Ic {section}\b")


if __name__ == "__main__":
    unittest.main(verbosity=2)
