"""Damaged and hostile files: each is refused, or decoded exactly as the rules would have it."""

import random
import struct
import tempfile
import unittest
from pathlib import Path

from reference import expected_output
from support import (DecodeTest, STEREO24, bext, chunk, data, decode, floats, fmt, junk, pcm16,
                     recording, riff)

HISTORY = b"MSRAW=ON"
WORDS = (0, 1, 2, 3, 7, 8, 12, 15, 16, 17, 20, 24, 31, 32, 33, 40, 64, 255, 256, 32767, 32768,
         65535)
LONG_WORDS = (0, 1, 2, 3, 7, 8, 9, 15, 16, 17, 600, 601, 602, 603, 0x7FFFFFF7, 0x7FFFFFFF,
              0x80000000, 0xFFFFFFF0, 0xFFFFFFF7, 0xFFFFFFF8, 0xFFFFFFF9, 0xFFFFFFFE, 0xFFFFFFFF)


def usual():
    return riff(junk(4), bext(history=HISTORY), fmt(), data(STEREO24))


def format_last():
    return riff(data(STEREO24), bext(history=HISTORY), fmt())


class BadInputTest(DecodeTest):
    def assert_all(self, files, options=(), **settings):
        """Decodes all of the files in one run; returns how many of them were refused."""
        out = Path(tempfile.mkdtemp(dir=self.folder))
        names = [f"{k}.wav" for k in range(len(files))]
        for name, file in zip(names, files):
            self.write(name, file)
        result = decode("--output-dir", out, *options, *names, cwd=self.folder)
        self.assertIn(result.returncode, (0, 1), result.stderr[-2000:])
        refused = []
        for name, file in zip(names, files):
            with self.subTest(name=name, start=file[:16], length=len(file)):
                target = out / name.replace(".wav", "_Decode.WAV")
                if expected_output(file, bytes(18), **settings) is None:
                    refused.append(f"{name}: File not supported.\n")
                    self.assertFalse(target.exists())
                else:
                    self.assert_decoded(target, file, **settings)
                self.assert_bytes((self.folder / name).read_bytes(), file)
        self.assertEqual(result.stderr.decode(), "".join(refused))
        return len(refused)


class Truncation(BadInputTest):
    """A file may end at any byte; what it declares stays as it was."""

    def test_usual_file(self):
        whole = usual()
        refused = self.assert_all([whole[:length] for length in range(len(whole) + 1)])
        # It stands or falls with the header of the data chunk: all of its samples may be missing.
        self.assertEqual(refused, len(whole) - len(STEREO24))

    def test_format_as_the_last_chunk(self):
        """From the header of the last chunk on, missing bytes of the format read as zero."""
        whole = format_last()
        refused = self.assert_all([whole[:length] for length in range(len(whole) + 1)])
        self.assertEqual(refused, len(whole) - 16)

    def test_three_channels_reach_beyond_the_end(self):
        whole = riff(bext(history=HISTORY), fmt(channels=3), data(STEREO24))
        self.assert_all([whole[:length] for length in range(len(whole) - 31, len(whole) + 1)])

    def test_sixteen_bits_and_floats(self):
        for audio, fields in ((pcm16(*range(-20000, 20000, 4000)), {"bits": 16}),
                              (floats(0.5, -0.25, 1.5, 1e-40), {"tag": 3, "bits": 32})):
            with self.subTest(**fields):
                whole = recording(audio, **fields)
                files = [whole[:len(whole) - cut] for cut in range(len(audio) + 1)]
                self.assertEqual(self.assert_all(files), 0)


