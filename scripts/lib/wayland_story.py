"""Plays the whole story of the program on sway, without an X server: from the first start to the last exit.

usage: wayland_story.py PROGRAMS PLACE

PROGRAMS: the folder of quarn and quarn-device. PLACE: a folder for logs. Prints "subject=yes" for each subject that
works, and ends at the first that does not work. The keyboard and the pointer are those of the compositor, the clipboard
is that of wl-copy and wl-paste. What the program did is read from its log, copied with its menu, and from its files.
"""

import os
import pathlib
import re
import subprocess
import sys
import time

from wayland_desktop import BOX, MENUS, PLAIN, QUESTION, SAVE_AS, Failed, Sway, Windows, WindowsInSway, wait_until

# The longest side of a window's frame, in pixels, but for its title.
FRAME = 4
# After this time without an effect, a choice from a menu counts as lost.
ONE_TRY_S = 10
MAIN = r"Quarn   \(.*\)"
TERMINAL = r"Quarn - Terminal Screeen .*"
WARNING = r"Quarn : Warning"
INFORMATION = r"Quarn : Information"
PASSING = r"Quarn : Infomation"
OPEN = r"Open Quarn Configuration File"
OPTION = r"Quarn - Terminal Screen Option"
TABLE = r"Quarn - Function Key Table"
RULES = '"id" -> line "SIM-1"\n"temp?" -> line "23.5 C"\n"stored two" -> line "from the table"\n* -> line "OK"\n'
DEMO_SAYS = "SIM-1 bench instrument, firmware 1.00"
# The settings of a first start.
DEFAULTS = """\
.VER=Quarn  (Ver. 1.00)
.BEGIN
AUTO_CLR=OFF
BK_COLOR=NAVY
CHK_CMD=id
COM_BITS=8
COM_BPS=9600
COM_BUF=1K
COM_PARITY=None
COM_PORT=NONE
COM_STOP=1
DELIMITER=CR
ENBL_NULL=OFF
FUNC_KEY=ON
INPUT_MAX=N
LINE_NUM=OFF
MAIN_POS=TL
MARK_COLOR=WHITE
MEM0=function-1
MEM1=function-2
MEM2=function-3
MEM3=function-4
MEM4=function-5
MEM5=function-6
MEM6=function-7
MEM7=function-8
MEM8=function-9
MEM9=function-10
PORT_SPEED=HIGH
R_TIMEOUT=ON
START_DISP=ON
.END
"""


