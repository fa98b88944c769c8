"""Where decoded files go, what is in their way, and what is refused."""

import ctypes
import os
import struct
import unittest

from support import DecodeTest, STEREO24, decode, pcm24, recording, respect_permissions, riff

CREATED, MOVED_FROM, MOVED_TO, DELETED = 0x100, 0x40, 0x80, 0x200


class FolderWatch:
    """Every name that appears in a folder or goes from it, from now on."""

    def __init__(self, folder):
        library = ctypes.CDLL(None, use_errno=True)
        self.descriptor = library.inotify_init1(os.O_NONBLOCK | os.O_CLOEXEC)
        mask = CREATED | MOVED_FROM | MOVED_TO | DELETED
        if library.inotify_add_watch(self.descriptor, os.fsencode(folder), mask) < 0:
            raise OSError(ctypes.get_errno(), "inotify_add_watch")

    def events(self):
        """Pairs of what happened and the name."""
        found = []
        try:
            buffer = os.read(self.descriptor, 65536)
        except BlockingIOError:
            buffer = b""
        while buffer:
            _, mask, _, length = struct.unpack_from("iIII", buffer)
            found.append((mask, buffer[16:16 + length].rstrip(b"\0").decode()))
            buffer = buffer[16 + length:]
        os.close(self.descriptor)
        return found


class Names(DecodeTest):
    def test_output_lies_beside_the_source_by_default(self):
        cases = {"take.wav": "take_Decode.WAV", "take.WAV": "take_Decode.WAV",
                 "take": "take_Decode.WAV", "a.b.wav": "a.b_Decode.WAV",
                 ".wav": ".wav_Decode.WAV", "sp ace.bwf": "sp ace_Decode.WAV"}
        for k, (name, expected) in enumerate(cases.items()):
            with self.subTest(name=name):
                source = recording(STEREO24)
                take = self.write(f"{k}/{name}", source)
                self.assert_done(decode(take))
                self.assertEqual(self.names(take.parent), sorted([name, expected]))
                self.assert_decoded(take.parent / expected, source)

    def test_default_name_without_a_folder(self):
        source = recording(STEREO24)
        self.write("take.wav", source)
        self.assert_done(decode("take.wav", cwd=self.folder))
        self.assert_decoded(self.folder / "take_Decode.WAV", source)

    def test_ending_is_added_to_a_chosen_name_without_it(self):
        take = self.write("take.wav", recording(STEREO24))
        cases = {"plain": "plain.WAV", "dotted.w": "dotted.w.WAV", "song.wave": "song.wave.WAV",
                 "xwav": "xwav.WAV", "kept.wav": "kept.wav", "kept.WAV": "kept.WAV",
                 "kept.wAv": "kept.wAv", "song.wav.txt": "song.wav.txt.WAV",
                 ".wav": ".wav.WAV", "wav": "wav.WAV", "a.wav": "a.wav"}
        for chosen, expected in cases.items():
            with self.subTest(chosen=chosen):
                before = self.names()
                self.assert_done(decode("--output", chosen, take, cwd=self.folder))
                self.assertEqual(self.names(), sorted([*before, expected]))

    def test_output_folder_takes_the_default_names(self):
        (self.folder / "mixes").mkdir()
        one, two = recording(pcm24(1000, 2000)), recording(pcm24(3000, 4000))
        takes = [self.write("one.wav", one), self.write("two.wav", two)]
        self.assert_done(decode("--output-dir", self.folder / "mixes", *takes))
        self.assertEqual(self.names(), ["mixes", "one.wav", "two.wav"])
        self.assert_decoded(self.folder / "mixes" / "one_Decode.WAV", one)
        self.assert_decoded(self.folder / "mixes" / "two_Decode.WAV", two)

    def test_names_that_are_not_utf_8(self):
        source = recording(STEREO24)
        take = self.write(b"t\xff ke\n.wav", source)
        bad = self.write(b"\xfe.wav", b"no recording")
        self.assert_failed(decode(take, bad), os.fsencode(bad) + b": File not supported.")
        self.assert_decoded(self.folder / os.fsdecode(b"t\xff ke\n_Decode.WAV"), source)

    def test_name_that_starts_with_a_dash(self):
        source = recording(STEREO24)
        self.write("--force", source)
        self.assert_done(decode("--", "--force", cwd=self.folder))
        self.assert_decoded(self.folder / "--force_Decode.WAV", source)

    def test_longest_name(self):
        take = self.write("take.wav", recording(STEREO24))
        for name, fits in (("n" * 251 + ".wav", True), ("n" * 251, True), ("n" * 252, False),
                           ("n" * 252 + ".wav", False)):
            with self.subTest(length=len(name)):
                result = decode("--output", self.folder / name, "--force", take)
                if fits:
                    self.assert_done(result)
                else:
                    self.assert_failed(result, f"{take}: Fail to save.")
        self.assertEqual(self.names(), ["n" * 251 + ".WAV", "n" * 251 + ".wav", "take.wav"])

    def test_source_name_too_long_for_the_default_name(self):
        take = self.write("n" * 251 + ".wav", recording(STEREO24))
        other = self.write("n" * 240 + ".wav", recording(STEREO24))
        self.assert_failed(decode(take, other), f"{take}: Fail to save.")
        self.assertIn("n" * 240 + "_Decode.WAV", self.names())


