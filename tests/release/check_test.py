"""check_test.py PROGRAM: the schema of the configuration document, and what fileman-check says about documents and files."""

import os
import re
import shutil
import subprocess
import sys
import unittest

PROGRAM = os.path.abspath(sys.argv.pop(1))
DOCUMENT = "/home/.resultmanager/result-config-ktd.xml"
SCHEMA = "docs/configuration.rng"

FAULTY = """<config>
<filter>
<module>
<m name="A" checked="true">
<o mode_name="Nowhere"><h test_name="Result" dir_name="a/x-rslt" under_port_dir="true" list="xport,zport,x"/></o>
<o mode_name="M"><h test_name="Result" dir_name="a/flat" under_port_dir="True"/><h test_name="Other" under_port_dir="false"/></o>
<o mode_name="M"/>
</m>
<m name="Common" checked="true">
<o test_name="Odd" key="ping" dir_name="root/odd/" under_port_dir="true" list="xport"/>
<o test_name="Screen" key="screen" dir_name="ktb/screen" under_port_dir="false"/>
</m>
</module>
<mode><o label="" name="M" rslt_dir_name="m-rslt" prof_dir_name="" checked="true"/></mode>
<category><o label="" name="Ping" key="ping" checked="true"/><o label="" name="x" key="x" checked="1"/></category>
<port><o label="" name="X" key="x" dir="xport" checked="true"/><o label="" name="X2" key="X" dir="" checked="true"/></port>
<extraDir><o module="A" mode="N" port="X" key="x" dir_name="e" test_name="Result"/></extraDir>
<ports/>
</filter>
</config>
"""
# A line of the document, and what is said about it; "storage" stands where only a look at the disk tells.
FINDINGS = """
5: the section mode has no entry with name="Nowhere": its files are missing in
5: "x" is no name of a port directory
5: no port entry stands for the directory "zport"
5: storage: "/home/a/x-rslt" does not exist
6: under_port_dir="True" counts as "false"
6: have no type in this mode, so nothing is listed
6: test_name "Other" is ignored
6: storage: "/home/a/flat" does not exist
7: ignored: line 6 has mode_name="M" already
10: only the entries Result and Profile may have port directories
10: has a slash too many
10: storage: "/home/root/odd/" does not exist
11: no category has the key "screen"
11: storage: "/home/ktb/screen" does not exist
15: the filter page offers the name "Ping"
15: checked="1" counts as "false"
16: the key "X" leads to the port "X", not to this one
17: no module has this mode
17: storage: "/home/e" does not exist
18: the section "ports" is ignored
"""


def check(*arguments):
    done = subprocess.run([PROGRAM, *arguments], text=True, capture_output=True, check=False)
    if done.stderr or done.returncode not in (0, 1):
        raise AssertionError(f"exit status {done.returncode}: {done.stderr}")
    return done.returncode, done.stdout.splitlines()


def lay_out_sample():
    for name in os.listdir("/home"):
        shutil.rmtree(f"/home/{name}")
    subprocess.run(["sample/lay-out", "/home"], check=True, stdout=subprocess.DEVNULL)


class Schema(unittest.TestCase):
    def apply(self, path, **more):
        return subprocess.run(["xmllint", "--noout", "--relaxng", SCHEMA, path], capture_output=True, check=False,
                              **more).returncode

    def test_both_forms_say_the_same(self):
        made = subprocess.run(["rnc2rng", "docs/configuration.rnc"], capture_output=True, check=True).stdout
        with open(SCHEMA, "rb") as file:
            self.assertEqual(made.strip(), file.read().strip())

    def test_the_documents_of_the_repository_fit(self):
        for path in ("sample/result-config-ktd.xml", "docs/examples/configuration-store.xml"):
            self.assertEqual(self.apply(path), 0)

    def test_a_slip_does_not(self):
        with open("sample/result-config-ktd.xml", encoding="utf-8") as file:
            sample = file.read()
        for right, wrong in (('checked="true"', 'cheked="true"'), ("<category>", "<categories>"),
                             ('under_port_dir="true"', 'under_port_dir="yes"'), ('test_name="Profile" dir_name="1ge', 'test_name="Prof" dir_name="1ge'),
                             ('dir_name="1ge', 'dir_name="/1ge'), ('list="sfpport,', 'list=",sfpport,')):
            with self.subTest(wrong):
                self.assertIn(right, sample)
                slip = sample.replace(right, wrong, 1).replace("</category>", "</categories>" if "categ" in wrong
                                                               else "</category>")
                self.assertEqual(self.apply("-", input=slip.encode()), 3)


