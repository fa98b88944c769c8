"""A desktop of a test's own: display, window manager, buses and sound, with nothing of the user's."""

import ctypes
import os
import shutil
import signal
import socket
import subprocess
import tempfile
import time
from pathlib import Path

from gi.repository import GLib

# A guard against what never happens, far beyond what anything takes.
PATIENCE = 60.0

# No key or button means anything to the window manager: each reaches the application at once.
WINDOW_MANAGER_SETTINGS = """<?xml version="1.0" encoding="UTF-8"?>
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <focus><focusNew>yes</focusNew><followMouse>no</followMouse></focus>
  <desktops><number>1</number><popupTime>0</popupTime></desktops>
  <keyboard></keyboard>
  <mouse></mouse>
</openbox_config>
"""

USER = ("XDG_", "QT_", "DBUS_", "AT_SPI_", "WAYLAND_", "GTK_", "PULSE_", "DESKTOP_SESSION",
        "SESSION_MANAGER", "XAUTHORITY", "XMODIFIERS")


def wait_for(question, what):
    """Asks until the answer is something true, and returns it."""
    limit = time.monotonic() + PATIENCE
    while True:
        begin = time.monotonic()
        problem = None
        try:
            answer = question()
            if answer:
                return answer
        except GLib.Error as error:  # what is asked of on the bus may go away meanwhile
            problem = error
        end = time.monotonic()
        if end > limit:
            raise AssertionError(f"{what} takes too long") from problem
        # Where asking is slow, whoever is asked needs time for other things.
        time.sleep(max(0.02, end - begin))


def child(command, **options):
    """A program that ends with this one, whatever way this one ends."""
    return subprocess.Popen(["setpriv", "--pdeathsig", "KILL", *map(str, command)], **options)


def adopt_orphans():
    """What the programs that are started here leave behind becomes this process's own."""
    become_subreaper = 36
    if ctypes.CDLL(None, use_errno=True).prctl(become_subreaper, 1, 0, 0, 0) != 0:
        raise OSError(ctypes.get_errno(), "prctl")


def end_all_children():
    while True:
        children = Path("/proc/self/task", str(os.getpid()), "children").read_text().split()
        if not children:
            return
        for process in map(int, children):
            os.kill(process, signal.SIGKILL)
            os.waitpid(process, 0)


class Session:
    """The servers, from start() to end(); `environment` is for the programs that are to find them.

    The environment of this process becomes the same, because the accessibility bus's library reads it.
    """

    def __init__(self, screen="1280x800", with_sound=True):
        self.folder = Path(tempfile.mkdtemp(prefix="deckmate-"))
        self.screen = screen
        self.with_sound = with_sound
        self.environment = self._without_user()

    def start(self):
        adopt_orphans()
        self._start_display()
        self._start_bus()
        if self.with_sound:
            self.start_sound()
        os.environ.clear()
        os.environ.update(self.environment)

    def end(self):
        end_all_children()
        shutil.rmtree(self.folder)

    def capture(self, file):
        """Records what is heard, as 32-bit floats; the caller ends it."""
        return self._start(["parec", "--raw", "--device=h8.monitor", "--format=float32le",
                            "--channels=2", "--rate=48000", "--latency-msec=20"], stdout=file)

    def stop_sound(self):
        """The server is gone at once, as after a crash."""
        self.sound_server.kill()
        self.sound_server.wait()

    def start_sound(self):
        """At the address that the programs know, also after stop_sound()."""
        address = self.folder / "sound"
        # No rewinds: else an idle sink renders two seconds ahead.
        self.sound_server = self._start(
            ["pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no",
             "--high-priority=no", "--disable-shm", "--realtime=no", "--log-level=error",
             "--load", "module-null-sink sink_name=h8 channels=2 format=float32le norewinds=1 "
             "rate=48000",
             "--load", f"module-native-protocol-unix auth-anonymous=1 socket={address}"])

        def accepts():
            with socket.socket(socket.AF_UNIX) as connection:
                return connection.connect_ex(str(address)) == 0
        wait_for(accepts, "starting a sound server")

    def _without_user(self):
        environment = {name: value for name, value in os.environ.items()
                       if not name.startswith(USER) or name == "QT_SCALE_FACTOR"}
        for name in ("HOME", "XDG_RUNTIME_DIR", "XDG_CONFIG_HOME", "XDG_CACHE_HOME",
                     "XDG_DATA_HOME", "XDG_STATE_HOME", "PULSE_RUNTIME_PATH", "PULSE_STATE_PATH"):
            environment[name] = str(self.folder)
        environment.update(
            LC_ALL="C.UTF-8", GSETTINGS_BACKEND="memory", QT_QPA_PLATFORM="xcb",
            QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1",
            PULSE_SERVER=f"unix:{self.folder / 'sound'}",
            # Neither a sound card nor a recorder of this machine.
            ALSA_CONFIG_PATH="/dev/null", JACK_NO_START_SERVER="1", AUDIODEVICE="none")
        return environment

    def _start(self, command, **options):
        return child(command, env=self.environment, stdin=subprocess.DEVNULL,
                     stderr=subprocess.DEVNULL, **options)

    def _start_display(self):
        number = self._answer_of(lambda fd: ["Xvfb", "-displayfd", fd, "-screen", "0",
                                             f"{self.screen}x24", "-nolisten", "tcp", "-noreset"])
        self.environment["DISPLAY"] = f":{number}"
        settings = self.folder / "openbox.xml"
        settings.write_text(WINDOW_MANAGER_SETTINGS)
        self._start(["openbox", "--sm-disable", "--config-file", settings])
        # A window that is there before the manager gets no focus.
        wait_for(lambda: subprocess.run(["xdotool", "get_num_desktops"], env=self.environment,
                                        check=False, stdout=subprocess.DEVNULL,
                                        stderr=subprocess.DEVNULL).returncode == 0,
                 "starting a window manager")

    def _start_bus(self):
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = self._answer_of(
            lambda fd: ["dbus-daemon", "--session", "--nofork", f"--print-address={fd}",
                        f"--address=unix:path={self.folder / 'bus'}"])

    def _answer_of(self, command):
        """The line that a server writes to the descriptor it is told, once it is ready."""
        reading, writing = os.pipe()
        self._start(command(str(writing)), pass_fds=[writing])
        os.close(writing)
        with os.fdopen(reading) as answer:
            line = answer.readline().strip()
        assert line, f"{command('N')[0]} doesn't start"
        return line
