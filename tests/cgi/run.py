#!/usr/bin/python3
"""run.py PROGRAM [--update] [NAME...]

Runs the program as a CGI process on named storage trees and compares its whole responses: default answers with
expected/NAME, strict ones with expected/strict/NAME. The file "cases" has one line for each case of both kinds,
"cases-strict" for each of strict answers alone. Each strict answer also obeys http_rules.py and strict_page.py. It is
started once, inside scripts/with-storage. --update writes the responses into the expected files; read the difference
before you commit it.

In an expected file a line "[[frame-NAME]]" means the text of expected/frame-NAME, \\xNN a byte that is not a plain
character, and {N*c} a long run of one character. A date is written as <date>, after a check that it is the file's date.
In a strict list "[[the rows of the default answer]]" means that they are equal. Behind "--- log" is standard error.
"""

import difflib
import itertools
import os
import re
import shutil
import socket
import subprocess
import sys
import threading
import time
import urllib.parse

sys.dont_write_bytecode = True
os.umask(0o022)

import http_rules  # noqa: E402
import strict_page  # noqa: E402
from storage import BERT, HERE, NO_ROOT_RIGHTS, ZONE, Tree, environment, plain, read  # noqa: E402

ROW = re.compile(rb"\t\t\{ id: '.*?', datetime: '(\S+ \S+?)', rsltype: '(?:Result|Profile)', path: '(.*?)' \},\n", re.S)
FRAMES = {kind: {name.encode(): read(kind, name) for name in sorted(os.listdir(f"{HERE}/{kind}"))
                 if name.startswith("frame-")} for kind in ("expected", "expected/strict")}
FRAMES["expected/strict"] = {**FRAMES["expected"], **FRAMES["expected/strict"]}
DIAGNOSTICS = re.compile(rb"^(?:Find at:|Common port result: |Common profile: )[^\n]*\n", re.M)
RESTRICTED = ("inaccessible", "document:unreadable")
VARIABLES = {"no-action": {"CONTENT_LENGTH": "5000000000 apples", "CONTENT_TYPE": "text/x", "REMOTE_ADDR": "::1",
                           "REQUEST_METHOD": "POST", "PATH_INFO": "/a b", "PATH_TRANSLATED": "/srv/<&>"}}
MTIE = "/home/2g5/mtie-results"
DOCUMENT = "read document /home/.resultmanager/result-config-ktd.xml:"
MESSAGES = {  # by case or tree: what else than nothing is said on standard error
    "view-of-absent-file": f"send {MTIE}/m2_without_item/m2_without_item: No such file or directory",
    "links-view-loop": f"send {MTIE}/loop/loop: Too many levels of symbolic links",
    "links-view-fifo": f"send {MTIE}/fifo/fifo: not a regular file",
    "inaccessible-view": f"send /home/{BERT}/open.html: Permission denied",
    "document:truncated": f"{DOCUMENT} it is not well-formed, Error parsing Element.",
    "document:beyond-16-mib": f"{DOCUMENT} it is too large",
    "document:unreadable": f"{DOCUMENT} Permission denied",
    "document:directory": f"{DOCUMENT} it is no regular file",
    "document:fifo": f"{DOCUMENT} it is no regular file",
    "document:socket": f"{DOCUMENT} it is no regular file",
    "document:empty": f"{DOCUMENT} it is not well-formed, Error document empty.",
    "document:no-xml": f"{DOCUMENT} it is not well-formed, Error document empty.",
    "document:no-root": f"{DOCUMENT} it has no root element",
    "document:no-filter": f"{DOCUMENT} its root has no filter element",
    "document:nested-129": f"{DOCUMENT} it is nested deeper than 128 elements",
    "document:nested-100000": f"{DOCUMENT} it needs too much memory",
    "document:attributes": f"{DOCUMENT} an element has more than 256 attributes",
    "document:binary": f"{DOCUMENT} it is not well-formed, Error document empty.",
}


class Wrong(Exception):
    pass


def request(program, query, prefix=(), **more):
    """The finished process; one that does not end by itself raises TimeoutExpired."""
    return subprocess.run([*prefix, program], env=environment(query, **more), stdin=subprocess.DEVNULL,
                          capture_output=True, timeout=60, check=False)


def answer(program, query, prefix=(), said="", **more):
    done = request(program, query, prefix, **more)
    messages = done.stderr.decode(errors="replace")
    if done.returncode != 0 or messages != (f"fileman: {said}\n" if said else ""):
        raise Wrong(f"exit status {done.returncode}, standard error: {messages}")
    return done.stdout


