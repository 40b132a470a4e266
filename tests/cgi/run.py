#!/usr/bin/python3
"""run.py PROGRAM [--update] [NAME...]

Runs the program as a CGI process on named storage trees and compares its whole responses with expected/NAME. Started
once, inside scripts/with-storage. --update writes what was found; read the difference before you commit it.

In an expected file a line "[[frame]]" stands for the text of expected/frame-NAME, a byte that is no plain character
for \\xNN, a long run of one character for its length. Dates become <date> after a check that each is the file's own.
"""

import difflib
import itertools
import os
import re
import shlex
import shutil
import subprocess
import sys
import threading
import time

sys.dont_write_bytecode = True
os.umask(0o022)

import storage  # noqa: E402
from storage import BERT, BROKEN, ACCEPTED, HERE, Tree, request  # noqa: E402

ROW = re.compile(rb"\t\t\{ id: '.*?', datetime: '(\S+ \S+?)', rsltype: '(?:Result|Profile)', path: '(.*?)' \},\n", re.S)
ONE_ID = "Ethernet_SFP_BERT_Result_"

# Name (of the expected file, too), tree, query.
CASES = (
    ("list-all", storage.basic, "fmtype=all&module=1GE"),
    ("list-profiles", storage.basic, "fmtype=Prof"),
    ("list-results", storage.basic, "fmtype=rslt"),
    ("list-screenshots", storage.basic, "filter=other&fmtype=SCREEN&opertype=view&jobid=none%20of%20them"),
    ("modules-in-request-order", storage.basic, "fmtype=rslt&module=2G5,1GE,2G5&mode=SDH/PDH,Ethernet&port=P2,10G P1"),
    ("ports-and-extra-directories", storage.basic, "fmtype=rslt&module=1GE,2G5&port=SFP%2C10G P2"),
    ("tests-by-key", storage.basic, "fmtype=rslt&test=fmonitor,,mtie,screen,cpri-layer1"),
    ("profiles-by-test-and-exact-mode", storage.basic, "fmtype=prof&test=fmonitor,bert&mode=ethernet,SDH/PDH"),
    ("advanced-job-and-account", storage.basic, "fmtype=rslt&jobid=OB-7&account=n"),
    ("advanced-job-of-companion", storage.basic, "fmtype=rslt&module=Common&jobid=JOB"),
    ("advanced-locator-none", storage.basic, "fmtype=rslt&locator=None&type=Acceptance"),
    ("advanced-type-none-in-other-case", storage.basic, "fmtype=rslt&type=none"),
    ("advanced-names", storage.basic, "fmtype=rslt&prefix=l&fname=ne&suffix=_2"),
    ("primary-filter", storage.basic, "filter=FPRI&fmtype=rslt&module=1GE&mode=CPRI,Ethernet&test=BERT&port=SFP"),
    ("advanced-filter", storage.basic, "opertype=pdf&filter=fadv&account=a+b%2bc%4Gd&jobid=%22'><b>&suffix=s%4"),
    ("decoded-once", storage.basic, "&&filter=fadv&fname=x%26prefix%3Dy=%2541&prefix=later&=x&flag&suffix=%"),
    ("decoded-to-zero-byte", storage.basic, "filter=fadv&jobid=seen%zz&account=never seen"),
    ("value-of-100000-bytes", storage.basic, "filter=fadv&jobid=" + "x" * 100000),
    ("bytes-that-are-no-text", storage.basic, b"filter=fadv&jobid=\xff\xfe%ff%C3\x80&account=%0d%0a%1b"),
    ("no-action", storage.basic, "FMTYPE=all&opertype=delete&x=<%41>"),
    ("no-variables", storage.basic, None),
    ("view-report", storage.basic, "opertype=view&rsltid=" + ONE_ID + "line_1"),
    ("view-picture", storage.basic, "opertype=VIEW&rsltid=x,__Screen_Result_shot_1"),
    ("view-first-in-list-order", storage.basic, f"opertype=view&rsltid={ONE_ID}line_1,__Screen_Result_shot_1"),
    ("view-of-absent-file", storage.basic, "opertype=view&rsltid=SDH/PDH__MTIE_Result_m2_without_item"),
    ("nothing", storage.basic, "opertype=view&rsltid=unknown"),
    ("nothing", storage.basic, "opertype=view"),
    ("nothing", storage.basic, "opertype=download"),
    ("nothing", storage.basic, "opertype=pdf&RSLTID=x"),
    ("links", storage.links, "fmtype=rslt"),
    ("links-profiles", storage.links, "fmtype=prof"),
    ("links-advanced", storage.links, "fmtype=rslt&jobid=JOB"),
    ("links-view-fifo", storage.links, "opertype=view&rsltid=SDH/PDH__MTIE_Result_fifo"),
    ("links-view-link", storage.links, "opertype=view&rsltid=SDH/PDH__MTIE_Result_link"),
    ("links-view-loop", storage.links, "opertype=view&rsltid=SDH/PDH__MTIE_Result_loop"),
    ("weird-names", storage.weird_names, "fmtype=rslt&account="),
    ("view-weird-name", storage.weird_names, "opertype=view&rsltid=" + ONE_ID + "new%0Aline"),
    ("inaccessible", storage.inaccessible, "fmtype=rslt"),
    ("inaccessible-profiles", storage.inaccessible, "fmtype=prof"),
    ("inaccessible-advanced", storage.inaccessible, "fmtype=rslt&jobid=JOB"),
    ("inaccessible-view", storage.inaccessible, "opertype=view&rsltid=" + ONE_ID + "open"),
    ("advanced-information", storage.advanced_information, "fmtype=rslt&jobid=JOB-1"),
    ("deep", storage.deep, "fmtype=rslt"),
    ("empty-storage", storage.nothing, "fmtype=all"),
    ("empty-storage-filter", storage.nothing, "filter=fpri"),
    *(("empty-storage", storage.unconfigured(kind), "fmtype=all")
      for kind in ("missing", "truncated", "beyond_16_mib", "unreadable", "directory", "fifo", "socket", *BROKEN)),
    *(("configured", storage.configured(kind), "fmtype=all") for kind in ACCEPTED),
)
RESTRICTED = ("inaccessible", "unreadable")
VARIABLES = {"no-action": {"CONTENT_LENGTH": "12 apples", "CONTENT_TYPE": "text/x", "REMOTE_ADDR": "::1",
                           "REQUEST_METHOD": "POST", "PATH_INFO": "/a b", "PATH_TRANSLATED": "/srv/<&>"}}
