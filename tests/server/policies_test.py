"""policies_test.py PROGRAM: which policy an answer carries, asked of real servers and of the wrapper."""

import os
import random
import re
import subprocess
import unittest
from concurrent.futures import ThreadPoolExecutor

from served import ADDRESS, PACKAGING, PLAIN, WWW, Server, lay_out_www, storage

SANDBOX = "sandbox; default-src 'none'; img-src 'self' data:; style-src 'unsafe-inline';"
PAGE = "default-src 'none'; script-src"
STOCK = "/etc/lighttpd/lighttpd.conf"
REPORT = b"<html>report</html>\n"
REPORT_ID = "Ethernet_SFP_BERT_Result_line_1"

# What random queries are made of: whole pairs, and what can change the meaning of those around it.
PAIRS = [b"fmtype=all", b"fmtype=Rslt", b"fmtype=prof", b"fmtype=screen", b"filter=fpri", b"filter=FADV", b"fmtype=x",
         b"filter=x", b"opertype=view&rsltid=" + REPORT_ID.encode(), b"opertype=view", b"opertype=x",
         b"rsltid=" + REPORT_ID.encode(), b"rsltid=", b"module=1GE", b"test=bert", b"fname=a", b"a=b", b"fmtype",
         b"%66mtype=all", b"fmtype%3Dx", b"fmtype=al%6c", b"FMTYPE=all", b"filte%72=fpri"]
JOINTS = [b"&"] * 12 + [b"%26", b"%2", b"%", b"%%", b"%0", b"%00", b"%00&", b"%zz&", b"%z0", b"%4", b"%&", b"%4&",
                        b"&&", b"+", b"=", b"%3d", b"%3D&", b"%20", b"%41&", b"%0a", b"\xff&", b"\xc3\xa9", b"?", b";", b""]
HONEST_KEYS = ["module", "mode", "test", "port", "jobid", "account", "locator", "type", "fname", "prefix", "suffix"]


def random_query(rng):
    pieces = []
    for _ in range(rng.randint(1, 4)):
        pieces += [rng.choice(PAIRS), rng.choice(JOINTS)]
    query = b"".join(pieces[:-1] if rng.random() < 0.8 else pieces)
    if rng.random() < 0.3:
        at = rng.randrange(len(query) + 1)
        query = query[:at] + rng.choice(JOINTS + [bytes([rng.randint(0x21, 0x7e)])]) + query[at + rng.randint(0, 1):]
    return query


def honest_query(rng):
    """As the browser side writes a page's address, with values of any bytes that can travel."""
    def escaped(values):
        return "".join(chr(c) if chr(c).isalnum() and c < 0x80 or chr(c) in "-_.~:/@()!*," else
                       "+" if c == 0x20 else f"%{c:02X}" for c in values if c not in b"\0&")

    pieces = rng.choice((["filter=fpri"], ["filter=fadv"], [], []))
    pieces.append("fmtype=" + rng.choice(("all", "prof", "screen", "all")))
    values = [(key, bytes(rng.choices(range(256), k=rng.randint(0, 9)))) for key in HONEST_KEYS if rng.random() < 0.4]
    pairs = [f"{key}={escaped(value)}" for key, value in values]
    # A form puts the deciding keys where it has them.
    return "&".join(pieces + pairs if rng.random() < 0.5 else pairs + pieces).encode()


def is_page(body):
    return b'onload="onInitPages();"' in body or re.search(rb"init(Pri|Adv)Filter\(\);", body) is not None


def wrapper_policies(shell, queries):
    """The wrapper's policy for each query. One shell for all of them reads the wrapper as its own text."""
    loop = '''while IFS= read -r QUERY_STRING; do (. packaging/cgi-headers </dev/null); printf '\\0'; done'''
    done = subprocess.run([*shell, "-c", loop], input=b"".join(query + b"\n" for query in queries), check=True,
                          stdout=subprocess.PIPE,
                          env={"PATH": "/usr/bin:/bin", "LC_ALL": "C.UTF-8", "FILEMAN_PROGRAM": "/bin/echo"})
    answers = done.stdout.split(b"\0")[:-1]
    assert len(answers) == len(queries)
    return [re.search(r"^Content-Security-Policy: (.*)\r$", answer.decode(), re.M)[1] for answer in answers]


