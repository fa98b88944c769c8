"""Whole output files, byte for byte."""

import math
import struct
import unittest

from reference import Recording, decoded_samples, stored24
from support import (DecodeTest, PLAIN_HISTORY, STEREO24, bext, data, decode, floats,
                     fmt, junk, pcm16, pcm24, pcm32, recording, riff)


def frames24(count):
    """Frames that differ from each other, of either sign, up to half of full scale."""
    values = [(k * 2654435761 % 2 ** 23) - 2 ** 22 for k in range(2 * count)]
    return pcm24(*values)


class FileLayout(DecodeTest):
    def test_24_bit_file_assembled_by_hand(self):
        """Mid 1000000, side -500000: left 500000, right 1500000, less the step to 8388607."""
        source = recording(pcm24(1000000, -500000), texts={
            "description": b"Song of the reed", "originator": b"ORLO H8",
            "reference": b"REF0001", "umid": b"UMID"})
        output = self.decoded(source)
        stamp = output[376:394]
        by_hand = b"".join([
            b"RIFF", (748 + 6 - 8).to_bytes(4, "little"), b"WAVE",
            b"JUNK", b"\x1c\0\0\0", bytes(28),
            b"bext", (658).to_bytes(4, "little"),
            b"Song of the reed", bytes(240), b"ORLO H8", bytes(25), b"REF0001", bytes(25),
            stamp, bytes(8), b"\x01\0", b"UMID", bytes(60), bytes(190),
            b"A=PCM,F=48000,W=24,M=stereo,T=H8;VERSION=1.00;MSRAW=OFF;",
            b"fmt ", b"\x12\0\0\0", b"\x01\0", b"\x02\0", b"\x80\xbb\0\0",
            (288000).to_bytes(4, "little"), b"\x06\0", b"\x18\0", b"\0\0",
            b"data", b"\x06\0\0\0",
            (499999).to_bytes(3, "little"), (1499999).to_bytes(3, "little")])
        self.assert_bytes(output, by_hand)

    def test_float_file_assembled_by_hand(self):
        """Mid 0.5, side 0.25: left 0.75, right 0.25."""
        output = self.decoded(recording(pcm24(4194304, 2097152)), "--format", "32f")
        by_hand = b"".join([
            b"RIFF", (748 + 8 - 8).to_bytes(4, "little"), b"WAVE",
            b"JUNK", b"\x1c\0\0\0", bytes(28),
            b"bext", (658).to_bytes(4, "little"),
            bytes(256), b"ORLO H8", bytes(25), bytes(32),
            output[376:394], bytes(8), b"\x01\0", bytes(64), bytes(190),
            b"A=PCM,F=48000,W=32,M=stereo,T=H8;VERSION=1.00;MSRAW=OFF;",
            b"fmt ", b"\x12\0\0\0", b"\x03\0", b"\x02\0", b"\x80\xbb\0\0",
            (384000).to_bytes(4, "little"), b"\x08\0", b"\x20\0", b"\0\0",
            b"data", b"\x08\0\0\0", b"\0\0\x40\x3f", b"\0\0\x80\x3e"])
        self.assert_bytes(output, by_hand)

    def test_five_mono_frames_make_an_even_number_of_samples(self):
        """A frame of one channel is written as two samples, the second marked as missing."""
        source = recording(pcm24(4194304, 0, -4194304, 2, 8388607), raw=False, channels=1)
        marked = pcm24(4194303, -0x800000, 0, -0x800000, -4194303, -0x800000, 1, -0x800000,
                       8388606, -0x800000)
        self.assert_output(self.decoded(source), marked, channels=1)

    def test_rate_of_the_source_is_kept(self):
        source = recording(STEREO24, rate=96000)
        samples = stored24(decoded_samples(Recording(source)))
        self.assert_output(self.decoded(source), samples, rate=96000)

    def test_data_chunk_before_the_format(self):
        source = riff(data(STEREO24), bext(history=PLAIN_HISTORY), fmt())
        samples = stored24(decoded_samples(Recording(source)))
        self.assert_output(self.decoded(source), samples)

    def test_recordings_own_date_and_time_reference_are_not_carried_over(self):
        source = recording(b"", texts={"date": b"1999-12-31", "time": b"23:59:59",
                                       "time_reference": 48000 * 3600})
        output = self.decoded(source)
        self.assertNotEqual(output[376:386], b"1999-12-31")
        self.assert_output(output, b"")


