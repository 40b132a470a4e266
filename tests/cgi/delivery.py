#!/usr/bin/python3
"""delivery.py PROGRAM [NAME...]

Tests downloads, PDF exports and large views: whole answers, the entries of archives, and the files that are
left. Each delivery of default answers pauses for a second.
"""

import concurrent.futures
import fcntl
import os
import random
import re
import shutil
import subprocess
import sys
import time
from pathlib import Path

sys.dont_write_bytecode = True

import http_rules  # noqa: E402
from instrument import CONVERTER, ROOT, Instrument, entries, main, place  # noqa: E402
from storage import BERT, Tree, everything_stored, same  # noqa: E402

HEAD = re.compile(rb"(?:Find at:.*\n)*"  # loading prints the files of extra directories before the header
                  rb"Content-Disposition:attachment;filename=(.*)\r\nContent-Length:(\d+)\r\n"
                  rb"Content-Type:application/octet-stream\r\n\r\n")
LEFT_OUT = re.compile("^fileman: .* /home/.*: left out, its ", re.M)
BOTH = ("download", "pdf")


def as_user(number):
    return "setpriv", f"--reuid={number}", f"--regid={number}", "--clear-groups"


def finish(process):
    """Returns name, body and messages of an attachment. The request must succeed."""
    out, messages = process.communicate(timeout=120)
    head = HEAD.match(out)
    body = out[head.end():]
    same((process.returncode, int(head[2])), (0, len(body)))
    return head[1].decode(), body, messages.decode(errors="replace")


class Deliveries(Instrument):
    def __init__(self, *where):
        super().__init__(*where)
        self.converter(CONVERTER)

    def converter(self, *script):
        self.tool("ktb/bin/htm2pdf", *script)

    def deliver(self, *what, **how):
        return finish(self.start(*what, **how))

    def reports(self, *names):
        for name in names:
            self.store(f"{name}.html", f"report {name}\n".encode())
            self.store(f"{name}_files/chart.png", f"chart {name}\n".encode())

    def delivers(self, operation, *names):
        """The archive has these reports, and nothing else."""
        same(entries(self.deliver(operation, *names)[1]), delivered(operation, *names))


def delivered(operation, *names):
    """The archive's files for reports of the given names."""
    if operation == "pdf":
        return {f"{name}.pdf": f"%PDF\nreport {name}\n".encode() for name in names}
    return {f"{place(name)}/{name}{file}": f"{kind} {name}\n".encode()
            for name in names for file, kind in ((".html", "report"), ("_files/chart.png", "chart"))}


def nothing_was_run():
    """Some names try to make a file in the directory where the program was started."""
    same(subprocess.run(["rm", ROOT + "/canary"], stderr=subprocess.DEVNULL, check=False).returncode, 1)


def downloads_bring_companions(instrument):
    """Of two files of one name in one directory of the archive the second stays."""
    instrument.reports("one", "two", "three")
    instrument.tree.write("1ge/kte-prof/sfpport/bert-setup/three.html", b"profile")
    for companion in ("one.xml", "one", "one_more.html"):
        instrument.store(companion, b"companion")
    os.mkfifo(instrument.stored("one.fifo"))
    for name, target in {"loop": ".", "around": "..", "outside": "/etc/passwd", "neighbour": "chart.png",
                         "stored": f"/home/{BERT}/two.html"}.items():
        os.symlink(target, instrument.stored(f"one_files/{name}"))
    chosen = ("Result_three", "Profile_three", "Result_unknown", "Result_one")
    name, archive, messages = instrument.deliver("download", *chosen, prefix="Ethernet_SFP_BERT_")
    companions = {"one": b"companion", "one.xml": b"companion", "one_files/neighbour": b"chart one\n",
                  "one_files/stored": b"report two\n"}
    same((name, entries(archive)), ("tarn_download.zip", {
        **delivered("download", "three", "one"), f"{place('three')}/three.html": b"profile",
        **{f"{place('one')}/{file}": content for file, content in companions.items()}}))
    left_out = re.findall(r"^fileman: .*/(.*): left out, ", messages, re.M)
    same(sorted(left_out), ["around", "loop", "one.fifo", "outside"])
    assert "/bert-setup/three.html: one directory in the archive" in messages, messages
    same(instrument.deliver("download", "unknown")[:2], ("tarn_download.zip", b""))
    same(instrument.left_in_tmp(), "")


def more_companions_than_a_command_takes(instrument):
    """The limit for the arguments of a command is a quarter of the stack limit."""
    instrument.reports("one", "two")
    names = [f"one.{number}{'x' * 200}" for number in range(1000)]
    for name in names:
        instrument.store(name, name.encode())
    os.symlink(f"/home/{BERT}/two.html", instrument.stored("one.link"))
    _, archive, _ = instrument.deliver("download", "one", "two", before=("prlimit", "--stack=524288"))
    same(entries(archive), {
        **delivered("download", "one", "two"), f"{place('one')}/one.link": b"report two\n",
        **{f"{place('one')}/{name}": name.encode() for name in names}})


