"""Limits of the system: too little memory for a source or anything; file sizes; the
number of open files."""

import os
import resource
import unittest

from support import (DecodeTest, MIB, STEREO24, decode, limiting, limiting_memory_to, pcm24,
                     recording)


def limiting_files_to(size):
    return limiting(resource.RLIMIT_FSIZE, size)


class MemoryTest(DecodeTest):
    def setUp(self):
        super().setUp()
        self.source = recording(STEREO24)
        self.small = self.write("small.wav", self.source)

    def least_memory(self):
        """The smallest limit, in MiB, under which the program decodes a small file alone."""
        for limit in range(4, 500):
            if self.decode_within(limit * MIB, self.small).returncode == 0:
                return limit
        self.fail("500 MiB are too little for a small file")

    def decode_within(self, limit, *takes, jobs=1):
        return decode("--force", "--jobs", jobs, *takes, preexec_fn=limiting_memory_to(limit))

    def sparse(self, name, size, **format_fields):
        """A silent recording of the given size that takes no room."""
        path = self.write(name, recording(b"", data_size=size, **format_fields))
        os.truncate(path, path.stat().st_size + size)
        return path


class TooLittleMemory(MemoryTest):
    def test_source_that_does_not_fit(self):
        large = self.sparse("large.wav", 200 * MIB)
        limit = (self.least_memory() + 100) * MIB
        result = self.decode_within(limit, large, self.small)
        self.assert_failed(result, f"{large}: File not supported.")
        self.assert_decoded(self.folder / "small_Decode.WAV", self.source)
        self.assertFalse((self.folder / "large_Decode.WAV").exists())

    def test_output_needs_no_memory(self):
        """Once the source is there, its output of one and a half times the size can be written."""
        large = self.sparse("large.wav", 80 * MIB, bits=16)
        limit = (self.least_memory() + 100) * MIB
        self.assert_done(self.decode_within(limit, large))
        self.assertEqual((self.folder / "large_Decode.WAV").stat().st_size, 748 + 120 * MIB)

    def test_limits_from_nothing_to_enough(self):
        """Wherever memory runs out, it is told in one line or nothing is wrong."""
        take = self.sparse("take.wav", 3 * MIB)
        target = self.folder / "take_Decode.WAV"
        first = self.least_memory()
        outcomes = []
        for limit in range(first * MIB, (first + 10) * MIB, 160 * 1024):
            with self.subTest(limit=limit):
                target.unlink(missing_ok=True)
                result = self.decode_within(limit, take)
                if result.returncode == 0:
                    self.assert_done(result)
                    self.assertEqual(target.stat().st_size, 748 + 3 * MIB)
                    outcomes.append("done")
                else:
                    self.assertIn(result.stderr.decode(), (f"{take}: File not supported.\n",
                                                           f"{take}: Fail to save.\n"))
                    self.assertEqual(result.returncode, 1)
                    outcomes.append(result.stderr.decode().split(": ")[1])
        self.assertEqual({*outcomes}, {"done", "Fail to save.\n", "File not supported.\n"})

    def test_no_memory_for_the_threads_of_more_jobs(self):
        """Each thread asks for some MiB of stack; those there are do the work."""
        takes = [self.write(f"{k}.wav", self.source) for k in range(20)]
        least = self.least_memory()
        for spare in (2, 6, 14, 30, 62, 126):
            with self.subTest(spare=spare):
                result = self.decode_within((least + spare) * MIB, *takes, jobs=16)
                self.assert_done(result)
                for k in range(20):
                    target = self.folder / f"{k}_Decode.WAV"
                    self.assert_decoded(target, self.source)
                    target.unlink()


