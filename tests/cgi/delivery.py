#!/usr/bin/python3
"""delivery.py PROGRAM [NAME...]

Tests downloads, PDF exports and large views: whole answers, the entries of archives, and the files that are left. The
cases run at the same time, because each delivery pauses for a second. Each has its own directory; scripts/with-storage
mounts the home, tmp and usr-local of this directory over those of the machine.
"""

import concurrent.futures
import fcntl
import io
import os
import random
import re
import shutil
import subprocess
import sys
import tempfile
import time
import traceback
import zipfile

sys.dont_write_bytecode = True
os.umask(0o022)

import http_rules  # noqa: E402
from storage import BERT, Tree, environment  # noqa: E402

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
CONVERTER = b"""#!/bin/sh
# Replaces the converter: its "PDF" is the mark and the text of the file.
mkdir -p /tmp/pdf
while IFS= read -r task; do
  { echo %PDF; cat "${task% -> *}"; } >"/tmp/pdf/${task##* -> }"
done <"$1"
"""
HEAD = ("Content-Disposition:attachment;filename=%s\r\nContent-Length:%d\r\n"
        "Content-Type:application/octet-stream\r\n\r\n")
# What belongs in /tmp beside the two archives and what the two directories hold for a while.
KEPT = r".*/tmp/\(download\|pdf\|htm2pdf_task_list\|\.private-storage\|\.[^/]*\.lock\)"


def stub(*lines):
    return "\n".join(("#!/bin/sh", *lines, "")).encode()