def pdf_of_one_several_and_none(instrument):
    instrument.reports("one", "two", "three")
    same(instrument.deliver("pdf", "two")[:2], ("two.pdf", b"%PDF\nreport two\n"))
    instrument.delivers("pdf", "two", "one")
    same(instrument.deliver("pdf", "unknown")[:2], ("tarn_pdf.zip", b""))
    os.unlink(instrument.path("usr-local/ktb/bin/htm2pdf"))
    same(instrument.deliver("pdf", "one")[:2], ("one.pdf", b""))
    same(instrument.left_in_tmp(), "")


def hostile_names_are_left_out_or_carried_whole(instrument):
    instrument.tree.make("weird-names")
    for name in (b"-T -TT touch canary", b"';touch canary;'", b"$IFS", b"~root", b"$(touch${IFS}canary)"):
        instrument.store(name + b".html")
    folder = instrument.stored("")
    names = [name[:-5] for name in os.listdir(folder) if re.fullmatch(rb"[^.,&]+\.html", name, re.S)]
    for name in names:
        Path(os.fsdecode(folder + name + b".html")).write_bytes(name)
    before = everything_stored(instrument.path("home"))
    for operation, begin, refused in (("download", b"", rb"^-|['\0-\x1f]"),
                                      ("pdf", b"%PDF\n", rb"^-|[\0-\x1f]")):
        _, archive, messages = instrument.deliver(operation, *names)
        carried = [begin + name for name in names if not re.search(refused, name)]
        same(sorted(entries(archive).values()), sorted(carried))
        same(len(LEFT_OUT.findall(messages)), len(names) - len(carried))
    same((everything_stored(instrument.path("home")), instrument.left_in_tmp()), (before, ""))
    nothing_was_run()


def hostile_directories_are_left_out(instrument):
    kinds = ("$(touch canary)", "`touch canary`", ";touch canary;", "new\nline", "sta*", "'quoted'", "plain")
    for kind in kinds:
        instrument.tree.write(f"1ge/kte-rslt/sfpport/{kind}-rslt/one.html", kind.encode())
    _, archive, messages = instrument.deliver("download", "one", prefix="Ethernet_SFP__Result_")
    same(list(entries(archive).values()), [b"plain"])
    same(len(LEFT_OUT.findall(messages)), len(kinds) - 1)
    nothing_was_run()


def many_at_once_each_with_its_own(instrument):
    names = [f"report{number}" for number in range(40)]
    instrument.reports(*names)
    count = 5 if instrument.is_sanitized else 20
    chosen = [(operation, *random.sample(names, 3)) for operation in BOTH * count]
    running = [instrument.start(*what) for what in chosen]
    with concurrent.futures.ThreadPoolExecutor(len(running)) as pool:
        answers = list(pool.map(finish, running))
    assert not any("no sign of life" in messages for _, _, messages in answers), "a lock was given up"
    for what, (_, archive, _) in zip(chosen, answers):
        same(entries(archive), delivered(*what))
    same(instrument.left_in_tmp(), "")


def killed_requests_leave_nothing_to_the_next(instrument):
    names = [f"report{number}" for number in range(12)]
    instrument.reports(*names)
    for _ in range(2):
        for number in range(25):
            with instrument.start(BOTH[number % 2], *names) as process:
                time.sleep(random.uniform(0, 0.3))
                process.kill()
        for operation in BOTH:
            instrument.delivers(operation, *names[:2])
    same(instrument.left_in_tmp(), "")


def full_tmp_gives_an_honest_answer(instrument):
    """One report does not fit at all. Of the other one the copy fits, but not the archive."""
    script = """mount -t tmpfs -o size=400k tmpfs /tmp && "$0" || exit
                for try in $(seq 50); do
                  left=$(ls -A /tmp/download /tmp/*.zip 2>/dev/null)
                  [ "$left" = /tmp/download: ] && break
                  sleep 0.1
                done
                echo left: $left >&2"""
    instrument.reports("small")
    for name, size, wanted in (("beyond", 700_000, delivered("download", "small")), ("half", 250_000, b"")):
        instrument.store(f"{name}.html", random.randbytes(size))
        _, body, messages = instrument.deliver("download", "small", name, before=(
            "unshare", "-m", "--propagation", "unchanged", "sh", "-c", script))
        same((body and entries(body), re.findall("left:.*", messages)), (wanted, ["left: /tmp/download:"]))
        assert re.search("fileman: (download .*beyond.*: left out, |pack .*: the packer failed)", messages)


