"""Makes storage trees for the tests, and starts the program like a web server.

A file in trees/ describes a tree, with one line per entry: "file PATH", "file PATH <- CONTENT", "dir PATH", "fifo PATH",
"sock PATH", "link PATH -> TARGET", "0000 PATH" (a mode). \\xNN is a byte, {N*TEXT} a text repeated.
"""

import os
import re
import socket
import subprocess

HERE = os.path.dirname(os.path.abspath(__file__))
CONFIGURATION = ".resultmanager/result-config-ktd.xml"
BERT = "1ge/kte-rslt/sfpport/bert-result"
# A time zone with daylight saving time that needs no zone files.
ZONE = "CET-1CEST,M3.5.0,M10.5.0/3"
# A sanitizer needs more addresses than a request may have.
LIMITS = {name: value for name, value in os.environ.items() if name == "FILEMAN_MEMORY_MIB"}
NO_ROOT_RIGHTS = ("setpriv", "--bounding-set=-dac_override,-dac_read_search",
                  "--inh-caps=-dac_override,-dac_read_search")


def read(*path):
    with open(os.path.join(HERE, *path), "rb") as file:
        return file.read()


def plain(text):
    text = re.sub(rb"\{(\d+)\*(.+?)\}", lambda found: int(found[1]) * found[2], text)
    return re.sub(rb"\\x(..)", lambda found: bytes.fromhex(found[1].decode()), text)


def environment(query, **more):
    """The environment of the program, with the exit status for a sanitizer report. A query of None is not set."""
    values = {"PATH": "/usr/bin:/bin", "TZ": ZONE, "ASAN_OPTIONS": "exitcode=86", **LIMITS, **more}
    return values if query is None else {**values, "QUERY_STRING": query}


class Tree:
    """Writes below a home directory; paths are text or bytes."""

    def __init__(self, home="/home"):
        self.home = os.fsencode(home)

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
        """Replaces the storage by the named tree."""
        subprocess.run(["find", self.home, "-mindepth", "1", "-delete"], check=True)
        kind, _, document = name.partition(":")
        if document:
            self.write(BERT + "/line_1.html")
            DOCUMENTS[document](self)
        elif kind != "nothing":
            self.configuration()
            for line in read("trees", kind).splitlines():
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
        here = os.open(self.home, os.O_RDONLY)
        for _ in range(count):
            os.mkdir(name, dir_fd=here)
            below = os.open(name, os.O_RDONLY, dir_fd=here)
            os.close(here)
            here = below
        os.close(here)


def changed(change):
    return lambda tree: tree.configuration(change)


def entry(line):
    return lambda tree: tree.make_entry(*line.replace(b"HERE", CONFIGURATION.encode()).split(b" ", 1))


def unreadable(tree):
    tree.configuration()
    entry(b"0000 HERE")(tree)


def long_row(tree):
    """Rows larger than the buffer of rows, between smaller ones."""
    tree.configuration(lambda text: text.replace(b'name="MTIE"', b'name="' + b"m" * 40000 + b'"'))
    tree.write("ktb/screen/shot.png")
    for name in ("m1", "m2"):
        tree.write(f"2g5/mtie-results/{name}/mtie/x")


# Objects at the path of the configuration document. The first ones configure nothing.
DOCUMENTS = {
    "missing": lambda tree: None, "unreadable": unreadable, "truncated": changed(lambda text: text[:-200]),
    "beyond-16-mib": changed(lambda text: text + b" " * ((16 << 20) + 1 - len(text))),
    "directory": entry(b"dir HERE"), "fifo": entry(b"fifo HERE"), "socket": entry(b"sock HERE"),
    "empty": entry(b"file HERE <- "), "no-xml": entry(b"file HERE <- hello"),
    "no-root": entry(b"file HERE <- <!-- only this -->"), "no-filter": entry(b"file HERE <- <r><filters/></r>"),
    "nested-129": entry(b"file HERE <- <r>{128*<x>}{128*</x>}<filter/></r>"),
    "nested-100000": entry(b"file HERE <- {100000*<x>}"), "attributes": entry(b"file HERE <- <r {100000*a='1' }/>"),
    "binary": entry(b"file HERE <- {999*\\x00\\xff}"),
    "nested-128": changed(lambda text: text.replace(b"<filter>", b"<x>" * 127 + b"</x>" * 127 + b"<FILTER>")
                                           .replace(b"</filter>", b"</FILTER>")),
    "at-16-mib": changed(lambda text: text + b" " * ((16 << 20) - len(text))),
    "long-row": long_row, "byte-order-mark": changed(lambda text: b"\xef\xbb\xbf" + text),
}