def own_date(row):
    """Replaces the date of the row, after a test that it is the file's change time in local time."""
    try:
        seconds = os.lstat(row[2]).st_ctime_ns // 10 ** 9
    except FileNotFoundError:
        return row[0]
    if row[1].decode() != time.strftime("%Y-%m-%d %H:%M:%S", time.localtime(seconds)):
        raise Wrong(f"the date of {row[2]} is not {row[1]}")
    return row[0].replace(b"datetime: '%s'" % row[1], b"datetime: '<date>'")


def sorted_runs(pattern, response, group=lambda piece: None):
    """Sorts the pieces of each group: they are in directory order, which differs between file systems."""
    def in_order(run):
        groups = itertools.groupby(re.findall(pattern, run[0], re.S), group)
        return b"".join(piece for _, pieces in groups for piece in sorted(pieces))
    return re.sub(b"(?:%s)+" % pattern, in_order, response, flags=re.S)


def default_rows(found):
    """The rows of a strict list as a default list holds them."""
    fields = b", ".join(key.encode() + b": '%s'" for key in strict_page.KEYS)
    return b"".join(b"\t\t{ " + fields % tuple(row) + b" },\n" for row in found)


def reviewable(response, kind="expected"):
    response = ROW.sub(own_date, response)
    response = sorted_runs(rb"\t\t\{ id: '.*?' \},\n", response, lambda row: re.search(rb", module: '.*?'", row)[0])
    response = sorted_runs(rb"Find at:[^\n]*\n", response)
    response = sorted_runs(rb"\t<div [^\n]* id=\"id_(?:mode|test|port)_opt_[^\n]*\n", response)
    for name, text in FRAMES[kind].items():
        response = response.replace(text, b"[[%s]]\n" % name)
    response = re.sub(rb"([^\0\n])\1{99,}", lambda run: b"{%d*%s}" % (len(run[0]), run[1]), response)
    return re.sub(rb"[^\t\n -~]|\\", lambda byte: b"\\x%02x" % ord(byte[0]), response)


def difference(expected, found):
    texts = expected.decode().split("\n"), found.decode().split("\n")
    return "\n".join(difflib.unified_diff(*texts, "expected", "found", lineterm="", n=2))


def check_case(program, case, update=False):
    name, tree, query = case
    prefix = NO_ROOT_RIGHTS if tree in RESTRICTED else ()
    found = reviewable(answer(program, query, prefix, MESSAGES.get(name, MESSAGES.get(tree, "")), **VARIABLES.get(name, {})))
    compare("expected", name, found, update)


def strict_answer(program, query, prefix=(), method="GET", **more):
    """Standard error, and status, fields and body of an answer that obeys the rules."""
    done = request(program, query, prefix, FILEMAN_ANSWERS="strict", REQUEST_METHOD=method, **more)
    if done.returncode != 0:
        raise Wrong(f"exit status {done.returncode}, standard error: {done.stderr.decode(errors='replace')}")
    return done.stderr, *http_rules.check(done.stdout, method)


def check_strict_case(program, case, update=False):
    name, tree, query = case
    prefix, variables = NO_ROOT_RIGHTS if tree in RESTRICTED else (), dict(VARIABLES.get(name, {}))
    method = variables.pop("REQUEST_METHOD", "HEAD" if name.startswith("head-") else "GET")
    log, _, fields, body = strict_answer(program, query, prefix, method, **variables)
    said = f"fileman: {MESSAGES.get(name, MESSAGES.get(tree, ''))}\n".encode()
    if said in log:
        log = log.replace(said, b"")
    elif name in MESSAGES or tree in MESSAGES:
        raise Wrong(f"standard error: {log.decode(errors='replace')}")
    find_rows = strict_page.ROWS.get(fields["content-type"])
    if find_rows and body:
        rows, page = find_rows(body)
        if page:
            strict_page.Page(page.decode())
        of_default = request(program, query, prefix, **variables).stdout.partition(strict_page.LIST_START)[2]
        rows = default_rows(rows)
        same = rows and of_default.startswith(rows + strict_page.LIST_END)
        shown = b"[[the rows of the default answer]]\n" if same else rows
        body = page.replace(strict_page.LIST_START, strict_page.LIST_START + shown) if page else shown
    header = "".join(f"{field}: {value}\n" for field, value in fields.items()).encode()
    found = header + b"\n" + body + (b"--- log\n" + log if log else b"")
    name = "broken-document" if tree in MESSAGES else name
    compare("expected/strict", name, reviewable(found, "expected/strict"), update)


