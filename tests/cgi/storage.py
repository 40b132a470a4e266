"""Named storage trees, small makers, and the way to start the program as a web server does."""

import os
import socket
import subprocess

HERE = os.path.dirname(os.path.abspath(__file__))
CONFIGURATION = ".resultmanager/result-config-ktd.xml"
BERT = "1ge/kte-rslt/sfpport/bert-result"
# A zone with daylight saving time that needs no zone files.
ZONE = "CET-1CEST,M3.5.0,M10.5.0/3"
NO_ROOT_RIGHTS = ("setpriv", "--bounding-set=-dac_override,-dac_read_search",
                  "--inh-caps=-dac_override,-dac_read_search")


def is_private():
    return os.environ.get("FILEMAN_PRIVATE_STORAGE") == "1" and os.path.exists("/tmp/.private-storage")


def environment(query, **more):
    """What the program may see, and how a sanitizer's report ends it."""
    values = {"PATH": "/usr/bin:/bin", "TZ": ZONE, "ASAN_OPTIONS": "exitcode=86:allocator_may_return_null=1",
              "UBSAN_OPTIONS": "print_stacktrace=1", **more}
    return values if query is None else {**values, "QUERY_STRING": query}


def request(program, query, prefix=(), seconds=30, **more):
    """The finished process; one that does not end by itself raises TimeoutExpired."""
    return subprocess.run([*prefix, program], env=environment(query, **more), stdin=subprocess.DEVNULL,
                          capture_output=True, timeout=seconds, check=False)


def empty(directory):
    subprocess.run(["find", directory, "-mindepth", "1", "-delete"], check=True)


class Tree:
    """Writes below a home directory; names are text or bytes."""

    def __init__(self, home="/home"):
        self.home = os.fsencode(home)

    def place(self, path):
        place = os.path.join(self.home, os.fsencode(path))
        os.makedirs(os.path.dirname(place), exist_ok=True)
        return place

    def write(self, path, data=b"<html>report</html>\n"):
        with open(self.place(path), "xb") as file:
            file.write(data)

    def files(self, directory, *names):
        for name in names:
            self.write(os.path.join(os.fsencode(directory), os.fsencode(name)))

    def directory(self, path):
        os.makedirs(self.place(path))

    def link(self, path, target):
        os.symlink(target, self.place(path))

    def fifo(self, path):
        os.mkfifo(self.place(path))

    def socket(self, path):
        with socket.socket(socket.AF_UNIX) as end:
            end.bind(self.place(path))

    def configuration(self, change=lambda text: text):
        with open(os.path.join(HERE, "basic.xml"), "rb") as file:
            self.write(CONFIGURATION, change(file.read()))


def advanced(job="", account="", locator="", kind=""):
    return (f'<result><KTB_AdvInfo job_id="{job}" account_id="{account}" locator="{locator}" advtype="{kind}"'
            ' prefix="" suffix=""/></result>').encode()


