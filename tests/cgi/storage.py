"""What all suites share: storage trees, requests as a web server starts them, made programs, and waiting.

A file in trees/ describes a tree, with one line per entry: "file PATH", "file PATH <- CONTENT", "dir PATH",
"fifo PATH", "sock PATH", "link PATH -> TARGET", "0000 PATH" (a mode). \\xNN is a byte, {N*TEXT} repeats.
The lines of trees/documents name what stands in the place of the configuration of a tree.
"""

import os
import re
import socket
import subprocess
import sys
import time
from pathlib import Path
from urllib.parse import quote_from_bytes

HERE = os.path.dirname(os.path.abspath(__file__))
CONFIGURATION = ".resultmanager/result-config-ktd.xml"
BERT = "1ge/kte-rslt/sfpport/bert-result"
RECORD = "Ethernet_SFP_BERT_Result_"  # the ids of the results in it begin so
# A time zone with daylight saving time that needs no zone files.
ZONE = "CET-1CEST,M3.5.0,M10.5.0/3"
# A sanitizer needs more addresses than a request may have.
LIMITS = {name: value for name, value in os.environ.items() if name == "FILEMAN_MEMORY_MIB"}
# By tree or document: what is changed in the usual configuration.
CHANGES = {
    "truncated": lambda text: text[:-200],
    "at-16-mib": lambda text: text + b" " * ((16 << 20) - len(text)),
    "beyond-16-mib": lambda text: text + b" " * ((16 << 20) + 1 - len(text)),
    "nested-128": lambda text: text.replace(b"<filter>", b"<x>" * 127 + b"</x>" * 127 + b"<FILTER>")
                                   .replace(b"</filter>", b"</FILTER>"),
    "byte-order-mark": lambda text: b"\xef\xbb\xbf" + text,
    "long-rows": lambda text: text.replace(b'name="MTIE"', b'name="' + b"m" * 40000 + b'"'),
}
NO_ROOT_RIGHTS = ("setpriv", "--bounding-set=-dac_override,-dac_read_search",
                  "--inh-caps=-dac_override,-dac_read_search")


def read(*path):
    return Path(HERE, *path).read_bytes()


def plain(text):
    text = re.sub(rb"\{(\d+)\*(.+?)\}", lambda found: int(found[1]) * found[2], text)
    return re.sub(rb"\\x(..)", lambda found: bytes.fromhex(found[1].decode()), text)


def same(found, expected, what=""):
    assert found == expected, f"{what}\n  expected {expected!r}\n  found    {found!r}"


def wait_until(condition, seconds=10):
    """Whether the condition holds in time."""
    end = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > end:
            return False
        time.sleep(0.05)
    return True


def is_served(port, address="127.0.0.1"):
    with socket.socket() as client:
        return client.connect_ex((address, port)) == 0


def write(path, text="", mode=0o644):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    Path(path).write_text(text, encoding="utf-8")
    os.chmod(path, mode)


def make_program(path, *script):
    """A shell script that can be run."""
    write(path, "\n".join(("#!/bin/sh", *script, "")), 0o755)


def demand_private_storage():
    """Ends a test that would write to the machine's own /home and /tmp."""
    if os.environ.get("FILEMAN_PRIVATE_STORAGE") != "1" or not os.path.exists("/tmp/.private-storage"):
        sys.exit("to be run inside scripts/with-storage")


def chosen(operation, *names, prefix=RECORD):
    """The query for records, each of which has its id from the prefix and a name, text or bytes."""
    ids = [quote_from_bytes((os.fsencode(prefix) + os.fsencode(name))[:255], "") for name in names]
    return f"opertype={operation}&rsltid={','.join(ids)}"


def environment(query, **more):
    """The environment of the program, with the status for a sanitizer report. A query of None is not set."""
    values = {"PATH": "/usr/bin:/bin", "TZ": ZONE, "ASAN_OPTIONS": "exitcode=86", **LIMITS, **more}
    return values if query is None else {**values, "QUERY_STRING": query}


def request(program, query, prefix=(), preexec_fn=None, **variables):
    """The finished process, which has to end by itself."""
    return subprocess.run([*prefix, program], env=environment(query, **variables), stdin=subprocess.DEVNULL,
                          capture_output=True, timeout=60, check=False, preexec_fn=preexec_fn)


def everything_stored(home="/home"):
    """All names and modes, and the content of the files."""
    return subprocess.check_output(("find", home, "-printf", "%p %M %l\\n", "-type", "f", "-exec", "cat", "{}", "+"))


class Tree:
    """Writes below a home directory; paths are text or bytes."""

    def __init__(self, home="/home"):
        self.home = os.fsencode(home)
        if home == "/home":
            demand_private_storage()

    def place(self, path):
        place = os.path.join(self.home, os.fsencode(path))
        os.makedirs(os.path.dirname(place), exist_ok=True)
        return place

    def write(self, path, data=b"<html>report</html>\n"):
        """A file whose modification time differs from the change time that pages show."""
        with open(self.place(path), "xb") as file:
            file.write(data)
        os.utime(file.name, (10 ** 9, 10 ** 9))

    def configuration(self, change=lambda text: text):
        self.write(CONFIGURATION, change(read("basic.xml")))

    def make(self, name):
        """Replaces the storage by the named tree; document:NAME is a tree with another configuration."""
        subprocess.run(["find", self.home, "-mindepth", "1", "-delete"], check=True)
        if name == "nothing":
            return
        kind, _, document = name.partition(":")
        lines = [line.split(None, 1) for line in read("trees", "documents").splitlines()]
        instead = [entry for name, entry in lines if name == document.encode()]
        if not instead:
            self.configuration(CHANGES.get(document or kind, lambda text: text))
        for line in instead + read("trees", kind).splitlines():
            if not line.startswith(b"#"):
                self.make_entry(*line.split(b" ", 1))
        if kind == "deep":
            self.make_deep(b"d", 3000)
            self.make_deep(b"n" * 255, 20)

    def make_entry(self, kind, rest):
        path, _, target = rest.partition(b" -> ")
        path, has_content, content = path.partition(b" <- ")
        place = self.place(plain(path))
        if kind == b"file":
            self.write(place, *([plain(content)] if has_content else []))
        elif kind == b"dir":
            os.mkdir(place)
        elif kind == b"link":
            os.symlink(target, place)
        elif kind == b"fifo":
            os.mkfifo(place)
        elif kind == b"sock":
            with socket.socket(socket.AF_UNIX) as end:
                end.bind(place)
        else:
            os.chmod(place, int(kind, 8))

    def make_deep(self, name, count):
        """Makes nested directories until their path is too long."""
        start = os.getcwd()
        os.chdir(self.home)
        for _ in range(count):
            os.mkdir(name)
            os.chdir(name)
        os.chdir(start)