def foreign_areas_are_left_alone(instrument):
    """The user cannot remove them in /tmp. Then no command runs there, and no file is sent."""
    if os.geteuid() != 0:
        return
    instrument.reports("one")
    instrument.converter("echo converted >&2")
    tmp = instrument.path("tmp")
    for name in ("download/x.txt", "pdf/one.pdf", "tarn_download.zip", "tarn_pdf.zip", "htm2pdf_task_list"):
        Tree(tmp).write(name, b"%PDF-1.4 of somebody else\n%%EOF\n")
    subprocess.run(["chown", "-R", "1002:1002", tmp], check=True)
    os.chown(tmp, 0, 0)
    os.chmod(tmp, 0o1777)

    def nothing_is_sent():
        for what in (("download", "one"), ("download", "unknown"), ("pdf", "one"), ("pdf",)):
            _, body, messages = instrument.deliver(*what, before=as_user(1001))
            same((body, "fileman: " in messages, "converted" in messages), (b"", True, False))

    nothing_is_sent()
    for name in BOTH:
        shutil.rmtree(f"{tmp}/{name}")
    nothing_is_sent()
    for operation in BOTH:
        with open(f"{tmp}/.tarn_{operation}.lock", "wb") as lock:
            os.fchown(lock.fileno(), 1002, 1002)
            os.fchmod(lock.fileno(), 0o666)
        same(instrument.deliver(operation, "one")[1], b"")


def what_others_plant_meanwhile_leads_nowhere(instrument):
    """Another user plants links, files and directories while the program runs as root."""
    names = ("one", "two")
    instrument.reports(*names)
    instrument.converter(CONVERTER + "grep -v -e one -e two $1 && echo foreign tasks >&2; true")
    tmp, secret = instrument.path("tmp"), instrument.path("home/secret")
    instrument.tree.write("secret", b"secret")
    os.chmod(secret, 0o600)
    os.chmod(tmp, 0o1777)
    os.symlink("/home/" + BERT, tmp + "/download")
    os.mkfifo(tmp + "/htm2pdf_task_list")
    before = everything_stored(instrument.path("home"))
    script = """import os, shutil
open(".planted", "w").write("/home/secret -> one.pdf\\n/home/secret -> two.pdf\\n")
while True:
    for plant, *what in ((os.symlink, "/home/secret", "tarn_download.zip"), (os.mkdir, "tarn_download.zip"),
                         (os.symlink, "/home/secret", "tarn_pdf.zip"), (os.mkdir, "pdf"),
                         (shutil.copy, ".planted", "htm2pdf_task_list"), (os.mkdir, "download")):
        try: plant(*what)
        except OSError: pass
"""
    neighbour = subprocess.Popen([*as_user(1002), sys.executable, "-Ic", script], cwd=tmp)
    try:
        for _ in range(3):
            running = [instrument.start(operation, *names) for operation in BOTH]
            for operation, (_, archive, messages) in zip(BOTH, map(finish, running)):
                assert "foreign tasks" not in messages, messages
                same(archive and entries(archive), archive and delivered(operation, *names))
        same(neighbour.poll(), None)
    finally:
        neighbour.kill()
        neighbour.wait()
    same(everything_stored(instrument.path("home")), before)
    for operation in BOTH:
        instrument.delivers(operation, *names)


def failing_commands_leave_no_hollow_archive(instrument):
    instrument.reports("one", "two")
    for damage in ('[ ! -f "$to/two.html" ] || printf five! >"$to/two.html"; exit 1',
                   'rm -rf "$to/two_files"', 'rm -f "$to/two.html"; exit 127'):
        instrument.tool("bin/cp", '/bin/cp "$@"; for to; do :; done', damage)
        _, archive, messages = instrument.deliver("download", "one", "two")
        same(entries(archive), delivered("download", "one"))
        assert f"/home/{BERT}/two.html: left out, " in messages, messages
    os.unlink(instrument.path("usr-local/bin/cp"))
    instrument.store("large.html", random.randbytes(20 << 20))
    for failing in ("exit 127", '/usr/bin/zip "$@" & sleep 0.05; kill -9 $!; wait $!'):
        instrument.tool("bin/zip", failing)
        _, archive, messages = instrument.deliver("download", "large")
        same((archive, "fileman: pack /tmp/tarn_download.zip: " in messages), (b"", True))
        same(instrument.left_in_tmp(), "")


