"""h8-sample: recordings as the device lays them out, with sound that shows the width."""

import json
import os
import re
import struct
import unittest

from reference import Recording, decoded_samples, side_level
from support import DecodeTest, decode, sample

WIDTHS = {"16": 2, "24": 3, "32f": 4}


class SampleTest(DecodeTest):
    def made(self, *options, name="take.wav"):
        """The bytes of a recording made with the given options."""
        path = self.folder / name
        self.assert_done(sample("--force", *options, path))
        return path.read_bytes()


class Headers(SampleTest):
    def assert_header(self, file, format_name, rate, frames, raw):
        """The whole header, spelt out."""
        width = WIDTHS[format_name]
        history = b"A=PCM,F=%d,W=%d,M=stereo,T=H8;VERSION=1.00;MSRAW=%s;" % (
            rate, 8 * width, b"ON" if raw else b"OFF")
        history += bytes(len(history) % 2)
        audio = frames * 2 * width
        format_at = 56 + 602 + len(history)
        self.assertEqual(file[0:20], b"RIFF" + struct.pack("<I", len(file) - 8) + b"WAVE"
                         + b"JUNK" + struct.pack("<I", 28))
        self.assertEqual(file[20:48], bytes(28))
        self.assertEqual(file[48:56], b"bext" + struct.pack("<I", 602 + len(history)))
        self.assertEqual(file[312:344], b"ORLO H8".ljust(32, b"\0"))
        self.assertRegex(file[376:394], rb"\A\d{4}-\d\d-\d\d\d\d:\d\d:\d\d\Z")
        self.assertEqual(file[658:format_at], history)
        self.assertEqual(file[format_at:format_at + 32], b"fmt " + struct.pack(
            "<IHHIIHH", 16, 3 if format_name == "32f" else 1, 2, rate,
            2 * width * rate % 2 ** 32, 2 * width, 8 * width)
            + b"data" + struct.pack("<I", audio))
        self.assertEqual(len(file), format_at + 32 + audio)

    def test_formats_raw_and_plain(self):
        for format_name in WIDTHS:
            for layout in ((), ("--plain",)):
                with self.subTest(format=format_name, layout=layout):
                    file = self.made("--format", format_name, "--seconds", 0.01, *layout)
                    self.assert_header(file, format_name, 48000, 480, raw=not layout)

    def test_rates(self):
        for rate in (1, 7999, 8000, 44100, 48000, 96000, 192000, 4294967295):
            with self.subTest(rate=rate):
                frames = min(3 * rate, 300)
                file = self.made("--rate", rate, "--seconds", f"{frames / rate:.17f}")
                self.assert_header(file, "24", rate, frames, raw=True)

    def test_lengths(self):
        for seconds, rate, frames in (("0", 48000, 0), ("3", 1, 3), ("0.5", 11, 6), ("0.1", 30, 3),
                                      ("0.0000208", 48000, 1), ("1", 8001, 8001)):
            with self.subTest(seconds=seconds, rate=rate):
                file = self.made("--rate", rate, "--seconds", seconds)
                self.assert_header(file, "24", rate, frames, raw=True)

    def test_ten_seconds_of_raw_24_bits_by_default(self):
        self.assert_header(self.made(), "24", 48000, 480000, raw=True)

    def test_decoder_supports_what_is_made(self):
        raw_of = {}
        for format_name in WIDTHS:
            for rate in (8000, 44100, 48000, 96000, 192000):
                for layout in ((), ("--plain",)):
                    path = self.folder / f"{len(raw_of)}.wav"
                    self.assert_done(sample("--format", format_name, "--rate", rate, *layout,
                                            "--seconds", 0.01, path))
                    raw_of[path] = not layout
        result = decode("--info", *raw_of)
        self.assert_done(result)
        infos = [json.loads(line) for line in result.stdout.splitlines()]
        self.assertEqual([info["raw_ms"] for info in infos], list(raw_of.values()))
        self.assertEqual({(info["supported"], info["duration"]) for info in infos}, {(True, 0.01)})

    def test_same_arguments_make_the_same_bytes(self):
        options = ("--seconds", "0.3", "--rate", "44100", "--format", "32f")
        self.assertEqual(self.made(*options), self.made(*options, name="other.wav"))

    def test_longer_recording_begins_like_a_shorter_one(self):
        short = Recording(self.made("--seconds", 0.1)).samples()
        self.assertEqual(Recording(self.made("--seconds", 0.2)).samples()[:len(short)], short)


