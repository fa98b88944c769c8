"""The list of recordings: folders, the choice of one, and what happens to them meanwhile."""

import shutil

from application import Ears, children, has, role, write
from case import TITLE, ApplicationTest, run
from session import wait_for
import hands


class BrowseTest(ApplicationTest):
    def folder(self, path, *names):
        """A folder of the home with empty files of these names."""
        folder = self.home / path
        folder.mkdir(parents=True, exist_ok=True)
        for name in names:
            (folder / name).touch()
        return folder

    def row(self, window, name):
        return self.application.cell(self.application.find(window, "table", "Recordings"), name)

    def press(self, window, name):
        self.application.press(self.application.find(window, "push button", name))


class Folders(BrowseTest):
    def test_a_double_click_enters_a_folder_and_a_button_leaves_it(self):
        self.folder("Desktop", "a.wav")
        self.folder("Desktop/Takes", "b.WAV", "notes.txt")
        main = self.start_beyond_introduction()
        self.assert_folder(main, "Desktop", "Takes", "a.wav")
        self.application.click(self.row(main, "Takes"), times=2)
        self.assert_folder(main, "Takes", "b.WAV")
        self.press(main, "Enclosing folder")
        self.assert_folder(main, "Desktop", "Takes", "a.wav")
        self.press(main, "Enclosing folder")
        self.assert_folder(main, self.home.name, "Desktop")

    def test_return_enters_the_folder_that_the_arrow_keys_reached(self):
        self.folder("Desktop/First")
        self.folder("Desktop/Second", "b.wav")
        main = self.start_beyond_introduction()
        self.assert_folder(main, "Desktop", "First", "Second")
        hands.key("Home", "Down", "Return")
        self.assert_folder(main, "Second", "b.wav")

    def test_a_row_is_opened_over_the_bus(self):
        self.folder("Desktop/Takes", "b.wav")
        self.tone("a.wav", 60, 0.0625)
        main = self.start_beyond_introduction()
        self.assert_folder(main, "Desktop", "Takes", "a.wav")
        self.application.press(self.row(main, "a.wav"))
        self.application.find(main, "label", "a.wav")
        self.application.find(main, "push button", "Pause")
        self.assertTrue(has(self.row(main, "a.wav"), "selected"))
        self.application.press(self.row(main, "Takes"))
        self.assert_folder(main, "Takes", "b.wav")

    def test_a_row_that_can_not_be_played_is_refused_over_the_bus(self):
        self.folder("Desktop", "broken.wav")
        main = self.start_beyond_introduction()
        self.application.press(self.row(main, "broken.wav"))
        alert = self.application.window(TITLE, "alert")
        self.press(alert, "Ok")
        self.application.wait_until_closed(TITLE, "alert")

    def test_the_rows_are_all_that_the_list_consists_of(self):
        self.folder("Desktop", "a.wav", "b.wav")
        self.folder("Desktop/Takes")
        main = self.start_beyond_introduction()
        self.assert_folder(main, "Desktop", "Takes", "a.wav", "b.wav")
        table = self.application.find(main, "table", "Recordings")
        self.assertEqual([(cell.get_role(), cell.get_name(), cell.get_description(),
                           cell.get_index_in_parent()) for cell in children(table)],
                         [(role("table cell"), "Takes", "Folder", 0),
                          (role("table cell"), "a.wav", "Recording", 1),
                          (role("table cell"), "b.wav", "Recording", 2)])
        self.assertEqual((table.get_n_rows(), table.get_n_columns()), (3, 1))

    def test_the_row_that_a_key_reaches_is_told(self):
        self.folder("Desktop", "a.wav", "b.wav", "c.wav")
        main = self.start_beyond_introduction()
        self.assert_folder(main, "Desktop", "a.wav", "b.wav", "c.wav")
        with Ears("object:state-changed:focused") as ears:
            hands.key("End")
            ears.wait_for("c.wav", "focused", 1)
            hands.key("Up")
            ears.wait_for("b.wav", "focused", 1)

    def test_a_folder_can_be_chosen_over_the_bus(self):
        takes = self.folder("Takes", "a.wav")
        main = self.start_beyond_introduction()
        self.press(main, "Open folder")
        chooser = self.application.window("Choose a file")
        write(self.application.find(chooser, "text", "Directory:"), str(takes))
        self.press(chooser, "Choose")
        self.application.wait_until_closed("Choose a file")
        self.assert_folder(main, "Takes", "a.wav")

    def test_the_tab_key_takes_the_choosers_controls_in_order(self):
        main = self.start_beyond_introduction()
        self.press(main, "Open folder")
        chooser = self.application.window("Choose a file")
        wait_for(lambda: self.application.focused(chooser).get_name() == "Directory:", "the field")
        self.application.tab(chooser, "Directories", "Choose", "Cancel", str(self.desktop),
                             "Parent Directory", "Create New Folder", "List View", "Detail View",
                             "Sidebar", "Files", "Directory:")

    def test_a_chooser_that_is_cancelled_changes_nothing(self):
        takes = self.folder("Takes", "a.wav")
        main = self.start_beyond_introduction()
        self.application.choose(main, "File", "Open Folder\u2026")
        chooser = self.application.window("Choose a file")
        write(self.application.find(chooser, "text", "Directory:"), str(takes))
        self.press(chooser, "Cancel")
        self.application.wait_until_closed("Choose a file")
        self.assert_folder(main, "Desktop")

    def test_a_double_click_on_the_button_opens_one_chooser(self):
        main = self.start_beyond_introduction()
        self.application.click(self.application.find(main, "push button", "Open folder"), times=2)
        self.application.window("Choose a file")
        hands.key("Escape")
        self.application.wait_until_closed("Choose a file")
        self.main_window()

    def test_the_next_start_shows_the_last_folder(self):
        self.folder("Desktop/T\u00e4kes, 2nd", "a.wav")
        main = self.start_beyond_introduction()
        self.application.click(self.row(main, "T\u00e4kes, 2nd"), times=2)
        self.assert_folder(main, "T\u00e4kes, 2nd", "a.wav")
        self.quit()
        main = self.start_beyond_introduction()
        self.assert_folder(main, "T\u00e4kes, 2nd", "a.wav")