def compare(kind, name, found, update):
    if update:
        with open(os.path.join(HERE, kind, name), "wb") as file:
            file.write(found)
    expected = read(kind, name)
    if found != expected:
        raise Wrong(f"{difference(expected, found)}\n--- the whole answer found:\n{found.decode()}")


def unknown_module_ends_the_process(program):
    for module, missing in (("Nosuch", "Nosuch"), ("1ge", "1ge"), ("1GE,,", "")):
        done = request(program, "fmtype=rslt&module=" + module)
        if (done.returncode, done.stdout) != (-6, b"") or f"module {missing}" not in done.stderr.decode():
            raise Wrong(f"module={module}: {done}")


def rows_come_in_listing_order(program):
    for number in range(400):  # rows of many sizes, several buffers full
        Tree().write(f"{BERT}/{number * 7919 % 1000:03d}{number % 200 * 'x'}.html")
    top = "/home/1ge/kte-rslt"
    expected = [f"{top}/{port}/{kind}/{name}" for port in os.listdir(top) if port != "auxport"
                for kind in os.listdir(f"{top}/{port}") for name in os.listdir(f"{top}/{port}/{kind}")
                if name.endswith((".html", ".png", ".pcap")) and not name.startswith("Last")]
    found = [row[1].decode() for row in ROW.findall(answer(program, "fmtype=rslt&module=1GE&mode=Ethernet"))]
    if found != expected:
        raise Wrong(difference("\n".join(expected).encode(), "\n".join(found).encode()))


def dates_follow_the_zone(program):
    """Zones: on any day, one of the first two has daylight saving time. Neighbours differ by one second."""
    time.sleep(1.1)
    os.chmod(f"/home/{BERT}/line_2.html", 0o600)
    for zone in ("NOR-1SUM,M3.5.0,M10.5.0/3", "SOU3SUM,M10.1.0/0,M3.3.0/0", "", ZONE):
        os.environ["TZ"] = zone
        time.tzset()
        if b"<date>" not in ROW.sub(own_date, answer(program, "fmtype=all", TZ=zone)):
            raise Wrong("no row with a date")


def storage_may_change_meanwhile(program):
    """Directories and files appear and disappear during requests: every page must be whole."""
    stop = threading.Event()

    def churn():
        while not stop.is_set():
            shutil.rmtree("/home/1ge/ktf-rslt")
            for name in itertools.product(("sfpport", "10gport"), range(30)):
                Tree().write("1ge/ktf-rslt/%s/bert-result/%d.html" % name)

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


def only_the_exact_word_makes_answers_strict(program):
    default = request(program, b"fmtype=rslt").stdout
    for variables in ({"FILEMAN_ANSWERS": "Strict"}, {"FILEMAN_ANSWERS": "strict "}, {"FILEMAN_ANSWERS": ""},
                      {"HTTP_FILEMAN_ANSWERS": "strict", "REQUEST_METHOD": "PUT"}):
        if request(program, b"fmtype=rslt", **variables).stdout != default:
            raise Wrong(f"another answer with {variables}")


def hostile_names_come_back(program):
    """Each id of a strict list brings the file that the list names for it, under its own name."""
    for name in ("\u2028line", "<!--<script>", "50%41", "a+b", "q\"uote", "comma,and&amp", "caf\u00e9", b"\xff\xfe",
                 "=1+1", "\"", "line\rline", "\r\n", "\x85", b"\xc3,\xe2\"\xed\xb3\xbf"):
        Tree().write(os.fsencode(BERT) + b"/" + os.fsencode(name) + b".html", os.fsencode(name))
    first, rows = {}, strict_page.rows(strict_answer(program, b"fmtype=all")[3])[0]
    for name, read_rows in (("jsonl", strict_page.json_lines), ("csv", strict_page.csv_records)):
        if read_rows(strict_answer(program, f"fmtype=all&format={name}")[3])[0] != rows:
            raise Wrong(f"{name} has other rows than the page")
    for row in rows:
        if os.path.isfile(row[-1]):
            first.setdefault(row[0], row[-1])
    for identifier, path in first.items():
        query = b"opertype=view&rsltid=" + urllib.parse.quote(identifier, safe="").encode()
        _, status, fields, body = strict_answer(program, query)
        with open(path, "rb") as file:
            if (status, body) != (200, file.read()):
                raise Wrong(f"{identifier}: {status} {body[:200]}")
        name = os.path.basename(path).decode(errors="replace")
        if re.sub("[\x00-\x1f\x7f]", "_", name) != http_rules.file_name(fields):
            raise Wrong(f"{path}: {fields}")


