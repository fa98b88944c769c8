"""The moment of the decode in the output: local time, in plain digits under every locale."""

import os
import subprocess
import time
import unittest
from datetime import datetime, timedelta, timezone

from reference import moment_of, stamp_of
from support import DecodeTest, STEREO24, decode, recording

# A locale with a decimal comma and with words for numbers. It stands on its own, since a machine
# may have no locale but "C".
LOCALE = """
comment_char #
escape_char /
LC_NUMERIC
decimal_point ","
thousands_sep "."
grouping 3;3
END LC_NUMERIC
LC_TIME
abday "d1";"d2";"d3";"d4";"d5";"d6";"d7"
day "d1";"d2";"d3";"d4";"d5";"d6";"d7"
abmon "m1";"m2";"m3";"m4";"m5";"m6";"m7";"m8";"m9";"m10";"m11";"m12"
mon "m1";"m2";"m3";"m4";"m5";"m6";"m7";"m8";"m9";"m10";"m11";"m12"
am_pm "before";"after"
alt_digits "n0";"n1";"n2";"n3";"n4";"n5";"n6";"n7";"n8";"n9"
d_t_fmt "%x"
d_fmt "%x"
t_fmt "%x"
t_fmt_ampm "%x"
END LC_TIME
"""


def charmap():
    lines = ["<code_set_name> ANSI_X3.4-1968", "<mb_cur_min> 1", "<mb_cur_max> 1",
             "<escape_char> /", "<comment_char> %", "CHARMAP"]
    lines += [f"<U{code:04X}> /x{code:02x} c{code}" for code in range(128)]
    return "\n".join(lines + ["END CHARMAP", ""])


def now():
    return datetime.now(timezone.utc).replace(microsecond=0)


class MomentTest(DecodeTest):
    def decoded_in(self, environment, *options):
        take = self.write("take.wav", recording(STEREO24))
        target = self.folder / "decoded.wav"
        self.assert_done(decode("--force", "--output", target, *options, take, env=environment))
        return target.read_bytes()

    def assert_moment_of_the_decode(self, environment, offset_from_utc):
        before = now()
        output = self.decoded_in(environment)
        after = now()
        self.assertRegex(stamp_of(output), rb"\A\d{4}-\d\d-\d\d\d\d:\d\d:\d\d\Z")
        self.assertTrue(before <= moment_of(output, offset_from_utc) <= after,
                        (before, stamp_of(output), after))


class Dates(MomentTest):
    def test_time_is_local(self):
        zones = {"UTC0": 0, "IST-5:30": 330, "NST+3:30": -210}
        for zone, minutes in zones.items():
            with self.subTest(zone=zone):
                self.assert_moment_of_the_decode({"TZ": zone}, timedelta(minutes=minutes))

    def test_date_is_local(self):
        """26 hours apart the dates can't be the same, whatever the time of the day."""
        self.assert_moment_of_the_decode({"TZ": "EAST-14"}, timedelta(hours=14))
        self.assert_moment_of_the_decode({"TZ": "WEST+12"}, timedelta(hours=-12))

    def test_time_zones_from_the_system(self):
        """Whichever file or rule the system's own zone comes from."""
        offset = timedelta(seconds=time.localtime().tm_gmtoff)
        self.assert_moment_of_the_decode({}, offset)


class Locales(MomentTest):
    def setUp(self):
        super().setUp()
        locales = self.folder / "locales"
        locales.mkdir()
        self.write("locales/words.src", LOCALE.encode())
        self.write("locales/ascii.map", charmap().encode())
        # It ends with 1 over the categories that are left out.
        subprocess.run(["localedef", "-c", "--no-archive", "-i", locales / "words.src",
                        "-f", locales / "ascii.map", locales / "xx_XX"],
                       check=False, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.environment = {"LOCPATH": str(locales), "LC_ALL": None, "LANG": "xx_XX",
                            "LC_NUMERIC": "xx_XX", "LC_TIME": "xx_XX", "TZ": "IST-5:30"}
        active = {**os.environ, **self.environment, "LC_ALL": ""}
        shown = subprocess.run(["locale", "decimal_point", "am_pm"], check=True, env=active,
                               stdout=subprocess.PIPE)
        self.assertEqual(shown.stdout, b",\nbefore;after\n")

    def test_dates_have_plain_digits_under_another_locale(self):
        self.assert_moment_of_the_decode(self.environment, timedelta(minutes=330))

    def test_decimals_have_a_point_under_another_locale(self):
        one = self.decoded_in(self.environment, "--gain", "1.5")
        self.assertEqual(one[748:], self.decoded_in({"LC_ALL": "C"}, "--gain", "1.5")[748:])
        take = self.folder / "take.wav"
        self.assert_wrong_usage(decode("--gain", "1,5", take, env=self.environment))


if __name__ == "__main__":
    unittest.main()
