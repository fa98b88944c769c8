"""A system with little memory."""

from case import run
from surroundings_test import SurroundingsTest

MIB = 2 ** 20


class Memory(SurroundingsTest):
    def test_half_a_gibibyte_is_enough(self):
        # What the program takes for itself: libraries and the graphics reserve more than they use.
        self.assert_works("prlimit", f"--data={512 * MIB}", "--")


if __name__ == "__main__":
    run()
