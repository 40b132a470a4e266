"""spooling_test.py PROGRAM: whole answers and refused bodies while /tmp has next to no room."""

import gzip
import os
import subprocess
import threading
import unittest

from served import PACKAGING, PROGRAM, Server, parse, read_all, storage

ROOM = 700 << 10
LIST = "fmtype=all"


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
        done = subprocess.run(PROGRAM, env=storage.environment(LIST, TZ="UTC0"), stdout=subprocess.PIPE, check=True)
        cls.page = done.stdout.partition(b"\n\n")[2]
        assert cls.page.count(b"{ id: '") == 4000 and len(cls.page) > ROOM
        cls.server = Server(("lighttpd", "-D", "-f", f"{PACKAGING}/lighttpd.conf"))
        cls.addClassCleanup(cls.server.stop)

    def test_a_list_comes_whole_to_a_slow_reader(self):
        for head in ((), (b"Accept-Encoding: gzip",)):
            with self.subTest(head=head):
                with self.server.open(f"/cgi-bin/fileman.cgi?{LIST}", head=head) as connection, Watch() as watch:
                    _, headers, body = parse(read_all(connection, pause=0.002))
                self.assertEqual(headers.get("content-encoding"), "gzip" if head else None)
                self.assertEqual(gzip.decompress(body) if head else body, self.page)
                # What the pipe still holds when the program ends, at most.
                self.assertLess(watch.grown(), 128 << 10)

    def test_the_body_of_a_request_is_refused_without_a_trace(self):
        zeros = bytes(2 << 20)
        for target in (f"/cgi-bin/fileman.cgi?{LIST}", "/index.html", "/none"):
            for method in ("POST", "PUT", "GET"):
                for head, body in ((b"Content-Length: %d" % len(zeros), zeros),
                                   (b"Transfer-Encoding: chunked", b"%x\r\n" % len(zeros) + zeros + b"\r\n0\r\n\r\n")):
                    with self.subTest(target=target, method=method, head=head):
                        with Watch() as watch:
                            status = self.server.get(target, method=method, head=(head,), body=body)[0]
                        self.assertIn(status, (400, 413) if "cgi" in target else (400, 413, 200, 404, 501))
                        self.assertEqual(watch.grown(), 0)


if __name__ == "__main__":
    unittest.main()
