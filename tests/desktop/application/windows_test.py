"""The windows, over the accessibility bus and with the Tab key."""

import unittest

from application import described, everything, has, role
from case import TITLE, ApplicationTest, run
from session import wait_for
import hands


class WindowTest(ApplicationTest):
    def assert_operable(self, window, *controls):
        """Exactly these can have the keyboard: pairs of role and name."""
        found = [(control.get_role_name(), control.get_name())
                 for control in everything(window) if has(control, "focusable")]
        self.assertEqual(sorted(found), sorted(controls))

    def press(self, window, kind, name):
        self.application.press(self.application.find(window, kind, name))


class Introduction(WindowTest):
    def shows_introduction(self):
        """Whether a process that is starting does: it shows it as soon as the folder is listed."""
        def listed():
            window = self.application.shown(TITLE, "frame")
            return window is not None and any(
                found.get_name() == "Folder Desktop" for found in everything(window))
        wait_for(listed, "starting")
        return self.application.shown("Introduction", "dialog") is not None

    def quit_over_the_bus(self):
        self.application.choose(self.main_window(), "File", "Quit")
        self.assertEqual(self.application.wait_for_end(), 0)

    def test_it_comes_again_until_its_box_is_ticked(self):
        self.start()
        window = self.application.window("Introduction")
        self.press(window, "push button", "OK")
        self.quit_over_the_bus()

        self.start()
        window = self.application.window("Introduction")
        box = self.application.find(window, "check box", "Don't show this again")
        self.assertFalse(has(box, "checked"))
        self.application.press(box)
        wait_for(lambda: has(box, "checked"), "ticking the box")
        self.press(window, "push button", "OK")
        self.quit_over_the_bus()

        self.start()
        self.assertFalse(self.shows_introduction())

    def test_a_ticked_box_counts_for_nothing_unless_confirmed(self):
        self.start()
        window = self.application.window("Introduction")
        self.press(window, "check box", "Don't show this again")
        hands.key("Escape")
        self.application.wait_until_closed("Introduction")
        self.quit_over_the_bus()

        self.start()
        self.assertTrue(self.shows_introduction())

    def test_the_tab_key_goes_between_button_and_box(self):
        self.start()
        window = self.application.window("Introduction")
        self.assert_operable(window, ("push button", "OK"), ("check box", "Don't show this again"))
        wait_for(lambda: has(self.application.find(window, "push button", "OK"), "focused"),
                 "the first one's turn")
        self.application.tab(window, "Don't show this again", "OK")

    def test_from_the_menu_it_has_no_box(self):
        main = self.start_beyond_introduction()
        self.application.choose(main, "Help", "Introduction")
        window = self.application.window("Introduction")
        self.assert_operable(window, ("push button", "OK"))
        self.press(window, "push button", "OK")
        self.application.wait_until_closed("Introduction")
        self.main_window()


class Dialogs(WindowTest):
    def test_about_tells_the_version_and_closes(self):
        main = self.start_beyond_introduction()
        self.application.choose(main, "Help", "About")
        window = self.application.window("About")
        self.application.find(window, "label", "ORLO H8 Deckmate")
        self.assert_operable(window, ("push button", "Close"))
        self.application.tab(window, "Close")
        self.press(window, "push button", "Close")
        self.application.wait_until_closed("About")
        self.main_window()

    def test_without_a_recorder_its_settings_tell_why(self):
        main = self.start_beyond_introduction()
        for name in ("Battery", "Auto power off"):
            self.press(main, "push button", f"{name}: no recorder is connected")
            window = self.application.window(TITLE)
            self.application.find(window, "label", "No recorder connected")
            self.assert_operable(window, ("push button", "OK"))
            self.press(window, "push button", "OK")
            self.application.wait_until_closed(TITLE)
            self.main_window()

    def test_a_broken_file_is_refused_with_an_alert(self):
        (self.desktop / "broken.wav").write_bytes(b"RIFF")
        main = self.start_beyond_introduction()
        table = self.application.find(main, "table", "Recordings")
        self.application.click(self.application.cell(table, "broken.wav"), times=2)
        window = self.application.window(TITLE, "alert")
        self.application.find(window, "label", "File not supported.")
        # The text can be selected, but the Tab key leaves it out.
        self.assert_operable(window, ("push button", "Ok"), ("label", "File not supported."))
        self.application.tab(window, "Ok", "Ok")
        self.press(window, "push button", "Ok")
        self.application.wait_until_closed(TITLE, "alert")
        self.main_window()
        self.assertFalse(has(self.application.find(main, "push button", "Export"), "enabled"))


class MainWindow(WindowTest):
    def assert_recording(self, main, is_open):
        """All ways to play and to export a recording agree on whether there is one."""
        for control in (self.application.find(main, "push button", "Export"),
                        self.application.entry(main, "File", "Export\u2026"),
                        self.application.find(main, "push button", "Play"),
                        self.application.entry(main, "Playback", "Play/Pause")):
            self.assertEqual(has(control, "enabled"), is_open, described(control))

    def test_what_needs_a_recording_can_be_chosen_when_there_is_one(self):
        self.sample("take.wav", 0.25)
        (self.desktop / "broken.wav").write_bytes(b"RIFF")
        main = self.start_beyond_introduction()
        self.assert_recording(main, False)
        self.open(main, "take.wav")
        self.assert_recording(main, True)
        table = self.application.find(main, "table", "Recordings")
        self.application.click(self.application.cell(table, "broken.wav"), times=2)
        self.press(self.application.window(TITLE, "alert"), "push button", "Ok")
        self.application.wait_until_closed(TITLE, "alert")
        self.assert_recording(main, False)

    def test_the_times_say_what_they_are_of(self):
        self.sample("take.wav", 0.25)
        main = self.start_beyond_introduction()
        self.application.find(main, "label", "Current time --:--:--")
        self.application.find(main, "label", "Duration --:--:--")
        self.open(main, "take.wav")
        self.application.find(main, "label", "Current time 00:00:00")
        self.application.find(main, "label", "Duration 00:00:00")

    def test_the_menus_tell_the_keys_beside_the_names(self):
        main = self.start_beyond_introduction()
        for names, key in ((("Playback", "Play/Pause"), "Space"),
                           (("File", "Export\u2026"), "Ctrl+E")):
            self.assertEqual(self.application.entry(main, *names).get_key_binding(0), key, names)

    def test_every_control_has_a_name_and_the_tab_key_takes_them_in_order(self):
        self.sample("take.wav", 60)
        main = self.start_beyond_introduction()
        self.open(main, "take.wav")
        wait_for(lambda: self.application.focused(main).get_name() == "Recordings", "the list")
        nameless = [described(control) for control in everything(main)
                    if has(control, "focusable") and not control.get_name()]
        self.assertEqual(nameless, [])
        self.application.tab(
            main, "Export", "Stereo width", "Gain in decibels", "Position", "Pause", "Mute",
            "Volume", "Battery: no recorder is connected", "Auto power off: no recorder is connected",
            "Enclosing folder", "Folder Desktop", "Open folder", "Recordings")

    def test_without_a_recording_the_tab_key_leaves_out_what_can_not_act(self):
        main = self.start_beyond_introduction()
        wait_for(lambda: self.application.focused(main).get_name() == "Recordings", "the list")
        self.application.tab(
            main, "Mute", "Volume", "Battery: no recorder is connected",
            "Auto power off: no recorder is connected", "Enclosing folder", "Folder Desktop",
            "Open folder", "Recordings")


if __name__ == "__main__":
    run()
