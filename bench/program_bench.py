#!/usr/bin/env python3
"""What the program costs as a whole, measured from outside; alone, or in turn with others.

    bench/program_bench.py PROGRAM --settings FILE [--runs N] [--idle SECONDS] [--one-file PROGRAM]
                           [--beside LIBRARY | --sessions]

scripts/bench starts this on a virtual display, with what it needs of scripts/lib/display.sh.

With a connected port (a pseudo-terminal) and the window in which commands are typed open:
  start     from the spawn to the main window on screen, less the waits that are the program's own: the splash
            and the "Successfully Connected" message, 2000 ms each
  memory    proportional set size (PSS) in MiB at the end of the idle time
  idle      CPU milliseconds a second, all threads, all timers running, nothing sent
  switches  context switches a second in that time, all threads
  answer    CPU milliseconds for a command of two characters that is typed, sent and answered with 64 bytes; what
            the program takes in that time anyway is not counted
With --sessions only start and memory are measured, in several sessions: one without a session bus, one whose bus
does not answer, and GNOME's with Qt's theme for it.

Before each run there is an unmeasured one, so that the files are warm. The last line says what the rest of the
computer did meanwhile.
"""
import argparse, os, pathlib, re, select, signal, socket, statistics, subprocess, sys, tempfile, threading, time, tty
from dataclasses import dataclass, field

LIMIT_S = 30
COMMANDS = 40
COMMAND_S = 0.3  # long enough for the silence that ends an answer
ANSWER_BYTES = 64
FIGURES = (("start", "ms"), ("memory", "MiB"), ("idle", "ms/s"), ("switches", "1/s"), ("answer", "ms"))
GOALS = {"start": 0.7, "memory": 0.8, "answer": 1.0}


@dataclass
class Program:
    """How a program is started on a line. {port} stands for the line's path, {home} for the home folder."""
    name: str
    command: list
    main: str                                        # an expression for the main window's title
    typed_in: str = ""                               # the same for the window for commands, when it is another
    own_waits_ms: int = 0
    files: dict = field(default_factory=dict)        # path in the home folder: text
    links: dict = field(default_factory=dict)        # path in the home folder: target
    environment: dict = field(default_factory=dict)
    opening_keys: str = ""                           # what opens the port, when the start does not
    line_end: bytes = b"\r\n"                        # of the answers


def quarn(name, program, settings):
    return Program(name, [os.path.abspath(program)], r"^Quarn   \(COM3\)$", "^Quarn - Terminal", 4000,
                   files={"config/Halvo/Quarn/Quarn.ini": settings},
                   links={"config/Halvo/Quarn/ports/COM3": "{port}"}, line_end=b"\r",
                   environment={"XDG_CONFIG_HOME": "{home}/config"})


def others(modem_lines):
    """The serial windows of Debian's packages of these names."""
    cutecom = {"session": "bench", "Device": "{port}", "BaudRate": 115200, "DataBits": 8, "Parity": 0, "StopBits": 1,
               # With hardware flow control it leaves the modem lines alone, which a pseudo-terminal has not.
               "FlowControl": 1, "OpenMode": 3}
    session = cutecom.pop("session")
    return [
        Program("cutecom", ["cutecom", "-s", session], "CuteCom", opening_keys="alt+o", files={
            ".config/CuteCom/CuteCom5.conf": f"[CuteCom]\nsession={session}\n\n[sessions]\nsize=1\n1\\name={session}\n"
            + "".join(f"1\\{key}={value}\n" for key, value in cutecom.items())}),
        # It closes a line that does not know the question for the modem lines.
        Program("gtkterm", ["gtkterm", "-p", "{port}", "-s", "115200"], "GTKTerm", opening_keys="F5",
                environment={"LD_PRELOAD": modem_lines},
                # Without a file it stops at a message.
                files={".config/.gtktermrc": "[default]\nport = {port}\nspeed = 115200\nbits = 8\nstopbits = 1\n"
                                             "parity = none\nflow = none\nfont = \"Monospace 12\"\n"
                                             # and draws black on black
                                             + "".join(f"term_foreground_{part} = 1.0\n"
                                                       for part in ("red", "green", "blue", "alpha"))}),
        Program("putty", ["putty", "-serial", "{port}", "-sercfg", "115200,8,n,1,N"], "PuTTY"),
    ]


