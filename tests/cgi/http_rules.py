"""Takes a strict answer apart by RFC 3875 and 9110 (the header), RFC 6266 and 8187 (file names).

Values that are always the same are compared with expected/strict.
"""

import re
import urllib.parse

FIELD = re.compile(rb"([A-Za-z-]+): ([!-~](?:[ -~]*[!-~])?)")
QUOTED = r'"(?:[ !#-\[\]-~]|\\[ -~])*"'
EXTENDED = r"UTF-8''(?:[!#$&+.^_`|~0-9A-Za-z-]|%[0-9A-F]{2})+"
DISPOSITION = re.compile(rf"(?:inline|attachment); filename=({QUOTED})(?:; filename\*=({EXTENDED}))?")


def check(response, method="GET"):
    """Status, fields (by name in lower case) and body; fails where a rule is broken."""
    head, blank_line, body = response.partition(b"\r\n\r\n")
    assert blank_line, ("no blank line ends the header", response[:200])
    fields = {}
    for line in head.split(b"\r\n"):
        field = FIELD.fullmatch(line)
        assert field and field[1].lower().decode() not in fields, ("no field, or a repeated one", line)
        fields[field[1].lower().decode()] = field[2].decode()
    disposition = fields.get("content-disposition")
    assert disposition is None or DISPOSITION.fullmatch(disposition), ("no disposition", disposition)
    length = None if method == "HEAD" else fields.get("content-length")
    assert length in (None, str(len(body))), ("another length", len(body), fields)
    assert method != "HEAD" or not body, "an answer to HEAD has a body"
    return int(fields.get("status", "200")[:3]), fields, body


def file_name(fields):
    """The name that a client saves the file under."""
    plain, extended = DISPOSITION.fullmatch(fields["content-disposition"]).groups()
    if extended:
        return urllib.parse.unquote(extended.removeprefix("UTF-8''"), errors="strict")
    return re.sub(r"\\(.)", r"\1", plain[1:-1])
