"""h8-decode --info: what it says about recordings and about files that are none."""

import json
import os
import unittest

from support import (DecodeTest, PLAIN_HISTORY, RAW_HISTORY, STEREO24, bext, bext_body, chunk, data,
                     decode, floats, fmt, junk, pcm24, recording, riff)

KEYS = ["file", "valid", "supported", "raw_ms", "audio_format", "channels", "sample_rate",
        "bits_per_sample", "block_align", "byte_rate", "data_position", "data_length", "frames",
        "duration", "chunks", "bext"]
BEXT_KEYS = ["description", "originator", "originator_reference", "origination_date",
             "origination_time", "time_reference", "version", "umid", "coding_history"]


class InfoTest(DecodeTest):
    def objects(self, *names, status=0):
        """The JSON objects for the named files, which stand in the test's folder."""
        result = decode("--info", "--", *names, cwd=self.folder)
        self.assertEqual((result.returncode, result.stderr), (status, b""))
        lines = result.stdout.split(b"\n")
        self.assertEqual(lines.pop(), b"")
        self.assertEqual(len(lines), len(names))
        for line in lines:
            self.assertFalse(any(byte < 0x20 or byte == 0x7F for byte in line), line)
        return [json.loads(line.decode("utf-8")) for line in lines]

    def info(self, contents, status=0):
        self.write("take.wav", contents)
        return self.objects("take.wav", status=status)[0]


class GoodRecordings(InfoTest):
    def test_every_key_and_value_in_order(self):
        umid = bytes(range(1, 65))
        info = self.info(riff(junk(), bext(
            description=b"Song of the reed", originator=b"ORLO H8 V1", reference=b"REF1",
            date=b"2026-05-17", time=b"18:30:59", time_reference=5000000000, version=2,
            umid=umid, history=RAW_HISTORY + b";"), fmt(rate=96000), data(STEREO24)))
        self.assertEqual(list(info), KEYS)
        self.assertEqual(list(info["bext"]), BEXT_KEYS)
        # RIFF and WAVE 12, JUNK 8 + 28, bext 8 + 602 + 56, fmt 8 + 16, data 8.
        self.assertEqual(info, {
            "file": "take.wav", "valid": True, "supported": True, "raw_ms": True,
            "audio_format": 1, "channels": 2, "sample_rate": 96000, "bits_per_sample": 24,
            "block_align": 6, "byte_rate": 576000, "data_position": 746, "data_length": 30,
            "frames": 5, "duration": 5 / 96000,
            "chunks": [{"id": "JUNK", "size": 28, "offset": 20},
                       {"id": "bext", "size": 658, "offset": 56},
                       {"id": "fmt ", "size": 16, "offset": 722},
                       {"id": "data", "size": 30, "offset": 746}],
            "bext": {"description": "Song of the reed", "originator": "ORLO H8 V1",
                     "originator_reference": "REF1", "origination_date": "2026-05-17",
                     "origination_time": "18:30:59", "time_reference": 5000000000, "version": 2,
                     "umid": umid.hex(), "coding_history": (RAW_HISTORY + b";").decode()}})
        self.assertEqual([list(each) for each in info["chunks"]], [["id", "size", "offset"]] * 4)

    def test_plain_recording(self):
        info = self.info(recording(STEREO24, raw=False))
        self.assertEqual((info["supported"], info["raw_ms"]), (True, False))

    def test_header_values_as_they_stand_even_if_they_do_not_fit_together(self):
        info = self.info(recording(STEREO24, tag=65534, channels=7, rate=4294967295, bits=40,
                                   byte_rate=123, block_align=9))
        self.assertEqual([info[key] for key in KEYS[4:10]], [65534, 7, 4294967295, 40, 9, 123])
        self.assertEqual(info["frames"], 0)

    def test_several_files_in_one_run(self):
        self.write("one.wav", recording(STEREO24))
        self.write("two.wav", recording(STEREO24 * 2, raw=False))
        one, two = self.objects("one.wav", "two.wav")
        self.assertEqual([one["file"], one["frames"]], ["one.wav", 5])
        self.assertEqual([two["file"], two["frames"]], ["two.wav", 10])

    def test_recording_without_frames(self):
        info = self.info(recording(b""))
        self.assertEqual((info["supported"], info["frames"], info["duration"]), (True, 0, 0))

    def test_trailing_part_of_a_frame_does_not_count(self):
        info = self.info(recording(pcm24(1, 2, 3, 4, 5)))
        self.assertEqual((info["data_length"], info["frames"]), (15, 2))

    def test_data_size_beyond_the_file(self):
        info = self.info(recording(STEREO24, data_size=0x7FFFFFFF))
        self.assertEqual((info["data_length"], info["frames"]), (0x7FFFFFFF, 5))

    def test_rate_of_zero_has_no_duration(self):
        info = self.info(recording(STEREO24, rate=0))
        self.assertEqual((info["sample_rate"], info["frames"]), (0, 5))
        self.assertIsNone(info["duration"])

    def test_float_recording(self):
        info = self.info(recording(floats(0.5, 0.25), tag=3, bits=32))
        self.assertEqual((info["audio_format"], info["bits_per_sample"], info["frames"]),
                         (3, 32, 1))

    def test_source_and_folder_stay_as_they_are(self):
        source = recording(STEREO24)
        self.info(source)
        self.assertEqual(self.names(), ["take.wav"])
        self.assert_bytes((self.folder / "take.wav").read_bytes(), source)