class Samples(DecodeTest):
    def test_24_bit_values_lose_the_step_between_2_to_the_23_and_full_scale(self):
        source = recording(pcm24(4194304, -4194304, 8388607, -8388607, -8388608, 1, -1, 0),
                           raw=False)
        expected = pcm24(4194303, -4194303, 8388606, -8388606, -8388608, 0, 0, 0)
        self.assert_output(self.decoded(source), expected)

    def test_sums_beyond_full_scale_are_cut_off(self):
        source = recording(pcm24(8388607, 1, 8388607, 8388607, -8388608, -8388608, -8388607, 1))
        expected = pcm24(0x7FFFFF, 8388605, 0x7FFFFF, 0, -0x800000, 0, -8388605, -0x800000)
        self.assert_output(self.decoded(source), expected)

    def test_float_output_keeps_what_lies_beyond_full_scale(self):
        source = recording(pcm24(8388607, 8388607))
        expected = floats(2 * 8388607 / 8388608, 0)
        self.assert_output(self.decoded(source, "--format", "32f"), expected, 32)

    def test_16_bit_samples_are_read_unsigned(self):
        source = recording(pcm16(16384, -1, -32768, 0), raw=False, bits=16)
        as_floats = floats(0.5, 65535 / 32768, 1.0, 0.0)
        self.assert_output(self.decoded(source, "--format", "32f"), as_floats, 32)
        self.assert_output(self.decoded(source), pcm24(4194303, 0x7FFFFF, 0x7FFFFF, 0))

    def test_32_bit_integers_are_scaled_to_near_silence(self):
        source = recording(pcm32(2 ** 30, -2 ** 31, 2 ** 31 - 1, 1), raw=False, bits=32)
        as_floats = floats(2.0 ** -34, -2.0 ** -33, 2.0 ** -33, 2.0 ** -64)
        self.assert_output(self.decoded(source, "--format", "32f"), as_floats, 32)
        self.assert_output(self.decoded(source), bytes(12))

    def test_float_source_is_taken_as_it_is(self):
        values = floats(0.5, -0.25, 1e-45, -1e-40, 1.5, -3e38)
        source = recording(values, raw=False, tag=3, bits=32)
        self.assert_output(self.decoded(source, "--format", "32f"), values, 32)

    def test_float_source_is_cut_off_at_full_scale_in_24_bits(self):
        values = floats(0.5, 1.0, -1.0, 1e38, -1e38, math.inf, -math.inf, 1e-45)
        source = recording(values, raw=False, tag=3, bits=32)
        expected = pcm24(4194303, 0x7FFFFF, -0x800000, 0x7FFFFF, -0x800000, 0x7FFFFF, -0x800000, 0)
        self.assert_output(self.decoded(source), expected)

    def test_not_a_number_becomes_negative_full_scale(self):
        source = recording(floats(math.nan, 0.5), raw=False, tag=3, bits=32)
        self.assert_output(self.decoded(source), pcm24(-0x800000, 4194303))

    def test_not_a_number_in_mid_reaches_both_channels(self):
        source = recording(floats(math.nan, 0.5, 0.5, 0.25), tag=3, bits=32)
        samples = self.decoded(source, "--format", "32f")[748:]
        left, right, *rest = struct.unpack("<4f", samples)
        self.assertTrue(math.isnan(left) and math.isnan(right), (left, right))
        self.assertEqual(rest, [0.75, 0.25])

    def test_infinite_side_at_angle_0_is_not_a_number(self):
        source = recording(floats(0.5, math.inf), tag=3, bits=32)
        self.assert_output(self.decoded(source, "--angle", 0), pcm24(-0x800000, -0x800000))

    def test_sum_that_overflows_single_precision_is_infinite(self):
        source = recording(floats(3e38, 3e38), tag=3, bits=32)
        self.assert_output(self.decoded(source, "--format", "32f"), floats(math.inf, 0), 32)

    def test_depths_that_cannot_be_read_are_marked_as_missing(self):
        for bits, frame in ((8, 2), (12, 2), (20, 4), (64, 16)):
            with self.subTest(bits=bits):
                source = recording(bytes(2 * frame), raw=False, bits=bits)
                output = self.decoded(source, "--format", "32f")
                self.assert_output(output, floats(-2, -2, -2, -2), 32)
                self.assert_output(self.decoded(source), pcm24(*[-0x800000] * 4))

    def test_missing_samples_go_through_the_mid_side_decode(self):
        source = recording(bytes(2), bits=8)
        self.assert_output(self.decoded(source, "--format", "32f"), floats(-4, 0), 32)

    def test_of_three_channels_the_last_one_wins_and_is_read_one_sample_too_far(self):
        """Channel 2 is read at three sample sizes: the first sample of the next frame."""
        source = recording(pcm24(100, 200, 300, 400, 500, 600), raw=False, channels=3)
        expected = pcm24(99, 399, 399, 499)
        output = self.decoded(source)
        self.assert_output(output, expected, channels=3)

    def test_third_channel_of_the_last_frame_is_read_from_the_chunk_behind(self):
        source = riff(bext(history=PLAIN_HISTORY), fmt(channels=3), data(pcm24(100, 200, 300)),
                      b"note\0\0\0\0")
        expected = pcm24(99, int.from_bytes(b"not", "little") - 1)
        self.assert_output(self.decoded(source), expected, channels=3)


