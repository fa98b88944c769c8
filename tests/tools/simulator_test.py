"""h8-simulator without any MIDI: what it prints, takes from standard input, and how it ends."""

import array
import fcntl
import mmap
import os
import random
import re
import signal
import subprocess
import termios
import threading
import time
import unittest

from support import PATIENCE, ToolTest, run

SIMULATOR = os.environ["H8_SIMULATOR"]
PAGE = mmap.PAGESIZE

IDENTITY_REQUEST = "in F0 7E 00 06 01 F7"
IDENTITY = ("-> F0 7E 00 06 02 52 00 00 00 30 31 30 30 00 F7"
            "   identity: 52 00 00 00, version 0100")


def simulate(text="", *options):
    """Runs it to the end of its standard input."""
    data = text if isinstance(text, bytes) else text.encode()
    return run(SIMULATOR, "--no-midi", *options, stdin=None, input=data)


def untimed(output):
    """The lines without their times, between "ready" and "end"."""
    lines = output.decode().splitlines()
    for line in lines:
        assert re.match(r"\d+\.\d{3} (<-|->|--) ", line), line
    texts = [line.split(" ", 1)[1] for line in lines]
    assert texts[0] == "-- ready: no MIDI", texts
    return texts[1:-1]


class Running:
    """A simulator that goes on, with its lines as they come."""

    def __init__(self, test, *options, **streams):
        streams.setdefault("stdin", subprocess.PIPE)
        self.process = subprocess.Popen([SIMULATOR, "--no-midi", *options], text=True,
                                        stdout=subprocess.PIPE, stderr=subprocess.PIPE, **streams)
        test.addCleanup(self.clean_up)
        self.guard = threading.Timer(PATIENCE, self.process.kill)
        self.guard.start()

    def clean_up(self):
        self.guard.cancel()
        self.process.kill()
        self.process.wait()
        for stream in (self.process.stdin, self.process.stdout, self.process.stderr):
            if stream:
                try:
                    stream.close()
                except BrokenPipeError:
                    pass

    def give(self, line):
        self.process.stdin.write(line + "\n")
        self.process.stdin.flush()

    def wait_for(self, text):
        """The lines up to the one that holds the text."""
        lines = []
        for line in self.process.stdout:
            lines.append(line)
            if text in line:
                return lines
        raise AssertionError(f"ended without {text!r} after {lines}")

    def wait_for_end(self):
        status = self.process.wait(PATIENCE)
        return status, self.process.stdout.read().splitlines()[-1].split(" ", 1)[1]


class Exchanges(ToolTest):
    def assert_printed(self, text, *expected, options=()):
        result = simulate(text, *options)
        self.assert_done(result)
        self.assertEqual(untimed(result.stdout), list(expected))

    def test_request_and_reply(self):
        self.assert_printed(IDENTITY_REQUEST + "\n",
                            "<- F0 7E 00 06 01 F7   identity request", IDENTITY)

    def test_connecting_from_beginning_to_end(self):
        requests = ("F0 7E 00 06 01 F7", "F0 52 00 00 52 F7", "F0 52 00 00 10 01 F7",
                    "F0 52 00 00 67 01 F7", "F0 52 00 00 46 01 F7", "F0 52 00 00 46 02 F7",
                    "F0 52 00 00 31 00 14 1A 03 05 09 07 02 F7")
        result = simulate("".join(f"in {request}\n" for request in requests),
                          "--used", "8MB", "--max", "119GB", "--remaining", "01:02:03")
        self.assert_done(result)
        replies = [line[3:].split("   ")[0] for line in untimed(result.stdout)
                   if line.startswith("-> ")]
        self.assertEqual(replies, [
            "F0 7E 00 06 02 52 00 00 00 30 31 30 30 00 F7",
            "F0 52 00 00 00 15 F7",
            "F0 52 00 00 11 01 30 31 30 30 F7",
            "F0 52 00 00 67 00 01 01 02 03 00 00 00 04 00 00 00 00 00 00"
            " 00 00 00 00 5C 03 00 00 00 00 F7",
            "F0 52 00 00 45 01 00 F7",
            "F0 52 00 00 45 02 01 F7",
            "F0 52 00 00 00 0F F7"])

    def test_last_line_needs_no_break(self):
        self.assert_printed(IDENTITY_REQUEST,
                            "<- F0 7E 00 06 01 F7   identity request", IDENTITY)

    def test_options_set_the_state(self):
        result = simulate("status", "--card", "out", "--used", "1 KB", "--max=2KB",
                          "--remaining=1:2:3", "--firmware", "A123", "--id", "0102 0304",
                          "--battery", "2", "--power-off", "3")
        self.assert_done(result)
        self.assertEqual(untimed(result.stdout)[:8], [
            "-- id 01 02 03 04", "-- version A123", "-- card 0", "-- remaining 01:02:03",
            "-- used 1024", "-- max 2048", "-- battery 2", "-- power-off 3"])

    def test_options_order_faults(self):
        result = simulate("status", "--silent", "3", "--split", "4", "--merge", "--twice",
                          "--delay", "50", "--seed", "9", "--do", "length 2 -1", "--do=silent all")
        self.assert_done(result)
        self.assertEqual(untimed(result.stdout)[-1],
                         "-- faults silent all, silent 3, length 2 -1, twice, merge, split 4, "
                         "delay 50")

    def test_commands_of_options_are_executed_before_standard_input(self):
        self.assert_printed("# nothing\n", "<- F0 7E 00 06 01 F7   identity request", IDENTITY,
                            options=("--do", IDENTITY_REQUEST))

    def test_unknown_command_gives_one_line_on_standard_error(self):
        result = simulate("reboot\x1b[2J now\nstatus\n")
        self.assertEqual(result.stderr,
                         b"h8-simulator: unknown command, help lists them: reboot?[2J\n")
        self.assertEqual(result.returncode, 0)
        self.assertEqual(len(untimed(result.stdout)), 11)

    def test_help_names_every_command_of_the_manual(self):
        manual = os.path.join(os.environ["H8_SOURCE_DIR"], "docs/man/h8-simulator.1")
        with open(manual, encoding="utf-8") as page:
            commands = page.read().split(".Sh COMMANDS")[1].split(".Sh EXIT")[0]
        documented = set(re.findall(r"^\.It Cm ([a-z-]+)", commands, re.MULTILINE))
        result = simulate("help")
        self.assert_done(result)
        listed = {line.split()[1] for line in untimed(result.stdout)}
        self.assertEqual(listed, documented)

    def test_quit_leaves_the_rest_of_the_input(self):
        result = simulate("quit\nreport\n")
        self.assert_done(result)
        self.assertRegex(result.stdout, rb"\A\S+ -- ready: no MIDI\n\S+ -- end: quit\n\Z")