def half_pdfs_are_not_sent(instrument):
    instrument.reports("one", "two")
    whole = r"printf '%%PDF-1.7 whole\n%%%%EOF' >/tmp/pdf/one.pdf; printf %s %PDF-1.7 >/tmp/pdf/two.pdf"
    for end in ("kill -9 $$", "exit 3", "exit 0"):
        instrument.converter(whole, end)
        _, archive, messages = instrument.deliver("pdf", "one", "two")
        same((list(entries(archive)), "two.pdf: left out, " in messages), (["one.pdf"], True))
        name, body, messages = instrument.deliver("pdf", "two")
        same((name, body, "two.pdf: left out, " in messages), ("two.pdf", b"", True))


def the_converter_ends_with_its_request(instrument):
    """All processes of the converter end: those that ignore the signal, and those it leaves when it ends."""
    stray = "(trap '' TERM; for i in $(seq 500); do echo >>/tmp/pdf/stray; sleep 0.02; done) & sleep 0.2"
    instrument.reports("one")
    for rest in ("echo started >&2; sleep 200", "exit 0"):
        instrument.converter(stray, rest)
        with instrument.start("pdf", "one") as process:
            if "started" in rest:
                same(process.stderr.readline(), b"started\n")
                process.terminate()
            finish(process)
        same(instrument.left_in_tmp(), "")
        time.sleep(0.1)
        same(instrument.left_in_tmp(), "")


def an_abandoned_request_leaves_the_queue(instrument):
    """Two requests that wait: the reader of one is gone, and the server ends the other."""
    with open(instrument.path("tmp/.tarn_download.lock"), "wb") as lock:
        os.fchmod(lock.fileno(), 0o600)
        fcntl.flock(lock, fcntl.LOCK_EX)
        waiting = [instrument.start("download", "one") for _ in range(2)]
        time.sleep(0.5)
        same([process.poll() for process in waiting], [None, None])
        waiting[0].stdout.close()
        waiting[1].terminate()
        messages = [process.stderr.read() for process in waiting]
    assert b"nobody waits for the answer any more" in messages[0], messages
    same(os.listdir(instrument.path("tmp/download")), [])


def a_server_or_reader_that_leaves_early_leaves_nothing(instrument):
    """Web servers end the program by SIGTERM as soon as they have all bytes, before the removal."""
    instrument.store("large.html", random.randbytes(4 << 20))
    for operation, server_leaves in (("download", True), ("pdf", True), ("download", False)):
        with instrument.start(operation, "large") as process:
            process.stdout.read(1)
            if server_leaves:
                process.terminate()
                process.stdout.read()
        same(instrument.left_in_tmp(), "")
        same(instrument.deliver(operation, "unknown")[1], b"")


def strict_exports_are_honest(instrument):
    """A PDF by name, several in a streamed archive, and a status instead of an answer that looks whole."""
    instrument.reports("one", "two", "caf\u00e9")
    instrument.tree.write("1ge/kte-rslt/sfpport/ping-result/one.html", b"ping one\n")
    instrument.converter(CONVERTER.replace("; }", "; echo %%EOF; }"))
    status, fields, body, _ = instrument.strict("pdf", "caf\u00e9")
    same((status, fields["content-type"], http_rules.file_name(fields), body.decode()),
         (200, "application/pdf", "caf\u00e9.pdf", "%PDF\nreport caf\u00e9\n%%EOF\n"))
    both = ("BERT_Result_one", "Ping_Result_one")
    status, fields, body, _ = instrument.strict("pdf", *both, prefix="Ethernet_SFP_")
    same((status, http_rules.file_name(fields), set(entries(body)), set(entries(body).values())), (
        200, "fileman_pdf.zip", {"one (2).pdf", "one.pdf"},
        {b"%PDF\nping one\n%%EOF\n", b"%PDF\nreport one\n%%EOF\n"}))
    instrument.converter(CONVERTER.replace("; }", "; case $task in *one*) echo %%EOF ;; esac; }"))
    status, _, body, _ = instrument.strict("pdf", "one", "two")
    same((status, b"two.html (it is not whole)" in body, b"one.html" in body), (500, True, False))
    with open(instrument.path("tmp/.tarn_pdf.lock"), "wb") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)
        status, fields, _, _ = instrument.strict("pdf", "one")
        same((status, "retry-after" in fields), (503, True))
    same(instrument.left_in_tmp(), "")


def a_view_over_4_gib_needs_no_memory(instrument):
    size = (4 << 30) + 123
    instrument.store("large.html", b"")
    os.truncate(instrument.stored("large.html"), size)
    limit = {} if instrument.is_sanitized else {"FILEMAN_MEMORY_MIB": "16"}
    head = f"Content-Length:{size}\r\nContent-Type:text/html;charset=utf-8\n\n\r\n\r\n".encode()
    with instrument.start("view", "large", **limit) as process:
        same(process.stdout.read(len(head)), head)
        same(int(subprocess.check_output(("wc", "-c"), stdin=process.stdout)), size)


if __name__ == "__main__":
    main(Deliveries, *sys.argv[1:])