class ForeignRecordings(InfoTest):
    def test_wave_file_without_bext(self):
        info = self.info(riff(fmt(), data(STEREO24)))
        self.assertEqual(list(info), KEYS)
        self.assertEqual((info["valid"], info["supported"], info["raw_ms"]), (True, False, False))
        self.assertIsNone(info["bext"])
        self.assertEqual(info["frames"], 5)

    def test_other_device(self):
        info = self.info(recording(STEREO24, texts={"originator": b"Another"}))
        self.assertEqual((info["valid"], info["supported"]), (True, False))
        self.assertEqual(info["bext"]["originator"], "Another")

    def test_bext_without_audio_is_shown(self):
        info = self.info(riff(bext()))
        self.assertEqual((info["valid"], info["supported"], info["frames"]), (False, False, 0))
        self.assertEqual(info["bext"]["originator"], "ORLO H8")

    def test_fields_behind_the_end_of_a_short_bext_are_empty(self):
        whole = bext_body(description=b"d", time_reference=0x0102030405060708, version=0x0203,
                          umid=b"\xaa" * 64)
        for length, expected in (
                (0, ("", 0, 0, "00" * 64)), (340, ("d", 0x0708, 0, "00" * 64)),
                (346, ("d", 0x0102030405060708, 0, "00" * 64)),
                (347, ("d", 0x0102030405060708, 3, "00" * 64)),
                (350, ("d", 0x0102030405060708, 0x0203, "aaaa" + "00" * 62))):
            with self.subTest(length=length):
                shown = self.info(riff(chunk(b"bext", whole[:length]), fmt(), data(b"")))["bext"]
                self.assertEqual((shown["description"], shown["time_reference"], shown["version"],
                                  shown["umid"]), expected)
                self.assertEqual(shown["coding_history"], "")

    def test_first_of_two_bext_chunks_counts(self):
        info = self.info(riff(bext(description=b"first", history=PLAIN_HISTORY),
                              bext(description=b"second"), fmt(), data(STEREO24)))
        self.assertEqual(info["bext"]["description"], "first")
        self.assertFalse(info["raw_ms"])

    def test_last_of_two_formats_and_data_chunks_counts(self):
        info = self.info(riff(bext(history=PLAIN_HISTORY), fmt(rate=1), data(b"\0" * 6),
                              fmt(rate=2), data(b"\0" * 12)))
        self.assertEqual((info["sample_rate"], info["data_length"], info["frames"]), (2, 12, 2))
        self.assertEqual([each["id"] for each in info["chunks"]],
                         ["bext", "fmt ", "data", "fmt ", "data"])


class NoRecordings(InfoTest):
    def test_bytes_that_are_no_wave_file(self):
        whole = recording(STEREO24)
        contents = {"47 bytes": whole[:47], "one byte": b"R", "RIFX": b"RIFX" + whole[4:],
                    "RF64": b"RF64" + whole[4:], "text": b"no recording\n" * 10,
                    "other form": riff(fmt(), data(STEREO24), form=b"AVI ")}
        for name, bytes_ in contents.items():
            with self.subTest(name):
                info = self.info(bytes_)
                self.assertEqual(list(info), KEYS)
                self.assertEqual((info["valid"], info["supported"], info["frames"]),
                                 (False, False, 0))
                self.assertEqual((info["chunks"], info["bext"]), ([], None))

    def test_48_bytes_are_enough_to_be_looked_at(self):
        info = self.info(riff(fmt(), data(b"\0\0\0\0")))
        self.assertEqual(os.stat(self.folder / "take.wav").st_size, 48)
        self.assertTrue(info["valid"])

    def test_files_that_give_no_bytes(self):
        self.write("empty.wav", b"")
        (self.folder / "folder.wav").mkdir()
        os.mkfifo(self.folder / "pipe.wav")
        os.symlink("nowhere", self.folder / "dangling.wav")
        self.write("good.wav", recording(STEREO24))
        names = ["missing.wav", "folder.wav", "pipe.wav", "empty.wav", "dangling.wav", "/dev/zero"]
        *bad, good = self.objects(*names, "good.wav", status=1)
        for name, info in zip(names, bad):
            with self.subTest(name=name):
                self.assertEqual(list(info), [*KEYS, "error"])
                self.assertEqual(info["file"], name)
                self.assertEqual((info["valid"], info["supported"]), (False, False))
                self.assertEqual((info["chunks"], info["bext"]), ([], None))
                self.assertRegex(info["error"], r"\w")
        self.assertEqual(list(good), KEYS)
        self.assertTrue(good["supported"])

    def test_sparse_files_beyond_4_gigabytes_are_refused_for_their_size(self):
        """Not by way of reading them: that would take longer than the guard of the run waits."""
        for name, size in (("just.wav", 2 ** 32), ("six.wav", 6 * 10 ** 9),
                           ("forty.wav", 40 * 10 ** 9)):
            os.truncate(self.write(name, recording(STEREO24)), size)
        for info in self.objects("just.wav", "six.wav", "forty.wav", status=1):
            with self.subTest(name=info["file"]):
                self.assertEqual((info["valid"], info["chunks"]), (False, []))
                self.assertIn("large", info["error"])


