#!/usr/bin/python3
"""run.py PROGRAM [--update] [CASE...]

Runs the program as a CGI process on named storage trees and compares its whole responses: default answers
with expected/NAME, strict ones with expected/strict/NAME. The file "cases" has the cases of both kinds,
"cases-strict" those of strict answers alone. It is started once, inside scripts/with-storage. --update writes
the responses into the expected files; read the difference before you commit it. With names of cases, only
these are tried.

In an expected file a line "[[frame-NAME]]" means the text of expected/frame-NAME, \\xNN a byte that is not a
plain character, and {N*c} a long run of one character. A date is written as <date>, after a check that it is
the file's date. In a strict list "[[the rows of the default answer]]" means that they are equal. Behind
"--- log" is standard error.
"""

import difflib
import itertools
import os
import re
import socket
import subprocess
import sys
import time
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
os.umask(0o022)

import http_rules  # noqa: E402
import strict_rows  # noqa: E402
from storage import (BERT, HERE, NO_ROOT_RIGHTS, ZONE, Tree, chosen, environment, plain, read,  # noqa: E402
                     request, same)

PROGRAM = os.path.abspath(sys.argv[1])
NAMES = set(sys.argv[2:]) - {"--update"}
UPDATED = set() if "--update" in sys.argv else None  # the files that are written already
DEFAULT, STRICT = "expected", "expected/strict"
ROW = re.compile(rb"\t\t\{ id: '.*?', datetime: '(\S+ \S+?)', rsltype: '\w+', path: '(.*?)' \},\n", re.S)
FRAMES = {kind: {name.encode(): read(kind, name) for name in sorted(os.listdir(f"{HERE}/{kind}"))
                 if name.startswith("frame-")} for kind in (DEFAULT, STRICT)}
FRAMES[STRICT] = {**FRAMES[DEFAULT], **FRAMES[STRICT]}
VARIABLES = {"no-action": {
    "CONTENT_LENGTH": "5000000000 apples", "CONTENT_TYPE": "text/x", "REMOTE_ADDR": "::1",
    "REQUEST_METHOD": "POST", "PATH_INFO": "/a b", "PATH_TRANSLATED": "/srv/<&>"}}

os.environ["TZ"] = ZONE
time.tzset()


class Case:
    """A line of "cases", of which "said" is what it says on standard error."""

    def __init__(self, kinds, name, tree, query):
        self.name, self.tree, self.said = name.decode(), tree.decode(), b""
        self.query = None if query == b"-" else plain(query)
        # Strict answers refuse what this one asks for.
        self.kinds = [DEFAULT] if self.name == "nothing" else kinds

    def request(self, **more):
        prefix = NO_ROOT_RIGHTS if self.tree in ("inaccessible", "document:unreadable") else ()
        return request(PROGRAM, self.query, prefix, **{**VARIABLES.get(self.name, {}), **more})


def cases_in(file, kinds):
    cases = []
    for line in read(file).splitlines():
        if line.startswith(b"  > "):
            cases[-1].said = b"fileman: " + line[4:] + b"\n"
        elif not line.startswith(b"#"):
            cases.append(Case(kinds, *line.split(None, 2)))
    return cases


def answer(query, **more):
    done = request(PROGRAM, query, **more)
    same((done.returncode, done.stderr), (0, b""))
    return done.stdout


def strict_answer(query):
    return http_rules.check(request(PROGRAM, query, FILEMAN_ANSWERS="strict", REQUEST_METHOD="GET").stdout)


def own_date(row):
    """Replaces the date of the row, after a test that it is the file's change time in local time."""
    try:
        seconds = os.lstat(row[2]).st_ctime_ns // 10 ** 9
    except FileNotFoundError:
        return row[0]
    same(row[1].decode(), time.strftime("%Y-%m-%d %H:%M:%S", time.localtime(seconds)), row[2])
    return row[0].replace(b"datetime: '%s'" % row[1], b"datetime: '<date>'")


