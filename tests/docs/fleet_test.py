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
import unittest
from pathlib import Path

from commands_test import ROOT, blocks, run

sys.path.insert(0, os.path.join(ROOT, "tests/cgi"))
from storage import (BERT, NO_ROOT_RIGHTS, Tree, demand_private_storage, is_served,  # noqa: E402
                     make_program, wait_until, write)  # pylint: disable=wrong-import-position

demand_private_storage()
PROGRAM = os.path.abspath(sys.argv.pop(1))
HERE = "/tmp/fleet"
READER = f"{HERE}/reader"
WHOLE = [f"127.0.1.{number}" for number in range(1, 51)]
OFF, CUT, DEFAULT, PARTLY_CLOSED = "127.0.1.99", "127.0.1.51", "127.0.1.52", WHOLE[6]
HOSTILE = ("comma,and\"quote", "new\nline", "=1+1", "<b>&amp;", b"\xff\xfe no text", "\u2028caf\u00e9")

# What the web server of each instrument starts.
WRAPPER = f"""export PATH=/usr/sbin:/usr/bin:/sbin:/bin
on_its_storage() {{
    unshare -m --propagation unchanged sh -c 'mount --bind "{HERE}/$SERVER_ADDR" /home; exec "$@"' - "$@"
}}
case $SERVER_ADDR in
    {CUT}) on_its_storage {PROGRAM} | head -c -1 ;;
    {DEFAULT}) on_its_storage env -u FILEMAN_ANSWERS {PROGRAM} ;;
    *) on_its_storage {" ".join(NO_ROOT_RIGHTS)} {PROGRAM} ;;
esac"""
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


class Fleet(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        """Starts the web servers of all instruments at one port."""
        with socket.create_server((CUT, 0)) as probe:
            self.port = probe.getsockname()[1]
        make_program(f"{HERE}/cgi-bin/fileman.cgi", WRAPPER)
        write(f"{HERE}/lighttpd.conf", SETTINGS.replace("PORT", str(self.port)))
        server = subprocess.Popen(("lighttpd", "-D", "-f", f"{HERE}/lighttpd.conf"), stdin=subprocess.DEVNULL)
        self.addCleanup(server.wait)
        self.addCleanup(server.terminate)
        wait_until(lambda: is_served(self.port, WHOLE[-1]))

    def test_the_commands_of_the_page_make_one_table(self):
        files = {address: lay_out(address) for address in (*WHOLE, CUT, DEFAULT)}
        port = self.port
        write(f"{READER}/instruments", "".join(f"{address}:{port}\n" for address in (*WHOLE, OFF, CUT, DEFAULT)))
        os.chdir(READER)
        said = [run("exec 2>&1\n" + text, READER) for language, text in blocks("docs/fleet.md") if language == "sh"]
        collect, check, merge, by_module, age, search, spreadsheet = said
        self.assertEqual(collect + merge + age + search, "")

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
        newest, job = (Path(name).read_text(encoding="utf-8").splitlines() for name in ("newest.csv", "job_17"))
        newest = sorted(row["instrument"] for row in csv.DictReader(newest))
        self.assertEqual(newest, sorted({row[0] for row in expected}))
        self.assertEqual(sorted(tuple(line.split()) for line in job), [row for row in expected if "job_17_" in row[1]])
        self.assertEqual(spreadsheet.count("|"), len(files[WHOLE[0]]), spreadsheet)


if __name__ == "__main__":
    unittest.main()