class Angles(DecodeTest):
    def test_angle_0_gives_mid_on_both_sides(self):
        source = recording(pcm24(4194304, 2097152, -4194304, 99))
        output = self.decoded(source, "--angle", 0)
        self.assert_output(output, pcm24(4194303, 4194303, -4194303, -4194303))

    def test_telling_angles(self):
        source = recording(frames24(200))
        for angle in (1, 2, 14, 15, 20, 70, 119, 120, 121, 150):
            with self.subTest(angle=angle):
                samples = stored24(decoded_samples(Recording(source), angle))
                self.assert_output(self.decoded(source, "--angle", angle), samples)

    def test_float_output_shows_the_side_factor_itself(self):
        """Mid 0, side 1.0: what comes out is the factor, here as printed to ten digits."""
        source = recording(floats(0, 1), tag=3, bits=32)
        factors = {1: 0.0039810720, 2: 0.0049708262, 14: 0.0713791624, 15: 0.0891250968,
                   20: 0.1, 70: 0.3162277639, 120: 1.0, 150: 1.9952622652}
        for angle, factor in factors.items():
            with self.subTest(angle=angle):
                output = self.decoded(source, "--angle", angle, "--format", "32f")
                self.assert_output(output, floats(factor, -factor), 32)

    def test_decimals_are_cut_off(self):
        source = recording(frames24(200))
        for given, used in (("119.9", 119), ("0.999", 0), ("149.5", 149), ("150.0", 150)):
            with self.subTest(angle=given):
                samples = stored24(decoded_samples(Recording(source), used))
                self.assert_output(self.decoded(source, "--angle", given), samples)

    def test_plain_recordings_have_no_angle(self):
        source = recording(STEREO24, raw=False)
        self.assertEqual(self.decoded(source, "--angle", 0)[748:],
                         self.decoded(source, "--angle", 150)[748:])

    def test_raw_mark_counts_anywhere_in_the_history(self):
        raw, plain = pcm24(3, 1), pcm24(2, 0)
        histories = {b"x MSRAW=ONE ": raw, b"MSRAW=OFF;MSRAW=ON": raw, b"msraw=on": plain,
                     b"\0 MSRAW=ON": plain, b"MSRAW=O": plain, b"": plain}
        for history, expected in histories.items():
            with self.subTest(history=history):
                source = riff(bext(history=history), fmt(), data(pcm24(3, 1)))
                self.assert_output(self.decoded(source), expected)


