"""What assistive programs find of the controls, over an accessibility bus of the test's own."""

import os
import subprocess
import sys
import tempfile
import time
import unittest

PROGRAM = os.environ["H8_CONTROLS"]
FOLDER = os.path.dirname(os.path.abspath(__file__))
A_WHILE = 60.0

INSIDE = "inside the private session"


def child(command, **options):
    """A program that ends with this one, whatever way this one ends."""
    return subprocess.Popen(["setpriv", "--pdeathsig", "KILL", *command], **options)


def wait_for(question, what):
    limit = time.monotonic() + A_WHILE
    while time.monotonic() < limit:
        answer = question()
        if answer:
            return answer
        time.sleep(0.02)
    raise AssertionError(f"{what} takes too long")


def run_in_private_session(folder):
    """Runs this script again where there is nothing of the user's."""
    environment = {name: value for name, value in os.environ.items()
                   if not name.startswith(("XDG_", "QT_", "DBUS_", "AT_SPI_", "WAYLAND_", "GTK_"))}
    for name in ("HOME", "XDG_RUNTIME_DIR", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_DATA_HOME"):
        environment[name] = folder
    environment.update(LC_ALL="C.UTF-8", GSETTINGS_BACKEND="memory",
                       QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1")
    # What the sanitizers, where there are any, are to know of libraries that were built without them.
    for name, option in (("ASAN_OPTIONS", f"suppressions={FOLDER}/address.supp"),
                         ("TSAN_OPTIONS", "ignore_noninstrumented_modules=1")):
        environment[name] = ":".join(filter(None, [environment.get(name), option]))

    reading, writing = os.pipe()
    server = child(["Xvfb", "-displayfd", str(writing), "-screen", "0", "1600x1000x24", "-nolisten",
                    "tcp", "-noreset"], pass_fds=[writing], env=environment,
                   stderr=subprocess.DEVNULL)
    os.close(writing)
    with os.fdopen(reading) as number:
        environment["DISPLAY"] = ":" + number.readline().strip()
    manager = child(["openbox", "--sm-disable"], env=environment, stderr=subprocess.DEVNULL)
    try:
        return subprocess.run(["dbus-run-session", "--", sys.executable, __file__, INSIDE],
                              env=environment, check=False).returncode
    finally:
        for process in (manager, server):
            process.kill()
            process.wait()


class Controls(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        import gi
        gi.require_version("Atspi", "2.0")
        from gi.repository import Atspi, GLib
        cls.atspi = Atspi
        cls.glib = GLib
        Atspi.init()
        cls.process = child([PROGRAM])
        cls.window = wait_for(cls.find_window, "finding the window")

    @classmethod
    def tearDownClass(cls):
        cls.process.kill()
        cls.process.wait()

    @classmethod
    def find_window(cls):
        assert cls.process.poll() is None, "the program has ended"
        desktop = cls.atspi.get_desktop(0)
        for application in range(desktop.get_child_count()):
            found = desktop.get_child_at_index(application)
            if found is not None and found.get_process_id() == cls.process.pid:
                if found.get_child_count() > 0:
                    return found.get_child_at_index(0)
        return None

    def control(self, name, role):
        for index in range(self.window.get_child_count()):
            found = self.window.get_child_at_index(index)
            if found.get_name() == name:
                self.assertEqual(found.get_role(), role, name)
                found.clear_cache()
                return found
        self.fail(f"no {name}")

    def slider(self, name):
        return self.control(name, self.atspi.Role.SLIDER)

    def has_state(self, control, state):
        control.clear_cache()
        return control.get_state_set().contains(state)

    def focused(self):
        for index in range(self.window.get_child_count()):
            found = self.window.get_child_at_index(index)
            if self.has_state(found, self.atspi.StateType.FOCUSED):
                return found.get_name()
        return None

    def press(self, symbol):
        self.atspi.generate_keyboard_event(symbol, None, self.atspi.KeySynthType.SYM)

    def test_a_slider_tells_its_range_and_takes_a_value(self):
        gain = self.slider("Gain")
        self.assertEqual((gain.get_minimum_value(), gain.get_maximum_value(),
                          gain.get_minimum_increment()), (-36, 36, 1))
        self.assertTrue(gain.set_current_value(-12))
        wait_for(lambda: self.slider("Gain").get_current_value() == -12, "setting the gain")

    def test_the_dial_is_a_slider_in_degrees(self):
        dial = self.slider("Stereo width")
        self.assertEqual((dial.get_minimum_value(), dial.get_maximum_value(),
                          dial.get_minimum_increment()), (0, 150, 1))
        dial.set_current_value(33.5)
        wait_for(lambda: self.slider("Stereo width").get_current_value() == 33.5, "turning")

    def test_a_value_beyond_the_range_is_its_end(self):
        self.slider("Volume 0.37").set_current_value(1e300)
        wait_for(lambda: self.slider("Volume 0.37").get_current_value() == 1, "setting the volume")

    def test_disabled_controls_say_so_and_stay(self):
        for name, value in (("Stereo width, disabled", 120), ("Gain, disabled", 0)):
            control = self.slider(name)
            self.assertFalse(self.has_state(control, self.atspi.StateType.ENABLED), name)
            self.assertFalse(self.has_state(control, self.atspi.StateType.FOCUSABLE), name)
            control.set_current_value(50)
            self.assertEqual(self.slider(name).get_current_value(), value)

    def test_a_meter_shows_its_level_and_takes_none(self):
        meter = self.control("Level left", self.atspi.Role.PROGRESS_BAR)
        self.assertEqual((meter.get_minimum_value(), meter.get_current_value()), (0, 38))
        self.assertTrue(self.has_state(meter, self.atspi.StateType.ENABLED))
        self.assertFalse(self.has_state(meter, self.atspi.StateType.FOCUSABLE))
        meter.set_current_value(5)
        self.assertEqual(self.control("Level left", self.atspi.Role.PROGRESS_BAR)
                         .get_current_value(), 38)

    def test_a_scale_reads_its_labels(self):
        scale = self.control("Gain scale", self.atspi.Role.LABEL)
        self.assertEqual(scale.get_description(), "+36, +24, +12, 0, -12, -24, -36")

    def test_the_tab_key_goes_through_what_can_be_operated(self):
        active = self.atspi.StateType.ACTIVE
        wait_for(lambda: self.has_state(self.window, active), "getting the keyboard")
        order = ["Stereo width", "Gain", "Position 0", "Volume 0", "Position 0.37"]
        while self.focused() != order[0]:
            before = self.focused()
            self.press(0xFF09)
            wait_for(lambda: self.focused() != before, "the Tab key")
        for name in order[1:]:
            self.press(0xFF09)
            wait_for(lambda: self.focused() == name, f"getting to {name}")

    def test_a_key_moves_the_control_that_has_the_keyboard(self):
        active = self.atspi.StateType.ACTIVE
        wait_for(lambda: self.has_state(self.window, active), "getting the keyboard")
        while self.focused() != "Gain":
            before = self.focused()
            self.press(0xFF09)
            wait_for(lambda: self.focused() != before, "the Tab key")
        self.slider("Gain").set_current_value(3)
        wait_for(lambda: self.slider("Gain").get_current_value() == 3, "setting the gain")
        self.press(0xFF52)
        wait_for(lambda: self.slider("Gain").get_current_value() == 4, "the Up key")

    def test_a_new_value_is_announced_once(self):
        heard = []
        listener = self.atspi.EventListener.new(
            lambda event: heard.append((event.source.get_name(),
                                        self.slider(event.source.get_name()).get_current_value())))
        listener.register("object:property-change:accessible-value")
        try:
            self.slider("Volume 0").set_current_value(0.5)
            self.slider("Volume 0").set_current_value(0.5)
            self.slider("Position 0").set_current_value(0.25)

            def has_heard_all():
                self.glib.MainContext.default().iteration(False)
                return ("Position 0", 0.25) in heard
            wait_for(has_heard_all, "hearing of new values")
            self.assertEqual(heard, [("Volume 0", 0.5), ("Position 0", 0.25)])
        finally:
            listener.deregister("object:property-change:accessible-value")


if __name__ == "__main__":
    if sys.argv[1:] == [INSIDE]:
        unittest.main(argv=sys.argv[:1], verbosity=2)
    with tempfile.TemporaryDirectory() as private:
        sys.exit(run_in_private_session(private))
