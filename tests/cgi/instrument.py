"""Runs the cases of delivery.py and streaming.py at the same time, each on an instrument of its own.

scripts/with-storage mounts the home, tmp and usr-local of its directory over those of the machine.
"""

import concurrent.futures
import inspect
import io
import os
import subprocess
import sys
import tempfile
import traceback
import zipfile
from pathlib import Path

os.umask(0o022)

import http_rules  # noqa: E402
from storage import BERT, RECORD, Tree, chosen, environment, make_program, wait_until  # noqa: E402

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
# Stands in for the converter: its "PDF" is the mark and the text of the file.
CONVERTER = """mkdir -p /tmp/pdf
while IFS= read -r task; do
  { echo %PDF; cat "${task% -> *}"; } >"/tmp/pdf/${task##* -> }"
done <"$1"
"""
# What belongs in /tmp beside the two archives and what the two directories hold for a while.
KEPT = r".*tmp/\(download\|pdf\|htm2pdf_task_list\|\.private-storage\|\.[^/]*\.lock\)"


def entries(archive):
    """Returns the files by name. zip writes the bytes of the name; Python decodes them as code page 437."""
    with zipfile.ZipFile(io.BytesIO(archive)) as opened:
        return {info.filename.encode("utf-8" if info.flag_bits & 0x800 else "cp437").decode(errors="replace"):
                opened.read(info) for info in opened.infolist() if not info.is_dir()}


def place(name):
    """The directory of a report in a download."""
    return f"[{name}]-[Bit Errors]-[SFP (optical)]-[Ethernet Tests]"


class Instrument:
    """A private storage, and the requests to the program in it."""

    def __init__(self, program, directory):
        self.program, self.directory = program, directory
        self.is_sanitized = b"__asan_init" in Path(program).read_bytes()
        for name in ("home", "tmp", "usr-local"):
            os.mkdir(self.path(name))
        self.tree = Tree(self.path("home"))
        # With the key of directories that have none, so that a delivery finds what lies in them.
        other = b'<t label="Other" key=""/></category>'
        self.tree.configuration(lambda text: text.replace(b"</category>", other))

    def path(self, name):
        return os.path.join(self.directory, name)

    def tool(self, name, *script):
        """A program below /usr/local, where "bin" comes before the machine's own."""
        make_program(self.path("usr-local/" + name), *script)

    def stored(self, name):
        """The place of a file beside the reports; text or bytes."""
        return self.tree.place(os.fsencode(BERT) + b"/" + os.fsencode(name))

    def store(self, name, content=b"content"):
        self.tree.write(self.stored(name), content)

    def start(self, operation, *names, before=(), prefix=RECORD, **variables):
        """Unbuffered, so that a part of the answer may be left to another reader."""
        query = chosen(operation, *names, prefix=prefix)
        variables = environment(query, PATH="/usr/local/bin:/usr/bin:/bin", **variables)
        command = [f"{ROOT}/scripts/with-storage", self.directory, *before, self.program]
        return subprocess.Popen(command, env=variables, bufsize=0, stdin=subprocess.DEVNULL,
                                stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def start_strict(self, *what, **how):
        return self.start(*what, FILEMAN_ANSWERS="strict", REQUEST_METHOD="GET", **how)

    def strict(self, *what, **how):
        """Status, fields and body of a strict answer, and the program's own lines on standard error."""
        out, messages = self.start_strict(*what, **how).communicate(timeout=120)
        messages = messages.decode(errors="replace").splitlines()
        return *http_rules.check(out), [line for line in messages if line.startswith("fileman: ")]

    def left_in_tmp(self):
        """Returns the files that are left although the background removal had enough time."""
        def left():
            return subprocess.check_output(("find", "tmp", "-mindepth", "1", "-not", "-regex", KEPT),
                                           cwd=self.directory, text=True)
        wait_until(lambda: not left())
        return left()


def run(case, kind, program):
    # In memory a hole costs nothing, on a disk's file system every page of it does.
    memory = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
    with tempfile.TemporaryDirectory(prefix="fileman-case-", dir=memory) as directory:
        case(kind(program, directory))


def main(kind, program, *names):
    """Every function of the test whose one parameter is an instrument is a case."""
    program = os.path.relpath(program, ROOT)
    os.chdir(ROOT)
    functions = filter(inspect.isfunction, vars(sys.modules["__main__"]).values())
    cases = [case for case in functions if [*inspect.signature(case).parameters] == ["instrument"] and
             (not names or case.__name__ in names)]
    with concurrent.futures.ThreadPoolExecutor(len(cases)) as pool:
        attempts = {case.__name__: pool.submit(run, case, kind, program) for case in cases}
    failures = {name: attempt.exception() for name, attempt in attempts.items() if attempt.exception()}
    for name, error in failures.items():
        print(f"FAILED {name}\n" + "".join(traceback.format_exception(error)))
    print(f"{len(cases)} cases, {len(failures)} failed")
    sys.exit(bool(failures))
