"""What assistive programs find of the controls, over an accessibility bus of the test's own."""

import os
import unittest

from application import Application, Ears, atspi, children, has, role
from runner import run
from session import Session, wait_for
import hands

PROGRAM = os.environ["H8_CONTROLS"]

session = Session(screen="1600x1000", with_sound=False)


class Controls(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.application = Application([PROGRAM], {}, session.folder / "output")
        cls.addClassCleanup(cls.application.kill)
        cls.window = wait_for(cls.application.windows, "finding the window")[0]
        wait_for(lambda: has(cls.window, "active"), "getting the keyboard")

    def report(self):
        return self.application.report()

    def control(self, kind, name):
        for found in children(self.window):
            if found.get_name() == name:
                self.assertEqual(found.get_role(), role(kind), name)
                return found
        self.fail(f"no {name}")

    def slider(self, name):
        return self.control("slider", name)

    def focused(self):
        found = self.application.focused(self.window)
        return None if found is None else found.get_name()

    def tab_to(self, name):
        while self.focused() != name:
            before = self.focused()
            hands.key("Tab")
            wait_for(lambda: self.focused() != before, "the Tab key")

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
            self.assertFalse(has(control, "enabled"), name)
            self.assertFalse(has(control, "focusable"), name)
            control.set_current_value(50)
            self.assertEqual(self.slider(name).get_current_value(), value)

    def test_a_meter_shows_its_level_and_takes_none(self):
        meter = self.control("progress bar", "Level left")
        self.assertEqual((meter.get_minimum_value(), meter.get_current_value()), (0, 38))
        self.assertTrue(has(meter, "enabled"))
        self.assertFalse(has(meter, "focusable"))
        meter.set_current_value(5)
        self.assertEqual(meter.get_current_value(), 38)

    def test_a_scale_reads_its_labels(self):
        scale = self.control("label", "Gain scale")
        self.assertEqual(scale.get_description(), "+36, +24, +12, 0, -12, -24, -36")

    def test_the_tab_key_goes_through_what_can_be_operated(self):
        self.tab_to("Stereo width")
        self.application.tab(self.window, "Gain", "Position 0", "Volume 0", "Position 0.37")

    def test_a_key_moves_the_control_that_has_the_keyboard(self):
        self.tab_to("Gain")
        self.slider("Gain").set_current_value(3)
        wait_for(lambda: self.slider("Gain").get_current_value() == 3, "setting the gain")
        hands.key("Up")
        wait_for(lambda: self.slider("Gain").get_current_value() == 4, "the Up key")

    def test_a_new_value_is_announced_once(self):
        with Ears("object:property-change:accessible-value",
                  lambda event: (event.source.get_name(), event.source.get_current_value())) as ears:
            self.slider("Volume 0").set_current_value(0.5)
            self.slider("Volume 0").set_current_value(0.5)
            self.slider("Position 0").set_current_value(0.25)
            ears.wait_for("Position 0", 0.25)
            self.assertEqual(ears.heard, [("Volume 0", 0.5), ("Position 0", 0.25)])


if __name__ == "__main__":
    run(session)
