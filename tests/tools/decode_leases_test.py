"""Files that a file server has lent out: whoever opens them waits until they are given back."""

import subprocess
import sys
import unittest

from support import DecodeTest, PATIENCE, STEREO24, decode, recording

# Takes a lease on a file, tells so, and gives it back a while after somebody has asked for it, long
# enough for a program that doesn't wait to have failed.
HOLDER = """
import fcntl, os, signal, sys, time
path, kind = sys.argv[1:]
signal.pthread_sigmask(signal.SIG_BLOCK, [signal.SIGIO])
opened = os.open(path, os.O_RDWR if kind == "F_WRLCK" else os.O_RDONLY)
fcntl.fcntl(opened, fcntl.F_SETLEASE, getattr(fcntl, kind))
print("lent", flush=True)
signal.sigwait([signal.SIGIO])
time.sleep(0.3)
print("asked", flush=True)
fcntl.fcntl(opened, fcntl.F_SETLEASE, fcntl.F_UNLCK)
"""


class LeasesTest(DecodeTest):
    def setUp(self):
        super().setUp()
        self.source = recording(STEREO24)
        self.take = self.write("take.wav", self.source)
        self.target = self.folder / "take_Decode.WAV"

    def lend(self, path, kind):
        holder = subprocess.Popen([sys.executable, "-c", HOLDER, path, kind],
                                  stdout=subprocess.PIPE)
        self.addCleanup(holder.wait)
        self.addCleanup(holder.kill)
        self.addCleanup(holder.stdout.close)
        self.assertEqual(holder.stdout.readline(), b"lent\n")
        return holder

    def assert_given_back(self, holder):
        """Not taken away by the system, which loses patience at some time."""
        self.assertEqual(holder.communicate(timeout=PATIENCE)[0], b"asked\n")
        self.assertEqual(holder.returncode, 0)

    def test_source(self):
        holder = self.lend(self.take, "F_WRLCK")
        result = decode(self.take)
        self.assert_done(result)
        self.assert_given_back(holder)
        self.assert_decoded(self.target, self.source)

    def test_target(self):
        for kind in ("F_RDLCK", "F_WRLCK"):
            with self.subTest(kind=kind):
                self.target.write_bytes(b"x" * 10000)
                holder = self.lend(self.target, kind)
                result = decode("--force", self.take)
                self.assert_done(result)
                self.assert_given_back(holder)
                self.assert_decoded(self.target, self.source)

    def test_information(self):
        holder = self.lend(self.take, "F_WRLCK")
        result = decode("--info", self.take)
        self.assert_done(result)
        self.assertIn(b'"supported":true', result.stdout)
        self.assert_given_back(holder)

    def test_other_files_go_on_meanwhile(self):
        other = self.write("other.wav", self.source)
        holder = self.lend(self.take, "F_WRLCK")
        self.assert_done(decode("--jobs", 2, self.take, other))
        self.assert_given_back(holder)
        for target in (self.target, self.folder / "other_Decode.WAV"):
            self.assert_decoded(target, self.source)


if __name__ == "__main__":
    unittest.main()