class Input(ToolTest):
    def test_random_bytes_do_no_harm(self):
        source = random.Random(1)
        words = [b"card", b"send", b"in", b"F0", b"F7", b"remaining", b"1:2:3", b"7.5GB", b"length",
                 b"silent", b"version", b"9", b"-1", b"\n", b"\n", b" ", b"\0", b"\xff", b"\r\n"]
        text = b"".join(source.choice(words) + b" " * source.randrange(2) for _ in range(20000))
        text += bytes(source.randrange(256) for _ in range(200000))
        result = simulate(text.replace(b"quit", b""))
        self.assertEqual(result.returncode, 0)
        self.assertTrue(result.stdout.endswith(b"-- end: end of input\n"))
        for line in result.stderr.splitlines():
            self.assertRegex(line, rb"\Ah8-simulator: [ -~]+\Z")

    def test_line_without_end(self):
        result = simulate(b"x" * 5_000_000 + b"\nquit\n")
        self.assertEqual(result.stderr, b"h8-simulator: line too long\n")
        self.assertTrue(result.stdout.endswith(b"-- end: quit\n"))

    def test_long_message_is_sent_and_shown_short(self):
        result = simulate("send F0 " + "11 " * 19998 + "F7\n")
        self.assert_done(result)
        self.assertEqual(untimed(result.stdout),
                         ["-> F0" + 63 * " 11" + " ... (20000 bytes)   unknown"])

    def test_folder_as_standard_input_is_its_end(self):
        with open_folder(self.folder) as folder:
            result = run(SIMULATOR, "--no-midi", stdin=folder)
        self.assert_done(result)
        self.assertEqual(untimed(result.stdout), [])

    def test_closed_standard_input_is_its_end(self):
        result = run(SIMULATOR, "--no-midi", stdin=None, preexec_fn=lambda: os.close(0))
        self.assert_done(result)
        self.assertEqual(untimed(result.stdout), [])

    def test_file_as_standard_input(self):
        script = self.write("script", b"card out\nstatus\n")
        with script.open("rb") as file:
            result = run(SIMULATOR, "--no-midi", stdin=file)
        self.assert_done(result)
        self.assertIn("-- card 0", untimed(result.stdout))


class open_folder:
    """A descriptor of a folder, which can't be read."""

    def __init__(self, path):
        self.path = path

    def __enter__(self):
        self.descriptor = os.open(self.path, os.O_RDONLY | os.O_DIRECTORY)
        return self.descriptor

    def __exit__(self, *_):
        os.close(self.descriptor)


class Lines(ToolTest):
    """A script that waits for lines."""

    def test_every_line_comes_at_once(self):
        simulator = Running(self)
        simulator.wait_for("-- ready: no MIDI")
        simulator.give(IDENTITY_REQUEST)
        self.assertIn("<- F0 7E 00 06 01 F7   identity request",
                      simulator.wait_for(IDENTITY)[0])

    def test_delayed_reply_is_late(self):
        simulator = Running(self, "--delay", "300")
        simulator.give(IDENTITY_REQUEST)
        request, reply = simulator.wait_for(IDENTITY)[-2:]
        self.assertGreaterEqual(float(reply.split()[0]), float(request.split()[0]) + 0.299)

    def test_reports_come_by_themselves(self):
        simulator = Running(self, "--report-every", "0.05")
        for _ in range(3):
            simulator.wait_for("card state: card 1")

    def test_commands_change_what_is_reported(self):
        simulator = Running(self, "--report-every", "0.05")
        simulator.give("card out")
        simulator.wait_for("card state: no card")