def in_sessions(name, program, settings, silent_bus):
    """The program in the sessions that people have; the first is the one that the others are compared with."""
    def session(kind, **environment):
        made = quarn(f"{name}, {kind}", program, settings)
        made.environment.update(environment)
        return made
    return [session("no bus"), session("silent bus", DBUS_SESSION_BUS_ADDRESS=f"unix:path={silent_bus}"),
            session("GNOME", XDG_CURRENT_DESKTOP="GNOME")]


def in_shell(function, *words):
    """What a function of scripts/lib/display.sh says; scripts/bench exports the two that are used here."""
    return subprocess.run(["bash", "-c", '"$@"', "bash", function, *words], stdout=subprocess.PIPE, check=True).stdout


def press_keys(*keys):
    in_shell("press_keys", *keys)


class Windows:
    """The windows on the display, and when each came there."""

    def __init__(self):
        self.came, self.changed = {}, threading.Event()
        # The window manager lists a window when it maps it, and each change of the list is a line at once.
        self.watch = subprocess.Popen(["xprop", "-root", "-spy", "_NET_CLIENT_LIST"], stdout=subprocess.PIPE, text=True)
        threading.Thread(target=self.note, daemon=True).start()

    def note(self):
        for line in self.watch.stdout:
            now = time.perf_counter()
            windows = [int(each, 16) for each in re.findall("0x[0-9a-f]+", line)]
            self.came = {each: self.came.get(each, now) for each in windows}
            self.changed.set()

    def when(self, title):
        """When the window whose title matches came, or nothing."""
        found = in_shell("window_titled", title) if self.came else b""
        return self.came.get(int(found)) if found else None

    def wait(self, condition, what):
        """Looks when a window has come or gone, and now and then: its title may be set after that."""
        deadline = time.monotonic() + LIMIT_S
        while not (found := condition()):
            if time.monotonic() > deadline:
                sys.exit(f"gave up waiting for {what}")
            self.changed.wait(0.25)
            self.changed.clear()
        return found

    def end(self):
        self.watch.terminate()
        self.watch.wait()


class Run:
    """A program with a home folder and a line of its own."""

    def __init__(self, program, windows):
        self.program, self.windows = program, windows
        self.answers = 0
        self.folder = tempfile.TemporaryDirectory()
        home = pathlib.Path(self.folder.name)
        (home / "run").mkdir(mode=0o700)
        # The near end stays open: a program may close the line and open it anew.
        self.far_end, self.near_end = os.openpty()
        tty.setraw(self.near_end)
        places = {"port": os.ttyname(self.near_end), "home": str(home)}
        for name, text in program.files.items():
            (home / name).parent.mkdir(parents=True, exist_ok=True)
            (home / name).write_text(text.format(**places) if "{port}" in text else text)
        for name, target in program.links.items():
            (home / name).parent.mkdir(parents=True, exist_ok=True)
            (home / name).symlink_to(target.format(**places))
        environment = {**os.environ, "HOME": str(home), "XDG_RUNTIME_DIR": str(home / "run"),
                       **{name: value.format(**places) for name, value in program.environment.items()}}
        self.began = time.perf_counter()
        self.process = subprocess.Popen([each.format(**places) for each in program.command], env=environment, cwd=home,
                                        stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def wait_for(self, title):
        """When the window came."""
        came = self.windows.wait(lambda: self.process.poll() is not None or self.windows.when(title),
                                 f"the window of {self.program.name}")
        if self.process.poll() is not None:
            sys.exit(f"{self.program.name} has ended")
        return came

    def cpu_ms(self):
        return time.clock_gettime((~self.process.pid << 3) | 2) * 1000  # the process's own CPU clock

    def switches(self):
        statuses = pathlib.Path(f"/proc/{self.process.pid}/task").glob("*/status")
        return sum(int(line.split()[1]) for each in statuses for line in each.read_text().splitlines()
                   if "ctxt_switches" in line)

    def pss_mib(self):
        text = pathlib.Path(f"/proc/{self.process.pid}/smaps_rollup").read_text()
        return next(int(line.split()[1]) for line in text.splitlines() if line.startswith("Pss:")) / 1024

    def answer_one_command(self):
        """Types a command and answers it when it is on the wire."""
        due = time.perf_counter() + COMMAND_S
        press_keys("i", "d", "Return")
        asked = b""
        while not asked.endswith((b"id\r", b"id\n")):
            if not select.select([self.far_end], [], [], LIMIT_S)[0]:
                sys.exit(f"the command of {self.program.name} did not reach the line")
            asked += os.read(self.far_end, 256)
        self.answers += 1
        # Each is another: a row of the log that shows the same text as before is not painted.
        answer = b"%08d" % self.answers + bytes(range(0x21, 0x21 + ANSWER_BYTES - 8))
        os.write(self.far_end, answer + self.program.line_end)
        time.sleep(max(0, due - time.perf_counter()))

    def end(self):
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGTERM)
        self.process.wait()
        os.close(self.near_end)
        os.close(self.far_end)
        self.folder.cleanup()


