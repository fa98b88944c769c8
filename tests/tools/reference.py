"""What a decode must give, computed a second time from the rules and without the program's help.

Doubles stand in for single precision: one +, -, * or / of two singles, rounded to single
afterwards, is the correctly rounded single result.
"""

import math
import struct
from array import array
from datetime import datetime, timezone
from decimal import Decimal, localcontext
from fractions import Fraction

MISSING = -2.0
FULL_SCALE_24 = 8388607.0


def singles(values):
    return array("f", values)


def single(value):
    return array("f", [value])[0]


def power_of_ten(exponent):
    """10 ** exponent of a Fraction, to forty digits, as a double."""
    with localcontext() as context:
        context.prec = 40
        return float(Decimal(10) ** (Decimal(exponent.numerator) / Decimal(exponent.denominator)))


def side_level(angle):
    """The side factor at a whole angle."""
    if angle == 0:
        return 0.0
    if angle == 1:
        return single(0.0039810720)
    if angle <= 15:
        decibels = -48 + Fraction(27 * (angle - 1), 14)
    else:
        decibels = Fraction(angle - 120, 5)
    return single(power_of_ten(decibels / 20))


def gain_divisor(gain):
    return single(power_of_ten(Fraction(-gain) / 20))


def integer(file, offset, size):
    """Little-endian; what lies behind the end of the file counts as zero."""
    return int.from_bytes(file[offset:offset + size], "little")


class Recording:
    """A recording file as the rules read it."""

    def __init__(self, file):
        self.file = file
        self.chunks = []
        self.format = bytes(16)
        self.has_format = False
        self.data_position = self.data_length = 0
        if len(file) >= 48 and file[0:4] == b"RIFF" and file[8:12] == b"WAVE":
            self._walk(min(len(file), (integer(file, 4, 4) + 8) % 2 ** 32))
        self.is_valid = self.data_position != 0 and self.has_format
        (self.tag, self.channels, self.rate, self.byte_rate, self.block_align,
         self.bits) = struct.unpack("<HHIIHH", self.format)

    def _walk(self, end):
        position = 12
        while end >= 20 and position <= end - 8:
            identifier = self.file[position:position + 4]
            size = integer(self.file, position + 4, 4)
            body = position + 8
            if identifier == b"fmt ":
                self.has_format = True
                self.format = self.file[body:body + 16].ljust(16, b"\0")
            elif identifier == b"data":
                self.data_position, self.data_length = body, size
            elif len(self.file) - body < size:
                return
            self.chunks.append((identifier, size, body))
            following = (body + size) % 2 ** 32
            if following <= position:
                return
            position = following

    def bext_body(self):
        for identifier, size, body in self.chunks:
            if identifier == b"bext":
                return self.file[body:body + size]
        return None

    def text(self, offset, width=None):
        field = self.bext_body()[offset:None if width is None else offset + width]
        return field.split(b"\0")[0]

    @property
    def is_supported(self):
        return (self.is_valid and self.bext_body() is not None
                and b"ORLO H8" in self.text(256, 32))

    @property
    def is_raw(self):
        return b"MSRAW=ON" in self.text(602)

    @property
    def frame_bytes(self):
        return self.bits // 8 * self.channels

    @property
    def frame_count(self):
        end = min((self.data_position + self.data_length) % 2 ** 32, len(self.file))
        if self.frame_bytes == 0 or end <= self.data_position:
            return 0
        return (end - self.data_position) // self.frame_bytes

    def samples(self):
        """Left and right of every frame in turn, as they stand in the file."""
        values = []
        width = self.bits // 8 if self.bits in (16, 24, 32) else 0
        for frame in range(self.frame_count):
            pair = [MISSING, MISSING]
            offset = self.data_position + frame * self.frame_bytes
            for channel in range(self.channels if width else 0):
                at = offset + channel * (channel + 1) // 2 * width
                if at + width > len(self.file):
                    break
                pair[min(channel, 1)] = self._sample(self.file[at:at + width])
            values += pair
        return values

    def _sample(self, stored):
        if self.bits == 16:
            return int.from_bytes(stored, "little") / 2 ** 15
        if self.bits == 24:
            return int.from_bytes(stored, "little", signed=True) / 2 ** 23
        if self.tag == 3:
            return struct.unpack("<f", stored)[0]
        return single(int.from_bytes(stored, "little", signed=True)) * 2.0 ** -64


def decoded_samples(source, angle=120, gain=0.0, normalize=False):
    """Left and right in turn, in single precision, before they are stored."""
    values = source.samples()
    if source.is_raw:
        values = mid_side_decoded(values, side_level(int(angle)))
    if normalize:
        # What is not a number is never the larger one.
        divisor = max((abs(value) for value in values if value == value), default=0.0) or 1.0
    else:
        divisor = gain_divisor(gain)
    return singles(value / divisor for value in values)


def mid_side_decoded(values, level):
    mid = values[0::2]
    side = singles(value * level for value in values[1::2])
    result = list(values)
    result[0::2] = singles(m + s for m, s in zip(mid, side))
    result[1::2] = singles(m - s for m, s in zip(mid, side))
    return result


def stored24(values):
    return b"".join((step24(value) & 0xFFFFFF).to_bytes(3, "little") for value in values)


def step24(value):
    if value >= 1.0:
        return 0x7FFFFF
    if value <= -1.0 or math.isnan(value):
        return -0x800000
    return int(value * FULL_SCALE_24)


def stored_floats(values):
    return struct.pack(f"<{len(values)}f", *values)


def ascii_field(text, width):
    return (text if text.isascii() else b"").ljust(width, b"\0")[:width]


def output_file(samples, bits, stamp, channels=2, rate=48000, description=b"",
                originator=b"ORLO H8", reference=b"", umid=b""):
    """The whole output for given sample bytes; `stamp` is the 18 bytes of date and time."""
    history = b"A=PCM,F=48000,W=%d,M=stereo,T=H8;VERSION=1.00;MSRAW=OFF;" % bits
    frame = bits // 8 * channels % 2 ** 16
    contents = b"WAVE"
    contents += b"JUNK" + struct.pack("<I", 28) + bytes(28)
    contents += b"bext" + struct.pack("<I", 602 + 56)
    contents += ascii_field(description, 256) + ascii_field(originator, 32)
    contents += ascii_field(reference, 32) + stamp
    contents += struct.pack("<qH", 0, 1) + ascii_field(umid, 64) + bytes(190) + history
    contents += b"fmt " + struct.pack("<IHHIIHHH", 18, 1 if bits == 24 else 3, channels, rate,
                                      frame * rate % 2 ** 32, frame, bits, 0)
    contents += b"data" + struct.pack("<I", len(samples)) + samples
    return b"RIFF" + struct.pack("<I", len(contents)) + contents


def expected_output(file, stamp, bits=24, **settings):
    """The output for a source file's bytes; None when the source must be refused."""
    source = Recording(file)
    if not source.is_supported:
        return None
    values = decoded_samples(source, **settings)
    samples = stored24(values) if bits == 24 else stored_floats(values)
    return output_file(samples, bits, stamp, source.channels, source.rate, source.text(0, 256),
                       source.text(256, 32), source.text(288, 32), source.text(348, 64))


def stamp_of(output):
    return output[376:394]


def moment_of(output, offset_from_utc):
    """The output's date and time, read as local time at the given distance from UTC."""
    local = datetime.strptime(stamp_of(output).decode("ascii"), "%Y-%m-%d%H:%M:%S")
    return local.replace(tzinfo=timezone.utc) - offset_from_utc
