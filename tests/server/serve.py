"""serve.py PROGRAM: runs every server until its input ends; prints "NAME<tab>PORT" for each."""

import os
import signal
import sys

import servers

signal.signal(signal.SIGTERM, lambda *_: sys.exit())
servers.lay_out("strict")
started = {}
try:
    for name, start in servers.SERVERS.items():
        started[name] = start()
    os.write(1, "".join(f"{name}\t{server.port}\n" for name, server in started.items()).encode())
    os.close(1)  # the reader waits for its end
    sys.stdin.read()
finally:
    for server in started.values():
        server.stop()
