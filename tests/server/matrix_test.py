"""matrix_test.py PROGRAM [--write-docs]: the same requests through every web server, for both kinds of answers.

Each answer is compared with what the program itself writes for the request. The tables in docs/web-server.md are made
from the result; --write-docs puts them there.
"""

import gzip
import os
import random
import re
import subprocess
import sys
import time
import unittest
from concurrent.futures import ThreadPoolExecutor
from typing import Callable, NamedTuple
from urllib.parse import quote_from_bytes

WRITE = "--write-docs" in sys.argv
if WRITE:
    sys.argv.remove("--write-docs")

# pylint: disable=wrong-import-position
import servers  # noqa: E402
from client import connect, divided, fetch, request  # noqa: E402
from servers import storage  # noqa: E402
from delivery import CONVERTER, KEPT, entries  # noqa: E402

DOCS = "docs/web-server.md"
KINDS = ("default", "strict")
TARGET = "/cgi-bin/fileman.cgi?"
ID = b"Ethernet_SFP_BERT_Result_"
# Every byte that a name can hold before its first dot; two of them only strict answers can be asked for.
AWKWARD = [bytes(byte for byte in range(first, first + 64) if byte not in b"\0./,&") for first in range(0, 256, 64)]
SEPARATORS = b"comma, and & and =%41+"
# Below this, an answer stays in the memory of the server and the system.
IN_MEMORY = 192 << 10
# What the program's answer may be after its way through a server that takes the request at all.
GOOD = ("whole", "last 4 bytes cut", "tidy", "not packed")
# What of the strict table is a limit of the server, and no fault.
LIMITS = {("busybox httpd", "query of 8 KiB"), ("busybox httpd", "query of 60 KiB")}
POLICY_LINES = {"content-security-policy", "x-content-type-options", "cache-control", "referrer-policy",
                "cross-origin-resource-policy", "cross-origin-opener-policy"}


def chosen(operation, *names):
    return f"opertype={operation}&rsltid=" + ",".join(quote_from_bytes(ID + name, safe="") for name in names)


def padded(size):
    """A view whose query has the given size: an id that nobody has stands before the one that is there."""
    query = chosen("view", b"", b"line_1")
    return query.replace("_,", "_" + "x" * (size - len(query)) + ",")


def archive(body):
    """The files of an archive that begins and ends as one; anything else as it is."""
    return entries(body) if body.startswith(b"PK\3\4") and body[-22:-18] == b"PK\5\6" else body


class Row(NamedTuple):
    """A request of the table, and what of its body is compared."""
    name: str
    query: str
    content: Callable = bytes
    method: str = "GET"
    head: tuple = ()
    kinds: tuple = ("default", "strict")

    def send(self, port, pause=0.0):
        return fetch(port, TARGET + self.query, pause, method=self.method, head=self.head)


LIST = "fmtype=all"
VIEW = chosen("view", b"line_1")
ROWS = (
    Row("list", LIST),
    Row("list as JSON Lines", LIST + "&format=jsonl", kinds=("strict",)),
    Row("list as CSV", LIST + "&format=csv", kinds=("strict",)),
    Row("primary filter page", "filter=fpri&fmtype=all"),
    Row("advanced filter page", "filter=fadv&fmtype=all"),
    Row("view of a report", VIEW),
    Row("view of a picture", "opertype=view&rsltid=__Screen_Result_shot"),
    Row("view of a missing file", chosen("view", b"none")),
    *(Row("names of every byte", chosen("view", name)) for name in AWKWARD),
    Row("names of every byte", chosen("view", SEPARATORS), kinds=("strict",)),
    Row("query of 8 KiB", padded(8 << 10)),
    Row("query of 60 KiB", padded(60 << 10)),
    Row("unknown module", "fmtype=rslt&module=none"),
    Row("download", chosen("download", b"line_1", b"line_2"), archive),
    Row("one PDF", chosen("pdf", b"line_1")),
    Row("several PDFs", chosen("pdf", b"line_1", b"line_2"), archive),
    Row("HEAD", VIEW, method="HEAD", kinds=("strict",)),
    Row("POST", VIEW, method="POST", head=(("Content-Length", "0"),), kinds=("strict",)),
)
CROWD = Row("20 clients at once", chosen("view", b"large"))
DOWNLOADS = Row("20 downloads at once", chosen("download", b"large"), archive, kinds=("strict",))
SLOW = Row("slow reader, nothing on the disk", chosen("view", b"large"))
LEAVING = Row("client that goes away", chosen("download", b"large"), archive)
# Once there is a result whose count the program tells, which default answers do ahead of the header.
DIAGNOSED = (Row("list with diagnostic lines", LIST), Row("view with diagnostic lines", VIEW))
PACKED = Row("list packed", LIST, head=(("Accept-Encoding", "gzip"),))


