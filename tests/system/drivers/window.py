"""Quarn's windows on a virtual display in the machine."""

import os
import re
import subprocess
import time

from bench import AS_USER, Failed, HOME, LIMIT_S, Account, check, until

MAIN = r"^Quarn   \("
TERMINAL = r"^Quarn - Terminal Screeen"
ERROR, QUESTION, INFORMATION = "^Quarn : Error$", "^Quarn : Confirmation$", "^Quarn : Information$"
PASSING = "^Quarn : Infomation$"

_display = None


def display():
    """The display, which is started when it is first needed."""
    global _display
    if _display is None:
        folder = Account().folder
        ready, tell = os.pipe()
        subprocess.Popen(["Xvfb", "-displayfd", str(tell), "-screen", "0", "1280x1024x24", "-nolisten", "tcp", "-ac"],
                         pass_fds=[tell], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(tell)
        _display = ":" + os.read(ready, 64).decode().strip()
        check(_display != ":", "there is no virtual display")
        subprocess.Popen(["openbox"], env={**os.environ, "DISPLAY": _display, "HOME": folder},
                         stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        until(lambda: b"# 0x" in tool("xprop", "-root", "_NET_SUPPORTING_WM_CHECK"), "the window manager")
    return _display


def tool(*command, **more):
    """What a program for the display prints."""
    return subprocess.run(command, env={**os.environ, "DISPLAY": _display or display()}, stdout=subprocess.PIPE,
                          stderr=subprocess.DEVNULL, timeout=LIMIT_S, check=False, **more).stdout


def press(*keys):
    tool("xdotool", "key", "--clearmodifiers", "--delay", "20", *keys)


class Quarn:
    """The running program. Use it in a `with`."""

    def __init__(self, account, *arguments):
        self._errors = open(os.path.join(account.folder, "errors"), "w+b")
        account.environment.update(DISPLAY=display(), QT_QPA_PLATFORM="xcb",
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
        """Number and title of each visible window."""
        found = []
        for number in tool("xdotool", "search", "--onlyvisible", "--class", "^quarn$").split():
            number = number.decode()
            title = tool("xdotool", "getwindowname", number).decode(errors="replace").removesuffix("\n")
            found.append((number, title))
        return found

    def find(self, title):
        found = tool("xdotool", "search", "--onlyvisible", "--name", title).split()
        return found[-1].decode() if found else None

    def wait_for(self, title, seconds=LIMIT_S):
        """The window whose title matches."""

        def look():
            check(self.process.poll() is None, f"Quarn has ended with {self.process.poll()}")
            return self.find(title)

        try:
            return until(look, title, seconds)
        except Failed as problem:
            raise Failed(f"{problem}; there is {[title for _, title in self.windows()]}") from None

    def wait_gone(self, title):
        until(lambda: not self.find(title), f"the end of {title}")

    def title(self, window):
        return tool("xdotool", "getwindowname", window).decode(errors="replace").removesuffix("\n")

    def activate(self, window):
        def is_active():
            return tool("xdotool", "getactivewindow").strip().decode() == window

        deadline = time.monotonic() + LIMIT_S
        while not is_active():
            check(time.monotonic() < deadline, "the window does not become the active one")
            if window not in {number for number, _ in self.windows()}:
                return
            tool("xdotool", "windowactivate", "--sync", window)

    def terminal(self):
        """Waits for the Terminal Screen and for the messages of the start to pass."""
        window = self.wait_for(TERMINAL)
        self.wait_for(MAIN)
        self.wait_gone("^Quarn : ")
        self.activate(window)
        return window

    def lines(self, window):
        """How many lines the log has, as the title says."""
        found = re.search(r"\[ *\d+-(\d+) *\]$", self.title(window))
        return int(found[1]) if found else 0

    def enter(self, window, text):
        self.activate(window)
        tool("xdotool", "type", "--delay", "20", text)
        press("Return")

    def command(self, window, text):
        """Types the command, and waits for its response in the log."""
        before = self.lines(window)
        self.enter(window, text)
        until(lambda: self.lines(window) > before, f"the response to {text}")

    def log(self, window):
        """Copies the whole log."""
        mark = b"nothing copied yet"
        # It stays in the background, to hand over what it has.
        subprocess.run(["xclip", "-selection", "clipboard"], env={**os.environ, "DISPLAY": display()}, input=mark,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=True)
        self.activate(window)
        before = {number for number, _ in self.windows()}

        def menu_is_there():
            tool("xdotool", "mousemove", "--window", window, "400", "300", "click", "3")
            time.sleep(0.3)
            return {number for number, _ in self.windows()} - before

        until(menu_is_there, "the Terminal Screen's menu")
        press("Down", "Down", "Return")

        def copied():
            text = tool("xclip", "-o", "-selection", "clipboard", "-t", "UTF8_STRING")
            return text if text != mark else b""

        return until(copied, "the log on the clipboard")

    def choose_from_port_menu(self, letter):
        """Opens the menu with the mouse, and chooses with the underlined letter."""
        main = self.wait_for(MAIN)
        self.activate(main)
        before = {number for number, _ in self.windows()}

        def menu_is_there():
            tool("xdotool", "mousemove", "--window", main, "55", "12", "click", "1")
            time.sleep(0.5)
            return {number for number, _ in self.windows()} - before

        until(menu_is_there, "the menu Port")
        press(letter)

    def answer(self, title, key):
        """Presses a key in the box until it is gone."""
        box = self.wait_for(title)

        def is_gone():
            self.activate(box)
            press(key)
            time.sleep(0.2)
            return box not in {number for number, _ in self.windows()}

        until(is_gone, f"the end of {title}")

    def end(self):
        """Ends it as a person does. Returns how many seconds that took."""
        main = self.wait_for(MAIN)
        self.activate(main)
        self.point_at_close_box(main)
        began = time.monotonic()
        while True:
            tool("xdotool", "click", "1")
            try:
                status = self.process.wait(5)
                break
            except subprocess.TimeoutExpired:
                # What comes right after a box has closed may be dropped.
                check(time.monotonic() < began + LIMIT_S, f"Quarn does not end; there is {self.windows()}")
        check(status == 0, f"Quarn ended with {status}")
        return time.monotonic() - began

    def point_at_close_box(self, window):
        """The last one in the title bar, about as wide as that is high."""
        text = tool("xwininfo", "-id", window, "-stats").decode()
        left, top, width = (int(re.search(rf"{name}: +(-?\d+)", text)[1])
                            for name in ("Absolute upper-left X", "Absolute upper-left Y", "Width"))
        frame = [int(each) for each in re.findall(r"\d+", tool("xprop", "-id", window, "_NET_FRAME_EXTENTS").decode())]
        tool("xdotool", "mousemove", str(left + width - frame[2] // 2), str(top - frame[2] // 2))
