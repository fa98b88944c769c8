"""What is heard is what is shown is what is exported: one recording, one setting, three ways out."""

import math
import random
from array import array
from fractions import Fraction

import reference
from exporting_test import FORMATS, ExportTest
from playing_test import PlayingTest
from case import run
from session import wait_for
from sound import RATE
from support import pcm24, recording
import hands

ANGLE = 90
GAIN = 6
FULL_SCALE = 2 ** 23
SECTION = 20  # seconds

# Middle and side of a section each, and what its meters must show: 48 plus the decibels of left and of
# right. The side's factor at 90 is 0.501, that of the gain 1.995.
QUIET = ((0.00125, 0.0005), (0, 0))          # -50.4 and -54.0 dB: below the scale
CENTRE = ((0.25, 0.0), (42, 42))             # -6.04 dB
LEFT = ((0.25, 0.2), (45, 38))               # -3.12 and -10.49 dB
SIDE = ((0.0, -0.4), (40, 40))               # -7.96 dB, opposite phases
LOUD_LEFT = ((0.5, 0.4), (51, 44))           # 2.91 and -4.47 dB
LOUD_RIGHT = ((0.5, -0.4), (44, 51))


def stored(value):
    return round(value * FULL_SCALE)


def divisor_while_playing():
    """While playing the decibels are divided in single precision."""
    twentieth = reference.single(reference.single(-GAIN) / 20)
    return reference.single(reference.power_of_ten(Fraction(twentieth)))


def heard_as(left, right):
    """What the output is given of a decoded frame: only the left channel is kept within its bounds."""
    if abs(left) > 1:
        steps = FULL_SCALE - 1 if left > 0 else -FULL_SCALE
    else:
        steps = int(left * FULL_SCALE)
    return [((step + FULL_SCALE) % (2 * FULL_SCALE) - FULL_SCALE) / FULL_SCALE
            for step in (steps, int(right * FULL_SCALE))]


def samples_of(file, bits, frames=slice(None)):
    """The samples of an output, as steps or as floats."""
    source = reference.Recording(file)
    size = bits // 8
    start, stop, _ = frames.indices(source.data_length // (2 * size))
    body = file[source.data_position + start * 2 * size:source.data_position + stop * 2 * size]
    if bits == 32:
        return array("f", body)
    return array("i", [int.from_bytes(body[at:at + size], "little", signed=True)
                       for at in range(0, len(body), size)])


class AgreementTest(PlayingTest, ExportTest):
    def record(self, samples):
        self.take = self.desktop / "take.wav"
        self.take.write_bytes(recording(samples))

    def set_by_hand(self):
        """Dial, gain and volume, by pointer and keys."""
        dial = self.control("slider", "Stereo width")
        self.application.click(dial, (0.045, 0.5))  # on the text that says so
        wait_for(lambda: dial.get_current_value() == ANGLE, "turning the dial")
        gain = self.control("slider", "Gain in decibels")
        self.assertTrue(gain.grab_focus())
        hands.key(*["Up"] * GAIN)
        wait_for(lambda: gain.get_current_value() == GAIN, "setting the gain")
        self.assertTrue(self.control("slider", "Volume").grab_focus())
        hands.key("End")
        wait_for(lambda: self.volume() == 1, "setting the volume")

    def play_again(self, count):
        """So many samples are heard of it."""
        sound = self.listen()
        hands.key("space")
        wait_for(lambda: len(sound.heard()) >= count, "hearing all of it")
        self.control("push button", "Play")
        sound.end()
        return sound.heard()

    def export(self, bits):
        """The bytes of an exported file."""
        path = self.desktop / f"out{bits}.wav"
        sheet = self.sheet(self.main)
        self.choose(sheet, "radio button", FORMATS[bits])
        self.save_as(self.save_dialog(sheet), path.name)
        self.wait_for_end()
        self.main_window()
        return path.read_bytes()


class Frames(AgreementTest):
    def test_every_frame_that_is_heard_is_the_exported_one(self):
        chance = random.Random(8)
        # The middle always outweighs what is left of the side: no frame is silent.
        values = [stored(chance.choice((-1, 1)) * chance.uniform(*bounds))
                  for _ in range(2 * RATE) for bounds in ((0.15, 0.25), (0.0, 0.25))]
        self.record(pcm24(*values))
        self.play_to_end("take.wav")
        self.set_by_hand()
        self.play_again(len(values))
        heard = self.play_again(len(values))  # with these settings from its first frame on

        exported = samples_of(self.export(32), 32)
        exact = reference.decoded_samples(reference.Recording(self.take.read_bytes()),
                                          angle=ANGLE, gain=GAIN)
        self.assertTrue(exported == exact, "the floats aren't what they should be")
        self.assertEqual(divisor_while_playing(), reference.gain_divisor(GAIN))
        expected = array("f", (sample for frame in zip(exported[0::2], exported[1::2])
                               for sample in heard_as(*frame)))
        self.assertEqual(len(heard), len(expected))
        self.assertTrue(heard == expected, "what is heard isn't what is exported")
        steps = samples_of(self.export(24), 24)
        self.assertTrue(steps == array("i", map(reference.step24, exported)),
                        "the two formats differ")


class Meters(AgreementTest):
    def assert_agreement(self, *sections):
        """Each section is looked at in its middle, while it plays."""
        self.record(b"".join(pcm24(*map(stored, frame)) * (SECTION * RATE)
                             for frame, _ in sections))
        sound = self.listen()
        self.play("take.wav")
        self.set_by_hand()
        slider = self.control("slider", "Position")
        meters = [self.control("progress bar", f"{side} level") for side in ("Left", "Right")]
        decoded = [self.decoded(frame) for frame, _ in sections]
        for index, (frame, levels) in enumerate(sections):
            self.application.click(slider, ((index + 0.5) / len(sections), 0.5))
            sound.wait_for_frame(*heard_as(*decoded[index]))
            wait_for(lambda levels=levels: tuple(
                meter.get_current_value() for meter in meters) == levels, f"showing {levels}")
            self.assertEqual(levels, tuple(map(self.level, decoded[index])))
        hands.key("space")
        self.control("push button", "Play")
        for bits in (24, 32):
            exported = self.export(bits)
            for index, frame in enumerate(decoded):
                middle = RATE * (index * SECTION + SECTION // 2)
                self.assertEqual(list(samples_of(exported, bits, slice(middle, middle + 1))),
                                 frame if bits == 32 else list(map(reference.step24, frame)))

    @staticmethod
    def decoded(frame):
        """Left and right of a frame's middle and side."""
        values = [stored(value) / FULL_SCALE for value in frame]
        values = reference.mid_side_decoded(values, reference.side_level(ANGLE))
        return list(reference.singles(value / divisor_while_playing() for value in values))

    @staticmethod
    def level(sample):
        """On a meter, which shows nothing below its scale."""
        return max(0, math.floor(20 * math.log10(abs(sample)) + 48 + 0.5))

    def test_of_constant_sections_they_show_what_is_heard_and_exported(self):
        self.assert_agreement(CENTRE, LEFT, SIDE, QUIET)

    def test_they_show_what_is_too_loud_to_be_heard_or_exported_whole(self):
        self.assert_agreement(LOUD_LEFT, LOUD_RIGHT)


if __name__ == "__main__":
    run()
