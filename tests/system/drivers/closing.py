"""A line on which nothing goes out is closed, reset and left within a second."""

import fcntl
import os
import re
import signal
import struct
import subprocess
import termios
import time
import tty

from adapters import port_of
from bench import Failed, acm, check, each_line, equal, ftdi, mute, note, options, read, until
from line_state import State
from window import INFORMATION, QUESTION, Quarn

LONGEST_S = 1.0
PASSING = "^Quarn : Infomation$"
ATTEMPTS = 3
# With a handshake by hardware, on a line whose far end never agrees; and with a far end that takes nothing.
STUCK = (mute, acm)
SENT = b"hold\r"
TIOCGSERIAL, TIOCSSERIAL = 0x541E, 0x541F
# Where it is in the driver's record of a line, and the value for "do not wait".
CLOSING_WAIT_AT, NO_WAIT = 40, 65535


class Stuck:
    """Lets nothing go out. Use it in a `with`."""

    def __init__(self, line):
        self._line = line
        self._former = State.of(line.node)
        self._filled = 0

    def __enter__(self):
        if self._line is mute:
            self._former.with_(9600, add=termios.CRTSCTS).set(self._line.node)
        else:
            self._line.far.answer("* -> silence")
            self._line.far.hold(True)
            self._filled = fill(self._line.node)
        return self

    def __exit__(self, *problem):
        if self._line is mute:
            self._former.set(self._line.node)
            return
        self._line.far.hold(False)
        # Until then the next command would come behind it.
        until(lambda: len(self._line.far.received()) >= self._filled, "what was held back")


def fill(node):
    """Writes as much as the other end keeps for a program that does not read yet. Returns how many bytes that are."""
    line = os.open(node, os.O_RDWR | os.O_NOCTTY | os.O_NONBLOCK)
    record = fcntl.ioctl(line, TIOCGSERIAL, bytes(128))
    changed = bytearray(record)
    struct.pack_into("H", changed, CLOSING_WAIT_AT, NO_WAIT)
    try:
        tty.setraw(line)
        fcntl.ioctl(line, TIOCSSERIAL, bytes(changed))
        written, since = 0, time.monotonic()
        while time.monotonic() < since + 1:
            try:
                written += os.write(line, b"f" * 64)
                since = time.monotonic()
            except BlockingIOError:
                time.sleep(0.01)
        return written - queued_in(line)
    finally:
        # The driver drops the rest now.
        os.close(line)
        line = os.open(node, os.O_RDWR | os.O_NOCTTY | os.O_NONBLOCK)
        fcntl.ioctl(line, TIOCSSERIAL, record)
        os.close(line)


def queued_in(descriptor):
    return struct.unpack("i", fcntl.ioctl(descriptor, termios.TIOCOUTQ, bytes(4)))[0]


def queued_bytes(line):
    """How many bytes wait to go out, as the driver says."""
    descriptor = os.open(line.node, os.O_RDWR | os.O_NOCTTY | os.O_NONBLOCK)
    try:
        return queued_in(descriptor)
    finally:
        os.close(descriptor)


def sent_bytes(line):
    """How many bytes have gone out."""
    if line.far:
        return len(line.far.received())
    # What the driver has counted.
    number = line.node.removeprefix("/dev/ttyS")
    return int(re.search(rf"^{number}:.* tx:(\d+)", read("/proc/tty/driver/serial"), re.MULTILINE)[1])


@each_line("quarn-send ends within a second where nothing goes out", STUCK)
def send_ends(line):
    for bps in ("110", "115200"):
        if line.far:
            line.far.answer("* -> silence")
        idle = seconds_to_end(line, bps, lambda before: sent_bytes(line) >= before + len(SENT))
        with Stuck(line):
            stuck = seconds_to_end(line, bps, lambda _: queued_bytes(line) > 0)
        note(f"at {bps} bps {idle:.2f} s with an idle line, else {stuck:.2f} s")
        check(stuck - idle <= LONGEST_S, f"at {bps} bps it took {stuck - idle:.2f} s longer than with an idle line")


def seconds_to_end(line, bps, is_ready):
    """The shortest time that quarn-send needed to end: a busy computer adds to it."""
    return min(seconds_to_end_once(line, bps, is_ready) for _ in range(ATTEMPTS))


