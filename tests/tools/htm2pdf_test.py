"""The PDF converter, on real files in private storage."""

import contextlib
import glob
import importlib.machinery
import importlib.util
import multiprocessing
import os
import random
import resource
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

CONVERTER = "/srv/tools/htm2pdf"
FOLDER = "/home/reports"
OUTPUT = "/tmp/pdf"
TASKS = "/tmp/htm2pdf_task_list"
# Files that the instrument or the runner puts into /tmp.
EXPECTED_IN_TMP = {"pdf", "htm2pdf_task_list", ".private-storage"}

sys.path[:0] = "/srv/sample", "/srv/tests/cgi"
import pictures  # noqa: E402
import reports  # noqa: E402
from storage import demand_private_storage, wait_until  # noqa: E402

demand_private_storage()


def write(name, data):
    path = os.path.join(FOLDER, name)
    Path(path).write_bytes(data)
    return path


def stem(path):
    return os.path.basename(path).split(".")[0]


def text_of(name):
    return subprocess.run(["pdftotext", f"{OUTPUT}/{name}.pdf", "-"], capture_output=True, check=True).stdout.decode()


def left_behind():
    return sorted(set(os.listdir("/tmp")) - EXPECTED_IN_TMP) + glob.glob(f"{OUTPUT}/.*")


def running_in(session):
    """The number of processes in a session that have not ended."""
    count = 0
    for path in glob.glob("/proc/[0-9]*/stat"):
        with contextlib.suppress(OSError), open(path, encoding="ascii", errors="replace") as file:
            state, _, _, its_session = file.read().rpartition(")")[2].split()[:4]
            count += state != "Z" and int(its_session) == session
    return count


def convert(print_file):
    """Prints in another way, in a session of its own."""
    os.setsid()
    resource.setrlimit(resource.RLIMIT_FSIZE, (1 << 16, 1 << 16))
    loader = importlib.machinery.SourceFileLoader("htm2pdf", CONVERTER)
    module = importlib.util.module_from_spec(importlib.util.spec_from_loader("htm2pdf", loader))
    loader.exec_module(module)
    module.SECONDS_A_FILE = 2
    module.print_file = lambda path: print_file(module, os.path.basename(path).decode())
    sys.exit(module.main([TASKS]))


def start_converter(names, print_file):
    """Starts a process that converts files of these names."""
    Path(TASKS).write_text("".join(f"/home/{name} -> {name}.pdf\n" for name in names), encoding="ascii")
    process = multiprocessing.get_context("fork").Process(target=convert, args=(print_file,))
    process.start()
    return process