class Story:
    def __init__(self, compositor, programs, place):
        self.programs = programs
        self.place = place
        self.compositor = compositor
        self.home = place / "home"
        self.home.mkdir()
        runtime = place / "runtime"
        runtime.mkdir(mode=0o700)
        (place / "rules").write_text(RULES)
        self.settings = self.home / "Halvo/Quarn/Quarn.ini"
        self.environment = {"PATH": os.environ["PATH"], "LANG": "C.UTF-8", "HOME": str(self.home),
                            "XDG_CONFIG_HOME": str(self.home), "XDG_RUNTIME_DIR": str(runtime),
                            "XDG_SESSION_TYPE": "wayland", "WAYLAND_DEBUG": "1",
                            "WAYLAND_DISPLAY": self.compositor.environment["WAYLAND_DISPLAY"],
                            "DBUS_SESSION_BUS_ADDRESS": f"unix:path={runtime}/no-session"}
        self.shown = WindowsInSway(self.compositor)
        self.lines = []

    # Hands and eyes.

    def start(self, name, *arguments):
        """The process, and what its own protocol log says."""
        process = self.compositor.start(name, [self.programs / "quarn", *arguments], self.environment)
        return process, Windows(self.place / f"{name}.log")

    def plug_in(self):
        link = self.home / "Halvo/Quarn/ports/COM7"
        command = [self.programs / "quarn-device", "--link", link, "--rules", self.place / "rules"]
        self.instrument = self.compositor.start("instrument", command, os.environ)
        wait_until("the instrument", link.is_symlink)

    def press(self, *keys):
        for key in keys:
            self.compositor.press(key)

    def has_keyboard(self, pattern, windows=None):
        wait_until(f"the keyboard in {pattern}", lambda: (windows or self.windows).has_keyboard(pattern))

    def has_passed(self, pattern):
        """A message that closes by itself."""
        def passed():
            order = self.windows.read()[0]
            return any(re.fullmatch(pattern, each) for each in order) and re.fullmatch(MAIN, order[-1])
        wait_until(f"{pattern} to pass", passed)

    def is_shown(self, pattern):
        wait_until(f"the window {pattern}", lambda: self.shown.has_title(pattern))

    def is_gone(self, pattern):
        wait_until(f"the end of {pattern}", lambda: not self.shown.has_title(pattern))

    def holds(self, file, expected, what):
        try:
            wait_until(what, lambda: file.exists() and file.read_bytes() == expected)
        except Failed as failure:
            raise Failed(f"{failure}; {file} holds {file.read_bytes() if file.exists() else 'nothing'!r}") from None

    def goes_to(self, pattern, x, y):
        self.compositor.call("swaymsg", f'[title="^{pattern}$"] focus, move absolute position {x} {y}')
        self.has_keyboard(pattern)

    def click(self, pattern, x, y, button):
        def is_there():
            # A window that was moved may still be on its way.
            left, top = self.shown.place(pattern)
            self.compositor.point(left + x + 5, top + y)
            self.compositor.point(left + x, top + y)
            found = self.windows.pointer_in(pattern)
            # sway reckons the place with the frame.
            return found and abs(found[-1][0] - x) <= FRAME and abs(found[-1][1] - y) <= FRAME
        wait_until(f"the pointer at {x}, {y} in {pattern}", is_there)
        before = self.windows.popups()
        self.compositor.call("xdotool", "click", str(button))
        wait_until(f"a menu of {pattern}", lambda: self.windows.popups() > before)

    def choose(self, menu, mnemonic, effect):
        """From the menu of the main window, beside which the other windows stand."""
        def act():
            self.goes_to(MAIN, 10, 40)
            self.click(MAIN, MENUS[menu], 8, 1)
            self.press(mnemonic)
        self.act_until(f"the effect of {mnemonic} in the menu {menu}", act, effect)

    def open_dialog(self, menu, mnemonic, pattern):
        self.choose(menu, mnemonic, lambda: self.windows.has_keyboard(pattern))

    @staticmethod
    def act_until(what, act, effect):
        """Again where it had no effect: now and then a menu closes as soon as it opens."""
        def tried():
            act()
            end = time.monotonic() + ONE_TRY_S
            while not (result := effect()) and time.monotonic() < end:
                time.sleep(0.05)
            return result
        wait_until(what, tried)

    def clipboard(self):
        return subprocess.run(["wl-paste", "--no-newline"], env=self.compositor.environment, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False).stdout.decode()

    def copy(self, text):
        subprocess.run(["wl-copy", text], env=self.compositor.environment, stdin=subprocess.DEVNULL,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=True)
        wait_until("the clipboard", lambda: self.clipboard() == text)

    def log_is(self, *lines):
        """The whole log, copied with the menu of the Terminal Screen."""
        wait_until(f"{len(lines)} lines in the log",
                   lambda: self.shown.has_title(rf"{TERMINAL}\[ *\d+-{len(lines)} *\]"))
        mark = "nothing copied"
        self.copy(mark)

        def act():
            self.goes_to(TERMINAL, 800, 40)
            self.click(TERMINAL, 200, 300, 3)
            self.press("Down", "Down", "Return")
        self.act_until("the log on the clipboard", act, lambda: self.clipboard() != mark)
        expected = "".join(line + "\r" for line in lines)
        if (found := self.clipboard()) != expected:
            raise Failed(f"the log {expected!r}; it is {found!r}")
        self.lines = list(lines)

    def shows_port(self, name):
        self.is_shown(rf"Quarn   \({name}\)")

    # The subjects.

    def first_start(self):
        self.quarn, self.windows = self.start("quarn")
        self.has_keyboard(WARNING)
        self.press("Return")
        self.has_keyboard(INFORMATION)
        self.press("Return")
        self.shows_port("NONE")
        self.has_keyboard(MAIN)
        self.holds(self.settings, DEFAULTS.replace("\n", "\r\n").encode("utf-8-sig"), "the defaults")

    def open_file(self):
        self.plug_in()
        self.has_passed(PASSING)
        file = self.place / "bench.qrn"
        demo = pathlib.Path("packaging/demo/demo.qrn").read_bytes()
        file.write_bytes(demo.replace(b"MEM1=meas?", b"MEM1=stored two"))
        self.open_dialog("File", "o", OPEN)
        self.compositor.send(str(file))
        self.shows_port("COM7")
        self.holds(self.settings, file.read_bytes(), "the opened settings")
        self.has_keyboard(MAIN)

    def command(self):
        self.goes_to(TERMINAL, 800, 40)
        self.compositor.send("id")
        self.log_is("[id]", "SIM-1")

    def paste(self):
        self.copy("temp?")
        self.goes_to(TERMINAL, 800, 40)
        self.press("ctrl+v", "Return")
        self.log_is(*self.lines, "[temp?]", "23.5 C")

    def option(self):
        before = self.settings.read_bytes()
        self.open_dialog("Option", "t", OPTION)
        self.press("Tab", "Tab", "Tab", "space")
        self.holds(self.settings, before.replace(b"LINE_NUM=OFF", b"LINE_NUM=ON"), "the changed setting")
        self.press("Escape")
        self.is_gone(OPTION)
        self.log_is(*(f"{number + 1:4}|  {line}" for number, line in enumerate(self.lines)))

    def function_key(self):
        self.open_dialog("Tools", "f", TABLE)
        self.press("F2", "Return")
        self.log_is(*self.lines, "   5|  [stored two]", "   6|  from the table")
        self.compositor.call("swaymsg", f'[title="^{TABLE}$"] kill')
        self.is_gone(TABLE)

    def save_as(self):
        file = self.place / "saved.qrn"
        self.open_dialog("File", "a", SAVE_AS)
        self.compositor.send(str(file))
        self.holds(file, self.settings.read_bytes(), "the saved file")
        self.has_keyboard(MAIN)

    def pulled(self):
        self.instrument.terminate()
        self.has_keyboard(BOX)
        self.press("Return")
        self.shows_port("COM7-NC")
        self.plug_in()
        self.has_keyboard(QUESTION)
        self.press("Return")
        self.has_keyboard(INFORMATION)
        self.press("Return")
        self.shows_port("COM7")
        self.goes_to(TERMINAL, 800, 40)
        self.press("ctrl+z")
        self.compositor.send("id")
        self.log_is(*self.lines, "   7|  [id]", "   8|  SIM-1")

    def second_start(self):
        file = self.place / "second.qrn"
        file.write_bytes(self.settings.read_bytes().replace(b"LINE_NUM=ON", b"LINE_NUM=OFF"))
        second, windows = self.start("second", file)
        self.has_keyboard(PLAIN, windows)
        self.press("Return")
        wait_until("the end of the second program", lambda: second.poll() is not None)
        self.holds(self.settings, file.read_bytes(), "the settings of the second start")
        # The log begins anew when the messages have passed.
        self.is_shown(r"Quarn - Terminal Screeen \(COM7\)  N- INS")
        self.goes_to(TERMINAL, 800, 40)
        self.compositor.send("id")
        self.log_is("[id]", "SIM-1")

    def exit(self):
        self.choose("File", "x", lambda: self.quarn.poll() is not None)
        if self.quarn.returncode != 0:
            raise Failed(f"a good end instead of {self.quarn.returncode}")

    def next_start(self):
        before = self.settings.read_bytes()
        self.quarn, self.windows = self.start("next")
        self.shows_port("COM7")
        self.has_keyboard(MAIN)
        # Its keys go to the Terminal Screen.
        self.press("F2", "Return")
        self.log_is("[stored two]", "from the table")
        self.exit()
        self.holds(self.settings, before, "the settings as they were")

    def demo(self):
        def files():
            return {each: each.read_bytes() for each in self.home.rglob("*") if each.is_file()}
        before = files()
        self.quarn, self.windows = self.start("demo", "--demo")
        self.shows_port("COM7")
        self.has_keyboard(MAIN)
        self.press("F1", "Return")
        self.log_is("[id]", DEMO_SAYS)
        self.exit()
        if files() != before:
            raise Failed("the files as they were before the demo")


SUBJECTS = {
    "first start": Story.first_start, "open": Story.open_file, "command": Story.command, "paste": Story.paste,
    "option": Story.option, "function key": Story.function_key, "save as": Story.save_as, "pulled": Story.pulled,
    "second start": Story.second_start, "exit": Story.exit, "next start": Story.next_start, "demo": Story.demo,
}


def main():
    programs, place = (pathlib.Path(each).resolve() for each in sys.argv[1:3])
    compositor = Sway(place, 1)
    try:
        compositor.open()
        story = Story(compositor, programs, place)
        for subject, tried in SUBJECTS.items():
            tried(story)
            print(f"{subject}=yes", flush=True)
    except Failed as failure:
        (place / "screen.ppm").write_bytes(compositor.ppm())
        sys.exit(f"gave up waiting for {failure}")
    finally:
        compositor.stop()


if __name__ == "__main__":
    main()