def seconds_to_end_once(line, bps, is_ready):
    line.settings(R_TIMEOUT="OFF", COM_BPS=bps)
    before = sent_bytes(line)
    process = line.account.start("quarn-send", "--", "hold")
    try:
        until(lambda: process.poll() is not None or is_ready(before), "the bytes")
        check(process.poll() is None, f"quarn-send has ended: {process.returncode}")
        began = time.monotonic()
        process.send_signal(signal.SIGINT)
        try:
            status = process.wait(45)
        except subprocess.TimeoutExpired:
            raise Failed("it does not end in 45 s") from None
        took = time.monotonic() - began
    finally:
        if process.poll() is None:
            process.kill()
            process.wait()
        process.stdout.close()
        process.stderr.close()
    equal("status", status, 4)
    return took


@each_line("the windows reset, change the port, disconnect and end within a second where nothing goes out", STUCK)
def windows_end(line):
    other = port_of(line.account, os.path.realpath(ftdi.node))
    line.settings(R_TIMEOUT="OFF", AUTO_CLR="ON")
    # From before the open on: a reset puts the former state of the line back.
    with Stuck(line), Quarn(line.account) as quarn:
        window = quarn.terminal()
        idle, stuck = [], []
        # The shortest of them counts: a busy computer adds to it.
        while len(idle) < ATTEMPTS and (not stuck or min(stuck) - min(idle) > LONGEST_S):
            idle.append(seconds_to_reset(quarn))
            send_into_nothing(line, quarn, window)
            stuck.append(seconds_to_reset(quarn))
        changed = changed_idle = 0.0
        if line is mute or options["long"]:
            send_into_nothing(line, quarn, window)
            changed = quarn.choose_port(other)
            changed_idle = quarn.choose_port("COM11")
        send_into_nothing(line, quarn, window)
        disconnected = seconds_to_disconnect(quarn)
        send_into_nothing(line, quarn, window)
        took = quarn.end()
    shown = ", ".join(f"{each:.2f}" for each in stuck)
    idle, stuck = min(idle), min(stuck)
    note(f"reset {idle:.2f} s with nothing to send, else {shown} s; another port after {changed:.2f} s, back after "
         f"{changed_idle:.2f} s; disconnected after {disconnected:.2f} s; end {took:.2f} s")
    check(stuck - idle <= LONGEST_S, f"a reset took {stuck - idle:.2f} s longer than with an idle line")
    check(changed - changed_idle <= LONGEST_S, f"another port came {changed - changed_idle:.2f} s later than with an idle line")
    # A reset of a line with nothing to send shows how slow this machine is.
    check(disconnected <= LONGEST_S + idle, f"the port was disconnected after {disconnected:.2f} s")
    check(took <= LONGEST_S + idle, f"the end took {took:.2f} s")


def seconds_to_reset(quarn):
    """From the choice in the menu to the word about it."""
    quarn.choose_from_port_menu("r")
    began = time.monotonic()
    quarn.wait_for(INFORMATION)
    took = time.monotonic() - began
    quarn.answer(INFORMATION, "Return")
    return took


def seconds_to_disconnect(quarn):
    """From YES to the message that says so. The port is connected again afterwards."""
    quarn.choose_from_port_menu("d")
    quarn.activate(quarn.wait_for(QUESTION))
    began = time.monotonic()
    quarn.press("y")
    quarn.wait_for(PASSING)
    took = time.monotonic() - began
    quarn.wait_for(r"^Quarn   \(COM11-NC\)$")
    quarn.wait_gone("^Quarn : ")
    quarn.choose_from_port_menu("c")
    quarn.wait_for(r"^Quarn   \(COM11\)$")
    quarn.wait_gone("^Quarn : ")
    return took


def send_into_nothing(line, quarn, window):
    """Sends a command, and gives it up."""
    entered = 0.0

    def waits_to_go_out():
        nonlocal entered
        if queued_bytes(line) > 0:
            return True
        # Keys that come right after a box has closed may be dropped.
        if time.monotonic() > entered + 5:
            quarn.enter(window, "hold")
            entered = time.monotonic()
        return False

    until(waits_to_go_out, f"bytes that wait to go out; there is {quarn.windows()}")
    quarn.press("Escape")