def computer_ms():
    """What all processors have done since the start of the system."""
    words = pathlib.Path("/proc/stat").read_text().split("\n", 1)[0].split()
    return (sum(map(int, words[1:4])) + sum(map(int, words[6:9]))) * 1000 / os.sysconf("SC_CLK_TCK")


def measure(program, windows, idle_s):
    """Without idle time, only start and memory."""
    # The window manager may not yet have noticed that the last run's windows are gone.
    windows.wait(lambda: not windows.came, "the last run's windows to go")
    run = Run(program, windows)
    try:
        start = (run.wait_for(program.main) - run.began) * 1000 - program.own_waits_ms
        run.wait_for(program.typed_in or program.main)
        if not idle_s:
            time.sleep(1)
            return (start, run.pss_mib()), 0
        if program.opening_keys:
            time.sleep(1)
            press_keys(program.opening_keys)
        time.sleep(3)
        cpu, switches, computer, begin = run.cpu_ms(), run.switches(), computer_ms(), time.perf_counter()
        time.sleep(idle_s)
        seconds = time.perf_counter() - begin
        idle = (run.cpu_ms() - cpu) / seconds
        switches = (run.switches() - switches) / seconds
        rest = (computer_ms() - computer) / seconds - idle
        memory = run.pss_mib()
        run.answer_one_command()
        cpu, begin = run.cpu_ms(), time.perf_counter()
        for _ in range(COMMANDS):
            run.answer_one_command()
        answer = (run.cpu_ms() - cpu - idle * (time.perf_counter() - begin)) / COMMANDS
        return (start, memory, idle, switches, answer), rest
    finally:
        run.end()


def tell_goals(medians):
    """What the program that is one file takes of what PuTTY does, and what it may."""
    for at, (figure, _) in enumerate(FIGURES):
        if figure in GOALS:
            ratio = medians["one file"][at] / medians["putty"][at]
            reached = "reached" if ratio <= GOALS[figure] else "missed"
            print(f"one file / putty: {figure:9}{ratio:5.2f}, goal {GOALS[figure]}: {reached}")


def main():
    options = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawTextHelpFormatter)
    options.add_argument("program")
    options.add_argument("--settings", required=True, help="settings file with COM_PORT=COM3")
    options.add_argument("--runs", type=int, default=7)
    options.add_argument("--idle", type=float, default=10)
    options.add_argument("--one-file", metavar="PROGRAM", help="measure this program too; Qt is inside it")
    options.add_argument("--beside", metavar="LIBRARY",
                         help="measure the other programs too; LIBRARY is what modem_lines.c is built into")
    options.add_argument("--sessions", action="store_true", help="measure start and memory in several sessions")
    given = options.parse_args()
    settings = pathlib.Path(given.settings).read_text()
    own = {"quarn": given.program, **({"one file": given.one_file} if given.one_file else {})}
    silent = socket.socket(socket.AF_UNIX)
    folder = tempfile.TemporaryDirectory()
    silent.bind(f"{folder.name}/bus")
    silent.listen(128)
    programs = [made for name, path in own.items()
                for made in (in_sessions(name, path, settings, silent.getsockname()) if given.sessions
                             else [quarn(name, path, settings)])]
    if given.beside:
        programs += others(given.beside)
    idle_s = 0 if given.sessions else given.idle
    rows, rests = {each.name: [] for each in programs}, []
    windows = Windows()
    try:
        for _ in range(given.runs):
            for each in programs:
                measure(each, windows, 0)
                figures, rest = measure(each, windows, idle_s)
                rows[each.name].append(figures)
                rests.append(rest)
    finally:
        windows.end()
    wide = max(map(len, rows)) + 2
    for name, runs in rows.items():
        for (figure, unit), values in zip(FIGURES, zip(*runs)):
            print(f"{name:{wide}}{figure:9}{statistics.median(values):8.2f} {unit:5}"
                  f"(from {min(values):.2f} to {max(values):.2f}, {len(values)} runs)")
    if idle_s:
        print(f"the rest of the computer: {statistics.median(rests):.0f} ms/s, at most {max(rests):.0f}")
    if given.one_file and given.beside:
        tell_goals({name: [statistics.median(values) for values in zip(*runs)] for name, runs in rows.items()})


main()