class Escapes(InfoTest):
    def test_names_that_json_must_escape(self):
        names = ['quo"te.wav', "back\\slash.wav", "new\nline.wav", "tab\t\x01\x1f\x7f.wav",
                 "\u00fc\u4e2d\U0001f3b5.wav", "</script>.wav", "-dash.wav", " "]
        for name in names:
            self.write(name, recording(STEREO24))
        self.assertEqual([info["file"] for info in self.objects(*names)], names)

    def test_names_that_are_not_utf_8_show_their_bytes(self):
        names = {b"\xff\xfe.wav": r"\xff\xfe.wav", b"a\xc3(.wav": r"a\xc3(.wav",
                 b"\xc3\xbc\xc3": "\u00fc" + r"\xc3", b"\xed\xa0\x80": r"\xed\xa0\x80",
                 b"\xc0\xaf": r"\xc0\xaf", b"\xf4\x90\x80\x80": r"\xf4\x90\x80\x80",
                 b"\xe2\x82.": r"\xe2\x82.", b"\xf0\x9f\x8e": r"\xf0\x9f\x8e"}
        for name in names:
            self.write(name, recording(STEREO24))
        self.assertEqual([info["file"] for info in self.objects(*names)], list(names.values()))

    def test_name_of_a_missing_file_that_is_not_utf_8(self):
        info, = self.objects(b"\xffgone", status=1)
        self.assertEqual(info["file"], r"\xffgone")

    def test_bytes_above_127_are_the_characters_of_their_values(self):
        every = bytes(range(1, 256))
        info = self.info(recording(b"", texts={"description": every, "originator": b"ORLO H8\xae",
                                               "reference": b"\xfc\xff",
                                               "history": b"\x80\xe9\"\\\n"}))
        shown = info["bext"]
        self.assertEqual(shown["description"], every.decode("latin-1"))
        self.assertEqual(shown["originator"], "ORLO H8\u00ae")
        self.assertEqual(shown["originator_reference"], "\u00fc\u00ff")
        self.assertEqual(shown["coding_history"], '\u0080\u00e9"\\\n')

    def test_chunk_identifiers_of_any_bytes(self):
        identifiers = (b"\0\0\0\0", b'"\\\n\x7f', b"\xff\xfe\x80\xa0", b"\xc3\xbc  ")
        info = self.info(riff(*(chunk(each, b"") for each in identifiers), fmt(), data(b"")))
        self.assertEqual([each["id"] for each in info["chunks"][:4]],
                         [each.decode("latin-1") for each in identifiers])


class HostileChunks(InfoTest):
    def test_200000_empty_chunks(self):
        contents = riff(bext(), *[chunk(b"none", b"")] * 200000, fmt(), data(STEREO24))
        info = self.info(contents)
        self.assertEqual(len(info["chunks"]), 200003)
        self.assertEqual(info["chunks"][200000], {"id": "none", "size": 0, "offset":
                                                  12 + 8 + 602 + len(RAW_HISTORY) + 200000 * 8})
        self.assertEqual((info["supported"], info["frames"]), (True, 5))

    def test_chunk_sizes_that_lead_back_or_nowhere_end_the_walk(self):
        """Sizes whose next position is the same chunk, lies before it, or is far away."""
        for size in (0xFFFFFFF8, 0xFFFFFFF0, 0x7FFFFFFF, 0x80000000):
            for identifier in (b"fmt ", b"data"):
                with self.subTest(size=hex(size), identifier=identifier):
                    body = bytes(24)
                    info = self.info(riff(bext(), chunk(identifier, body, size), fmt()))
                    self.assertEqual([(each["id"], each["size"]) for each in info["chunks"]][1:],
                                     [(identifier.decode(), size)])

    def test_other_chunk_past_the_end_is_not_listed(self):
        info = self.info(riff(fmt(), data(b""), chunk(b"LIST", bytes(7), 8)))
        self.assertEqual([each["id"] for each in info["chunks"]], ["fmt ", "data"])
        info = self.info(riff(fmt(), data(b""), chunk(b"LIST", bytes(8), 8)))
        self.assertEqual([each["id"] for each in info["chunks"]], ["fmt ", "data", "LIST"])


if __name__ == "__main__":
    unittest.main()
