#!/usr/bin/python3
"""streaming.py PROGRAM: downloads of strict answers, whose archives are written straight from the storage.

Readers of three kinds take the archives apart: Python's, unzip and, where it is installed, 7zz.
"""

import concurrent.futures
import io
import os
import random
import shutil
import subprocess
import sys
import unittest
import zipfile
from urllib.parse import quote_from_bytes

import storage
from storage import BERT

STORED, DEFLATED = zipfile.ZIP_STORED, zipfile.ZIP_DEFLATED
DATE = (2001, 9, 9, 3, 46, 40)  # of the tree's files, in its zone


def place(name):
    return f"[{name}]-[Bit Errors]-[SFP (optical)]-[Ethernet Tests]"


def start(names, before=(), method="GET"):
    """Unbuffered, so that a part of the answer may be left to another reader. A name stands for that of a report."""
    ids = ",".join(quote_from_bytes(os.fsencode(name if name.startswith("Ethernet_") else
                                                "Ethernet_SFP_BERT_Result_" + name)[:255], "") for name in names)
    return subprocess.Popen([*before, PROGRAM], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                            bufsize=0, env=storage.environment("opertype=download&rsltid=" + ids, REQUEST_METHOD=method,
                                                               FILEMAN_ANSWERS="strict"))


def own_lines(messages):
    return [line for line in messages.decode(errors="replace").splitlines() if line.startswith("fileman: ")]


def finish(process):
    """Header, body and own lines on standard error of a request that has to end well."""
    out, messages = process.communicate(timeout=120)
    assert process.returncode == 0, (process.returncode, messages)
    head, _, body = out.partition(b"\r\n\r\n")
    return head.decode(), body, own_lines(messages)


def download(*names, **how):
    return finish(start(names, **how))


def opened(body):
    return zipfile.ZipFile(io.BytesIO(body))


def entries(body):
    with opened(body) as archive:
        return {info.filename: archive.read(info) for info in archive.infolist()}


def readers(path, commands=("unzip -tqq", "7zz t -bso0")):
    """Other readers find no fault."""
    for command in commands:
        if shutil.which(command.split()[0]):
            done = subprocess.run([*command.split(), path], stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, check=False)
            assert (done.returncode, done.stderr) == (0, b""), done