class Existing(DecodeTest):
    def test_existing_target_is_left_alone(self):
        take = self.write("take.wav", recording(STEREO24))
        target = self.write("take_Decode.WAV", b"precious")
        self.assert_failed(decode(take), f"{take}: File exists.")
        self.assertEqual(target.read_bytes(), b"precious")

    def test_existing_target_is_in_the_way_of_an_unsupported_source_too(self):
        take = self.write("take.wav", b"no recording")
        self.write("take_Decode.WAV", b"precious")
        self.assert_failed(decode(take), f"{take}: File exists.")

    def test_links_and_folders_are_in_the_way(self):
        take = self.write("take.wav", recording(STEREO24))
        os.symlink("nowhere", self.folder / "dangling.wav")
        os.symlink("round.wav", self.folder / "round.wav")
        (self.folder / "folder.wav").mkdir()
        for name in ("dangling.wav", "round.wav", "folder.wav"):
            with self.subTest(name=name):
                result = decode("--output", self.folder / name, take)
                self.assert_failed(result, f"{take}: File exists.")
        self.assertNotIn("nowhere", self.names())

    def test_ending_is_added_before_looking_for_the_target(self):
        take = self.write("take.wav", recording(STEREO24))
        target = self.write("song.WAV", b"precious")
        result = decode("--output", self.folder / "song", take)
        self.assert_failed(result, f"{take}: File exists.")
        self.assertEqual(target.read_bytes(), b"precious")

    def test_forced_target_is_rewritten_in_place(self):
        source = recording(STEREO24)
        take = self.write("take.wav", source)
        target = self.write("take_Decode.WAV", b"x" * 100000)
        before = target.stat().st_ino
        self.assert_done(decode("--force", take))
        self.assertEqual(target.stat().st_ino, before)
        self.assert_decoded(target, source)

    def test_forced_target_that_another_program_holds_open(self):
        source = recording(STEREO24)
        take = self.write("take.wav", source)
        target = self.write("take_Decode.WAV", b"x" * 100000)
        with open(target, "rb") as held:
            self.assert_done(decode("--force", take))
            self.assertEqual(held.read(), target.read_bytes())
        self.assert_decoded(target, source)

    def test_forced_target_is_written_through_a_link(self):
        source = recording(STEREO24)
        take = self.write("take.wav", source)
        os.symlink("elsewhere", self.folder / "take_Decode.WAV")
        self.assert_done(decode("--force", take))
        self.assert_decoded(self.folder / "elsewhere", source)

    def test_refused_source_leaves_a_forced_target_alone(self):
        take = self.write("take.wav", b"no recording")
        target = self.write("take_Decode.WAV", b"precious")
        self.assert_failed(decode("--force", take), f"{take}: File not supported.")
        self.assertEqual(target.read_bytes(), b"precious")

    def test_no_temporary_file_is_ever_in_the_folder(self):
        take = self.write("take.wav", recording(STEREO24 * 20000))
        self.write("again_Decode.WAV", b"older")
        again = self.write("again.wav", recording(STEREO24))
        watch = FolderWatch(self.folder)
        self.assert_done(decode("--force", take, again))
        self.assertEqual(watch.events(), [(CREATED, "take_Decode.WAV")])


