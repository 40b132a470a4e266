"""The sample instrument behind lighttpd, asked by curl: what arrives is what the program wrote and the tree holds."""

import os
import re
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time
import unittest

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
sys.path.insert(0, os.path.join(ROOT, "tests/cgi"))
from delivery import entries  # noqa: E402

RUNNER = os.path.join(ROOT, "scripts/with-storage")
PATH = os.environ["PATH"] + ":/usr/sbin"
ROW = re.compile(r"\{ id: '(.*?)', name: '(.*?)', .*?, path: '(.*?)' \},")
NAMES = ("Acceptance test 3rd floor", "Prüfung Süd", "ratio 100% (final)", "semi;colon $HOME")


def read(*path):
    with open(os.path.join(*path), "rb") as file:
        return file.read()


class Server(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        for tool in ("lighttpd", "curl", "zip", "weasyprint", "pdftotext"):
            assert shutil.which(tool, path=PATH), f"{tool} is missing: scripts/install-dependencies demo test"
        cls.dir = tempfile.mkdtemp(prefix="fileman-server-")
        cls.addClassCleanup(shutil.rmtree, cls.dir)
        for name in ("bin", "cgi-bin"):
            os.makedirs(f"{cls.dir}/usr-local/ktb/{name}")
        os.mkdir(f"{cls.dir}/tmp")
        shutil.copy(f"{ROOT}/tools/htm2pdf", f"{cls.dir}/usr-local/ktb/bin/")
        shutil.copy(f"{ROOT}/build/release/fileman.cgi", f"{cls.dir}/usr-local/ktb/cgi-bin/")
        subprocess.run([f"{ROOT}/sample/lay-out", f"{cls.dir}/home"], check=True, stdout=subprocess.DEVNULL)
        with socket.create_server(("127.0.0.1", 0)) as free:
            cls.port = free.getsockname()[1]
        environment = {"PATH": PATH, "FILEMAN_PORT": str(cls.port),
                       "FILEMAN_WWW": "/srv/build/www", "FILEMAN_CGI_DIR": "/usr/local/ktb/cgi-bin", "TZ": "UTC0"}
        server = subprocess.Popen([RUNNER, cls.dir, "lighttpd", "-D", "-f", "/srv/packaging/lighttpd.conf"],
                                  env=environment, start_new_session=True, stderr=subprocess.DEVNULL)
        cls.addClassCleanup(server.communicate)
        cls.addClassCleanup(os.killpg, server.pid, signal.SIGTERM)
        while subprocess.run(["curl", "-s", f"http://127.0.0.1:{cls.port}/js/fileman.js"], check=False,
                             stdout=subprocess.DEVNULL).returncode != 0:
            assert server.poll() is None, "lighttpd does not start: is it installed, and build/www built?"
            time.sleep(0.05)
        page = cls.get("fmtype=all")[1].decode()
        cls.records = {name: (identifier, path) for identifier, name, path in ROW.findall(page)}

    @classmethod
    def get(cls, query, place="cgi-bin/fileman.cgi", chosen=None):
        """Head and body of an answer; "chosen" are the ids, which curl escapes."""
        ids = [] if chosen is None else ["-G", "--data-urlencode", "rsltid=" + ",".join(chosen)]
        address = f"http://127.0.0.1:{cls.port}/{place}?{query}"
        answer = subprocess.run(["curl", "-sS", "-m", "120", "-i", *ids, address], capture_output=True, check=True)
        head, _, body = answer.stdout.partition(b"\r\n\r\n")
        return head.decode(), body

    def deliver(self, operation, names):
        head, body = self.get(f"opertype={operation}", chosen=[self.records.get(name, (name,))[0] for name in names])
        self.assertEqual(int(re.search("Content-Length: ?([0-9]+)", head)[1]), len(body))
        return re.search("Content-Disposition: ?attachment;filename=(.*)\r\n", head)[1], body

    def stored(self, path):
        return read(self.dir, path.lstrip("/"))

    def files_of(self, name):
        """The files that a download of the record brings, by the last parts of their paths."""
        top = os.path.dirname(self.records[name][1]).lstrip("/")
        wanted = re.compile(re.escape(name) + r"(|\..*|_files/.*)")
        found = (os.path.relpath(os.path.join(folder, file), f"{self.dir}/{top}")
                 for folder, _, files in os.walk(f"{self.dir}/{top}") for file in files)
        return {file: read(self.dir, top, file) for file in found if wanted.fullmatch(file)}

    def test_pages_arrive_as_the_program_writes_them(self):
        for query in ("fmtype=all", "fmtype=rslt&module=10G&port=10G+P1", "fmtype=prof", "fmtype=screen",
                      "filter=fpri&fmtype=all&module=1GE", "filter=fadv&jobid=%22%27%3Cb%3E%2541"):
            with self.subTest(query):
                written = subprocess.run([RUNNER, self.dir, "/usr/local/ktb/cgi-bin/fileman.cgi"], check=True,
                                         env={"QUERY_STRING": query, "TZ": "UTC0", "PATH": PATH},
                                         capture_output=True).stdout
                head, body = self.get(query)
                self.assertRegex(head, r"^HTTP/1\.1 200 OK\r\n(.*\r\n)*Content-[Tt]ype: ?text/html;charset=utf-8")
                self.assertEqual(body.decode(), written.partition(b"\n\n")[2].decode())
                for asset in re.findall(r'(?:src|href)="\.\./(.*?)"', body.decode()):
                    self.assertRegex(self.get("", asset)[0], r"^HTTP/1\.1 200 ")

    def test_a_view_sends_the_file_behind_four_bytes_that_its_length_does_not_count(self):
        for name in (*NAMES, "screen_001", "fiber_c", "m1"):
            with self.subTest(name):
                identifier, path = self.records[name]
                content = self.stored(path)
                head, body = self.get("opertype=view", chosen=[identifier])
                self.assertIn(f"Content-Length: {len(content)}\r\n", head + "\r\n")
                self.assertEqual(body, (b"\r\n\r\n" + content)[:len(content)])

    def test_downloads_bring_the_stored_files(self):
        for names in (NAMES[:1], (*NAMES, "screen_001", "unknown")):
            with self.subTest(names):
                name, archive = self.deliver("download", names)
                self.assertEqual(name, "tarn_download.zip")
                self.assertEqual({path.split("/", 1)[1]: data for path, data in entries(archive).items()},
                                 {path: data for known in names if known in self.records
                                  for path, data in self.files_of(known).items()})
        self.assertEqual(self.deliver("download", ["unknown"]), ("tarn_download.zip", b""))
        self.assertEqual(self.deliver("download", []), ("tarn_download.zip", b""))

    def test_pdf_exports_are_real_pdfs(self):
        name, pdf = self.deliver("pdf", NAMES[:1])
        self.assertEqual((name, pdf[:5]), (NAMES[0] + ".pdf", b"%PDF-"))
        text = subprocess.run(["pdftotext", "-", "-"], input=pdf, capture_output=True, check=True).stdout.decode()
        self.assertIn("Bert on 1GE Ethernet", text)
        name, archive = self.deliver("pdf", (*NAMES[1:3], "screen_001"))
        self.assertEqual((name, {path: data[:5] for path, data in entries(archive).items()}),
                         ("tarn_pdf.zip", {f"{name}.pdf": b"%PDF-" for name in (*NAMES[1:3], "screen_001")}))


if __name__ == "__main__":
    sys.exit(unittest.main())