def a_file_that_shrinks_ends_early(program):
    """The length was announced; what is missing is not made up."""
    Tree().write(BERT + "/long.html", b"x" * (1 << 24))
    with subprocess.Popen([program], env=environment("opertype=view&rsltid=Ethernet_SFP_BERT_Result_long",
                                                     FILEMAN_ANSWERS="strict"), stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE) as process:
        start = process.stdout.read(100)
        os.truncate(f"/home/{BERT}/long.html", 1 << 20)
        rest, messages = process.communicate(timeout=60)
    if len(start + rest) > 3 << 20 or b"it became shorter" not in messages:
        raise Wrong(f"{len(start + rest)} bytes, {messages}")


def a_list_that_ends_early_does_not_look_whole(program):
    """Only the end of the list is the end of a line. A socket keeps apart what the program writes."""
    for number in range(400):
        Tree().write(f"{BERT}/{number:0200d}.html")
    for name in ("jsonl", "csv"):
        reader, writer = socket.socketpair(socket.AF_UNIX, socket.SOCK_SEQPACKET)
        with reader, subprocess.Popen([program], env=environment(f"fmtype=all&format={name}", FILEMAN_ANSWERS="strict"),
                                      stdout=writer, stderr=subprocess.DEVNULL):
            writer.close()
            _, *pieces = iter(lambda: reader.recv(1 << 18), b"")  # pylint: disable=cell-var-from-loop
        if len(pieces) < 3 or [piece.endswith(b"\n") for piece in pieces].index(True) != len(pieces) - 1:
            raise Wrong(f"{name}: {[piece[-100:] for piece in pieces]}")


CHECKS = (only_the_exact_word_makes_answers_strict, hostile_names_come_back, a_file_that_shrinks_ends_early,
          a_list_that_ends_early_does_not_look_whole, unknown_module_ends_the_process, rows_come_in_listing_order,
          dates_follow_the_zone, storage_may_change_meanwhile)


def run_all(program, update, names):
    """Yields name, tree and query of each case, and what is wrong with it, if anything."""
    both, strict = ([line.split(None, 2) for line in read(name).splitlines() if not line.startswith(b"#")]
                    for name in ("cases", "cases-strict"))
    cases = [(check, (name.decode(), tree.decode(), None if query == b"-" else plain(query)))
             for name, tree, query in both for check in (check_case, check_strict_case)
             if name != b"nothing" or check is check_case]
    cases += [(check_strict_case, (name.decode(), tree.decode(), plain(query))) for name, tree, query in strict]
    cases += [(lambda program, case, check=check: check(program), (check.__name__, "basic", b"several"))
              for check in CHECKS]
    laid_out, updated = None, set()
    for check, case in cases:
        if names and case[0] not in names:
            continue
        if laid_out != case[1] or case[2] == b"several":
            laid_out = case[1]
            Tree().make(laid_out)
        # If cases share an expected file, the first case writes it.
        file = (check, case[0], case[1] in MESSAGES)
        more = (True,) if update and check in (check_case, check_strict_case) and file not in updated else ()
        updated.add(file)
        try:
            check(program, case, *more)
            yield case, None
        except (Wrong, http_rules.Broken, ValueError, subprocess.TimeoutExpired, FileNotFoundError) as error:
            yield case, error


def main(arguments):
    if os.environ.get("FILEMAN_PRIVATE_STORAGE") != "1" or not os.path.exists("/tmp/.private-storage"):
        sys.exit("run.py: this writes below /home; run it inside scripts/with-storage")
    program, *names = [argument for argument in arguments if argument != "--update"]
    if not os.access(program, os.X_OK):
        sys.exit(f"run.py: no program {program}; cmake --preset release (or asan) and its build make it")
    os.environ["TZ"] = ZONE
    time.tzset()
    count = failed = 0
    for (name, tree, query), error in run_all(os.path.abspath(program), "--update" in arguments, names):
        count += 1
        if error is not None:
            failed += 1
            print(f"FAILED {name}\n  tree: {tree}\n  QUERY_STRING={(query or b'')[:500].decode(errors='replace')}\n{error!r}\n{error}\n")
    print(f"{count} cases, {failed} failed")
    return failed or not count


if __name__ == "__main__":
    sys.exit(bool(main(sys.argv[1:])))
