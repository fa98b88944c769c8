"""h8-decode --info when memory is short: still one line of JSON for each file."""

import json
import unittest

from support import (MIB, STEREO24, ToolTest, chunk, decode, limiting_memory_to, recording, riff)


class TooLittleMemory(ToolTest):
    CHUNKS = 2000000

    def setUp(self):
        super().setUp()
        # As many bytes in both, but the index of the first takes far more than they do.
        self.write("many.wav", riff(chunk(b"none", b"") * self.CHUNKS))
        self.write("one.wav", riff(chunk(b"none", bytes(8 * self.CHUNKS - 8))))
        self.write("small.wav", recording(STEREO24))
        self.alone, = self.objects(decode("--info", "small.wav", cwd=self.folder))

    def objects(self, result):
        lines = result.stdout.split(b"\n")
        self.assertEqual(lines.pop(), b"")
        return [json.loads(line) for line in lines]

    def test_index_that_does_not_fit(self):
        tight = 0
        failed = [True, True]
        for limit in range(16, 200, 4):
            if not any(failed):
                break
            with self.subTest(limit=limit):
                result = decode("--info", "many.wav", "one.wav", "small.wav", cwd=self.folder,
                                preexec_fn=limiting_memory_to(limit * MIB))
                self.assertEqual(result.stderr, b"")
                many, one, small = self.objects(result)
                self.assertEqual([many["file"], one["file"]], ["many.wav", "one.wav"])
                self.assertEqual(small, self.alone)
                failed = ["error" in info for info in (many, one)]
                self.assertEqual(result.returncode, int(any(failed)))
                for info in (many, one):
                    if "error" in info:
                        self.assertEqual((info["valid"], info["chunks"]), (False, []))
                        self.assertRegex(info["error"], r"\w")
                tight += failed == [True, False]
        # Else it is loading that failed, which needs no index.
        self.assertGreaterEqual(tight, 3)
        self.assertEqual((failed, len(many["chunks"])), ([False, False], self.CHUNKS))


if __name__ == "__main__":
    unittest.main()
