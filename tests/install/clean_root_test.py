"""clean_root_test.py PACKAGES: the Debian packages on a bare Debian 12, beside each stock server.

A bare system is made once in build/clean-root. For each server an overlay of it gets the server, then the package by its
documented commands; the page is asked for on a network of its own, and purging has to leave the files as they were.
"""

import contextlib
import glob
import os
import subprocess
import sys
import unittest
import urllib.error
import urllib.request

PACKAGES = os.path.abspath(sys.argv.pop(1))
PLACE = os.path.abspath("build/clean-root")
ROOT = PLACE + "/root"
VOLATILE = ("/var/lib/dpkg/", "/var/lib/apt/", "/var/cache/", "/var/log/", "/run/", "/tmp/", "/proc/", "/dev/", "/root/",
            "/var/lib/systemd/", "/var/lib/nginx/", "/etc/ld.so.cache")
DOCUMENT = """<config><filter>
<module><m name="OSA" checked="true"><o mode_name="OSA"><h test_name="Result" dir_name="osa-rslt/osa-result"
 under_port_dir="false"/></o></m><m name="Common" checked="true"><o test_name="Screen" key="screen" dir_name="ktb/screen"
 under_port_dir="false"/></m></module>
<mode><o name="OSA" rslt_dir_name="osa-rslt" prof_dir_name="" checked="true"/></mode>
<category><o name="osa" key="osa" checked="true"/><o name="screen" key="screen" checked="true"/></category>
</filter></config>
"""
# The packages of a server, the commands before the installation, the documented commands, and the start of the server.
BUSYBOX = "busybox httpd {} -p 80 -h /usr/share/fileman/www -c /usr/share/fileman/servers/busybox/httpd.conf"
SERVERS = {
    "lighttpd": ("lighttpd lighttpd-mod-deflate", "", "lighttpd-enable-mod fileman",
                 "lighttpd -D -f /etc/lighttpd/lighttpd.conf"),
    "apache": ("apache2", "a2enmod -q alias cgid deflate dir env headers mime", "a2enconf -q fileman",
               "apache2ctl -D FOREGROUND"),
    "nginx": ("nginx-light fcgiwrap", "rm /etc/nginx/sites-enabled/default",
              "ln -s /usr/share/fileman/servers/nginx/site /etc/nginx/sites-enabled/fileman",
              "fcgiwrap -s unix:/run/fcgiwrap.socket & while ! [ -S /run/fcgiwrap.socket ]; do sleep 0.1; done;"
              "chmod 666 /run/fcgiwrap.socket; nginx -g 'daemon off;'"),
    "busybox": ("busybox", "", "", BUSYBOX.format("-f")),
}


def run(*command, **more):
    done = subprocess.run(command, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False, **more)
    if done.returncode:
        raise AssertionError(f"{command}: {done.returncode}\n{done.stdout[-3000:]}")
    return done.stdout


def inside(command):
    return run("chroot", ROOT, "env", "-i", "PATH=/usr/sbin:/usr/bin:/sbin:/bin", "DEBIAN_FRONTEND=noninteractive", "LC_ALL=C",
               "sh", "-c", command)


def own_mirror():
    """The server that this machine takes its own packages from."""
    targets = run("apt-get", "indextargets", "--format", "$(RELEASE) $(REPO_URI)").splitlines()
    return next(line.split()[1] for line in targets if line.startswith("bookworm ")).rstrip("/") + "/"


def make_base():
    base = PLACE + "/base"
    if os.path.isdir(base):
        return base
    os.makedirs(PLACE, exist_ok=True)
    mirror = own_mirror()
    run("rm", "-rf", base + ".new")
    run("debootstrap", "--variant=minbase", "bookworm", base + ".new", mirror)
    run("chroot", base + ".new", "apt-get", "update")
    os.rename(base + ".new", base)
    return base


@contextlib.contextmanager
def bare_system():
    base = make_base()
    os.makedirs(ROOT, exist_ok=True)
    run("mount", "-t", "tmpfs", "tmpfs", "/mnt")
    for name in ("upper", "work"):
        os.mkdir("/mnt/" + name)
    run("mount", "-t", "overlay", "-o", f"lowerdir={base},upperdir=/mnt/upper,workdir=/mnt/work", "overlay", ROOT)
    run("mount", "-t", "proc", "proc", ROOT + "/proc")
    run("mount", "--rbind", "/dev", ROOT + "/dev")
    run("cp", "/etc/resolv.conf", ROOT + "/etc/resolv.conf")
    with open(ROOT + "/usr/sbin/policy-rc.d", "w", encoding="utf-8") as file:
        file.write("#!/bin/sh\nexit 101\n")
    os.chmod(ROOT + "/usr/sbin/policy-rc.d", 0o755)
    try:
        yield
    finally:
        run("umount", "-R", "-l", ROOT)
        run("umount", "-l", "/mnt")


def files():
    found = run("find", ROOT, "-xdev", "-mindepth", "1", "-printf", "/%P%y%l\n").splitlines()
    return {name for name in found if not name.startswith(VOLATILE)}


