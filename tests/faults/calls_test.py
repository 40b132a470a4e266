#!/usr/bin/python3
"""calls_test.py BUILD: one system call at a time fails, during a list and both kinds of download.

No fault ends the process by a signal, stops it for ever or changes anything below /home. An answer that differs from the
healthy one breaks off visibly, or a line on standard error says what is missing; an interrupted call is made again.
Only some of the allocations, and some of the calls of a download, fail.
"""

import concurrent.futures
import errno
import itertools
import os
import sys
import unittest

sys.path.insert(0, "tests/cgi")
# pylint: disable=wrong-import-position
import storage  # noqa: E402
from instrument import entries  # noqa: E402

BUILD = os.path.abspath(sys.argv.pop(1))
LIST = "fmtype=all"
DOWNLOAD = "opertype=download&rsltid=Ethernet_SFP_BERT_Result_line_1,__Screen_Result_shot_1"
# The same in strict answers; the program ignores the last key.
STREAM = DOWNLOAD + "&strict"
READING = ("open", "openat", "getdents64", "read", "fstatat", "fstat", "access", "write", "poll", "malloc")
STAGING = ("lstat", "sendfile", "flock", "futimens", "mkdir", "rmdir", "unlink", "rename", "chmod", "dup2",
           "close", "system", "fork", "waitpid")
CALLS = {LIST: (*READING, "pthread_create"), STREAM: READING, DOWNLOAD: READING + STAGING}
ERRORS = (errno.EIO, errno.EMFILE, errno.ENOMEM, errno.ENOSPC)
SHORT = 0  # the write writes only half of the bytes
AGAIN = (errno.EINTR, errno.EAGAIN, SHORT)


def errors_of(query, call, number):
    if call in ("malloc", "pthread_create"):
        return (errno.ENOMEM,) if call == "malloc" else (errno.EAGAIN,)
    if query == LIST:
        return ERRORS[:3] + {"write": AGAIN, "fstat": (), "poll": ()}.get(call, (errno.EINTR,))
    return (ERRORS[number % len(ERRORS)],)


def step_of(query, call):
    if call == "malloc":
        return 499 if query == DOWNLOAD else 97
    return 7 if query == DOWNLOAD and call in READING else 1


def run(query, call="", number=0, error=0):
    """Returns the finished process, and whether the call was reached."""
    mark = f"/tmp/mark-{call}-{number}-{error}"
    done = storage.request(
        f"{BUILD}/dev/fileman.cgi", query, LD_PRELOAD=f"{BUILD}/dev/tests/faults/fail_call.so", FAULT_MARK=mark,
        FAULT_CALL=call, FAULT_NUMBER=str(number), FAULT_ERROR=str(error),
        FILEMAN_ANSWERS="strict" if query == STREAM else "default")
    hit = os.path.getsize(mark) > 0
    os.unlink(mark)
    return done, hit


def packed(answer):
    """Returns the files of a download, or None for an answer that is visibly not a download."""
    head, _, body = answer.partition(b"\r\n\r\n")
    length = [int(line.split(b":")[1]) for line in head.splitlines() if line.startswith(b"Content-Length:")]
    is_whole = 0 < length[0] <= len(body) if length else b"PK\5\6" in body
    if not is_whole or b"Status: " in head:
        return None
    return entries(body[:length[0]] if length else body)


def fault_of(query, healthy, done, call, error):
    """Returns what is wrong with the end of a request, or None."""
    if done.returncode < 0:
        return f"ended by signal {-done.returncode}"
    said = b"fileman: " in done.stderr
    if query == LIST:
        if call == "write" and not healthy.startswith(done.stdout):
            return "a hole in the answer"
        if done.stdout == healthy:
            return None
        if error in AGAIN and call != "pthread_create":
            return "differs after a call that can be made again"
        return None if said or b"</html>" not in done.stdout else "looks whole"
    found = packed(done.stdout)
    if found == packed(healthy) or (query == DOWNLOAD and found is None):
        return None
    if query == STREAM and found is not None and "MISSING.txt" not in found:
        return f"looks whole: {found}"
    return None if said else f"nothing is said: {found}"


def try_call(query, healthy, call):
    """Lets one call after the other fail. Returns the number of faults made and what went wrong."""
    count, wrong = 0, []
    for number in itertools.count(1, step_of(query, call)):
        hits = 0
        for error in errors_of(query, call, number):
            done, was_hit = run(query, call, number, error)
            hits += was_hit
            fault = fault_of(query, healthy, done, call, error)
            if was_hit and fault:
                wrong.append(f"{query}: {call} {number} {os.strerror(error)}: {fault}\n  {done.stderr.decode()[:500]}")
        count += hits
        if not hits:
            return count, wrong


class Calls(unittest.TestCase):
    def test_no_failing_call_makes_an_answer_that_looks_whole_but_is_not(self):
        storage.Tree().make("basic")
        storage.Tree().write(f"{storage.BERT}/line_1_files/picture.png", b"\x89PNG" + bytes(300000))
        before = storage.everything_stored()
        for query, calls in CALLS.items():
            healthy = run(query)[0].stdout
            if query == LIST:
                self.assertRegex(healthy, rb"(?s)({ id: .*){9}</html>\n$")
            else:
                self.assertGreater(len(packed(healthy)), 2)
            # The default downloads share a place, the staging area.
            with concurrent.futures.ThreadPoolExecutor(1 if query == DOWNLOAD else 4) as pool:
                found = dict(zip(calls, pool.map(lambda call: try_call(query, healthy, call), calls)))
            self.assertEqual([line for _, wrong in found.values() for line in wrong], [])
            for call in {LIST: ("getdents64", "fstatat"), STREAM: ("read",), DOWNLOAD: ("system",)}[query]:
                self.assertGreater(found[call][0], 0, call)
        self.assertEqual(storage.everything_stored(), before, "something below /home has changed")


if __name__ == "__main__":
    unittest.main()