ABSENT = "/home/2g5/mtie-results/m2_without_item/m2_without_item"
MESSAGES = {  # what else than nothing is said on standard error
    "view-of-absent-file": f"fileman: send {ABSENT}: No such file or directory\n",
    "links-view-loop": "fileman: send /home/2g5/mtie-results/loop/loop: Too many levels of symbolic links\n",
    "links-view-fifo": "fileman: send /home/2g5/mtie-results/fifo/fifo: not a regular file\n",
    "inaccessible-view": f"fileman: send /home/{BERT}/open.html: Permission denied\n",
}


UPDATED = set()


def expected_path(name):
    return os.path.join(HERE, "expected", name)


def read(path):
    try:
        with open(path, "rb") as file:
            return file.read()
    except FileNotFoundError:
        return b""


FRAMES = {name: read(expected_path(name)) for name in os.listdir(os.path.join(HERE, "expected"))
          if name.startswith("frame-")}


class Wrong(Exception):
    pass


def own_date(row):
    """The row with its date replaced, once that is known to be the file's change time in local time."""
    try:
        seconds = os.lstat(row[2]).st_ctime_ns // 10 ** 9
    except FileNotFoundError:
        return row[0]
    if row[1].decode() != time.strftime("%Y-%m-%d %H:%M:%S", time.localtime(seconds)):
        raise Wrong(f"the date of {row[2]} is not {row[1]}")
    return row[0].replace(b"datetime: '%s'" % row[1], b"datetime: '<date>'")


def sorted_runs(pattern, response, group=lambda piece: None):
    """Neighbouring pieces of a group come in directory order, which no file system promises."""
    def in_order(run):
        groups = itertools.groupby(re.findall(pattern, run[0], re.S), group)
        return b"".join(piece for _, pieces in groups for piece in sorted(pieces))
    return re.sub(b"(?:%s)+" % pattern, in_order, response, flags=re.S)


def module_of(row):
    return row.split(b", module: ")[1].split(b", mode: ")[0]


def reviewable(response):
    response = ROW.sub(own_date, response)
    response = sorted_runs(rb"\t\t\{ id: '.*?' \},\n", response, module_of)
    response = sorted_runs(rb"Find at:[^\n]*\n", response)
    response = sorted_runs(rb"\t<div [^\n]* id=\"id_(?:mode|test|port)_opt_[^\n]*\n", response)
    for name, text in FRAMES.items():
        response = response.replace(text, b"[[%s]]\n" % name.encode())
    response = re.sub(rb"([^\0\n])\1{99,}", lambda run: b"<%d times %s>" % (len(run[0]), run[1]), response)
    return re.sub(rb"[^\t\n -~]|\\", lambda byte: b"\\x%02x" % ord(byte[0]), response)


def difference(expected, found):
    lines = difflib.unified_diff(expected.decode().splitlines(), found.decode().splitlines(), "expected", "found",
                                 lineterm="", n=2)
    return "\n".join(lines) or "only the end of the last line differs"


def answer(program, query, prefix=(), said="", **more):
    done = request(program, query, prefix, **more)
    if done.returncode != 0:
        raise Wrong(f"exit status {done.returncode}: {done.stderr.decode(errors='replace')}")
    if done.stderr.decode(errors="replace") != said:
        raise Wrong(f"on standard error: {done.stderr.decode(errors='replace')}")
    return done.stdout


