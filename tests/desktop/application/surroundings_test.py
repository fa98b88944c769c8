"""Poor surroundings: preferences that are of no use, and a system that gives little."""

import re

from case import TITLE, ApplicationTest, run
from playing_test import SOFT, PlayingTest
from session import wait_for
import hands
import titlebar

# What is told of any recording that is played.
USUAL = re.compile(r"result = 0, state = [01]|>>>>>EVENT BUS \w+<<<<<")


class Preferences(ApplicationTest):
    def setUp(self):
        super().setUp()
        self.file = self.home / ".config" / "orlo-h8-deckmate.ini"
        self.file.parent.mkdir()

    def assert_first_start(self):
        """As if there were no preferences."""
        (self.desktop / "take.wav").touch()
        self.assert_folder(self.start_beyond_introduction(), "Desktop", "take.wav")
        self.quit()

    def test_garbage_counts_for_nothing(self):
        self.file.write_bytes(bytes(range(256)) * 4096)
        self.assert_first_start()

    def test_a_folder_in_their_place_counts_for_nothing(self):
        self.file.mkdir()
        self.assert_first_start()

    def test_a_path_of_ten_thousand_bytes_is_no_folder(self):
        self.file.write_bytes(b"[General]\nUD_LAST_OPEN_FOLDER=/" + b"a/" * 5000 + b"\n")
        self.assert_first_start()

    def test_where_nothing_can_be_written_the_choice_holds_for_this_time(self):
        (self.desktop / "take.wav").touch()
        main = self.start_beyond_introduction(XDG_CONFIG_HOME="/proc")
        self.assert_folder(main, "Desktop", "take.wav")
        self.quit()


class SurroundingsTest(PlayingTest):
    def assert_works(self, *prefix, **environment):
        """It starts, plays and ends well, and has no more to say than a line."""
        self.tone("take.wav", 1, SOFT)
        self.play_to_end("take.wav", *prefix, **environment)
        self.quit()
        self.assert_says_little()

    def assert_says_little(self):
        output = self.application.output.read_text("utf-8", "replace")
        unusual = [line for line in output.splitlines() if not USUAL.fullmatch(line)]
        self.assertLessEqual(len(unusual), 1, output)


class Surroundings(SurroundingsTest):
    def test_no_home(self):
        self.start_beyond_introduction("env", "--unset=HOME")
        self.quit()
        self.assert_says_little()

    def test_no_desktop_folder(self):
        self.desktop.rmdir()
        self.assert_folder(self.start_beyond_introduction(), "Desktop")
        self.quit()
        self.assert_says_little()

    def test_no_folder_for_run_time_files(self):
        self.assert_works("env", "--unset=XDG_RUNTIME_DIR", TMPDIR=str(self.home))

    def test_few_descriptors(self):
        self.assert_works("prlimit", "--nofile=64", "--")

    def test_no_session_bus(self):
        """Nothing tells then what is shown, except for the windows themselves."""
        self.start(DBUS_SESSION_BUS_ADDRESS=f"unix:path={self.home / 'nothing'}")
        process = self.application.process.pid
        wait_for(lambda: titlebar.windows_of(process, "Introduction"), "starting")
        hands.key("Return")
        wait_for(lambda: not titlebar.windows_of(process, "Introduction"), "closing the introduction")
        self.assertEqual(len(titlebar.windows_of(process, TITLE)), 1)
        self.quit()
        self.assert_says_little()


if __name__ == "__main__":
    run()
