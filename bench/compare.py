"""compare.py [--quick]

Makes the trees with results, runs the rivals and prints the table. bench/run starts it behind scripts/with-storage, in
the root of the checkout.
"""

import contextlib
import os
import re
import shutil
import socket
import statistics
import subprocess
import sys
import time

PROGRAM = "build/release/fileman.cgi"
FLOOR, HELLO, MEASURE = "build/bench/floor", "build/bench/hello", "build/bench/measure"
SMALL, MIDDLE, LARGE = 1000, 10000, 100000
TREES = "/tmp/trees"
WALK = ("/home", "-type", "f", "-name", "*.html", "-printf", "%p %f %C@\\n")
FILTERS = {
    "one module of eight": "fmtype=rslt&module=10G",
    "one port": "fmtype=rslt&port=10G%20P1",
    "file-name prefix (a fifth)": "fmtype=rslt&prefix=lab",
    "job id (every 24th; every eighth tells one)": "fmtype=rslt&jobid=JOB-1",
}
# The requests to the web server with the sample instrument. These lists have no diagnostic lines before the header,
# because wrk refuses such lines.
SERVED = {
    "the screenshots": "fmtype=screen",
    "the results of five modules": "fmtype=rslt&module=1GE,40GE,100G,Cable,OSA",
}
BASE_MEMORY = 2 * 1024 * 1024


class Figures:
    """The figures that bench/measure prints for one rival."""

    def __init__(self, fields):
        self.cpu, self.wall, self.least, resident, self.faults, self.bytes = map(int, fields)
        self.resident = resident * 1024


class Rivals:
    """Programs that run one after the other, each with its tree mounted on /home."""

    def __init__(self):
        self.words = []

    def add(self, name, tree, *command, **variables):
        words = [name, tree, *(f"{key}={value}" for key, value in variables.items()), *command]
        self.words += ["--", *words] if self.words else words

    def add_lists(self, count):
        """Adds all rivals that list everything, on the tree with this number of results."""
        place = tree(count)
        size = len(answer("fmtype=all", place))
        self.add(f"floor {count}", place, FLOOR, "/home", str(count), str(size))
        self.add(f"all {count}", place, PROGRAM, QUERY_STRING="fmtype=all")
        self.add(f"strict {count}", place, PROGRAM, QUERY_STRING="fmtype=all", FILEMAN_ANSWERS="strict")
        self.add(f"results {count}", place, PROGRAM, QUERY_STRING="fmtype=rslt")
        self.add(f"find {count}", place, "/usr/bin/find", *WALK)
        self.add(f"bfs {count}", place, "/usr/bin/bfs", *WALK)
        self.add(f"Python {count}", place, "/usr/bin/python3", "bench/listing.py")

    def run(self, rounds):
        lines = subprocess.run((MEASURE, str(rounds), *self.words), check=True, stdout=subprocess.PIPE, text=True).stdout
        rows = [line.split("\t") for line in lines.splitlines()]
        return {name: Figures(fields) for name, *fields in rows}


def say(text):
    print(f"bench: {text}", file=sys.stderr, flush=True)


def tree(count):
    """Makes the tree with this number of results. For 0 it is empty, without a configuration."""
    place = f"{TREES}/{count}"
    if not os.path.isdir(place):
        say(f"laying out {count} results")
        os.makedirs(place)
        if count > 0:
            subprocess.run(("bench/make-tree", place, str(count)), check=True)
    return place


def unused_document():
    """Makes an instrument with a configuration but without stored files."""
    place = f"{TREES}/document"
    os.makedirs(f"{place}/.resultmanager")
    shutil.copy("sample/result-config-ktd.xml", f"{place}/.resultmanager/")
    return place


def sample():
    place = f"{TREES}/sample"
    subprocess.run(("sample/lay-out", place), check=True)
    return place


@contextlib.contextmanager
def on_home(place):
    subprocess.run(("mount", "--bind", place, "/home"), check=True)
    try:
        yield
    finally:
        subprocess.run(("umount", "-l", "/home"), check=True)


def answer(query, place):
    with on_home(place):
        return subprocess.run(PROGRAM, env={"QUERY_STRING": query}, check=True, stdout=subprocess.PIPE).stdout


