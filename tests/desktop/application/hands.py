"""Pointer and keys, as the display's server delivers them."""

import subprocess


def _do(*words):
    subprocess.run(["xdotool", *map(str, words)], check=True, stdin=subprocess.DEVNULL)


def key(*names):
    """Keys by name, such as Tab or ctrl+q, one after the other."""
    _do("key", "--clearmodifiers", *names)


def write(text):
    _do("type", "--clearmodifiers", "--delay", "5", text)


def click(x, y, times=1):
    _do("mousemove", "--sync", x, y, "click", "--repeat", times, "--delay", "40", 1)


def drag(start, end):
    """Presses at the one point and releases at the other."""
    _do("mousemove", "--sync", *start, "mousedown", 1, "mousemove", "--sync", *end, "mouseup", 1)