def fill_storage():
    tree = storage.Tree()
    configure("quiet")
    contents = {name: b"report " + name for name in (b"line_1", b"line_2", *AWKWARD, SEPARATORS)}
    for name, content in contents.items():
        tree.write(os.fsencode(storage.BERT) + b"/" + name + b".html", content)
    rng = random.Random(12)
    tree.write("ktb/screen/shot.png", b"\x89PNG\r\n\x1a\n" + rng.randbytes(50000))
    tree.write(storage.BERT + "/large.pcap", rng.randbytes(2 << 20))
    tree.write("root/ktb-rslt/sfpport/ping-result/ping.html")


def configure(diagnostics):
    """Storage that is "quiet", or one whose records of the whole instrument give cause to "diagnostics"."""
    text = re.sub(rb"<e .*?/>", b"", storage.read("basic.xml"))
    if diagnostics == "quiet":
        text = text.replace(b'test_name="Result" key="ping"', b'test_name="None" key="ping"')
    place = storage.Tree().place(storage.CONFIGURATION)
    with open(place + b".new", "wb") as file:
        file.write(text)
    os.rename(file.name, place)


def own_answer(row, kind):
    """(status, content) as the program writes them without a server; (0, b"") when it writes nothing."""
    more = {"FILEMAN_ANSWERS": "strict"} if kind == "strict" else {}
    environment = storage.environment(row.query.encode(), REQUEST_METHOD=row.method, GATEWAY_INTERFACE="CGI/1.1",
                                      SERVER_PROTOCOL="HTTP/1.1", TZ=servers.ZONE, **more)
    written = subprocess.run(servers.CGI, env=environment, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                             check=False).stdout
    header, body = divided(written)
    status = re.search(rb"^Status: (\d+)", header, re.M)
    return (int(status[1]) if status else 200 if written else 0), row.content(body)


def judged(row, kind, expected, answer):
    """What became of the program's answer on its way: "whole", or what is wrong with it."""
    status, content = expected
    if answer is None:
        return "no answer"
    if answer.status != status:
        return f"refused ({answer.status})" if status else f"the server's {answer.status}"
    if kind == "strict" and not POLICY_LINES <= answer.header.keys():
        return "no policy"
    found = row.content(answer.body)
    if found == content:
        return "whole" if not answer.fault else "whole, odd header"
    if isinstance(found, bytes) and found and content.startswith(found):
        return f"last {len(content) - len(found)} bytes cut"
    return "wrong body"


def running():
    """Whether a process of the program is there, of those that are started from here."""
    own = {(found.st_dev, found.st_ino) for found in map(os.stat, servers.programs())}
    for name in os.listdir("/proc"):
        try:
            found = os.stat(f"/proc/{name}/exe")
        except OSError:
            continue
        if (found.st_dev, found.st_ino) in own:
            return True
    return False


def left_in_tmp():
    return subprocess.check_output(("find", "/tmp", "-mindepth", "1", "-not", "-regex", KEPT, "-not", "-name", "*.log"))


def is_tidy():
    """Whether nothing of a request is left after a while."""
    for _ in range(100):
        if not running() and not left_in_tmp():
            return True
        time.sleep(0.1)
    return False


def on_disk():
    """Bytes below /tmp and /run, where the servers may keep what they cannot pass on."""
    rooms = [os.statvfs(place) for place in ("/tmp", "/run")]
    return sum((room.f_blocks - room.f_bfree) * room.f_frsize for room in rooms)


class Column:
    """A server with one kind of answers: a cell for each row."""

    def __init__(self, kind, port):
        self.kind, self.port, self.cells = kind, port, {}

    def judge(self, row, answer, expected):
        """Of several requests in one cell the first that goes wrong is shown."""
        if self.cells.get(row.name, "whole") == "whole":
            self.cells[row.name] = judged(row, self.kind, expected[row], answer)

    def ask(self, expected, rows):
        rows = [row for row in rows if self.kind in row.kinds]
        with ThreadPoolExecutor(4) as pool:
            for row, answer in zip(rows, pool.map(lambda row: row.send(self.port), rows)):
                self.judge(row, answer, expected)
        for row in rows:
            if row.name.startswith("query of") and self.cells[row.name].startswith("refused"):
                self.find_longest_query(expected, row)

    def find_longest_query(self, expected, row):
        """What a server that refuses a query of this size takes at most."""
        works, fails = 1000, len(row.query)
        while fails - works > 1:
            size = (works + fails) // 2
            if judged(row, self.kind, expected[row], row._replace(query=padded(size)).send(self.port)) in GOOD:
                works = size
            else:
                fails = size
        self.cells[row.name] += f", {works:,} bytes work"

    def ask_at_once(self, expected, row, count=20):
        if self.kind in row.kinds:
            with ThreadPoolExecutor(count) as pool:
                for answer in pool.map(lambda _: row.send(self.port), range(count)):
                    self.judge(row, answer, expected)

    def read_slowly(self, expected, row):
        before = most = on_disk()
        with ThreadPoolExecutor(1) as pool:
            answer = pool.submit(row.send, self.port, 0.002)
            while not answer.done():
                most = max(most, on_disk())
                time.sleep(0.002)
        self.judge(row, answer.result(), expected)
        if most - before > IN_MEMORY:
            self.cells[row.name] = "kept on the disk"

    def leave(self, row):
        with connect(self.port) as connection:
            connection.sendall(request(TARGET + row.query)[1])
            connection.recv(1)
        self.cells[row.name] = "tidy" if is_tidy() else "program goes on"

    def ask_packed(self, expected, row):
        answer = row.send(self.port)
        packed = "content-encoding" in answer.header
        self.judge(row, answer._replace(body=gzip.decompress(answer.body)) if packed else answer, expected)
        if not packed and self.cells[row.name].startswith("whole"):
            self.cells[row.name] = "not packed"


