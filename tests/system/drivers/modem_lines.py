"""What becomes of DTR and RTS, as the chip or the adapter is told."""

import os
import re
import signal
import termios

from bench import LINES, check, each_line, equal, outside, read, until
from line_state import Connected, State

BOTH = frozenset({"DTR", "RTS"})
NEITHER = frozenset()


class BusWatch:
    """The control requests to a USB device, as the kernel's own monitor of the bus shows them."""

    def __init__(self, node):
        folder = os.path.realpath("/sys/class/tty/" + os.path.basename(os.path.realpath(node)) + "/device")
        while not os.path.exists(folder + "/devnum"):
            folder = os.path.dirname(folder)
        self._address = f"{read(folder + '/busnum')}:{int(read(folder + '/devnum')):03}"
        self._monitor = os.open("/sys/kernel/debug/usb/usbmon/0u", os.O_RDONLY | os.O_NONBLOCK)
        self.requests()

    def text(self):
        """What the monitor has shown since the last call."""
        text = b""
        while True:
            try:
                part = os.read(self._monitor, 65536)
            except BlockingIOError:
                break
            if not part:
                break
            text += part
        return text.decode(errors="replace")

    def requests(self):
        """Request type, request and value of each that was sent since the last call."""
        found = re.findall(rf" S Co:{self._address}:0 s (\w+) (\w+) (\w+) ", self.text())
        return [tuple(int(each, 16) for each in request) for request in found]

    def close(self):
        os.close(self._monitor)


class AcmWatch(BusWatch):
    """Both lines are told at once."""

    def changes(self):
        return [frozenset(name for name, bit in (("DTR", 1), ("RTS", 2)) if value & bit)
                for kind, request, value in self.requests() if (kind, request) == (0x21, 0x22)]


class FtdiWatch(BusWatch):
    """The lower half says how a line is to be, the upper half which of them is meant."""

    def __init__(self, node):
        super().__init__(node)
        self._now = None

    def changes(self):
        result = []
        for kind, request, value in self.requests():
            if (kind, request) != (0x40, 1):
                continue
            now = set(self._now or ())
            for name, bit in (("DTR", 1), ("RTS", 2)):
                if value & bit << 8:
                    (now.add if value & bit else now.discard)(name)
            self._now = frozenset(now)
            result.append(self._now)
        return result


class UartWatch:
    """The chip's fourth register, as the machine's board sees it."""

    def __init__(self, _):
        _, self._from = outside.told(since=0)

    def changes(self):
        text, self._from = outside.told(since=self._from)
        return [frozenset(name for name, bit in (("DTR", 1), ("RTS", 2)) if int(value, 16) & bit)
                for value in re.findall(r"serial_write write addr 0x04 val (0x\w+)", text)]

    def close(self):
        pass


WATCHES = {"16550A": UartWatch, "ftdi_sio": FtdiWatch, "cdc_acm": AcmWatch}


class Watched:
    """Waits for what the lines come to."""

    def __init__(self, line):
        self._watch = WATCHES[line.kind](line.node)
        self.seen = []

    def __enter__(self):
        return self

    def __exit__(self, *problem):
        self._watch.close()

    def look(self):
        self.seen += self._watch.changes()
        return self.seen

    def becomes(self, what, wanted):
        until(lambda: self.look() and self.seen[-1] == wanted, f"{what}: {wanted}; there was {self.seen}", 20)

    def forget(self):
        self.look()
        self.seen = []


@each_line("DTR and RTS at open and close", LINES)
def open_and_close(line):
    line.far.answer("* -> silence")
    with Watched(line) as lines:
        with Connected(line) as program:
            program.must_wait()
            lines.becomes("connected", BOTH)
            # A setting of the state must not lower them in between.
            first = lines.seen.index(BOTH)
            equal("from the first moment on", set(lines.seen[first:]), {BOTH})
            program.process.send_signal(signal.SIGINT)
            program.process.wait(60)
        lines.becomes("closed", NEITHER)


@each_line("DTR and RTS stay up where the line says so", LINES)
def kept_up(line):
    original = State.of(line.node)
    original.with_(9600, remove=termios.HUPCL).set(line.node)
    try:
        line.far.answer("* -> silence")
        with Watched(line) as lines:
            with Connected(line) as program:
                program.must_wait()
                lines.becomes("connected", BOTH)
                lines.forget()
            equal("told at the close", [each for each in lines.look() if each != BOTH], [])
    finally:
        original.set(line.node)


@each_line("DTR and RTS as quarn-send is told", LINES)
def as_told(line):
    line.far.answer("* -> silence")
    for dtr, rts, wanted in (("off", "keep", {"RTS"}), ("keep", "off", {"DTR"}), ("off", "off", set()),
                             ("on", "on", BOTH)):
        with Watched(line) as lines:
            with Connected(line, "--dtr", dtr, "--rts", rts) as program:
                program.must_wait()
                lines.becomes(f"--dtr {dtr} --rts {rts}", frozenset(wanted))
            lines.look()
            equal("after the close", lines.seen[-1] if lines.seen else NEITHER, NEITHER)