class Ends(ToolTest):
    def test_end_of_input(self):
        simulator = Running(self)
        simulator.process.stdin.close()
        self.assertEqual(simulator.wait_for_end(), (0, "-- end: end of input"))

    def test_interrupts(self):
        for number in (signal.SIGINT, signal.SIGTERM):
            with self.subTest(signal=number):
                simulator = Running(self)
                simulator.wait_for("ready")
                simulator.process.send_signal(number)
                self.assertEqual(simulator.wait_for_end(), (0, "-- end: interrupted"))

    def test_daemon_outlives_its_input(self):
        simulator = Running(self, "--daemon", "--report-every", "0.05", stdin=subprocess.DEVNULL)
        for _ in range(3):
            simulator.wait_for("card state")
        simulator.process.terminate()
        simulator.wait_for("-- end: interrupted")
        self.assertEqual(simulator.process.wait(PATIENCE), 0)

    def test_daemon_does_not_turn_in_circles_at_the_end_of_its_input(self):
        simulator = Running(self, "--daemon", "--do", "report every 1", stdin=subprocess.DEVNULL)
        simulator.wait_for("card state")
        before = self.seconds_of(simulator.process)
        simulator.wait_for("card state")
        self.assertLess(self.seconds_of(simulator.process) - before, 0.5)

    @staticmethod
    def seconds_of(process):
        """The processor's time that the process has taken."""
        with open(f"/proc/{process.pid}/stat", encoding="ascii") as file:
            fields = file.read().rsplit(")", 1)[1].split()
        return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")

    def test_reader_that_goes_away_does_no_harm(self):
        simulator = Running(self)
        simulator.wait_for("ready")
        simulator.process.stdout.close()
        simulator.give("report\nreport")
        simulator.give("quit")
        self.assertEqual(simulator.process.wait(PATIENCE), 0)

    def test_interrupt_ends_it_while_nobody_reads_its_lines(self):
        simulator = Running(self, "--do", "report every 0.001", pipesize=2 * PAGE)
        simulator.wait_for("ready")
        wait_until_full(simulator.process.stdout)
        simulator.process.terminate()
        self.assertEqual(simulator.process.wait(PATIENCE), 0)


def wait_until_full(pipe):
    """Until both pages of a pipe are in use."""
    end = time.monotonic() + PATIENCE
    unread = array.array("i", [0])
    while unread[0] <= PAGE:
        assert time.monotonic() < end, f"{unread[0]} bytes wait"
        time.sleep(0.01)
        fcntl.ioctl(pipe, termios.FIONREAD, unread)


class Usage(ToolTest):
    def test_wrong_values(self):
        for options in (("--card=on",), ("--used=x",), ("--max=-1",), ("--remaining=1:2",),
                        ("--firmware=12345",), ("--id=52",), ("--battery=256",), ("--power-off=",),
                        ("--report-every=0",), ("--silent=0",), ("--split=-1",), ("--delay=x",),
                        ("--seed=-1",), ("--do=reboot",), ("--do", "split x"), ("--unknown",),
                        ("--raw=/dev/snd/midiC1D0",), ("--name=x",), ("take.wav",)):
            with self.subTest(options=options):
                self.assert_wrong_usage(simulate("", *options))

    def test_port_and_device_exclude_each_other(self):
        self.assert_wrong_usage(run(SIMULATOR, "--name=x", "--raw=y"))

    def test_device_needs_a_name(self):
        self.assert_wrong_usage(run(SIMULATOR, "--raw="))

    def test_device_that_is_not_there(self):
        result = run(SIMULATOR, "--raw", self.folder / "missing")
        self.assertEqual(result.returncode, 1)
        self.assertRegex(result.stderr.decode(),
                         rf"\Ah8-simulator: {re.escape(str(self.folder))}/missing: .+\n\Z")
        self.assertEqual(result.stdout, b"")

    def test_help_lists_every_option(self):
        result = simulate("", "--help")
        self.assert_done(result)
        listed = re.findall(r"^  +(?:-\w, *)?(--[a-z-]+)", result.stdout.decode(), re.MULTILINE)
        self.assertEqual(set(listed), {
            "--help", "--version", "--name", "--raw", "--no-midi", "--daemon", "--card", "--used",
            "--max", "--remaining", "--firmware", "--id", "--battery", "--power-off",
            "--report-every", "--silent", "--split", "--merge", "--twice", "--delay", "--seed",
            "--do"})

    def test_version(self):
        result = simulate("", "--version")
        self.assert_done(result)
        self.assertRegex(result.stdout, rb"\Ah8-simulator \d+\.\d+\.\d+\n\Z")


if __name__ == "__main__":
    unittest.main()
