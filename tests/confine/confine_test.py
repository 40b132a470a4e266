#!/usr/bin/python3
"""confine_test.py BUILD: a request that is led astray can do no more than it must.

Code inside the program, and the commands and the converter that a delivery starts, try what none of them may do. The
kernel has to refuse each of it. Where the kernel has no Landlock the test says so and ends with status 77.
"""

import ctypes
import errno
import os
import re
import resource
import shutil
import sys
from pathlib import Path

sys.path.insert(0, "tests/cgi")
import storage  # noqa: E402  pylint: disable=wrong-import-position

BUILD = os.path.abspath(sys.argv[1])
ID = "Ethernet_SFP_BERT_Result_line_1"
READING = ["fmtype=all", "filter=fpri", f"opertype=view&rsltid={ID}"]
# The second one is for a name that would move to another directory.
REFUSED = (errno.EACCES, errno.EXDEV)
# What a command of a delivery tries, by the shell.
COMMANDS = {
    "write a result": ": >/home/victim.html",
    "create a result": ": >/home/new.html",
    "read a file elsewhere": "read line </etc/debian_version",
    "run a program": "/usr/bin/id",
    "write elsewhere in /tmp": ": >/tmp/new",
}
FOREIGN_AREA = {"download": "/tmp/pdf", "pdf": "/tmp/download"}
KEPT = ("/home/victim.html", "/tmp/kept", "/tmp/pdf/kept", "/tmp/download/kept")


def run(query, program="dev/fileman.cgi", **variables):
    return storage.request(f"{BUILD}/{program}", query, PATH="/usr/local/bin:/usr/bin:/bin", **variables)


def tried(done):
    return {what: int(number) for what, number in re.findall(r"^tried (.*): errno (\d+)$", done.stderr.decode(), re.M)}


def prepare():
    tree = storage.Tree()
    tree.make("nothing")
    tree.configuration()
    tree.write(f"{storage.BERT}/line_1.html")
    for directory in ("/tmp/pdf", "/tmp/download"):
        os.makedirs(directory, mode=0o700, exist_ok=True)
    for path in KEPT:
        Path(path).write_bytes(b"measured")


def untouched(area):
    """The other area and everything else that a request must not change; its own area is emptied at its end."""
    kept = [Path(path).read_bytes() for path in KEPT if os.path.dirname(path) in ("/home", "/tmp", area)]
    return ({*kept} == {b"measured"} and os.listdir(area) == ["kept"]
            and not {"new", "other"} & set(os.listdir("/tmp"))
            and not {"new.html", "other.html", "new", "link"} & set(os.listdir("/home")))


def led_astray(query, count, **variables):
    """The finished request, some of whose code tries what it must not, and what it could do all the same."""
    area = FOREIGN_AREA["pdf" if "=pdf" in query else "download"]
    done = run(query, TRY_AREA=area, **variables)
    attempts = tried(done)
    assert len(attempts) == count, (query, attempts, done.stderr)
    # A converter may be made of several programs.
    allowed = {"run a program"} if "=pdf" in query else set()
    faults = [f"{query}: {what}: errno {number}" for what, number in attempts.items()
              if number not in REFUSED and what not in allowed]
    return done, faults + ([] if untouched(area) else [f"{query}: something has changed"])


def inside_the_program():
    library = f"{BUILD}/dev/tests/confine/try_forbidden.so"
    download = f"opertype=download&rsltid={ID}"
    for query, answers in [*((query, "") for query in READING), (download, ""), (download, "strict"),
                           (download.replace("download", "pdf"), "")]:
        prepare()
        yield from led_astray(query, 19, LD_PRELOAD=library, FILEMAN_ANSWERS=answers)[1]
    spinning = run("fmtype=all", LD_PRELOAD=library, TRY_AREA="", TRY_TO_SPIN="1", FILEMAN_CPU_SECONDS="1")
    if b"processor time" not in spinning.stderr or b"</html>" in spinning.stdout:
        yield f"no limit of processor time: {spinning.stderr}"


def stub(area):
    """A script in the place of a command or converter, which tries everything and tells the rest of its state."""
    attempts = COMMANDS | {"write in another staging area": f": >{area}/kept"}
    lines = [f'( {attempt} ) 2>/dev/null && echo "tried {what}: errno 0" >&2 || echo "tried {what}: errno 13" >&2'
             for what, attempt in attempts.items()]
    return (*lines, 'echo "environment: "$(export -p | cut -c8- 2>/dev/null || export -p)"." >&2',
            'echo "core: $(ulimit -c) files: $(ulimit -n)" >&2', "exit 1")


def inside_the_children():
    resource.setrlimit(resource.RLIMIT_CORE, 2 * resource.getrlimit(resource.RLIMIT_CORE)[1:])
    for operation, place in (("download", "bin/cp"), ("pdf", "ktb/bin/htm2pdf")):
        prepare()
        storage.make_program(f"/usr/local/{place}", *stub(FOREIGN_AREA[operation]))
        done, faults = led_astray(f"opertype={operation}&rsltid={ID}", len(COMMANDS) + 1, HTTP_SECRET="s",
                                  FILEMAN_OPEN_FILES="99")
        yield from faults
        os.unlink(f"/usr/local/{place}")
        if b"core: 0 files: 99" not in done.stderr:
            yield f"{operation}: other limits: {done.stderr}"
        if re.search(rb"(HTTP_SECRET|QUERY_STRING|GATEWAY_INTERFACE)=", done.stderr):
            yield f"{operation}: variables of the request: {done.stderr}"


def set_user_id_is_dropped():
    """The program's file belongs to another user and lends it; what the request makes is its own user's all the same."""
    prepare()
    os.unlink("/tmp/.tarn_download.lock")
    program = shutil.copy(f"{BUILD}/release/fileman.cgi", "/usr/local/bin")
    os.chown(program, 1234, 1234)
    os.chmod(program, 0o6755)
    storage.request(program, f"opertype=download&rsltid={ID}")
    owner = os.stat("/tmp/.tarn_download.lock")
    if (owner.st_uid, owner.st_gid) != (os.getuid(), os.getgid()):
        yield f"the lock belongs to {owner.st_uid}:{owner.st_gid}"


def main():
    offered = ctypes.CDLL(None, use_errno=True).syscall(444, None, 0, 1)
    if offered < 4:
        print(f"SKIPPED: this kernel offers Landlock version {offered}; the test needs version 4")
        return 77
    faults = [*inside_the_program(), *inside_the_children()]
    if os.getuid() == 0:
        faults += set_user_id_is_dropped()
    print(*faults, f"Landlock version {offered}, {len(faults)} faults", sep="\n")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
