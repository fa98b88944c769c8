"""A program that is run as its users run it, and what assistive programs find of it."""

import contextlib
import os
import subprocess
from pathlib import Path

from gi.repository import GLib

import hands
from session import child, wait_for

FOLDER = Path(__file__).resolve().parent
SUPPRESSIONS = FOLDER.parent / "address.supp"


def atspi():
    """The accessibility bus's library; it joins the bus that the environment names by then."""
    import gi
    gi.require_version("Atspi", "2.0")
    from gi.repository import Atspi
    if not Atspi.is_initialized():
        Atspi.init()
        Atspi.set_timeout(30000, 60000)
        Atspi.get_desktop(0).set_cache_mask(Atspi.Cache.NONE)
    return Atspi


def role(name):
    """A role by its name, such as "push button"."""
    return getattr(atspi().Role, name.upper().replace(" ", "_"))


def has(control, state):
    return control.get_state_set().contains(getattr(atspi().StateType, state.upper()))


def children(parent):
    for index in range(parent.get_child_count()):
        found = parent.get_child_at_index(index)
        if found is not None:
            yield found


def everything(root):
    """What can be seen of a window, from the outside in. Long lists are not looked into."""
    yield root
    if has(root, "manages_descendants"):
        return
    for found in children(root):
        if has(found, "showing") or found.get_role() == role("menu bar"):
            yield from everything(found)


def write(field, text):
    """Puts a text in place of a field's own."""
    assert atspi().EditableText.set_text_contents(field, text), f"{described(field)} refuses"


def described(control):
    return f"{control.get_role_name()} {control.get_name()!r}"


def tree(root, depth=0):
    """The accessibility tree as text."""
    states = [name for name in ("showing", "enabled", "focusable", "focused", "checked", "selected")
              if has(root, name)]
    lines = ["  " * depth + f"{described(root)} ({' '.join(states)})"]
    if not has(root, "manages_descendants"):
        for found in children(root):
            lines += tree(found, depth + 1)
    return lines


class Application:
    """One running program. `environment` adds to this process's."""

    def __init__(self, command, environment, output):
        self.output = Path(output)
        with self.output.open("wb") as log:
            self.process = child(command, env=self._environment(environment),
                                 stdin=subprocess.DEVNULL, stdout=log, stderr=subprocess.STDOUT)

    @staticmethod
    def _environment(more):
        environment = {**os.environ, **more}
        # What the address sanitizer, where there is one, is to know of libraries built without it.
        environment["ASAN_OPTIONS"] = ":".join(
            filter(None, [environment.get("ASAN_OPTIONS"), f"suppressions={SUPPRESSIONS}"]))
        return environment

    # The process

    def is_alive(self):
        return self.process.poll() is None

    def wait_for_end(self):
        """The exit status."""
        wait_for(lambda: not self.is_alive(), "ending")
        return self.process.returncode

    def kill(self):
        if self.is_alive():
            self.process.kill()
        self.process.wait()

    def report(self):
        """What a reader of a failed test wants to know."""
        output = self.output.read_text("utf-8", "replace")
        lines = [f"The program's output (exit status {self.process.poll()}):", output]
        if self.is_alive():
            lines.append("The accessibility tree:")
            for window in self.windows():
                lines += tree(window)
        return "\n".join(lines)

    # What is on the screen

    def windows(self):
        assert self.is_alive(), "the program has ended"
        for application in children(atspi().get_desktop(0)):
            if application.get_process_id() == self.process.pid:
                return list(children(application))
        return []

    def shown(self, title, kind):
        """The window of that title and role, or None."""
        return next((window for window in self.windows() if window.get_name() == title
                     and window.get_role() == role(kind) and has(window, "showing")), None)

    def window(self, title, kind="dialog"):
        """The window of that title and role, once it is there and has the keyboard."""
        def look():
            window = self.shown(title, kind)
            return window if window is not None and has(window, "active") else None
        return wait_for(look, f"the {kind} {title!r}")

    def wait_until_closed(self, title, kind="dialog"):
        wait_for(lambda: self.shown(title, kind) is None, f"closing the {kind} {title!r}")

    def find(self, window, kind, name):
        """The control of that role and name, once it is there."""
        wanted = role(kind)

        def look():
            return next((found for found in everything(window)
                         if found.get_role() == wanted and found.get_name() == name), None)
        return wait_for(look, f"the {kind} {name!r}")

    def focused(self, window):
        """The control that has the keyboard. What a group of buttons says of itself doesn't count."""
        return next((found for found in everything(window)
                     if has(found, "focused") and has(found, "focusable")), None)

    def cell(self, table, name):
        """The row of a list, once it is there."""
        def look():
            return next((found for found in children(table)
                         if found.get_role() == role("table cell") and found.get_name() == name),
                        None)
        return wait_for(look, f"the row {name!r}")

    # What users of assistive programs do

    def press(self, control):
        """The first action of a control, which is what a click does."""
        assert control.get_n_actions() > 0, f"{described(control)} has no action"
        assert control.do_action(0), f"{described(control)} refuses"

    def entry(self, window, *names):
        """An entry of the menus, by the names on the way."""
        place = next(found for found in everything(window)
                     if found.get_role() == role("menu bar"))
        for name in names:
            place = next(found for found in children(place) if found.get_name() == name)
            if name != names[-1]:
                place = next((found for found in children(place)
                              if found.get_role() == role("popup menu")), place)
        return place

    def choose(self, window, *names):
        self.press(self.entry(window, *names))

    # What users of pointer and keys do

    @staticmethod
    def place(control, part=(0.5, 0.5)):
        """A point of a control on the screen, the middle unless told otherwise."""
        box = control.get_extents(atspi().CoordType.SCREEN)
        return round(box.x + box.width * part[0]), round(box.y + box.height * part[1])

    def click(self, control, part=(0.5, 0.5), times=1):
        hands.click(*self.place(control, part), times=times)

    def tab(self, window, *names):
        """Presses Tab once for each name, which is the one to have the keyboard then."""
        for name in names:
            hands.key("Tab")

            def arrives(name=name):
                focused = self.focused(window)
                return focused is not None and focused.get_name() == name
            wait_for(arrives, f"getting to {name!r} with Tab")


class Ears:
    """What the bus tells while it is listened to: of each event the control's name, the last part of the
    event's, and its detail, unless `note` takes something else down."""

    def __init__(self, event, note=lambda event: (event.source.get_name(),
                                                  event.type.rsplit(":")[-1], event.detail1)):
        self.event = event
        self.note = note
        self.heard = []

    def __enter__(self):
        self.listener = atspi().EventListener.new(self._hear)
        self.listener.register(self.event)
        return self

    def __exit__(self, *_):
        self.listener.deregister(self.event)

    def _hear(self, event):
        # What is told last of a window that closed can't be asked any more.
        with contextlib.suppress(GLib.Error):
            self.heard.append(self.note(event))

    def wait_for(self, *wanted):
        def hears():
            while GLib.MainContext.default().iteration(False):
                pass
            return wanted in self.heard
        wait_for(hears, f"hearing {self.event} of {wanted}")
