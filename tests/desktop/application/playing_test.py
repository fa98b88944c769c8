"""Playing: what is heard, and what the window and the bus tell of it."""

import re

from application import Ears, everything, has, role
from case import ApplicationTest, run, session
from session import wait_for
from sound import Sound
import hands
import screen

TIME = re.compile(r"(?:Current time|Duration) (\d\d:\d\d:\d\d)")
SOFT = 0.0625  # a level that 24 bits hold exactly


class PlayingTest(ApplicationTest):
    def control(self, kind, name):
        return self.application.find(self.main, kind, name)

    def position(self):
        return self.control("slider", "Position").get_current_value()

    def volume(self):
        return self.control("slider", "Volume").get_current_value()

    def times(self):
        """The present time and the whole."""
        spoken = (TIME.fullmatch(found.get_name()) for found in everything(self.main)
                  if found.get_role() == role("label"))
        return [match[1] for match in spoken if match]

    def play(self, name, *prefix, **environment):
        """Starts the application and opens a recording of the Desktop folder."""
        self.main = self.start_beyond_introduction(*prefix, **environment)
        self.open(self.main, name)
        self.control("push button", "Pause")

    def play_to_end(self, name, *prefix, **environment):
        """As play() for a short one, whose playing may be over before it is looked at."""
        self.main = self.start_beyond_introduction(*prefix, **environment)
        self.open(self.main, name)
        self.control("push button", "Play")

    def play_tone(self, seconds=60):
        """Plays "take.wav", a soft tone of that length; what is heard of it."""
        self.tone("take.wav", seconds, SOFT)
        sound = self.listen()
        self.play("take.wav")
        return sound

    def listen(self):
        sound = Sound(session, self.home / "sound")
        self.addCleanup(sound.end)
        return sound


class Transport(PlayingTest):
    def test_a_recording_plays_when_it_is_opened_and_returns_to_its_start_at_its_end(self):
        sound = self.play_tone(2)
        self.assertEqual(self.times()[1], "00:00:02")
        sound.wait_for_level(SOFT / 2)  # the volume is at its half
        self.control("push button", "Play")
        self.assertEqual(self.times(), ["00:00:00", "00:00:02"])
        self.assertEqual(self.position(), 0)
        sound.wait_for_level(0)

    def test_at_the_end_the_same_key_plays_it_again(self):
        self.tone("take.wav", 1, SOFT)
        self.play_to_end("take.wav")
        sound = self.listen()
        hands.key("space")
        sound.wait_for_level(SOFT / 2)
        self.control("push button", "Play")

    def test_space_pauses_where_it_is_and_goes_on_from_there(self):
        sound = self.play_tone()
        wait_for(lambda: self.position() > 0.01, "playing")
        hands.key("space")
        self.control("push button", "Play")
        sound.wait_for_level(0)
        paused = self.position()
        sound.wait_for_more(0.5)
        self.assertEqual(self.position(), paused)
        hands.key("space")
        self.control("push button", "Pause")
        sound.wait_for_level(SOFT / 2)
        wait_for(lambda: self.position() > paused, "going on")

    def test_the_pointer_seeks_both_ways(self):
        sound = self.play_tone()
        slider = self.control("slider", "Position")
        for part, about in ((0.9, 0.9), (0.1, 0.1)):
            self.application.click(slider, (part, 0.5))
            wait_for(lambda about=about: abs(self.position() - about) < 0.05, "seeking")
            sound.wait_for_level(SOFT / 2)
        self.control("push button", "Pause")

    def test_a_drag_shows_where_it_would_go_and_goes_there_at_its_end(self):
        self.tone("take.wav", 60, SOFT)
        self.play("take.wav")
        hands.key("space")
        self.control("push button", "Play")
        slider = self.control("slider", "Position")
        start = self.application.place(slider, (0.2, 0.5))
        end = self.application.place(slider, (0.7, 0.5))
        with hands.holding(start):
            hands.move(*end)
            wait_for(lambda: self.times()[0] in ("00:00:41", "00:00:42"), "showing the time")
        wait_for(lambda: abs(self.position() - 0.7) < 0.03, "seeking")

    def test_it_plays_on_behind_a_dialog_to_its_end(self):
        self.tone("take.wav", 2, SOFT)
        self.play("take.wav")
        self.application.choose(self.main, "Help", "About")
        self.application.window("About")
        self.control("push button", "Play")
        self.assertIsNotNone(self.application.shown("About", "dialog"))

    def test_the_meters_light_up_while_it_plays(self):
        self.tone("take.wav", 60, 0.5)
        self.play("take.wav")
        for name in ("Left level", "Right level"):
            meter = self.control("progress bar", name)
            wait_for(lambda meter=meter: self.is_green(meter), "showing the level")
            self.assertEqual(meter.get_current_value(), 42)  # -6 dB on a scale from -48
        hands.key("space")
        self.control("push button", "Play")
        for name in ("Left level", "Right level"):
            meter = self.control("progress bar", name)
            wait_for(lambda meter=meter: not self.is_green(meter), "showing silence")
            self.assertEqual(meter.get_current_value(), 0)

    def is_green(self, meter):
        """Near its lower end."""
        red, green, blue = screen.colour(*self.application.place(meter, (0.5, 0.9)))
        return green > red + 50 and green > blue + 50

    def test_another_recording_takes_over(self):
        self.tone("first.wav", 60, SOFT)
        self.tone("second.wav", 60, 2 * SOFT)
        sound = self.listen()
        self.play("first.wav")
        sound.wait_for_level(SOFT / 2)
        self.open(self.main, "second.wav")
        sound.wait_for_level(SOFT)

    def test_quitting_while_it_plays_ends_the_program(self):
        sound = self.play_tone()
        sound.wait_for_level(SOFT / 2)
        self.quit()
        sound.wait_for_level(0)