def empty_tmp():
    """Another server runs the program as another user, who could not empty the staging areas."""
    subprocess.run("rm -rf /tmp/* /tmp/.tarn*", shell=True, check=True)


def column(kind, port, expected):
    """All rows through the server at a port."""
    made = Column(kind, port)
    configure("quiet")
    made.ask(expected, ROWS)
    made.ask_packed(expected, PACKED)
    made.ask_at_once(expected, CROWD)
    made.ask_at_once(expected, DOWNLOADS)
    made.read_slowly(expected, SLOW)
    made.leave(LEAVING)
    configure("diagnostics")
    made.ask(expected, DIAGNOSED)
    return made.cells


def proxied(port, expected):
    """The rows by way of a proxy that passes on only what HTTP allows."""
    server = servers.haproxy(port)
    through = Column("strict", server.port)
    configure("quiet")
    try:
        through.ask(expected, [row for row in ROWS if "KiB" not in row.name])
        through.ask_at_once(expected, CROWD)
    finally:
        server.stop()
    return next((f"{name}: {text}" for name, text in through.cells.items() if text != "whole"), "whole")


def expected_answers(kind):
    expected = {}
    for diagnostics, rows in (("quiet", (*ROWS, PACKED, CROWD, DOWNLOADS, SLOW)), ("diagnostics", DIAGNOSED)):
        configure(diagnostics)
        with ThreadPoolExecutor(4) as pool:
            rows = [row for row in rows if kind in row.kinds]
            expected.update(zip(rows, pool.map(lambda row: own_answer(row, kind), rows)))
    return expected


def matrix(kind):
    """Cells by server and row."""
    servers.lay_out(kind)
    servers.write(f"{servers.PLACE}/bin/htm2pdf", CONVERTER.decode(), 0o755)
    expected = expected_answers(kind)
    columns = {}
    for name, start in servers.SERVERS.items():
        empty_tmp()
        server = start()
        try:
            columns[name] = column(kind, server.port, expected)
            if kind == "strict":
                columns[name]["through a strict proxy"] = proxied(server.port, expected)
        finally:
            server.stop()
    empty_tmp()
    return columns


def table(columns):
    """The cells in Markdown."""
    names = dict.fromkeys(name for cells in columns.values() for name in cells)
    lines = [["", *columns], ["---"] * (len(columns) + 1)]
    lines += [[name, *(cells[name] for cells in columns.values())] for name in names]
    return "".join("| " + " | ".join(line) + " |\n" for line in lines)


class Matrix(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        fill_storage()
        cls.columns = {kind: matrix(kind) for kind in KINDS}

    def test_every_cell_of_strict_answers_works(self):
        faults = {(server, row): text for server, cells in self.columns.get("strict", {}).items()
                  for row, text in cells.items() if text not in ("whole", "tidy", "not packed")}
        self.assertEqual(faults.keys(), LIMITS, faults)

    def test_the_documented_tables_are_current(self):
        with open(DOCS, encoding="utf-8") as file:
            text = file.read()
        made = text
        for kind, columns in self.columns.items():
            marks = f"(<!-- {kind} answers, made by tests/server/matrix_test.py -->\n).*?(<!-- end -->)"
            made, count = re.subn(marks, lambda found, columns=columns: found[1] + table(columns) + found[2], made,
                                  flags=re.S)
            self.assertEqual(count, 1, kind)
        if WRITE:
            with open(DOCS, "w", encoding="utf-8") as file:
                file.write(made)
        self.assertEqual(text, made, "stale; --write-docs renews them")


if __name__ == "__main__":
    unittest.main()
