"""Cycles of pull and plug while quarn-send is busy: it says that the line failed, and the next command is answered."""

import os
import subprocess
import time
import tty

from adapters import Adapters, port_of
from bench import Account, acm, check, equal, ftdi, gadget, note, options, settle, test, until
from closing import fill, queued_bytes

CYCLES = 100 if options["long"] else 10
LONGEST_S = 5
# Ten seconds with something new each 50 ms.
RULES = '"id" -> line "it"\n"mute" -> silence\n"much" -> ' + ' 50 '.join(['"x" * 20'] * 200)


class FtdiCable:
    """The first adapter."""

    line = ftdi

    def __init__(self):
        self._adapters = Adapters()

    def pull(self):
        self._adapters.unplug("first")

    def plug(self):
        if not self._adapters.sockets:
            self._adapters.plug("first", "QA0001", 1)


class AcmCable:
    """The device made of software."""

    line = acm

    def pull(self):
        gadget.unplug()

    def plug(self):
        acm.far.hold(False)
        if not gadget.is_plugged():
            gadget.plug()
            until(lambda: os.path.exists(acm.node), acm.node)
            settle()


def waits(line):
    line.far.answer(RULES)
    return "mute", lambda: line.far.received()


def receives(line):
    line.far.answer(RULES)
    return "much", lambda: line.far.sent() > 100


def writes(line):
    line.far.hold(True)
    fill(line.node)
    return "w" * 1000, lambda: queued_bytes(line) > 0


def cycle(account, port, cable, begin):
    """Returns how long the program took to end."""
    line = cable.line
    # An answer ends after 4 s of silence: this machine needs a while to see that the cable is out.
    account.settings(COM_PORT=port, R_TIMEOUT="OFF", COM_BPS="300", PORT_SPEED="LOW", COM_BUF="6K")
    command, has_begun = begin(line)
    process = account.start("quarn-send", "--raw", "--", command)
    try:
        until(lambda: has_begun() or process.poll() is not None, f"what {command:.4} begins with")
        check(process.poll() is None, f"quarn-send has ended with {process.poll()}")
        began = time.monotonic()
        cable.pull()
        output, errors = process.communicate(timeout=60)
        took = time.monotonic() - began
    except subprocess.TimeoutExpired:
        check(False, f"quarn-send does not end when the cable is pulled during {command:.4}")
    finally:
        if process.poll() is None:
            process.kill()
            process.communicate()
        line.far.answer(RULES)
        cable.plug()
        drain(line)
        line.far.answer(RULES)
    equal(f"status ({errors})", process.returncode, 5)
    # What came before the pull is printed, and nothing else is.
    equal("printed", output, b"x" * len(output))
    equal("whether anything was printed", bool(output), begin is receives)
    check(b"failed" in errors or b"not present" in errors, f"no reason: {errors}")
    check(took <= LONGEST_S, f"it took {took:.1f} s to end")
    account.settings(COM_PORT=port)
    until(lambda: answer_of(account, port) == b"it\r", "the answer after plugging in")
    return took


def drain(line):
    """Takes what was on its way when the cable was pulled, as another program."""
    descriptor = os.open(line.node, os.O_RDWR | os.O_NOCTTY | os.O_NONBLOCK)

    def is_silent():
        try:
            return not os.read(descriptor, 4096)
        except BlockingIOError:
            return not line.far.on_its_way()

    try:
        tty.setraw(descriptor)
        until(is_silent, "the end of what was on its way")
    finally:
        os.close(descriptor)


def answer_of(account, port):
    """The right answer, or none while the instrument still has bytes from before. Nothing else may come."""
    status, output, errors = account.run("quarn-send", "--raw", "--port", port, "--", "id")
    check((status, output) in ((0, b"it\r"), (1, b""), (5, b"")), f"status {status}, {output!r}, {errors}")
    return output


def cycles(name, cable, begin, count):
    @test(f"pulled and plugged in again {count} times while it {name}: {cable.line.kind}")
    def run():
        used = cable()
        account = Account()
        port = port_of(account, os.path.realpath(used.line.node))
        took = [cycle(account, port, used, begin) for _ in range(count)]
        note(f"ended after {max(took):.1f} s at most")

    return run


cycles("waits", FtdiCable, waits, CYCLES * 3 // 10)
cycles("receives", FtdiCable, receives, CYCLES * 3 // 10)
cycles("writes", AcmCable, writes, CYCLES * 3 // 10)