def check_case(program, case, update):
    name, make, query = case
    prefix = storage.NO_ROOT_RIGHTS if make.__name__ in RESTRICTED else ()
    found = reviewable(answer(program, query, prefix, MESSAGES.get(name, ""), **VARIABLES.get(name, {})))
    if update and name not in UPDATED:
        UPDATED.add(name)
        with open(expected_path(name), "wb") as file:
            file.write(found)
    expected = read(expected_path(name))
    if found != expected or not os.path.exists(expected_path(name)):
        raise Wrong(f"{difference(expected, found)}\n--- whole answer found:\n{found.decode()}")


def unknown_module_ends_the_process(program):
    for module in ("Nosuch", "1ge", "1GE,,"):
        done = request(program, "fmtype=rslt&module=" + module)
        missing = module.split(",")[1] if "," in module else module
        if done.returncode != -6 or done.stdout or missing not in done.stderr.decode():
            raise Wrong(f"module={module}: {done}")


def rows_come_in_listing_order(program):
    names = [f"{number * 7919 % 1000:03d}" for number in range(200)]
    Tree().files(BERT, *(name + ".html" for name in names))
    top = "/home/1ge/kte-rslt"
    wanted = [f"{top}/{port}/{kind}/{name}" for port in os.listdir(top) if port != "auxport"
              for kind in os.listdir(f"{top}/{port}") for name in os.listdir(f"{top}/{port}/{kind}")
              if name.endswith((".html", ".png", ".pcap")) and not name.startswith("Last")]
    found = [row[1].decode() for row in ROW.findall(answer(program, "fmtype=rslt&module=1GE&mode=Ethernet"))]
    if found != wanted:
        raise Wrong(difference("\n".join(wanted).encode(), "\n".join(found).encode()))


def dates_follow_the_zone(program):
    """One of the two has daylight saving time today, whatever the day."""
    for zone in ("NOR-1SUM,M3.5.0,M10.5.0/3", "SOU3SUM,M10.1.0/0,M3.3.0/0", "", "Asia/Nowhere"):
        os.environ["TZ"] = zone
        time.tzset()
        try:
            if b"<date>" not in ROW.sub(own_date, answer(program, "fmtype=all", TZ=zone)):
                raise Wrong("no row with a date")
        finally:
            os.environ["TZ"] = storage.ZONE
            time.tzset()


def storage_may_change_meanwhile(program):
    """Directories and files that come and go: a whole page every time."""
    stop = threading.Event()

    def churn():
        while not stop.is_set():
            for name in ("sfpport", "10gport"):
                Tree().files(f"1ge/ktf-rslt/{name}/bert-result", *(f"{number}.html" for number in range(30)))
            shutil.rmtree("/home/1ge/ktf-rslt")

    shutil.rmtree("/home/1ge/ktf-rslt")
    thread = threading.Thread(target=churn)
    thread.start()
    try:
        for _ in range(60):
            page = answer(program, "fmtype=rslt")
            if not page.endswith(b"</body>\n</html>\n") or b"line_1" not in page:
                raise Wrong(page.decode())
    finally:
        stop.set()
        thread.join()


CHECKS = (unknown_module_ends_the_process, rows_come_in_listing_order, dates_follow_the_zone,
          storage_may_change_meanwhile)


def run_all(program, update, names):
    """Yields (name, tree, query, what is wrong or None)."""
    laid_out = None
    cases = [(case, case[1], check_case, (case, update)) for case in CASES]
    cases += [((check.__name__, storage.basic, "see the function"), None, check, ()) for check in CHECKS]
    for case, make, check, arguments in cases:
        if names and case[0] not in names:
            continue
        if make is None or make is not laid_out:
            storage.empty("/home")
            case[1](Tree())
            laid_out = make
        try:
            check(program, *arguments)
            yield case, None
        except (Wrong, subprocess.TimeoutExpired) as error:
            yield case, error


def main(arguments):
    if not storage.is_private():
        sys.exit("run.py: this writes below /home; run it inside scripts/with-storage")
    os.environ["TZ"] = storage.ZONE
    time.tzset()
    update = "--update" in arguments
    program, *names = [argument for argument in arguments if argument != "--update"]
    if not os.access(program, os.X_OK):
        sys.exit(f"run.py: no program {program}; cmake --preset release (or asan) and its build make it")
    count, failed = 0, 0
    for (name, make, query), error in run_all(os.path.abspath(program), update, names):
        count += 1
        if error is not None:
            failed += 1
            print(f"FAILED {name}\n  tree: {make.__name__}\n  QUERY_STRING={shlex.quote(str(query)[:500])}\n{error}\n")
    print(f"{count} cases, {failed} failed")
    return 1 if failed or not count else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
