"""clean_root_test.py PACKAGES: the Debian packages on a bare Debian 12, beside each stock server.

A bare system is made once in build/clean-root. For each server an overlay of it gets the server, then the package by its
documented commands; the page is asked for on a network of its own, and purging has to leave the files as they were.
"""

import contextlib
import glob
import os
import shutil
import subprocess
import sys
import unittest

sys.path.insert(0, "tests/cgi")
from storage import BERT, Tree, chosen, make_program  # noqa: E402  pylint: disable=wrong-import-position

PACKAGES = os.path.abspath(sys.argv.pop(1))
PLACE = os.path.abspath("build/clean-root")
ROOT = PLACE + "/root"
VOLATILE = ("/var/lib/dpkg/", "/var/lib/apt/", "/var/cache/", "/var/log/", "/run/", "/tmp/", "/proc/", "/dev/", "/root/",
            "/var/lib/systemd/", "/var/lib/nginx/", "/etc/ld.so.cache")
REPORT = f"/home/{BERT}/line_1.html"
# The packages of a server, the commands before the installation, the documented commands, and the start of the server.
SERVERS = {
    "lighttpd": ("lighttpd lighttpd-mod-deflate", "", "lighttpd-enable-mod fileman",
                 "lighttpd -D -f /etc/lighttpd/lighttpd.conf"),
    "apache": ("apache2", "a2enmod -q alias cgid deflate dir env headers mime", "a2enconf -q fileman",
               "apache2ctl -D FOREGROUND"),
    "nginx": ("nginx-light fcgiwrap", "rm /etc/nginx/sites-enabled/default",
              "ln -s /usr/share/fileman/servers/nginx/site /etc/nginx/sites-enabled/fileman",
              "fcgiwrap -s unix:/run/fcgiwrap.socket & while ! [ -S /run/fcgiwrap.socket ]; do sleep 0.1; done;"
              "chmod 666 /run/fcgiwrap.socket; nginx -g 'daemon off;'"),
    "busybox": ("busybox", "", "",
                "busybox httpd -f -p 80 -h /usr/share/fileman/www -c /usr/share/fileman/servers/busybox/httpd.conf"),
}


def run(*command, **more):
    done = subprocess.run(command, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False, **more)
    assert done.returncode == 0, f"{command}: {done.returncode}\n{done.stdout[-3000:]}"
    return done.stdout


def inside(command):
    return run("chroot", ROOT, "env", "-i", "PATH=/usr/sbin:/usr/bin:/sbin:/bin", "DEBIAN_FRONTEND=noninteractive", "LC_ALL=C",
               "sh", "-c", command)


def install(packages):
    inside(f"apt-get install -y --no-install-recommends {packages}")


def install_ours(name):
    run("cp", *glob.glob(f"{PACKAGES}/{name}_*.deb"), ROOT + "/tmp/ours.deb")
    install("/tmp/ours.deb")


def own_mirror():
    """The server that this machine takes its own packages from."""
    targets = run("apt-get", "indextargets", "--format", "$(RELEASE) $(REPO_URI)").splitlines()
    return next(line.split()[1] for line in targets if line.startswith("bookworm ")).rstrip("/") + "/"


def make_base():
    base = PLACE + "/base"
    if not os.path.isdir(base):
        run("rm", "-rf", base + ".new")
        run("debootstrap", "--variant=minbase", "bookworm", base + ".new", own_mirror())
        run("chroot", base + ".new", "apt-get", "update")
        os.rename(base + ".new", base)
    return base


@contextlib.contextmanager
def bare_system():
    os.makedirs(ROOT, exist_ok=True)
    run("mount", "-t", "tmpfs", "tmpfs", "/mnt")
    for name in ("upper", "work"):
        os.mkdir("/mnt/" + name)
    layers = f"lowerdir={make_base()},upperdir=/mnt/upper,workdir=/mnt/work"
    run("mount", "-t", "overlay", "-o", layers, "overlay", ROOT)
    run("mount", "-t", "proc", "proc", ROOT + "/proc")
    run("mount", "--rbind", "/dev", ROOT + "/dev")
    run("cp", "/etc/resolv.conf", ROOT + "/etc/resolv.conf")
    make_program(ROOT + "/usr/sbin/policy-rc.d", "exit 101")
    try:
        yield
    finally:
        run("umount", "-R", "-l", ROOT)
        run("umount", "-l", "/mnt")


def files():
    found = run("find", ROOT, "-xdev", "-mindepth", "1", "-printf", "/%P%y%l\n").splitlines()
    return {name for name in found if not name.startswith(VOLATILE)}


# Starts a server, alone on a network of its own, and prints what it answers to each address.
ASK = """busybox ip link set lo up
chroot "$0" sh -c "$1" >/dev/null 2>&1 &
shift
for address; do curl -sS --fail --location --retry 9 --retry-connrefused "http://127.0.0.1$address" || exit; done"""


class CleanRoot(unittest.TestCase):
    def test_beside_each_server_the_page_is_answered_and_purging_leaves_nothing(self):
        for server, (packages, before, switch_on, start) in SERVERS.items():
            with self.subTest(server), bare_system():
                install(packages)
                inside(before or "true")
                Tree(ROOT + "/home").make("basic")
                was = files()
                install_ours("fileman")
                inside("fileman-check --explain " + REPORT)
                inside(switch_on or "true")
                said = run("unshare", "-n", "-p", "--fork", "sh", "-c", ASK, ROOT, start, "/", "/js/fileman.js",
                           "/cgi-bin/fileman.cgi?fmtype=all", "/cgi-bin/fileman.cgi?" + chosen("view", "line_1"))
                for text in ("griddata", REPORT, "<html>report</html>"):
                    self.assertIn(text, said)
                inside("apt-get purge -y fileman")
                now = files()
                self.assertEqual((sorted(now - was), sorted(was - now)), ([], []))

    def test_the_development_package_links_a_program(self):
        with bare_system():
            install("g++ cmake make pkg-config libtinyxml-dev")
            install_ours("fileman-dev")
            run("cp", *glob.glob("docs/examples/*"), ROOT + "/tmp")
            inside("cd /tmp && g++ -std=c++17 configuration-store.cpp $(pkg-config --cflags --libs fileman_conf) -o a && "
                   "gcc support-library.c $(pkg-config --cflags --libs trcfg_utils) -o b")
            inside("cmake -S /tmp -B /tmp/build && cmake --build /tmp/build")


def missing():
    """What this machine lacks for the test."""
    # Also somebody else is called root in the private storage, but does not own the machine's files there.
    if os.stat("/etc").st_uid != os.getuid() or not shutil.which("debootstrap"):
        return "root and debootstrap"
    asked = subprocess.call(("curl", "-sfo", "/dev/null", own_mirror() + "dists/bookworm/Release"))
    return "" if asked in (0, 22) else "the package server"  # 22: it answers, with an error


if __name__ == "__main__":
    if what := missing():
        print("SKIPPED: needs", what)
        sys.exit(77)
    unittest.main(verbosity=2)
