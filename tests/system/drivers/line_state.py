"""What the drivers make of the line parameters, and that a line is left as it was found."""

import concurrent.futures
import fcntl
import glob
import itertools
import os
import signal
import struct
import termios

from bench import LINES, Failed, check, each_line, equal, ftdi, options, read, test, until, write

RATES = (110, 300, 600, 1200, 2400, 4800, 9600, 14400, 19200, 38400, 56000, 57600, 115200, 128000, 256000)
FORMATS = list(itertools.product("5678", ("None", "Odd", "Even"), ("1", "1.5", "2")))
# Each number of data bits with each parity and each number of stop bits.
SOME_FORMATS = [each for each in FORMATS if (each[1], each[2]) in (("None", "1"), ("Odd", "1.5"), ("Even", "2"))]
# What these drivers refuse.
NO_RATES = {"16550A": (128000, 256000)}
NO_BITS = {"ftdi_sio": "6"}

# Four flag words, the line discipline, nineteen characters, two rates.
TERMIOS2 = struct.Struct("4IB19s2I")
TCGETS2, TCSETS2 = 0x802C542A, 0x402C542B
BOTHER = 0o010000
CBAUD = 0o010017


class State:
    """The state of a line as its driver tells it, asked for by another program."""

    def __init__(self, raw):
        self.raw = raw
        self.input, self.output, self.control, self.local, _, self.characters, _, self.rate = TERMIOS2.unpack(raw)

    @staticmethod
    def of(node):
        line = os.open(node, os.O_RDWR | os.O_NOCTTY | os.O_NONBLOCK)
        try:
            return State(fcntl.ioctl(line, TCGETS2, bytes(TERMIOS2.size)))
        finally:
            os.close(line)

    def set(self, node):
        line = os.open(node, os.O_RDWR | os.O_NOCTTY | os.O_NONBLOCK)
        try:
            fcntl.ioctl(line, TCSETS2, self.raw)
        finally:
            os.close(line)

    def with_(self, rate, add=0, remove=0, characters=None, **flags):
        """Another state: this rate, these control flags, these characters by their place, and these words."""
        words = list(TERMIOS2.unpack(self.raw))
        words[0], words[1], words[3] = (flags.get(key, words[at]) for key, at in
                                        (("input", 0), ("output", 1), ("local", 3)))
        words[2] = words[2] & ~(remove | CBAUD | CBAUD << 16) | add | BOTHER | BOTHER << 16
        words[5] = bytes((characters or {}).get(at, value) for at, value in enumerate(self.characters))
        words[6] = words[7] = rate
        return State(TERMIOS2.pack(*words))

    def format(self):
        bits = {termios.CS5: "5", termios.CS6: "6", termios.CS7: "7", termios.CS8: "8"}[self.control & termios.CSIZE]
        parity = "None" if not self.control & termios.PARENB else "Odd" if self.control & termios.PARODD else "Even"
        stop = "1" if not self.control & termios.CSTOPB else "1.5" if bits == "5" else "2"
        return bits, parity, stop


class Connected:
    """quarn-send on a line whose instrument is silent. Use it in a `with`; it has the line until its end."""

    def __init__(self, line, *arguments, **values):
        self._line = line
        line.settings(R_TIMEOUT="OFF", **values)
        self._before = len(line.far.received())
        self.process = line.account.start("quarn-send", *arguments, "--", "mute")

    def waits(self):
        """Whether it has sent its command; false when it has ended."""
        until(lambda: len(self._line.far.received()) > self._before or self.process.poll() is not None,
              "the command or the end of quarn-send")
        return self.process.poll() is None

    def must_wait(self):
        # Only an ended program has said everything.
        if not self.waits():
            raise Failed(self.errors())

    def errors(self):
        return self.process.stderr.read().decode(errors="replace")

    def __enter__(self):
        return self

    def __exit__(self, *problem):
        self.process.send_signal(signal.SIGINT)
        status = self.process.wait(60)
        self.process.stdout.close()
        self.process.stderr.close()
        if problem == (None, None, None):
            check(status in (4, 5), f"quarn-send ended with {status}")


