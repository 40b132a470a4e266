"""The scripts that the tests and the demo need: private storage, the sample instrument, the build, the installer."""

import itertools
import os
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import unittest
import urllib.request

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
sys.path.insert(0, os.path.join(ROOT, "tests/cgi"))
from storage import make_program, write  # noqa: E402  pylint: disable=wrong-import-position

RUNNER = os.path.join(ROOT, "scripts/with-storage")
LAY_OUT = os.path.join(ROOT, "sample/lay-out")


def run(*command, **options):
    return subprocess.run(command, capture_output=True, text=True, **options)


class Scratch(unittest.TestCase):
    def setUp(self):
        self.dir = self.enterContext(tempfile.TemporaryDirectory())

    def tool(self, name, script):
        """Returns an environment with `script` in place of a program of the machine; "$REAL" is that program."""
        make_program(f"{self.dir}/bin/{name}", f"REAL={shutil.which(name)}", script)
        return {**os.environ, "PATH": f"{self.dir}/bin:{os.environ['PATH']}"}


# Lists the storage, writes into it and ends with a status of its own.
LOOK = """pwd; ls -A /home; ls -A /tmp; cat /usr/local/ktb/ours 2>&1; ls -d /usr/local/bin
echo $FILEMAN_PRIVATE_STORAGE; : >/home/made; : >/tmp/made; exit 7"""
# Makes a root directory from the machine's directories, which is no mount point, and runs the runner there.
IN_CHROOT = """
mkdir -p "$1/machine"; mount -t tmpfs tmpfs "$1/machine" && cd "$1/machine" && mkdir -p new/home new/tmp new/srv &&
for folder in bin sbin lib lib64 usr etc dev proc; do
  [ ! -e "/$folder" ] || { mkdir "new/$folder" && mount --rbind "/$folder" "new/$folder"; } || exit 77
done
mkdir new/checkout && mount --bind "$2" new/checkout || exit 77
chroot new /checkout/scripts/with-storage - sh -c 'ls -A /home; ls /srv/demo'; echo $?; ls -A new/home"""


