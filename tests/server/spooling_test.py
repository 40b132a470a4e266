"""spooling_test.py PROGRAM: whole answers and refused bodies while /tmp has next to no room."""

import gzip
import os
import subprocess
import threading
import unittest

import servers
from client import fetch
from servers import PROGRAM, storage

ROOM = 700 << 10
QUERY = "fmtype=all"
LIST = f"/cgi-bin/fileman.cgi?{QUERY}"


def used():
    room = os.statvfs("/tmp")
    return (room.f_blocks - room.f_bfree) * room.f_frsize


class Watch(threading.Thread):
    """Remembers the most that /tmp held meanwhile."""

    def __enter__(self):
        self.before = self.most = used()
        self.done = threading.Event()
        self.start()
        return self

    def run(self):
        while not self.done.wait(0.005):
            self.most = max(self.most, used())

    def __exit__(self, *_):
        self.done.set()
        self.join()

    def grown(self):
        return self.most - self.before


@unittest.skipUnless(subprocess.run(("mount", "-t", "tmpfs", "-o", f"size={ROOM},mode=1777", "tmpfs", "/tmp"),
                                    check=False).returncode == 0, "no small /tmp without the right to mount")
class Spooling(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        tree = storage.Tree()
        tree.configuration()
        for number in range(4000):
            tree.write(f"{storage.BERT}/line_{number:04}.html")
        servers.lay_out("strict")
        done = subprocess.run(PROGRAM, env=storage.environment(QUERY, TZ="UTC0", FILEMAN_ANSWERS="strict"),
                              stdout=subprocess.PIPE, check=True)
        cls.page = done.stdout.partition(b"\r\n\r\n")[2]
        assert cls.page.count(b'{"id":') == 4000 and len(cls.page) > ROOM
        cls.server = servers.lighttpd()
        cls.addClassCleanup(cls.server.stop)

    def test_a_list_comes_whole_to_a_slow_reader(self):
        for head in ((), (("Accept-Encoding", "gzip"),)):
            with self.subTest(head=head):
                with Watch() as watch:
                    answer = fetch(self.server.port, LIST, pause=0.002, head=head)
                self.assertEqual(answer.header.get("content-encoding"), "gzip" if head else None)
                self.assertEqual(gzip.decompress(answer.body) if head else answer.body, self.page)
                # What the pipe still holds when the program ends, at most.
                self.assertLess(watch.grown(), 128 << 10)

    def test_the_body_of_a_request_is_refused_without_a_trace(self):
        zeros = bytes(2 << 20)
        for target in (LIST, "/index.html", "/none"):
            for method in ("POST", "PUT", "GET"):
                for head in (("Content-Length", str(len(zeros))), ("Transfer-Encoding", "chunked")):
                    with self.subTest(target=target, method=method, head=head):
                        with Watch() as watch:
                            status = fetch(self.server.port, target, method=method, head=(head,), body=zeros).status
                        self.assertIn(status, (400, 413) if "cgi" in target else (400, 413, 200, 404, 501))
                        self.assertEqual(watch.grown(), 0)


if __name__ == "__main__":
    unittest.main()
