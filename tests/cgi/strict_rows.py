"""Reads the rows of strict lists as browsers and programs do, and demands that they have no other reading."""

import csv
import io
import json
import re

KEYS = ["id", "name", "module", "mode", "test", "port", "datetime", "rsltype", "path"]
LIST_START, LIST_END = b"\tvar griddata = [\n", b"\t\t];\n"


def as_bytes(values):
    """As Python reads file names: a byte that is no text is a lone surrogate."""
    return [value.encode("utf-8", "surrogateescape") for value in values]


def ordered(pairs):
    assert [key for key, _ in pairs] == KEYS, ("other keys", pairs)
    return as_bytes(value for _, value in pairs)


def in_page(page):
    """The values of each row, and the page without its rows."""
    before, start, rest = page.partition(LIST_START)
    grid, _, after = rest.partition(LIST_END)
    text = grid.decode()
    assert not re.search("[<>&\u2028\u2029\x7f\0-\x08\x0b-\x1f]", text), ("not escaped", text)
    found = json.loads(b"[" + grid + b"]", object_pairs_hook=ordered)
    assert len(found) == text.count("\n") == len(re.findall("^\t\t{", text, re.M)), ("not one line per row", text)
    return found, before + start + LIST_END + after if start else page


def in_json_lines(body):
    text = body.decode()
    assert not any(c < " " and c != "\n" for c in text), "control characters in the list"
    lines = text.split("\n")
    assert not lines.pop(), "the list has no end"
    return [json.loads(line, object_pairs_hook=ordered) for line in lines], b""


def in_csv(body):
    text = body.decode("utf-8", "surrogateescape")
    records = list(csv.reader(io.StringIO(text, newline=""), strict=True))
    assert records[0] == KEYS, ("other keys", records[0])
    again = io.StringIO(newline="")
    csv.writer(again, lineterminator="\r\n").writerows(records)
    assert again.getvalue() == text, ("a field has quotes without need, or a line another end", body)
    return [as_bytes(record) for record in records[1:]], b""


# By the content type: what takes the rows out of an answer.
READERS = {"text/html; charset=utf-8": in_page, "application/jsonl; charset=utf-8": in_json_lines,
           "text/csv; charset=utf-8; header=present": in_csv}
