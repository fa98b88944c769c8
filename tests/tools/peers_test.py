"""What other programs make of the exported files, and of the recordings themselves."""

import json
import math
import os
import subprocess
import unittest
from array import array

from reference import Recording, side_level
from support import PATIENCE, DecodeTest, decode, recording, sample

TEXTS = {"description": b"Song of the reed", "originator": b"ORLO H8 V1", "reference": b"REF0001"}
FRAMES = 4801


def asked(*command):
    """What a program prints; it must not fail."""
    result = subprocess.run([*map(str, command)], check=True, timeout=PATIENCE,
                            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                            stderr=subprocess.STDOUT, env={**os.environ, "LC_ALL": "C"})
    return result.stdout.decode()


class Opening(DecodeTest):
    """Each program opens a 24-bit and a float file of a rate and length that are no defaults."""

    RATE = 44100

    def setUp(self):
        super().setUp()
        values = [round(2 ** 20 * math.sin(k / 10)) & 0xFFFFFF for k in range(2 * FRAMES)]
        audio = b"".join(value.to_bytes(3, "little") for value in values)
        take = self.write("take.wav", recording(audio, texts=TEXTS, rate=self.RATE))
        self.files = {}
        for bits, name in ((24, "24"), (32, "32f")):
            self.files[bits] = self.folder / f"{name}.wav"
            self.assert_done(decode("--format", name, "--output", self.files[bits], take))

    def stamp(self, bits):
        stamp = self.files[bits].read_bytes()[376:394].decode()
        return stamp[:10], stamp[10:]

    def history(self, bits):
        return f"A=PCM,F=48000,W={bits},M=stereo,T=H8;VERSION=1.00;MSRAW=OFF;"

    def test_sox(self):
        encodings = {24: "24-bit Signed Integer PCM", 32: "32-bit Floating Point PCM"}
        for bits, file in self.files.items():
            with self.subTest(bits=bits):
                shown = [asked("soxi", option, file).strip() for option in ("-c", "-r", "-s")]
                self.assertEqual(shown, ["2", str(self.RATE), str(FRAMES)])
                everything = asked("soxi", file)
                self.assertIn(f"Sample Encoding: {encodings[bits]}", everything)
                self.assertNotIn("WARN", everything)

    def test_ffprobe(self):
        for bits, file in self.files.items():
            with self.subTest(bits=bits):
                shown = json.loads(asked("ffprobe", "-v", "warning", "-show_format",
                                         "-show_streams", "-of", "json", file))
                stream, = shown["streams"]
                self.assertEqual(
                    (stream["codec_name"], stream["channels"], stream["sample_rate"],
                     stream["bits_per_sample"], stream["duration_ts"]),
                    ({24: "pcm_s24le", 32: "pcm_f32le"}[bits], 2, str(self.RATE), bits, FRAMES))
                date, time = self.stamp(bits)
                self.assertEqual(shown["format"]["tags"], {
                    "comment": "Song of the reed", "encoded_by": "ORLO H8 V1",
                    "originator_reference": "REF0001", "date": date, "creation_time": time,
                    "time_reference": "0", "coding_history": self.history(bits)})

    def test_sndfile_info(self):
        formats = {24: ("0x1 => WAVE_FORMAT_PCM", 6), 32: ("0x3 => WAVE_FORMAT_IEEE_FLOAT", 8)}
        for bits, file in self.files.items():
            with self.subTest(bits=bits):
                shown = asked("sndfile-info", file)
                fields = dict(map(str.strip, line.split(":", 1))
                              for line in shown.splitlines() if ":" in line)
                name, align = formats[bits]
                expected = {"Format": name, "Channels": "2", "Sample Rate": str(self.RATE),
                            "Frames": str(FRAMES), "Block Align": str(align),
                            "Bytes/sec": str(align * self.RATE), "Bit Width": str(bits),
                            "JUNK": "28", "bext": "658", "fmt": "18",
                            "data": str(align * FRAMES), "RIFF": str(740 + align * FRAMES)}
                # The library's own number of the format comes last under this key.
                expected["Format"] = {24: "0x00010003", 32: "0x00010006"}[bits]
                self.assertIn(f": {name}\n", shown)
                self.assertEqual({key: fields.get(key) for key in expected}, expected)

    def test_sndfile_info_reads_the_broadcast_fields(self):
        for bits, file in self.files.items():
            with self.subTest(bits=bits):
                shown = asked("sndfile-info", "--broadcast", file)
                fields = dict(map(str.strip, line.split(":", 1))
                              for line in shown.splitlines() if ":" in line)
                date, time = self.stamp(bits)
                expected = {"Description": "Song of the reed", "Originator": "ORLO H8 V1",
                            "Origination ref": "REF0001", "Origination date": date,
                            "Origination time": time}
                self.assertEqual({key: fields.get(key) for key in expected}, expected)
                self.assertIn(self.history(bits), shown)

    def test_mediainfo(self):
        for bits, file in self.files.items():
            with self.subTest(bits=bits):
                shown = json.loads(asked("mediainfo", "--Output=JSON", file))
                general, audio = shown["media"]["track"]
                self.assertEqual(
                    [audio.get(key) for key in ("Format", "Format_Profile", "Channels",
                                                "SamplingRate", "SamplingCount", "BitDepth")],
                    ["PCM", {24: None, 32: "Float"}[bits], "2", str(self.RATE), str(FRAMES),
                     str(bits)])
                self.assertEqual(
                    [general.get(key) for key in ("Format", "Description", "Producer",
                                                  "Encoded_Date", "Encoded_Library_Settings")],
                    ["Wave", "Song of the reed", "ORLO H8 V1", " ".join(self.stamp(bits)),
                     self.history(bits)])
                self.assertEqual((general["extra"]["bext_Version"],
                                  general["extra"]["Producer_Reference"]), ("1", "REF0001"))


