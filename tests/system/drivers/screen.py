"""The virtual display: its windows, the keyboard and the mouse. A program per key would take most of the tests' time."""

import ctypes
import time
from ctypes import POINTER, Structure, byref, c_char_p, c_int, c_long, c_uint, c_ulong, c_void_p

VIEWABLE = 2
ANY_TYPE = 0
CLIENT_MESSAGE = 33
SUBSTRUCTURE = 1 << 19 | 1 << 20
KEY_PAUSE_S = 0.02
LETTER_PAUSE_S = 0.005


class Attributes(Structure):
    """XWindowAttributes."""

    _fields_ = [(name, c_int) for name in ("x", "y", "width", "height", "border", "depth")] + [
        ("visual", c_void_p), ("root", c_ulong)] + [
        (name, c_int) for name in ("kind", "bit_gravity", "gravity", "backing_store")] + [
        ("planes", c_ulong), ("pixel", c_ulong), ("save_under", c_int), ("colours", c_ulong), ("installed", c_int),
        ("state", c_int), ("all_events", c_long), ("your_events", c_long), ("not_propagated", c_long),
        ("redirect", c_int), ("screen", c_void_p)]


class ClientMessage(Structure):
    """XClientMessageEvent, as large as XEvent."""

    _fields_ = [("kind", c_int), ("serial", c_ulong), ("sent", c_int), ("display", c_void_p), ("window", c_ulong),
                ("name", c_ulong), ("format", c_int), ("data", c_long * 5), ("rest", c_long * 24)]


_x = ctypes.CDLL("libX11.so.6")
_test = ctypes.CDLL("libXtst.so.6")
_x.XOpenDisplay.argtypes, _x.XOpenDisplay.restype = [c_char_p], c_void_p
_x.XDefaultRootWindow.argtypes, _x.XDefaultRootWindow.restype = [c_void_p], c_ulong
_x.XInternAtom.argtypes, _x.XInternAtom.restype = [c_void_p, c_char_p, c_int], c_ulong
_x.XGetWindowProperty.argtypes = [c_void_p, c_ulong, c_ulong, c_long, c_long, c_int, c_ulong, POINTER(c_ulong),
                                  POINTER(c_int), POINTER(c_ulong), POINTER(c_ulong), POINTER(c_void_p)]
_x.XQueryTree.argtypes = [c_void_p, c_ulong, POINTER(c_ulong), POINTER(c_ulong), POINTER(POINTER(c_ulong)),
                          POINTER(c_uint)]
_x.XGetWindowAttributes.argtypes = [c_void_p, c_ulong, POINTER(Attributes)]
_x.XTranslateCoordinates.argtypes = [c_void_p, c_ulong, c_ulong, c_int, c_int, POINTER(c_int), POINTER(c_int),
                                     POINTER(c_ulong)]
_x.XSendEvent.argtypes = [c_void_p, c_ulong, c_int, c_long, c_void_p]
_x.XStringToKeysym.argtypes, _x.XStringToKeysym.restype = [c_char_p], c_ulong
_x.XKeysymToKeycode.argtypes = [c_void_p, c_ulong]
_x.XKeycodeToKeysym.argtypes, _x.XKeycodeToKeysym.restype = [c_void_p, c_uint, c_int], c_ulong
_x.XSync.argtypes = [c_void_p, c_int]
_x.XFree.argtypes = [c_void_p]
_test.XTestFakeKeyEvent.argtypes = [c_void_p, c_uint, c_int, c_ulong]
_test.XTestFakeMotionEvent.argtypes = [c_void_p, c_int, c_int, c_int, c_ulong]
_test.XTestFakeButtonEvent.argtypes = [c_void_p, c_uint, c_int, c_ulong]
# A window may be gone when it is asked for something.
_ignore = ctypes.CFUNCTYPE(c_int, c_void_p, c_void_p)(lambda display, error: 0)
_x.XSetErrorHandler(_ignore)


