"""lighttpd_test.py PROGRAM: the settings for lighttpd, alone and included in Debian's own configuration."""

import itertools
import re
import unittest
from pathlib import Path

import servers
from client import fetch
from servers import PACKAGING, PLACE, Server, storage

# Lines about its user and its address, which belong to the machine.
OF_THE_MACHINE = (r"(?m)^server\.(pid-file|username|groupname|errorlog|port|upload-dirs)\b.*"
                  "|^include_shell.*ipv6.*|^include .*")
PROGRAM = "/cgi-bin/fileman.cgi"
VIEW = f"{PROGRAM}?{storage.chosen('view', 'line_1')}"


class Lighttpd(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        storage.Tree().make("basic")
        servers.lay_out("strict")
        documented = re.search(r"```conf\n(.*?)```", Path("docs/web-server.md").read_text("utf-8"), re.S)[1]
        cls.server = servers.lighttpd()
        cls.addClassCleanup(cls.server.stop)
        cls.stock = Server(("lighttpd", "-D", "-f", "stock.conf"),
                           STOCK=re.sub(OF_THE_MACHINE, "", Path("/etc/lighttpd/lighttpd.conf").read_text()),
                           DOCUMENTED=documented.replace(f"{PLACE}/lighttpd", f"{PACKAGING}/lighttpd"))
        cls.addClassCleanup(cls.stock.stop)

    def test_what_is_no_page_and_no_program_is_never_handed_out(self):
        for target in ("fileman.cgi/x", "fileman.cgi/", "fileman.cgi%2fx?fmtype=all", "fileman.cgi%00", "",
                       "other", "fileman.cgi%0a", "fileman.cgi.old", "../x/..//cgi-bin/%66ileman.cgi/x"):
            answer = fetch(self.server.port, f"/cgi-bin/{target}")
            self.assertTrue(answer.status in (403, 404) and len(answer.body) < 1000, (target, answer))
        for other in ("/cgi-bin//f", "/js/../cgi-bin/%66"):
            target = VIEW.replace("/cgi-bin/f", other)
            answer = fetch(self.server.port, target)
            self.assertEqual(answer.status, 200)
            self.assertRegex(answer.header["content-security-policy"], "^sandbox")

    def test_the_files_beside_the_program_run_no_script_of_their_own(self):
        kinds = {"index.html": "html", "js/fileman.js": "javascript", "js/report.html": "html"}
        for server, (target, kind) in itertools.product((self.server, self.stock), kinds.items()):
            answer = fetch(server.port, f"/{target}")
            self.assertEqual(answer.status, 200)
            self.assertEqual(answer.header["content-type"], f"text/{kind};charset=utf-8")
            self.assertRegex(answer.header["content-security-policy"], "^default-src 'none'; img-src")
            self.assertEqual(answer.header["x-content-type-options"], "nosniff")
            self.assertEqual(answer.header["referrer-policy"], "same-origin")

    def test_the_distribution_s_own_configuration_includes_the_settings(self):
        view = VIEW.replace("line", "%6c%69n%65")
        for target, status, policy in ((f"{PROGRAM}?fmtype=all", 200, "default-src"), (view, 200, "sandbox"),
                                       (f"{PROGRAM}/x", 403, "")):
            answer = fetch(self.stock.port, target)
            self.assertEqual((answer.status, answer.fault), (status, ""))
            self.assertRegex(answer.header.get("content-security-policy", ""), "^" + policy)


if __name__ == "__main__":
    unittest.main()
