"""Calls that fail: every nth open, read, write and close of a source and a target, in every way."""

import errno
import os
import unittest

from support import DecodeTest, decode, pcm24, recording

ERRORS = (errno.EIO, errno.ENOSPC, errno.EDQUOT, errno.EINTR)
# More calls of one kind than this on one small file would be a program that never ends.
MOST_CALLS = 300


class FaultsTest(DecodeTest):
    """Decodes three files, the middle one's source or target made to fail."""

    def setUp(self):
        super().setUp()
        self.sources = {name: recording(pcm24(*range(1000 * k, 1000 * k + 40)))
                        for k, name in enumerate(("first", "middle", "last"), 1)}
        for name, source in self.sources.items():
            self.write(f"{name}.wav", source)
        self.source = self.folder / "middle.wav"
        self.target = self.folder / "middle_Decode.WAV"
        self.log = self.folder / "calls"

    def decode_failing(self, path, **how):
        """Exit status and lines of a decode in which calls on `path` fail, and the calls made."""
        self.log.unlink(missing_ok=True)
        environment = {"LD_PRELOAD": os.environ["H8_FAIL_CALLS"], "FAIL_PATH": str(path),
                       "FAIL_LOG": str(self.log), **{k: str(v) for k, v in how.items()}}
        result = decode("--force", *(self.folder / f"{name}.wav" for name in self.sources),
                        env=environment)
        calls = self.log.read_text().split() if self.log.exists() else []
        return result, calls

    def calls_made(self, path):
        result, calls = self.decode_failing(path)
        self.assert_done(result)
        return calls

    def try_all_faults(self, path, ways, check):
        """Runs every fault of `ways` (kind to ways of failing) at the first call, the second and so
        on, once and for ever, until a run makes fewer calls; hands each result to `check` and
        returns how many there were of each kind."""
        runs = dict.fromkeys(ways, 0)
        for kind, fashions in ways.items():
            for fashion in fashions:
                for always in ("", "1"):
                    runs[kind] += self.try_at_each_call(path, check, FAIL_CALL=kind,
                                                        FAIL_WITH=fashion, FAIL_ALWAYS=always)
        return runs

    def try_at_each_call(self, path, check, **how):
        for number in range(1, MOST_CALLS):
            result, calls = self.decode_failing(path, FAIL_AT=number, **how)
            if f"{how['FAIL_CALL']}!" not in calls:
                return number - 1
            with self.subTest(at=number, **how):
                self.assert_others_done()
                check(result)
        self.fail(f"more than {MOST_CALLS} calls: {how}")

    def assert_others_done(self):
        for name in ("first", "last"):
            self.assert_decoded(self.folder / f"{name}_Decode.WAV", self.sources[name])
        for name, source in self.sources.items():
            self.assert_bytes((self.folder / f"{name}.wav").read_bytes(), source)

    def assert_right_or(self, failure):
        """A check: all went well, to the last byte, or the one line says that it didn't."""
        def check(result):
            if result.returncode == 0:
                self.assert_right(result)
            else:
                self.assert_failed(result, f"{self.source}: {failure}")
        return check

    def assert_right(self, result):
        self.assert_done(result)
        self.assert_decoded(self.target, self.sources["middle"])