class Converter(unittest.TestCase):
    def setUp(self):
        for path in (FOLDER, OUTPUT):
            shutil.rmtree(path, ignore_errors=True)
        os.makedirs(FOLDER)

    def convert(self, *lines):
        Path(TASKS).write_bytes(b"".join(os.fsencode(line) + b"\n" for line in lines))
        done = subprocess.run([CONVERTER, TASKS], capture_output=True, env={"PATH": "/usr/bin:/bin"})
        self.assertEqual((done.stdout, left_behind()), (b"", []))
        return done.returncode, done.stderr.decode("utf-8", "replace")

    def convert_files(self, *paths):
        return self.convert(*(f"{path} -> {stem(path)}.pdf" for path in paths))

    def test_every_file_gets_a_pdf_that_shows_it_or_says_why_not(self):
        canvas = pictures.Canvas(64, 48, "accent")
        os.mkfifo(f"{FOLDER}/fifo.html")
        os.mkdir(f"{FOLDER}/folder.html")
        os.truncate(write("large.html", b""), 1 << 26)
        os.symlink("/etc/passwd", f"{FOLDER}/link.html")
        shown = {"good.html": b"<p>measured value</p>", "broken.html": b"<table><td>measured value<b></i>&amp",
                 "latin.html": b"<meta charset=latin1>measured value \xff", "mtie": b"<html>measured value",
                 "shot.png": canvas.png(), "scope.jpg": canvas.jpeg(), "map.bmp": canvas.bmp(),
                 "a -> b.html": b"measured value", "Prüfung.html": b"measured value"}
        refused = {"fifo.html": "no regular file", "folder.html": "directory", "large.html": "too large",
                   "link.html": "symbolic links", "gone.html": "No such file", "trace.pcap": "packet capture",
                   "noise.html": "neither a report nor a picture"}
        for name, data in {**shown, "noise.html": bytes(64), "trace.pcap": reports.capture(random.Random(1))}.items():
            write(name, data)
        status, messages = self.convert_files(*(f"{FOLDER}/{name}" for name in [*refused, *shown]))
        self.assertEqual(status, 1, messages)
        self.assertEqual(len(os.listdir(OUTPUT)), len(shown) + len(refused), messages)
        for name in [*shown, *refused]:
            with self.subTest(name):
                says = refused.get(name) or ("measured value" if b"measured" in shown[name] else name)
                self.assertIn(says, text_of(stem(name)))
                self.assertEqual(f"htm2pdf: print {FOLDER}/{name}: " in messages, name in refused, messages)
        self.assertEqual(self.convert_files(f"{FOLDER}/trace.pcap")[0], 0, "a capture is not a failure")

    def test_names_that_leave_the_output_directory_are_skipped_and_named(self):
        report = write("good.html", b"measured value")
        unusable = [f"{report} -> ../evil.pdf", f"{report} -> /tmp/evil.pdf", f"{report} -> evil.sh", "no arrow"]
        status, messages = self.convert(*unusable, f"{report} -> good.pdf", f"{report} -> other.pdf")
        self.assertEqual((status, sorted(os.listdir(OUTPUT))), (1, ["good.pdf", "other.pdf"]), messages)
        for line in unusable:
            self.assertIn(f"htm2pdf: read the task {line}: ", messages)

    def test_a_report_reaches_only_its_own_directory(self):
        with socket.create_server(("127.0.0.1", 0)) as server:
            server.settimeout(0)
            address = f"http://127.0.0.1:{server.getsockname()[1]}/x"
            os.mkdir(f"{FOLDER}/own_files")
            write("own_files/style.css", b"p::after { content: ' own style' }")
            write("/home/secret.css", b"p::after { content: 'stolen' }")
            os.symlink("/home/secret.css", f"{FOLDER}/link.css")
            sheets = ["own_files/style.css", "link.css", "../secret.css", "file:///home/secret.css", address]
            links = "".join(f'<link rel="stylesheet" href="{sheet}">' for sheet in sheets)
            page = f'{links}<link rel="attachment" href="/etc/passwd"><img src="{address}"><p>text</p>'
            status, messages = self.convert_files(write("own.html", page.encode()))
            self.assertEqual((status, text_of("own").split()), (0, ["text", "own", "style"]), messages)
            self.assertNotIn(b"/EmbeddedFile", Path(f"{OUTPUT}/own.pdf").read_bytes())
            self.assertRaises(BlockingIOError, server.accept)

    def test_a_report_that_fails_does_not_stop_the_others(self):
        def print_file(module, name):
            if name == "endless":
                time.sleep(60)
            if name == "crash":
                os.abort()
            return module.notice(name.encode(), "measured") + bytes(1 << 17 if name == "large" else 0)
        measured = {"endless": False, "crash": False, "large": False, "c": True, "d": True}
        converter = start_converter(measured, print_file)
        converter.join(50)
        self.assertEqual(converter.exitcode, 1)
        self.assertEqual({name: "measured" in text_of(name) for name in measured}, measured)
        self.assertEqual(left_behind(), [])

    def test_any_end_of_the_converter_ends_all_its_processes(self):
        def print_file(module, name):
            tempfile.mkdtemp()
            time.sleep(1.5)
            return module.notice(name.encode(), "printed")
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGKILL):
            with self.subTest(number.name):
                shutil.rmtree(OUTPUT, ignore_errors=True)
                converter = start_converter(["a", "b", "c", "d"], print_file)
                at_once = min(4, os.cpu_count())
                self.assertTrue(wait_until(lambda: len(glob.glob(f"{OUTPUT}/.htm2pdf.*/*/*")) == at_once))
                os.kill(converter.pid, number)
                converter.join()
                self.assertEqual(converter.exitcode, -number)
                self.assertTrue(wait_until(lambda: not running_in(converter.pid)))
                self.assertEqual(glob.glob(f"{OUTPUT}/*.pdf"), [])
                self.assertEqual(len(left_behind()), number == signal.SIGKILL, "one directory, inside /tmp/pdf")

    def test_an_output_directory_that_others_can_write_is_refused(self):
        report = write("good.html", b"measured value")
        os.symlink(FOLDER, OUTPUT)
        self.assertEqual(self.convert_files(report)[0], 1)
        os.unlink(OUTPUT)
        os.mkdir(OUTPUT)
        os.chmod(OUTPUT, 0o777)
        self.assertEqual(self.convert_files(report)[0], 1)
        self.assertEqual((os.listdir(OUTPUT), os.listdir(FOLDER)), ([], ["good.html"]))


if __name__ == "__main__":
    unittest.main()