def sorted_runs(pattern, response, group=lambda piece: None):
    """Sorts the pieces of each group: they are in directory order, which differs between file systems."""
    def in_order(run):
        groups = itertools.groupby(re.findall(pattern, run[0], re.S), group)
        return b"".join(piece for _, pieces in groups for piece in sorted(pieces))
    return re.sub(b"(?:%s)+" % pattern, in_order, response, flags=re.S)


def reviewable(response, kind):
    response = ROW.sub(own_date, response)
    module = re.compile(rb", module: '.*?'")
    response = sorted_runs(rb"\t\t\{ id: '.*?' \},\n", response, lambda row: module.search(row)[0])
    response = sorted_runs(rb"Find at:[^\n]*\n", response)
    response = sorted_runs(rb"\t<div [^\n]* id=\"id_(?:mode|test|port)_opt_[^\n]*\n", response)
    for name, text in FRAMES[kind].items():
        response = response.replace(text, b"[[%s]]\n" % name)
    response = re.sub(rb"([^\0\n])\1{99,}", lambda run: b"{%d*%s}" % (len(run[0]), run[1]), response)
    return re.sub(rb"[^\t\n -~]|\\", lambda byte: b"\\x%02x" % ord(byte[0]), response)


def default_response(case):
    done = case.request()
    same((done.returncode, done.stderr), (0, case.said))
    return done.stdout


def strict_response(case):
    method = "HEAD" if case.name.startswith("head-") else "GET"
    method = VARIABLES.get(case.name, {}).get("REQUEST_METHOD", method)
    done = case.request(FILEMAN_ANSWERS="strict", REQUEST_METHOD=method)
    same((done.returncode, case.said in done.stderr), (0, True), done.stderr)
    log = done.stderr.replace(case.said, b"")
    _, fields, body = http_rules.check(done.stdout, method)
    if fields["content-type"] in strict_rows.READERS and body:
        rows, page = strict_rows.READERS[fields["content-type"]](body)
        shown = as_in_default_list(rows)
        if rows and strict_rows.LIST_START + shown + strict_rows.LIST_END in case.request().stdout:
            shown = b"[[the rows of the default answer]]\n"
        body = page.replace(strict_rows.LIST_START, strict_rows.LIST_START + shown) if page else shown
    header = "".join(f"{field}: {value}\n" for field, value in fields.items()).encode()
    return header + b"\n" + body + (b"--- log\n" + log if log else b"")


def as_in_default_list(rows):
    fields = b", ".join(key.encode() + b": '%s'" for key in strict_rows.KEYS)
    return b"".join(b"\t\t{ " + fields % tuple(row) + b" },\n" for row in rows)


def compare(case, kind):
    """An expected file that several cases share is written by the first of them."""
    found = reviewable((default_response if kind == DEFAULT else strict_response)(case), kind)
    is_broken = kind == STRICT and case.tree.startswith("document:") and case.said
    path = os.path.join(HERE, kind, "broken-document" if is_broken else case.name)
    if UPDATED is not None and path not in UPDATED:
        UPDATED.add(path)
        Path(path).write_bytes(found)
    expected = read(path)
    if found != expected:
        lines = difflib.unified_diff(expected.decode().split("\n"), found.decode().split("\n"), lineterm="")
        raise AssertionError("\n".join((*lines, "--- the whole answer found:", found.decode())))