def store():
    os.makedirs(ROOT + "/home/.resultmanager", exist_ok=True)
    with open(ROOT + "/home/.resultmanager/result-config-ktd.xml", "w", encoding="utf-8") as file:
        file.write(DOCUMENT)
    for path in ("osa-rslt/osa-result/ring_17.html", "ktb/screen/shot.png"):
        os.makedirs(os.path.dirname(f"{ROOT}/home/{path}"), exist_ok=True)
        with open(f"{ROOT}/home/{path}", "w", encoding="utf-8") as file:
            file.write("<html>a stored report</html>")


# Starts a server in its own network and requests each address. Prints the address, the status and the body.
ASK = r"""
import subprocess, sys, time, urllib.request, fcntl, socket, struct, os, signal
with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as lo:
    fcntl.ioctl(lo, 0x8914, struct.pack("16sh", b"lo", 1))
server = subprocess.Popen(["chroot", sys.argv[1], "sh", "-c", sys.argv[2]], start_new_session=True,
                          stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
try:
    for _ in range(100):
        try:
            socket.create_connection(("127.0.0.1", 80)).close()
            break
        except OSError:
            time.sleep(0.1)
    for address in sys.argv[3:]:
        with urllib.request.urlopen("http://127.0.0.1" + address, timeout=30) as answer:
            print(address, answer.status, answer.read().decode(), flush=True)
finally:
    os.killpg(server.pid, signal.SIGKILL)
"""


class CleanRoot(unittest.TestCase):
    def serve_and_purge(self, server):
        packages, before, switch_on, start = SERVERS[server]
        with bare_system():
            inside(f"apt-get install -y --no-install-recommends {packages}")
            inside(before or "true")
            store()
            was = files()
            run("cp", *glob.glob(PACKAGES + "/fileman_*.deb"), ROOT + "/tmp/fileman.deb")
            inside("apt-get install -y --no-install-recommends /tmp/fileman.deb")
            self.assertEqual(inside("fileman-check"), "")
            inside(switch_on or "true")
            self.ask(start)
            inside("apt-get purge -y fileman")
            now = files()
            self.assertEqual((sorted(now - was), sorted(was - now)), ([], []))

    def test_beside_lighttpd(self):
        self.serve_and_purge("lighttpd")

    def test_beside_apache(self):
        self.serve_and_purge("apache")

    def test_beside_nginx(self):
        self.serve_and_purge("nginx")

    def test_beside_busybox(self):
        self.serve_and_purge("busybox")

    def ask(self, start):
        said = run("unshare", "-n", "-p", "--fork", "--kill-child", "/usr/bin/python3", "-c", ASK, ROOT, start, "/", "/cgi-bin/fileman.cgi?fmtype=all",
                   "/js/fileman.js", "/cgi-bin/fileman.cgi?opertype=view&rsltid=OSA__osa_Result_ring_17")
        for text in (" 200 ", "griddata", "/home/osa-rslt/osa-result/ring_17.html", "/js/fileman.js 200 ", "a stored report"):
            self.assertIn(text, said)

    def test_the_development_package_links_a_program(self):
        with bare_system():
            inside("apt-get install -y --no-install-recommends g++ cmake make pkg-config libtinyxml-dev")
            run("cp", *glob.glob(PACKAGES + "/fileman-dev_*.deb"), ROOT + "/tmp/dev.deb")
            run("cp", "docs/examples/configuration-store.cpp", "docs/examples/support-library.c", ROOT + "/tmp")
            inside("apt-get install -y --no-install-recommends /tmp/dev.deb")
            inside("cd /tmp && g++ -std=c++17 configuration-store.cpp $(pkg-config --cflags --libs fileman_conf) -o a && "
                   "gcc support-library.c $(pkg-config --cflags --libs trcfg_utils) -o b")
            with open(ROOT + "/tmp/CMakeLists.txt", "w", encoding="utf-8") as file:
                file.write("cmake_minimum_required(VERSION 3.25)\nproject(user CXX C)\nset(CMAKE_CXX_STANDARD 17)\n"
                           "find_package(fileman 1 REQUIRED)\nadd_executable(c configuration-store.cpp)\n"
                           "target_link_libraries(c fileman::fileman_conf)\nadd_executable(d support-library.c)\n"
                           "target_link_libraries(d fileman::trcfg_utils)\n")
            inside("cmake -S /tmp -B /tmp/build && cmake --build /tmp/build")


if __name__ == "__main__":
    if os.environ.get("FILEMAN_OWN_MOUNTS") != "1":
        if os.getuid() != 0 or subprocess.run(["sh", "-c", "command -v debootstrap"], check=False,
                                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL).returncode:
            print("SKIPPED: needs root and debootstrap")
            sys.exit(77)
        try:
            urllib.request.urlopen(own_mirror() + "dists/bookworm/Release", timeout=60).close()
        except urllib.error.HTTPError:
            raise  # a server that answers is no missing network
        except OSError as error:
            print(f"SKIPPED: needs the package server: {error}")
            sys.exit(77)
        os.environ["FILEMAN_OWN_MOUNTS"] = "1"
        # It makes mounts of its own also where "/" is no mount point, as in a chroot.
        os.execv("scripts/with-storage", ["scripts/with-storage", "-", sys.executable, "-B", __file__,
                                          os.path.relpath(PACKAGES), *sys.argv[1:]])
    unittest.main(verbosity=2)
