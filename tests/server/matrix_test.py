"""matrix_test.py PROGRAM [--write-docs]: the same requests, of both kinds, through every web server.

Each answer is compared with what the program itself writes for the request. The tables in docs/web-server.md
are made from the result; --write-docs puts them there.
"""

import glob
import os
import random
import re
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path
from typing import Callable, NamedTuple

# pylint: disable=wrong-import-position
import servers  # noqa: E402
from client import divided, fetch, send  # noqa: E402
from servers import storage  # noqa: E402
from storage import chosen  # noqa: E402
from instrument import CONVERTER, KEPT, entries  # noqa: E402

DOCS = "docs/web-server.md"
TARGET = "/cgi-bin/fileman.cgi?"
# Every byte that a name can hold before its first dot; two of them only strict answers can be asked for.
AWKWARD = [bytes(set(range(first, first + 64)) - set(b"\0./,&")) for first in range(0, 256, 64)]
SEPARATORS = b"comma, and & and =%41+"
POLICY_LINES = {"content-security-policy", "x-content-type-options", "cache-control", "referrer-policy",
                "cross-origin-resource-policy", "cross-origin-opener-policy"}


def padded(size):
    """A view whose query has the given size: an id that nobody has stands before the one that is there."""
    query = chosen("view", "", "line_1")
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
    diagnostics: bool = False
    pause: float = 0

    def send(self, port):
        return fetch(port, TARGET + self.query, self.pause, method=self.method, head=self.head)

    def expected(self, kind):
        """(status, content) as the program writes them without a server; (0, b"") when it writes nothing."""
        written = storage.request(servers.CGI, self.query, REQUEST_METHOD=self.method, FILEMAN_ANSWERS=kind,
                                  TZ=servers.ZONE, GATEWAY_INTERFACE="CGI/1.1", SERVER_PROTOCOL="HTTP/1.1").stdout
        header, body = divided(written)
        status = re.search(rb"^Status: (\d+)", header, re.M)
        return int(status[1]) if status else 200 if written else 0, self.content(body)


LIST = "fmtype=all"
VIEW = chosen("view", "line_1")
STRICT = ("strict",)
ROWS = (
    Row("list", LIST),
    Row("list as JSON Lines", LIST + "&format=jsonl", kinds=STRICT),
    Row("list as CSV", LIST + "&format=csv", kinds=STRICT),
    Row("primary filter page", "filter=fpri&fmtype=all"),
    Row("advanced filter page", "filter=fadv&fmtype=all"),
    Row("view of a report", VIEW),
    Row("view of a picture", "opertype=view&rsltid=__Screen_Result_shot"),
    Row("view of a missing file", chosen("view", "none")),
    *(Row("names of every byte", chosen("view", name)) for name in AWKWARD),
    Row("names of every byte", chosen("view", SEPARATORS), kinds=STRICT),
    Row("query of 8,160 bytes", padded(8160)),
    Row("query of 8 KiB", padded(8 << 10)),
    Row("query of 60 KiB", padded(60 << 10)),
    Row("unknown module", "fmtype=rslt&module=none"),
    Row("download", chosen("download", "line_1", "line_2"), archive),
    Row("one PDF", chosen("pdf", "line_1")),
    Row("several PDFs", chosen("pdf", "line_1", "line_2"), archive),
    Row("HEAD", VIEW, method="HEAD", kinds=STRICT),
    Row("POST", VIEW, method="POST", head=(("Content-Length", "0"),), kinds=STRICT),
    Row("list packed", LIST, head=(("Accept-Encoding", "gzip"),)),
)
CROWDS = (Row("20 clients at once", chosen("view", "large")),
          Row("20 downloads at once", chosen("download", "large"), archive, kinds=STRICT))
SLOW = Row("slow reader, nothing on the disk", chosen("view", "large"), pause=0.002)
LEAVING = chosen("download", "large")
# Once there is a result whose count the program tells, which default answers do ahead of the header.
DIAGNOSED = (Row("list with diagnostic lines", LIST, diagnostics=True),
             Row("view with diagnostic lines", VIEW, diagnostics=True))


def fill_storage():
    tree = storage.Tree()
    for name in (b"line_1", b"line_2", *AWKWARD, SEPARATORS):
        tree.write(os.fsencode(storage.BERT) + b"/" + name + b".html", b"report " + name)
    rng = random.Random(12)
    tree.write("ktb/screen/shot.png", b"\x89PNG\r\n\x1a\n" + rng.randbytes(50000))
    tree.write(storage.BERT + "/large.pcap", rng.randbytes(2 << 20))
    tree.write("root/ktb-rslt/sfpport/ping-result/ping.html")


