"""fleet_test.py PROGRAM: runs the commands of docs/fleet.md, unchanged and in order, on fifty simulated instruments.

One lighttpd answers at one address of the loopback interface per instrument. The program finds the storage of the
instrument on /home, in a mount namespace of its own. Run it inside scripts/with-storage.
"""

import contextlib
import csv
import os
import socket
import sqlite3
import subprocess
import sys
import time
import unittest

from commands_test import ROOT, blocks

sys.path.insert(0, os.path.join(ROOT, "tests/cgi"))
from storage import BERT, NO_ROOT_RIGHTS, Tree  # noqa: E402  pylint: disable=wrong-import-position

assert os.environ.get("FILEMAN_PRIVATE_STORAGE") == "1" and os.path.exists("/tmp/.private-storage")
PROGRAM = os.path.abspath(sys.argv.pop(1))
HERE = "/tmp/fleet"
READER = f"{HERE}/reader"
WHOLE = [f"127.0.1.{number}" for number in range(1, 51)]
OFF, CUT, DEFAULT, PARTLY_CLOSED = "127.0.1.99", "127.0.1.51", "127.0.1.52", WHOLE[6]
HOSTILE = ("comma,and\"quote", "new\nline", "=1+1", "<b>&amp;", b"\xff\xfe no text", "\u2028caf\u00e9")

# What the web server of each instrument starts.
WRAPPER = f"""#!/bin/sh
export PATH=/usr/sbin:/usr/bin:/sbin:/bin
on_its_storage() {{
    unshare -m --propagation unchanged sh -c 'mount --bind "{HERE}/$SERVER_ADDR" /home; exec "$@"' - "$@"
}}
case $SERVER_ADDR in
    {CUT}) on_its_storage {PROGRAM} | head -c -1 ;;
    {DEFAULT}) on_its_storage env -u FILEMAN_ANSWERS {PROGRAM} ;;
    *) on_its_storage {" ".join(NO_ROOT_RIGHTS)} {PROGRAM} ;;
esac
"""
SETTINGS = f"""
server.modules += ( "mod_alias" )
server.document-root = "{HERE}"
server.errorlog = "{HERE}/log"
server.upload-dirs = ( "{HERE}" )
server.port = PORT
server.bind = "{CUT}"
alias.url = ( "/cgi-bin/" => "{HERE}/cgi-bin/" )
include "{ROOT}/packaging/lighttpd/fileman.conf"
""" + "".join(f'$SERVER["socket"] == "{address}:PORT" {{ }}\n' for address in (*WHOLE, DEFAULT))


def write(path, text):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w", encoding="utf-8") as file:
        file.write(text)


def lay_out(address):
    """Makes the storage of an instrument; returns the listed files. No two instruments have the same ones."""
    tree = Tree(f"{HERE}/{address}")
    tree.configuration()
    number = int(address.rpartition(".")[2])
    names = [*(f"job_{number}_{file}" for file in range(1 + number % 5)), HOSTILE[number % len(HOSTILE)]]
    files = [os.fsencode(f"{BERT}/") + os.fsencode(name) + b".html" for name in names]
    for file in files:
        tree.write(file)
    if address == PARTLY_CLOSED:
        tree.write("1ge/kte-rslt/10gport/bert-result/hidden.html")
        tree.make_entry(b"0000", b"1ge/kte-rslt/10gport")
    return [b"/home/" + file for file in files]


@contextlib.contextmanager
def web_servers():
    """Starts the web servers of all instruments and yields their port."""
    with socket.create_server((CUT, 0)) as probe:
        port = probe.getsockname()[1]
    write(f"{HERE}/cgi-bin/fileman.cgi", WRAPPER)
    os.chmod(f"{HERE}/cgi-bin/fileman.cgi", 0o755)
    write(f"{HERE}/lighttpd.conf", SETTINGS.replace("PORT", str(port)))
    with subprocess.Popen(("lighttpd", "-D", "-f", f"{HERE}/lighttpd.conf"), stdin=subprocess.DEVNULL) as server:
        try:
            for _ in range(100):
                with socket.socket() as client:
                    if client.connect_ex((WHOLE[-1], port)) == 0:
                        break
                time.sleep(0.05)
            yield port
        finally:
            server.terminate()


class Fleet(unittest.TestCase):
    maxDiff = None

    def test_the_commands_of_the_page_make_one_table(self):
        files = {address: lay_out(address) for address in (*WHOLE, CUT, DEFAULT)}
        with web_servers() as port:
            write(f"{READER}/instruments", "".join(f"{address}:{port}\n" for address in (*WHOLE, OFF, CUT, DEFAULT)))
            os.chdir(READER)
            said = [self.run_block(text) for language, text in blocks("docs/fleet.md") if language == "sh"]
        _, check, _, by_module, _, _, spreadsheet = said

        cut, default, partly_closed, off = sorted(check.splitlines(), key=lambda line: (line.count("\t"), line))
        self.assertEqual(cut, f"lists/{CUT}:{port} is not a whole list")
        self.assertEqual(default, f"lists/{DEFAULT}:{port} is not a whole list")
        self.assertEqual(partly_closed, f"lists/{PARTLY_CLOSED}:{port}\t200\t1\t")
        self.assertRegex(off, f"^lists/{OFF}:{port}\t000\t\t.")

        expected = sorted((f"{address}:{port}", path.decode(errors="replace"))
                          for address in WHOLE for path in files[address])
        with contextlib.closing(sqlite3.connect("fleet.db")) as base:
            self.assertEqual(sorted(base.execute("SELECT instrument, path FROM results")), expected)
        self.assertEqual(by_module.split()[-3:], ["1GE", str(len(expected)), "50"])
        with open("newest.csv", encoding="utf-8") as file:
            newest = sorted(row["instrument"] for row in csv.DictReader(file))
        self.assertEqual(newest, sorted({row[0] for row in expected}))
        with open("job_17", encoding="utf-8") as file:
            job = sorted(tuple(line.split()) for line in file)
        self.assertEqual(job, [row for row in expected if "job_17_" in row[1]])
        self.assertEqual(spreadsheet.count("|"), len(files[WHOLE[0]]), spreadsheet)

    def run_block(self, script):
        done = subprocess.run(("bash", "-euo", "pipefail", "-c", script), stdin=subprocess.DEVNULL, capture_output=True,
                              text=True, timeout=60, check=False)
        self.assertEqual((done.returncode, done.stderr), (0, ""), script)
        return done.stdout


if __name__ == "__main__":
    unittest.main()