class Settings(PlayingTest):
    def test_mute_silences_and_brings_the_volume_back(self):
        sound = self.play_tone()
        self.application.press(self.control("push button", "Mute"))
        unmute = self.control("push button", "Unmute")
        self.assertEqual(self.volume(), 0)
        sound.wait_for_level(0)
        self.application.press(unmute)
        self.control("push button", "Mute")
        self.assertEqual(self.volume(), 0.5)
        sound.wait_for_level(SOFT / 2)

    def test_the_volume_is_a_factor_of_what_is_heard(self):
        sound = self.play_tone()
        slider = self.control("slider", "Volume")
        for volume in (1, 0.25):
            slider.set_current_value(volume)
            sound.wait_for_level(SOFT * volume)

    def test_the_gain_is_heard_in_decibels(self):
        sound = self.play_tone()
        self.control("slider", "Gain in decibels").set_current_value(6)
        sound.wait_for_level(SOFT * 10 ** (6 / 20) / 2)

    def test_volume_and_gain_stay_for_the_next_recording(self):
        self.tone("first.wav", 60, SOFT)
        self.tone("second.wav", 60, 2 * SOFT)
        sound = self.listen()
        self.play("first.wav")
        self.control("slider", "Gain in decibels").set_current_value(-6)
        self.control("slider", "Volume").set_current_value(1)
        self.open(self.main, "second.wav")
        sound.wait_for_level(2 * SOFT * 10 ** (-6 / 20))

    def test_the_dial_says_when_it_can_be_turned(self):
        self.sample("raw.wav", 60)
        self.sample("stereo.wav", 60, "--plain")
        with Ears("object:state-changed") as ears:
            self.play("raw.wav")
            ears.wait_for("Stereo width", "enabled", 1)
            self.assertTrue(has(self.control("slider", "Stereo width"), "enabled"))
            self.open(self.main, "stereo.wav")
            ears.wait_for("Stereo width", "enabled", 0)
            self.assertFalse(has(self.control("slider", "Stereo width"), "enabled"))

    def test_the_dial_says_where_a_key_turned_it(self):
        self.sample("raw.wav", 60)
        self.play("raw.wav")
        self.application.tab(self.main, "Export", "Stereo width")
        with Ears("object:property-change:accessible-value",
                  lambda event: (event.source.get_name(), event.source.get_current_value())) as ears:
            hands.key("Up", "Up")
            ears.wait_for("Stereo width", 2.0)


if __name__ == "__main__":
    run()
