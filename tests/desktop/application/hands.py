"""Pointer and keys, as the display's server delivers them."""

import contextlib
import subprocess


def _do(*words):
    subprocess.run(["xdotool", *map(str, words)], check=True, stdin=subprocess.DEVNULL)


def key(*names):
    """Keys by name, such as Tab or ctrl+q, one after the other."""
    _do("key", "--clearmodifiers", *names)


def move(x, y):
    _do("mousemove", x, y)


def click(x, y, times=1):
    _do("mousemove", x, y, "click", "--repeat", times, "--delay", "40", 1)


@contextlib.contextmanager
def holding(place):
    """With the left button held down since it was at that place."""
    _do("mousemove", *place, "mousedown", 1)
    try:
        yield
    finally:
        _do("mouseup", 1)
