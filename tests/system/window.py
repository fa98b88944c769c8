"""The application's window in the virtual machine, as its user sees it and works it: what the scenarios
need beside the application's own tests, on which this is built."""

import contextlib
import os
import signal
import subprocess
import sys
from dataclasses import dataclass
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "desktop/application"))
from application import Application, children, everything, has, role
from recorder import BUILD, TOOLS
from session import Session, child
import hands
import session

TITLE = "ORLO H8 Deckmate"
MENUS = ("Battery", "Auto power off")
CAPTIONS = {*MENUS, "Remaining"}
COVERED = ": no recorder is connected"
PANEL = (12, 408, 300, 220)  # x, y, width and height in the window's content
PATIENCE = 90  # seconds; whatever takes as long has failed
session.PATIENCE = PATIENCE

# The sequencer, and the loop-back card without anything between: what is played on it is not converted.
ALSA_SETTINGS = """</usr/share/alsa/alsa.conf>
pcm.!default { type hw card Loopback device 0 }
"""


def soon(holds):
    """Whether it does before patience ends."""
    try:
        session.wait_for(holds, "")
    except AssertionError:
        return False
    return True


@dataclass(frozen=True)
class Panel:
    """What the device panel shows."""
    texts: tuple  # state, version, used and remaining
    menus: tuple  # of those that can be opened
    covers: tuple


class Window:
    """The application from its start to its end, with a display and buses of its own."""

    name = "orlo-h8-deckmate"

    def __init__(self, screen="1280x800"):
        self.session = Session(screen, with_sound=False)
        self.session.start()
        self.home = self.session.folder / "home"
        self.desktop = self.home / "Desktop"
        self.desktop.mkdir(parents=True)
        settings = self.session.folder / "asound.conf"
        settings.write_text(ALSA_SETTINGS)
        self.environment = {"HOME": str(self.home), "ALSA_CONFIG_PATH": str(settings)}

    def start(self):
        """Ends with the main window alone on the screen."""
        self.application = Application([BUILD / "src/app/orlo-h8-deckmate"], self.environment,
                                       self.home / "output")
        self.application.window("Introduction")
        hands.key("Return")
        self.application.wait_until_closed("Introduction")
        self.main = self.application.window(TITLE, "frame")
        self._find_panel()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.session.end()

    def everything(self):
        """For the report of a failure."""
        return [str(self.panel()), *self.application.output.read_text("utf-8", "replace").splitlines()]

    @contextlib.contextmanager
    def asleep(self):
        """Lets the application notice only afterwards what happens meanwhile, all at once."""
        self.application.process.send_signal(signal.SIGSTOP)
        try:
            yield
        finally:
            self.application.process.send_signal(signal.SIGCONT)

    def is_alive(self):
        """Whether it runs and answers."""
        return self.application.is_alive() and soon(lambda: has(self.main, "showing"))

    def quits(self):
        """By its key, well."""
        hands.key("ctrl+q")
        return self.application.wait_for_end() == 0

    # The device panel

    def _find_panel(self):
        """Once, because asking for every control takes seconds in an emulated machine. So the others are
        taken down as well, by the names that they have at first."""
        left, top = self.application.place(self.main, (0, 0))

        def is_inside(label):
            x, y = self.application.place(label)
            return 0 <= x - left - PANEL[0] < PANEL[2] and 0 <= y - top - PANEL[1] < PANEL[3]
        found = [(control, control.get_role(), control.get_name())
                 for control in everything(self.main)]
        self.labels = [control for control, kind, name in found
                       if kind == role("label") and name not in CAPTIONS and is_inside(control)]
        self.labels.sort(key=lambda label: self.application.place(label)[::-1])
        self.controls = {(kind, name): control for control, kind, name in found}
        self.menus = {name: control for control, kind, name in found if kind == role("combo box")}
        self.covers = {name.removesuffix(COVERED): control for control, kind, name in found
                       if kind == role("push button") and name.endswith(COVERED)}

    def panel(self):
        return Panel(tuple(label.get_name() for label in self.labels),
                     tuple(name for name, menu in self.menus.items() if has(menu, "enabled")),
                     tuple(name for name, cover in self.covers.items() if has(cover, "showing")))

    def shows(self, panel):
        """Whether it soon shows exactly this."""
        return soon(lambda: self.panel() == panel)

    def notice_opens(self, menu):
        """Whether a click on the cover of that menu opens the notice, which is closed then."""
        self.application.click(self.covers[menu])
        notice = self.application.window(TITLE)
        self.application.find(notice, "label", "No recorder connected")
        hands.key("Return")
        self.application.wait_until_closed(TITLE)
        self.main = self.application.window(TITLE, "frame")
        return True

    # Menus

    def menu_list(self, name):
        """The list of a menu, open or not."""
        return next(found for found in children(self.menus[name])
                    if found.get_role() == role("list"))

    def is_open(self, name):
        return has(self.menu_list(name), "showing")

    def open_menu(self, name):
        """Its items, and the one it has."""
        self.application.click(self.menus[name])
        assert soon(lambda: self.is_open(name)), f"the menu {name!r} doesn't open"
        items = list(children(self.menu_list(name)))
        return ([item.get_name() for item in items],
                [item.get_name() for item in items if has(item, "selected")])

    def choose(self, name, item):
        """An item of the open menu."""
        self.application.click(next(found for found in children(self.menu_list(name))
                                    if found.get_name() == item))
        assert soon(lambda: not self.is_open(name)), f"the menu {name!r} doesn't close"

    # Recordings

    def sample(self, name, seconds, *options):
        """A recording in the folder that is shown, raw mid/side unless told otherwise."""
        subprocess.run([TOOLS / "h8-sample/h8-sample", "--seconds", str(seconds), *options,
                        self.desktop / name], check=True)

    def control(self, kind, name):
        """The one that had this name when the window was new."""
        return self.controls[role(kind), name]

    def set(self, name, value):
        slider = self.control("slider", name)
        slider.set_current_value(value)
        assert soon(lambda: slider.get_current_value() == value), f"{name!r} doesn't become {value}"

    def open_recording(self, name):
        """The label that tells its name."""
        self.application.click(self.application.cell(self.control("table", "Recordings"), name), times=2)
        return self.application.find(self.main, "label", name)

    def is_stopped(self):
        """Whether what plays soon comes to its end."""
        return soon(lambda: self.control("push button", "Play").get_name() == "Play")

    def capture(self, file):
        """Records the sound card's other end, as 32-bit floats: 48 kHz, two channels. The caller ends it."""
        return child(["arecord", "-q", "-D", "hw:Loopback,1,0", "-t", "raw", "-f", "FLOAT_LE", "-r", "48000",
                      "-c", "2", "--buffer-time=2000000"],
                     env={**os.environ, **self.environment}, stdout=file)