class Responses(unittest.TestCase):
    def setUp(self):
        Tree().make("basic")

    def test_every_case_has_its_expected_answer(self):
        laid_out = None
        for case in cases_in("cases", [DEFAULT, STRICT]) + cases_in("cases-strict", [STRICT]):
            if NAMES and case.name not in NAMES:
                continue
            for kind in case.kinds:
                with self.subTest(kind, case=case.name, tree=case.tree):
                    if laid_out != case.tree:
                        laid_out = case.tree
                        Tree().make(laid_out)
                    compare(case, kind)

    def test_unknown_module_ends_the_process(self):
        for modules, missing in (("Nosuch", b"module Nosuch"), ("1ge", b"module 1ge"), ("1GE,,", b"module ")):
            done = request(PROGRAM, "fmtype=rslt&module=" + modules)
            same((done.returncode, done.stdout, missing in done.stderr), (-6, b"", True), modules)

    def test_rows_come_in_listing_order(self):
        for number in range(400):  # rows of many sizes, several buffers full
            Tree().write(f"{BERT}/{number * 7919 % 1000:03d}{number % 200 * 'x'}.html")
        top = "/home/1ge/kte-rslt"
        expected = [f"{top}/{port}/{kind}/{name}" for port in os.listdir(top) if port != "auxport"
                    for kind in os.listdir(f"{top}/{port}") for name in os.listdir(f"{top}/{port}/{kind}")
                    if name.endswith((".html", ".png", ".pcap")) and not name.startswith("Last")]
        page = answer("fmtype=rslt&module=1GE&mode=Ethernet")
        same([row[1].decode() for row in ROW.findall(page)], expected)

    def test_dates_follow_the_zone(self):
        """Zones: on any day, one of the first two has daylight saving time. Neighbours differ by one second."""
        time.sleep(1.1)
        os.chmod(f"/home/{BERT}/line_2.html", 0o600)
        for zone in ("NOR-1SUM,M3.5.0,M10.5.0/3", "SOU3SUM,M10.1.0/0,M3.3.0/0", "", ZONE):
            os.environ["TZ"] = zone
            time.tzset()
            same(b"<date>" in ROW.sub(own_date, answer("fmtype=all", TZ=zone)), True, zone)

    def test_only_the_exact_word_makes_answers_strict(self):
        default = answer("fmtype=rslt")
        for variables in ({"FILEMAN_ANSWERS": "Strict"}, {"FILEMAN_ANSWERS": "strict "}, {"FILEMAN_ANSWERS": ""},
                          {"HTTP_FILEMAN_ANSWERS": "strict", "REQUEST_METHOD": "PUT"}):
            same(answer("fmtype=rslt", **variables), default, variables)

    def test_hostile_names_come_back(self):
        """Each id of a strict list brings the file that the list names for it, under its own name."""
        for name in ("\u2028line", "<!--<script>", "50%41", "a+b", "q\"uote", "comma,and&amp", "caf\u00e9",
                     "=1+1", "\"", "line\rline", "\r\n", "\x85", b"\xff\xfe", b"\xc3,\xe2\"\xed\xb3\xbf"):
            Tree().write(os.fsencode(BERT) + b"/" + os.fsencode(name) + b".html", os.fsencode(name))
        lists = []
        for form in ("html", "jsonl", "csv"):
            _, fields, body = strict_answer("fmtype=all" + (f"&format={form}" if form != "html" else ""))
            lists.append(strict_rows.READERS[fields["content-type"]](body)[0])
        same(lists[1:], lists[:1] * 2)
        paths = {row[0]: row[-1] for row in reversed(lists[0]) if os.path.isfile(row[-1])}  # the first of each id
        for identifier, path in paths.items():
            status, fields, body = strict_answer(chosen("view", identifier, prefix=""))
            same((status, body), (200, read(os.fsdecode(path))), identifier)
            name = os.path.basename(path).decode(errors="replace")
            same(http_rules.file_name(fields), re.sub("[\x00-\x1f\x7f]", "_", name), path)

    def test_a_list_that_ends_early_does_not_look_whole(self):
        """Only the end of the list is the end of a line. A socket keeps apart what the program writes."""
        for number in range(400):
            Tree().write(f"{BERT}/{number:0200d}.html")
        for name in ("jsonl", "csv"):
            reader, writer = socket.socketpair(socket.AF_UNIX, socket.SOCK_SEQPACKET)
            variables = environment(f"fmtype=all&format={name}", FILEMAN_ANSWERS="strict")
            with reader, subprocess.Popen(PROGRAM, env=variables, stdout=writer, stderr=subprocess.DEVNULL):
                writer.close()
                _, *pieces = iter(lambda: reader.recv(1 << 18), b"")  # pylint: disable=cell-var-from-loop
            same((len(pieces) > 2, [piece[-1:] for piece in pieces].index(b"\n")), (True, len(pieces) - 1), name)


if __name__ == "__main__":
    chosen_tests = ["Responses.test_every_case_has_its_expected_answer"] if NAMES else []
    unittest.main(argv=sys.argv[:1] + chosen_tests)
