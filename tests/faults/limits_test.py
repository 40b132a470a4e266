#!/usr/bin/python3
"""limits_test.py BUILD: too little memory, closed descriptors, missing readers, and very large documents."""

import os
import resource
import subprocess
import sys
import unittest
from pathlib import Path

sys.path.insert(0, "tests/cgi")
import storage  # noqa: E402  pylint: disable=wrong-import-position

PROGRAM = os.path.abspath(sys.argv.pop(1)) + "/release/fileman.cgi"
LIST = "fmtype=all"
DOWNLOAD = "opertype=download&rsltid=Ethernet_SFP_BERT_Result_line_1"
LOCK = "/tmp/.tarn_download.lock"
ROWS = 20000
NO_ROOM = b"fileman: write the response: "


def start(query, stdout):
    return subprocess.Popen(PROGRAM, stdin=subprocess.DEVNULL, stdout=stdout, stderr=subprocess.PIPE,
                            env=storage.environment(query))


def run(query, prepare=None):
    return storage.request(PROGRAM, query, preexec_fn=prepare)


def limit(what, amount):
    return lambda: resource.setrlimit(what, (amount, amount))


class Large(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        storage.Tree().make("basic")
        for number in range(ROWS):
            storage.Tree().write(f"{storage.BERT}/row_{number}.html")
        cls.page = run(LIST).stdout
        assert cls.page.count(b"{ id: ") > ROWS

    def test_no_file_gets_the_number_of_a_closed_descriptor(self):
        for closed in ((0,), (1,), (2,), (0, 1), (0, 2), (1, 2), (0, 1, 2)):
            for query, end in ((LIST, b"</html>"), (DOWNLOAD, b"PK\5\6")):
                with self.subTest(closed=closed, query=query):
                    Path(LOCK).unlink(missing_ok=True)
                    done = run(query, lambda numbers=closed: [os.close(number) for number in numbers])
                    self.assertEqual((done.returncode, done.stdout.count(end)), (0, 0 if 1 in closed else 1))
                    if query == DOWNLOAD:
                        self.assertEqual(os.path.getsize(LOCK), 0)

    def test_a_list_too_large_for_the_memory_never_looks_whole(self):
        whole = 0
        for amount in range(2500, 9000, 250):  # never enough for a thread
            with self.subTest(kilobytes=amount):
                done = run(LIST, limit(resource.RLIMIT_AS, amount << 10))
                self.assertEqual(done.returncode, 0)
                if done.stdout == self.page:
                    whole += 1
                else:
                    self.assertEqual(done.stderr, b"fileman: answer the request: out of memory\n")
                    self.assertTrue(self.page.startswith(done.stdout))
        self.assertGreater(whole, 0)

    def test_an_answer_ends_where_its_reader_does(self):
        with start(LIST, subprocess.PIPE) as program:
            program.stdout.read(1)
            program.stdout.close()
            self.assertEqual(program.stderr.read(), NO_ROOM + b"Broken pipe\n")
        self.assertEqual(program.returncode, 0)
        with open("/dev/full", "wb") as full:
            for query in (LIST, "filter=fpri", "", "opertype=view&rsltid=Ethernet_SFP_BERT_Result_line_1"):
                with self.subTest(query=query), start(query, full) as program:
                    self.assertEqual(program.stderr.read(), NO_ROOM + b"No space left on device\n")
                self.assertEqual(program.returncode, 0)


class VeryMuch(unittest.TestCase):
    def test_no_list_is_walked_once_for_each_entry_of_another(self):
        """A document with the largest allowed numbers. The time is enough unless one list is walked for each entry of
        another."""
        count = range(7000)
        ports = ",".join(f"x{number}port" for number in count)
        half = f'<h test_name="Result" dir_name="d/m" list="{ports}" under_port_dir="true"/>'
        sections = {
            "module": [f'<e name="M{number}"><o mode_name="E">{half}</o></e>' for number in count[:2]] +
                      ['<e name="A">', *(f'<o mode_name="{number}"/>' for number in count), "</e>"],
            "mode": [f'<e name="{number}" rslt_dir_name="{number}-rslt"/>' for number in count],
            "category": [f'<e name="n{number}" key="k{number}"/>' for number in count],
            "port": [f'<e name="x{number}" key="x{number}"/>' for number in count],
            "extraDir": [f'<e module="a" mode="{number % 99}" key="k{number}" dir_name="d/x{number}port"'
                         ' test_name="Result"/>' for number in count],
        }
        tree = storage.Tree()
        tree.make("nothing")
        tree.write(storage.CONFIGURATION, ("<r><filter>" + "".join(
            f"<{name}>{''.join(entries)}</{name}>" for name, entries in sections.items()) + "</filter></r>").encode())
        for number in count:
            for place in (f"d/x{number}port", f"d/m/x{number}port", f"d/m/x1port/k{number}-result"):
                os.makedirs(f"/home/{place}", exist_ok=True)
        names = ",".join(map(str, count))
        for query in (LIST, "fmtype=rslt&mode=" + names, "filter=fpri&mode=" + names):
            with self.subTest(query=query[:20]):
                done = run(query, limit(resource.RLIMIT_CPU, 2))
                self.assertEqual((done.returncode, done.stderr), (0, b""))


if __name__ == "__main__":
    unittest.main()