class Extremes(BadInputTest):
    """Every field of the headers at its extremes, alone."""

    def with_field(self, whole, marker, offset, form, values):
        at = whole.index(marker) + offset
        return [whole[:at] + struct.pack(form, value) + whole[at + struct.calcsize(form):]
                for value in values]

    def test_sizes(self):
        files = []
        for whole in (usual(), format_last()):
            for marker in (b"RIFF", b"bext", b"fmt ", b"data"):
                files += self.with_field(whole, marker, 4, "<I", LONG_WORDS)
        files += self.with_field(usual(), b"JUNK", 4, "<I", LONG_WORDS)
        refused = self.assert_all(files)
        self.assertTrue(0 < refused < len(files))

    def test_format_fields(self):
        files = []
        for whole in (usual(), format_last(), recording(STEREO24, raw=False, tag=3, bits=32)):
            for offset in (8, 10, 20, 22):
                files += self.with_field(whole, b"fmt ", offset, "<H", WORDS)
            for offset in (12, 16):
                files += self.with_field(whole, b"fmt ", offset, "<I", LONG_WORDS)
        self.assertEqual(self.assert_all(files, ("--angle", "70", "--gain", "3"),
                                         angle=70, gain=3.0), 0)

    def test_every_depth_with_every_number_of_channels(self):
        files = [recording(STEREO24, bits=bits, channels=channels)
                 for bits in range(0, 72) for channels in range(0, 8)]
        self.assertEqual(self.assert_all(files, ("--normalize",), normalize=True), 0)

    def test_bext_of_every_length_that_matters(self):
        body = bext(description=b"d" * 256, reference=b"r" * 32, umid=b"u" * 64,
                    history=b"MSRAW=ON")[8:]
        lengths = (0, 1, 255, 256, 257, 262, 263, 264, 287, 288, 289, 319, 320, 347, 348, 411, 412,
                   601, 602, 603, 609, 610)
        files = [riff(chunk(b"bext", body[:length]), fmt(), data(STEREO24)) for length in lengths]
        # The originator has its seven letters from the 263rd byte on.
        self.assertEqual(self.assert_all(files), 6)

    def test_bext_that_runs_past_the_end(self):
        whole = bext(history=HISTORY)
        files = [riff(fmt(), data(STEREO24), whole[:-cut or None]) for cut in (0, 1, 8, 300, 610)]
        self.assertEqual(self.assert_all(files), 4)

    def test_chunks_given_twice(self):
        parts = [junk(3), bext(history=HISTORY), fmt(), data(STEREO24)]
        again = [bext(history=b"MSRAW=OFF", description=b"again"), fmt(bits=16), data(b"\x11" * 40)]
        files = [riff(*parts[:k], extra, *parts[k:]) for extra in again for k in range(5)]
        self.assertEqual(self.assert_all(files), 0)


class Damage(BadInputTest):
    """Files with several random faults at once, always the same ones."""

    def damaged(self, dice):
        parts = [junk(dice.randrange(9)), bext(history=dice.choice((HISTORY, b"MSRAW=OFF", b""))),
                 fmt(bits=dice.choice((8, 16, 24, 32)), channels=dice.choice((1, 2, 2, 3)),
                     tag=dice.choice((1, 3))), data(STEREO24)]
        if dice.random() < 0.3:
            dice.shuffle(parts)
        file = bytearray(riff(*parts))
        headers = [k for k in range(len(file)) if not 60 < k < 650] or [0]
        for _ in range(dice.randrange(4)):
            at = dice.choice(headers) % len(file)
            kind = dice.randrange(5)
            if kind == 0:
                file[at] = dice.randrange(256)
            elif kind == 1:
                file[at:at + 4] = struct.pack("<I", dice.choice(LONG_WORDS))
            elif kind == 2:
                del file[at:at + dice.randrange(1, 9)]
            elif kind == 3:
                file[at:at] = dice.randbytes(dice.randrange(1, 9))
            elif len(file) > 100:
                del file[-dice.randrange(1, 60):]
        return bytes(file)

    def test_random_damage(self):
        dice = random.Random(20260501)
        files = [self.damaged(dice) for _ in range(1500)]
        refused = self.assert_all(files, ("--angle", "95.5"), angle=95.5)
        self.assertTrue(300 < refused < 1200, refused)


if __name__ == "__main__":
    unittest.main()