class Decoding(DecodeTest):
    """The same mid/side decode and gain by others, to within one 24-bit step in every sample.

    They round to the nearest of 2^23 steps a side, we toward zero of one step less: to differ by
    one at most, the samples must stay well below full scale.
    """

    # Angle, gain in dB.
    SETTINGS = ((120, 0), (120, -6), (70, 0), (70, -3.5), (150, -9))

    def setUp(self):
        super().setUp()
        self.take = self.folder / "take.wav"
        self.assert_done(sample("--seconds", 2, self.take))

    def ours(self, angle, gain):
        target = self.folder / "ours.wav"
        self.assert_done(decode("--force", "--angle", angle, "--gain", gain, "--output", target,
                                self.take))
        output = Recording(target.read_bytes())
        self.assertEqual(output.frame_count, 96000)
        return [round(value * 2 ** 23) for value in output.samples()]

    def assert_within_one_step(self, theirs, ours):
        self.assertEqual(len(theirs), len(ours))
        self.assertGreater(max(ours), 2 ** 20)
        self.assertLess(max(map(abs, ours)), 2 ** 22)
        self.assertLessEqual(max(abs(a - b) for a, b in zip(theirs, ours)), 1)

    def test_ffmpeg(self):
        for angle, gain in self.SETTINGS:
            with self.subTest(angle=angle, gain=gain):
                side = f"{side_level(angle):.9g}"
                # The filters work in doubles; the last step to 24 bits is taken here, since its own
                # conversion rounds down rather than to the nearest.
                filters = (f"aformat=sample_fmts=dbl,pan=stereo|c0=c0+{side}*c1|c1=c0-{side}*c1,"
                           f"volume={gain}dB:precision=double")
                raw = self.folder / "theirs.f64"
                asked("ffmpeg", "-v", "error", "-y", "-i", self.take, "-af", filters,
                      "-c:a", "pcm_f64le", "-f", "f64le", raw)
                values = array("d", raw.read_bytes())
                self.assert_within_one_step([round(value * 2 ** 23) for value in values],
                                            self.ours(angle, gain))

    def test_sox(self):
        for angle, gain in self.SETTINGS:
            with self.subTest(angle=angle, gain=gain):
                side = f"{side_level(angle):.9g}"
                raw = self.folder / "theirs.s24"
                asked("sox", "-D", self.take, "-t", "s24", raw, "remix",
                      f"1v1,2v{side}", f"1v1,2v-{side}", "gain", gain)
                audio = raw.read_bytes()
                steps = [int.from_bytes(audio[k:k + 3], "little", signed=True)
                         for k in range(0, len(audio), 3)]
                self.assert_within_one_step(steps, self.ours(angle, gain))


if __name__ == "__main__":
    unittest.main()