class Documents(unittest.TestCase):
    def test_every_fault_has_its_line(self):
        with open("/tmp/faulty.xml", "w", encoding="utf-8") as file:
            file.write(FAULTY)
        for arguments in ([], ["--no-storage"]):
            expected = [line for line in FINDINGS.split("\n") if line and not (arguments and ": storage: " in line)]
            status, lines = check(*arguments, "/tmp/faulty.xml")
            self.assertEqual(status, 1)
            for line in expected:
                number, _, says = line.replace("storage: ", "").partition(": ")
                found = [text for text in lines if text.startswith(f"/tmp/faulty.xml:{number}: ") and says in text]
                with self.subTest(line):
                    self.assertEqual(len(found), 1, lines)
            self.assertEqual(len(lines), len(expected), "\n".join(lines))

    def test_a_document_that_the_program_refuses(self):
        for content, place, says in (("<a>\n<filter>\n</a>", ":3", "not well-formed"), ("<a/>", "", "no element filter"),
                                     ("<a>" * 200 + "</a>" * 200, "", "nested deeper")):
            with open("/tmp/refused.xml", "w", encoding="utf-8") as file:
                file.write(content)
            status, lines = check("/tmp/refused.xml")
            self.assertEqual((status, len(lines)), (1, 1))
            self.assertTrue(lines[0].startswith(f"/tmp/refused.xml{place}: ") and says in lines[0], lines)

    def test_the_sample_keeps_what_it_says_about_itself(self):
        lay_out_sample()
        status, lines = check()
        self.assertEqual(status, 1)
        # "ktr" leads to the first mode, and four extra directories have no port, as the comments there say.
        self.assertEqual([("leads to the mode" in line, "without a port" in line) for line in lines],
                         [(True, False)] + 4 * [(False, True)], lines)

    def test_rows_that_no_delivery_finds(self):
        lay_out_sample()
        os.rename("/home/1ge/kte-rslt/sfpport/bert-result", "/home/1ge/kte-rslt/sfpport/unheard-result")
        lines = check()[1]
        self.assertEqual(sum("unheard-result" in line and "cannot be viewed" in line for line in lines), 1, lines)


class Explanations(unittest.TestCase):
    def test_reasons_agree_with_the_lists_for_every_file(self):
        lay_out_sample()
        os.symlink("/home/1ge", "/home/10g/kte-rslt/10gport2/link-result")
        os.makedirs("/home/1ge/kte-rslt/sfpport/unheard-result")
        os.makedirs("/home/1ge/kte-rslt/rj45port2/bert-result")
        for name in ("unheard-result/a.html", "bert-result/b.HTML", "../rj45port2/bert-result/c.html"):
            with open("/home/1ge/kte-rslt/sfpport/" + name, "w", encoding="utf-8"):
                pass
        files = [os.path.join(at, name) for at, _, names in os.walk("/home") for name in names]
        self.assertGreater(len(files), 150)
        for path in files[::3] + [path for path in files if path.count(".") != 1 or "un" in path]:
            status, lines = check("--explain", path)
            listed = [line for line in lines if ": yes, " in line]
            fits = [line for line in lines if line.endswith((": fits", "are listed")) and " line " in f" {line.strip()}"]
            reasons = lines[6:]
            with self.subTest(path, lines=lines):
                self.assertEqual(status, 0 if listed else 1)
                self.assertTrue(reasons)
                fits += [line for line in reasons if line.startswith("  built in, MTIE")]
                delivered = any(line.startswith("  view, ") for line in listed)
                self.assertEqual(delivered, bool(fits))

    def test_each_reason_has_its_words(self):
        lay_out_sample()
        for path in ("/home/1ge/kte-rslt/sfpport/fifo.html", "/home/1ge/kte-rslt/nowhere/bert-result/a.html",
                     "/home/else/a.html", "/home/1ge/kte-rslt/sfpport/bert-result/a.txt",
                     "/home/1ge/kte-rslt/sfpport/odd/a.html"):
            os.makedirs(os.path.dirname(path), exist_ok=True)
            if "fifo" in path:
                os.mkfifo(path)
            else:
                with open(path, "w", encoding="utf-8"):
                    pass
            says = {"fifo": "a FIFO", "nowhere": '"nowhere" is no name of a port directory', "else": "no directory that",
                    ".txt": "extension", "odd": '"odd" is no name of a type directory'}
            expected = next(text for word, text in says.items() if word in path)
            lines = check("--explain", path)[1]
            self.assertTrue(re.search(re.escape(expected), "\n".join(lines[6:])), lines)
        self.assertIn("does not lie below /home", check("--explain", "/etc/passwd")[1][6])


if __name__ == "__main__":
    unittest.main(verbosity=2)