def check_same_files(count):
    """Checks that every rival lists all files of the tree."""
    rows = answer("fmtype=all", tree(count)).count(b"\n\t\t{ id: ")
    with on_home(tree(count)):
        found = subprocess.run(("/usr/bin/find", *WALK), check=True, stdout=subprocess.PIPE).stdout.count(b"\n")
    if (rows, found) != (count, count):
        sys.exit(f"bench: of {count} files {rows} are listed and {found} found")


def instructions(place, *command, query=""):
    trace = ("valgrind", "--tool=callgrind", "--cache-sim=no", "--callgrind-out-file=/dev/null")
    with on_home(place):
        told = subprocess.run((*trace, *command), env={"QUERY_STRING": query, "PATH": os.environ["PATH"]}, check=True,
                              stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True).stderr
    return int(re.search(r"Collected : (\d+)", told)[1])


LIGHTTPD = """
server.modules = ( "mod_cgi" )
server.document-root = "/tmp/www"
server.bind = "127.0.0.1"
server.port = {port}
server.errorlog = "/tmp/lighttpd.log"
cgi.assign = ( ".cgi" => "" )
"""


@contextlib.contextmanager
def web_server():
    os.makedirs("/tmp/www", exist_ok=True)
    shutil.copy(PROGRAM, "/tmp/www/fileman.cgi")
    shutil.copy(HELLO, "/tmp/www/hello.cgi")
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        port = probe.getsockname()[1]
    with open("/tmp/lighttpd.conf", "w", encoding="ascii") as conf:
        conf.write(LIGHTTPD.format(port=port))
    server = subprocess.Popen(("lighttpd", "-D", "-f", "/tmp/lighttpd.conf"), env={"PATH": "/usr/sbin:/usr/bin"})
    try:
        time.sleep(0.5)
        yield port
    finally:
        server.terminate()
        server.wait()


def requests_a_second(port, path, seconds):
    told = subprocess.run(("wrk", "-t1", "-c4", f"-d{seconds}s", f"http://127.0.0.1:{port}/{path}"), check=True,
                          stdout=subprocess.PIPE, text=True).stdout
    if "Non-2xx" in told or "Socket errors" in told:
        sys.exit(f"bench: {path} is not answered:\n{told}")
    return float(re.search(r"Requests/sec:\s*([\d.]+)", told)[1])


def serve(place, queries, rounds, seconds):
    """Returns the medians of requests per second: for hello, and for each query. They are measured in turn."""
    paths = ["hello.cgi", *(f"fileman.cgi?{query}" for query in queries)]
    told = {path: [] for path in paths}
    with on_home(place), web_server() as port:
        for _ in range(rounds):
            for path in paths:
                told[path].append(requests_a_second(port, path, seconds))
    return [statistics.median(told[path]) for path in paths]


class Table:
    def __init__(self):
        print("| what | ours | rival | ratio | goal | reached |\n|---|---|---|---|---|---|")

    @staticmethod
    def row(what, ours, rival, unit, goal=None, at_least=False):
        ratio = ours / rival
        reached = "" if goal is None else "yes" if (ratio >= goal if at_least else ratio <= goal) else "no"
        limit = "" if goal is None else f"{'>=' if at_least else '<='} {goal}"
        print(f"| {what} | {ours:,.{unit[1]}f} {unit[0]} | {rival:,.{unit[1]}f} {unit[0]} | {ratio:.2f} | {limit} "
              f"| {reached} |", flush=True)


MILLISECONDS = ("ms", 2)
INSTRUCTIONS = ("k instr", 0)


def print_start(table, start):
    def cpu(name):
        return start[name].cpu / 1000

    table.row("empty instrument : hello", cpu("empty"), cpu("hello"), MILLISECONDS, 1.3)
    table.row("nothing stored, with the sample's document : hello", cpu("document"), cpu("hello"), MILLISECONDS)
    table.row("sample instrument : hello", cpu("sample"), cpu("hello"), MILLISECONDS)
    table.row("sample instrument : floor", cpu("sample"), cpu("sample's floor"), MILLISECONDS)