class TargetIsSource(DecodeTest):
    def setUp(self):
        super().setUp()
        self.source = recording(STEREO24)
        self.take = self.write("take.wav", self.source)
        (self.folder / "deeper").mkdir()

    def assert_refused(self, target, take=None):
        take = take or self.take
        for options in ((), ("--force",)):
            with self.subTest(options=options):
                result = decode(*options, "--output", target, take, cwd=self.folder)
                self.assert_failed(result, f"{take}: Fail to open.")
                self.assert_bytes(self.take.read_bytes(), self.source)

    def test_same_path(self):
        self.assert_refused(self.take)

    def test_path_spelt_differently(self):
        for target in ("./take.wav", "deeper/../take.wav", "take.wav", ".//take.wav",
                       f"../{self.folder.name}/take.wav"):
            with self.subTest(target=target):
                self.assert_refused(target)

    def test_target_is_a_link_to_the_source(self):
        os.symlink("take.wav", self.folder / "link.wav")
        os.symlink("../link.wav", self.folder / "deeper" / "link.wav")
        self.assert_refused("link.wav")
        self.assert_refused("deeper/link.wav")

    def test_source_is_a_link_to_the_target(self):
        os.symlink("take.wav", self.folder / "link")
        self.assert_refused(self.take, "link")

    def test_folder_of_the_target_is_a_link(self):
        os.symlink(".", self.folder / "round")
        self.assert_refused("round/take.wav")

    def test_hard_link(self):
        os.link(self.take, self.folder / "hard.wav")
        self.assert_refused("hard.wav")

    def test_name_that_becomes_the_source_with_its_ending(self):
        self.take = self.write("take.WAV", self.source)
        self.assert_refused("take")

    def test_source_that_is_no_recording_either(self):
        self.source = b"no recording"
        self.take.write_bytes(self.source)
        self.assert_refused(self.take)

    def test_default_target_that_is_a_hard_link_of_its_source(self):
        os.link(self.take, self.folder / "take_Decode.WAV")
        result = decode("--force", self.take)
        self.assert_failed(result, f"{self.take}: Fail to open.")
        self.assert_bytes(self.take.read_bytes(), self.source)


