"""What strict lists hold: rows in their format, and HTML in which nothing runs and no value ends its place."""

import csv
import html.parser
import io
import json

from http_rules import demand

KEYS = ["id", "name", "module", "mode", "test", "port", "datetime", "rsltype", "path"]
LIST_START, LIST_END = b"\tvar griddata = [\n", b"\t\t];\n"
VOID = {"meta", "link", "input"}


def ordered(pairs):
    demand([key for key, _ in pairs] == KEYS, "other keys", pairs)
    # As Python reads file names: a byte that is no text is a lone surrogate.
    return [value.encode("utf-8", "surrogateescape") for _, value in pairs]


def rows(page):
    """The values of each row, as bytes, and the page without its rows."""
    before, start, rest = page.partition(LIST_START)
    grid, end, after = rest.partition(LIST_END)
    if not start:
        return [], page
    demand(end, "the list has no end")
    demand(all(ord(c) >= 0x20 or c in "\t\n" for c in grid.decode()), "control characters in the list")
    demand(not any(c in grid.decode() for c in "<>&\u2028\u2029\x7f"), "unescaped characters in the list")
    lines = grid.decode().splitlines()
    demand(all(line.startswith("\t\t{") for line in lines), "a row has several lines or starts elsewhere")
    found = json.loads(b"[" + grid + b"]", object_pairs_hook=ordered)
    demand(len(found) == len(lines), "another number of lines than of rows")
    return found, before + start + end + after


def json_lines(body):
    demand(not body or body.endswith(b"\n"), "the list has no end")
    demand(all(ord(c) >= 0x20 or c == "\n" for c in body.decode()), "control characters in the list")
    return [json.loads(line, object_pairs_hook=ordered) for line in body.decode().split("\n")[:-1]], b""


def csv_records(body):
    text = body.decode("utf-8", "surrogateescape")
    names, *found = csv.reader(io.StringIO(text, newline=""), strict=True)
    demand(names == KEYS, "other keys", names)
    again = io.StringIO(newline="")
    csv.writer(again, lineterminator="\r\n").writerows([names, *found])
    demand(again.getvalue() == text, "a field has quotes without need, or a line another end", body)
    return [[value.encode("utf-8", "surrogateescape") for value in row] for row in found], b""


# By the content type: what takes the rows out of an answer.
ROWS = {"text/html; charset=utf-8": rows, "application/jsonl; charset=utf-8": json_lines,
        "text/csv; charset=utf-8; header=present": csv_records}


class Page(html.parser.HTMLParser):
    """Takes the page apart, and demands that nothing in it can run and that it is well-formed."""

    def __init__(self, text):
        super().__init__(convert_charrefs=True)
        self.open = []
        self.feed(text)
        self.close()
        demand(not self.open, "not closed", self.open)

    def handle_starttag(self, tag, attributes):
        names = [name for name, _ in attributes]
        demand(len(set(names)) == len(names), "an attribute twice", tag, names)
        demand(not any(name == "style" or name.startswith("on") for name in names), "code or style", tag, names)
        demand(tag != "style", "a style element")
        known = dict(attributes)
        demand(tag != "script" or known.get("src") or known.get("type") == "text/plain", "a script in the page")
        demand(" " not in known.get("id", "x"), "a blank in an id", known)
        if tag not in VOID:
            self.open.append(tag)

    def handle_startendtag(self, tag, attributes):
        self.handle_starttag(tag, attributes)
        demand(tag in VOID, "no such empty element", tag)

    def handle_endtag(self, tag):
        demand(self.open and self.open.pop() == tag, "closed, but not open", tag)
