#!/usr/bin/env python3
"""rewrite_faults.py DRIVER: power cuts and failing system calls while the configuration document is rewritten.

The driver is killed at, and then gets an error from, each system call that it makes for a rewrite. Whatever
happens, the document is the old or the new one, whole, and what the driver says of it is true.
"""
import collections
import os
import pathlib
import re
import subprocess
import sys

CONF = pathlib.Path('/home/.resultmanager/result-config-ktd.xml')
OLD = (b'<?xml version="1.0"?>\n<c><filter><class><e name="c" checked="false"/></class>\n'
       b'<advinfo jobid="" account=""/></filter></c>\n' + b'<!-- some length -->\n' * 1000)
MEMORY = {'brk', 'mmap', 'munmap', 'mprotect', 'madvise', 'exit_group', 'getrandom'}


def run(driver, way, *strace):
    for entry in CONF.parent.iterdir():
        entry.unlink()
    CONF.write_bytes(OLD)
    command = ['strace', '-qq', '-o', '/tmp/trace', *strace, driver, way] if strace else [driver, way]
    return subprocess.run(command, stderr=subprocess.PIPE, timeout=60, check=False)


def calls_of_rewrite(driver, way):
    """(name, how many calls of the name the process has made by then) of each call behind the mark."""
    run(driver, way, '-e', 'trace=all')
    counts, calls, begun = collections.Counter(), [], False
    for line in pathlib.Path('/tmp/trace').read_text().splitlines():
        name = re.match(r'(\w+)\(', line)
        if not name:
            continue
        counts[name[1]] += 1
        if begun and name[1] not in MEMORY:
            calls.append((name[1], counts[name[1]], line))
        begun = begun or '"/begin"' in line
    return calls


def check(driver, way, new, call, fault):
    name, count, line = call
    result = run(driver, way, '-e', f'trace={name}', '-e', f'inject={name}:{fault}:when={count}')
    found = CONF.read_bytes()
    # Only the fsync of the directory, the second one, fails behind the rename.
    renamed = name == 'fsync' and count == 2
    if 'KILL' in fault:
        good = found in (OLD, new)
    elif result.returncode == 0:
        good = found == new
    else:
        good = result.returncode == 1 and found == (new if renamed else OLD)
    if 'KILL' not in fault:
        good = good and os.listdir(CONF.parent) == [CONF.name]
    if not good:
        print(f'{way}, {fault} at {line}\n  exit {result.returncode}, {result.stderr}, document ' +
              ('old' if found == OLD else 'new' if found == new else f'BROKEN: {found[:200]}'),
              os.listdir(CONF.parent))
    return good


def main():
    driver = sys.argv[1]
    if 'FILEMAN_PRIVATE_STORAGE' not in os.environ or not os.path.exists('/tmp/.private-storage'):
        sys.exit('rewrite_faults: not in private storage, see scripts/with-storage')
    if subprocess.run(['strace', '-qq', '-o', '/tmp/trace', 'true'], check=False).returncode != 0:
        print('rewrite_faults: strace cannot trace here')
        sys.exit(77)
    CONF.parent.mkdir(parents=True)
    outcomes = []
    for way in ('mark', 'all', 'advanced'):
        assert run(driver, way).returncode == 0
        new = CONF.read_bytes()
        assert new != OLD
        calls = calls_of_rewrite(driver, way)
        # Without these the trace is not one of a rewrite.
        assert {'write', 'fsync', 'fchmod', 'rename'} <= {name for name, _, _ in calls}, calls
        outcomes += [check(driver, way, new, call, fault)
                     for call in calls for fault in ('signal=KILL', 'error=EIO', 'error=ENOSPC')]
    print(f'{len(outcomes)} faults, {outcomes.count(False)} failures')
    sys.exit(0 if all(outcomes) else 1)


main()
