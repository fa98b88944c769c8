"""Volumes that are small or read-only, mounted where only the program under test sees them."""

import subprocess
import unittest

from support import DECODE, PATIENCE, DecodeTest, STEREO24, recording


class VolumeTest(DecodeTest):
    def setUp(self):
        super().setUp()
        for name in ("volume", "seen"):
            (self.folder / name).mkdir()
        self.source = recording(STEREO24)
        self.large_source = recording(STEREO24 * 10000)
        self.take = self.write("take.wav", self.source)
        self.large = self.write("large.wav", self.large_source)

    def decode_to_volume(self, options, *takes):
        """Decodes to a volume mounted with `options`, and copies what is then on it to "seen"."""
        script = ('mount -t tmpfs -o "$1" none volume && shift && { "$@"; status=$?; } && '
                  "cp -a volume/. seen && exit $status")
        return subprocess.run(
            ["unshare", "--user", "--map-root-user", "--mount", "sh", "-c", script, "sh", options,
             DECODE, "--output-dir", "volume", *takes],
            cwd=self.folder, check=False, timeout=PATIENCE, stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def test_output_larger_than_the_volume(self):
        # One after the other: who comes first has the room.
        result = self.decode_to_volume("size=64k", "--jobs", "1", self.take, self.large)
        self.assert_failed(result, f"{self.large}: Fail to save.")
        self.assertEqual(self.names(self.folder / "seen"), ["large_Decode.WAV", "take_Decode.WAV"])
        self.assert_decoded(self.folder / "seen" / "take_Decode.WAV", self.source)

    def test_volume_with_room_for_the_first_bytes_only(self):
        """Four KiB: the write is short, and only the next one is refused."""
        result = self.decode_to_volume("size=4k", self.large)
        self.assert_failed(result, f"{self.large}: Fail to save.")
        self.assertEqual((self.folder / "seen" / "large_Decode.WAV").stat().st_size, 4096)
        self.assert_bytes(self.large.read_bytes(), self.large_source)

    def test_volume_without_room_for_another_file(self):
        """Two entries: the volume's root and one file."""
        result = self.decode_to_volume("nr_inodes=2", "--jobs", "1", self.take, self.large)
        self.assert_failed(result, f"{self.large}: Fail to save.")
        self.assert_decoded(self.folder / "seen" / "take_Decode.WAV", self.source)

    def test_read_only_volume(self):
        result = self.decode_to_volume("ro", self.take, self.large)
        self.assert_failed(result, f"{self.take}: Fail to save.", f"{self.large}: Fail to save.")
        self.assertEqual(self.names(self.folder / "seen"), [])


if __name__ == "__main__":
    unittest.main()
