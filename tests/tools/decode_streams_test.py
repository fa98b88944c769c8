"""Standard streams that are closed, broken, full or a terminal."""

import os
import select
import subprocess
import unittest

from support import DECODE, PATIENCE, DecodeTest, STEREO24, decode, recording


def closing(*streams):
    def close():
        for stream in streams:
            os.close(stream)
    return close


class StreamsTest(DecodeTest):
    """Decodes a good, a bad and another good file; the good ones must come out untouched."""

    def setUp(self):
        super().setUp()
        self.source = recording(STEREO24)
        for name in ("one.wav", "two.wav"):
            self.write(name, self.source)
        self.write("bad.wav", b"no recording")

    def decode_all(self, **options):
        return decode("one.wav", "bad.wav", "two.wav", cwd=self.folder, **options)

    def assert_good_files_done(self, result):
        self.assertEqual(result.returncode, 1)
        self.assertEqual(self.names(), ["bad.wav", "one.wav", "one_Decode.WAV", "two.wav",
                                        "two_Decode.WAV"])
        self.assert_decoded(self.folder / "one_Decode.WAV", self.source)
        self.assert_decoded(self.folder / "two_Decode.WAV", self.source)


class ClosedStreams(StreamsTest):
    """A file opened while a stream is closed gets the stream's number, and then its messages."""

    def test_each_stream_closed_alone(self):
        for stream in (0, 1, 2):
            with self.subTest(stream=stream):
                result = self.decode_all(preexec_fn=closing(stream))
                self.assert_good_files_done(result)
                for name in ("one_Decode.WAV", "two_Decode.WAV"):
                    (self.folder / name).unlink()

    def test_all_streams_closed(self):
        self.assert_good_files_done(self.decode_all(preexec_fn=closing(0, 1, 2)))

    def test_parallel_jobs_with_all_streams_closed(self):
        """One file is told to be done while others stand open."""
        names = [f"{k}.wav" for k in range(80)]
        source = recording(STEREO24 * 10000)
        for name in names:
            self.write(name, source)
        (self.folder / "out").mkdir()
        self.assert_done(decode("--output", "right.wav", names[0], cwd=self.folder))
        right = (self.folder / "right.wav").read_bytes()
        result = decode("--jobs", 4, "--output-dir", "out", *names, cwd=self.folder,
                        preexec_fn=closing(0, 1, 2))
        self.assertEqual(result.returncode, 0)
        outputs = [path.read_bytes() for path in (self.folder / "out").iterdir()]
        self.assertEqual(len(outputs), 80)
        for output in outputs:
            self.assert_bytes(output[:376] + output[394:], right[:376] + right[394:])

    def test_failures_are_still_told_with_standard_output_closed(self):
        result = self.decode_all(preexec_fn=closing(1))
        self.assert_failed(result, "bad.wav: File not supported.")

    def test_information_with_all_streams_closed(self):
        before = self.names()
        result = decode("--info", "one.wav", cwd=self.folder, preexec_fn=closing(0, 1, 2))
        self.assertIn(result.returncode, (0, 1))
        self.assertEqual(self.names(), before)

    def test_wrong_usage_with_all_streams_closed(self):
        result = decode("--angle", "200", "one.wav", cwd=self.folder, preexec_fn=closing(0, 1, 2))
        self.assertEqual(result.returncode, 2)


class BrokenStreams(StreamsTest):
    def test_standard_output_is_a_broken_pipe(self):
        reader, writer = os.pipe()
        os.close(reader)
        self.addCleanup(os.close, writer)
        result = self.decode_all(stdout=writer)
        self.assert_good_files_done(result)
        self.assert_failed(result, "bad.wav: File not supported.")

    def test_both_outputs_are_a_broken_pipe(self):
        reader, writer = os.pipe()
        os.close(reader)
        self.addCleanup(os.close, writer)
        self.assert_good_files_done(self.decode_all(stdout=writer, stderr=writer))

    def test_both_outputs_are_full(self):
        with open("/dev/full", "wb") as full:
            self.assert_good_files_done(self.decode_all(stdout=full, stderr=full))

    def test_lost_messages_are_no_failure_of_the_files(self):
        with open("/dev/full", "wb") as full:
            self.assert_done(decode("one.wav", cwd=self.folder, stdout=full))

    def test_lost_information_is_a_failure(self):
        with open("/dev/full", "wb") as full:
            result = decode("--info", "one.wav", cwd=self.folder, stdout=full)
        self.assertEqual(result.returncode, 1)


class Screen:
    """What a terminal shows after all that was written to it."""

    def __init__(self, written):
        self.lines, self.column = [""], 0
        text = written.decode()
        while text:
            if text.startswith("\x1b[K"):
                self.lines[-1] = self.lines[-1][:self.column]
                text = text[3:]
                continue
            if text[0] == "\r":
                self.column = 0
            elif text[0] == "\n":
                self.lines.append("")
                self.column = 0
            else:
                line = self.lines[-1].ljust(self.column)
                self.lines[-1] = line[:self.column] + text[0] + line[self.column + 1:]
                self.column += 1
            text = text[1:]


class Terminals(StreamsTest):
    def decode_on_terminal(self, *arguments, stderr_too=False):
        """What was written to the terminal, to standard error, and the exit status."""
        master, slave = os.openpty()
        with subprocess.Popen([DECODE, *arguments], cwd=self.folder, stdin=subprocess.DEVNULL,
                              stdout=slave, stderr=slave if stderr_too else subprocess.PIPE,
                              close_fds=True) as process:
            os.close(slave)
            written = b""
            try:
                while select.select([master], [], [], PATIENCE)[0]:
                    written += os.read(master, 65536)
            except OSError:
                pass  # the program's end of the terminal is closed
            os.close(master)
            _, errors = process.communicate(timeout=PATIENCE)
        return written, errors, process.returncode

    def test_progress_is_drawn_and_taken_away_again(self):
        written, errors, status = self.decode_on_terminal("one.wav", "two.wav")
        self.assertEqual((errors, status), (b"", 0))
        self.assertIn(b"\r[", written)
        self.assertIn(b"100 %  2 of 2 files", written)
        screen = Screen(written)
        self.assertEqual(screen.lines, ["one.wav -> one_Decode.WAV",
                                        "two.wav -> two_Decode.WAV", ""])
        self.assertEqual(screen.column, 0)

    def test_failures_stand_on_lines_of_their_own(self):
        written, _, status = self.decode_on_terminal("--jobs", "1", "one.wav", "bad.wav", "two.wav",
                                                     stderr_too=True)
        self.assertEqual(status, 1)
        self.assertEqual(Screen(written).lines, ["one.wav -> one_Decode.WAV",
                                                 "bad.wav: File not supported.",
                                                 "two.wav -> two_Decode.WAV", ""])

    def test_information_on_a_terminal_has_no_progress(self):
        written, _, status = self.decode_on_terminal("--info", "one.wav")
        self.assertEqual(status, 0)
        self.assertEqual(written.replace(b"\r\n", b"\n").count(b"\r"), 0)

    def test_no_progress_where_there_is_no_terminal(self):
        result = self.decode_all()
        self.assertEqual(result.stdout, b"one.wav -> one_Decode.WAV\ntwo.wav -> two_Decode.WAV\n")
        self.assert_failed(result, "bad.wav: File not supported.")


if __name__ == "__main__":
    unittest.main()