class Policies(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        storage.Tree().make("basic")
        lay_out_www()
        cls.server = Server.lighttpd(PLAIN)
        cls.addClassCleanup(cls.server.stop)

    def test_no_query_gives_a_stored_file_the_policy_of_a_page(self):
        rng = random.Random(20)
        honest = [honest_query(rng) for _ in range(300)]
        view = b"opertype=view&rsltid=" + REPORT_ID.encode()
        queries = honest + [view + rest for rest in (b"%00&fmtype=all", b"%zz&fmtype=all", b"%&&fmtype=all")]
        queries += [random_query(rng) for _ in range(3000)]
        with ThreadPoolExecutor() as pool:
            dash = pool.submit(wrapper_policies, ["dash"], queries)
            busybox = pool.submit(wrapper_policies, ["busybox", "sh"], queries[:1000])
            answers = [self.server.get(b"/cgi-bin/fileman.cgi?" + query) for query in queries]
        rules = {"lighttpd": [headers.get("content-security-policy", "none") for _, headers, _ in answers],
                 "dash": dash.result(), "busybox": busybox.result()}
        for rule, policies in rules.items():
            for number, (query, (status, _, body), policy) in enumerate(zip(queries, answers, policies)):
                sandboxed = policy.startswith(SANDBOX)
                self.assertTrue(sandboxed or policy.startswith(PAGE), (rule, query, policy))
                self.assertTrue(sandboxed or status == 500 or is_page(body), (rule, query, status, body[:200]))
                self.assertTrue(number >= len(honest) or status == 500 or not sandboxed, (rule, query))
        # The dice show every kind.
        pages = sum(is_page(body) for _, _, body in answers)
        views = sum(REPORT[:10] in body for _, _, body in answers)
        self.assertTrue(pages > 800 and views > 50, (pages, views))

    def test_what_is_no_page_and_no_program_is_never_handed_out(self):
        for target in ("/cgi-bin/fileman.cgi/x", "/cgi-bin/fileman.cgi/", "/cgi-bin/fileman.cgi%2fx?fmtype=all",
                       "/cgi-bin/fileman.cgi%00", "/cgi-bin/fileman.cgi%0a", "/cgi-bin/fileman.cgi.old",
                       "/cgi-bin/other", "/cgi-bin/", "/x/..//cgi-bin/%66ileman.cgi/x"):
            status, _, body = self.server.get(target)
            self.assertTrue(status in (403, 404) and len(body) < 1000, (target, status, body[:20]))
        for target in ("/cgi-bin//fileman.cgi?", "/js/../cgi-bin/%66ileman.cgi?opertype=view&fmtype=x&rsltid=" + REPORT_ID):
            status, headers, body = self.server.get(target)
            self.assertEqual((status, headers["content-security-policy"][:7]), (200, "sandbox"), target)
            self.assertNotIn(b"ELF", body)

    def check_files(self, server):
        for target, kind in (("/", "text/html;charset=utf-8"), ("/index.html", "text/html;charset=utf-8"),
                             ("/js/fileman.js", "text/javascript;charset=utf-8"),
                             ("/js/report.html", "text/html;charset=utf-8")):
            status, headers, _ = server.get(target)
            self.assertEqual((status, headers["content-type"]), (200, kind))
            self.assertEqual(headers["x-content-type-options"], "nosniff")
            self.assertRegex(headers["content-security-policy"], "^default-src 'none'; img-src")
            self.assertEqual(headers["referrer-policy"], "same-origin")

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
        text = text.replace("/usr/local/ktb/lighttpd", f"{PACKAGING}/lighttpd").replace("/usr/local/ktb", "/tmp")
        server = Server.lighttpd(text.replace("/tmp/cgi-bin", f"{WWW}/cgi-bin") + ADDRESS)
        self.addCleanup(server.stop)
        self.check_files(server)
        for query, policy in (("fmtype=all&rsltid=%41%2", "default-src"), ("rsltid=%00&fmtype=all", "sandbox")):
            status, headers, body = server.get("/cgi-bin/fileman.cgi?" + query)
            self.assertEqual((status, headers["content-security-policy"].startswith(policy)), (200, True))
            self.assertEqual(is_page(body), policy != "sandbox")
        self.assertEqual(server.get("/cgi-bin/fileman.cgi/x")[0], 403)
        upgrade = (b"Upgrade: h2c", b"HTTP2-Settings: AAMAAABkAAQAAP__")
        target = "/cgi-bin/fileman.cgi?fmtype=all"
        with server.open(target, connection=b"Upgrade, HTTP2-Settings", head=upgrade) as client:
            self.assertEqual(client.recv(12), b"HTTP/1.1 200", "HTTP/2 is on")


if __name__ == "__main__":
    unittest.main()
