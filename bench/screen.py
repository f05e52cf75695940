"""A screen of its own for benchmarks: what is on it, keys and clicks for the window on it. No window manager."""

import ctypes
import os
import subprocess
import sys
import time
from ctypes import POINTER, byref, c_char_p, c_int, c_uint, c_uint32, c_ulong, c_void_p

import numpy

ALL_PLANES, Z_PIXMAP, REVERT_TO_POINTER_ROOT = 2**32 - 1, 2, 1
IS_VIEWABLE = 2


class Image(ctypes.Structure):
    _fields_ = [("width", c_int), ("height", c_int), ("xoffset", c_int), ("format", c_int), ("data", c_void_p),
                ("byte_order", c_int), ("bitmap_unit", c_int), ("bitmap_bit_order", c_int), ("bitmap_pad", c_int),
                ("depth", c_int), ("bytes_per_line", c_int), ("bits_per_pixel", c_int)]


def library(name, **functions):
    loaded = ctypes.CDLL(name)
    for function, (result, *arguments) in functions.items():
        getattr(loaded, function).restype = result
        getattr(loaded, function).argtypes = arguments
    return loaded


class Screen:
    def __init__(self, width=1400, height=1400):
        reading, writing = os.pipe()
        self.server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(writing), "-screen", "0", f"{width}x{height}x24", "-nolisten", "tcp", "-noreset"],
            pass_fds=[writing], stderr=subprocess.DEVNULL)
        os.close(writing)
        with os.fdopen(reading) as answer:
            self.name = ":" + answer.readline().strip()
        self.x = library("libX11.so.6", XOpenDisplay=(c_void_p, c_char_p), XDefaultRootWindow=(c_ulong, c_void_p),
                         XGetImage=(POINTER(Image), c_void_p, c_ulong, c_int, c_int, c_uint, c_uint, c_ulong, c_int),
                         XDestroyImage=(c_int, POINTER(Image)), XSync=(c_int, c_void_p, c_int), XFree=(c_int, c_void_p),
                         XQueryTree=(c_int, c_void_p, c_ulong, POINTER(c_ulong), POINTER(c_ulong),
                                     POINTER(POINTER(c_ulong)), POINTER(c_uint)),
                         XGetGeometry=(c_int, c_void_p, c_ulong, POINTER(c_ulong), POINTER(c_int), POINTER(c_int),
                                       POINTER(c_uint), POINTER(c_uint), POINTER(c_uint), POINTER(c_uint)),
                         XGetInputFocus=(c_int, c_void_p, POINTER(c_ulong), POINTER(c_int)),
                         XStringToKeysym=(c_ulong, c_char_p), XKeysymToKeycode=(ctypes.c_ubyte, c_void_p, c_ulong))
        self.test = library("libXtst.so.6", XTestFakeKeyEvent=(c_int, c_void_p, c_uint, c_int, c_ulong),
                            XTestFakeButtonEvent=(c_int, c_void_p, c_uint, c_int, c_ulong),
                            XTestFakeMotionEvent=(c_int, c_void_p, c_int, c_int, c_int, c_ulong))
        self.display = self.x.XOpenDisplay(self.name.encode())
        if not self.display:
            sys.exit(f"no screen {self.name}")
        self.root = self.x.XDefaultRootWindow(self.display)

    def close(self):
        self.server.terminate()  # killed, it would leave its lock
        self.server.wait()

    def environment(self):
        return {**os.environ, "DISPLAY": self.name, "SDL_VIDEODRIVER": "x11", "SDL_AUDIODRIVER": "disk",
                "SDL_DISKAUDIOFILE": "/dev/null"}

    def window(self):
        """Left, top, width and height of the window; waits until it is there and has the keyboard."""
        while True:
            found, count = POINTER(c_ulong)(), c_uint()
            none, window, kind = c_ulong(), c_ulong(), c_int()
            self.x.XQueryTree(self.display, self.root, byref(none), byref(none), byref(found), byref(count))
            windows = [found[index] for index in range(count.value)]
            self.x.XGetInputFocus(self.display, byref(window), byref(kind))
            if count.value:
                self.x.XFree(found)
            if window.value in windows:
                x, y, width, height, border, depth = c_int(), c_int(), c_uint(), c_uint(), c_uint(), c_uint()
                self.x.XGetGeometry(self.display, window, byref(none), byref(x), byref(y), byref(width), byref(height),
                                    byref(border), byref(depth))
                return x.value, y.value, width.value, height.value
            time.sleep(0.002)

    def picture(self, x, y, width, height):
        """Rows of pixels: blue, green, red, unused."""
        image = self.x.XGetImage(self.display, self.root, x, y, width, height, ALL_PLANES, Z_PIXMAP)
        rows = ctypes.string_at(image.contents.data, image.contents.bytes_per_line * height)
        self.x.XDestroyImage(image)
        return numpy.frombuffer(rows, numpy.uint8).reshape(height, width, 4)[:, :, :3]

    def press(self, key):
        code = self.x.XKeysymToKeycode(self.display, self.x.XStringToKeysym(key.encode()))
        self.test.XTestFakeKeyEvent(self.display, code, 1, 0)
        self.test.XTestFakeKeyEvent(self.display, code, 0, 0)
        self.x.XSync(self.display, 0)

    def click(self, x, y):
        self.test.XTestFakeMotionEvent(self.display, -1, x, y, 0)
        for is_down in (1, 0):
            self.test.XTestFakeButtonEvent(self.display, 1, is_down, 0)
        self.x.XSync(self.display, 0)
