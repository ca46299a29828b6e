#!/usr/bin/env python3
"""What the program costs as a whole, measured from outside on a virtual display.

    bench/program_bench.py PROGRAM [--runs N] [--idle SECONDS]

With a connected port (a pseudo-terminal as COM3) and the Terminal Screen open:
  start   from the spawn to the main dialog on screen, less the two waits that are the program's own: the
          splash and the "Successfully Connected" message, 2000 ms each; looked at every millisecond
  idle    CPU milliseconds a second, all threads, all timers running, nothing sent
  memory  proportional set size (PSS) in MiB at the end of the idle time
  answer  CPU milliseconds for a command of two characters that is typed, sent and answered with 64 bytes; what
          the program takes in that time anyway is not counted
One unmeasured run comes first, so that the files are warm.
"""
import argparse, ctypes, os, pathlib, select, signal, statistics, subprocess, sys, tempfile, time, tty

OWN_WAITS_MS = 4000
LIMIT_S = 30
COMMANDS = 40
COMMAND_S = 0.3  # long enough for the silence that ends an answer
ANSWER = bytes(range(0x21, 0x21 + 64)) + b"\r"


class Display:
    """A virtual display with a window manager, and a look at the windows on it."""

    def __init__(self):
        read, write = os.pipe()
        self.server = subprocess.Popen(
            ["Xvfb", f":{100 + os.getpid() % 50000}", "-displayfd", str(write), "-screen", "0", "1920x1080x24", "-nolisten", "tcp"],
            pass_fds=[write], stderr=subprocess.DEVNULL)
        os.close(write)
        with os.fdopen(read) as announcement:
            self.name = ":" + announcement.readline().strip()
        self.lib = ctypes.CDLL("libX11.so.6")
        self.lib.XOpenDisplay.restype = ctypes.c_void_p
        self.lib.XDefaultRootWindow.restype = self.lib.XInternAtom.restype = ctypes.c_ulong
        handler = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.c_void_p, ctypes.c_void_p)
        self.ignore = handler(lambda display, error: 0)  # a window may be gone while we look
        self.lib.XSetErrorHandler(self.ignore)
        self.display = ctypes.c_void_p()
        self.wait(self.connect, "the display")
        self.root = self.lib.XDefaultRootWindow(self.display)
        self.manager = subprocess.Popen(["openbox"], env={**os.environ, "DISPLAY": self.name},
                                        stderr=subprocess.DEVNULL)
        self.wait(lambda: self.property(self.root, "_NET_SUPPORTING_WM_CHECK"), "the window manager")

    def connect(self):
        self.display.value = self.lib.XOpenDisplay(self.name.encode())
        return self.display.value

    def end(self):
        for process in (self.manager, self.server):
            process.terminate()
            process.wait()

    @staticmethod
    def wait(condition, what, step=0.05):
        deadline = time.monotonic() + LIMIT_S
        while not condition():
            if time.monotonic() > deadline:
                sys.exit(f"gave up waiting for {what}")
            time.sleep(step)

    def property(self, window, name):
        kind, count, rest = ctypes.c_ulong(), ctypes.c_ulong(), ctypes.c_ulong()
        width, data = ctypes.c_int(), ctypes.c_void_p()
        atom = self.lib.XInternAtom(self.display, name.encode(), 0)
        self.lib.XGetWindowProperty(
            self.display, ctypes.c_ulong(window), ctypes.c_ulong(atom), ctypes.c_long(0), ctypes.c_long(1024), 0,
            ctypes.c_ulong(0), ctypes.byref(kind), ctypes.byref(width), ctypes.byref(count), ctypes.byref(rest),
            ctypes.byref(data))
        if not data.value:
            return b""
        size = {8: 1, 16: 2, 32: ctypes.sizeof(ctypes.c_long)}[width.value]
        value = ctypes.string_at(data.value, count.value * size)
        self.lib.XFree(data)
        return value

    def shows(self, beginning):
        """Whether a managed window's title begins so. The manager lists a window when it maps it."""
        clients = memoryview(self.property(self.root, "_NET_CLIENT_LIST")).cast("L")
        return any(self.property(each, "_NET_WM_NAME").startswith(beginning) for each in clients)


