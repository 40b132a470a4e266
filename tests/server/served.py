"""Web servers with the packaged settings on the loopback interface, for the tests in this folder."""

import os
import socket
import subprocess
import sys
import time

assert os.environ.get("FILEMAN_PRIVATE_STORAGE") == "1" and os.path.exists("/tmp/.private-storage")
sys.path.insert(0, "tests/cgi")
import storage  # pylint: disable=wrong-import-position,unused-import

PROGRAM = os.path.abspath(sys.argv.pop(1))
PACKAGING = os.path.abspath("packaging")
WWW = "/tmp/www"
ADDRESS = """
server.bind = "127.0.0.1"
server.port = env.FILEMAN_PORT
server.errorlog = "/tmp/lighttpd.log"
server.upload-dirs = ( "/tmp" )
"""
# The program in its place beside www, and the packaged settings.
PLAIN = f'''{ADDRESS}
server.document-root = "{WWW}"
include "{PACKAGING}/lighttpd/fileman.conf"
'''


def lay_out_www():
    """What stands beside the program, as far as these tests ask for it, and the program itself."""
    os.makedirs(f"{WWW}/cgi-bin")
    for name in ("index.html", "js/fileman.js", "js/report.html"):
        os.makedirs(os.path.dirname(f"{WWW}/{name}"), exist_ok=True)
        with open(f"web/{name}", "rb") as source, open(f"{WWW}/{name}", "wb") as target:
            target.write(source.read())
    os.symlink(PROGRAM, f"{WWW}/cgi-bin/fileman.cgi")


class Server:
    """One server of the given command line on a free port; `lighttpd` starts it with a configuration's text."""

    def __init__(self, command):
        with socket.socket() as probe:
            probe.bind(("127.0.0.1", 0))
            self.port = probe.getsockname()[1]
        environment = {"PATH": "/usr/sbin:/usr/bin:/bin", "TZ": storage.ZONE, "FILEMAN_PORT": str(self.port),
                       "FILEMAN_WWW": os.path.abspath("build/www"), "FILEMAN_CGI_DIR": os.path.dirname(PROGRAM)}
        # pylint: disable-next=consider-using-with  # stop() ends it
        self.process = subprocess.Popen([word.replace("PORT", str(self.port)) for word in command], env=environment,
                                        stderr=subprocess.DEVNULL)
        for _ in range(100):
            try:
                socket.create_connection(("127.0.0.1", self.port)).close()
                return
            except OSError:
                time.sleep(0.05)
        self.stop()
        raise RuntimeError(f"{command[0]} does not start")

    @classmethod
    def lighttpd(cls, text):
        with open("/tmp/lighttpd.conf", "w", encoding="ascii") as file:
            file.write(text)
        subprocess.run(("lighttpd", "-tt", "-f", file.name), check=True,
                       env={"PATH": "/usr/sbin:/usr/bin", "FILEMAN_PORT": "1"})
        return cls(("lighttpd", "-D", "-f", file.name))

    def stop(self):
        self.process.terminate()
        self.process.wait()

    def open(self, target, method="GET", connection=b"close", head=(), body=b""):
        """A connection that has sent a request for the target, bytes or text."""
        client = socket.socket()
        client.settimeout(60)
        # Little of an answer waits in the system instead of the server.
        client.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4096)
        client.connect(("127.0.0.1", self.port))
        request = method.encode() + b" " + os.fsencode(target) + b" HTTP/1.1"
        lines = [request, b"Host: x", b"Connection: " + connection, *head]
        client.sendall(b"\r\n".join(lines) + b"\r\n\r\n")
        try:
            client.sendall(body)
        except OSError:
            pass  # a refusal does not read it
        return client

    def get(self, target, **options):
        """(status, header lines in lower case, body as it was sent)"""
        with self.open(target, **options) as connection:
            return parse(read_all(connection))


def read_all(connection, pause=0.0):
    """All bytes until the end; a slow reader pauses between the pieces."""
    pieces = []
    try:
        while piece := connection.recv(32768):
            pieces.append(piece)
            time.sleep(pause)
    except ConnectionResetError:
        pass  # the body of a refused request was on its way
    return b"".join(pieces)


def parse(answer):
    head, _, body = answer.partition(b"\r\n\r\n")
    status, *lines = head.decode("latin-1").split("\r\n")
    headers = {}
    for line in lines:
        name, _, value = line.partition(":")
        headers.setdefault(name.lower(), value.strip())
    if headers.get("transfer-encoding") == "chunked":
        body = unchunked(body)
    return int(status.split()[1]), headers, body


def unchunked(body):
    """The bytes of a chunked body that came to its end; None of one that did not."""
    pieces = []
    while True:
        size, found, rest = body.partition(b"\r\n")
        if not found:
            return None
        length = int(size, 16)
        if length == 0:
            return b"".join(pieces)
        pieces.append(rest[:length])
        body = rest[length + 2:]