class Instrument:
    """A private storage, and the requests to the program in it."""

    def __init__(self, program, directory):
        self.program, self.directory = program, directory
        with open(program, "rb") as file:
            self.sanitized = b"__asan_init" in file.read()
        for name in ("home", "tmp", "usr-local"):
            os.mkdir(self.path(name))
        self.tree = Tree(self.path("home"))
        # With the key of directories that have none, so that a delivery finds what lies in them.
        self.tree.configuration(lambda text: text.replace(b"</category>", b'<t label="Other" key=""/></category>'))
        self.tool("ktb/bin/htm2pdf", CONVERTER)

    def path(self, name):
        return os.path.join(self.directory, name)

    def tool(self, name, script):
        """A program below /usr/local, where "bin" comes before the machine's own."""
        place = self.path("usr-local/" + name)
        os.makedirs(os.path.dirname(place), exist_ok=True)
        with open(place, "wb") as file:
            file.write(script)
        os.chmod(place, 0o755)

    def reports(self, *names):
        for name in names:
            self.tree.write(f"{BERT}/{name}.html", f"report {name}\n".encode())
            self.tree.write(f"{BERT}/{name}_files/chart.png", f"chart {name}\n".encode())

    def start(self, operation, names, before=(), prefix=b"Ethernet_SFP_BERT_Result_", **more):
        ids = b",".join((prefix + os.fsencode(name))[:255] for name in names).replace(b"%", b"%25")
        return subprocess.Popen([os.path.join(ROOT, "scripts/with-storage"), self.directory, *before, self.program],
                                env=environment(b"opertype=" + operation.encode() + b"&rsltid=" + ids,
                                                PATH="/usr/local/bin:/usr/bin:/bin", **more), bufsize=0,
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def deliver(self, *what, **how):
        return finish(self.start(*what, **how))

    def left_in_tmp(self):
        """Returns the files that are left although the background removal had enough time."""
        for _ in range(100):
            left = subprocess.check_output(["find", self.path("tmp"), "-mindepth", "1", "-not", "-regex", KEPT])
            if not left:
                break
            time.sleep(0.05)
        return left.decode()

    def stored(self):
        return subprocess.check_output(["find", self.path("home"), "-type", "f", "-exec", "md5sum", "{}", "+"])


def finish(process):
    """Returns name, body and messages of an attachment. The request must succeed."""
    out, messages = process.communicate(timeout=120)
    # Loading prints the files of extra directories before the header.
    out = re.sub(rb"\A(Find at:.*\n)+", b"", out)
    name = re.match(rb"Content-Disposition:attachment;filename=(.*)\r\n", out)[1].decode()
    head, _, body = out.partition(b"\r\n\r\n")
    same((process.returncode, head.decode() + "\r\n\r\n"), (0, HEAD % (name, len(body))))
    return name, body, messages.decode(errors="replace")


def entries(archive):
    """Returns the files by name. zip writes the bytes of the name; Python decodes them as code page 437."""
    with zipfile.ZipFile(io.BytesIO(archive)) as opened:
        return {info.filename.encode("utf-8" if info.flag_bits & 0x800 else "cp437").decode(errors="replace"):
                opened.read(info) for info in opened.infolist() if not info.is_dir()}


def downloaded(*names):
    """The archive's files for reports of the given names."""
    return {f"[{name}]-[Bit Errors]-[SFP (optical)]-[Ethernet Tests]/{name}{file}": f"{kind} {name}\n".encode()
            for name in names for file, kind in ((".html", "report"), ("_files/chart.png", "chart"))}


def exported(*names):
    return {f"{name}.pdf": f"%PDF\nreport {name}\n".encode() for name in names}


def same(found, wanted):
    assert found == wanted, f"\n  expected {wanted!r}\n  found    {found!r}"


def nothing_was_run():
    """Some names try to make a file in the directory where the program was started."""
    same(subprocess.run(["rm", ROOT + "/canary"], stderr=subprocess.DEVNULL, check=False).returncode, 1)


def downloads_bring_companions(instrument):
    instrument.reports("one", "two", "three")
    for companion in ("one.xml", "one", "one_more.html"):
        instrument.tree.write(f"{BERT}/{companion}", b"companion")
    os.mkfifo(instrument.tree.place(BERT + "/one.fifo"))
    for name, target in (("loop", "."), ("around", ".."), ("outside", "/etc/passwd"), ("neighbour", "chart.png"),
                         ("stored", f"/home/{BERT}/two.html")):
        os.symlink(target, instrument.tree.place(f"{BERT}/one_files/{name}"))
    place = "[one]-[Bit Errors]-[SFP (optical)]-[Ethernet Tests]/"
    name, archive, messages = instrument.deliver("download", ("three", "unknown", "one"))
    same((name, entries(archive)), ("tarn_download.zip", {
        **downloaded("three", "one"), place + "one": b"companion", place + "one.xml": b"companion",
        place + "one_files/neighbour": b"chart one\n", place + "one_files/stored": b"report two\n"}))
    same(sorted(re.findall(r"^fileman: pack /tmp/download/.*/(.*): left out, ", messages, re.M)),
         ["around", "loop", "one.fifo", "outside"])
    same(instrument.deliver("download", ("unknown",))[:2], ("tarn_download.zip", b""))
    same(instrument.left_in_tmp(), "")


def pdf_of_one_several_and_none(instrument):
    instrument.reports("one", "two", "three")
    same(instrument.deliver("pdf", ("two",))[:2], ("two.pdf", b"%PDF\nreport two\n"))
    name, archive, _ = instrument.deliver("pdf", ("two", "one"))
    same((name, entries(archive)), ("tarn_pdf.zip", exported("one", "two")))
    same(instrument.deliver("pdf", ("unknown",))[:2], ("tarn_pdf.zip", b""))
    os.unlink(instrument.path("usr-local/ktb/bin/htm2pdf"))
    same(instrument.deliver("pdf", ("one",))[:2], ("one.pdf", b""))
    same(instrument.left_in_tmp(), "")


def hostile_names_are_left_out_or_carried_whole(instrument):
    instrument.tree.make("weird-names")
    for name in (b"-T -TT touch canary", b"';touch canary;'", b"$IFS", b"~root", b"$(touch${IFS}canary)"):
        instrument.tree.write(os.fsencode(BERT) + b"/" + name + b".html")
    folder = instrument.tree.place(BERT)
    names = [name[:-5] for name in os.listdir(folder) if re.fullmatch(rb"[^.,&]+\.html", name, re.S)]
    for name in names:
        with open(os.path.join(folder, name + b".html"), "wb") as file:
            file.write(name)
    before = instrument.stored()
    for operation, what, hostile, begin in (("download", "download", rb"['\0-\x1f]|^-", b""),
                                            ("pdf", "export to PDF", rb"[\0-\x1f]|^-", b"%PDF\n")):
        _, archive, messages = instrument.deliver(operation, names)
        carried = [begin + name for name in names if not re.search(hostile, name)]
        same(sorted(entries(archive).values()), sorted(carried))
        same(len(re.findall(f"^fileman: {what} /home/.*: left out, its ", messages, re.M)), len(names) - len(carried))
    same(instrument.deliver("pdf", (b"new\nline",))[:2], ("tarn_pdf.zip", b""))
    same((instrument.stored(), instrument.left_in_tmp()), (before, ""))
    nothing_was_run()


def hostile_directories_are_left_out(instrument):
    kinds = ("$(touch canary)", "`touch canary`", ";touch canary;", "b c", "new\nline", "sta*", "'quoted'", "plain")
    for kind in kinds:
        instrument.tree.write(f"1ge/kte-rslt/sfpport/{kind}-rslt/one.html", kind.encode())
    before = instrument.stored()
    _, archive, messages = instrument.deliver("download", ("one",), prefix=b"Ethernet_SFP__Result_")
    same(entries(archive), {"[one]-[Other]-[SFP (optical)]-[Ethernet Tests]/one.html": b"plain"})
    same(len(re.findall("^fileman: download /home/.*: left out, its ", messages, re.M)), len(kinds) - 1)
    same(instrument.stored(), before)
    nothing_was_run()


def many_at_once_each_with_its_own(instrument):
    names = [f"report{number}" for number in range(40)]
    instrument.reports(*names)
    count = 5 if instrument.sanitized else 20
    wanted = [(operation, random.sample(names, 3)) for operation in ("download", "pdf") * count]
    running = [instrument.start(*what) for what in wanted]
    with concurrent.futures.ThreadPoolExecutor(len(running)) as pool:
        answers = list(pool.map(finish, running))
    assert not any("without" in messages for _, _, messages in answers), "too slow here: a lock was not waited for"
    for (operation, chosen), (_, archive, _) in zip(wanted, answers):
        same(entries(archive), (exported if operation == "pdf" else downloaded)(*chosen))
    same(instrument.left_in_tmp(), "")


def killed_requests_leave_nothing_to_the_next(instrument):
    names = [f"report{number}" for number in range(12)]
    instrument.reports(*names)
    started = time.monotonic()
    with instrument.start("download", names) as process:
        process.stdout.read(1)
        usual = min(time.monotonic() - started, 0.3)
        process.communicate()
    for _ in range(2):
        for number in range(25):
            with instrument.start(("download", "pdf")[number % 2], names) as process:
                time.sleep(random.uniform(0.1, 1.2) * usual)
                process.kill()
                process.communicate()
        same(entries(instrument.deliver("download", names[:2])[1]), downloaded(*names[:2]))
        same(entries(instrument.deliver("pdf", names[:2])[1]), exported(*names[:2]))
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
    for name, size, wanted in (("beyond", 700_000, downloaded("small")), ("half", 250_000, {})):
        instrument.tree.write(f"{BERT}/{name}.html", random.randbytes(size))
        _, body, messages = instrument.deliver("download", ("small", name),
                                               before=("unshare", "-m", "--propagation", "unchanged", "sh", "-c", script))
        same((entries(body) if body else {}, re.findall("^left:.*", messages, re.M)), (wanted, ["left: /tmp/download:"]))
        assert re.search(r"^fileman: (download /home/.*beyond.*: left out, |pack .*: the packer failed)", messages, re.M)


def planted_links_and_fifos_lead_nowhere(instrument):
    instrument.reports("one", "two")
    before = instrument.stored()
    for name in ("download", "pdf"):
        os.symlink("/home/" + BERT, instrument.path("tmp/" + name))
        os.symlink(f"/home/{BERT}/one.html", instrument.path(f"tmp/tarn_{name}.zip"))
    os.mkfifo(instrument.path("tmp/htm2pdf_task_list"))
    same(entries(instrument.deliver("download", ("one", "two"))[1]), downloaded("one", "two"))
    same(entries(instrument.deliver("pdf", ("one", "two"))[1]), exported("one", "two"))
    same(instrument.stored(), before)


def foreign_areas_are_left_alone(instrument):
    """The user cannot remove files of another user in /tmp. Then no command runs there and no file is sent."""
    before = ("setpriv", "--reuid=1001", "--regid=1001", "--clear-groups")
    instrument.reports("one")
    instrument.tool("ktb/bin/htm2pdf", stub("echo converted >&2"))
    for name in ("download/planted.txt", "pdf/one.pdf", "tarn_download.zip", "tarn_pdf.zip", "htm2pdf_task_list"):
        Tree(instrument.path("tmp")).write(name, b"%PDF-1.4 of somebody else\n%%EOF\n")
    subprocess.run(["chown", "-R", "1002:1002", instrument.path("tmp")], check=True)
    os.chown(instrument.path("tmp"), 0, 0)
    os.chmod(instrument.path("tmp"), 0o1777)

    def answers():
        for operation, names in (("download", ("one",)), ("download", ("unknown",)), ("pdf", ("one",)), ("pdf", ())):
            _, body, messages = instrument.deliver(operation, names, before=before)
            same(body, b"")
            assert re.search("^fileman: .* /tmp/.*: ", messages, re.M) and "converted" not in messages, messages

    answers()
    for name in ("download", "pdf"):
        shutil.rmtree(instrument.path("tmp/" + name))
    answers()
    for operation in ("download", "pdf"):
        with open(instrument.path(f"tmp/.tarn_{operation}.lock"), "wb") as lock:
            os.fchown(lock.fileno(), 1002, 1002)
            os.fchmod(lock.fileno(), 0o666)
        same(instrument.deliver(operation, ("one",))[1], b"")


def looping_neighbour_gets_and_breaks_nothing(instrument):
    """Another user plants links, files and directories while the program runs as root."""
    instrument.reports("one", "two")
    instrument.tool("ktb/bin/htm2pdf", CONVERTER + b"grep -v -e one -e two $1 && echo foreign tasks >&2; true\n")
    tmp, secret = instrument.path("tmp"), instrument.path("home/secret")
    with open(secret, "wb") as file:
        file.write(b"secret")
    os.chmod(secret, 0o600)
    os.chmod(tmp, 0o1777)
    script = """import os, shutil
open(".planted", "w").write("/home/secret -> one.pdf\\n/home/secret -> two.pdf\\n")
while True:
    for step in (lambda: os.symlink("/home/secret", "tarn_download.zip"), lambda: os.symlink("/home/secret", "tarn_pdf.zip"),
                 lambda: shutil.copy(".planted", "htm2pdf_task_list"), lambda: os.mkdir("pdf"),
                 lambda: os.mkdir("tarn_download.zip"), lambda: os.mkdir("download")):
        try: step()
        except OSError: pass
"""
    neighbour = subprocess.Popen(["setpriv", "--reuid=1002", "--regid=1002", "--clear-groups", sys.executable, "-Ic",
                                  script], cwd=tmp)
    try:
        time.sleep(0.3)
        for _ in range(3):
            running = [instrument.start(operation, ("one", "two")) for operation in ("download", "pdf")]
            for process, wanted in zip(running, (downloaded, exported)):
                _, archive, messages = finish(process)
                assert "foreign tasks" not in messages and (not archive or entries(archive) == wanted("one", "two")), messages
        same(neighbour.poll(), None)
    finally:
        neighbour.kill()
        neighbour.wait()
    with open(secret, "rb") as file:
        same(file.read(), b"secret")
    same(entries(instrument.deliver("pdf", ("one", "two"))[1]), exported("one", "two"))
    same(entries(instrument.deliver("download", ("one", "two"))[1]), downloaded("one", "two"))


def failing_commands_leave_no_hollow_archive(instrument):
    instrument.reports("one", "two")
    left_out = rf"^fileman: download /home/{BERT}/two.html: left out, "
    for failing in ('/bin/cp "$@"; for to; do :; done; [ ! -f "$to/two.html" ] || printf five! >"$to/two.html"; exit 1',
                    'case "$*" in *two*) exit 127; esac; exec /bin/cp "$@"',
                    '/bin/cp "$@"; for to; do :; done; rm -rf "$to/two_files"'):
        instrument.tool("bin/cp", stub(failing))
        _, archive, messages = instrument.deliver("download", ("one", "two"))
        same(set(entries(archive)), set(downloaded("one")))
        same(len(re.findall(left_out, messages, re.M)), 1)
    os.unlink(instrument.path("usr-local/bin/cp"))
    for failing in ("exit 127", '/usr/bin/zip "$@" & sleep 0.05; kill -9 $!; wait $!'):
        instrument.tree.write(f"{BERT}/large{len(failing)}.html", random.randbytes(20 << 20))
        instrument.tool("bin/zip", stub(failing))
        _, archive, messages = instrument.deliver("download", (f"large{len(failing)}",))
        same((archive, len(re.findall("^fileman: pack /tmp/tarn_download.zip: ", messages, re.M))), (b"", 1))
        same(instrument.left_in_tmp(), "")


def more_companions_than_a_command_takes(instrument):
    """The limit for the arguments of a command is a quarter of the stack limit."""
    instrument.reports("one", "two")
    names = [f"one.{number}{'x' * 200}" for number in range(1000)]
    for name in names:
        instrument.tree.write(f"{BERT}/{name}", name.encode())
    os.symlink(f"/home/{BERT}/two.html", instrument.tree.place(f"{BERT}/one.link"))
    _, archive, _ = instrument.deliver("download", ("one", "two"), before=("prlimit", "--stack=524288"))
    place = "[one]-[Bit Errors]-[SFP (optical)]-[Ethernet Tests]/"
    same(entries(archive), {**downloaded("one", "two"), **{place + name: name.encode() for name in names},
                            place + "one.link": b"report two\n"})


def records_of_one_destination_are_named(instrument):
    for half in ("rslt", "prof"):
        instrument.tree.write(f"1ge/kte-{half}/sfpport/bert-{'result' if half == 'rslt' else 'setup'}/one.html",
                              half.encode())
    ids = ("Ethernet_SFP_BERT_Result_one", "Ethernet_SFP_BERT_Profile_one")
    _, archive, messages = instrument.deliver("download", ids, prefix=b"")
    same((list(entries(archive).values()), len(re.findall("^fileman: download /home/.*/one.html and /home/.*/one.html: "
                                                          "one directory", messages, re.M))), ([b"prof"], 1))


def half_pdfs_are_not_sent(instrument):
    instrument.reports("one", "two")
    whole, half = ("echo '%PDF-1.7 whole"r"\n%%EOF"f"' >/tmp/pdf/{name}.pdf" for name in ("one", "x")), "printf %s %PDF-1.7"
    whole = next(whole)
    for end in ("kill -9 $$", "exit 3", "exit 0"):
        instrument.tool("ktb/bin/htm2pdf", stub(whole, half + " >/tmp/pdf/two.pdf", end))
        _, archive, messages = instrument.deliver("pdf", ("one", "two"))
        same((list(entries(archive)), "two.pdf: left out, " in messages), (["one.pdf"], True))
        name, body, messages = instrument.deliver("pdf", ("two",))
        same((name, body, "two.pdf: left out, " in messages), ("two.pdf", b"", True))


def converter_ends_with_its_request(instrument):
    """All processes of the converter end: those that ignore the signal, and those it leaves when it ends."""
    stray = "(trap '' TERM; for i in $(seq 500); do echo >>/tmp/pdf/stray; sleep 0.02; done) & sleep 0.2"
    instrument.reports("one")
    for rest in ("echo started >&2; sleep 60", "exit 0"):
        instrument.tool("ktb/bin/htm2pdf", stub(stray, rest))
        with instrument.start("pdf", ("one",)) as process:
            if "started" in rest:
                same(process.stderr.readline(), b"started\n")
                process.terminate()
            finish(process)
        same(instrument.left_in_tmp(), "")
        time.sleep(0.1)
        same(instrument.left_in_tmp(), "")


def abandoned_request_leaves_the_queue(instrument):
    """Two requests that wait: the reader of one is gone, and the server ends the other."""
    with open(instrument.path("tmp/.tarn_download.lock"), "wb") as lock:
        os.fchmod(lock.fileno(), 0o600)
        fcntl.flock(lock, fcntl.LOCK_EX)
        waiting = [instrument.start("download", ("one",)) for _ in range(2)]
        time.sleep(0.5)
        same([process.poll() for process in waiting], [None, None])
        waiting[0].stdout.close()
        waiting[1].terminate()
        for process in waiting:
            process.wait(timeout=5)
            process.stderr.close()
        waiting[1].stdout.close()
    same(os.listdir(instrument.path("tmp/download")), [])


def server_or_reader_that_leaves_early_leaves_nothing(instrument):
    """Web servers end the program by SIGTERM as soon as they have all bytes, before the removal."""
    instrument.tree.write(f"{BERT}/large.html", random.randbytes(4 << 20))
    for operation, server_leaves in (("download", True), ("pdf", True), ("download", False)):
        with instrument.start(operation, ("large",)) as process:
            process.stdout.read(1)
            if server_leaves:
                process.terminate()
                process.stdout.read()
        same(instrument.left_in_tmp(), "")
        same(instrument.deliver(operation, ("unknown",))[1], b"")


def strict_exports_are_honest(instrument):
    """A PDF by name, several in an archive that is streamed, and a status instead of an answer that looks whole."""
    whole = CONVERTER.replace(b"; }", b"; echo %%EOF; }")
    other = "1ge/kte-rslt/sfpport/ping-result/one.html"
    instrument.reports("one", "two", "caf\u00e9")
    instrument.tree.write(other, b"ping one\n")
    ping, bert = b"Ethernet_SFP_Ping_Result_", b"Ethernet_SFP_BERT_Result_"

    def export(*ids, tool=whole, before=()):
        instrument.tool("ktb/bin/htm2pdf", tool)
        process = instrument.start("pdf", ids, before, prefix=b"", FILEMAN_ANSWERS="strict")
        out, messages = process.communicate(timeout=120)
        same((process.returncode, b"Find at" in out), (0, False))
        return *http_rules.check(out), messages.decode(errors="replace")

    status, fields, body, _ = export(bert + "caf\u00e9".encode())
    same((status, fields["content-type"], http_rules.file_name(fields), body),
         (200, "application/pdf", "caf\u00e9.pdf", b"%PDF\nreport caf\xc3\xa9\n%%EOF\n"))
    status, fields, body, _ = export(bert + b"one", ping + b"one")
    same((status, fields["content-type"], http_rules.file_name(fields)), (200, "application/zip", "fileman_pdf.zip"))
    same(sorted(entries(body).values()), [b"%PDF\nping one\n%%EOF\n", b"%PDF\nreport one\n%%EOF\n"])
    same(sorted(entries(body)), ["one (2).pdf", "one.pdf"])
    # The second one is not whole; it has been made, but ends early.
    status, _, body, _ = export(bert + b"one", bert + b"two", tool=CONVERTER.replace(
        b"; }", b"; case $task in *one*) echo %%EOF ;; esac; }"))
    same((status, b"two.html (it is not whole)" in body, b"one.html" in body), (500, True, False))
    with open(instrument.path("tmp/.tarn_pdf.lock"), "wb") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)
        same(export(bert + b"one")[0], 503)
    same(instrument.left_in_tmp(), "")