class Sound(SampleTest):
    """One period of the movement, four seconds, at a rate that is quick to look through."""

    RATE = 8000

    def sides(self, angle):
        """Peaks of left and right while the voice is far on the one side, and then on the other."""
        source = Recording(self.made("--rate", self.RATE, "--seconds", 4))
        samples = decoded_samples(source, angle)
        second = 2 * self.RATE
        parts = (samples[second // 2:3 * second // 2], samples[5 * second // 2:7 * second // 2])
        return [(max(map(abs, part[0::2])), max(map(abs, part[1::2]))) for part in parts]

    def test_angle_0_gives_the_same_on_both_sides(self):
        samples = decoded_samples(Recording(self.made("--rate", self.RATE, "--seconds", 4)), 0)
        self.assertEqual(samples[0::2], samples[1::2])
        self.assertGreater(max(samples), 0.05)

    def test_voice_swings_from_side_to_side_at_angle_120(self):
        (left1, right1), (left2, right2) = self.sides(120)
        self.assertGreater(left1, 2 * right1)
        self.assertGreater(right2, 2 * left2)

    def test_swing_grows_with_the_angle(self):
        swings = [left / right for (left, right), _ in map(self.sides, (15, 70, 120))]
        self.assertEqual(swings, sorted(swings))
        self.assertLess(swings[0], 1.3)

    def test_nothing_clips_at_the_widest_angle(self):
        self.assertLess(max(max(pair) for pair in self.sides(150)), 1.0)

    def test_plain_recording_is_the_raw_one_decoded(self):
        """To within the rounding of mid, side and their sum to 24 bits."""
        options = ("--rate", self.RATE, "--seconds", 1)
        raw = decoded_samples(Recording(self.made(*options)), 120)
        plain = Recording(self.made("--plain", *options)).samples()
        self.assertEqual(side_level(120), 1.0)
        self.assertLessEqual(max(abs(a - b) for a, b in zip(raw, plain)), 1.5 / 2 ** 23)
        self.assertEqual(len(raw), len(plain))

    def test_formats_hold_the_same_sound(self):
        options = ("--rate", self.RATE, "--seconds", 1)
        exact = Recording(self.made("--format", "32f", *options)).samples()
        for format_name, scale in (("16", 2 ** 15), ("24", 2 ** 23)):
            with self.subTest(format=format_name):
                file = self.made("--format", format_name, *options)
                width = WIDTHS[format_name]
                audio = file[Recording(file).data_position:]
                steps = [int.from_bytes(audio[k:k + width], "little", signed=True)
                         for k in range(0, len(audio), width)]
                self.assertEqual(len(steps), len(exact))
                self.assertLessEqual(max(abs(step - value * scale)
                                         for step, value in zip(steps, exact)), 0.51)

    def test_sound_repeats_after_8_seconds(self):
        samples = Recording(self.made("--rate", 1000, "--seconds", 17)).samples()
        self.assertEqual(samples[16000:32000], samples[:16000])
        self.assertEqual(samples[32000:], samples[:2000])


class Files(SampleTest):
    def test_existing_file_is_left_alone_without_force(self):
        path = self.write("take.wav", b"precious")
        os.symlink("nowhere", self.folder / "dangling.wav")
        for target in (path, self.folder / "dangling.wav"):
            self.assert_failed(sample("--seconds", 0, target), f"{target}: File exists.")
        self.assertEqual(path.read_bytes(), b"precious")
        self.assertEqual(self.names(), ["dangling.wav", "take.wav"])

    def test_existing_larger_file_is_rewritten_with_force(self):
        path = self.write("take.wav", b"x" * 100000)
        self.assert_done(sample("--force", "--seconds", 0, path))
        self.assertTrue(Recording(path.read_bytes()).is_supported)
        self.assertLess(path.stat().st_size, 1000)

    def test_missing_folder(self):
        path = self.folder / "missing" / "take.wav"
        self.assert_failed(sample("--seconds", 0, path), f"{path}: Fail to save.")

    def test_full_device(self):
        self.assert_failed(sample("--force", "--seconds", 0, "/dev/full"),
                           "/dev/full: Fail to save.")

    def test_name_is_taken_as_it_is(self):
        self.assert_done(sample("--seconds", 0, "--", "-odd name", cwd=self.folder))
        self.assertEqual(self.names(), ["-odd name"])


class Usage(SampleTest):
    def assert_wrong(self, *arguments):
        with self.subTest(arguments=arguments):
            self.assert_wrong_usage(sample(*arguments, cwd=self.folder))
            self.assertEqual(self.names(), [])

    def test_wrong_values(self):
        for options in (("--rate=0",), ("--rate=-1",), ("--rate=4294967296",), ("--rate=x",),
                        ("--rate=44100.5",), ("--rate=",), ("--seconds=-1",), ("--seconds=nan",),
                        ("--seconds=inf",), ("--seconds=x",), ("--seconds=",), ("--format=32",),
                        ("--format=8",), ("--format=",), ("--unknown",)):
            self.assert_wrong(*options, "take.wav")

    def test_recordings_that_do_not_fit_into_a_wave_file(self):
        self.assert_wrong("--seconds", "20000", "take.wav")
        self.assert_wrong("--rate", "4294967295", "--seconds", "1", "take.wav")
        self.assert_wrong("--rate", "4294967295", "--seconds", "1e9", "take.wav")

    def test_no_file_or_two(self):
        self.assert_wrong()
        self.assert_wrong("--plain")
        self.assert_wrong("one.wav", "two.wav")

    def test_help_lists_every_option(self):
        result = sample("--help")
        self.assert_done(result)
        listed = re.findall(r"^  +(?:-\w, *)?(--[a-z-]+)", result.stdout.decode(), re.MULTILINE)
        self.assertEqual(set(listed), {"--help", "--version", "--plain", "--format", "--rate",
                                       "--seconds", "--force"})

    def test_version(self):
        result = sample("--version")
        self.assert_done(result)
        self.assertRegex(result.stdout, rb"\Ah8-sample \d+\.\d+\.\d+\n\Z")


if __name__ == "__main__":
    unittest.main()
