#!/usr/bin/env python3
"""rewrite_faults.py DRIVER: power cuts and failing system calls while the configuration document is read or rewritten.

The driver is killed at, and then gets an error from, each system call that it makes for a rewrite. Whatever
happens, the document is the old or the new one, whole, and what the driver says of it is true. A document that
cannot be read for want of anything is named with the reason.
"""
import collections
import errno
import os
import pathlib
import re
import resource
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


def check_reads(driver):
    """One line for each failure of the system, none for an interrupted call."""
    for call in ('openat', 'read'):
        for name in ('EIO', 'EMFILE', 'ENFILE', 'ENOMEM', 'EACCES'):
            result = run(driver, 'read', '-P', str(CONF), '-e', f'inject={call}:error={name}')
            line = f'fileman: read document {CONF}: {os.strerror(getattr(errno, name))}\n'
            assert result.returncode == 1 and result.stderr.decode() == line, (call, name, result)
        result = run(driver, 'read', '-P', str(CONF), '-e', f'inject={call}:error=EINTR:when=1..3')
        assert result.returncode == 0 and result.stderr == b'', (call, 'EINTR', result)


def check_memory(driver):
    """Where memory runs out within a document, it counts as one that does not load."""
    CONF.write_bytes(b'<c><filter><class>' + b'<e>text</e>' * 40000 + b'</class></filter></c>')
    outcomes = set()
    for limit in range(8, 64, 2):
        size = limit << 20
        result = subprocess.run([driver, 'read'], stderr=subprocess.PIPE, timeout=60, check=False,
                                preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (size, size)))
        outcomes.add((result.returncode, result.stderr.decode()))
    wanted = {(0, ''), (1, f'fileman: read document {CONF}: {os.strerror(errno.ENOMEM)}\n')}
    loader = {outcome for outcome in outcomes if outcome[0] == 127}
    assert outcomes - loader == wanted, outcomes


def check_lock(driver):
    """Who never gets the lock gives up, with a line; the waits are skipped here."""
    result = run(driver, 'mark', '-e', 'inject=flock:error=EAGAIN', '-e', 'inject=clock_nanosleep:retval=0')
    line = f'fileman: lock directory {CONF.parent}/: still held by another writer\n'
    assert result.returncode == 1 and result.stderr.decode() == line, result
    assert CONF.read_bytes() == OLD


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


def main():
    driver = sys.argv[1]
    if 'FILEMAN_PRIVATE_STORAGE' not in os.environ or not os.path.exists('/tmp/.private-storage'):
        sys.exit('rewrite_faults: not in private storage, see scripts/with-storage')
    if subprocess.run(['strace', '-qq', '-o', '/tmp/trace', 'true'], check=False).returncode != 0:
        print('rewrite_faults: strace cannot trace here')
        sys.exit(77)
    CONF.parent.mkdir(parents=True)
    for checks in (check_reads, check_memory, check_lock, check_group):
        checks(driver)
    CONF.parent.chmod(0o755)
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