class Streaming(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.tree = storage.Tree()
        self.tree.make("basic")

    def write(self, name, data=b"data"):
        self.tree.write(os.fsencode(BERT) + b"/" + os.fsencode(name), data)

    def link(self, target, name):
        os.symlink(target, self.tree.place(f"{BERT}/{name}"))

    def readers_agree(self, body):
        with open("/tmp/archive.zip", "wb") as file:
            file.write(body)
        readers(file.name)

    def test_a_record_brings_its_companions(self):
        picture = b"\x89PNG" + bytes(5000)
        for name in ("one.html", "one.xml", "one", "one_more.html", "two.html", "one_files/deep/er.txt"):
            self.write(name, name.encode())
        self.write("one_files/chart.PNG", picture)
        os.mkdir(self.tree.place(BERT + "/one_files/empty"))
        os.mkfifo(self.tree.place(BERT + "/one.fifo"))
        for name, target in (("loop", "."), ("outside", "/etc/passwd"), ("dangling", "nothing"), ("near", "chart.PNG"),
                             ("far", f"/home/{BERT}/two.html")):
            self.link(target, "one_files/" + name)
        self.tree.write("1ge/kte-prof/sfpport/bert-setup/one.html", b"profile")
        _, body, messages = download("one", "Ethernet_SFP_BERT_Profile_one")
        missing = entries(body).pop("MISSING.txt").decode()
        with opened(body) as archive:
            found = {info.filename: (archive.read(info), info.compress_type, info.date_time, info.flag_bits,
                                     oct(info.external_attr >> 16)) for info in archive.infolist()[:-1]}
            self.assertEqual(archive.infolist()[-1].filename, "MISSING.txt")
        plain = {"one": b"one", "one.html": b"one.html", "one.xml": b"one.xml", "one_files/far": b"two.html",
                 "one_files/deep/er.txt": b"one_files/deep/er.txt", "one_files/near": picture}
        wanted = {f"{place('one')}/{name}": (data, DEFLATED, DATE, 8, "0o100644") for name, data in plain.items()}
        wanted[place("one") + "/one_files/chart.PNG"] = (picture, STORED, DATE, 8, "0o100644")
        wanted[place("one") + " (2)/one.html"] = (b"profile", DEFLATED, DATE, 8, "0o100644")
        empty = found.pop(place("one") + "/one_files/empty/")
        self.assertEqual((empty[0], empty[4]), (b"", "0o40755"))
        self.assertEqual(found, wanted)
        for name, why in (("one.fifo", "neither a file nor a link to one"), ("one_files/dangling", "it is no longer stored"),
                          ("one_files/loop", "neither a file nor a link to one"),
                          ("one_files/outside", "it lies outside the storage")):
            self.assertIn(f"\n/home/{BERT}/{name}: {why}\n", missing)
            self.assertIn(f"fileman: download /home/{BERT}/{name}: left out, {why}", messages)
        self.assertEqual(len(messages), 4)
        self.readers_agree(body)

    def test_names_that_no_command_could_carry(self):
        names = {b"-rf": "-rf", b"it's \"$(x)`;|*?": "it's \"$(x)`;|*?", b"\xc3\xa4": "\u00e4", b"back\\slash": "back%5Cslash",
                 b"C:evil,&=": "C%3Aevil,&=", b"new\nline": "new%0Aline", b"latin\xe4": "latin%E4", b"50%41": "50%2541",
                 b"n" * 240: "n" * 240}
        for name in names:
            self.write(os.fsdecode(name + b".html"), name)
            self.write(os.fsdecode(name + b"_files/\xff"), name)
        _, body, messages = download(*map(os.fsdecode, names))
        self.assertEqual(messages, [])
        found = entries(body)
        for name, plain in names.items():
            top = [entry for entry in found if entry.endswith(f"/{plain}.html")]
            self.assertEqual([(found[entry], found[entry[:-5] + "_files/%FF"]) for entry in top], [(name, name)])
            self.assertLessEqual(len(top[0].split("/")[0].encode()), 255)
        for name in (".a.html", ".b.html", ".c"):
            self.write(name)
        hidden = [entry.removeprefix(place("")) for entry in entries(download("Ethernet_SFP_BERT_Result_")[1])]
        self.assertIn(hidden, (["/.a.html", " (2)/.b.html"], ["/.b.html", " (2)/.a.html"]))
        with opened(body) as archive:
            for info in archive.infolist():
                self.assertEqual(bool(info.flag_bits & 0x800), not info.filename.isascii())
        self.readers_agree(body)

    def test_what_cannot_be_opened_is_named(self):
        for name in ("closed.html", "closed.xml", "locked.html"):
            self.write(name)
        os.chmod(self.tree.place(BERT + "/closed.html"), 0)
        os.chmod(self.tree.place(BERT + "/locked.html"), 0)
        _, body, _ = download("closed", before=storage.NO_ROOT_RIGHTS)
        self.assertEqual(sorted(entries(body)), ["MISSING.txt", place("closed") + "/closed.xml"])
        self.assertIn(f"/home/{BERT}/closed.html: Permission denied\n".encode(), entries(body)["MISSING.txt"])
        _, body, messages = download("closed", "gone")
        self.assertIn(b"\nEthernet_SFP_BERT_Result_gone: no such result\n", entries(body)["MISSING.txt"])
        self.assertEqual(messages, ["fileman: download Ethernet_SFP_BERT_Result_gone: left out, no such result"])
        for names, how, status in ((["gone"], (), 404), (["locked"], storage.NO_ROOT_RIGHTS, 500)):
            for method in ("GET", "HEAD"):
                head, body, _ = download(*names, before=how, method=method)
                self.assertIn(f"Status: {status} ", head)
                self.assertNotIn(b"PK", body)

    def test_the_header_tells_what_comes(self):
        self.write("one.html")
        head, body, _ = download("one")
        for line in ("Content-Type: application/zip", 'Content-Disposition: attachment; filename="fileman_download.zip"'):
            self.assertIn(line, head.split("\r\n"))
        self.assertNotIn("Content-Length", head)
        self.assertEqual(download("one", method="HEAD"), (head, b"", []))
        self.assertEqual(list(entries(body).values()), [b"data"])

    def test_a_file_that_changes_is_cut_or_breaks_the_archive_off(self):
        """The pipe is full while the file changes."""
        size = 1 << 20
        for name, change, is_whole in (("grows", 2 * size, True), ("shrinks", size // 2, False)):
            content = random.randbytes(size)
            self.write(name + ".png", content)
            with start([name]) as process:
                first = process.stdout.read(1000)
                os.truncate(self.tree.place(f"{BERT}/{name}.png"), change)
                rest, messages = process.communicate()
            body = (first + rest).partition(b"\r\n\r\n")[2]
            self.assertEqual((process.returncode, b"PK\5\6" in body), (0, is_whole))
            if is_whole:
                self.assertEqual(list(entries(body).values()), [content])
            else:
                self.assertRegex("\n".join(own_lines(messages)), "^fileman: pack .*/shrinks.png: the archive breaks off, .*$")

    def test_large_files_and_many(self):
        self.write("large.html", b"")
        for name in ("a.png", "b.txt"):
            self.write(f"large_files/{name}", b"")
        os.truncate(self.tree.place(BERT + "/large_files/a.png"), (4 << 30) + 5)
        for number in range(66000):
            with open(f"/home/{BERT}/large_files/{number}", "wb"):
                pass
        with open("/tmp/archive.zip", "wb") as file, start(["large"]) as process:
            while process.stdout.readline() not in (b"\r\n", b""):
                pass
            subprocess.run(["dd", "conv=sparse", "bs=64k", "iflag=fullblock", "of=" + file.name, "status=none"],
                           stdin=process.stdout, check=True)
        with zipfile.ZipFile("/tmp/archive.zip") as archive:
            self.assertEqual((len(archive.infolist()), max(info.file_size for info in archive.infolist())),
                             (66003, (4 << 30) + 5))
            self.assertIsNone(archive.testzip())
        readers("/tmp/archive.zip", ("unzip -Zt", "7zz l -bso0"))

    def test_a_reader_that_leaves_ends_it(self):
        self.write("one.png", random.randbytes(1 << 20))
        with start(["one"]) as process:
            process.stdout.read(1)
            process.stdout.close()
            self.assertEqual(own_lines(process.stderr.read()), ["fileman: write the response: Broken pipe"])
        self.assertEqual(process.returncode, 0)

    def test_twenty_at_once_wait_for_nobody_and_leave_nothing(self):
        """Each has begun while nineteen others hold what they have begun, too."""
        for number in range(20):
            self.write(f"report{number}.png", random.randbytes(1 << 20))
        before = sorted(os.listdir("/tmp"))
        running = [start([f"report{number}"]) for number in range(20)]
        begun = [process.stdout.read(1) for process in running]
        self.assertEqual(sorted(os.listdir("/tmp")), before)
        with concurrent.futures.ThreadPoolExecutor(len(running)) as pool:
            answers = list(pool.map(finish, reversed(running)))
        self.assertEqual((len(answers), b"".join(begun)), (20, begun[0] * 20))
        for number, (_, body, _) in zip(reversed(range(20)), answers):
            name = f"report{number}"
            with open(self.tree.place(f"{BERT}/{name}.png"), "rb") as file:
                self.assertEqual(entries(body), {f"{place(name)}/{name}.png": file.read()})
        self.assertEqual(sorted(os.listdir("/tmp")), before)


if __name__ == "__main__":
    if os.environ.get("FILEMAN_PRIVATE_STORAGE") != "1" or not os.path.exists("/tmp/.private-storage"):
        sys.exit("streaming: to be run inside scripts/with-storage")
    PROGRAM = os.path.abspath(sys.argv.pop(1))
    unittest.main()