class Gains(DecodeTest):
    def test_20_dB_is_ten_times_as_loud(self):
        """0.05 and 0.1 have the same binary digits but one: their quotient is one half."""
        source = recording(floats(0.05, -0.05), raw=False, tag=3, bits=32)
        output = self.decoded(source, "--gain", 20, "--format", "32f")
        self.assert_output(output, floats(0.5, -0.5), 32)

    def test_gains_of_either_sign_with_decimals(self):
        source = recording(frames24(200))
        for gain in ("6", "-6", "+6", "0.1", "-0.35", "36", "-36", "6.0206", "1e1", "0", "-0"):
            with self.subTest(gain=gain):
                samples = stored24(decoded_samples(Recording(source), gain=float(gain)))
                self.assert_output(self.decoded(source, "--gain", gain), samples)

    def test_gain_acts_behind_the_decode_of_angle_and_side(self):
        source = recording(frames24(200))
        samples = stored24(decoded_samples(Recording(source), 70, 3.5))
        output = self.decoded(source, "--angle", 70, "--gain=3.5")
        self.assert_output(output, samples)

    def test_normalised_file_peaking_at_a_quarter_is_four_times_as_loud(self):
        source = recording(floats(0.25, -0.125, 0.0625, 0.1), raw=False, tag=3, bits=32)
        output = self.decoded(source, "--normalize", "--format", "32f")
        four_times = struct.unpack("<f", floats(0.1))[0] * 4
        self.assert_output(output, floats(1.0, -0.5, 0.25, four_times), 32)

    def test_normalised_peak_is_exactly_full_scale_whatever_it_was(self):
        for peak in (3, 1000, 123457, 2097152, 8388607):
            with self.subTest(peak=peak):
                source = recording(pcm24(peak, 0, 0, 1 - peak), raw=False)
                output = self.decoded(source, "--normalize")
                self.assertEqual(output[748:751], b"\xff\xff\x7f")
                samples = stored24(decoded_samples(Recording(source), normalize=True))
                self.assert_output(output, samples)

    def test_peak_to_normalise_may_be_negative_and_on_the_right(self):
        source = recording(pcm24(0, 0, 5, -1048576), raw=False)
        output = self.decoded(source, "--normalize")
        self.assert_output(output, pcm24(0, 0, 39, -0x800000))

    def test_peak_to_normalise_is_looked_for_behind_the_decode(self):
        """Mid and side of 0.25 add up to 0.5: twice as loud, not four times."""
        source = recording(pcm24(2097152, 2097152))
        output = self.decoded(source, "--normalize", "--format", "32f")
        self.assert_output(output, floats(1.0, 0.0), 32)

    def test_normalising_takes_over_from_the_gain(self):
        source = recording(frames24(200))
        self.assertEqual(self.decoded(source, "--normalize", "--gain", 12)[748:],
                         self.decoded(source, "--normalize")[748:])

    def test_normalising_makes_files_beyond_full_scale_quieter(self):
        source = recording(floats(4.0, -1.0), raw=False, tag=3, bits=32)
        output = self.decoded(source, "--normalize", "--format", "32f")
        self.assert_output(output, floats(1.0, -0.25), 32)

    def test_silence_stays_silence_when_normalised(self):
        source = recording(bytes(60))
        self.assert_output(self.decoded(source, "--normalize"), bytes(60))

    def test_peak_in_the_last_block_of_a_long_file_counts(self):
        quiet = [1000] * (2 * 2561)
        quiet[-1] = 4194304
        source = recording(pcm24(*quiet), raw=False)
        output = self.decoded(source, "--normalize")
        self.assert_output(output, pcm24(*[1999] * (2 * 2561 - 1), 0x7FFFFF))

    def test_not_a_number_is_no_peak(self):
        source = recording(floats(math.nan, 0.5, -0.25, math.nan), raw=False, tag=3, bits=32)
        output = self.decoded(source, "--normalize")
        self.assert_output(output, pcm24(-0x800000, 0x7FFFFF, -4194303, -0x800000))


