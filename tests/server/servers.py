"""The web servers of packaging/ on the loopback interface, each with its settings as they are shipped.

They name fixed places below /usr/local/ktb, which the runner makes private, and /run, which lay_out() does.
What a server's own configuration says around the settings is in the .conf files of this folder.
"""

import contextlib
import os
import re
import shutil
import signal
import socket
import subprocess
import sys
import threading
from pathlib import Path

sys.path.insert(0, "tests/cgi")
import storage  # noqa: E402  pylint: disable=wrong-import-position

storage.demand_private_storage()

PROGRAM = os.path.abspath(sys.argv.pop(1))
PACKAGING = os.path.abspath("packaging")
WWW = os.path.abspath("build/www")
PLACE = "/usr/local/ktb"
CGI = f"{PLACE}/cgi-bin/fileman.cgi"
# lighttpd does not pass TZ on to programs.
ZONE = "UTC0"


def lay_out(answers):
    """The program and the browser side in their places; "default" answers take the switch away again."""
    if not os.path.exists("/run/.private"):
        subprocess.run(("mount", "-t", "tmpfs", "-o", "mode=755", "tmpfs", "/run"), check=True)
        Path("/run/.private").touch()
    for place in ("www", "cgi-bin"):
        shutil.rmtree(f"{PLACE}/{place}", ignore_errors=True)
    shutil.copytree(WWW, f"{PLACE}/www")
    for place in ("bin", "cgi-bin", "www/cgi-bin"):
        os.makedirs(f"{PLACE}/{place}", exist_ok=True)
    shutil.copy(PROGRAM, CGI + ".real")
    storage.make_program(CGI, "unset FILEMAN_ANSWERS", f"exec {CGI}.real")
    if answers == "strict":
        os.replace(CGI + ".real", CGI)


def free_port():
    with socket.create_server(("127.0.0.1", 0)) as probe:
        return probe.getsockname()[1]


class Server:
    """Processes that answer at a free port, until stop(). "@PORT@" and the like stand for values.

    The word NAME.conf of a command is that file of this folder, with its values set in.
    """

    def __init__(self, *commands, **values):
        self.port = free_port()
        self.values = {"PORT": self.port, "PACKAGING": PACKAGING, **values}
        commands = [[self.set_in(word) for word in command] for command in commands]
        environment = {"PATH": "/usr/local/bin:/usr/sbin:/usr/bin:/bin", "TZ": ZONE}
        self.processes = [subprocess.Popen(command, env=environment, stdin=subprocess.DEVNULL,
                                           stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                           start_new_session=True) for command in commands]
        if not storage.wait_until(lambda: storage.is_served(self.port)):
            self.stop()
            raise RuntimeError(f"{commands[-1]} does not start")

    def set_in(self, word):
        if re.fullmatch(r"\w+\.conf", word):
            Path("/run", word).write_text(self.set_in(Path("tests/server", word).read_text()))
            return f"/run/{word}"
        for name, value in self.values.items():
            word = word.replace(f"@{name}@", str(value))
        return word

    def stop(self):
        for process in self.processes:
            with contextlib.suppress(ProcessLookupError):  # ended by itself
                os.killpg(process.pid, signal.SIGTERM)
        for process in self.processes:
            process.wait()


class Watch(threading.Thread):
    """Remembers how much /tmp and /run grew meanwhile: there a server keeps what it cannot pass on."""

    def __enter__(self):
        self.before, self.grown, self.done = self.used(), 0, threading.Event()
        self.start()
        return self

    @staticmethod
    def used():
        rooms = [os.statvfs(place) for place in ("/tmp", "/run")]
        return sum((room.f_blocks - room.f_bfree) * room.f_frsize for room in rooms)

    def run(self):
        while not self.done.wait(0.002):
            self.grown = max(self.grown, self.used() - self.before)

    def __exit__(self, *_):
        self.done.set()
        self.join()


def lighttpd():
    return Server(("env", "FILEMAN_PORT=@PORT@", f"FILEMAN_WWW={WWW}", f"FILEMAN_CGI_DIR={PLACE}/cgi-bin",
                   "lighttpd", "-D", "-f", f"{PACKAGING}/lighttpd.conf"))


def nginx():
    if os.path.exists("/run/fcgiwrap.socket"):
        os.unlink("/run/fcgiwrap.socket")
    script = f'. {PACKAGING}/nginx/fcgiwrap; exec fcgiwrap "$DAEMON_OPTS" -s unix:/run/fcgiwrap.socket'
    return Server(("sh", "-c", script), ("nginx", "-e", "/run/nginx.log", "-c", "nginx.conf"))


def apache():
    os.makedirs("/run/apache", mode=0o755, exist_ok=True)
    command = ["apache2", "-DFOREGROUND", "-f", "apache.conf"]
    if subprocess.run(("setpriv", "--reuid=33", "--regid=33", "--clear-groups", "true"), check=False,
                      stderr=subprocess.DEVNULL).returncode == 0:
        return Server((*command, "-C", "User www-data", "-C", "Group www-data"))
    # It refuses to be root, and root is the only user here: called another.
    return Server(("unshare", "--user", "--map-user=1000", "--map-group=1000", *command))


def busybox():
    shutil.copytree(f"{PLACE}/www", "/run/www", dirs_exist_ok=True)
    shutil.copy(f"{PACKAGING}/strict-answers", "/run/www/cgi-bin/fileman.cgi")
    return Server(("busybox", "httpd", "-f", "-p", "127.0.0.1:@PORT@", "-h", "/run/www",
                   "-c", f"{PACKAGING}/busybox/httpd.conf"))


def mini_httpd():
    shutil.copy(f"{PACKAGING}/mini-httpd/strict-answers", f"{PLACE}/www/cgi-bin/fileman.cgi")
    return Server(("mini_httpd", "-D", "-C", f"{PACKAGING}/mini-httpd/mini-httpd.conf", "-h", "127.0.0.1",
                   "-p", "@PORT@", "-u", "root"))


def haproxy(behind):
    """A proxy in front of the server at the port `behind`."""
    return Server(("haproxy", "-db", "-f", "haproxy.conf"), BEHIND=behind)


SERVERS = {"lighttpd": lighttpd, "nginx with fcgiwrap": nginx, "Apache": apache, "busybox httpd": busybox,
           "mini-httpd": mini_httpd}
