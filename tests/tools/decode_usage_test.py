"""Command lines of h8-decode that are wrong, and what it says about itself."""

import os
import re
import unittest
from pathlib import Path

from support import DecodeTest, STEREO24, decode, recording


class WrongUsage(DecodeTest):
    def setUp(self):
        super().setUp()
        self.take = self.write("take.wav", recording(STEREO24))
        self.other = self.write("other.wav", recording(STEREO24))

    def assert_wrong(self, *arguments):
        with self.subTest(arguments=arguments):
            self.assert_wrong_usage(decode(*arguments, cwd=self.folder))
            self.assertEqual(self.names(), ["other.wav", "take.wav"])

    def test_angle_out_of_range(self):
        for angle in ("-1", "-0.001", "150.001", "151", "1e9"):
            self.assert_wrong(f"--angle={angle}", self.take)
            self.assert_wrong("--angle", angle, self.take)

    def test_gain_out_of_range(self):
        for gain in ("-36.001", "36.001", "-37", "100", "1e400", "-1e400"):
            self.assert_wrong(f"--gain={gain}", self.take)
            self.assert_wrong("--gain", gain, self.take)

    def test_values_that_are_no_numbers(self):
        for text in ("nan", "-nan", "inf", "-inf", "infinity", "0x10", "", " ", "3 ", " 3", "3dB",
                     "3,5", "1e", "--3", "+-3", "++3", "three", "3\n", "."):
            self.assert_wrong(f"--angle={text}", self.take)
            self.assert_wrong(f"--gain={text}", self.take)

    def test_other_formats(self):
        for text in ("16", "32", "32F", "24f", "", "float", " 24", "024"):
            self.assert_wrong(f"--format={text}", self.take)

    def test_jobs_that_are_no_count(self):
        for text in ("0", "-1", "x", "1.5", "", "0x2", "2 ", "99999999999999999999", "+-1"):
            self.assert_wrong(f"--jobs={text}", self.take)

    def test_options_without_their_value(self):
        for option in ("--angle", "--gain", "--format", "--jobs", "--output", "--output-dir"):
            self.assert_wrong(self.take, option)

    def test_flags_with_a_value(self):
        for flag in ("--normalize", "--force", "--info"):
            self.assert_wrong(f"{flag}=surely", self.take)

    def test_one_output_for_several_files(self):
        self.assert_wrong("--output", "song.wav", self.take, self.other)

    def test_one_output_for_one_file_given_twice(self):
        self.assert_wrong("--output", "song.wav", self.take, self.take)

    # Nothing behind the sign is an empty value; the file that follows is a source and no target.
    def test_empty_value_behind_an_equals_sign(self):
        before = self.take.read_bytes()
        for option in ("--output=", "--output-dir=", "--angle=", "--gain=", "--format=", "--jobs="):
            with self.subTest(option=option):
                self.assert_wrong("--force", option, self.take, self.other)
        self.assertEqual(self.take.read_bytes(), before)

    def test_empty_output_folder(self):
        self.assert_wrong("--output-dir", "", self.take)

    def test_output_that_names_no_file(self):
        (self.folder / "mixes").mkdir()
        for output in ("", "mixes/", "missing/", "/", "./", "mixes//"):
            for options in (("--output", output), ("--output", output, "--force")):
                with self.subTest(options=options):
                    self.assert_wrong_usage(decode(*options, self.take, cwd=self.folder))
        self.assertEqual(self.names(), ["mixes", "other.wav", "take.wav"])
        self.assertEqual(self.names(self.folder / "mixes"), [])

    def test_output_and_output_folder(self):
        self.assert_wrong("--output", "song.wav", "--output-dir", ".", self.take)

    def test_no_file(self):
        for arguments in ((), ("--force",), ("--info",), ("--angle", "90"), ("--",)):
            self.assert_wrong(*arguments)

    def test_unknown_options(self):
        for option in ("--unknown", "-x", "--forced", "--ang=90", "-a"):
            self.assert_wrong(option, self.take)

    def test_information_together_with_a_decode_option(self):
        for options in (("--angle", "90"), ("--gain", "3"), ("--normalize",), ("--force",),
                        ("--format", "24"), ("--output", "song.wav"), ("--output-dir", "."),
                        ("--jobs", "2")):
            self.assert_wrong("--info", *options, self.take)

    def test_one_wrong_option_stops_all_files(self):
        self.assert_wrong(self.take, "--angle", "90", "--gain", "40", self.other)


class RightUsage(DecodeTest):
    def test_ends_of_the_ranges(self):
        take = self.write("take.wav", recording(STEREO24))
        for options in (("--angle", "0"), ("--angle", "150"), ("--gain", "36"), ("--gain", "-36"),
                        ("--angle", "-0"), ("--angle", "+90"), ("--jobs", "1"), ("--jobs", "+3"),
                        ("--angle", ".5"), ("--gain", "-3.")):
            with self.subTest(options=options):
                self.assert_done(decode("--force", *options, take))

    def test_options_may_stand_behind_the_files(self):
        source = recording(STEREO24)
        take = self.write("take.wav", source)
        self.assert_done(decode(take, "--angle", "90"))
        self.assert_decoded(self.folder / "take_Decode.WAV", source, angle=90)


class Help(DecodeTest):
    OPTIONS = {"--help", "--version", "--info", "--angle", "--gain", "--normalize", "--format",
               "--output", "--output-dir", "--force", "--jobs"}

    def listed(self):
        result = decode("--help")
        self.assert_done(result)
        return result.stdout.decode()

    def test_help_lists_every_option_and_shows_examples(self):
        text = self.listed()
        self.assertEqual(set(re.findall(r"^  +(?:-\w, *)?(--[a-z-]+)", text, re.MULTILINE)),
                         self.OPTIONS)
        self.assertRegex(text, r"(?s)Examples.*h8-decode .*take\.wav")

    def test_help_wins_over_a_missing_file(self):
        result = decode("--help", "--angle", "90")
        self.assertEqual((result.returncode, result.stdout.decode()), (0, self.listed()))

    def test_version(self):
        result = decode("--version")
        self.assert_done(result)
        self.assertRegex(result.stdout, rb"\Ah8-decode \d+\.\d+\.\d+\n\Z")

    def test_manual_describes_every_option(self):
        page = Path(os.environ["H8_SOURCE_DIR"], "docs", "man", "h8-decode.1").read_text("utf-8")
        described = {f"-{name}" for name in re.findall(r"^\.It Fl (-[a-z-]+)", page, re.MULTILINE)}
        self.assertEqual(self.OPTIONS - described, set())


if __name__ == "__main__":
    unittest.main()