class ManyFilesAndLittleMemory(MemoryTest):
    def links(self, take, count):
        """Names of one file, so that many sources take no time to make."""
        names = [f"{k}.wav" for k in range(count)]
        for name in names:
            os.link(take, self.folder / name)
        return names

    def least_memory_to_start(self):
        for limit in range(1, 500):
            memory = limiting_memory_to(limit * MIB)
            if decode("--version", preexec_fn=memory).returncode == 0:
                return limit
        self.fail("500 MiB are too little to tell the version")

    def assert_each_told_once(self, result, names):
        """Done or failed for want of memory: each file has its one line, in the order given."""
        failed = []
        for line in result.stderr.decode().splitlines():
            name, told, failure = line.partition(": ")
            self.assertTrue(told, line)
            self.assertIn(failure, ("File not supported.", "Fail to save."), line)
            failed.append(name)
        done = [name for name in names if name not in failed]
        self.assertEqual(failed, [name for name in names if name in failed])
        self.assertEqual(result.stdout.decode(), "".join(
            f"{name} -> {name.removesuffix('.wav')}_Decode.WAV\n" for name in done))
        self.assertEqual(result.returncode, 1 if failed else 0)

    def assert_told_within(self, limits, jobs, names):
        for limit in limits:
            with self.subTest(jobs=jobs, limit=limit):
                result = decode("--force", "--jobs", jobs, *names, cwd=self.folder,
                                preexec_fn=limiting_memory_to(limit))
                self.assert_each_told_once(result, names)

    def test_limits_from_hardly_starting_to_enough(self):
        names = self.links(self.small, 60)
        first = self.least_memory_to_start() * MIB
        for jobs in (8, 32):
            self.assert_told_within(range(first, first + 200 * MIB, 8 * MIB), jobs, names)

    def test_next_to_no_memory_left_for_one_more_thread(self):
        """Within the size of a stack there is a limit at which the stacks leave nothing at all, not
        even for the notes about the thread that can't be had."""
        names = self.links(self.small, 60)
        first = self.least_memory_to_start() * MIB
        stack = 8 * MIB
        for jobs in (8, 32):
            self.assert_told_within(range(first, first + stack, 64 * 1024), jobs, names)

    def test_sources_that_fit_only_a_few_at_a_time(self):
        names = self.links(self.sparse("take.wav", 12 * MIB), 6)
        first = self.least_memory_to_start() * MIB
        for jobs in (3, 6):
            self.assert_told_within(range(first, first + 150 * MIB, 10 * MIB), jobs, names)

    def test_ample_for_one_file_is_enough_for_any_number_of_jobs(self):
        """Not for all four at once, with their outputs and all that their threads hold back: what
        fails for that is tried again alone."""
        source = recording(pcm24(*range(1000, 1600)) * 10000)
        names = self.links(self.write("take.wav", source), 4)
        for jobs in (1, 4):
            with self.subTest(jobs=jobs):
                result = decode("--force", "--jobs", jobs, *names, cwd=self.folder,
                                preexec_fn=limiting_memory_to(200 * MIB))
                self.assert_done(result)
                self.assert_each_told_once(result, names)
        expected = (self.folder / "0_Decode.WAV").stat().st_size
        self.assertEqual(expected, 748 + 600 * 10000 * 3)
        for k in range(4):
            self.assertEqual((self.folder / f"{k}_Decode.WAV").stat().st_size, expected)


class FewOpenFiles(MemoryTest):
    def test_more_jobs_than_files_may_be_open(self):
        """Long enough that many of them are open at the same time."""
        source = recording(STEREO24 * 100000)
        takes = [self.write(f"{k}.wav", source) for k in range(30)]
        self.assert_done(decode("--output", self.folder / "alone.wav", takes[0]))
        alone = (self.folder / "alone.wav").read_bytes()
        self.assertEqual(len(alone), 748 + len(STEREO24) * 100000)
        for most in range(5, 9):
            for jobs in (1, 30):
                with self.subTest(most=most, jobs=jobs):
                    self.assert_done(decode("--jobs", jobs, *takes,
                                            preexec_fn=limiting(resource.RLIMIT_NOFILE, most)))
                    for k in range(30):
                        target = self.folder / f"{k}_Decode.WAV"
                        output = target.read_bytes()
                        # But for date and time.
                        self.assert_bytes(output[:376] + output[394:], alone[:376] + alone[394:])
                        target.unlink()


class OutputBeyondFourGigabytes(MemoryTest):
    def test_refused_before_anything_is_written(self):
        """Eight bytes of output for each byte of a mono recording of 8 bits."""
        long = self.sparse("long.wav", 2 ** 29, channels=1, bits=8)
        result = decode("--format", "32f", long, self.small)
        self.assert_failed(result, f"{long}: Fail to save.")
        self.assertFalse((self.folder / "long_Decode.WAV").exists())
        self.assert_decoded(self.folder / "small_Decode.WAV", self.source, bits=32)


class FileSizeLimit(DecodeTest):
    def setUp(self):
        super().setUp()
        self.source = recording(STEREO24)
        self.take = self.write("take.wav", self.source)
        self.target = self.folder / "take_Decode.WAV"

    def size_of_output(self):
        return 748 + len(STEREO24)

    def test_output_larger_than_the_limit(self):
        for limit in (0, 1, 747, self.size_of_output() - 1):
            with self.subTest(limit=limit):
                result = decode("--force", self.take, preexec_fn=limiting_files_to(limit))
                self.assert_failed(result, f"{self.take}: Fail to save.")
                self.assertLessEqual(self.target.stat().st_size, limit)

    def test_output_exactly_as_large_as_the_limit(self):
        self.assert_done(decode(self.take, preexec_fn=limiting_files_to(self.size_of_output())))
        self.assert_decoded(self.target, self.source)

    def test_smaller_files_are_still_done(self):
        long = self.write("long.wav", recording(STEREO24 * 1000))
        result = decode(long, self.take, long, self.take, "--force",
                        preexec_fn=limiting_files_to(2000))
        self.assert_failed(result, f"{long}: Fail to save.", f"{long}: Fail to save.")
        self.assert_decoded(self.target, self.source)

    def test_parallel_jobs_survive_it_too(self):
        takes = [self.write(f"{k}.wav", self.source) for k in range(20)]
        result = decode("--jobs", 4, *takes, preexec_fn=limiting_files_to(100))
        self.assert_failed(result, *(f"{take}: Fail to save." for take in takes))

    def test_messages_into_a_limited_file(self):
        with open(self.folder / "messages", "wb") as messages:
            result = decode(self.take, "missing.wav", stdout=messages, stderr=messages,
                            preexec_fn=limiting_files_to(0))
        self.assertEqual(result.returncode, 1)
        self.assertEqual((self.folder / "messages").read_bytes(), b"")


if __name__ == "__main__":
    unittest.main()
