#!/usr/bin/python3
"""Writes the list of all results as a Python CGI script would do it. The rows have the same form as those of the
program. They contain the date of each file and the fields that follow from its path."""

import os
import sys
import time

ENDINGS = (".html", ".png", ".jpg", ".jpeg", ".bmp", ".pcap")


def rows(root):
    for directory, below, files in os.walk(root):
        below[:] = [name for name in below if not name.endswith("_files")]
        parts = directory.split("/")
        module, mode, port, test = (["", "", "", ""] + parts)[-4:]
        for name in files:
            if not name.endswith(ENDINGS):
                continue
            base = name.split(".")[0]
            path = directory + "/" + name
            date = time.strftime("%Y-%m-%d %H:%M:%S", time.localtime(os.lstat(path).st_ctime))
            yield (f"\t\t{{ id: '{mode}_{port}_{test}_Result_{base}', name: '{base}', module: '{module}', mode: '{mode}', "
                   f"test: '{test}', port: '{port}', datetime: '{date}', rsltype: 'Result', path: '{path}' }},\n")


def main():
    write = sys.stdout.write
    write("Content-type:text/html;charset=utf-8\n\n<html>\n<script>\n\tvar griddata = [\n")
    for row in rows("/home"):
        write(row)
    write("\t\t];\n</script>\n</html>\n")


if __name__ == "__main__":
    main()