def is_possible(kind, rate, bits, stop):
    """Whether the driver, and a chip of this kind, can do it."""
    has_stop = stop == "1" or stop == ("1.5" if bits == "5" else "2")
    return has_stop and rate not in NO_RATES.get(kind, ()) and bits not in NO_BITS.get(kind, "")


def try_one(line, rate, bits, parity, stop):
    what = f"{line.kind}: {rate} {bits} {parity} {stop}"
    values = {"COM_BPS": str(rate), "COM_BITS": bits, "COM_PARITY": parity, "COM_STOP": stop}
    with Connected(line, **values) as program:
        taken = program.waits()
        equal(f"{what} is taken", taken, is_possible(line.kind, rate, bits, stop))
        if taken:
            state = State.of(line.node)
            equal(f"rate at {what}", state.rate, rate)
            equal(f"format at {what}", state.format(), (bits, parity, stop))
        else:
            errors = program.errors()
            # Either the kind of line cannot say it, or the driver offers something else.
            reason = "no such combination" if not is_possible("", 0, bits, stop) else "the driver does not take"
            check(reason in errors, f"{what}: {errors}")


def _all_states(line):
    line.far.answer("* -> silence")
    for rate in RATES:
        try_one(line, rate, "8", "None", "1")
    for bits, parity, stop in FORMATS if options["long"] else SOME_FORMATS:
        try_one(line, 9600, bits, parity, stop)


@test("rates and formats: 16550A, ftdi_sio, cdc_acm")
def rates_and_formats():
    # They mostly start and wait.
    with concurrent.futures.ThreadPoolExecutor() as pool:
        for done in [pool.submit(_all_states, line) for line in LINES]:
            done.result()


@each_line("the former state comes back", LINES)
def former_state(line):
    original = State.of(line.node)
    line.far.answer("* -> silence")
    strange = original.with_(2400, add=termios.CS7 | termios.PARENB | termios.CSTOPB | termios.HUPCL,
                             remove=termios.CSIZE | termios.CLOCAL,
                             input=termios.ICRNL | termios.IXON | termios.ISTRIP, output=termios.OPOST,
                             local=termios.ICANON | termios.ECHO | termios.ECHONL | termios.ISIG)
    strange.set(line.node)
    try:
        before = State.of(line.node)
        equal("the rate that was set", before.rate, 2400)
        check(before.local & termios.ECHO, "the line does not echo")
        with Connected(line, COM_BPS="19200") as program:
            program.must_wait()
            during = State.of(line.node)
            equal("rate and format", (during.rate, during.format()), (19200, ("8", "None", "1")))
            check(not during.local & (termios.ECHO | termios.ICANON | termios.ISIG), "it is not raw")
        equal("state afterwards", State.of(line.node).raw, before.raw)
        # A line that no driver takes so is left as it was, too.
        with Connected(line, COM_BITS="5", COM_STOP="2") as program:
            check(not program.waits(), "5 data bits and 2 stop bits are taken")
        equal("state after a refusal", State.of(line.node).raw, before.raw)
    finally:
        original.set(line.node)


@test("latency timer: ftdi_sio")
def latency_timer():
    timer = glob.glob("/sys/bus/usb-serial/devices/" + os.path.basename(os.path.realpath(ftdi.node))
                      + "/latency_timer")[0]
    ftdi.far.answer("* -> silence")
    usual = read(timer)
    for former in (usual, "7"):
        write(timer, former)
        equal("latency timer before", read(timer), former)
        with Connected(ftdi) as program:
            program.must_wait()
            equal("latency timer while connected", read(timer), "1")
        equal("latency timer afterwards", read(timer), former)
    write(timer, usual)
    check(usual != "1", "it is 1 anyway")