def configure(diagnostics):
    """The records of the whole instrument give cause to diagnostic lines, or not."""
    text = re.sub(rb"<e .*?/>", b"", storage.read("basic.xml"))
    if not diagnostics:
        text = text.replace(b'test_name="Result" key="ping"', b'test_name="None" key="ping"')
    Path(os.fsdecode(storage.Tree().place(storage.CONFIGURATION))).write_bytes(text)


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
    if found == content and row.name == "list packed" and "content-encoding" not in answer.header:
        return "not packed"
    if found == content:
        return "whole" if not answer.fault else "whole, odd header"
    if isinstance(found, bytes) and found and content.startswith(found):
        return f"last {len(content) - len(found)} bytes cut"
    return "wrong body"


def is_running(path):
    """Whether a process of the program is there that was started from here."""
    try:
        return any(os.path.samefile(path, program) for program in glob.glob(servers.CGI + "*"))
    except OSError:
        return False


def is_tidy():
    """Whether nothing of a request is left after a while."""
    left = ("find", "/tmp", "-mindepth", "1", "-not", "-regex", KEPT, "-not", "-name", "*.log")
    return storage.wait_until(lambda: not any(map(is_running, glob.glob("/proc/[0-9]*/exe")))
                              and not subprocess.check_output(left))


class Column:
    """A server with one kind of answers: a cell for each row."""

    def __init__(self, kind, port, expected):
        self.kind, self.port, self.expected, self.cells = kind, port, expected, {}

    def ask(self, rows, at_once=4):
        """Of several requests in one cell the first that goes wrong is shown."""
        rows = [row for row in rows if self.kind in row.kinds]
        with ThreadPoolExecutor(at_once) as pool:
            for row, answer in zip(rows, pool.map(lambda row: row.send(self.port), rows)):
                if self.cells.get(row.name, "whole") == "whole":
                    self.cells[row.name] = judged(row, self.kind, self.expected[row], answer)

    def fill(self):
        configure(diagnostics=False)
        self.ask(ROWS)
        for row in CROWDS:
            self.ask([row] * 20, at_once=20)
        with servers.Watch() as watch:
            self.ask([SLOW])
        if watch.grown > 192 << 10:  # less stays in the memory of the server and the system
            self.cells[SLOW.name] = "kept on the disk"
        with send(self.port, TARGET + LEAVING)[1] as connection:
            connection.recv(1)
        self.cells["client that goes away"] = "tidy" if is_tidy() else "program goes on"
        configure(diagnostics=True)
        self.ask(DIAGNOSED)

    def fill_by_way_of_a_proxy(self):
        """One cell for the rows by way of a proxy that passes on only what HTTP allows."""
        server = servers.haproxy(self.port)
        through = Column(self.kind, server.port, self.expected)
        configure(diagnostics=False)
        try:
            through.ask([row for row in ROWS if "KiB" not in row.name and "packed" not in row.name])
            through.ask([CROWDS[0]] * 20, at_once=20)
        finally:
            server.stop()
        faults = [f"{name}: {text}" for name, text in through.cells.items() if text != "whole"]
        self.cells["through a strict proxy"] = faults[0] if faults else "whole"


def matrix(kind):
    """Cells by server and row."""
    servers.lay_out(kind)
    storage.make_program(f"{servers.PLACE}/bin/htm2pdf", CONVERTER)
    expected, columns = {}, {}
    for row in (*ROWS, *CROWDS, SLOW, *DIAGNOSED):
        if kind in row.kinds:
            configure(row.diagnostics)
            expected[row] = row.expected(kind)
    for name, start in servers.SERVERS.items():
        server = start()
        column = Column(kind, server.port, expected)
        try:
            column.fill()
            if kind == "strict":
                column.fill_by_way_of_a_proxy()
        finally:
            server.stop()
        columns[name] = column.cells
        # The next server runs the program as another user, who could not empty the staging areas.
        subprocess.run("rm -rf /tmp/* /tmp/.tarn*", shell=True, check=True)
    return columns


def table(columns):
    """The cells in Markdown."""
    names = dict.fromkeys(name for cells in columns.values() for name in cells)
    lines = [["", *columns], ["---"] * (len(columns) + 1)]
    lines += [[name, *(cells[name] for cells in columns.values())] for name in names]
    return "".join("| " + " | ".join(line) + " |\n" for line in lines)


def main(*options):
    fill_storage()
    columns = {kind: matrix(kind) for kind in ("default", "strict")}
    documented = made = Path(DOCS).read_text(encoding="utf-8")
    for kind, cells in columns.items():
        marks = f"(<!-- {kind} answers, made by tests/server/matrix_test.py -->\n).*?(<!-- end -->)"
        made, count = re.subn(f"(?s){marks}", r"\1" + table(cells) + r"\2", made)
        assert count == 1, f"no table of {kind} answers"
    if "--write-docs" in options:
        Path(DOCS).write_text(made, encoding="utf-8")
    elif made != documented:
        print("the tables are stale; --write-docs renews them:", *map(table, columns.values()), sep="\n")
    return made != documented


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
