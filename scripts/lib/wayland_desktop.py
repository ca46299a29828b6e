"""Tries Quarn on a Wayland compositor, without an X server but for sway_xwayland.

usage: wayland_desktop.py COMPOSITOR PROGRAMS PLACE

COMPOSITOR: sway, sway_xwayland, weston, mutter_wayland, kwin_wayland. PROGRAMS: the folder of quarn and quarn-device.
PLACE: a folder for logs. Prints "subject=yes" for each subject that works, "subject=-" for each that is not tried, and
ends at the first that does not work.

Wayland lets nobody ask where windows are. Which of them has the keyboard is in the program's own protocol log, and the
Terminal Screen is found by its colour in a picture of the screen. The compositor draws on a virtual X display, of which
the program does not know. sway knows where the windows of its own X server are.
"""

import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time

LONGEST_S = 120
WIDTH = 1280
HEIGHT = 1024
NAVY = bytes((1, 36, 86))
NAVY_PIXELS = 60
TERMINAL = r"Quarn - Terminal Screeen \(COM7(-NC)?\).*"
MAIN = r"Quarn   \(COM7(-NC)?\)"
BOX = r"Quarn : Error"
PLAIN = r"Quarn"
FORMAT = r"Quarn - Command Format"
QUESTION = r"Quarn : Confirmation"
SAVE_AS = r"Save As Quarn Configuration File"
# Where their titles are in the menu bar, in pixels from the left.
MENUS = {"File": 15, "Port": 55, "Tools": 95, "Option": 145}
RULES = '"slow" -> 6000 line "done"\n"mute" -> silence\n* -> line "OK"\n'
SWAY = 'focus_follows_mouse no\nfor_window [app_id=".*"] floating enable\n'
# So often the program starts on sway's own X server, which maps windows in the order in which they are drawn.
STARTS = 3


class Failed(Exception):
    pass


def wait_until(what, condition):
    end = time.monotonic() + LONGEST_S
    while not (result := condition()):
        if time.monotonic() > end:
            raise Failed(what)
        time.sleep(0.05)
    return result


class Windows:
    """What the program's protocol log says."""

    def __init__(self, log):
        self.log = log

    def read(self):
        """The titles of windows in the order in which they got the keyboard, all titles ever set, and the last ones of
        the surfaces."""
        surface, toplevel, title, order, titles = {}, {}, {}, [], []
        for line in self.log.read_text(errors="replace").splitlines():
            if m := re.search(r"get_xdg_surface\(new id xdg_surface@(\d+), wl_surface@(\d+)\)", line):
                surface[m[1]] = m[2]
            elif m := re.search(r"xdg_surface@(\d+)\.get_toplevel\(new id xdg_toplevel@(\d+)\)", line):
                toplevel[m[2]] = surface[m[1]]
            elif m := re.search(r'xdg_toplevel@(\d+)\.set_title\("(.*)"\)', line):
                title[toplevel[m[1]]] = m[2]
                titles.append(m[2])
            elif m := re.search(r"wl_keyboard@\d+\.(enter|leave)\(\d+, wl_surface@(\d+)", line):
                order.append(title.get(m[2], "") if m[1] == "enter" else "")
        return order, titles, title

    def has_keyboard(self, pattern):
        order = self.read()[0]
        return order and re.fullmatch(pattern, order[-1])

    def has_title(self, pattern):
        return any(re.fullmatch(pattern, each) for each in self.read()[1])

    def changes(self):
        """How often the keyboard has come or gone."""
        return len(self.read()[0])

    def count_titled(self, pattern):
        return sum(1 for each in self.read()[1] if re.fullmatch(pattern, each))

    def pointer_in(self, pattern):
        """The last two places of the pointer in a window with this title, in the window; nothing if it is elsewhere."""
        surface, places = None, []
        for line in self.log.read_text(errors="replace").splitlines():
            if m := re.search(r"wl_pointer@\d+\.enter\(\d+, wl_surface@(\d+), ([\d.]+), ([\d.]+)", line):
                surface, places = m[1], [(int(float(m[2])), int(float(m[3])))]
            elif re.search(r"wl_pointer@\d+\.leave\(", line):
                surface = None
            elif m := re.search(r"wl_pointer@\d+\.motion\(\d+, ([\d.]+), ([\d.]+)", line):
                places.append((int(float(m[1])), int(float(m[2]))))
        return places[-2:] if surface and re.fullmatch(pattern, self.read()[2].get(surface, "")) else []

    def popups(self):
        return len(re.findall(r"get_popup\(", self.log.read_text(errors="replace")))

    def are_framed_by_compositor(self):
        """Otherwise the program draws the frames, and they belong to its windows."""
        return "zxdg_toplevel_decoration_v1" in self.log.read_text(errors="replace")

    def clicks(self):
        return len(re.findall(r"wl_pointer@\d+\.button\(\d+, \d+, 272, 0\)", self.log.read_text(errors="replace")))


