#!/usr/bin/python3
"""calls_test.py BUILD [--all]: one system call at a time fails, over one list and one download of either kind.

No fault ends the process by a signal, holds it up or changes anything below /home. An answer that differs from the
healthy one breaks off visibly, or a line on standard error says what is missing; an interrupted call is made again.
Of the allocations, and of the calls of a download, a sample fails; --all takes every one with every error.
"""

import concurrent.futures
import errno
import io
import itertools
import os
import subprocess
import sys
import zipfile

sys.path.insert(0, "tests/cgi")
import storage  # noqa: E402  pylint: disable=wrong-import-position

LIST = "fmtype=all"
DOWNLOAD = "opertype=download&rsltid=Ethernet_SFP_BERT_Result_line_1,__Screen_Result_shot_1"
# The same in strict answers; the last key means nothing.
STREAM = DOWNLOAD + "&strict"
READING = ("open", "openat", "getdents64", "read", "fstatat", "fstat", "access", "chdir", "getcwd", "write", "poll")
STAGING = ("stat", "lstat", "sendfile", "flock", "futimens", "mkdir", "rmdir", "unlink", "rename", "chmod", "dup2",
           "close", "remove", "opendir", "readdir", "realpath", "system", "fork", "waitpid")
ERRORS = (errno.EIO, errno.EMFILE, errno.ENOMEM, errno.ENOSPC)
SHORT = 0  # the write writes only half of the bytes
HEADER = b"\r\n\r\n"


def run(query, call="", number=0, error=0):
    """Returns the finished process, and whether the call was reached."""
    mark = f"/tmp/mark-{call}-{number}-{error}"
    done = subprocess.run(f"{BUILD}/dev/fileman.cgi", stdin=subprocess.DEVNULL, capture_output=True, timeout=60,
                          check=False, env=storage.environment(
                              query, LD_PRELOAD=f"{BUILD}/dev/tests/faults/fail_call.so", FAULT_MARK=mark,
                              FAULT_CALL=call, FAULT_NUMBER=str(number), FAULT_ERROR=str(error),
                              FILEMAN_ANSWERS="strict" if query == STREAM else "default"))
    hit = os.path.getsize(mark) > 0
    os.unlink(mark)
    return done, hit


def stored():
    """Everything below /home."""
    for directory, names, files in os.walk("/home"):
        for name in sorted(names + files):
            path = os.path.join(directory, name)
            content = os.readlink(path) if os.path.islink(path) else None
            if content is None and os.path.isfile(path):
                with open(path, "rb") as file:
                    content = file.read()
            yield path, os.lstat(path).st_mode, content


def packed(answer):
    """Returns the files of a download with checksums, or None for an answer that is visibly not a download."""
    head, _, body = answer.partition(HEADER)
    length = [int(line.split(b":")[1]) for line in head.splitlines() if line.startswith(b"Content-Length:")]
    is_whole = 0 < length[0] <= len(body) if length else b"PK\5\6" in body
    if not is_whole or b"Status: " in head:
        return None
    with zipfile.ZipFile(io.BytesIO(body[:length[0]] if length else body)) as archive:
        return sorted((entry.filename, entry.CRC) for entry in archive.infolist())


def list_fault(healthy, done, call, error):
    if call == "write" and not healthy.stdout.startswith(done.stdout):
        return "a hole in the answer"
    if done.stdout == healthy.stdout:
        return None
    if error in (errno.EINTR, errno.EAGAIN, SHORT):
        return "differs after a call that can be made again"
    return None if b"fileman: " in done.stderr or b"</html>" not in done.stdout else "looks whole"


def download_fault(healthy, done, _call, _error):
    found = packed(done.stdout)
    if found is None or found == packed(healthy.stdout):
        return None
    return None if b"fileman: " in done.stderr else f"looks whole: {found}"


