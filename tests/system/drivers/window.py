"""Quarn's windows on a virtual display in the machine."""

import os
import re
import subprocess
import threading
import time

from bench import AS_USER, HOME, LIMIT_S, Account, Background, Failed, check, equal, until
from screen import Screen

MAIN = r"^Quarn   \("
TERMINAL = r"^Quarn - Terminal Screeen"
ERROR, QUESTION, INFORMATION = "^Quarn : Error$", "^Quarn : Confirmation$", "^Quarn : Information$"
FORMAT, SETTINGS = "^Quarn - Command Format", "^Quarn - COM Port Settings"
# Its title says something else while it connects.
NUMBER = r"^Quarn - (COM Port Number )?\("
# Its rows: how far down each is, and what can be chosen in it.
FORMAT_ROWS = {"DELIMITER": 28, "COM_BUF": 55}
FORMAT_PLACES = {"DELIMITER": ("CR", "LF", "CRLF", "STX_ETX"), "COM_BUF": ("1K", "2K", "6K")}
# Where the button SET is in the port settings.
SET_PLACE = 358, 94
# Keys that come right after a box has closed may be dropped.
ATTEMPTS = 3
# Between two looks.
PAUSE_S = 0.1

_name = None
_screen = None


def screen():
    """The display, which is started when it is first needed."""
    global _name, _screen
    if _screen is None:
        folder = Account().folder
        ready, tell = os.pipe()
        subprocess.Popen(["Xvfb", "-displayfd", str(tell), "-screen", "0", "1280x1024x24", "-nolisten", "tcp", "-ac"],
                         pass_fds=[tell], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(tell)
        _name = ":" + os.read(ready, 64).decode().strip()
        check(_name != ":", "there is no virtual display")
        subprocess.Popen(["openbox"], env=environment(HOME=folder), stdout=subprocess.DEVNULL,
                         stderr=subprocess.DEVNULL)
        shown = Screen(_name)
        until(shown.has_window_manager, "the window manager")
        _screen = shown
    return _screen


def environment(**more):
    return {**os.environ, "DISPLAY": _name, **more}


class Appearances(Background):
    """Looks all the time which windows appear. Use it in a `with`."""

    PAUSE_S = 0.05

    def __init__(self):
        super().__init__()
        screen()
        # A connection of its own, for one thread at a time.
        self._screen = Screen(_name)
        self._lock = threading.Lock()
        self._titles = {}
        self._taken = set()

    def _step(self):
        with self._lock:
            for window, title in self._screen.windows().items():
                # A window that is just being closed has none.
                self._titles[window] = title or self._titles.get(window, "")

    def take(self):
        """The titles of those that have appeared since the last call, sorted."""
        self._step()
        new = dict(self._titles)
        titles = sorted(title for window, title in new.items() if window not in self._taken)
        self._taken |= set(new)
        return titles


class Quarn:
    """The running program. Use it in a `with`."""

    def __init__(self, account, *arguments):
        self._account = account
        self._errors = open(os.path.join(account.folder, "errors"), "w+b")
        self._screen = screen()
        account.environment.update(DISPLAY=_name, QT_QPA_PLATFORM="xcb",
                                   DBUS_SESSION_BUS_ADDRESS="unix:path=" + HOME + "/no-session")
        self.process = subprocess.Popen([os.path.join(HOME, "bin/quarn"), *arguments], env=account.environment,
                                        stdin=subprocess.DEVNULL, stdout=self._errors, stderr=self._errors, **AS_USER)

    def __enter__(self):
        return self

    def __exit__(self, *problem):
        if self.process.poll() is None:
            self.process.kill()
        self.process.wait()
        self._errors.close()

    def windows(self):
        """Number and title of each window."""
        return self._screen.windows()

    def find(self, title):
        found = [number for number, text in self.windows().items() if re.search(title, text)]
        return found[-1] if found else None

    def wait_for(self, title, seconds=LIMIT_S):
        """The window whose title matches."""

        def look():
            check(self.process.poll() is None, f"Quarn has ended with {self.process.poll()}")
            return self.find(title)

        try:
            return until(look, title, seconds, PAUSE_S)
        except Failed as problem:
            raise Failed(f"{problem}; there is {list(self.windows().values())}") from None

    def wait_gone(self, title):
        until(lambda: not self.find(title), f"the end of {title}", pause=PAUSE_S)

    def activate(self, window):
        """Returns when the window is the active one, or gone."""

        def done():
            if self._screen.active() == window or window not in self.windows():
                return True
            self._screen.activate(window)
            return False

        until(done, "the window to become the active one", pause=PAUSE_S)

    def terminal(self):
        """Waits for the Terminal Screen and for the messages of the start to pass."""
        window = self.wait_for(TERMINAL)
        self.wait_for(MAIN)
        self.wait_gone("^Quarn : ")
        self.activate(window)
        return window

    def press(self, *keys):
        self._screen.press(*keys)

    def lines(self, window):
        """How many lines the log has, as the title says."""
        found = re.search(r"\[ *\d+-(\d+) *\]$", self._screen.title(window))
        return int(found[1]) if found else 0

    def enter(self, window, text):
        self.activate(window)
        self._screen.type(text)
        self.press("Return")

    def command(self, window, text, answer=None):
        """Types the command, and waits for its response in the log, which must be this answer if one is given."""
        before = self.lines(window)
        self.enter(window, text)
        until(lambda: self.lines(window) > before, f"the response to {text}", pause=PAUSE_S)
        if answer is not None:
            wanted = b"[" + text.encode() + b"]\r" + answer + b"\r"
            equal("the end of the log", self.log(window)[-len(wanted):], wanted)

    def log(self, window):
        """Copies the whole log."""
        mark = b"nothing copied yet"
        # It stays in the background, to hand over what it has.
        clipboard = ["xclip", "-selection", "clipboard"]
        subprocess.run(clipboard, env=environment(), input=mark, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                       check=True)
        self.open_menu(window, 400, 300, button=3)
        self.press("Down", "Down", "Return")

        def copied():
            text = subprocess.run([*clipboard, "-o", "-t", "UTF8_STRING"], env=environment(), stdout=subprocess.PIPE,
                                  stderr=subprocess.DEVNULL, timeout=LIMIT_S, check=False).stdout
            return text if text != mark else b""

        return until(copied, "the log on the clipboard", pause=PAUSE_S)

    def open_menu(self, window, left, top, button):
        """Clicks there until something more is shown."""
        self.activate(window)
        before = self._screen.top_level()
        window_left, window_top, _, _ = self._screen.place(window)
        clicked = 0.0

        def menu_is_there():
            nonlocal clicked
            if self._screen.top_level() - before:
                return True
            # A click that comes right after a box has closed may be dropped; a second one closes the menu.
            if time.monotonic() > clicked + 5:
                self._screen.click(window_left + left, window_top + top, button)
                clicked = time.monotonic()
            return False

        until(menu_is_there, "the menu", pause=PAUSE_S)

    def choose_from_port_menu(self, letter):
        """Opens the menu with the mouse, and chooses with the underlined letter."""
        self.open_menu(self.wait_for(MAIN), 55, 12, button=1)
        self.press(letter)

    def choose_format(self, setting, value):
        """Clicks on a delimiter or a size in the Command Format dialog."""
        self.open_menu(self.wait_for(MAIN), 148, 12, button=1)
        self.press("f")
        self.click_until(self.wait_for(FORMAT), 200 + 63 * FORMAT_PLACES[setting].index(value), FORMAT_ROWS[setting],
                         lambda: self._account.setting(setting) == value, f"{setting} to be {value}")
        self.answer(FORMAT, "Escape")

    def press_set(self, is_done):
        """Presses SET in the port settings until it is done."""
        self.choose_from_port_menu("s")
        self.click_until(self.wait_for(SETTINGS), *SET_PLACE, is_done, "what SET does")
        self.answer(SETTINGS, "Escape")

    def click_until(self, box, left, top, is_done, what):
        """Clicks at this place of the box. What comes right after another box has closed may be dropped."""
        self.activate(box)
        box_left, box_top, _, _ = self._screen.place(box)
        clicked = 0.0

        def done():
            nonlocal clicked
            if is_done():
                return True
            if time.monotonic() > clicked + 5:
                self._screen.click(box_left + left, box_top + top)
                clicked = time.monotonic()
            return False

        until(done, what, pause=PAUSE_S)

    def choose_port(self, port):
        """Chooses the port in the COM Port Number dialog. Returns the seconds from YES to the word about it."""

        def place():
            _, ports, _ = self._account.run("quarn-send", "--list")
            return [row.split()[0] for row in ports.decode().splitlines()].index(port) + 1

        for _ in range(ATTEMPTS):
            self.choose_from_port_menu("n")
            self.activate(self.wait_for(NUMBER))
            # The list has the focus for one key. First in it is NONE.
            for key in ["Home"] + ["Down"] * place():
                self.press("Tab", key)
                # The dialog looks ten times a second.
                time.sleep(2 * PAUSE_S)
            self.press("Return")
            try:
                self.activate(self.wait_for(QUESTION, 5))
            except Failed:
                # A key was dropped, and nothing was changed.
                continue
            began = time.monotonic()
            self.press("y")
            until(lambda: self.find(INFORMATION) or self.find(ERROR), "the word about the port", pause=PAUSE_S)
            took = time.monotonic() - began
            self.answer(INFORMATION if self.find(INFORMATION) else ERROR, "Return")
            self.wait_gone(NUMBER)
            if self.find(rf"^Quarn   \({port}\)$"):
                return took
        raise Failed(f"{port} cannot be chosen; there is {list(self.windows().values())}")

    def answer(self, title, key):
        """Presses a key in the box until it is gone."""
        box = self.wait_for(title)
        pressed = 0.0

        def is_gone():
            nonlocal pressed
            if box not in self.windows():
                return True
            if time.monotonic() > pressed + 2:
                self.activate(box)
                self.press(key)
                pressed = time.monotonic()
            return False

        until(is_gone, f"the end of {title}", pause=PAUSE_S)

    def end(self):
        """Ends it as a person does, with the last box in the title bar. Returns how many seconds that took."""
        main = self.wait_for(MAIN)
        self.activate(main)
        left, top, width, frame = self._screen.place(main)
        began = time.monotonic()
        while True:
            # It is about as wide as the title bar is high.
            self._screen.click(left + width - frame[2] // 2, top - frame[2] // 2)
            try:
                status = self.process.wait(5)
                break
            except subprocess.TimeoutExpired:
                # What comes right after a box has closed may be dropped.
                check(time.monotonic() < began + LIMIT_S, f"Quarn does not end; there is {self.windows()}")
        check(status == 0, f"Quarn ended with {status}")
        return time.monotonic() - began
