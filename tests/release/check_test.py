"""check_test.py PROGRAM: the schema of the configuration document, and the findings of fileman-check."""

import os
import subprocess
import sys
import unittest
from pathlib import Path

sys.path.insert(0, "tests/cgi")
from storage import Tree, write  # noqa: E402  pylint: disable=wrong-import-position

PROGRAM = os.path.abspath(sys.argv.pop(1))
SCHEMA = "docs/configuration.rng"

FAULTY = "tests/release/faulty.xml"


def check(*arguments):
    done = subprocess.run([PROGRAM, *arguments], text=True, capture_output=True, check=False)
    assert not done.stderr and done.returncode in (0, 1), f"exit status {done.returncode}: {done.stderr}"
    return done.returncode, done.stdout.splitlines()


def text_of(path):
    return Path(path).read_text(encoding="utf-8")


def lay_out_sample():
    Tree().make("nothing")
    subprocess.run(["sample/lay-out", "/home"], check=True, stdout=subprocess.DEVNULL)


class Schema(unittest.TestCase):
    def apply(self, document):
        return subprocess.run(["xmllint", "--noout", "--relaxng", SCHEMA, "-"], input=document, capture_output=True,
                              text=True, check=False).returncode

    def test_both_forms_say_the_same(self):
        made = subprocess.run(["rnc2rng", "docs/configuration.rnc"], capture_output=True, text=True, check=True).stdout
        self.assertEqual(made.strip(), text_of(SCHEMA).strip())

    def test_the_documents_of_the_repository_fit_and_mistakes_do_not(self):
        sample = text_of("sample/result-config-ktd.xml")
        self.assertEqual((self.apply(sample), self.apply(text_of("docs/examples/configuration-store.xml"))), (0, 0))
        for right, wrong in (('checked="true"', 'cheked="true"'), ("category>", "categories>"),
                             ('under_port_dir="true"', 'under_port_dir="yes"'), ('dir_name="1ge', 'dir_name="/1ge'),
                             ('test_name="Profile" dir_name="1ge', 'test_name="Prof" dir_name="1ge'),
                             ('list="sfpport,', 'list=",sfpport,')):
            with self.subTest(wrong):
                self.assertIn(right, sample)
                self.assertEqual(self.apply(sample.replace(right, wrong, 2 if "categor" in wrong else 1)), 3)


class Documents(unittest.TestCase):
    maxDiff = None

    def test_every_mistake_is_reported_with_its_line(self):
        Tree().make("nothing")
        expected = text_of("tests/release/expected-findings").splitlines()
        self.assertEqual(check(FAULTY), (1, expected))
        without_storage = [line for line in expected if not line.endswith('" does not exist')]
        self.assertEqual(check("--no-storage", FAULTY), (1, without_storage))

    def test_the_example_of_the_page_has_no_finding(self):
        write("/tmp/example.xml", text_of("docs/configuration.md").partition("```xml\n")[2].partition("```")[0])
        self.assertEqual(check("--no-storage", "/tmp/example.xml"), (0, []))

    def test_a_document_that_the_program_refuses_is_refused(self):
        self.assertIn("there is no such file", check("/tmp/none.xml")[1][0])
        for content, place, says in (("<a>\n<filter>\n</a>", ":3", "not well-formed"), ("<a/>", "", "no element filter"),
                                     ("<a>" * 200 + "</a>" * 200, "", "nested deeper")):
            write("/tmp/refused.xml", content)
            status, lines = check("/tmp/refused.xml")
            self.assertEqual((status, len(lines)), (1, 1))
            self.assertTrue(lines[0].startswith(f"/tmp/refused.xml{place}: ") and says in lines[0], lines)

    def test_the_sample_has_only_the_findings_that_its_comments_name(self):
        lay_out_sample()
        # "ktr" leads to the first mode, and four extra directories have no port.
        self.assertEqual([("leads to the mode" in line, "without a port" in line) for line in check()[1]],
                         [(True, False)] + 4 * [(False, True)])
        os.rename("/home/1ge/kte-rslt/sfpport/bert-result", "/home/1ge/kte-rslt/sfpport/unheard-result")
        lines = check()[1]
        self.assertEqual(sum("unheard-result" in line and "cannot be viewed" in line for line in lines), 1, lines)


class Explanations(unittest.TestCase):
    def test_reasons_agree_with_the_lists_for_every_file(self):
        lay_out_sample()
        os.symlink("/home/1ge", "/home/10g/kte-rslt/10gport2/link-result")
        for name in ("sfpport/unheard-result/a.html", "sfpport/bert-result/b.HTML", "rj45port2/bert-result/c.html"):
            write("/home/1ge/kte-rslt/" + name)
        files = [os.path.join(at, name) for at, _, names in os.walk("/home") for name in names]
        self.assertGreater(len(files), 150)
        for path in files[::3] + [path for path in files if path.count(".") != 1 or "un" in path]:
            status, lines = check("--explain", path)
            listed = [line for line in lines if ": yes, " in line]
            reasons = lines[6:]
            fits = [line for line in reasons if line.startswith("  built in, MTIE") or
                    line.startswith("  line ") and line.endswith((": fits", "are listed"))]
            with self.subTest(path, lines=lines):
                self.assertEqual(status, 0 if listed else 1)
                self.assertTrue(reasons)
                self.assertEqual(any(line.startswith("  view, ") for line in listed), bool(fits))

    def test_each_reason_has_its_words(self):
        lay_out_sample()
        os.mkfifo("/home/1ge/kte-rslt/sfpport/fifo.html")
        tree = "/home/1ge/kte-rslt/"
        for path, says in ((tree + "nowhere/bert-result/a.html", '"nowhere" is not the name of a port directory'),
                           (tree + "sfpport/odd/a.html", '"odd" is not the name of a type directory'),
                           (tree + "sfpport/bert-result/a.txt", "extension"),
                           (tree + "sfpport/fifo.html", "a FIFO"),
                           (tree + "sfpport/a.html", "files must be in a port directory and a type directory"),
                           ("/home/else/a.html", "no directory that"), ("/etc/passwd", "is not below /home")):
            if path.startswith("/home") and not os.path.exists(path):
                write(path)
            self.assertIn(says, "\n".join(check("--explain", path)[1][6:]))


if __name__ == "__main__":
    unittest.main(verbosity=2)
