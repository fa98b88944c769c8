"""Windows as the window manager knows them, and the button in their title bars."""

import ctypes
import subprocess


class ClientMessage(ctypes.Structure):
    _fields_ = [("type", ctypes.c_int), ("serial", ctypes.c_ulong), ("send_event", ctypes.c_int),
                ("display", ctypes.c_void_p), ("window", ctypes.c_ulong),
                ("message_type", ctypes.c_ulong), ("format", ctypes.c_int),
                ("data", ctypes.c_long * 5),
                ("rest", ctypes.c_long * 12)]  # as much as the largest event has


def windows_of(process, title):
    """The windows of that title which are to be seen, in the order in which they were made."""
    answer = subprocess.run(["xdotool", "search", "--all", "--onlyvisible", "--pid", str(process),
                             "--name", f"^{title}$"], check=False, stdin=subprocess.DEVNULL,
                            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout
    return sorted(map(int, answer.split()))


def close(window):
    """Asks the window manager to close it, as the button does."""
    client_message, from_user = 33, 2
    substructure = 1 << 19 | 1 << 20
    x11 = ctypes.CDLL("libX11.so.6")
    x11.XOpenDisplay.restype = ctypes.c_void_p
    x11.XDefaultRootWindow.restype = ctypes.c_ulong
    x11.XInternAtom.restype = ctypes.c_ulong
    display = ctypes.c_void_p(x11.XOpenDisplay(None))
    assert display, "there is no display"
    message = ClientMessage(
        type=client_message, window=window, format=32,
        message_type=x11.XInternAtom(display, b"_NET_CLOSE_WINDOW", False))
    message.data[1] = from_user
    x11.XSendEvent(display, ctypes.c_ulong(x11.XDefaultRootWindow(display)), False,
                   ctypes.c_long(substructure), ctypes.byref(message))
    x11.XCloseDisplay(display)