def basic(tree):
    tree.configuration()
    tree.files(BERT, "line_1.html", "line_1_files/chart.html", "line_2.html", "line_2.png", "notes.txt", "shot.PNG",
               "Last configuration.html", "Last configuration")
    tree.write(BERT + "/line_1", advanced("JOB-7", "ann", "None of these", "Acceptance"))
    tree.write(BERT + "/line_2", advanced("JOB-8", "bob", "Lab", "None"))
    tree.files("1ge/kte-rslt/sfpport2/bert-result", "spare.html")
    tree.files("1ge/kte-rslt/sfpport/odd-rslt", "odd.html")
    tree.files("1ge/kte-rslt/10gport/latency-result", "up.html")
    tree.files("1ge/kte-rslt/10gport2/latency-result", "down.pcap")
    tree.files("1ge/kte-rslt/auxport/bert-result", "undeclared.html")
    tree.files("1ge/kte-prof/sfpport/bert-setup", "setup.html", "Last configuration.html")
    tree.files("1ge/ktf-rslt/fmonitor-result", "fiber.html")
    tree.directory("1ge/ktf-rslt/old-fmonitor")
    tree.files("2g5/html-files/p1/bert", "flat.html")
    tree.files("2g5/html-files/p2/bert", "extra.html")
    tree.files("2g5/html-files/p2/portless", "portless.html")
    tree.files("2g5/html-files/setups", "extra_setup.html")
    tree.files("2g5/mtie-results/m1", "m1")
    for name in ("m1", "m2_without_item"):
        tree.directory(f"2g5/mtie-results/{name}/mtie")
    tree.files("2g5/mtie-results/unfinished", "unfinished")
    tree.files("cpri/cpri-layer1-rslt", "layer_1.html")
    tree.files("cpri/plain", "unknown_type.html")
    tree.files("cpri/layer1-prof", "layer_1_setup.html")
    tree.files("root/ktb-rslt/sfpport/ping-result", "ping.html")
    tree.files("root/ktb-prof/sfpport/ping-setup", "ping_setup.html")
    tree.files("root/ktb-rslt/fiberscope", "scope.jpg", "scope.jpeg")
    tree.write("root/ktb-rslt/fiberscope/scope.xml", advanced("JOB-9"))
    tree.write("ktb/screen/shot_1.png", bytes(range(256)))
    tree.write("ktb/screen/shot_1.xml", advanced("JOB-7"))
    tree.files("ktb/screen", "shot_2.bmp")


def links(tree):
    """What is no regular file and no directory, and directories in the places of files."""
    tree.configuration()
    tree.files(BERT, "plain.html", "beside_directory.html", "beside_link.html", "beside_fifo.html")
    tree.link(BERT + "/linked.html", "plain.html")
    tree.link(BERT + "/nowhere.html", "missing.html")
    tree.link(BERT + "/loop.html", "loop.html")
    tree.link(BERT + "/around", "..")
    tree.fifo(BERT + "/fifo.html")
    tree.socket(BERT + "/socket.html")
    tree.files(BERT + "/directory.html", "inside.html")
    tree.files(BERT + "/beside_directory", "inside.html")
    tree.write("elsewhere/advanced", advanced("JOB-1"))
    tree.link(BERT + "/beside_link", "/home/elsewhere/advanced")
    tree.fifo(BERT + "/beside_fifo")
    # A port or a type that is a link is passed over; a configured directory that is one is listed.
    tree.link("1ge/kte-rslt/10gport", "sfpport")
    tree.link("1ge/kte-rslt/sfpport/latency-result", "bert-result")
    tree.link("1ge/kte-rslt/ring", "/home")
    tree.files("elsewhere/setups/sfpport/bert-setup", "setup.html")
    tree.link("1ge/kte-prof", "../elsewhere/setups")
    tree.files("1ge/ktf-rslt", "sfpport")
    tree.files("root/ktb-rslt", "fiberscope")
    # The item of an MTIE measurement is listed unseen.
    for name in ("directory", "fifo", "link", "loop"):
        tree.directory(f"2g5/mtie-results/{name}/mtie")
    tree.directory("2g5/mtie-results/directory/directory")
    tree.fifo("2g5/mtie-results/fifo/fifo")
    tree.link("2g5/mtie-results/link/link", "/home/" + BERT + "/plain.html")
    tree.link("2g5/mtie-results/loop/loop", "loop")


WEIRD = (b"it's", b'say "hi"', b" blanks ", b"100%s%n%d", b"-rf", b"</script><b>", b"back\\slash", b"tab\tand\x1besc",
         b"new\nline", b"\xff\xfe no text", b"$(touch canary)", b"`touch canary`", b";touch canary;", b"a&b=c", b"a,b",
         b"*", b"n" * 250)


def weird_names(tree):
    tree.configuration()
    tree.files(BERT, *(name + b".html" for name in WEIRD), b".html", b"two.dots.html", b"..html", b"upper.HTML", b"html")
    tree.files("1ge/kte-rslt/sfpport/o'd d\n\xff-result".encode("latin-1"), "below.html")


