"""A break in an answer, on a line that another program has left so that breaks are marked and reads do not wait."""

import os
import re
import termios

from bench import acm, equal, ftdi, gadget, outside, read, test, uart, until
from line_state import State
from modem_lines import BusWatch

# Longer than any delay between two parts of the answer: 4 s.
PATIENT = {"COM_BPS": "300", "PORT_SPEED": "LOW", "R_TIMEOUT": "OFF"}
BREAK = 0x10
# In the state that a device reports.
DEVICE_BREAK = 0x04


def counted(name):
    """What the chip's driver has counted under this name."""
    number = uart.node.removeprefix("/dev/ttyS")
    found = re.search(rf"^{number}:.* {name}:(\d+)", read("/proc/tty/driver/serial"), re.MULTILINE)
    return int(found[1]) if found else 0


class Breaks(BusWatch):
    """The states that an adapter has reported, without data, as the kernel's own monitor of the bus shows them."""

    def come(self):
        return any(int(state, 16) & BREAK for state in
                   re.findall(rf" C Bi:{self._address}:\d+ 0 2 = \w\w(\w\w)", self.text()))


class DeviceBreaks(BusWatch):
    """The same for a device that reports states beside the data, in messages of their own."""

    def __init__(self, node):
        super().__init__(node)
        self._seen = ""

    def _found(self, pattern):
        self._seen += self.text()
        return re.findall(pattern.format(self._address), self._seen)

    def has_data(self, data):
        return bool(self._found(r" C Bi:{}:\d+ 0 %d = %s\b" % (len(data), data.hex())))

    def come(self):
        # Eight bytes that say what it is about, and then the state.
        states = self._found(r" C Ii:{}:\d+ 0\S* 10 = a120\w{{4}} \w{{8}} (\w\w)")
        return any(int(state, 16) & DEVICE_BREAK for state in states)


def break_on_board(line):
    outside.line_break(line="first" if line is ftdi else "uart")


def break_from_gadget(_):
    descriptor = os.open(gadget.near, os.O_RDWR | os.O_NOCTTY | os.O_NONBLOCK)
    try:
        termios.tcsendbreak(descriptor, 0)
    finally:
        os.close(descriptor)


def answer_with_break(line, has_the_beginning, has_the_break, send_break=break_on_board):
    """Quarn's answer to a command whose instrument sends SIM, a break, and -1."""
    original = State.of(line.node)
    marked = original.with_(9600, input=termios.PARMRK | termios.BRKINT | termios.INPCK,
                            local=original.local & ~(termios.ICANON | termios.ECHO),
                            characters={termios.VMIN: 0, termios.VTIME: 0})
    marked.set(line.node)
    try:
        before = State.of(line.node)
        equal("flags and characters that were set",
              (before.input, before.characters), (marked.input, marked.characters))
        line.far.answer("* -> silence")
        line.settings(**PATIENT)
        process = line.account.start("quarn-send", "--raw", "--", "id")
        try:
            until(lambda: line.far.received() == b"id\r", "the command")
            line.far.say("SIM")
            until(has_the_beginning, "the beginning of the answer")
            send_break(line)
            until(has_the_break, "the break")
            line.far.say("-1\r")
            output, errors = process.communicate(timeout=60)
        finally:
            if process.poll() is None:
                process.kill()
                process.communicate()
        equal(f"status ({errors})", process.returncode, 0)
        equal("errors", errors, b"")
        equal("the state afterwards", State.of(line.node).raw, before.raw)
        return output
    finally:
        original.set(line.node)


@test("a break in an answer is one zero byte: 16550A")
def on_chip():
    received, breaks = counted("rx"), counted("brk")
    output = answer_with_break(uart, lambda: counted("rx") == received + 3, lambda: counted("brk") == breaks + 1)
    equal("answer", output, b"SIM\0-1\r")


@test("a break in an answer is nothing: ftdi_sio")
def on_adapter():
    monitor = Breaks(ftdi.node)
    try:
        # The adapter reports it before the next byte.
        output = answer_with_break(ftdi, lambda: not ftdi.far.on_its_way(), lambda: True)
        equal("answer", output, b"SIM-1\r")
        until(monitor.come, "the adapter's report")
    finally:
        monitor.close()


@test("a break in an answer is one zero byte: cdc_acm")
def on_device():
    monitor = DeviceBreaks(acm.node)
    try:
        output = answer_with_break(acm, lambda: monitor.has_data(b"SIM"), monitor.come, break_from_gadget)
        equal("answer", output, b"SIM\0-1\r")
    finally:
        monitor.close()
