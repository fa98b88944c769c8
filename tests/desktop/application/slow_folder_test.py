"""A folder that doesn't answer any more while it is shown."""

import os

from case import run
from playing_test import SOFT, PlayingTest
from session import wait_for
import hands


class SlowFolder(PlayingTest):
    def setUp(self):
        super().setUp()
        self.hold = self.home / "Desktop.hold"
        self.asked = self.home / "Desktop.asked"
        self.tone("take.wav", 60, SOFT)
        self.main = self.start_beyond_introduction(LD_PRELOAD=os.environ["H8_SLOW_FOLDER"],
                                                   SLOW_FOLDER=str(self.desktop))
        self.assert_folder(self.main, "Desktop", "take.wav")

    def stop_answering(self):
        self.hold.touch()
        before = self.times_asked()
        wait_for(lambda: self.times_asked() > before, "listing the folder anew")
        return before + 1

    def times_asked(self):
        return self.asked.stat().st_size

    def test_the_window_and_the_sound_go_on_and_it_is_not_asked_again(self):
        times = self.stop_answering()
        sound = self.listen()
        self.open(self.main, "take.wav")
        sound.wait_for_level(SOFT / 2)
        wait_for(lambda: self.position() > 7 / 60, "playing for more than the time between listings")
        hands.key("space")
        self.control("push button", "Play")
        self.assertEqual(self.times_asked(), times)
        self.sample("new.wav", 1)
        self.hold.unlink()
        self.assert_folder(self.main, "Desktop", "new.wav", "take.wav")

    def test_another_folder_can_be_shown(self):
        self.stop_answering()
        self.application.press(self.control("push button", "Enclosing folder"))
        self.assert_folder(self.main, self.home.name, "Desktop")
        (self.home / "Late").mkdir()
        self.assert_folder(self.main, self.home.name, "Desktop", "Late")

    def test_the_application_can_be_quit(self):
        self.stop_answering()
        self.quit()


if __name__ == "__main__":
    run()
