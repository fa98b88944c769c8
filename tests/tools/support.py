"""What the tests of the tools share: folders, runs of the tools, recordings."""

import ctypes
import os
import resource
import shutil
import struct
import subprocess
import tempfile
import unittest
from pathlib import Path

import reference

DECODE = os.environ["H8_DECODE"]
SAMPLE = os.environ["H8_SAMPLE"]

# A guard against programs that hang, far beyond what any run takes.
PATIENCE = 60

MIB = 2 ** 20

RAW_HISTORY = b"A=PCM,F=48000,W=24,M=stereo,T=H8;VERSION=1.00;MSRAW=ON;"
PLAIN_HISTORY = b"A=PCM,F=48000,W=24,M=stereo,T=H8;VERSION=1.00;MSRAW=OFF;"


def run(tool, *arguments, env=None, **options):
    """Runs a tool to its end; `env` adds to the environment, None removes a variable."""
    environment = dict(os.environ)
    for name, value in (env or {}).items():
        environment.pop(name, None)
        if value is not None:
            environment[name] = value
    options.setdefault("stdin", subprocess.DEVNULL)
    options.setdefault("stdout", subprocess.PIPE)
    options.setdefault("stderr", subprocess.PIPE)
    options.setdefault("timeout", PATIENCE)
    return subprocess.run([tool, *map(os.fspath, map(as_argument, arguments))],
                          env=environment, check=False, **options)


def as_argument(value):
    return value if isinstance(value, (str, bytes, os.PathLike)) else str(value)


def decode(*arguments, **options):
    return run(DECODE, *arguments, **options)


def sample(*arguments, **options):
    return run(SAMPLE, *arguments, **options)


def respect_permissions():
    """For preexec_fn: root, too, is held to the permissions of files and folders."""
    if os.geteuid() != 0:
        return
    drop_from_bounding_set, ignore_permissions, ignore_read_permissions = 24, 1, 2
    library = ctypes.CDLL(None, use_errno=True)
    for capability in (ignore_permissions, ignore_read_permissions):
        if library.prctl(drop_from_bounding_set, capability, 0, 0, 0) != 0:
            raise OSError(ctypes.get_errno(), "prctl")


def limiting(what, size):
    """For preexec_fn: a limit of the system's, such as resource.RLIMIT_AS."""
    return lambda: resource.setrlimit(what, (size, size))


def limiting_memory_to(size):
    return limiting(resource.RLIMIT_AS, size)


def chunk(identifier, body, size=None):
    declared = len(body) if size is None else size
    return identifier + struct.pack("<I", declared) + body


def riff(*chunks, size=None, identifier=b"RIFF", form=b"WAVE"):
    body = form + b"".join(chunks)
    declared = len(body) if size is None else size
    return identifier + struct.pack("<I", declared) + body


def junk(size=28):
    return chunk(b"JUNK", bytes(size))


def fmt(tag=1, channels=2, rate=48000, bits=24, byte_rate=None, block_align=None, size=None):
    frame = channels * bits // 8 if block_align is None else block_align
    speed = frame * rate if byte_rate is None else byte_rate
    body = struct.pack("<HHIIHH", tag, channels, rate, speed & 0xFFFFFFFF, frame & 0xFFFF, bits)
    return chunk(b"fmt ", body, size)


def bext_body(description=b"", originator=b"ORLO H8", reference=b"", date=b"2026-01-02",
              time=b"03:04:05", time_reference=0, version=1, umid=b"", history=RAW_HISTORY):
    texts = ((description, 256), (originator, 32), (reference, 32), (date, 10), (time, 8))
    body = b"".join(text.ljust(width, b"\0")[:width] for text, width in texts)
    body += struct.pack("<QH", time_reference, version) + umid.ljust(64, b"\0") + bytes(190)
    return body + history


def bext(**fields):
    return chunk(b"bext", bext_body(**fields))


def data(samples, size=None):
    return chunk(b"data", samples, size)


def recording(samples, raw=True, data_size=None, texts=None, **format_fields):
    """A whole recording as the device lays it out; raw mid/side unless told otherwise."""
    history = RAW_HISTORY if raw else PLAIN_HISTORY
    # An even history: an odd one would be followed by a pad byte, which is a test of its own.
    history += b"\0" * (len(history) % 2)
    return riff(junk(), bext(**{"history": history, **(texts or {})}), fmt(**format_fields),
                data(samples, data_size))


def pcm24(*values):
    return b"".join((value & 0xFFFFFF).to_bytes(3, "little") for value in values)


def pcm16(*values):
    return struct.pack(f"<{len(values)}h", *values)


def pcm32(*values):
    return struct.pack(f"<{len(values)}i", *values)


def floats(*values):
    return struct.pack(f"<{len(values)}f", *values)


# Small, quiet at every angle and gain the tests use, and no frame like another.
STEREO24 = pcm24(1000000, -500000, -2000001, 750000, 3, -1, 4194303, 65536, -1234567, -7654)


class ToolTest(unittest.TestCase):
    """A test with a folder of its own."""

    maxDiff = 2000

    def setUp(self):
        self.folder = Path(tempfile.mkdtemp(prefix="deckmate-"))
        self.addCleanup(shutil.rmtree, self.folder)

    def write(self, name, contents):
        path = self.folder / os.fsdecode(name)
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(contents)
        return path

    def names(self, folder=None):
        return sorted(os.listdir(folder or self.folder))

    def assert_done(self, result):
        self.assertEqual((result.returncode, result.stderr), (0, b""))

    def assert_failed(self, result, *lines):
        """One line per failing file, nothing else, and the exit status that goes with it."""
        self.assertEqual(result.stderr, b"".join(os.fsencode(line) + b"\n" for line in lines))
        self.assertEqual(result.returncode, 1)

    def assert_wrong_usage(self, result):
        self.assertEqual(result.returncode, 2, result.stderr)
        self.assertNotEqual(result.stderr, b"")
        self.assertEqual(result.stdout, b"")

    def assert_bytes(self, actual, expected, what=""):
        """Like assertEqual, but names the first difference instead of printing two files."""
        if actual == expected:
            return
        at = len(os.path.commonprefix([actual, expected]))
        self.fail(f"{what}{len(actual)} bytes, expected {len(expected)}; from byte {at}: "
                  f"{actual[at:at + 16].hex(' ')}, expected {expected[at:at + 16].hex(' ')}")


class DecodeTest(ToolTest):
    """A test that looks into decoded files."""

    def decoded(self, source, *options):
        """The output for a source's bytes, decoded alone and without complaint."""
        take = self.write("take.wav", source)
        target = self.folder / "decoded.wav"
        self.assert_done(decode("--force", "--output", target, *options, take))
        return target.read_bytes()

    def assert_output(self, output, samples, bits=24, **fields):
        """The output is a file of these sample bytes; its date and time are taken as they are."""
        stamp = reference.stamp_of(output)
        self.assert_bytes(output, reference.output_file(samples, bits, stamp, **fields))

    def assert_decoded(self, target, source, **settings):
        """The file at `target` is what a source's bytes must give."""
        output = target.read_bytes()
        stamp = reference.stamp_of(output)
        self.assert_bytes(output, reference.expected_output(source, stamp, **settings))