class Storage(Scratch):
    def setUp(self):
        super().setUp()
        write(f"{self.dir}/home/1ge/file")
        write(f"{self.dir}/usr-local/ktb/ours", "ours ")

    def test_every_method_mounts_the_same_storage_or_refuses(self):
        absent, last = "cat: /usr/local/ktb/ours: No such file or directory", "/usr/local/bin 1"
        blind = self.tool("mount", 'case "$*" in *" /home") exit 0 ;; esac\nexec "$REAL" "$@"')
        for method in ("unshare", "userns"):
            with_tmp = f"{self.dir}/{method}"
            write(f"{with_tmp}/home/1ge/file")
            write(f"{with_tmp}/tmp/stored")
            for storage, shown in ((self.dir, f"/srv 1ge .private-storage ours {last}"),
                                   (with_tmp, f"/srv 1ge .private-storage stored {absent} {last}"),
                                   ("-", f"/srv .private-storage {absent} {last}")):
                with self.subTest(method, storage=storage):
                    if run(RUNNER, "-m", method, "-", "true").returncode != 0:
                        self.skipTest(f"{method} does not work here")
                    done = run(RUNNER, "-m", method, storage, "sh", "-c", LOOK)
                    self.assertEqual((" ".join(done.stdout.split()), done.returncode), (shown, 7), done.stderr)
                    self.assertFalse(os.path.exists("/home/made") or os.path.exists("/tmp/made"))
                    if storage != "-":
                        os.unlink(f"{storage}/home/made")
                        refused = run(RUNNER, "-m", method, storage, "echo", "ran", env=blind)
                        self.assertEqual((refused.returncode, refused.stdout), (70, ""))
                        self.assertIn("are not seen below /home", refused.stderr)

    def test_an_entry_of_usr_local_hides_that_of_the_machine(self):
        write(f"{self.dir}/usr-local/ktb/theirs")
        write(f"{self.dir}/tmp/inner/usr-local/ktb/ours")
        write(f"{self.dir}/tmp/inner/home/file")
        no_overlay = self.tool("mount", 'case "$*" in *overlay*) exit 1 ;; esac\nexec "$REAL" "$@"')
        for environment in (None, no_overlay):
            inside = "scripts/with-storage /tmp/inner sh -c 'ls /usr/local/ktb; ls -d /usr/local/ktb /usr/local/bin'"
            said = run(RUNNER, self.dir, "sh", "-c", inside, env=environment)
            self.assertEqual(said.stdout.split(), ["ours", "/usr/local/bin", "/usr/local/ktb"], said.stderr)

    def test_a_chroot_is_used_only_where_mounts_stay_inside(self):
        for propagation, said in (("private", "/srv/demo 0"), ("shared", "69")):
            done = run("unshare", "-m", "--propagation", propagation, "sh", "-c", IN_CHROOT, "sh", self.dir, ROOT)
            if done.returncode != 0:
                self.skipTest(f"no chroot can be made here: {done.stderr}")
            self.assertEqual(" ".join(done.stdout.split()), said, done.stderr)

    def test_wrong_calls_have_their_own_status(self):
        self.assertEqual(run(RUNNER, f"{self.dir}/home", "true").returncode, 66)
        nothing = run(RUNNER, "-", "true", env=self.tool("unshare", "exit 1"))
        self.assertEqual((nothing.returncode, nothing.stderr.count("\n")), (69, 1))
        self.assertIn("--cap-add SYS_ADMIN" if os.geteuid() == 0 else "sysctl", nothing.stderr)

    def test_the_sample_is_always_the_same_and_never_on_the_home_of_the_machine(self):
        for name in ("one", "two"):
            self.assertEqual(run(LAY_OUT, f"{self.dir}/{name}").returncode, 0)
        self.assertEqual(run("diff", "-r", f"{self.dir}/one", f"{self.dir}/two").stdout, "")
        self.assertIn("not empty", run(LAY_OUT, f"{self.dir}/one").stderr)
        self.assertIn("the machine's own", run(LAY_OUT, "/home/.", env={"PATH": "/usr/bin:/bin"}).stderr)
        self.assertEqual(run(RUNNER, "-", "sample/lay-out", "/home").returncode, 0)


# Runs in private storage, where /usr/sbin and the links of the services belong to this script. Its apt-get enables a
# service, and then waits, fails or succeeds. Each call of apt-get notes what the policy answers.
INSTALL = r"""
mount -t tmpfs tmpfs /usr/sbin && mount -t tmpfs tmpfs /etc/rc3.d || exit 99
cd /tmp && mkdir bin && PATH=/tmp/bin:$PATH
tool() { printf '#!/bin/sh\n%s\n' "$2" >"bin/$1" && chmod 755 "bin/$1"; }
tool dpkg-query 'echo "installed old"; cat /tmp/new 2>/dev/null || true'
tool dpkg true
tool deb-systemd-helper true
tool update-rc.d 'rm "/etc/rc3.d/S01$1"'
tool apt-get '/usr/sbin/policy-rc.d; echo "forbidden $?" >>/tmp/policies
  [ "$2" != update ] || { echo "W: Failed to fetch URL  no way there"; exit 0; }
  : >/etc/rc3.d/S01webserver; echo "installed webserver" >/tmp/new; echo started >/tmp/started
  case $HOW in slow) sleep 1 ;; kill) kill -KILL $OURS ;; esac
  : >/tmp/done; [ $HOW != fail ] || { echo "E: Unable to locate package webserver"; exit 100; }'
: >/etc/rc3.d/S01mine
if [ -n "$POLICY" ]; then printf '%s\n' "$POLICY" >/usr/sbin/policy-rc.d; chmod 755 /usr/sbin/policy-rc.d; fi
HOW=$1 bash -c 'OURS=$$ exec /srv/scripts/install-packages webserver' >names 2>said &
if [ "$1" = slow ]; then until [ -e started ]; do sleep 0.05; done; kill -TERM $!; fi
wait $!; echo "status $?"
if [ "$1" != kill ]; then ls done; else HOW=fine /srv/scripts/install-packages webserver >names 2>said; ls done; fi
sort -u policies; cat names; ls /etc/rc3.d; cat /usr/sbin/policy-rc.d 2>/dev/null; ls /usr/sbin | wc -l; tail -n 1 said"""