class Failures(DecodeTest):
    def test_missing_output_folder(self):
        take = self.write("take.wav", recording(STEREO24))
        for options in (("--output-dir", self.folder / "missing"),
                        ("--output", self.folder / "missing" / "song.wav"),
                        ("--output-dir", take)):
            with self.subTest(options=options):
                self.assert_failed(decode(*options, take), f"{take}: Fail to save.")
        self.assertEqual(self.names(), ["take.wav"])

    def test_folder_without_write_permission(self):
        take = self.write("take.wav", recording(STEREO24))
        closed = self.folder / "closed"
        closed.mkdir()
        closed.chmod(0o555)
        result = decode("--output-dir", closed, take, preexec_fn=respect_permissions)
        self.assert_failed(result, f"{take}: Fail to save.")
        self.assertEqual(self.names(closed), [])

    def test_target_without_write_permission(self):
        take = self.write("take.wav", recording(STEREO24))
        target = self.write("take_Decode.WAV", b"precious")
        target.chmod(0o444)
        result = decode("--force", take, preexec_fn=respect_permissions)
        self.assert_failed(result, f"{take}: Fail to save.")
        self.assertEqual(target.read_bytes(), b"precious")

    def test_source_without_read_permission(self):
        take = self.write("take.wav", recording(STEREO24))
        take.chmod(0)
        result = decode(take, preexec_fn=respect_permissions)
        self.assert_failed(result, f"{take}: File not supported.")
        self.assertEqual(self.names(), ["take.wav"])

    def test_sources_that_are_no_regular_files(self):
        os.mkfifo(self.folder / "pipe.wav")
        (self.folder / "folder.wav").mkdir()
        os.symlink("nowhere", self.folder / "dangling.wav")
        names = [str(self.folder / name) for name in
                 ("pipe.wav", "folder.wav", "dangling.wav", "missing.wav")]
        (self.folder / "out").mkdir()
        for source in (*names, "/dev/null", "/dev/zero", ""):
            with self.subTest(source=source):
                result = decode("--output-dir", self.folder / "out", source)
                self.assert_failed(result, f"{source}: File not supported.")
        self.assertEqual(self.names(self.folder / "out"), [])

    def test_targets_that_are_no_regular_files(self):
        take = self.write("take.wav", recording(STEREO24))
        os.mkfifo(self.folder / "pipe.wav")
        (self.folder / "folder.wav").mkdir()
        os.symlink("/dev/null", self.folder / "null.wav")
        os.symlink("/dev/full", self.folder / "full.wav")
        for name in ("pipe.wav", "folder.wav", "null.wav", "full.wav"):
            with self.subTest(name=name):
                result = decode("--force", "--output", self.folder / name, take)
                self.assert_failed(result, f"{take}: Fail to save.")

    def test_pipe_that_someone_reads_gets_nothing(self):
        take = self.write("take.wav", recording(STEREO24))
        pipe = self.folder / "pipe.wav"
        os.mkfifo(pipe)
        reader = os.open(pipe, os.O_RDONLY | os.O_NONBLOCK)
        self.addCleanup(os.close, reader)
        result = decode("--force", "--output", pipe, take)
        self.assert_failed(result, f"{take}: Fail to save.")
        self.assertEqual(os.read(reader, 100), b"")

    def test_each_failure_has_its_line_and_the_other_files_are_done(self):
        source = recording(STEREO24)
        first = self.write("first.wav", source)
        bad = self.write("bad.wav", b"no recording")
        blocked = self.write("blocked.wav", source)
        self.write("blocked_Decode.WAV", b"precious")
        long = self.write("n" * 251 + ".wav", source)
        last = self.write("last.wav", source)
        result = decode(first, bad, blocked, "missing.wav", long, last, cwd=self.folder)
        self.assert_failed(result, f"{bad}: File not supported.", f"{blocked}: File exists.",
                           "missing.wav: File not supported.", f"{long}: Fail to save.")
        self.assert_decoded(self.folder / "first_Decode.WAV", source)
        self.assert_decoded(self.folder / "last_Decode.WAV", source)

    def test_source_is_named_as_it_was_given(self):
        self.write("deeper/bad.wav", riff())
        for spelling in ("deeper/bad.wav", "./deeper//bad.wav", "deeper/../deeper/bad.wav"):
            with self.subTest(spelling=spelling):
                result = decode(spelling, cwd=self.folder)
                self.assert_failed(result, f"{spelling}: File not supported.")

    def test_done_files_are_named_on_standard_output(self):
        source = recording(STEREO24)
        self.write("one.wav", source)
        self.write("two.wav", source)
        result = decode("one.wav", "two.wav", cwd=self.folder)
        self.assert_done(result)
        self.assertEqual(result.stdout, b"one.wav -> one_Decode.WAV\ntwo.wav -> two_Decode.WAV\n")


if __name__ == "__main__":
    unittest.main()
