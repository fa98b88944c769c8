"""h8-device where there is no recorder; tests/system has one."""

import os
import unittest

from support import ToolTest, run

DEVICE = os.environ["H8_DEVICE"]


class DeviceTest(ToolTest):
    def ask(self, *arguments):
        # Without a configuration no sequencer can be opened, whatever is connected to this machine.
        return run(DEVICE, *arguments, env={"ALSA_CONFIG_PATH": "/dev/null"})

    def test_without_a_recorder_asking_and_setting_fail(self):
        for arguments in (("status",), ("status", "--json"), ("set", "battery", "1"),
                          ("set", "auto-power-off", "0")):
            with self.subTest(arguments=arguments):
                result = self.ask(*arguments)
                self.assertEqual(result.returncode, 1)
                self.assertEqual(result.stdout, b"")
                self.assertTrue(result.stderr.endswith(b")\n"))
                self.assertIn(b"h8-device: no recorder is connected (no MIDI: ", result.stderr)

    def test_without_midi_watching_fails_and_says_why(self):
        result = self.ask("watch")
        self.assertEqual(result.returncode, 1)
        self.assertRegex(result.stderr, rb"h8-device: no MIDI: .+\n$")

    def test_wrong_usage(self):
        for arguments in ((), ("stat",), ("set",), ("set", "battery"), ("set", "battery", "128"),
                          ("set", "battery", "-1"), ("set", "auto-power-off", "4"),
                          ("set", "auto-power-off", "1.5"), ("status", "watch"),
                          ("watch", "extra"), ("status", "--xml")):
            with self.subTest(arguments=arguments):
                result = self.ask(*arguments)
                self.assertEqual(result.returncode, 2, result.stderr)
                self.assertNotEqual(result.stderr, b"")
                self.assertEqual(result.stdout, b"")

    def test_help_tells_the_commands(self):
        result = self.ask("--help")
        self.assertEqual(result.returncode, 0)
        for command in (b"status", b"set", b"watch"):
            self.assertIn(command, result.stdout)


if __name__ == "__main__":
    unittest.main()