class Commands(Scratch):
    def test_installing_never_starts_or_enables_a_service(self):
        for how, status in (("fine", 0), ("fail", 1), ("slow", 143), ("kill", 137)):
            for policy in ("", "#!/bin/sh"):
                with self.subTest(how=how, policy=policy):
                    done = run(RUNNER, "-", "bash", "-c", INSTALL, "install", how, env={**os.environ, "POLICY": policy})
                    expected = [f"status {status}", "done", "forbidden 101", *(["webserver"] if how != "kill" else []),
                                "S01mine", *([policy, "1"] if policy else ["0"])]
                    *lines, last = done.stdout.splitlines()
                    self.assertEqual(lines, expected, done.stderr)
                    if how == "fail":
                        self.assertEqual(last, "cannot install webserver: Failed to fetch URL  no way there")

    def checkout(self):
        """Returns a directory with a blank in its name, which holds the build scripts and an empty project."""
        place = f"{self.dir}/the checkout"
        write(f"{place}/CMakeLists.txt", "cmake_minimum_required(VERSION 3.25)\nproject(nothing NONE)\n")
        write(f"{place}/CMakePresets.json", """{ "version": 6,
            "configurePresets": [{ "name": "dev", "binaryDir": "${sourceDir}/build/dev", "generator": "Unix Makefiles" }],
            "buildPresets": [{ "name": "dev", "configurePreset": "dev" }] }""")
        os.mkdir(f"{place}/scripts")
        for name in ("build", "one-at-a-time"):
            shutil.copy(f"{ROOT}/scripts/{name}", f"{place}/scripts/")
        return place

    def test_a_checkout_that_has_moved_or_is_not_writable_says_so(self):
        place = self.checkout()
        moved = place + " 2"
        self.assertEqual(run(f"{place}/scripts/build", "dev").stderr, "")
        os.rename(place, moved)
        done = run(f"{moved}/scripts/build", "dev")
        self.assertEqual((done.returncode, done.stderr),
                         (0, f"this checkout was built as {place} and has moved: build/dev is made anew\n"))
        shutil.rmtree(f"{moved}/build")
        write(f"{moved}/build")
        closed = run(f"{moved}/scripts/build", "dev")
        self.assertEqual((closed.returncode, closed.stderr.count("\n")), (73, 1))
        self.assertIn("cannot be written", closed.stderr)

    def test_two_runs_in_one_checkout_take_turns(self):
        place = self.checkout()
        step = f"mkdir '{place}/busy' && sleep 0.3 && rmdir '{place}/busy'"
        both = [subprocess.Popen([f"{place}/scripts/one-at-a-time", "sh", "-c", step], stderr=subprocess.DEVNULL)
                for _ in range(2)]
        self.assertEqual([one.wait() for one in both], [0, 0])

    def test_the_demo_serves_its_own_addresses_until_a_signal_ends_it(self):
        with socket.create_server(("127.0.0.1", 0)) as server:
            demo = [f"{ROOT}/demo", str(server.getsockname()[1])]
            refused = run(*demo)
        self.assertEqual((refused.returncode, refused.stdout), (1, ""))
        for number, status in ((signal.SIGINT, 130), (signal.SIGTERM, 143)):
            with subprocess.Popen(demo, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True) as process:
                told = [*itertools.takewhile(lambda line: not line.startswith("Ctrl-C"), process.stdout)]
                addresses = [line.split()[-1] for line in told if "http://" in line]
                self.assertGreater(len(addresses), 3)
                for address in addresses:
                    with urllib.request.urlopen(address, timeout=30) as answer:
                        self.assertIn(b"</html>", answer.read(), address)
                process.send_signal(number)
            self.assertEqual(process.returncode, status)


if __name__ == "__main__":
    unittest.main()