class Changes(BrowseTest):
    def test_the_selection_stays_with_its_name_when_a_file_appears_before_it(self):
        desktop = self.folder("Desktop", "b.wav", "c.wav")
        main = self.start_beyond_introduction()
        self.application.click(self.row(main, "b.wav"))
        wait_for(lambda: has(self.row(main, "b.wav"), "selected"), "selecting")
        (desktop / "a.wav").touch()
        self.assert_folder(main, "Desktop", "a.wav", "b.wav", "c.wav")
        self.assertEqual([name for name in ("a.wav", "b.wav", "c.wav")
                          if has(self.row(main, name), "selected")], ["b.wav"])

    def test_the_selection_goes_with_its_file(self):
        desktop = self.folder("Desktop", "a.wav", "b.wav")
        main = self.start_beyond_introduction()
        self.application.click(self.row(main, "a.wav"))
        wait_for(lambda: has(self.row(main, "a.wav"), "selected"), "selecting")
        (desktop / "a.wav").unlink()
        self.assert_folder(main, "Desktop", "b.wav")
        self.assertFalse(has(self.row(main, "b.wav"), "selected"))

    def test_a_folder_that_vanishes_gives_way_to_the_desktop_until_it_is_back(self):
        self.folder("Desktop", "a.wav")
        takes = self.folder("Desktop/Takes", "b.wav")
        main = self.start_beyond_introduction()
        self.application.click(self.row(main, "Takes"), times=2)
        self.assert_folder(main, "Takes", "b.wav")
        shutil.rmtree(takes)
        self.assert_folder(main, "Desktop", "a.wav")
        self.folder("Desktop/Takes", "c.wav")
        wait_for(lambda: self.names(main) == ["c.wav"], "listing the folder again")


if __name__ == "__main__":
    run()
