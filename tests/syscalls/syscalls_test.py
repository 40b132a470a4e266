#!/usr/bin/python3
"""syscalls_test.py PROGRAM

Lists the sample instrument under strace and counts: a directory is read once at most (it may be opened again for the
dates of its files), a listed file is looked at once for each of its rows by an lstat, nothing else is looked at, only a filter on what files tell about themselves opens any of them, and a list
of one place stays in it, and a view touches nothing but what it shows.
"""

import collections
import os
import re
import subprocess
import sys

DOCUMENT = "/home/.resultmanager/result-config-ktd.xml"
TRACE = "/tmp/trace"
# Each request with whether its filter needs what is stored beside the listed files.
REQUESTS = {
    "fmtype=all": False,
    "fmtype=rslt": False,
    "fmtype=prof": False,
    "fmtype=screen": False,
    "fmtype=rslt&module=10G": False,
    "fmtype=rslt&module=10G,Common&test=bert,fmonitor,screen": False,
    "fmtype=rslt&module=1GE&mode=Fiber%20Channel&test=fmonitor": False,
    "fmtype=rslt&port=10G%20P1": False,
    "fmtype=rslt&module=10G,1GE,10G": False,
    "fmtype=prof&mode=SDH/PDH,Ethernet": False,
    "fmtype=rslt&test=mtie&module=2G5": False,
    "fmtype=rslt&prefix=bert&suffix=1": False,
    "fmtype=rslt&fname=north&locator=Field%20North": False,
    "fmtype=rslt&jobid=JOB-2024-003": True,
    "fmtype=rslt&account=okafor": True,
    "fmtype=rslt&locator=None&type=None": True,
}
# What requests open below /home that need but a part of it.
PARTS = {
    "fmtype=screen": {"ktb"},
    "fmtype=rslt&module=10G": {"10g"},
    "fmtype=rslt&module=1GE&mode=Fiber%20Channel&test=fmonitor": {"1ge"},
}
CALL = re.compile(r'(\w+)\((?:(?:AT_FDCWD|\d+)<(?P<base>[^>]*)>, )?"(?P<path>[^"]*)"(?P<rest>.*)\) += (?P<result>-?\d+)')
OPENS = ("open", "openat")
LOOKS = ("stat", "lstat", "newfstatat", "statx", "access", "faccessat", "faccessat2", "readlink", "readlinkat")


def trace(program, query):
    """What was listed, and how often each path below /home was opened and looked at."""
    command = ("strace", "-f", "-y", "-qq", "-s", "4096", "-e", "trace=%file", "-e", "signal=none", "-o", TRACE, program)
    answer = subprocess.run(command, env={"QUERY_STRING": query, "PATH": "/usr/bin:/bin"}, check=True,
                            stdout=subprocess.PIPE).stdout.decode()
    listed = collections.Counter(re.findall(r"path: '([^']*)' \},$", answer, re.M))
    opened, looked = collections.Counter(), collections.Counter()
    with open(TRACE, encoding="utf-8") as lines:
        for line in lines:
            found = CALL.search(line)
            assert found or "execve" in line or "<unfinished" in line or "resumed>" in line, line
            if not found:
                continue
            path = os.path.join(found["base"] or os.getcwd(), unescaped(found["path"])) if found["path"] else found["base"]
            if not (path + "/").startswith("/home/") or not found["path"]:
                continue
            opened[path] += found[1] in OPENS and "O_PATH" not in found["rest"]
            looked[path] += found[1] in LOOKS
            if found[1] in LOOKS and path in listed and not is_lstat(found):
                raise AssertionError(f"not an lstat: {line}")
    return listed, +opened, +looked


def unescaped(text):
    return re.sub(r"\\([0-7]{1,3})", lambda octal: chr(int(octal[1], 8)), text).encode("latin-1").decode()


def is_lstat(call):
    return call[1] == "lstat" or "AT_SYMLINK_NOFOLLOW" in call["rest"]


def faults(program, query, reads_information):
    listed, opened, looked = trace(program, query)
    yield from (f"opened {count} times: {path}" for path, count in opened.items() if count > 1)
    yield from (f"listed {listed[path]} times, looked at {looked[path]} times: {path}"
                for path in set(listed) | set(looked) if listed[path] != looked[path])
    files = {path for path in opened if not os.path.isdir(path)} - {DOCUMENT}
    if not reads_information:
        yield from (f"opened without need: {path}" for path in files)
    elif not files or files & set(listed):
        yield f"{len(files)} files opened for their information, of them {len(files & set(listed))} listed ones"
    yield from (f"opened, but not there: {path}" for path in files if not os.path.exists(path))
    parts = {path.split("/")[2] for path in opened if path.count("/") > 1} - {os.path.basename(os.path.dirname(DOCUMENT))}
    yield from (f"opened without need: {part}" for part in parts - PARTS.get(query, parts))
    if not listed:
        yield "nothing is listed"


def view_faults(program):
    """Of all that could be chosen only what is chosen is looked at and opened."""
    listing = subprocess.run(program, env={"QUERY_STRING": "fmtype=rslt&module=OSA"}, check=True, stdout=subprocess.PIPE)
    record, path = re.search(r"id: '(\w+)', .* path: '([^']*)' \},$", listing.stdout.decode(), re.M).groups()
    _, opened, looked = trace(program, f"opertype=view&rsltid={record}")
    files = {name: count for name, count in opened.items() if not os.path.isdir(name) and name != DOCUMENT}
    if (files, dict(looked)) != ({path: 1}, {path: 1}):
        yield f"to view {path}, opened {files}, looked at {dict(looked)}"


def main(program):
    if os.environ.get("FILEMAN_PRIVATE_STORAGE") != "1" or not os.path.exists("/tmp/.private-storage"):
        sys.exit("syscalls_test: to be run inside scripts/with-storage")
    subprocess.run(("sample/lay-out", "/home"), check=True)
    found = [f"{query}: {fault}" for query, needs in REQUESTS.items() for fault in faults(program, query, needs)]
    found += view_faults(program)
    print(*found, f"{len(REQUESTS) + 1} requests, {len(found)} faults", sep="\n")
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    main(sys.argv[1])
