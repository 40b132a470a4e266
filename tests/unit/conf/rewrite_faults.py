#!/usr/bin/env python3
"""rewrite_faults.py DRIVER: power cuts and failing system calls while the configuration document is rewritten.

The driver is killed at, and then gets an error from, each system call that it makes for a rewrite. Whatever
happens, the document is the old or the new one, whole, and what the driver says of it is true.
"""
import collections
import errno
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
    return subprocess.run(command, stderr=subprocess.PIPE, timeout=60, check=False, text=True)


def calls_of_rewrite(driver, way):
    """(name, how many calls of the name the process has made by then) of each call behind the mark."""
    run(driver, way, '-e', 'trace=all')
    trace = pathlib.Path('/tmp/trace').read_text()
    begin = trace.index('\n', trace.index('"/begin"'))
    counts, calls = collections.Counter(), []
    for found in re.finditer(r'^(\w+)\(', trace, re.M):
        counts[found[1]] += 1
        if found.start() > begin and found[1] not in MEMORY:
            calls.append((found[1], counts[found[1]]))
    # Without these the trace is not one of a rewrite.
    assert {'write', 'fsync', 'fchmod', 'rename'} <= {name for name, _ in calls}, calls
    return calls


def check_rewrite(driver, way, new, call, fault):
    name, count = call
    result = run(driver, way, '-e', f'trace={name}', '-e', f'inject={name}:{fault}:when={count}')
    found, left = CONF.read_bytes(), os.listdir(CONF.parent)
    # Only the fsync of the directory, the second one, fails behind the rename.
    wanted = new if result.returncode == 0 or call == ('fsync', 2) else OLD
    good = found in (OLD, new) if 'KILL' in fault else (
        found == wanted and left == [CONF.name] and result.returncode in (0, 1))
    assert good, (way, fault, call, result, left, {OLD: 'old', new: 'new'}.get(found, found[:200]))


def check_memory(driver):
    """Where memory runs out within a document, it counts as one that does not load, and a line says so."""
    CONF.write_bytes(b'<c><filter><class>' + b'<e>text</e>' * 40000 + b'</class></filter></c>')
    ended = [subprocess.run(['prlimit', f'--as={limit}', driver, 'read'], capture_output=True, timeout=60, check=False,
                            text=True) for limit in range(8 << 20, 64 << 20, 2 << 20)]
    outcomes = {(process.returncode, process.stderr) for process in ended if process.returncode != 127}
    line = f'fileman: read document {CONF}: {os.strerror(errno.ENOMEM)}\n'
    assert outcomes == {(0, ''), (1, line)}, outcomes


def check_lock(driver):
    """Who never gets the lock gives up, with a line; the waits are skipped here."""
    result = run(driver, 'mark', '-e', 'inject=flock:error=EAGAIN', '-e', 'inject=clock_nanosleep:retval=0')
    line = f'fileman: lock directory {CONF.parent}/: still held by another writer\n'
    assert (result.returncode, result.stderr, CONF.read_bytes()) == (1, line, OLD), result


def check_group(driver):
    """A member of the document's group rewrites it: it stays the group's."""
    group, user = 4711, 65534
    run(driver, 'read')
    try:
        for path, mode in ((CONF.parent, 0o770), (CONF, 0o660)):
            os.chown(path, 0, group)
            path.chmod(mode)
        result = subprocess.run([driver, 'mark'], user=user, group=user, extra_groups=[group], check=False)
    except (OSError, subprocess.SubprocessError) as error:
        print(f'rewrite_faults: no other user here, the group is not tested: {error}')
        return
    status = CONF.stat()
    assert result.returncode == 0 and CONF.read_bytes() != OLD
    assert (status.st_uid, status.st_gid, status.st_mode & 0o7777) == (user, group, 0o660), status
    CONF.parent.chmod(0o755)


def main():
    driver = sys.argv[1]
    if 'FILEMAN_PRIVATE_STORAGE' not in os.environ or not os.path.exists('/tmp/.private-storage'):
        sys.exit('rewrite_faults: not in private storage, see scripts/with-storage')
    if subprocess.run(['strace', '-qq', '-o', '/tmp/trace', 'true'], check=False).returncode != 0:
        print('rewrite_faults: strace cannot trace here')
        sys.exit(77)
    CONF.parent.mkdir(parents=True)
    for check in (check_memory, check_lock, check_group):
        check(driver)
    for way in ('mark', 'all', 'advanced'):
        assert run(driver, way).returncode == 0
        new = CONF.read_bytes()
        assert new != OLD
        for call in calls_of_rewrite(driver, way):
            for fault in ('signal=KILL', 'error=EIO', 'error=ENOSPC'):
                check_rewrite(driver, way, new, call, fault)


main()
