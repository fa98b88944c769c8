"""Names in brackets, which parsers of command lines like to take for lists."""

import json
import os
import unittest

from support import DecodeTest, decode, pcm24, recording, sample

# Also with the characters in front that a program might mark them with.
NAMES = ("[x]", "[a,b]", "[]", "[x", "x]", "[[x]]", "[x][a]", "\x01[x]", "\x01\x01[x]", "\x01[]",
         "[\x01x]", "[[x], [a, b]]", "[\"x\"]", "{x}", "%%", "{}")
DECOYS = ("x", "a", "b", "a,b", "\x01x", "[x],[a", "[x]x")


class BracketsTest(DecodeTest):
    def setUp(self):
        super().setUp()
        self.sources = {name: recording(pcm24(*range(1000 * k, 1000 * k + 20)))
                        for k, name in enumerate((*NAMES, *DECOYS), 1)}
        for name, source in self.sources.items():
            self.write(name, source)

    def run_here(self, *arguments):
        return decode(*arguments, cwd=self.folder)

    def new_names(self):
        return sorted(set(self.names()) - set(self.sources))

    def default_target(self, name):
        return f"{name}_Decode.WAV"


class Sources(BracketsTest):
    def assert_all_decoded(self, names, *arguments):
        result = self.run_here(*arguments)
        self.assert_done(result)
        self.assertEqual(result.stdout.decode(), "".join(
            f"{name} -> {self.default_target(name)}\n" for name in names))
        self.assertEqual(self.new_names(), sorted(map(self.default_target, names)))
        for name in names:
            target = self.folder / self.default_target(name)
            self.assert_decoded(target, self.sources[name])
            target.unlink()

    def test_one_alone(self):
        for name in NAMES:
            for arguments in ((name,), ("--", name), ("--angle", "120", name, "--force")):
                with self.subTest(arguments=arguments):
                    self.assert_all_decoded([name], *arguments)

    def test_beside_others(self):
        for name in NAMES:
            for names in (("x", name), (name, "x"), ("a", name, "b")):
                with self.subTest(names=names):
                    self.assert_all_decoded(names, *names)

    def test_all_at_once(self):
        self.assert_all_decoded(NAMES, *NAMES)

    def test_failures_are_told_with_the_name_as_given(self):
        for name in NAMES:
            with self.subTest(name=name):
                (self.folder / name).unlink()
                self.assert_failed(self.run_here(name), f"{name}: File not supported.")
        self.assert_failed(self.run_here(*NAMES),
                           *(f"{name}: File not supported." for name in NAMES))
        self.assertEqual(self.new_names(), [])


class Information(BracketsTest):
    def shown(self, *names):
        result = self.run_here("--info", *names)
        self.assert_done(result)
        for line, name in zip(result.stdout.splitlines(), names):
            self.assertTrue(line.startswith(b'{"file":' + json.dumps(name).encode()), line)
        return [json.loads(line)["file"] for line in result.stdout.splitlines()]

    def test_one_alone(self):
        for name in NAMES:
            with self.subTest(name=name):
                self.assertEqual(self.shown(name), [name])

    def test_beside_others(self):
        names = ["x", *NAMES, "a", "b"]
        self.assertEqual(self.shown(*names), names)

    def test_what_is_shown_is_that_file(self):
        for name in NAMES:
            with self.subTest(name=name):
                # A length that no other file has.
                self.write(name, recording(pcm24(*range(14))))
                result = self.run_here("--info", name)
                self.assertEqual(json.loads(result.stdout)["frames"], 7)
                self.write(name, self.sources[name])


class Targets(BracketsTest):
    def spellings(self, option, value):
        return ((option, value), (f"{option}={value}",))

    def test_output(self):
        for name in NAMES:
            for spelling in self.spellings("--output", name):
                with self.subTest(spelling=spelling):
                    for left in self.new_names():
                        (self.folder / left).unlink()
                    result = self.run_here(*spelling, "x")
                    self.assert_done(result)
                    self.assertEqual(result.stdout.decode(), f"x -> {name}.WAV\n")
                    self.assertEqual(self.new_names(), [f"{name}.WAV"])
                    self.assert_decoded(self.folder / f"{name}.WAV", self.sources["x"])

    def test_output_folder(self):
        for name in (*NAMES, *DECOYS):
            (self.folder / name).unlink()
            (self.folder / name).mkdir()
        take = self.write("take", self.sources["x"])
        for name in NAMES:
            for spelling in self.spellings("--output-dir", name):
                with self.subTest(spelling=spelling):
                    for left in self.folder.rglob("*_Decode.WAV"):
                        left.unlink()
                    result = self.run_here(*spelling, "take")
                    self.assert_done(result)
                    self.assertEqual(result.stdout.decode(), f"take -> {name}/take_Decode.WAV\n")
                    self.assert_decoded(self.folder / name / "take_Decode.WAV", take.read_bytes())
                    self.assertEqual([*self.folder.rglob("*_Decode.WAV")],
                                     [self.folder / name / "take_Decode.WAV"])

    def test_output_in_a_folder_that_is_missing(self):
        for name in ("[x]/[y]", "[missing]/[]"):
            result = self.run_here("--output", name, "[x]")
            self.assert_failed(result, "[x]: Fail to save.")


class Samples(BracketsTest):
    def test_file_to_make(self):
        for name in NAMES:
            for arguments in ((name,), ("--", name), (name, "--plain")):
                with self.subTest(arguments=arguments):
                    (self.folder / name).unlink()
                    self.assert_done(sample("--seconds", "0.01", *arguments, cwd=self.folder))
                    self.assertEqual(self.names(), sorted(self.sources))
                    self.assertGreater(os.path.getsize(self.folder / name), 480 * 6)

    def test_existing_file_is_named_as_given(self):
        for name in NAMES:
            with self.subTest(name=name):
                self.assert_failed(sample(name, cwd=self.folder), f"{name}: File exists.")
        for name, source in self.sources.items():
            self.assert_bytes((self.folder / name).read_bytes(), source)

    def test_two_files_are_too_many(self):
        for names in (("[x]", "[y]"), ("y", "[z]")):
            self.assert_wrong_usage(sample(*names, cwd=self.folder))
        self.assertEqual(self.names(), sorted(self.sources))


if __name__ == "__main__":
    unittest.main()
