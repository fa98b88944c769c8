"""Exporting, compared byte for byte with what a second way of decoding makes of the same recording."""

import reference
from application import everything, has, role, write
from case import TITLE, ApplicationTest, run
from session import wait_for
import hands

SAVING = "Saving checkboard..."
FORMATS = {24: "24-bit Linear", 32: "32-bit Float"}


class ExportTest(ApplicationTest):
    def press(self, window, kind, name):
        self.application.press(self.application.find(window, kind, name))

    def open_take(self, *options):
        """The main window, with a short recording that plays to its end."""
        self.take = self.sample("take.wav", 0.25, *options)
        main = self.start_beyond_introduction()
        self.open(main, "take.wav")
        self.application.find(main, "push button", "Play")
        return main

    def set(self, main, name, value):
        slider = self.application.find(main, "slider", name)
        slider.set_current_value(value)
        wait_for(lambda: slider.get_current_value() == value, f"setting {name}")

    def sheet(self, main):
        self.press(main, "push button", "Export")
        return self.application.window("Export")

    def choose(self, sheet, kind, name):
        button = self.application.find(sheet, kind, name)
        if not has(button, "checked"):
            self.application.press(button)
        wait_for(lambda: has(button, "checked"), f"choosing {name}")

    def save_dialog(self, sheet):
        self.press(sheet, "push button", "Save")
        return self.application.window(SAVING)

    def save_as(self, dialog, name):
        write(self.application.find(dialog, "text", "File name:"), str(name))
        self.press(dialog, "push button", "Save")

    def wait_for_end(self):
        """Until the sheet is closed, by when the file is written."""
        self.application.wait_until_closed(SAVING)
        self.application.wait_until_closed("Export")

    def assert_alert(self, text):
        alert = self.application.window(TITLE, "alert")
        self.application.find(alert, "label", text)
        self.press(alert, "push button", "Ok")
        self.application.wait_until_closed(TITLE, "alert")

    def assert_export(self, path, **settings):
        output = path.read_bytes()
        expected = reference.expected_output(self.take.read_bytes(), reference.stamp_of(output),
                                             **settings)
        self.assertTrue(output == expected, "the file isn't what it should be")


class Settings(ExportTest):
    def export(self, bits, normalize, *options):
        """Exports with a gain of 5 and an angle of 90."""
        main = self.open_take(*options)
        if not options:
            self.set(main, "Stereo width", 90)
        self.set(main, "Gain in decibels", 5)
        sheet = self.sheet(main)
        self.choose(sheet, "radio button", FORMATS[bits])
        if normalize:
            self.choose(sheet, "check box", "Normalize")
        self.save_as(self.save_dialog(sheet), "out.wav")
        self.wait_for_end()
        self.assert_folder(main, "Desktop", "out.wav", "take.wav")
        self.assert_export(self.desktop / "out.wav", bits=bits, angle=90, gain=5,
                           normalize=normalize)

    def test_24_bit(self):
        self.export(24, False)

    def test_24_bit_normalized(self):
        self.export(24, True)

    def test_32_bit(self):
        self.export(32, False)

    def test_32_bit_normalized(self):
        self.export(32, True)

    def test_left_and_right(self):
        self.export(24, False, "--plain")


