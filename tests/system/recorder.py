"""What the scenarios with a recorder share: checks, programs that run beside them, and a recorder (a USB
gadget with h8-simulator on its own side) that is plugged in and out."""

import contextlib
import os
import queue
import re
import signal
import subprocess
import threading
import time
from pathlib import Path

SYSTEM = Path(__file__).resolve().parent
BUILD = Path(os.environ["H8_BUILD_DIR"])
TOOLS = BUILD / "tools"
GADGET = SYSTEM / "gadget"
CONTROLLER = Path("/sys/kernel/config/usb_gadget/recorder0/UDC")
SEQUENCER = Path("/proc/asound/seq/clients")
PATIENCE = 20  # seconds; whatever takes as long has failed

failures = 0
sides = []  # the programs on both sides of the cable, in the part that runs


def check(name, is_good):
    """Prints the result; the logs of all sides if it is bad."""
    global failures
    print(f"{'ok' if is_good else 'FAILED'} {name}", flush=True)
    if not is_good:
        failures += 1
        for side in sides:
            print(f"  -- {side.name}", *side.everything(), sep="\n     ", flush=True)
    return is_good


class Program:
    """A program that runs beside the checks, line by line."""

    def __init__(self, *command, **environment):
        self.name = " ".join([Path(command[0]).name, *map(str, command[1:])])
        self.lines = []  # of those read so far
        self._log = []  # of both outputs, with times
        self._news = queue.Queue()
        self._process = subprocess.Popen(
            list(map(str, command)), stdin=subprocess.PIPE, stdout=subprocess.PIPE,
            stderr=subprocess.PIPE, text=True, env={**os.environ, **environment})
        threading.Thread(target=self._read, args=(self._process.stdout, True), daemon=True).start()
        threading.Thread(target=self._read, args=(self._process.stderr, False), daemon=True).start()
        sides.append(self)

    def _read(self, stream, is_news):
        for line in stream:
            self._log.append(f"{time.monotonic():9.3f} {line.rstrip()}")
            if is_news:
                self._news.put(line.rstrip("\n"))
        if is_news:
            self._news.put(None)

    def everything(self):
        return list(self._log)

    @property
    def pid(self):
        return self._process.pid

    def write(self, line):
        self._process.stdin.write(line + "\n")
        self._process.stdin.flush()

    def line(self, pattern, patience=PATIENCE):
        """The next line in which the pattern is found, or None."""
        deadline = time.monotonic() + patience
        while (left := deadline - time.monotonic()) > 0:
            try:
                line = self._news.get(timeout=left)
            except queue.Empty:
                return None
            if line is None:
                self._news.put(None)
                return None
            self.lines.append(line)
            if re.search(pattern, line):
                return line
        return None

    @contextlib.contextmanager
    def asleep(self):
        """Lets the program notice only afterwards what happens meanwhile, all at once."""
        self._process.send_signal(signal.SIGSTOP)
        try:
            yield
        finally:
            self._process.send_signal(signal.SIGCONT)

    def is_running(self):
        return self._process.poll() is None

    def interrupt(self):
        self._process.send_signal(signal.SIGINT)

    def exit_status(self):
        return self._process.wait(PATIENCE)

    def end(self):
        self._process.terminate()
        try:
            self._process.wait(PATIENCE)
        except subprocess.TimeoutExpired:
            self._process.kill()
            self._process.wait()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.end()


def gadget(*arguments):
    return subprocess.run([GADGET, *arguments], check=True, stdout=subprocess.PIPE,
                          text=True).stdout.strip()


def simulator(device, *options):
    program = Program(TOOLS / "h8-simulator/h8-simulator", "--raw", device, *options)
    assert program.line("-- ready"), "the simulator doesn't start"
    return program


def plugged(*options, how="plug", name="H8 ORLO"):
    return simulator(gadget(how, name), *options)


def plugged_into(computer, *options):
    """The recorder answers from the first moment on, as a real one does, however slow this machine is."""
    with computer.asleep():
        return plugged(*options)


def push_in():
    """What `gadget plug` has made is plugged in again."""
    CONTROLLER.write_text("dummy_udc.0\n")
    wait_until(lambda: '"H8 ORLO MIDI 1"' in SEQUENCER.read_text())


def pull_out():
    CONTROLLER.write_text("\n")
    wait_until(lambda: '"H8 ORLO MIDI 1"' not in SEQUENCER.read_text())


def wait_until(holds):
    deadline = time.monotonic() + PATIENCE
    while not holds():
        assert time.monotonic() < deadline, "the recorder doesn't come or go"
        time.sleep(0.01)


def run_parts(parts, wanted, *programs):
    """Runs the parts (functions) of a scenario, or those of the wanted names; ends the process. The programs
    run through all of them."""
    named = {part.__name__: part for part in parts}
    for name in wanted:
        if name not in named:
            raise SystemExit(f"no part is called {name!r}; there are: {' '.join(named)}")
    for name, part in named.items():
        if not wanted or name in wanted:
            begin = time.monotonic()
            sides[:] = programs
            try:
                part()
            except Exception as problem:  # what comes next would find the recorder still plugged in
                check(f"{name}: {problem!r}", False)
                break
            print(f"   {name}: {time.monotonic() - begin:.0f} s", flush=True)
    raise SystemExit(1 if failures else 0)