class Screen:
    """A connection to the display of this name. For one thread."""

    def __init__(self, name):
        self._display = _x.XOpenDisplay(name.encode())
        if not self._display:
            raise OSError(f"no display {name}")
        self._root = _x.XDefaultRootWindow(self._display)

    def has_window_manager(self):
        return bool(self._numbers(self._root, "_NET_SUPPORTING_WM_CHECK"))

    def windows(self):
        """The ordinary windows, in the order in which they came: number and title."""
        return {window: self.title(window) for window in self._numbers(self._root, "_NET_CLIENT_LIST")}

    def top_level(self):
        """Everything that is shown, menus too. With the window manager's frames in place of the windows."""
        root, parent, children, count = c_ulong(), c_ulong(), POINTER(c_ulong)(), c_uint()
        _x.XQueryTree(self._display, self._root, byref(root), byref(parent), byref(children), byref(count))
        found = set()
        for each in children[:count.value]:
            attributes = Attributes()
            if _x.XGetWindowAttributes(self._display, each, byref(attributes)) and attributes.state == VIEWABLE:
                found.add(each)
        if count.value:
            _x.XFree(children)
        return found

    def title(self, window):
        return self._property(window, "_NET_WM_NAME").decode(errors="replace")

    def active(self):
        return (self._numbers(self._root, "_NET_ACTIVE_WINDOW") or [0])[0]

    def activate(self, window):
        """Asks the window manager, which may take its time."""
        # As a pager asks, which is always obeyed.
        message = ClientMessage(CLIENT_MESSAGE, 0, 1, self._display, window, self._atom("_NET_ACTIVE_WINDOW"), 32,
                                (c_long * 5)(2, 0, 0, 0, 0))
        _x.XSendEvent(self._display, self._root, 0, SUBSTRUCTURE, byref(message))
        _x.XSync(self._display, 0)

    def place(self, window):
        """Left, top and width on the screen, without the frame; and the frame: left, right, top, bottom."""
        attributes, left, top, child = Attributes(), c_int(), c_int(), c_ulong()
        _x.XGetWindowAttributes(self._display, window, byref(attributes))
        _x.XTranslateCoordinates(self._display, window, self._root, 0, 0, byref(left), byref(top), byref(child))
        return left.value, top.value, attributes.width, self._numbers(window, "_NET_FRAME_EXTENTS") or [0, 0, 0, 0]

    def press(self, *keys):
        """Keys by their names in X; letters and digits by themselves."""
        for key in keys:
            code = self._code(_x.XStringToKeysym(key.encode()))
            for down in (1, 0):
                self._key(code, down, KEY_PAUSE_S)

    def type(self, text):
        """Printable characters of ASCII, each with the shift key if it needs that."""
        shift = self._code(_x.XStringToKeysym(b"Shift_L"))
        for letter in text:
            code = self._code(ord(letter))
            is_shifted = _x.XKeycodeToKeysym(self._display, code, 0) != ord(letter)
            if is_shifted:
                self._key(shift, 1, LETTER_PAUSE_S)
            for down in (1, 0):
                self._key(code, down, LETTER_PAUSE_S)
            if is_shifted:
                self._key(shift, 0, LETTER_PAUSE_S)

    def _code(self, symbol):
        return _x.XKeysymToKeycode(self._display, symbol) & 0xFF

    def _key(self, code, down, pause):
        _test.XTestFakeKeyEvent(self._display, code, down, 0)
        _x.XSync(self._display, 0)
        time.sleep(pause)

    def click(self, left, top, button=1):
        _test.XTestFakeMotionEvent(self._display, -1, left, top, 0)
        for down in (1, 0):
            _test.XTestFakeButtonEvent(self._display, button, down, 0)
            _x.XSync(self._display, 0)
            time.sleep(KEY_PAUSE_S)

    def _atom(self, name):
        return _x.XInternAtom(self._display, name.encode(), 0)

    def _property(self, window, name):
        kind, form, count, rest, data = c_ulong(), c_int(), c_ulong(), c_ulong(), c_void_p()
        _x.XGetWindowProperty(self._display, window, self._atom(name), 0, 1024, 0, ANY_TYPE, byref(kind), byref(form),
                              byref(count), byref(rest), byref(data))
        if not data.value:
            return b""
        # Items of 32 bits are handed over as long.
        text = ctypes.string_at(data, count.value * (ctypes.sizeof(c_long) if form.value == 32 else form.value // 8))
        _x.XFree(data)
        return text

    def _numbers(self, window, name):
        data = self._property(window, name)
        size = ctypes.sizeof(c_long)
        return [int.from_bytes(data[at:at + size], "little") for at in range(0, len(data), size)]
