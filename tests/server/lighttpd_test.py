"""lighttpd_test.py PROGRAM: the settings for lighttpd, alone and included in Debian's own configuration."""

import os
import re
import unittest

import servers
from client import fetch
from servers import PACKAGING, PLACE, Server, storage

STOCK = "/etc/lighttpd/lighttpd.conf"
LIST = "/cgi-bin/fileman.cgi?fmtype=all"
VIEW = "/cgi-bin/fileman.cgi?opertype=view&rsltid=Ethernet_SFP_BERT_Result_line_1"


class Lighttpd(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        storage.Tree().make("basic")
        servers.lay_out("strict")
        cls.server = servers.lighttpd()
        cls.addClassCleanup(cls.server.stop)

    def test_what_is_no_page_and_no_program_is_never_handed_out(self):
        for target in ("/cgi-bin/fileman.cgi/x", "/cgi-bin/fileman.cgi/", "/cgi-bin/fileman.cgi%2fx?fmtype=all",
                       "/cgi-bin/fileman.cgi%00", "/cgi-bin/fileman.cgi%0a", "/cgi-bin/fileman.cgi.old",
                       "/cgi-bin/other", "/cgi-bin/", "/x/..//cgi-bin/%66ileman.cgi/x"):
            answer = fetch(self.server.port, target)
            self.assertTrue(answer.status in (403, 404) and len(answer.body) < 1000, (target, answer))
        for target in (VIEW.replace("/cgi-bin/", "/cgi-bin//"), VIEW.replace("/cgi-bin/f", "/js/../cgi-bin/%66")):
            answer = fetch(self.server.port, target)
            self.assertEqual((answer.status, answer.header["content-security-policy"][:7]), (200, "sandbox"), target)
            self.assertNotIn(b"ELF", answer.body)

    def check_files(self, server):
        for target, kind in (("/index.html", "text/html;charset=utf-8"),
                             ("/js/fileman.js", "text/javascript;charset=utf-8"),
                             ("/js/report.html", "text/html;charset=utf-8")):
            answer = fetch(server.port, target)
            self.assertEqual((answer.status, answer.header["content-type"]), (200, kind))
            self.assertEqual(answer.header["x-content-type-options"], "nosniff")
            self.assertRegex(answer.header["content-security-policy"], "^default-src 'none'; img-src")
            self.assertEqual(answer.header["referrer-policy"], "same-origin")

    def test_the_files_beside_the_program_run_no_script_of_their_own(self):
        self.check_files(self.server)

    @unittest.skipUnless(os.path.exists(STOCK), "Debian's lighttpd.conf is not there")
    def test_the_distribution_s_own_configuration_includes_the_settings(self):
        with open(STOCK, encoding="ascii") as file:
            text = file.read()
        # Its user and its address belong to the machine.
        text = re.sub(r"(?m)^server\.(pid-file|username|groupname|errorlog|port|upload-dirs)\b.*|^include_shell.*ipv6.*|"
                      "^include .*", "", text)
        text += "".join(f'include "/etc/lighttpd/conf-available/{name}.conf"\n'
                        for name in ("05-setenv", "10-cgi", "10-dir-listing", "20-deflate"))
        with open("docs/web-server.md", encoding="utf-8") as file:
            text += re.search(r"```conf\n(.*?)```", file.read(), re.S)[1]
        port = servers.free_port()
        servers.write("/run/stock.conf", text.replace(f"{PLACE}/lighttpd", f"{PACKAGING}/lighttpd") + f'''
server.bind = "127.0.0.1"
server.port = {port}
server.errorlog = "/run/stock.log"
server.upload-dirs = ( "/tmp" )
''')
        server = Server(("lighttpd", "-D", "-f", "/run/stock.conf"), port=port)
        self.addCleanup(server.stop)
        self.check_files(server)
        for target, policy in ((LIST, "default-src"), (VIEW.replace("line", "%6c%69n%65"), "sandbox")):
            answer = fetch(port, target)
            self.assertEqual((answer.status, answer.fault), (200, ""))
            self.assertTrue(answer.header["content-security-policy"].startswith(policy))
        self.assertEqual(fetch(port, "/cgi-bin/fileman.cgi/x").status, 403)


if __name__ == "__main__":
    unittest.main()
