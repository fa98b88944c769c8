"""What goes wrong while a recording is open: with the sound server, with files, with the disk."""

import os
import resource
import shutil

import reference
from case import run, session
from exporting_test import ExportTest
from playing_test import SOFT, PlayingTest
from session import wait_for
from sound import CHANNELS, RATE
import hands

# Root, too, is held to the permissions of files and folders.
RESPECTING_PERMISSIONS = (["setpriv", "--bounding-set=-dac_override,-dac_read_search"]
                          if os.geteuid() == 0 else [])


class SoundServer(PlayingTest, ExportTest):
    def test_a_server_that_crashes_stops_the_sound_and_one_that_is_back_takes_it_up(self):
        sound = self.play_tone()
        sound.wait_for_level(SOFT / 2)
        session.stop_sound()
        self.addCleanup(session.stop_sound)
        try:
            self.control("push button", "Play")
        finally:
            session.start_sound()
        self.control("label", "take.wav")
        self.assertEqual(self.position(), 0)
        sound = self.listen()
        hands.key("space")
        self.control("push button", "Pause")
        sound.wait_for_level(SOFT / 2)

    def test_without_a_server_recordings_are_played_in_silence_and_exported(self):
        self.take = self.sample("take.wav", 1)
        self.play_to_end("take.wav", PULSE_SERVER=f"unix:{self.home / 'nothing'}")
        self.assertEqual(self.times(), ["00:00:00", "00:00:01"])
        self.save_as(self.save_dialog(self.sheet(self.main)), "out.wav")
        self.wait_for_end()
        self.assert_export(self.desktop / "out.wav", angle=0)


class Files(PlayingTest, ExportTest):
    def test_a_recording_that_is_deleted_plays_on_and_can_be_exported(self):
        sound = self.play_tone()
        (self.desktop / "take.wav").unlink()
        self.assert_folder(self.main, "Desktop")
        sound.wait_for_level(SOFT / 2)
        self.control("push button", "Pause")
        self.save_as(self.save_dialog(self.sheet(self.main)), "out.wav")
        self.wait_for_end()
        output = (self.desktop / "out.wav").read_bytes()
        samples = reference.stored24([SOFT, SOFT, -SOFT, -SOFT]) * (24000 * 60)
        self.assertTrue(output == reference.output_file(samples, 24, reference.stamp_of(output)))

    def test_a_recording_whose_folder_is_removed_plays_on(self):
        self.tone("take.wav", 60, SOFT)
        takes = self.desktop / "Takes"
        takes.mkdir()
        (self.desktop / "take.wav").rename(takes / "take.wav")
        sound = self.listen()
        self.main = self.start_beyond_introduction()
        table = self.control("table", "Recordings")
        self.application.click(self.application.cell(table, "Takes"), times=2)
        self.assert_folder(self.main, "Takes", "take.wav")
        self.open(self.main, "take.wav")
        self.control("push button", "Pause")
        shutil.rmtree(takes)
        self.assert_folder(self.main, "Desktop")
        slider = self.control("slider", "Position")
        self.application.click(slider, (0.5, 0.5))
        wait_for(lambda: self.position() > 0.45, "seeking")
        sound.wait_for_level(SOFT / 2)
        self.control("label", "take.wav")


class Disk(PlayingTest, ExportTest):
    def assert_plays(self):
        """At least half of the second that it lasts is heard, as it should be."""
        sound = self.listen()
        hands.key("space")
        wait_for(lambda: len(sound.heard()) >= CHANNELS * RATE / 2, "hearing it")
        self.assertEqual(set(map(abs, sound.heard())), {SOFT / 2})
        self.control("push button", "Play")

    def assert_not_saved(self, name):
        self.save_as(self.save_dialog(self.sheet(self.main)), name)
        self.application.wait_until_closed("Export")
        self.assert_alert("Fail to save.")
        self.main_window()

    def test_on_a_full_disk_an_export_fails_and_the_recording_is_as_before(self):
        self.take = self.tone("take.wav", 1, SOFT)
        self.play_to_end("take.wav")
        process = self.application.process.pid
        _, most = resource.prlimit(process, resource.RLIMIT_FSIZE)
        resource.prlimit(process, resource.RLIMIT_FSIZE, (100_000, most))
        self.assert_not_saved("out.wav")
        self.assert_folder(self.main, "Desktop", "out.wav", "take.wav")
        self.assertEqual((self.desktop / "out.wav").stat().st_size, 100_000)
        self.assert_plays()

        resource.prlimit(process, resource.RLIMIT_FSIZE, (most, most))
        self.save_as(self.save_dialog(self.sheet(self.main)), "new.wav")
        self.wait_for_end()
        self.assert_export(self.desktop / "new.wav")
        self.quit()

    def test_into_a_folder_without_permission_an_export_fails(self):
        locked = self.home / "Locked"
        locked.mkdir(mode=0o555)
        self.tone("take.wav", 1, SOFT)
        self.play_to_end("take.wav", *RESPECTING_PERMISSIONS)
        self.assert_not_saved(locked / "out.wav")
        self.assertEqual(os.listdir(locked), [])
        self.assert_plays()

    def test_into_a_file_system_that_takes_no_files_an_export_fails(self):
        self.tone("take.wav", 1, SOFT)
        self.play_to_end("take.wav")
        self.assert_not_saved("/proc/out.wav")
        self.assert_plays()


if __name__ == "__main__":
    run()