class Run:
    """The program with a settings folder and a line of its own."""

    def __init__(self, program, display):
        self.folder = tempfile.TemporaryDirectory()
        base = pathlib.Path(self.folder.name)
        ports = base / "config/Halvo/Quarn/ports"
        ports.mkdir(parents=True)
        runtime = base / "run"
        runtime.mkdir(mode=0o700)
        self.far_end, near_end = os.openpty()
        tty.setraw(near_end)
        (ports / "COM3").symlink_to(os.ttyname(near_end))
        os.close(near_end)
        self.settings = ports.parent / "Quarn.ini"
        self.environment = {**os.environ, "DISPLAY": display.name, "HOME": str(base), "QT_QPA_PLATFORM": "xcb",
                            "XDG_CONFIG_HOME": str(base / "config"), "XDG_RUNTIME_DIR": str(runtime)}
        self.program = program

    def write_settings(self, text):
        self.settings.write_text(text)

    def start(self):
        self.began = time.perf_counter()
        self.process = subprocess.Popen([self.program], env=self.environment, stdin=subprocess.DEVNULL)

    def cpu_ms(self):
        return time.clock_gettime((~self.process.pid << 3) | 2) * 1000  # the process's own CPU clock

    def pss_mib(self):
        text = pathlib.Path(f"/proc/{self.process.pid}/smaps_rollup").read_text()
        return next(int(line.split()[1]) for line in text.splitlines() if line.startswith("Pss:")) / 1024

    def answer_one_command(self):
        """Types a command and answers it when it is on the wire."""
        due = time.perf_counter() + COMMAND_S
        subprocess.run(["xdotool", "key", "--delay", "0", "i", "d", "Return"], env=self.environment, check=True)
        asked = b""
        while not asked.endswith(b"id\r"):
            if not select.select([self.far_end], [], [], LIMIT_S)[0]:
                sys.exit("the command did not reach the line")
            asked += os.read(self.far_end, 256)
        os.write(self.far_end, ANSWER)
        time.sleep(max(0, due - time.perf_counter()))

    def end(self):
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGTERM)
        self.process.wait()
        os.close(self.far_end)
        self.folder.cleanup()


def measure(program, display, settings, idle_s):
    run = Run(program, display)
    run.write_settings(settings)
    # The window manager may not yet have noticed that the last run's windows are gone.
    display.wait(lambda: not display.shows(b"Quarn"), "the last run's windows to go", 0.01)
    run.start()
    try:
        display.wait(lambda: display.shows(b"Quarn   (COM3)") or run.process.poll() is not None, "the main dialog", 0.001)
        start = (time.perf_counter() - run.began) * 1000 - OWN_WAITS_MS
        if run.process.poll() is not None:
            sys.exit("the program has ended")
        display.wait(lambda: display.shows(b"Quarn - Terminal"), "the Terminal Screen")
        time.sleep(3)
        before, begin = run.cpu_ms(), time.perf_counter()
        time.sleep(idle_s)
        idle = (run.cpu_ms() - before) / (time.perf_counter() - begin)
        memory = run.pss_mib()
        run.answer_one_command()
        before, begin = run.cpu_ms(), time.perf_counter()
        for _ in range(COMMANDS):
            run.answer_one_command()
        answer = (run.cpu_ms() - before - idle * (time.perf_counter() - begin)) / COMMANDS
        return start, idle, memory, answer
    finally:
        run.end()


def main():
    options = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawTextHelpFormatter)
    options.add_argument("program")
    options.add_argument("--settings", required=True, help="settings file with COM_PORT=COM3")
    options.add_argument("--runs", type=int, default=7)
    options.add_argument("--idle", type=float, default=10)
    given = options.parse_args()
    settings = pathlib.Path(given.settings).read_text()
    display = Display()
    try:
        measure(given.program, display, settings, 0.1)
        rows = [measure(given.program, display, settings, given.idle) for _ in range(given.runs)]
    finally:
        display.end()
    for name, unit, values in zip(("start", "idle", "memory", "answer"), ("ms", "ms/s", "MiB", "ms"), zip(*rows)):
        print(f"{name:8}{statistics.median(values):8.2f} {unit:5} (from {min(values):.2f} to {max(values):.2f}, "
              f"{len(values)} runs)")


main()
