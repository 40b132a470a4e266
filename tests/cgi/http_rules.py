"""The rules of HTTP for what a CGI program writes in strict answers: RFC 3875 (the header), RFC 9110 (fields and their
values), RFC 6266 and 8187 (file names). check() takes a whole response apart and raises Broken where a rule is broken.
"""

import re
import urllib.parse

TOKEN = r"[!#$%&'*+.^_`|~0-9A-Za-z-]+"
QUOTED = r'"(?:[\t !#-\[\]-~]|\\[\t -~])*"'
EXTENDED = r"UTF-8''(?:[!#$&+.^_`|~0-9A-Za-z-]|%[0-9A-F]{2})+"
PARAMETERS = rf"(?:[ \t]*;[ \t]*{TOKEN}=(?:{TOKEN}|{QUOTED}))*"
DIRECTIVE = r"[a-z-]+(?: [^;,\s]+)*"
ONCE = {  # what a strict answer may say, and how
    "content-type": rf"{TOKEN}/{TOKEN}{PARAMETERS}",
    "content-length": r"0|[1-9][0-9]*",
    "content-disposition": rf"(?:inline|attachment); filename={QUOTED}(?:; filename\*={EXTENDED})?",
    "content-security-policy": rf"{DIRECTIVE}(?:; {DIRECTIVE})*",
    "x-content-type-options": "nosniff",
    "cache-control": "no-store",
    "referrer-policy": "same-origin",
    "cross-origin-resource-policy": "same-origin",
    "cross-origin-opener-policy": "same-origin",
    "x-fileman-incomplete": r"[1-9][0-9]*",
    "allow": rf"{TOKEN}(?:, {TOKEN})*",
    "retry-after": r"[0-9]+",
    "status": r"[45][0-9]{2} [A-Za-z ]+",
}
ALWAYS = {"content-type", "content-security-policy", "x-content-type-options", "cache-control", "referrer-policy",
          "cross-origin-resource-policy", "cross-origin-opener-policy"}
WITH_STATUS = {405: "allow", 503: "retry-after"}


class Broken(Exception):
    pass


def demand(holds, *what):
    if not holds:
        raise Broken(*what)


def check(response, method="GET"):
    """Status, fields (by name in lower case) and body."""
    head, blank_line, body = response.partition(b"\r\n\r\n")
    demand(blank_line, "no blank line ends the header", response[:200])
    fields = {}
    for line in head.split(b"\r\n"):
        demand(re.fullmatch(rb"[ -~]+", line), "a header line holds more than printable ASCII", line)
        name, colon, value = line.decode().partition(": ")
        demand(colon and re.fullmatch(TOKEN, name), "no field name", line)
        name = name.lower()
        demand(name in ONCE and name not in fields, "unknown or repeated", line)
        demand(re.fullmatch(ONCE[name], value), "not a value of that field", line)
        fields[name] = value
    demand(ALWAYS <= fields.keys(), "missing", ALWAYS - fields.keys())
    status = int(fields.get("status", "200")[:3])
    for other, name in WITH_STATUS.items():
        demand((name in fields) == (status == other), "does not go with the status", status, name)
    demand(fields["content-security-policy"].count("unsafe-hashes") == 0, "unsafe-hashes")
    demand("script-src 'unsafe" not in fields["content-security-policy"], "scripts of the page may run")
    if method == "HEAD":
        demand(not body, "an answer to HEAD has a body")
    elif "content-length" in fields:
        demand(len(body) == int(fields["content-length"]), "the body has another length", len(body), fields)
    return status, fields, body


def file_name(fields):
    """The name that a client saves the file under."""
    disposition = fields["content-disposition"]
    extended = re.search(r"filename\*=UTF-8''(.*)", disposition)
    if extended:
        return urllib.parse.unquote(extended[1], errors="strict")
    return re.sub(r"\\(.)", r"\1", re.search(r'filename="(.*)"', disposition)[1])
