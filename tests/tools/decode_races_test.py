"""Names that change hands while a file is decoded, at the worst moment: right before the target is
opened for writing."""

import os
import unittest

from support import DecodeTest, STEREO24, decode, recording, sample


class RacesTest(DecodeTest):
    """In every run something else is moved to the target's name."""

    def setUp(self):
        super().setUp()
        self.source = recording(STEREO24)
        self.take = self.write("take.wav", self.source)
        self.target = self.folder / "take_Decode.WAV"
        self.other = self.folder / "other"
        self.log = self.folder / "calls"

    def settings(self, target):
        return {"LD_PRELOAD": os.environ["H8_FAIL_CALLS"], "FAIL_PATH": str(target),
                "FAIL_LOG": str(self.log), "MOVE_FROM": str(self.other)}

    def assert_moved(self):
        """Else nothing changed hands and the test proves nothing."""
        self.assertFalse(os.path.lexists(self.other))
        self.assertEqual(self.log.read_text().split().count("moved"), 1)
        self.log.unlink()

    def decode_while_moving(self, *options, jobs=1):
        result = decode("--jobs", jobs, *options, self.take, env=self.settings(self.target))
        self.assert_moved()
        return result

    def assert_saving_failed(self, result):
        """Which of the two failures it is depends on when the names are compared."""
        self.assertIn(result.stderr.decode(),
                      (f"{self.take}: Fail to save.\n", f"{self.take}: Fail to open.\n"))
        self.assertEqual((result.returncode, result.stdout), (1, b""))

    def each_run(self, *options):
        """Both with and without other jobs, which may be cause to try a file again."""
        for jobs in (1, 4):
            for option in options:
                with self.subTest(jobs=jobs, options=option):
                    self.target.unlink(missing_ok=True)
                    yield jobs, option


class SomebodyElsesFile(RacesTest):
    def test_stays_as_it_is(self):
        for jobs, options in self.each_run(()):
            self.other.write_bytes(b"precious")
            result = self.decode_while_moving(*options, jobs=jobs)
            self.assert_failed(result, f"{self.take}: Fail to save.")
            self.assertEqual(self.target.read_bytes(), b"precious")

    def test_link_that_leads_nowhere_is_not_followed(self):
        for jobs, options in self.each_run(()):
            os.symlink("nowhere", self.other)
            result = self.decode_while_moving(*options, jobs=jobs)
            self.assert_failed(result, f"{self.take}: Fail to save.")
            self.assertNotIn("nowhere", self.names())

    def test_is_overwritten_when_forced(self):
        for jobs, options in self.each_run(("--force",)):
            self.other.write_bytes(b"x" * 10000)
            self.assert_done(self.decode_while_moving(*options, jobs=jobs))
            self.assert_decoded(self.target, self.source)

    def test_pipe_holds_up_nobody_and_gets_nothing(self):
        for jobs, options in self.each_run((), ("--force",)):
            os.mkfifo(self.other)
            reader = os.open(self.other, os.O_RDONLY | os.O_NONBLOCK)
            self.addCleanup(os.close, reader)
            self.assert_saving_failed(self.decode_while_moving(*options, jobs=jobs))
            self.assertEqual(os.read(reader, 100), b"")

    def test_sample_stays_away_from_it_too(self):
        self.other.write_bytes(b"precious")
        result = sample(self.target, env=self.settings(self.target))
        self.assert_moved()
        self.assert_failed(result, f"{self.target}: Fail to save.")
        self.assertEqual(self.target.read_bytes(), b"precious")


class TargetBecomesSource(RacesTest):
    def assert_source_untouched(self, become):
        for older in (None, b"older"):
            for jobs, options in self.each_run((), ("--force",)):
                if older is not None and not options:
                    continue # an older file is in the way at once
                if older is not None:
                    self.target.write_bytes(older)
                become()
                result = self.decode_while_moving(*options, jobs=jobs)
                self.assert_saving_failed(result)
                self.assert_bytes(self.take.read_bytes(), self.source)

    def test_by_a_hard_link(self):
        self.assert_source_untouched(lambda: os.link(self.take, self.other))

    def test_by_a_link(self):
        self.assert_source_untouched(lambda: os.symlink("take.wav", self.other))

    def test_by_a_link_to_a_hard_link(self):
        os.link(self.take, self.folder / "hard.wav")
        self.assert_source_untouched(lambda: os.symlink("hard.wav", self.other))

    def test_the_next_file_is_done_all_the_same(self):
        following = self.write("next.wav", self.source)
        for jobs in (1, 2):
            with self.subTest(jobs=jobs):
                self.target.unlink(missing_ok=True)
                os.symlink("take.wav", self.other)
                result = decode("--force", "--jobs", jobs, self.take, following,
                                env=self.settings(self.target))
                self.assert_moved()
                self.assertEqual((result.returncode, result.stderr.count(b"\n")), (1, 1))
                self.assertTrue(result.stderr.startswith(os.fsencode(self.take) + b": "))
                self.assert_bytes(self.take.read_bytes(), self.source)
                self.assert_decoded(self.folder / "next_Decode.WAV", self.source)


if __name__ == "__main__":
    unittest.main()
