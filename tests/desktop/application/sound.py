"""What the session's sound server is given to play, as it goes on."""

import os
from array import array

from session import wait_for

CHANNELS = 2
RATE = 48000
SAMPLE = 4


class Sound:
    """Records from the start; ends with the session at the latest."""

    def __init__(self, session, file):
        self.file = file
        with open(file, "wb") as output:
            self.process = session.capture(output)
        wait_for(self._frames, "recording what is played")

    def end(self):
        self.process.kill()
        self.process.wait()

    def _frames(self):
        return os.path.getsize(self.file) // (CHANNELS * SAMPLE)

    def _latest(self, frames):
        with open(self.file, "rb") as file:
            file.seek((self._frames() - frames) * CHANNELS * SAMPLE)
            samples = array("f")
            samples.frombytes(file.read(frames * CHANNELS * SAMPLE))
            return samples

    def wait_for_level(self, level):
        """Until a tenth of a second has had this peak and no other: by then all of it was made so."""
        frames = RATE // 10

        def is_so():
            if self._frames() < frames:
                return False
            samples = self._latest(frames)
            return all(abs(max(map(abs, samples[part:part + CHANNELS * RATE // 100])) - level) < 1e-5
                       for part in range(0, len(samples), CHANNELS * RATE // 100))
        wait_for(is_so, f"hearing a level of {level}")

    def wait_for_frame(self, left, right):
        """Until a tenth of a second has had this frame and no other."""
        wanted = array("f", [left, right] * (RATE // 10))
        wait_for(lambda: self._frames() >= RATE // 10 and self._latest(RATE // 10) == wanted,
                 f"hearing {left} and {right}")

    def heard(self):
        """All that was played, but for silence."""
        samples = array("f")
        with open(self.file, "rb") as file:
            samples.frombytes(file.read(self._frames() * CHANNELS * SAMPLE))
        frames = zip(samples[0::CHANNELS], samples[1::CHANNELS])
        return array("f", (sample for frame in frames if any(frame) for sample in frame))

    def wait_for_more(self, seconds):
        """Until so much was played, whatever it is."""
        end = self._frames() + round(seconds * RATE)
        wait_for(lambda: self._frames() >= end, "playing on")
