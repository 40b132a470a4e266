"""The web servers of packaging/ on the loopback interface, each with its settings as they are shipped.

They name fixed places below /usr/local/ktb, which the runner makes private, and /run, which lay_out() does.
"""

import os
import shutil
import signal
import socket
import subprocess
import sys
import time

assert os.environ.get("FILEMAN_PRIVATE_STORAGE") == "1" and os.path.exists("/tmp/.private-storage")
sys.path.insert(0, "tests/cgi")
import storage  # noqa: E402  pylint: disable=unused-import,wrong-import-position

PROGRAM = os.path.abspath(sys.argv.pop(1))
PACKAGING = os.path.abspath("packaging")
WWW = os.path.abspath("build/www")
PLACE = "/usr/local/ktb"
CGI = f"{PLACE}/cgi-bin/fileman.cgi"
APACHE_MODULES = ("mpm_event", "authz_core", "alias", "cgid", "deflate", "dir", "env", "filter", "headers", "mime")

# lighttpd does not pass TZ on to programs.
ZONE = "UTC0"

# What the server's own configuration says around the settings.
NGINX = f"""
daemon off;
user root;
pid /run/nginx.pid;
error_log /run/nginx.log;
events {{}}
http {{
    access_log off;
    client_body_temp_path /run/nginx-body;
    fastcgi_temp_path /run/nginx-fastcgi;
    server {{
        listen 127.0.0.1:PORT;
        include {PACKAGING}/nginx/fileman.conf;
    }}
}}
"""
APACHE = "".join(f"LoadModule {name}_module /usr/lib/apache2/modules/mod_{name}.so\n" for name in APACHE_MODULES) + f"""
Listen 127.0.0.1:PORT
ServerName localhost
PidFile /run/apache.pid
DefaultRuntimeDir /run/apache
ErrorLog /run/apache/error.log
TypesConfig /dev/null
<Directory />
    Require all denied
</Directory>
Include {PACKAGING}/apache/fileman.conf
"""
# Stands between the client and a server, and passes on only what HTTP allows.
HAPROXY = """
global
    tune.bufsize 131072
defaults
    mode http
    timeout connect 10s
    timeout client 60s
    timeout server 60s
"""


def lay_out(answers):
    """The program and what scripts/build-web makes in their places; "default" answers take the switch away again."""
    if not os.path.exists("/run/.private"):
        subprocess.run(("mount", "-t", "tmpfs", "-o", "mode=755", "tmpfs", "/run"), check=True)
        write("/run/.private", "")
    for place in ("www", "cgi-bin"):
        shutil.rmtree(f"{PLACE}/{place}", ignore_errors=True)
    shutil.copytree(WWW, f"{PLACE}/www")
    for place in ("bin", "cgi-bin", "www/cgi-bin"):
        os.makedirs(f"{PLACE}/{place}", exist_ok=True)
    shutil.copy(PROGRAM, CGI if answers == "strict" else CGI + ".real")
    if answers == "default":
        write(CGI, f"#!/bin/sh\nunset FILEMAN_ANSWERS\nexec {CGI}.real\n", 0o755)


def programs():
    """The program's file, under each name that it has."""
    return [path for path in (CGI, CGI + ".real") if os.path.exists(path)]


def write(path, text, mode=0o644):
    with open(path, "w", encoding="ascii") as file:
        file.write(text)
    os.chmod(path, mode)


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


class Server:
    """Processes that answer at a free port, until stop()."""

    def __init__(self, *commands, port=None):
        self.port = port or free_port()
        environment = {"PATH": "/usr/local/bin:/usr/sbin:/usr/bin:/bin", "TZ": ZONE}
        self.processes = [subprocess.Popen(command, env=environment, stdin=subprocess.DEVNULL,
                                           stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True) for command in commands]
        for _ in range(200):
            try:
                socket.create_connection(("127.0.0.1", self.port)).close()
                return
            except OSError:
                time.sleep(0.05)
        self.stop()
        raise RuntimeError(f"{commands[-1]} does not start")

    def stop(self):
        for process in self.processes:
            try:
                os.killpg(process.pid, signal.SIGTERM)
            except ProcessLookupError:
                pass  # ended by itself
        for process in self.processes:
            process.wait()


def lighttpd():
    port = free_port()
    return Server(("env", f"FILEMAN_PORT={port}", f"FILEMAN_WWW={WWW}", f"FILEMAN_CGI_DIR={PLACE}/cgi-bin",
                   "lighttpd", "-D", "-f", f"{PACKAGING}/lighttpd.conf"), port=port)


def nginx():
    port = free_port()
    write("/run/nginx.conf", NGINX.replace("PORT", str(port)))
    if os.path.exists("/run/fcgiwrap.socket"):
        os.unlink("/run/fcgiwrap.socket")
    script = f'. {PACKAGING}/nginx/fcgiwrap; exec fcgiwrap "$DAEMON_OPTS" -s unix:/run/fcgiwrap.socket'
    return Server(("sh", "-c", script), ("nginx", "-e", "/run/nginx.log", "-c", "/run/nginx.conf"), port=port)


def apache():
    port = free_port()
    os.makedirs("/run/apache", mode=0o755, exist_ok=True)
    user = ""
    command = ["apache2", "-DFOREGROUND", "-f", "/run/apache.conf"]
    if subprocess.run(("setpriv", "--reuid=33", "--regid=33", "--clear-groups", "true"), check=False,
                      stderr=subprocess.DEVNULL).returncode == 0:
        user = "User www-data\nGroup www-data\n"
    else:
        # It refuses to be root, and root is the only user here: called another.
        command[:0] = ["unshare", "--user", "--map-user=1000", "--map-group=1000"]
    write("/run/apache.conf", user + APACHE.replace("PORT", str(port)))
    return Server(command, port=port)


def stand_in(wrapper, www):
    """Puts the wrapper where a server runs what lies below its document root."""
    shutil.copy(f"{PACKAGING}/{wrapper}", f"{www}/cgi-bin/fileman.cgi")


def busybox():
    port = free_port()
    shutil.copytree(f"{PLACE}/www", "/run/www", dirs_exist_ok=True)
    stand_in("strict-answers", "/run/www")
    return Server(("busybox", "httpd", "-f", "-p", f"127.0.0.1:{port}", "-h", "/run/www",
                   "-c", f"{PACKAGING}/busybox/httpd.conf"), port=port)


def mini_httpd():
    port = free_port()
    stand_in("mini-httpd/strict-answers", f"{PLACE}/www")
    return Server(("mini_httpd", "-D", "-C", f"{PACKAGING}/mini-httpd/mini-httpd.conf", "-h", "127.0.0.1",
                   "-p", str(port), "-u", "root"), port=port)


def haproxy(behind):
    """A proxy in front of the server at the port `behind`."""
    port = free_port()
    write("/run/haproxy.conf", f"{HAPROXY}\nlisten front\n    bind 127.0.0.1:{port}\n    server s 127.0.0.1:{behind}\n")
    return Server(("haproxy", "-db", "-f", "/run/haproxy.conf"), port=port)


SERVERS = {"lighttpd": lighttpd, "nginx with fcgiwrap": nginx, "Apache": apache, "busybox httpd": busybox,
           "mini-httpd": mini_httpd}
