"""A line on which nothing goes out is closed, reset and left within a second."""

import fcntl
import os
import signal
import struct
import subprocess
import termios
import time

from bench import Failed, acm, check, each_line, equal, mute, note, plain, until
from line_state import State
from window import INFORMATION, Quarn, press

LONGEST_S = 1.0
# With a handshake by hardware, on a line whose far end never agrees; and with far ends that take nothing.
STUCK = (mute, acm, plain)


class Stuck:
    """Lets nothing go out."""

    def __init__(self, line):
        self._line = line
        self._former = State.of(line.node)

    def __enter__(self):
        if self._line is mute:
            self._former.with_(9600, add=termios.CRTSCTS).set(self._line.node)
        else:
            self._line.far.hold(True)
        return self

    def __exit__(self, *problem):
        if self._line is mute:
            self._former.set(self._line.node)
        else:
            self._line.far.hold(False)


def queued_bytes(line):
    """How many bytes wait to go out, as the driver says."""
    descriptor = os.open(line.node, os.O_RDWR | os.O_NOCTTY | os.O_NONBLOCK)
    try:
        return struct.unpack("i", fcntl.ioctl(descriptor, termios.TIOCOUTQ, bytes(4)))[0]
    finally:
        os.close(descriptor)


@each_line("quarn-send ends within a second where nothing goes out", STUCK)
def send_ends(line):
    with Stuck(line):
        for bps in ("110", "115200"):
            line.settings(R_TIMEOUT="OFF", COM_BPS=bps)
            process = line.account.start("quarn-send", "--", "w" * 1000)
            try:
                # It is open, and the bytes are with the driver.
                until(lambda: queued_bytes(line) > 0 or process.poll() is not None, "bytes that wait to go out")
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
            check(took <= LONGEST_S, f"at {bps} bps it took {took:.2f} s")


@each_line("the windows reset and end within a second where nothing goes out", STUCK)
def windows_end(line):
    line.settings(R_TIMEOUT="OFF", MEM0="w" * 1000)
    with Quarn(line.account) as quarn:
        window = quarn.terminal()
        quarn.choose_from_port_menu("r")
        idle = seconds_to_reset(quarn)
        with Stuck(line):
            send_into_nothing(line, quarn, window)
            quarn.choose_from_port_menu("r")
            stuck = seconds_to_reset(quarn)
            send_into_nothing(line, quarn, window)
            took = quarn.end()
    note(f"reset {idle:.2f} s with an idle line, {stuck:.2f} s; end {took:.2f} s")
    check(stuck - idle <= LONGEST_S, f"a reset took {stuck - idle:.2f} s longer than with an idle line")
    check(took <= LONGEST_S + 0.5, f"the end took {took:.2f} s")


def seconds_to_reset(quarn):
    """From the choice in the menu to the word about it."""
    began = time.monotonic()
    quarn.wait_for(INFORMATION)
    took = time.monotonic() - began
    quarn.answer(INFORMATION, "Return")
    return took


def send_into_nothing(line, quarn, window):
    """Sends the first stored command, and gives it up."""
    quarn.activate(window)
    press("F1", "Return")
    until(lambda: queued_bytes(line) > 0, "bytes that wait to go out")
    press("Escape")
