"""The close button of the main window's title bar, whatever is in front of it."""

from application import has
from case import TITLE, run
from exporting_test import SAVING, ExportTest
from playing_test import SOFT, PlayingTest
from session import wait_for
import titlebar


class Closing(PlayingTest, ExportTest):
    def assert_close_ends_it(self):
        """Dialogs of the same title are made later than the main window."""
        titlebar.close(titlebar.windows_of(self.application.process.pid, TITLE)[0])
        self.assertEqual(self.application.wait_for_end(), 0)

    def test_alone(self):
        self.start_beyond_introduction()
        self.assert_close_ends_it()

    def test_behind_the_introduction(self):
        self.start()
        self.application.window("Introduction")
        self.assert_close_ends_it()

    def test_while_it_plays(self):
        sound = self.play_tone()
        sound.wait_for_level(SOFT / 2)
        self.assert_close_ends_it()
        sound.wait_for_level(0)

    def test_while_a_menu_is_open(self):
        self.main = self.start_beyond_introduction()
        self.application.click(self.application.entry(self.main, "File"))
        entry = self.application.entry(self.main, "File", "Quit")
        wait_for(lambda: has(entry, "showing"), "opening the menu")
        self.assert_close_ends_it()

    def test_behind_an_alert(self):
        (self.desktop / "broken.wav").write_bytes(b"RIFF")
        main = self.start_beyond_introduction()
        table = self.application.find(main, "table", "Recordings")
        self.application.click(self.application.cell(table, "broken.wav"), times=2)
        self.application.window(TITLE, "alert")
        self.assert_close_ends_it()

    def test_behind_the_export_sheet_of_a_recording_that_plays(self):
        self.tone("take.wav", 60, SOFT)
        self.play("take.wav")
        self.sheet(self.main)
        self.assert_close_ends_it()

    def test_behind_the_question_whether_to_replace_a_file(self):
        target = self.desktop / "old.wav"
        target.write_bytes(b"old")
        self.save_as(self.save_dialog(self.sheet(self.open_take())), "old.wav")
        self.application.window(SAVING, "alert")
        self.assert_close_ends_it()
        self.assertEqual(target.read_bytes(), b"old")

    def test_behind_the_folder_chooser(self):
        main = self.start_beyond_introduction()
        self.press(main, "push button", "Open folder")
        self.application.window("Choose a file")
        self.assert_close_ends_it()


if __name__ == "__main__":
    run()