def print_lists(table, figures, count, goals):
    def cpu(name):
        return figures[f"{name} {count}"].cpu / 1000

    table.row(f"{count:,} results, all : floor", cpu("all"), cpu("floor"), MILLISECONDS, 1.15 if goals else None)
    table.row(f"{count:,} results, an empty filter : floor", cpu("results"), cpu("floor"), MILLISECONDS,
              1.15 if goals else None)
    table.row(f"{count:,} results, strict answers : default", cpu("strict"), cpu("all"), MILLISECONDS, 1.02)
    for rival in ("find", "bfs", "Python"):
        goal = 1 if goals and rival != "Python" else None
        table.row(f"{count:,} results : {rival}", cpu("all"), cpu(rival), MILLISECONDS, goal)


def print_filters(table, figures, count):
    for name in FILTERS:
        table.row(f"{count:,} results, {name} : floor of all", figures[name].cpu / 1000,
                  figures[f"floor {count}"].cpu / 1000, MILLISECONDS)


def print_growth(table, figures, few, many):
    table.row(f"{many:,} : {few:,} results", figures[f"all {many}"].cpu / 1000, figures[f"all {few}"].cpu / 1000,
              MILLISECONDS, 10.5)
    for what in ("all", "results"):
        resident = figures[f"{what} {many}"].resident
        record = max(0, resident - BASE_MEMORY) / many
        print(f"| memory at {many:,} results ({what}), bytes a record above 2 MiB | {record:.0f} | "
              f"{resident / 1024 / 1024:.1f} MiB in all | | <= 600 | {'yes' if record <= 600 else 'no'} |")


def print_served(table, empty, sample):
    what = "requests a second through lighttpd, "
    hello, listing = empty
    table.row(what + "empty instrument : hello", listing, hello, ("/s", 0))
    hello, *listings = sample
    for name, listing in zip(SERVED, listings):
        table.row(f"{what}{name} of the sample : hello", listing, hello, ("/s", 0), 0.85, True)


def print_instructions(table):
    say("counting instructions")
    empty = instructions(tree(0), PROGRAM, query="fmtype=all")
    table.row("instructions, empty instrument : hello", empty / 1000, instructions(tree(0), HELLO) / 1000, INSTRUCTIONS)
    few, many = (instructions(tree(count), PROGRAM, query="fmtype=all") for count in (SMALL, MIDDLE))
    floors = [instructions(tree(count), FLOOR, "/home", str(count), str(280 * count)) for count in (SMALL, MIDDLE)]
    table.row("instructions a record outside the kernel : floor", (many - few) / (MIDDLE - SMALL),
              (floors[1] - floors[0]) / (MIDDLE - SMALL), ("instr", 0))


def measure(quick):
    most = MIDDLE if quick else LARGE
    for count in (SMALL, MIDDLE, most):
        check_same_files(count)
    start = Rivals()
    start.add("hello", tree(0), HELLO)
    start.add("empty", tree(0), PROGRAM, QUERY_STRING="fmtype=all")
    start.add("document", unused_document(), PROGRAM, QUERY_STRING="fmtype=all")
    place = sample()
    page = answer("fmtype=all", place)
    start.add("sample", place, PROGRAM, QUERY_STRING="fmtype=all")
    start.add("sample's floor", place, FLOOR, "/home", str(page.count(b"\n\t\t{ id: ")), str(len(page)))
    small, large = Rivals(), Rivals()
    small.add_lists(SMALL)
    for count in dict.fromkeys((MIDDLE, most)):
        large.add_lists(count)
    for name, query in FILTERS.items():
        large.add(name, tree(most), PROGRAM, QUERY_STRING=query)
    say("measuring start-up")
    started = start.run(50 if quick else 300)
    say("measuring lists")
    return most, started, {**small.run(5 if quick else 25), **large.run(3 if quick else 21)}


def main(quick):
    most, started, figures = measure(quick)
    effort = (1, 1) if quick else (5, 3)
    served = serve(tree(0), ["fmtype=rslt"], *effort), serve(f"{TREES}/sample", SERVED.values(), *effort)
    table = Table()
    print_start(table, started)
    for count in dict.fromkeys((SMALL, MIDDLE, most)):
        print_lists(table, figures, count, count == LARGE)
    print_filters(table, figures, most)
    if most > MIDDLE:
        print_growth(table, figures, MIDDLE, most)
    print_served(table, *served)
    print_instructions(table)


if __name__ == "__main__":
    main("--quick" in sys.argv[1:])
