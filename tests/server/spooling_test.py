"""spooling_test.py PROGRAM: whole answers and refused bodies while /tmp has next to no room."""

import itertools
import subprocess
import unittest

import servers
from client import fetch
from servers import PROGRAM, Watch, storage

TREE = storage.Tree()
ROOM = 700 << 10
LIST = "/cgi-bin/fileman.cgi?fmtype=all"


@unittest.skipUnless(subprocess.run(("mount", "-t", "tmpfs", "-o", f"size={ROOM},mode=1777", "tmpfs", "/tmp"),
                                    check=False).returncode == 0, "no small /tmp without the right to mount")
class Spooling(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        TREE.configuration()
        for number in range(4000):
            TREE.write(f"{storage.BERT}/line_{number:04}.html")
        servers.lay_out("strict")
        cls.server = servers.lighttpd()
        cls.addClassCleanup(cls.server.stop)

    def test_a_list_comes_whole_to_a_slow_reader(self):
        done = storage.request(PROGRAM, "fmtype=all", TZ=servers.ZONE, FILEMAN_ANSWERS="strict")
        page = done.stdout.partition(b"\r\n\r\n")[2]
        self.assertGreater(len(page), ROOM)
        for head in ((), (("Accept-Encoding", "gzip"),)):
            with self.subTest(head=head):
                with Watch() as watch:
                    answer = fetch(self.server.port, LIST, pause=0.002, head=head)
                self.assertEqual((answer.body, "content-encoding" in answer.header), (page, bool(head)))
                # What the pipe still holds when the program ends, at most.
                self.assertLess(watch.grown, 128 << 10)

    def test_the_body_of_a_request_is_refused_without_a_trace(self):
        zeros = bytes(2 << 20)
        lengths = (("Content-Length", str(len(zeros))), ("Transfer-Encoding", "chunked"))
        for target, method, length in itertools.product((LIST, "/index.html"), ("POST", "GET"), lengths):
            with self.subTest(target=target, method=method, length=length):
                with Watch() as watch:
                    answer = fetch(self.server.port, target, method=method, head=(length,), body=zeros)
                self.assertIn(answer.status, (400, 413) if target == LIST else (400, 413, 200, 501))
                self.assertEqual(watch.grown, 0)


if __name__ == "__main__":
    unittest.main()
