#!/usr/bin/python3
"""streaming.py PROGRAM [NAME...]: downloads of strict answers, whose archives are written straight from the
storage. Python takes the archives apart, and unzip a large one.
"""

import io
import os
import random
import subprocess
import sys
import zipfile

sys.dont_write_bytecode = True

from instrument import Instrument, entries, main, place  # noqa: E402
from storage import BERT, NO_ROOT_RIGHTS, same  # noqa: E402

NO_FILE = "neither a file nor a link to one"


def a_record_brings_its_companions(instrument):
    picture = b"\x89PNG" + bytes(5000)
    plain = ("one", "one.html", "one.xml", "one_files/deep/er.txt")
    for name in (*plain, "one_more.html", "two.html"):
        instrument.store(name, name.encode())
    instrument.store("one_files/chart.PNG", picture)
    instrument.tree.write("1ge/kte-prof/sfpport/bert-setup/one.html", b"profile")
    os.mkdir(instrument.stored("one_files/empty"))
    os.mkfifo(instrument.stored("one.fifo"))
    for name, target in {"loop": ".", "outside": "/etc/passwd", "dangling": "nothing", "near": "chart.PNG",
                         "far": f"/home/{BERT}/two.html"}.items():
        os.symlink(target, instrument.stored(f"one_files/{name}"))
    chosen = ("Result_one", "Profile_one")
    _, fields, body, messages = instrument.strict("download", *chosen, prefix="Ethernet_SFP_BERT_")
    same((fields["content-type"], "content-length" in fields), ("application/zip", False))
    with zipfile.ZipFile(io.BytesIO(body)) as archive:
        *found, last = archive.infolist()
        missing = archive.read(last).decode()
        contents = {info.filename: archive.read(info) for info in found}
    one = place("one")
    same(contents, {
        **{f"{one}/{name}": name.encode() for name in plain}, f"{one} (2)/one.html": b"profile",
        f"{one}/one_files/far": b"two.html", f"{one}/one_files/near": picture,
        f"{one}/one_files/chart.PNG": picture, f"{one}/one_files/empty/": b""})
    for info in found[:1] + found[-1:]:  # the time is that of the tree's files, in its zone
        same((info.date_time, oct(info.external_attr >> 16)), ((2001, 9, 9, 3, 46, 40), "0o100644"))
    same([info.filename for info in found if info.compress_type == zipfile.ZIP_STORED and not info.is_dir()],
         [f"{one}/one_files/chart.PNG"])
    wanted = {"one.fifo": NO_FILE, "one_files/dangling": "it is no longer stored", "one_files/loop": NO_FILE,
              "one_files/outside": "it lies outside the storage"}
    wanted = {f"/home/{BERT}/{name}": why for name, why in wanted.items()}
    same((last.filename, missing.splitlines()[2:]), ("MISSING.txt", [f"{path}: {wanted[path]}" for path in wanted]))
    same(messages, [f"fileman: download {path}: left out, {wanted[path]}" for path in wanted])


def names_that_no_command_could_carry(instrument):
    names = {b"-rf": "-rf", b"it's \"$(x)`;|*?": "it's \"$(x)`;|*?", b"\xc3\xa4": "\u00e4",
             b"C:,&=": "C%3A,&=", b"new\nline": "new%0Aline", b"latin\xe4": "latin%E4", b"n" * 240: "n" * 240}
    for name in names:
        instrument.store(name + b".html", name)
        instrument.store(name + b"_files/\xff", name)
    _, _, body, messages = instrument.strict("download", *names)
    same(messages, [])
    found = entries(body)
    for name, plain in names.items():
        top, = [entry for entry in found if entry.endswith(f"/{plain}.html")]
        same((found[top], found[top[:-5] + "_files/%FF"]), (name, name))
    for name in (".a.html", ".b.html", ".c"):  # records without a name
        instrument.store(name)
    found = entries(instrument.strict("download", "")[2])
    same({entry.rpartition("/")[2] for entry in found}, {".a.html", ".b.html"})


def what_cannot_be_opened_is_named(instrument):
    for name in ("closed.html", "closed.xml", "locked.html"):
        instrument.store(name)
    os.chmod(instrument.stored("closed.html"), 0)
    os.chmod(instrument.stored("locked.html"), 0)
    _, _, body, _ = instrument.strict("download", "closed", "gone", before=NO_ROOT_RIGHTS)
    found = entries(body)
    same(found.pop("MISSING.txt").decode().splitlines()[2:],
         [f"/home/{BERT}/closed.html: Permission denied", "Ethernet_SFP_BERT_Result_gone: no such result"])
    same(list(found), [place("closed") + "/closed.xml"])
    same(instrument.strict("download", "locked", before=NO_ROOT_RIGHTS)[0], 500)


def a_file_that_changes_is_cut_or_breaks_the_answer_off(instrument):
    """The pipe is full while the file changes. What is missing is not made up."""
    size = 1 << 20
    for operation, name, change, said in (("download", "grows", 2 * size, ""),
                                          ("download", "shrinks", size // 2, "the archive breaks off"),
                                          ("view", "viewed", size // 2, "it became shorter")):
        content = random.randbytes(size)
        instrument.store(f"{name}.png", content)
        with instrument.start_strict(operation, name) as process:
            first = process.stdout.read(1000)
            os.truncate(instrument.stored(f"{name}.png"), change)
            rest, messages = process.communicate()
        body = (first + rest).partition(b"\r\n\r\n")[2]
        if said:
            same((said in messages.decode(), len(body) < size, b"PK\5\6" in body), (True, True, False))
        else:
            same(list(entries(body).values()), [content])


def large_files_and_many(instrument):
    size, count = (4 << 30) + 5, 66000
    for name in ("large.html", "large_files/a.png", *(f"large_files/{number}" for number in range(count))):
        instrument.store(name, b"")
    os.truncate(instrument.stored("large_files/a.png"), size)
    archive = instrument.path("archive.zip")
    with instrument.start_strict("download", "large") as process:
        while process.stdout.readline() not in (b"\r\n", b""):
            pass
        subprocess.run(["dd", "conv=sparse", "bs=64k", "iflag=fullblock", f"of={archive}", "status=none"],
                       stdin=process.stdout, check=True)
    with zipfile.ZipFile(archive) as opened:
        sizes = [info.file_size for info in opened.infolist()]
        same((len(sizes), max(sizes), opened.testzip()), (count + 2, size, None))
    subprocess.run(["unzip", "-Zt", archive], stdout=subprocess.DEVNULL, check=True)


def twenty_at_once_wait_for_nobody_and_leave_nothing(instrument):
    """Each has begun while nineteen others hold what they have begun, too."""
    contents = [random.randbytes(1 << 20) for _ in range(20)]
    for number, content in enumerate(contents):
        instrument.store(f"report{number}.png", content)
    running = [instrument.start_strict("download", f"report{number}") for number in range(20)]
    begun = [process.stdout.read(1) for process in running]
    same(os.listdir(instrument.path("tmp")), [".private-storage"])
    for process, first, content in reversed([*zip(running, begun, contents)]):
        body = (first + process.communicate(timeout=120)[0]).partition(b"\r\n\r\n")[2]
        same(list(entries(body).values()), [content])
    same(os.listdir(instrument.path("tmp")), [".private-storage"])


if __name__ == "__main__":
    main(Instrument, *sys.argv[1:])
