#!/usr/bin/python3
"""syscalls_test.py PROGRAM: counts the calls of requests to the sample instrument, by strace.

A directory is read once at most (it may be opened again for the dates of its files), a listed file is looked
at once for each of its rows by an lstat, and nothing else is looked at or opened without need.
"""

import os
import re
import subprocess
import sys
from collections import Counter

sys.path.insert(0, "tests/cgi")
from storage import BERT, CONFIGURATION, Tree, chosen  # noqa: E402

DOCUMENT = f"/home/{CONFIGURATION}"
# The queries of lists, with the places below /home where they may open anything, None for all.
LISTS = {
    "all": None, "rslt": None, "prof": None, "screen": {"ktb"}, "rslt&module=10G": {"10g"},
    "rslt&module=10G,1GE,10G": {"10g", "1ge"}, "rslt&module=10G,Common&test=bert,fmonitor,screen": None,
    "rslt&module=1GE&mode=Fiber%20Channel&test=fmonitor": {"1ge"}, "rslt&port=10G%20P1": None,
    "prof&mode=SDH/PDH,Ethernet": None, "rslt&test=mtie&module=2G5": None, "rslt&prefix=bert&suffix=1": None,
    "rslt&fname=north&locator=Field%20North": None}
# These need what is stored beside the listed files.
INFORMED = {"rslt&jobid=JOB-2024-003": None, "rslt&account=okafor": None, "rslt&locator=None&type=None": None}
CALL = re.compile(r'(\w+)\((?:(?P<fd>AT_FDCWD|\d+)<(?P<base>[^>]*)>,? ?)?'
                  r'(?:"(?P<path>[^"]*)")?(?P<rest>.*)= -?\d')


class Trace:
    """The answer and its calls, with those of one kind by path; a download's end with their first output."""

    def __init__(self, program, query, only_begin=False, **variables):
        command = "strace -f -y -qq -s 4096 -e trace=%file,read,write -e signal=none -o /tmp/trace".split()
        variables = {"QUERY_STRING": query, "PATH": "/usr/bin:/bin", **variables}
        self.answer = subprocess.check_output([*command, program], env=variables, stderr=subprocess.DEVNULL)
        self.opened, self.looked, self.read, self.no_lstat = Counter(), Counter(), Counter(), set()
        with open("/tmp/trace", encoding="utf-8", errors="replace") as lines:
            for line in lines:
                found = CALL.search(line)
                assert found or re.search("execve|<unfinished|resumed>", line), line
                if only_begin and found and (found[1], found["fd"]) == ("write", "1"):
                    break
                if found and found["path"] and found[1] not in ("write", "execve"):
                    self.count(found[1], found["base"], found["path"], found["rest"])

    def count(self, call, base, path, rest):
        path = re.sub(r"\\([0-7]{1,3})", lambda octal: chr(int(octal[1], 8)), path)
        path = base if call == "read" else os.path.join(base or os.getcwd(), path.encode("latin-1").decode())
        if (path + "/").startswith("/home/"):
            self.opened[path] += call in ("open", "openat") and "O_PATH" not in rest
            self.read[path] += call == "read"
            self.looked[path] += "stat" in call or call.startswith(("access", "faccess", "readlink"))
            if "stat" in call and call != "lstat" and "AT_SYMLINK_NOFOLLOW" not in rest:
                self.no_lstat.add(path)

    def opened_files(self):
        return {path: count for path, count in self.opened.items()
                if count and not os.path.isdir(path) and path != DOCUMENT}


def list_faults(program, query, places):
    trace = Trace(program, f"fmtype={query}")
    listed = Counter(re.findall(r"path: '([^']*)' \},$", trace.answer.decode(), re.M))
    yield from (f"opened {count} times: {path}" for path, count in trace.opened.items() if count > 1)
    yield from (f"listed {listed[path]} times, looked at {trace.looked[path]} times: {path}"
                for path in {*listed, *trace.looked} if listed[path] != trace.looked[path])
    yield from (f"no lstat: {path}" for path in trace.no_lstat & {*listed})
    files = {*trace.opened_files()}
    if not listed or files & {*listed} or bool(files) != (query in INFORMED):
        yield f"opened to list {len(listed)} files: {files}"
    parts = {path.split("/")[2] for path in +trace.opened if path.count("/") > 1} - {".resultmanager"}
    yield from (f"opened without need: {part}" for part in parts - (places or parts))


def view_faults(program):
    """Of all that could be chosen only what is chosen is looked at and opened."""
    listing = Trace(program, "fmtype=rslt&module=OSA").answer.decode()
    record, path = re.search(r"id: '(\w+)', .* path: '([^']*)' \},$", listing, re.M).groups()
    trace = Trace(program, chosen("view", record, prefix=""))
    if (trace.opened_files(), +trace.looked) != ({path: 1}, {path: 1}):
        yield f"to view {path}, opened {trace.opened_files()}, looked at {trace.looked}"


def download_faults(program):
    """Ahead of its first byte, one of 1,000 files opens the first and its directory, and reads none."""
    Tree().make("basic")
    names = [f"many{number}" for number in range(1000)]
    for name in names:
        Tree().write(f"{BERT}/{name}.html", name.encode())
    nothing, many = (Trace(program, chosen("download", *some), only_begin=True, FILEMAN_ANSWERS="strict",
                           REQUEST_METHOD="GET") for some in (["nothing"], names))
    more, read = many.opened - nothing.opened, {*+many.read} - {DOCUMENT}
    if read or [*more.values()] != [1, 1]:
        yield f"read ahead of the first byte: {read}, opened: {more}"


subprocess.run(("sample/lay-out", "/home"), check=True)
faults = [f"{query}: {fault}" for query, places in {**LISTS, **INFORMED}.items()
          for fault in list_faults(sys.argv[1], query, places)]
faults += [*view_faults(sys.argv[1]), *download_faults(sys.argv[1])]
print(*faults, f"{len(faults)} faults", sep="\n")
sys.exit(bool(faults))