class FailingTarget(FaultsTest):
    def test_every_error_in_every_call(self):
        kinds = set(self.calls_made(self.target))
        # Else the program writes in a way that these tests don't see.
        self.assertLessEqual({"open", "write", "close"}, kinds)
        runs = self.try_all_faults(self.target, {kind: ERRORS for kind in kinds},
                                   self.assert_right_or("Fail to save."))
        self.assertNotIn(0, runs.values(), runs)

    def test_short_writes_are_gone_on_with(self):
        result, calls = self.decode_failing(self.target, FAIL_CALL="write", FAIL_AT=1,
                                            FAIL_WITH="short", FAIL_ALWAYS=1)
        self.assertGreaterEqual(calls.count("write!"), 5)
        self.assert_right(result)

    def test_writes_that_take_nothing(self):
        runs = self.try_all_faults(self.target, {"write": ["zero"]},
                                   self.assert_right_or("Fail to save."))
        self.assertGreaterEqual(runs["write"], 2)

    def test_errors_that_last_are_never_taken_for_success(self):
        for kind in ("open", "write", "close"):
            for error in (errno.EIO, errno.ENOSPC, errno.EDQUOT):
                with self.subTest(kind=kind, error=error):
                    result, _ = self.decode_failing(self.target, FAIL_CALL=kind, FAIL_AT=1,
                                                    FAIL_ALWAYS=1, FAIL_WITH=error)
                    self.assert_failed(result, f"{self.source}: Fail to save.")

    def test_short_write_and_then_a_full_volume(self):
        """As the kernel reports it: first what still fits, then the error."""
        result, calls = self.decode_failing(self.target, FAIL_CALL="write", FAIL_AT=1,
                                            FAIL_WITH=f"short,{errno.ENOSPC}", FAIL_ALWAYS=1)
        self.assertGreaterEqual(calls.count("write!"), 2)
        self.assert_failed(result, f"{self.source}: Fail to save.")
        self.assert_others_done()

    def test_nothing_is_left_open(self):
        calls = self.calls_made(self.target)
        self.assertEqual(calls.count("open"), calls.count("close"))


class FailingSource(FaultsTest):
    def test_every_error_in_every_call(self):
        kinds = set(self.calls_made(self.source))
        self.assertLessEqual({"open", "read", "close"}, kinds)
        runs = self.try_all_faults(self.source, {kind: ERRORS for kind in kinds},
                                   self.assert_right_or("File not supported."))
        self.assertNotIn(0, runs.values(), runs)

    def test_errors_that_last_are_never_taken_for_success(self):
        for kind in ("open", "read"):
            with self.subTest(kind=kind):
                result, _ = self.decode_failing(self.source, FAIL_CALL=kind, FAIL_AT=1,
                                                FAIL_ALWAYS=1, FAIL_WITH=errno.EIO)
                self.assert_failed(result, f"{self.source}: File not supported.")
                self.assertFalse(self.target.exists())

    def test_error_in_the_middle_of_reading(self):
        result, _ = self.decode_failing(self.source, FAIL_CALL="read", FAIL_AT=1,
                                        FAIL_WITH=f"short,{errno.EIO}", FAIL_ALWAYS=1)
        self.assert_failed(result, f"{self.source}: File not supported.")
        self.assertFalse(self.target.exists())

    def test_one_interruption_is_no_failure(self):
        for kind in ("open", "read"):
            with self.subTest(kind=kind):
                result, calls = self.decode_failing(self.source, FAIL_CALL=kind, FAIL_AT=1,
                                                    FAIL_WITH=errno.EINTR)
                self.assertIn(f"{kind}!", calls)
                self.assert_right(result)

    def test_short_reads_are_gone_on_with(self):
        result, calls = self.decode_failing(self.source, FAIL_CALL="read", FAIL_AT=1,
                                            FAIL_WITH="short", FAIL_ALWAYS=1)
        self.assertGreaterEqual(calls.count("read!"), 5)
        self.assert_right(result)

    def test_file_that_gives_no_bytes(self):
        result, _ = self.decode_failing(self.source, FAIL_CALL="read", FAIL_AT=1,
                                        FAIL_WITH="zero", FAIL_ALWAYS=1)
        self.assert_failed(result, f"{self.source}: File not supported.")

    def test_file_that_is_cut_short_meanwhile_gives_what_it_holds(self):
        whole = recording(pcm24(*range(2000)))
        self.sources["middle"] = whole
        self.source.write_bytes(whole)
        result, _ = self.decode_failing(self.source, FAIL_CALL="read", FAIL_AT=1,
                                        FAIL_WITH="short,zero", FAIL_ALWAYS=1)
        self.assert_done(result)
        self.assert_decoded(self.target, whole[:(len(whole) + 1) // 2])

    def test_nothing_is_left_open(self):
        calls = self.calls_made(self.source)
        self.assertEqual(calls.count("open"), calls.count("close"))


if __name__ == "__main__":
    unittest.main()