class WindowsInSway:
    """What sway says of the windows on its X server."""

    def __init__(self, compositor):
        self.compositor = compositor

    def now(self):
        """Title, whether it has the keyboard, and the kind of each window, those in front last."""
        found, left = [], [json.loads(self.compositor.call("swaymsg", "-t", "get_tree"))]
        while left:
            node = left.pop(0)
            left = node["nodes"] + node["floating_nodes"] + left
            if node.get("pid") and node["name"]:
                found.append((node["name"], node["focused"], node["shell"], node["rect"]))
        return found

    def place(self, pattern):
        return next((rect["x"], rect["y"]) for title, *_, rect in self.now() if re.fullmatch(pattern, title))

    def has_keyboard(self, pattern):
        return any(focused and re.fullmatch(pattern, title) for title, focused, *_ in self.now())

    def has_title(self, pattern):
        return any(re.fullmatch(pattern, title) for title, *_ in self.now())

    def is_in_front(self, pattern):
        return re.fullmatch(pattern, self.now()[-1][0])

    def are_on_x(self):
        return {shell for _, _, shell, _ in self.now()} == {"xwayland"}


class Compositor:
    """Draws in a window on a virtual X display of its own."""

    # Those that it has beside 1.
    SCALES = (1.25, 1.5, 1.75, 2)

    def __init__(self, place, scale):
        self.place = place
        self.scale = scale
        # As windows see it, the screen always has the same size.
        self.width = round(WIDTH * scale)
        self.height = round(HEIGHT * scale)
        self.started = []
        self.runtime = pathlib.Path(tempfile.mkdtemp(prefix="quarn-wayland-"))
        self.environment = {"PATH": os.environ["PATH"], "LANG": "C.UTF-8", "HOME": str(self.runtime),
                            "XDG_RUNTIME_DIR": str(self.runtime)}

    def start(self, name, command, environment):
        with open(self.place / f"{name}.log", "wb") as log:
            process = subprocess.Popen(command, env=environment, stdin=subprocess.DEVNULL, stdout=log,
                                       stderr=subprocess.STDOUT, start_new_session=True)
        self.started.append(process)
        return process

    def stop(self):
        for process in reversed(self.started):
            # With what it has started itself.
            if process.poll() is None:
                os.killpg(process.pid, signal.SIGTERM)
            try:
                process.wait(LONGEST_S)
            except subprocess.TimeoutExpired:
                os.killpg(process.pid, signal.SIGKILL)
                process.wait()
        shutil.rmtree(self.runtime)

    def call(self, *command):
        return subprocess.run(command, env=self.environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, check=True).stdout

    def wait_for_socket(self):
        def sockets():
            return [each for each in self.runtime.glob("wayland-?") if each.is_socket()]
        self.environment["WAYLAND_DISPLAY"] = str(wait_until("the compositor", sockets)[0])

    def find_terminal(self):
        """A place in the Terminal Screen that can be seen, and is not at its edge: an edge is for changing the size."""
        head, pixels = self.picture()
        width = int(head.split()[1])
        line = NAVY * NAVY_PIXELS
        at = pixels.find(line)
        while at % 3 != 0 and at >= 0:
            at = pixels.find(line, at + 1)
        return (at // 3 % width + NAVY_PIXELS // 2, at // 3 // width + 1) if at >= 0 else None

    def picture(self):
        data = self.ppm()
        head = re.match(rb"P6\s+\d+\s+\d+\s+255\s", data)[0]
        return head, data[len(head):]

    def open(self):
        reading, writing = os.pipe()
        number = 100 + os.getpid() % 50000
        server = subprocess.Popen(["Xvfb", f":{number}", "-displayfd", str(writing), "-screen", "0",
                                   f"{self.width}x{self.height}x24", "-nolisten", "tcp"], pass_fds=[writing],
                                  stdin=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True)
        os.close(writing)
        self.started.append(server)
        self.environment["DISPLAY"] = ":" + os.fdopen(reading).readline().strip()
        self.open_on_x()
        self.wait_for_socket()

    def ppm(self):
        return self.call("bash", "-c", "maim --hidecursor | convert png:- ppm:-")

    def point(self, x, y):
        self.call("xdotool", "mousemove", str(x), str(y))

    def click(self, x, y):
        self.call("xdotool", "mousemove", str(x), str(y), "click", "1")

    def send(self, text):
        self.call("xdotool", "type", text)
        self.press("Return")

    def press(self, key):
        self.call("xdotool", "key", key)

    def choose_main_again(self, find_main):
        """When a part of it can be seen."""
        self.click(*find_main())


class Sway(Compositor):
    X_SERVER = "disable"

    def open_on_x(self):
        self.runtime.chmod(0o700)
        output = f"output * resolution {self.width}x{self.height} scale {self.scale}\n"
        (self.runtime / "config").write_text(f"xwayland {self.X_SERVER}\n{SWAY}{output}")
        command = ["sway", "-c", str(self.runtime / "config")]
        if os.geteuid() == 0:
            shutil.chown(self.runtime, "nobody")
        self.start("sway", [*as_nobody(), *command], self.environment | {"WLR_BACKENDS": "x11", "WLR_RENDERER": "pixman"})
        self.environment["SWAYSOCK"] = str(wait_until("sway", lambda: list(self.runtime.glob("sway-ipc*")))[0])

    def choose_main(self):
        self.call("swaymsg", '[title="^Quarn   "] focus')

    def choose_main_again(self, find_main):
        # A dialog covers it.
        self.choose_main()


class SwayWithX(Sway):
    X_SERVER = "enable"
    # Here 200 per cent is sway's affair alone.
    SCALES = (1.25, 1.5, 1.75)

    def x_display(self):
        told = self.runtime / "display"
        self.call("swaymsg", "exec", f"echo $DISPLAY >{told}")
        return wait_until("the X server of sway", lambda: told.exists() and told.read_text().strip())


class Weston(Compositor):
    SCALES = (2,)

    def open_on_x(self):
        self.start("weston", ["weston", "--backend=x11-backend.so", "--use-pixman", f"--width={WIDTH}",
                              f"--height={HEIGHT}", f"--scale={self.scale}", "--idle-time=0"], self.environment)

    def choose_main(self):
        self.call("xdotool", "keydown", "super", "key", "Tab", "sleep", "0.3", "keyup", "super")
        # weston adds up the ways that the pointer has gone. From edge to edge it gets to know where the pointer is.
        self.point(WIDTH - 1, HEIGHT - 1)
        self.point(0, 0)


class KWin(Compositor):
    def open_on_x(self):
        # The installed file has a capability that containers refuse; it works without.
        program = self.runtime / "kwin_wayland"
        shutil.copyfile(shutil.which("kwin_wayland"), program)
        program.chmod(0o700)
        self.start("kwin_wayland", ["dbus-run-session", "--", str(program), "--x11-display", self.environment["DISPLAY"],
                                    "--width", str(WIDTH), "--height", str(HEIGHT), "--scale", str(self.scale),
                                    "--socket", "wayland-1", "--no-lockscreen"],
                   self.environment | {"KWIN_COMPOSE": "Q"})

    def choose_main(self):
        """Moves the Terminal Screen aside by its title, and clicks on what stood under it."""
        x, y = wait_until("the Terminal Screen in the picture", self.find_terminal)
        self.call("xdotool", "mousemove", str(x + 30), str(y - 15), "mousedown", "1", "mousemove", str(x - 150), str(y - 15),
                  "sleep", "0.3", "mousemove", str(x - 340), str(y - 15), "sleep", "0.3", "mouseup", "1")
        self.click(640, 520)


class Mutter(Compositor):
    SCALES = ()

    def open_on_x(self):
        self.start("mutter", ["dbus-run-session", "--", "mutter", "--wayland", "--nested", "--no-x11"],
                   self.environment | {"MUTTER_DEBUG_DUMMY_MODE_SPECS": f"{self.width}x{self.height}"})

    def choose_main(self):
        self.call("xdotool", "keydown", "alt", "key", "Tab", "sleep", "0.3", "keyup", "alt")

    def choose_main_again(self, find_main):
        # It was the last one before the window that covers it.
        self.choose_main()


def as_nobody():
    """What runs a command as another user if this is the superuser, whom sway refuses."""
    return ["setpriv", "--reuid=nobody", "--regid=nogroup", "--clear-groups"] if os.geteuid() == 0 else []


class Trial:
    def __init__(self, compositor, programs, place):
        self.compositor = compositor
        home = place / "home"
        ports = home / "Halvo/Quarn/ports"
        ports.mkdir(parents=True)
        runtime = place / "runtime"
        runtime.mkdir(mode=0o700)
        (place / "rules").write_text(RULES)
        link = ports / "COM7"
        self.instrument = compositor.start("instrument", [programs / "quarn-device", "--link", link, "--rules",
                                                          place / "rules"], os.environ)
        wait_until("the instrument", link.is_symlink)
        demo = pathlib.Path("packaging/demo/demo.qrn").read_bytes()
        (place / "trial.qrn").write_bytes(demo.replace(b"R_TIMEOUT=ON", b"R_TIMEOUT=OFF"))
        environment = {"PATH": os.environ["PATH"], "LANG": "C.UTF-8", "HOME": str(home), "XDG_CONFIG_HOME": str(home),
                       "XDG_RUNTIME_DIR": str(runtime), "XDG_SESSION_TYPE": "wayland", "WAYLAND_DEBUG": "1",
                       "WAYLAND_DISPLAY": compositor.environment["WAYLAND_DISPLAY"],
                       "DBUS_SESSION_BUS_ADDRESS": f"unix:path={runtime}/no-session"}
        self.start_program([programs / "quarn", place / "trial.qrn"], environment)

    def start_program(self, command, environment):
        self.program = self.compositor.start("quarn", command, environment)
        self.windows = Windows(self.compositor.place / "quarn.log")

    def starts_scaled(self):
        """With the windows, or with the message that refuses the scaling."""
        wait_until("a window", lambda: self.windows.has_title(MAIN) or self.windows.has_title(BOX))
        if self.windows.has_title(BOX):
            raise Failed("the main window instead of a message")
        self.starts()

    def is_refused(self):
        wait_until("the message", lambda: self.windows.has_keyboard(BOX))
        if self.windows.has_title(MAIN):
            raise Failed("no main window")
        self.compositor.press("Return")
        # Standard error is a file, so how to start is in a box too.
        wait_until("the box that says how to start", lambda: self.windows.has_keyboard(PLAIN))
        self.compositor.press("Return")
        wait_until("the end of the program", lambda: self.program.poll() is not None)

    def terminal_shows(self, lines):
        wait_until(f"{lines} lines in the log", lambda: self.windows.has_title(rf"{TERMINAL}\[ *1-{lines} *\]"))

    def starts(self):
        wait_until("the main window", lambda: self.windows.has_title(MAIN))
        # It comes last, so that the Terminal Screen does not cover it. Its keys go to the Terminal Screen.
        wait_until("the keyboard in the main window at the start", lambda: self.windows.has_keyboard(MAIN))
        wait_until("the Terminal Screen in the picture", self.compositor.find_terminal)

    def escape(self):
        self.compositor.send("mute")
        self.compositor.press("Escape")
        self.terminal_shows(3)

    def type_ahead(self):
        self.compositor.send("slow")
        self.compositor.send("next")
        if self.windows.has_title(rf"{TERMINAL}\[ *1-5 *\]"):
            raise Failed("the keys came too late")
        self.terminal_shows(7)

    def main_seen(self):
        wait_until("the main window under the pointer", self.place_in_main)

    def main_window(self):
        self.compositor.click(*wait_until("the Terminal Screen in the picture", self.compositor.find_terminal))
        wait_until("the keyboard in the Terminal Screen", lambda: self.windows.has_keyboard(TERMINAL))
        self.compositor.choose_main()
        wait_until("the keyboard in the main window", lambda: self.windows.has_keyboard(MAIN))

    def place_in_main(self):
        """A place on the screen that belongs to the main window."""
        for step in ((150, 80), (60, 40)):
            for x in range(640 % step[0], WIDTH, step[0]):
                for y in range(520 % step[1], HEIGHT, step[1]):
                    self.compositor.point(x, y)
                    # The program may hear of it only when the pointer has gone on.
                    time.sleep(0.05)
                    if self.windows.pointer_in(MAIN):
                        return x, y
        return None

    def corner_at(self, x, y):
        def corner():
            self.compositor.point(x, y)
            self.compositor.point(x + 7, y + 3)
            places = self.windows.pointer_in(MAIN)
            # The last step, and no other, was this far.
            if len(places) == 2 and (places[1][0] - places[0][0], places[1][1] - places[0][1]) == (7, 3):
                return x + 7 - places[1][0], y + 3 - places[1][1]
            return None
        return wait_until("the pointer's place in the main window", corner)

    def choose_from_menu(self, menu, mnemonic):
        """The main window is in front."""
        x, y = self.corner_at(*wait_until("the main window under the pointer", self.place_in_main))
        before = self.windows.popups()
        self.compositor.click(x + MENUS[menu], y + (8 if self.windows.are_framed_by_compositor() else 38))
        wait_until(f"the menu {menu}", lambda: self.windows.popups() > before)
        self.compositor.press(mnemonic)

    def comes_up_again(self, pattern):
        before = self.windows.clicks()
        self.compositor.click(*wait_until("the Terminal Screen in the picture", self.compositor.find_terminal))
        # The keyboard goes with the press, so this comes after it.
        wait_until("the click to arrive", lambda: self.windows.clicks() > before)
        wait_until(f"the keyboard in {pattern} after a click on the Terminal Screen",
                   lambda: self.windows.has_keyboard(pattern))

    def choose_main_again(self):
        self.compositor.choose_main_again(
            lambda: wait_until("the main window under the pointer", self.place_in_main))
        wait_until("the keyboard in the main window", lambda: self.windows.has_keyboard(MAIN))

    def again(self):
        """An open dialog that is chosen again comes to the front."""
        self.choose_from_menu("Option", "f")
        wait_until("the keyboard in the dialog", lambda: self.windows.has_keyboard(FORMAT))
        self.choose_main_again()
        self.choose_from_menu("Option", "f")
        wait_until("the keyboard in the dialog chosen again", lambda: self.windows.has_keyboard(FORMAT))
        self.compositor.press("Return")
        wait_until("the end of the dialog", lambda: not self.windows.has_keyboard(FORMAT))

    def file_dialog(self):
        self.choose_from_menu("File", "a")
        wait_until("the keyboard in the file dialog", lambda: self.windows.has_keyboard(SAVE_AS))
        self.comes_up_again(SAVE_AS)
        # The file is there already: the dialog's own question comes over it.
        self.compositor.press("Return")
        wait_until("the question of the file dialog", lambda: self.windows.count_titled(SAVE_AS) > 1)
        wait_until("the keyboard in the question", lambda: self.windows.has_keyboard(SAVE_AS))
        self.comes_up_again(SAVE_AS)
        before = self.windows.changes()
        self.compositor.press("Escape")
        wait_until("the keyboard in the file dialog after its question",
                   lambda: self.windows.changes() > before and self.windows.has_keyboard(SAVE_AS))
        self.compositor.press("Escape")
        wait_until("the end of the file dialog", lambda: not self.windows.has_keyboard(SAVE_AS))

    def box(self):
        self.choose_main_again()
        self.choose_from_menu("Port", "d")
        wait_until("the keyboard in the question", lambda: self.windows.has_keyboard(QUESTION))
        self.comes_up_again(QUESTION)
        self.compositor.press("Escape")
        wait_until("the end of the question", lambda: not self.windows.has_keyboard(QUESTION))
        self.instrument.terminate()
        wait_until("the keyboard in the box", lambda: self.windows.has_keyboard(BOX))
        self.comes_up_again(BOX)
        self.compositor.press("Return")
        wait_until("the end of the box", lambda: self.windows.has_title(r"Quarn   \(COM7-NC\)"))
        wait_until("the keyboard in the Terminal Screen after the box", lambda: self.windows.has_keyboard(TERMINAL))


class TrialOnX(Trial):
    """On the compositor's own X server, whose socket only the compositor's user may open."""

    def start_program(self, command, environment):
        environment |= {"DISPLAY": self.compositor.x_display(), "SWAYSOCK": self.compositor.environment["SWAYSOCK"]}
        program = self.compositor.runtime / "quarn"
        if not program.exists():
            shutil.copy(command[0], program)
        if as_nobody():
            self.give_to_nobody(environment)
        self.command, self.program_environment = [*as_nobody(), program, *command[1:]], environment
        self.windows = WindowsInSway(self.compositor)
        self.program = self.compositor.start("quarn", self.command, environment)

    def give_to_nobody(self, environment):
        home = pathlib.Path(environment["HOME"])
        for each in [home, *home.rglob("*"), pathlib.Path(environment["XDG_RUNTIME_DIR"]), home / "Halvo/Quarn/ports/COM7"]:
            shutil.chown(each, "nobody")

    def starts(self):
        for attempt in range(STARTS):
            wait_until("the main window", lambda: self.windows.has_title(MAIN) and self.windows.has_title(TERMINAL))
            if not self.windows.are_on_x():
                raise Failed("windows on the X server")
            wait_until("the main window in front with the keyboard",
                       lambda: self.windows.is_in_front(MAIN) and self.windows.has_keyboard(MAIN))
            # Nor is it covered a little later.
            time.sleep(3)
            if not self.windows.is_in_front(MAIN):
                raise Failed("the main window to stay in front")
            if attempt < STARTS - 1:
                self.program.terminate()
                self.program.wait(LONGEST_S)
                self.program = self.compositor.start("quarn", self.command, self.program_environment)


    def choose_in_front(self, menu, mnemonic, window):
        """Until the window is in front with the keyboard: what comes while a menu opens may be lost."""
        asked = 0.0

        def is_in_front():
            nonlocal asked
            if self.windows.is_in_front(window) and self.windows.has_keyboard(window):
                return True
            if time.monotonic() > asked + 5:
                asked = time.monotonic()
                self.compositor.choose_main()
                time.sleep(1)
                x, y = self.windows.place(MAIN)
                self.compositor.click(x + MENUS[menu], y + 8)
                time.sleep(1)
                self.compositor.press(mnemonic)
            return False
        wait_until(f"{window} in front", is_in_front)

    def again(self):
        self.choose_in_front("Option", "f", FORMAT)
        self.compositor.choose_main()
        wait_until("the main window in front", lambda: self.windows.is_in_front(MAIN))
        self.choose_in_front("Option", "f", FORMAT)
        self.compositor.press("Return")
        wait_until("the end of the dialog", lambda: not self.windows.has_title(FORMAT))

    def box(self):
        self.choose_in_front("Port", "d", QUESTION)
        for _ in range(2):
            x, y = self.windows.place(TERMINAL)
            self.compositor.click(x + 300, y + 40)
            # It has gone behind before it comes again.
            time.sleep(1)
            wait_until("the question in front again",
                       lambda: self.windows.is_in_front(QUESTION) and self.windows.has_keyboard(QUESTION))
        self.compositor.press("Escape")
        wait_until("the end of the question", lambda: not self.windows.has_title(QUESTION))


COMPOSITORS = {"mutter_wayland": Mutter, "sway": Sway, "sway_xwayland": SwayWithX, "weston": Weston, "kwin_wayland": KWin}
# What is tried where the protocol's log says nothing. After a click on the Terminal Screen and a command to sway to put
# the main window in front, clicks on its menu are lost: sway does not tell its X server of the new order.
ON_X = ("starts", "ESC", "type-ahead", "again", "box above all")
SUBJECTS = {"starts": "starts", "main seen": "main_seen", "ESC": "escape", "type-ahead": "type_ahead",
            "main window": "main_window", "again": "again", "file dialog": "file_dialog", "box above all": "box"}
SCALES = {"125 %": (1.25, "starts_scaled"), "150 %": (1.5, "starts_scaled"), "175 %": (1.75, "starts_scaled"),
          "200 % refused": (2, "is_refused")}


def run(kind, scale, programs, place, subjects):
    place.mkdir(exist_ok=True)
    compositor = kind(place, scale)
    try:
        compositor.open()
        on_x = isinstance(compositor, SwayWithX)
        trial = (TrialOnX if on_x else Trial)(compositor, programs, place)
        for subject, tried in subjects.items():
            if on_x and scale == 1 and subject not in ON_X:
                print(f"{subject}=-", flush=True)
                continue
            getattr(trial, tried)()
            print(f"{subject}=yes", flush=True)
    finally:
        if compositor.started:
            (place / "screen.ppm").write_bytes(compositor.ppm())
        compositor.stop()


def main():
    name, programs, place = sys.argv[1], pathlib.Path(sys.argv[2]).resolve(), pathlib.Path(sys.argv[3]).resolve()
    try:
        run(COMPOSITORS[name], 1, programs, place, SUBJECTS)
        for subject, (scale, tried) in SCALES.items():
            if scale in COMPOSITORS[name].SCALES:
                run(COMPOSITORS[name], scale, programs, place / str(scale), {subject: tried})
            else:
                print(f"{subject}=-", flush=True)
    except Failed as failure:
        sys.exit(f"gave up waiting for {failure}")


if __name__ == "__main__":
    main()