def view_of_3_gib_needs_no_memory(instrument):
    size, rest = 3 << 30, 4 << 20
    instrument.tree.write(f"{BERT}/large.html", b"")
    os.truncate(instrument.tree.place(f"{BERT}/large.html"), size)
    head = f"Content-Length:{size}\r\nContent-Type:text/html;charset=utf-8\n\n\r\n\r\n".encode()
    with instrument.start("view", ("large",)) as process, open("/dev/null", "wb") as null:
        same(process.stdout.read(len(head)), head)
        while size > rest:
            size -= os.splice(process.stdout.fileno(), null.fileno(), min(size - rest, 1 << 20))
        with open(f"/proc/{process.pid}/status", encoding="ascii") as file:
            resident = int(re.search(r"VmHWM:\s+(\d+) kB", file.read())[1])
        same((len(process.communicate()[0]), process.returncode), (rest, 0))
    assert resident < (256 if instrument.sanitized else 16) << 10, f"{resident} kB resident"


CASES = (
    many_at_once_each_with_its_own, killed_requests_leave_nothing_to_the_next, view_of_3_gib_needs_no_memory,
    downloads_bring_companions, pdf_of_one_several_and_none, hostile_names_are_left_out_or_carried_whole,
    hostile_directories_are_left_out, full_tmp_gives_an_honest_answer,
    planted_links_and_fifos_lead_nowhere, server_or_reader_that_leaves_early_leaves_nothing,
    looping_neighbour_gets_and_breaks_nothing, failing_commands_leave_no_hollow_archive,
    more_companions_than_a_command_takes, records_of_one_destination_are_named, half_pdfs_are_not_sent,
    converter_ends_with_its_request, strict_exports_are_honest, abandoned_request_leaves_the_queue,
) + ((foreign_areas_are_left_alone,) if os.geteuid() == 0 else ())


def run(case, program):
    """Returns the report of a failure, or None."""
    # In memory a hole costs nothing, on a disk's file system every page of it does.
    in_memory = case is view_of_3_gib_needs_no_memory and os.access("/dev/shm", os.W_OK)
    directory = tempfile.mkdtemp(prefix="fileman-delivery-", dir="/dev/shm" if in_memory else None)
    try:
        case(Instrument(program, directory))
    except Exception:
        return f"FAILED {case.__name__}\n{traceback.format_exc()}"
    finally:
        shutil.rmtree(directory)
    return None


def main(program, *names):
    program = os.path.relpath(program, ROOT)
    os.chdir(ROOT)
    if not os.access(program, os.X_OK):
        sys.exit(f"delivery.py: no program {program}; cmake --preset release (or asan) and its build make it")
    cases = [case for case in CASES if not names or case.__name__ in names]
    with concurrent.futures.ThreadPoolExecutor(len(cases)) as pool:
        failures = list(filter(None, pool.map(lambda case: run(case, program), cases)))
    print(*failures, f"{len(cases)} cases, {len(failures)} failed", sep="\n")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
