"""Many files in one run: the results are those of one after the other, however many run at once."""

import os
import shutil
import unittest

from support import DecodeTest, decode, pcm24, recording

# Frames enough that a short file behind it in line would overtake it.
LONG = 1000000


def take(number, frames=10, raw=False):
    """A recording unlike those of other numbers."""
    return recording(pcm24(*(1000 * number + k for k in range(20))) * (frames // 10), raw=raw)


def without_stamp(contents):
    return contents[:376] + contents[394:] if contents[48:52] == b"bext" else contents


class JobsTest(DecodeTest):
    """Runs the same files in the same folder anew for each number of jobs."""

    JOBS = (1, 2, 8)

    def outcomes(self, prepare, *arguments):
        """For each number of jobs: exit status, lines on both streams, the folder's contents."""
        found = []
        for jobs in self.JOBS:
            folder = self.folder / "here"
            folder.mkdir()
            prepare(folder)
            result = decode("--jobs", jobs, *arguments, cwd=folder)
            contents = {str(path.relative_to(folder)): without_stamp(path.read_bytes())
                        for path in sorted(folder.rglob("*")) if path.is_file()}
            found.append((result.returncode, result.stdout, result.stderr, contents))
            shutil.rmtree(folder)
        return found

    def samples_of(self, contents, name):
        """The first frame of an output."""
        return contents[name][748 - 18:][:6]

    def assert_same(self, outcomes):
        first = outcomes[0]
        for jobs, outcome in zip(self.JOBS[1:], outcomes[1:]):
            self.assertEqual(outcome[:3], first[:3], f"{jobs} jobs")
            self.assertEqual(list(outcome[3]), list(first[3]), f"{jobs} jobs")
            for name, contents in outcome[3].items():
                self.assert_bytes(contents, first[3][name], f"{name} with {jobs} jobs: ")
        return first


class ManyFiles(JobsTest):
    def test_thirty_files_good_and_bad(self):
        lines, done, outputs = [], [], []

        def prepare(folder):
            for k in range(30):
                # Lengths that make them end in another order than they begin.
                good = take(k + 1, frames=10 + 7000 * (k * 7 % 5))
                (folder / f"{k}.wav").write_bytes(b"no recording" if k % 5 == 3 else good)
            (folder / "4_Decode.WAV").write_bytes(b"in the way")

        files = [f"{k}.wav" for k in range(30)] + ["missing.wav"]
        for k, name in enumerate(files):
            if k == 4:
                lines.append(f"{name}: File exists.\n")
            elif k % 5 == 3 or k == 30:
                lines.append(f"{name}: File not supported.\n")
            else:
                done.append(f"{name} -> {k}_Decode.WAV\n")
                outputs.append(f"{k}_Decode.WAV")
        status, output, errors, contents = self.assert_same(self.outcomes(prepare, *files))
        self.assertEqual((status, output, errors),
                         (1, "".join(done).encode(), "".join(lines).encode()))
        self.assertEqual(sorted(name for name in contents if "_Decode" in name),
                         sorted([*outputs, "4_Decode.WAV"]))

    def test_samples_are_those_of_the_files_decoded_alone(self):
        sources = {f"{k}.wav": take(k + 1, frames=3000, raw=True) for k in range(12)}
        for name, source in sources.items():
            self.write(name, source)
        self.assert_done(decode("--jobs", 8, "--angle", 70, *sources, cwd=self.folder))
        for k, source in enumerate(sources.values()):
            self.assert_decoded(self.folder / f"{k}_Decode.WAV", source, angle=70)

    def test_more_jobs_than_files(self):
        source = take(1)
        one = self.write("one.wav", source)
        self.assert_done(decode("--jobs", 1000000, one))
        self.assert_decoded(self.folder / "one_Decode.WAV", source)


class Chains(JobsTest):
    """Plain recordings lose a step of each sample at every decode, so that one sees how many."""

    def test_target_of_one_file_is_the_source_of_the_next(self):
        def prepare(folder):
            (folder / "a.wav").write_bytes(take(1, LONG))
            (folder / "a_Decode.WAV").write_bytes(take(2))

        outcome = self.assert_same(self.outcomes(prepare, "--force", "a.wav", "a_Decode.WAV"))
        self.assertEqual(outcome[0], 0)
        self.assertEqual(self.samples_of(outcome[3], "a_Decode_Decode.WAV"), pcm24(998, 999))

    def test_target_of_one_file_is_the_source_of_an_earlier_one(self):
        def prepare(folder):
            (folder / "a.wav").write_bytes(take(1))
            (folder / "a_Decode.WAV").write_bytes(take(2, LONG))

        outcome = self.assert_same(self.outcomes(prepare, "--force", "a_Decode.WAV", "a.wav"))
        self.assertEqual(outcome[0], 0)
        self.assertEqual(self.samples_of(outcome[3], "a_Decode_Decode.WAV"), pcm24(1999, 2000))
        self.assertEqual(self.samples_of(outcome[3], "a_Decode.WAV"), pcm24(999, 1000))

    def test_source_that_only_an_earlier_file_brings_about(self):
        def prepare(folder):
            (folder / "a.wav").write_bytes(take(1, LONG))

        files = ("a.wav", "a_Decode.WAV", "a_Decode_Decode.WAV")
        outcome = self.assert_same(self.outcomes(prepare, *files))
        self.assertEqual(outcome[0], 0, outcome[2])
        self.assertEqual(self.samples_of(outcome[3], "a_Decode_Decode_Decode.WAV"),
                         pcm24(997, 998))

    def test_source_that_an_earlier_file_brings_about_spelt_differently(self):
        def prepare(folder):
            (folder / "a.wav").write_bytes(take(1, LONG))

        later = self.folder / "here" / "a_Decode.WAV"
        outcome = self.assert_same(self.outcomes(prepare, "a.wav", later))
        self.assertEqual((outcome[0], outcome[2]), (0, b""))
        self.assertEqual(self.samples_of(outcome[3], "a_Decode_Decode.WAV"), pcm24(998, 999))

    def test_target_is_a_link_to_a_later_source(self):
        def prepare(folder):
            (folder / "a.wav").write_bytes(take(1, LONG))
            (folder / "b.wav").write_bytes(take(2))
            os.symlink("b.wav", folder / "a_Decode.WAV")

        outcome = self.assert_same(self.outcomes(prepare, "--force", "a.wav", "b.wav"))
        self.assertEqual(outcome[0], 0)
        self.assertEqual(self.samples_of(outcome[3], "b_Decode.WAV"), pcm24(998, 999))

    def test_target_is_a_hard_link_to_a_later_source(self):
        def prepare(folder):
            (folder / "a.wav").write_bytes(take(1, LONG))
            (folder / "b.wav").write_bytes(take(2))
            os.link(folder / "b.wav", folder / "a_Decode.WAV")

        outcome = self.assert_same(self.outcomes(prepare, "--force", "a.wav", "b.wav"))
        self.assertEqual(self.samples_of(outcome[3], "b_Decode.WAV"), pcm24(998, 999))

    def test_target_is_a_dangling_link_to_a_later_source(self):
        def prepare(folder):
            (folder / "a.wav").write_bytes(take(1, LONG))
            os.symlink("b.wav", folder / "a_Decode.WAV")

        outcome = self.assert_same(self.outcomes(prepare, "--force", "a.wav", "b.wav"))
        self.assertEqual((outcome[0], outcome[2]), (0, b""))
        self.assertEqual(self.samples_of(outcome[3], "b_Decode.WAV"), pcm24(998, 999))


class EarlierReaders(JobsTest):
    JOBS = (1, 2, 3, 4, 8)

    def test_writer_waits_for_every_earlier_reader_of_its_target(self):
        """The second file reads what the last one overwrites, but has itself to wait for the first,
        a long one with the same target; the third reads it, too, and is done at once."""
        def prepare(folder):
            for name in ("1", "2", "3", "out"):
                (folder / name).mkdir()
            (folder / "1" / "A.wav").write_bytes(take(1, LONG))
            (folder / "out" / "q_Decode.WAV").write_bytes(take(2))
            os.symlink("../out/q_Decode.WAV", folder / "2" / "A.wav")
            os.symlink("../out/q_Decode.WAV", folder / "3" / "b.wav")
            (folder / "q.wav").write_bytes(take(3))

        outcome = self.assert_same(self.outcomes(prepare, "--force", "--output-dir", "out",
                                                 "1/A.wav", "2/A.wav", "3/b.wav", "q.wav"))
        self.assertEqual((outcome[0], outcome[2]), (0, b""))
        for name, samples in (("A", pcm24(1999, 2000)), ("b", pcm24(1999, 2000)),
                              ("q", pcm24(2999, 3000))):
            self.assertEqual(self.samples_of(outcome[3], f"out/{name}_Decode.WAV"), samples, name)


class SharedTargets(JobsTest):
    def prepare(self, folder):
        for number, name in ((1, "first"), (2, "second")):
            (folder / name).mkdir()
            (folder / name / "take.wav").write_bytes(take(number, LONG // number))
        (folder / "out").mkdir()

    FILES = ("--output-dir", "out", "first/take.wav", "second/take.wav")

    def test_second_file_finds_the_target_of_the_first_in_its_way(self):
        outcome = self.assert_same(self.outcomes(self.prepare, *self.FILES))
        self.assertEqual((outcome[0], outcome[2]), (1, b"second/take.wav: File exists.\n"))
        self.assertEqual(outcome[3]["out/take_Decode.WAV"][730:736], pcm24(999, 1000))

    def test_last_file_wins_when_forced(self):
        outcome = self.assert_same(self.outcomes(self.prepare, "--force", *self.FILES))
        self.assertEqual((outcome[0], outcome[2]), (0, b""))
        self.assertEqual(outcome[3]["out/take_Decode.WAV"][730:736], pcm24(1999, 2000))

    def test_targets_that_are_one_file_by_a_link_to_the_folder(self):
        def prepare(folder):
            self.prepare(folder)
            os.symlink("first", folder / "third")

        files = ("first/take.wav", "third/take.wav", "first/../third/./take.wav")
        outcome = self.assert_same(self.outcomes(prepare, *files))
        self.assertEqual(outcome[2], b"third/take.wav: File exists.\n"
                                     b"first/../third/./take.wav: File exists.\n")

    def test_same_file_spelt_differently(self):
        def prepare(folder):
            (folder / "a.wav").write_bytes(take(1, LONG))

        spellings = ("a.wav", "./a.wav", "../here/a.wav", str(self.folder / "here" / "a.wav"))
        outcome = self.assert_same(self.outcomes(prepare, *spellings))
        self.assertEqual(outcome[2].decode(), "".join(f"{spelling}: File exists.\n"
                                                      for spelling in spellings[1:]))

    def test_same_file_given_twice(self):
        def prepare(folder):
            (folder / "a.wav").write_bytes(take(1, LONG))

        outcome = self.assert_same(self.outcomes(prepare, "a.wav", "a.wav"))
        self.assertEqual((outcome[0], outcome[2]), (1, b"a.wav: File exists.\n"))
        outcome = self.assert_same(self.outcomes(prepare, "--force", "a.wav", "a.wav"))
        self.assertEqual((outcome[0], outcome[2]), (0, b""))
        self.assertEqual(outcome[3]["a_Decode.WAV"][730:736], pcm24(999, 1000))


if __name__ == "__main__":
    unittest.main()