def stream_fault(healthy, done, _call, _error):
    found = packed(done.stdout)
    if found == packed(healthy.stdout):
        return None
    if found is not None and "MISSING.txt" not in dict(found):
        return f"looks whole: {found}"
    return None if b"fileman: " in done.stderr else "nothing is said"


def faults(query, judge, healthy, call, step, errors):
    """Returns what goes wrong if the calls number 1, 1 + step, ... fail, each with each of the errors."""
    before = list(stored())
    for number in itertools.count(1, step):
        hit = False
        for error in errors(number):
            done, was_hit = run(query, call, number, error)
            hit = hit or was_hit
            fault = f"ended by signal {-done.returncode}" if done.returncode < 0 else judge(healthy, done, call, error)
            if was_hit and fault:
                yield f"{query}: {call} {number} {os.strerror(error)}: {fault}\n  {done.stderr.decode()[:500]}"
            COUNTS[query, call] = COUNTS.get((query, call), 0) + was_hit
        if not hit:
            break
    if list(stored()) != before:
        yield f"{query}: {call}: something below /home has changed"


def list_errors(call):
    again = {"write": (errno.EINTR, errno.EAGAIN, SHORT), "fstat": (), "poll": ()}.get(call, (errno.EINTR,))
    return lambda number: ERRORS[:3] + again


def works():
    """(query, judge, call, step, errors by number)"""
    for call in READING:
        yield LIST, list_fault, call, 1, list_errors(call)
    yield LIST, list_fault, "pthread_create", 1, lambda number: (errno.EAGAIN,)
    yield LIST, list_fault, "malloc", 1 if ALL else 97, lambda number: (errno.ENOMEM,)
    for call in READING + ("malloc",):
        yield (STREAM, stream_fault, call, 1 if ALL or call != "malloc" else 97,
               lambda number: ERRORS if ALL else (ERRORS[number % len(ERRORS)],))
    for call in READING + STAGING:
        yield (DOWNLOAD, download_fault, call, 1 if ALL or call in STAGING else 7,
               lambda number: ERRORS if ALL else (ERRORS[number % len(ERRORS)],))
    yield DOWNLOAD, download_fault, "malloc", 1 if ALL else 499, lambda number: (errno.ENOMEM,)


def main():
    if os.environ.get("FILEMAN_PRIVATE_STORAGE") != "1" or not os.path.exists("/tmp/.private-storage"):
        sys.exit("calls_test: to be run inside scripts/with-storage")
    storage.Tree().make("basic")
    storage.Tree().write(f"{storage.BERT}/line_1_files/picture.png", b"\x89PNG" + bytes(300000))
    healthy = {query: run(query)[0] for query in (LIST, STREAM, DOWNLOAD)}
    assert healthy[LIST].stdout.endswith(b"</html>\n") and healthy[LIST].stdout.count(b"{ id: ") > 9
    for query in (STREAM, DOWNLOAD):
        assert len(packed(healthy[query].stdout)) > 2, healthy[query]
    found = []
    # Lists and streamed downloads can run at the same time; the other downloads share their staging area.
    for query, workers in ((LIST, 4), (STREAM, 4), (DOWNLOAD, 1)):
        with concurrent.futures.ThreadPoolExecutor(workers) as pool:
            for lines in pool.map(lambda work: list(faults(work[0], work[1], healthy[work[0]], *work[2:])),
                                  [work for work in works() if work[0] == query]):
                found += lines
    for query in healthy:
        print(query, {call: count for (asked, call), count in COUNTS.items() if asked == query})
    print(*found, f"{sum(COUNTS.values())} faults made, {len(found)} wrong ends", sep="\n")
    assert COUNTS[LIST, "getdents64"] and COUNTS[LIST, "fstatat"] and COUNTS[STREAM, "read"] and COUNTS[DOWNLOAD, "system"], "nothing was tried"
    sys.exit(1 if found else 0)


ALL = "--all" in sys.argv
BUILD = os.path.abspath(sys.argv[1])
COUNTS = {}

if __name__ == "__main__":
    main()