class Sheet(ExportTest):
    def test_its_controls_are_found_and_reached_in_order(self):
        sheet = self.sheet(self.open_take())
        self.application.find(sheet, "label", "take.wav")
        self.assertTrue(has(self.application.find(sheet, "radio button", FORMATS[24]), "focused"))
        found = [(control.get_role_name(), control.get_name())
                 for control in everything(sheet) if has(control, "focusable")]
        self.assertEqual(sorted(found), [
            ("check box", "Normalize"), ("push button", "Cancel"), ("push button", "Save"),
            ("radio button", FORMATS[24]), ("radio button", FORMATS[32])])
        self.application.tab(sheet, "Normalize", "Cancel", "Save", FORMATS[24])
        hands.key("Up", "Down", "Down")
        wait_for(lambda: self.application.focused(sheet).get_name() == FORMATS[32], "the other format")
        self.assertTrue(has(self.application.find(sheet, "radio button", FORMATS[32]), "checked"))

    def test_cancelled_it_leaves_nothing(self):
        main = self.open_take()
        self.press(self.sheet(main), "push button", "Cancel")
        self.application.wait_until_closed("Export")
        self.main_window()
        self.assertEqual(self.names(main), ["take.wav"])

    def test_keys_alone_save_under_the_proposed_name(self):
        main = self.open_take()
        hands.key("ctrl+e")
        sheet = self.application.window("Export")
        self.application.tab(sheet, "Normalize")
        hands.key("space")
        self.application.tab(sheet, "Cancel", "Save")
        hands.key("space")
        self.application.window(SAVING)
        hands.key("Return")
        self.wait_for_end()
        self.assert_folder(main, "Desktop", "take.wav", "take_Decode.WAV")
        self.assert_export(self.desktop / "take_Decode.WAV", angle=0, normalize=True)


class SaveDialog(ExportTest):
    def dialog(self):
        return self.save_dialog(self.sheet(self.open_take()))

    def test_its_controls_have_names_and_are_reached_in_order(self):
        dialog = self.dialog()
        self.assertEqual(self.application.focused(dialog).get_name(), "File name:")
        nameless = [control.get_role_name() for control in everything(dialog)
                    if has(control, "focusable") and not control.get_name()
                    and control.get_role() != role("list")]
        self.assertEqual(nameless, [])
        self.application.find(dialog, "label", "Please select a path where to save decoded wav.")
        self.application.tab(dialog, "WAV (*.wav)", "Save", "Cancel", str(self.desktop), "Back",
                             "Parent Directory", "Create New Folder", "List View", "Detail View",
                             "Sidebar", "Files", "File name:")

    def test_a_name_without_an_ending_gets_one(self):
        self.save_as(self.dialog(), "mixed")
        self.wait_for_end()
        self.assert_export(self.desktop / "mixed.WAV", angle=0)

    def test_another_folder_can_be_told(self):
        target = self.home / "Mixes"
        target.mkdir()
        self.save_as(self.dialog(), target / "mixed.wav")
        self.wait_for_end()
        self.assert_export(target / "mixed.wav", angle=0)

    def test_the_source_itself_is_refused(self):
        dialog = self.dialog()
        before = self.take.read_bytes()
        self.save_as(dialog, "take.wav")
        self.assert_alert("Fail to open.")
        self.assertEqual(self.take.read_bytes(), before)

    def test_a_place_that_does_not_exist_is_an_alert(self):
        self.save_as(self.dialog(), "/nowhere/mixed.wav")
        self.assert_alert("Fail to save.")
        self.main_window()


class Overwriting(ExportTest):
    def ask(self):
        """The question whether to replace a file that is there."""
        self.target = self.desktop / "old.wav"
        self.target.write_bytes(b"old")
        main = self.open_take()
        self.save_as(self.save_dialog(self.sheet(main)), "old.wav")
        question = self.application.window(SAVING, "alert")
        self.application.find(question, "label",
                              "old.wav already exists.\nDo you want to replace it?")
        return question

    def test_a_file_is_replaced_when_that_is_wanted(self):
        self.press(self.ask(), "push button", "Replace")
        self.wait_for_end()
        self.assert_export(self.target, angle=0)

    def test_a_file_is_kept_otherwise_and_another_name_can_be_given(self):
        self.press(self.ask(), "push button", "Cancel")
        self.application.wait_until_closed(SAVING, "alert")
        self.save_as(self.application.window(SAVING), "new.wav")
        self.wait_for_end()
        self.assertEqual(self.target.read_bytes(), b"old")
        self.assert_export(self.desktop / "new.wav", angle=0)


if __name__ == "__main__":
    run()
