"""What the tests of the application share: a session, homes, recordings, and a report of failures."""

import os
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

from application import Application, children, everything, role
from session import Session, wait_for
from support import pcm24, recording
import hands
import runner

PROGRAM = os.environ["H8_DECKMATE"]
SAMPLE = os.environ["H8_SAMPLE"]
TITLE = "ORLO H8 Deckmate"

session = Session()


class ApplicationTest(unittest.TestCase):
    """Each test has a user's home of its own, with a folder "Desktop"."""

    def setUp(self):
        self.home = Path(tempfile.mkdtemp(prefix="home-", dir=session.folder))
        self.addCleanup(shutil.rmtree, self.home)
        self.desktop = self.home / "Desktop"
        self.desktop.mkdir()
        self.application = None

    def start(self, *prefix, **environment):
        """A new process; its predecessor must have ended. `prefix` is a command that starts it, such
        as env with its options."""
        places = {"HOME": self.home}
        for name in ("CONFIG", "CACHE", "DATA", "STATE"):
            places[f"XDG_{name}_HOME"] = self.home / f".{name.lower()}"
        self.application = Application(
            [*prefix, PROGRAM],
            {**{name: str(place) for name, place in places.items()}, **environment},
            self.home / "output")
        self.addCleanup(self.application.kill)
        return self.application

    def start_beyond_introduction(self, *prefix, **environment):
        """The main window of a new process."""
        self.start(*prefix, **environment)
        self.application.window("Introduction")
        hands.key("Return")
        self.application.wait_until_closed("Introduction")
        return self.main_window()

    def main_window(self):
        return self.application.window(TITLE, "frame")

    def quit(self):
        """As a user does; the process must end well."""
        hands.key("ctrl+q")
        self.assertEqual(self.application.wait_for_end(), 0)

    # Recordings

    def sample(self, name, seconds, *options):
        """A recording in the Desktop folder, raw mid/side unless told otherwise."""
        path = self.desktop / name
        subprocess.run([SAMPLE, "--seconds", str(seconds), *options, path], check=True)
        return path

    def tone(self, name, seconds, level):
        """A recording in the Desktop folder, left and right alike, always at plus or minus `level`."""
        value = round(level * 2 ** 23)
        path = self.desktop / name
        path.write_bytes(recording(pcm24(value, value, -value, -value) * (24000 * seconds),
                                   raw=False))
        return path

    def open(self, window, name):
        """Opens a recording of the list by pointer; it plays then."""
        table = self.application.find(window, "table", "Recordings")
        self.application.click(self.application.cell(table, name), times=2)
        self.application.find(window, "label", name)

    # The list

    def names(self, window):
        table = self.application.find(window, "table", "Recordings")
        return [cell.get_name() for cell in children(table) if cell.get_role() == role("table cell")]

    def assert_folder(self, window, name, *names):
        """The browser shows a folder of that name with that content."""
        self.application.find(window, "push button", f"Folder {name}")
        wait_for(lambda: self.names(window) == list(names), f"listing {names}")

    # What a failed test tells

    def report(self):
        return self.application.report() if self.application is not None else ""


def run():
    runner.run(session)
