"""The runner that keeps storage private, the sample instrument's lay-out, and what the two commands stand on."""

import os
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time
import unittest

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
RUNNER = os.path.join(ROOT, "scripts/with-storage")
LAY_OUT = os.path.join(ROOT, "sample/lay-out")
METHODS = ("unshare", "userns")


def run(*command, **options):
    return subprocess.run(command, capture_output=True, text=True, **options)


class Environment(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.dir = scratch.name
        os.makedirs(f"{self.dir}/home/1ge")
        os.makedirs(f"{self.dir}/usr-local/ktb")
        with open(f"{self.dir}/usr-local/ktb/ours", "w", encoding="ascii") as file:
            file.write("ours")

    def each_method(self):
        for method in METHODS:
            with self.subTest(method):
                if run(RUNNER, "-m", method, "-", "true").returncode != 0:
                    self.skipTest(f"{method} does not work here")
                yield method

    def test_every_method_lays_the_same_storage(self):
        script = """
            pwd; ls demo; ls -A /home; ls -A /tmp; cat /usr/local/ktb/ours; ls -d /usr/local/bin
            echo " $FILEMAN_PRIVATE_STORAGE"; echo new >/home/1ge/made; : >/tmp/made; exit 7"""
        for method in self.each_method():
            done = run(RUNNER, "-m", method, self.dir, "sh", "-c", script)
            self.assertEqual((done.stdout.split(), done.returncode),
                             (["/srv", "demo", "1ge", ".private-storage", "ours/usr/local/bin", "1"], 7), done.stderr)
            self.assertTrue(os.path.exists(f"{self.dir}/home/1ge/made"))
            self.assertFalse(os.path.exists("/tmp/made"))
            os.unlink(f"{self.dir}/home/1ge/made")

    def test_storage_can_be_empty_or_bring_its_own_tmp(self):
        os.mkdir(f"{self.dir}/tmp")
        for method in self.each_method():
            empty = run(RUNNER, "-m", method, "-", "sh", "-c", "ls -A /home /tmp; : >/home/made && : >/tmp/made")
            self.assertEqual((empty.stdout.split(), empty.returncode), (["/home:", "/tmp:", ".private-storage"], 0))
            run(RUNNER, "-m", method, self.dir, "touch", "/tmp/made")
            self.assertEqual(sorted(os.listdir(f"{self.dir}/tmp")), [".private-storage", "made"])

    def tool(self, name, script):
        """Stands in for a program of the machine; "$REAL" is the real one."""
        os.makedirs(f"{self.dir}/bin", exist_ok=True)
        with open(f"{self.dir}/bin/{name}", "w", encoding="ascii") as file:
            file.write(f"#!/bin/sh\nREAL={shutil.which(name)}\n{script}\n")
        os.chmod(file.name, 0o755)
        return {**os.environ, "PATH": f"{self.dir}/bin:{os.environ['PATH']}"}

    def test_what_lies_in_the_machines_usr_local_does_not_show_through(self):
        with open(f"{self.dir}/usr-local/ktb/theirs", "w", encoding="ascii"):
            pass
        os.makedirs(f"{self.dir}/tmp/inner/usr-local/ktb")
        os.makedirs(f"{self.dir}/tmp/inner/home")
        inside = "scripts/with-storage /tmp/inner ls /usr/local/ktb /usr/local | grep -v bin"
        with_overlay = run(RUNNER, self.dir, "sh", "-c", inside).stdout
        without = run(RUNNER, self.dir, "sh", "-c", inside, env=self.tool(
            "mount", 'case "$*" in *overlay*) exit 1 ;; esac\nexec "$REAL" "$@"')).stdout
        self.assertIn("ktb", with_overlay)
        self.assertNotIn("theirs", with_overlay + without)
        self.assertEqual(sorted(with_overlay.split()), sorted(without.split()))

    def test_storage_that_is_not_really_there_is_refused(self):
        with open(f"{self.dir}/home/1ge/file", "w", encoding="ascii"):
            pass
        blind = self.tool("mount", 'case "$*" in *" /home") exit 0 ;; esac\nexec "$REAL" "$@"')
        for method in self.each_method():
            done = run(RUNNER, "-m", method, self.dir, "echo", "ran", env=blind)
            self.assertEqual((done.returncode, done.stdout), (70, ""))
            self.assertIn("are not seen below /home", done.stderr)

    def test_a_chroot_is_used_where_mounts_stay_inside_and_else_refused(self):
        # A root that is no mount point, of the machine's own folders; as in a mount namespace that shares mounts or not.
        script = """
            mkdir -p "$1/machine"; mount -t tmpfs tmpfs "$1/machine" && cd "$1/machine" && mkdir -p new/home new/tmp new/srv &&
            for folder in bin sbin lib lib64 usr etc dev proc; do
              [ ! -e "/$folder" ] || { mkdir "new/$folder" && mount --rbind "/$folder" "new/$folder"; } || exit 77
            done
            mkdir new/checkout && mount --bind "$2" new/checkout || exit 77
            chroot new /checkout/scripts/with-storage - sh -c 'ls -A /home; ls /srv/demo'; echo $?; ls -A new/home"""
        for propagation, said in (("private", "/srv/demo 0"), ("shared", "69")):
            done = run("unshare", "-m", "--propagation", propagation, "sh", "-c", script, "sh", self.dir, ROOT)
            if done.returncode != 0:
                self.skipTest(f"no chroot can be made here: {done.stderr}")
            self.assertEqual(" ".join(done.stdout.split()), said, done.stderr)

    def test_wrong_calls_are_told_apart_by_their_status(self):
        self.assertEqual(run(RUNNER, self.dir).returncode, 64)
        self.assertEqual(run(RUNNER, "-m", "magic", "-", "true").returncode, 64)
        self.assertEqual(run(RUNNER, f"{self.dir}/home", "true").returncode, 66)
        nothing = run(RUNNER, "-", "true", env=self.tool("unshare", "exit 1"))
        self.assertEqual((nothing.returncode, nothing.stderr.count("\n")), (69, 1))
        self.assertIn("--cap-add SYS_ADMIN" if os.geteuid() == 0 else "sysctl", nothing.stderr)

    def test_sample_is_laid_out_alike_each_time_and_once(self):
        for name in ("one", "two"):
            self.assertEqual(run(LAY_OUT, f"{self.dir}/{name}").returncode, 0)
        self.assertEqual(run("diff", "-r", f"{self.dir}/one", f"{self.dir}/two").stdout, "")
        self.assertIn("not empty", run(LAY_OUT, f"{self.dir}/one").stderr)

    def test_sample_leaves_the_machines_own_home_alone(self):
        environment = {name: value for name, value in os.environ.items() if name != "FILEMAN_PRIVATE_STORAGE"}
        refused = run(LAY_OUT, "/home/.", env=environment)
        self.assertEqual((refused.returncode, refused.stderr.count("the machine's own")), (1, 1))
        self.assertEqual(run(RUNNER, "-", "sample/lay-out", "/home").returncode, 0)


# In private storage, where /usr/sbin and the links of services are this script's own: apt-get enables a service and
# waits, fails or succeeds as it is told; which policies hold is noted for each of its calls.
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


class Commands(unittest.TestCase):
    def checkout(self, *names):
        """A directory with a blank in its name that holds these scripts, and a project of nothing."""
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        place = f"{scratch.name}/the checkout"
        os.makedirs(f"{place}/scripts")
        for name in names:
            shutil.copy(os.path.join(ROOT, "scripts", name), f"{place}/scripts/")
        with open(f"{place}/CMakeLists.txt", "w", encoding="ascii") as file:
            file.write("cmake_minimum_required(VERSION 3.25)\nproject(nothing NONE)\n")
        with open(f"{place}/CMakePresets.json", "w", encoding="ascii") as file:
            file.write("""{ "version": 6,
              "configurePresets": [{ "name": "dev", "binaryDir": "${sourceDir}/build/dev", "generator": "Unix Makefiles" }],
              "buildPresets": [{ "name": "dev", "configurePreset": "dev" }] }""")
        return place

    def test_a_checkout_that_moves_or_cannot_be_written_says_so(self):
        place = self.checkout("build", "one-at-a-time")
        self.assertEqual(run(f"{place}/scripts/build", "dev").stderr, "")
        os.rename(place, place + " 2")
        moved = run(f"{place} 2/scripts/build", "dev")
        self.assertEqual((moved.returncode, moved.stderr),
                         (0, f"this checkout was built as {place} and has moved: build/dev is made anew\n"))
        shutil.rmtree(f"{place} 2/build")
        with open(f"{place} 2/build", "w", encoding="ascii"):
            pass
        closed = run(f"{place} 2/scripts/build", "dev")
        self.assertEqual((closed.returncode, closed.stderr.count("\n")), (73, 1))
        self.assertIn("cannot be written", closed.stderr)

    def test_two_runs_in_one_checkout_take_turns(self):
        place = self.checkout("one-at-a-time")
        step = f"mkdir '{place}/busy' && sleep 0.3 && rmdir '{place}/busy'"
        both = [subprocess.Popen([f"{place}/scripts/one-at-a-time", "sh", "-c", step], stderr=subprocess.DEVNULL)
                for _ in range(2)]
        self.assertEqual([one.wait() for one in both], [0, 0])

    def test_demo_names_its_own_addresses_and_ends_as_it_was_told(self):
        with socket.socket() as one, socket.socket() as other:
            one.bind(("127.0.0.1", 0))
            other.bind(("127.0.0.1", 0))
            port, another = (str(probe.getsockname()[1]) for probe in (one, other))
        # Both on one port: the second may lose early, at the first look, or late, when its server cannot listen.
        demos = [subprocess.Popen([os.path.join(ROOT, "demo"), port], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                                  text=True) for _ in range(2)]
        loser = demos[0]
        while loser.poll() is None:
            time.sleep(0.1)
            loser = demos[1] if loser is demos[0] else demos[0]
        self.assertEqual((loser.returncode, loser.communicate()[0]), (1, ""))
        demos.remove(loser)
        last = subprocess.Popen([os.path.join(ROOT, "demo"), another], stdout=subprocess.PIPE,
                                stderr=subprocess.DEVNULL, text=True)
        for demo, number, status in ((demos[0], signal.SIGINT, 130), (last, signal.SIGTERM, 143)):
            for line in demo.stdout:
                if line.startswith("Ctrl-C"):
                    break
            demo.send_signal(number)
            demo.communicate()
            self.assertEqual(demo.returncode, status)

    def test_installing_starts_and_enables_nothing_whatever_happens(self):
        for how, status in (("fine", 0), ("fail", 1), ("slow", 143), ("kill", 137)):
            for policy in ("", "#!/bin/sh"):
                with self.subTest(how=how, policy=policy):
                    done = run(RUNNER, "-", "bash", "-c", INSTALL, "install", how, env={**os.environ, "POLICY": policy})
                    lines = done.stdout.splitlines()
                    names = ["webserver"] if how != "kill" else []
                    expected = [f"status {status}", "done", "forbidden 101", *names, "S01mine", *([policy] if policy else [])]
                    self.assertEqual(lines[:len(expected)], expected, done.stderr)
                    self.assertEqual(lines[len(expected)], "1" if policy else "0")
                    if how == "fail":
                        self.assertEqual(lines[-1], "cannot install webserver: Failed to fetch URL  no way there")


if __name__ == "__main__":
    sys.exit(unittest.main())
