"""What is to be seen on the session's screen."""

import os
import subprocess


def _grab(place, options, output):
    return subprocess.run(["ffmpeg", "-nostdin", "-loglevel", "error", "-f", "x11grab", *options,
                           "-i", os.environ["DISPLAY"] + place, "-frames:v", "1", *output],
                          check=True, stdout=subprocess.PIPE).stdout


def colour(x, y):
    """Red, green and blue of a point, 0 to 255."""
    return tuple(_grab(f"+{x},{y}", ["-draw_mouse", "0", "-video_size", "1x1"],
                       ["-f", "rawvideo", "-pix_fmt", "rgb24", "-"]))


def save(file, part=None):
    """A picture of all of it, or of a part without the pointer: x, y, width and height."""
    if part is None:
        _grab("", [], ["-y", str(file)])
    else:
        x, y, width, height = part
        _grab(f"+{x},{y}", ["-draw_mouse", "0", "-video_size", f"{width}x{height}"], ["-y", str(file)])