def inaccessible(tree):
    """Run without the rights of root: what cannot be opened contributes nothing, what can is listed."""
    tree.configuration()
    tree.files(BERT, "open.html", "closed_info.html")
    tree.write(BERT + "/closed_info", advanced("JOB-1"))
    tree.files("1ge/kte-rslt/sfpport/latency-result", "type.html")
    tree.files("1ge/kte-rslt/10gport/latency-result", "port.html")
    tree.files("1ge/kte-prof/sfpport/bert-setup", "mode.html")
    tree.files("2g5/html-files/p2/bert", "extra.html")
    for path in (BERT + "/closed_info", BERT + "/open.html", "1ge/kte-rslt/sfpport/latency-result", "1ge/kte-prof",
                 "1ge/kte-rslt/10gport", "2g5/html-files/p2/bert"):
        os.chmod(tree.place(path), 0)


def advanced_information(tree):
    """A file beside each report: well-formed to the limit, beyond it, or not at all."""
    tree.configuration()
    information = advanced("JOB-1")
    nested = b"<a>%s</a>" % information
    documents = {
        "whole": information, "first_of_two": information.replace(b"</result>", b'<ktb_advinfo job_id=""/></result>'),
        "too_low": nested, "truncated": information[:-9], "without_content": b"", "blanks": b" \n", "binary": bytes(64),
        "at_limit": information.replace(b"</", b"<x>" * 127 + b"</x>" * 127 + b"</", 1),
        "beyond_limit": information.replace(b"</", b"<x>" * 128 + b"</x>" * 128 + b"</", 1),
        "abyss": b"<x>" * 100000, "attributes": b"<r " + b"a='1' " * 100000 + b">", "huge": information + b" " * (16 << 20),
    }
    for name, data in documents.items():
        tree.files(BERT, name + ".html")
        tree.write(f"{BERT}/{name}", data)


def deep(tree):
    """Directories beyond what a path can name, beside a result that is listed all the same."""
    tree.configuration()
    tree.files(BERT, "shallow.html")
    for name, count in (("d", 3000), ("n" * 255, 20)):
        here = os.open(tree.home, os.O_RDONLY)
        for _ in range(count):
            os.mkdir(name, dir_fd=here)
            below = os.open(name, os.O_RDONLY, dir_fd=here)
            os.close(here)
            here = below
        os.mkdir("cpri", dir_fd=here)
        os.close(here)


def nothing(_tree):
    pass


# Documents that configure nothing, and those at the limits that do.
BROKEN = {
    "empty": b"", "no_xml": b"hello", "no_root": b"<!-- only this -->", "no_filter": b"<r><filters/></r>",
    "nested_129": b"<r>" + b"<x>" * 128 + b"</x>" * 128 + b"<filter/></r>", "nested_100000": b"<x>" * 100000,
    "attributes": b"<r " + b"a='1' " * 100000 + b"/>", "binary": bytes(range(256)),
}
ACCEPTED = {
    "nested_128": lambda text: text.replace(b"<filter>", b"<x>" * 127 + b"</x>" * 127 + b"<FILTER>")
                                   .replace(b"</filter>", b"</FILTER>"),
    "at_16_mib": lambda text: text + b" " * ((16 << 20) - len(text)),
    "byte_order_mark": lambda text: b"\xef\xbb\xbf" + text,
}


def unconfigured(kind):
    """The basic tree's reports, with something in the document's place that configures nothing."""
    def make(tree):
        tree.files(BERT, "line_1.html")
        if kind == "truncated":
            tree.configuration(lambda text: text[:-200])
        elif kind == "beyond_16_mib":
            tree.configuration(lambda text: text + b" " * ((16 << 20) + 1 - len(text)))
        elif kind == "unreadable":
            tree.configuration()
            os.chmod(tree.place(CONFIGURATION), 0)
        elif kind in ("directory", "fifo", "socket"):
            getattr(tree, kind)(CONFIGURATION)
        elif kind != "missing":
            tree.write(CONFIGURATION, BROKEN[kind])
    make.__name__ = kind
    return make


def configured(kind):
    def make(tree):
        tree.configuration(ACCEPTED[kind])
        tree.files(BERT, "line_1.html")
    make.__name__ = kind
    return make
