"""What the build can't enforce about the tree: each finding names its file and line."""

import os
import re
import unittest
from pathlib import Path

ROOT = Path(os.environ["H8_SOURCE_DIR"])

# Where a third-party header may be included, by the start of its name.
HOMES = {
    "cubeb/": ["src/platform/cubeb/"],
    "sndfile": ["src/platform/sndfile/"],
    "alsa/": ["src/platform/alsa/"],
    "Q": ["src/platform/qt/", "src/controls/", "src/app/", "tools/h8-controls/",
          "tools/h8-screenshots/", "tests/desktop/", "benchmarks/window/"],
    "X11/": ["tests/desktop/"],
    "xcb/": ["src/app/xcb/", "tests/desktop/", "benchmarks/window/"],
    "CLI/": ["tools/"],
    "nlohmann/": ["tools/"],
    "gtest/": ["tests/"],
    "gmock/": ["tests/"],
    "benchmark/": ["benchmarks/"],
}

# From the bottom up; a layer may include the ones before it.
LAYERS = ["recording", "export", "platform", "services", "device", "playback", "controls", "app"]

LONGEST_SOURCE = 600


def sources(*folders):
    found = [path.relative_to(ROOT).as_posix()
             for folder in folders or ("src", "tools", "tests", "benchmarks", "fuzz")
             for path in (ROOT / folder).rglob("*") if path.suffix in (".h", ".cpp")]
    assert found, f"no sources in {folders}"
    return sorted(found)


def lines(name):
    return (ROOT / name).read_text(encoding="utf-8").splitlines()


def includes(name):
    for number, line in enumerate(lines(name), 1):
        found = re.match(r'\s*#\s*include\s*([<"])([^>"]+)', line)
        if found:
            yield f"{name}:{number}", found[1], found[2]


class Tree(unittest.TestCase):
    def test_no_include_climbs_out_of_its_folder(self):
        findings = [place for name in sources() for place, _, header in includes(name)
                    if header.startswith("../") or "/../" in header]
        self.assertEqual(findings, [])

    def test_third_party_headers_stay_at_home(self):
        findings = []
        for name in sources():
            for place, bracket, header in includes(name):
                for start, homes in HOMES.items():
                    if bracket == "<" and header.startswith(start) and not name.startswith(tuple(homes)):
                        findings.append(f"{place} includes {header}")
        self.assertEqual(findings, [])

    def test_layers_include_downward_only(self):
        findings = []
        for height, layer in enumerate(LAYERS):
            for name in sources(f"src/{layer}"):
                for place, bracket, header in includes(name):
                    if bracket == '"' and header.split("/")[0] not in LAYERS[:height + 1]:
                        findings.append(f"{place} includes {header}")
        self.assertEqual(findings, [])

    def test_every_folder_of_src_is_a_known_layer(self):
        folders = {name.split("/")[1] for name in sources("src")}
        self.assertEqual(folders, set(LAYERS))

    def test_every_header_of_a_layer_is_listed_and_so_compiled_alone(self):
        findings = []
        for layer in LAYERS:
            listed = (ROOT / "src" / layer / "CMakeLists.txt").read_text().split()
            findings += [name for name in sources(f"src/{layer}") if name.endswith(".h")
                         and name.removeprefix(f"src/{layer}/") not in listed]
        self.assertEqual(findings, [])

    def test_headers_say_what_they_are_for_and_are_included_once(self):
        findings = [name for name in sources() if name.endswith(".h")
                    and not (lines(name)[0].startswith("// ") and "#pragma once" in lines(name)[:6])]
        self.assertEqual(findings, [])

    def test_no_source_outgrows_its_file(self):
        findings = [f"{name}: {len(lines(name))} lines" for name in sources()
                    if len(lines(name)) > LONGEST_SOURCE]
        self.assertEqual(findings, [])


if __name__ == "__main__":
    unittest.main()