class Lengths(DecodeTest):
    def test_frames_around_the_block_of_2560(self):
        for count in (1, 2559, 2560, 2561, 5121):
            with self.subTest(frames=count):
                source = recording(frames24(count))
                samples = stored24(decoded_samples(Recording(source)))
                self.assertEqual(len(samples), 6 * count)
                self.assert_output(self.decoded(source), samples)

    def test_no_frames_make_a_file_of_the_header_alone(self):
        for options in ((), ("--normalize",), ("--format", "32f")):
            with self.subTest(options=options):
                output = self.decoded(recording(b""), *options)
                self.assert_output(output, b"", 32 if "32f" in options else 24)

    def test_trailing_part_of_a_frame_is_left_out(self):
        whole = pcm24(100, 200)
        for part in (1, 3, 5):
            with self.subTest(part=part):
                source = recording(whole + b"\x11" * part, raw=False)
                self.assert_output(self.decoded(source), pcm24(99, 199))

    def test_less_than_one_frame_is_none(self):
        source = recording(b"\x11" * 5)
        self.assert_output(self.decoded(source), b"")

    def test_data_that_claims_more_than_the_file_holds_ends_with_the_file(self):
        samples = pcm24(100, 200, 300, 400) + b"\x11\x22"
        for claimed in (len(samples) + 1, 0x7FFFFFFF, 0x80000000, 0xFFFFF000):
            with self.subTest(claimed=hex(claimed)):
                source = recording(samples, raw=False, data_size=claimed)
                self.assert_output(self.decoded(source), pcm24(99, 199, 299, 399))

    def test_data_whose_end_wraps_around_holds_no_frames(self):
        for claimed in (0xFFFFFFFF, 0xFFFFFFF8, 0xFFFFFF00):
            with self.subTest(claimed=hex(claimed)):
                source = recording(STEREO24, data_size=claimed)
                self.assert_output(self.decoded(source), b"")

    def test_bytes_behind_the_data_chunk_are_no_samples(self):
        source = recording(STEREO24 * 2, raw=False, data_size=12)
        samples = stored24(decoded_samples(Recording(source)))
        self.assertEqual(len(samples), 12)
        self.assert_output(self.decoded(source), samples)


class Texts(DecodeTest):
    def test_fields_without_a_zero_byte_are_carried_whole(self):
        texts = {"description": b"d" * 256, "originator": b"ORLO H8" + b"o" * 25,
                 "reference": b"r" * 32, "umid": b"u" * 64}
        self.assert_output(self.decoded(recording(b"", texts=texts)), b"", **texts)

    def test_fields_end_at_the_first_zero_byte(self):
        texts = {"description": b"before\0after", "originator": b"ORLO H8\0later",
                 "reference": b"\0hidden", "umid": b"\x06\x0a\0\x2b"}
        output = self.decoded(recording(b"", texts=texts))
        self.assert_output(output, b"", description=b"before", umid=b"\x06\x0a")

    def test_text_that_is_not_ascii_leaves_its_field_empty(self):
        texts = {"description": b"Gr\xfc\xdfe", "originator": b"ORLO H8", "reference": b"plain",
                 "umid": b"\x80"}
        output = self.decoded(recording(b"", texts=texts))
        self.assert_output(output, b"", reference=b"plain")

    def test_originator_that_is_not_ascii_still_names_the_device(self):
        source = recording(b"", texts={"originator": b"ORLO H8 \xa9"})
        self.assert_output(self.decoded(source), b"", originator=b"")

    def test_control_bytes_are_ascii(self):
        texts = {"description": b"\x01\n\t\x7f", "reference": b"\r\n"}
        self.assert_output(self.decoded(recording(b"", texts=texts)), b"", **texts)

    def test_device_may_be_named_anywhere_in_the_originator(self):
        for originator in (b"an ORLO H8", b"ORLO H8 V2", b"x" * 25 + b"ORLO H8"):
            with self.subTest(originator=originator):
                output = self.decoded(recording(b"", texts={"originator": originator}))
                self.assert_output(output, b"", originator=originator)

    def test_recordings_of_other_devices_are_refused(self):
        for originator in (b"", b"orlo h8", b"ORLO  H8", b"ORLO\0H8", b"\0ORLO H8",
                           b"x" * 26 + b"ORLO H"):
            with self.subTest(originator=originator):
                take = self.write("take.wav", recording(STEREO24, texts={"originator": originator}))
                self.assert_failed(decode(take), f"{take}: File not supported.")

    def test_odd_bext_without_a_pad_byte(self):
        source = riff(junk(), bext(history=b"MSRAW=OFF"), fmt(), data(pcm24(100, -200)))
        self.assert_output(self.decoded(source), pcm24(99, -199))

    def test_odd_bext_with_a_pad_byte_leads_the_walk_astray(self):
        source = riff(junk(), bext(history=b"MSRAW=OFF"), b"\0", fmt(), data(STEREO24))
        take = self.write("take.wav", source)
        self.assert_failed(decode(take), f"{take}: File not supported.")

    def test_source_is_never_changed(self):
        source = recording(STEREO24)
        self.decoded(source, "--normalize")
        self.assert_bytes((self.folder / "take.wav").read_bytes(), source)


if __name__ == "__main__":
    unittest.main()
