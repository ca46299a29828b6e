"""A program that takes each new port and asks whether it is a modem, while Quarn is to connect to it."""

import fcntl
import glob
import os
import subprocess
import sys
import termios
import time

from adapters import Adapters, port_of
from bench import AS_USER, LIMIT_S, Account, Background, acm, check, each_line, equal, ftdi, options, test, until
from window import ERROR, INFORMATION, QUESTION, Quarn

# For so long it has the port after YES; Quarn tries for five seconds.
HELD_S = 2
IDLE_CYCLES = 10 if options["long"] else 1


class ModemManager(Background):
    """Has each new adapter for itself until it is released. Use it in a `with`."""

    def __init__(self):
        super().__init__()
        self._known = set(glob.glob("/dev/ttyUSB*"))
        self._held = []

    def _step(self):
        now = set(glob.glob("/dev/ttyUSB*"))
        for node in now - self._known:
            line = os.open(node, os.O_RDWR | os.O_NOCTTY | os.O_NONBLOCK)
            fcntl.ioctl(line, termios.TIOCEXCL)
            os.write(line, b"AT\r")
            self._held.append(line)
        self._known = now

    def holds(self):
        return bool(self._held)

    def release(self):
        while self._held:
            os.close(self._held.pop())

    def _close(self):
        self.release()


class OwnManager:
    """Such a program of Quarn's own user, which has one port. Use it in a `with`."""

    WHAT_IT_DOES = """
import fcntl, os, sys, termios
line = os.open(sys.argv[1], os.O_RDWR | os.O_NOCTTY | os.O_NONBLOCK)
fcntl.ioctl(line, termios.TIOCEXCL)
os.write(line, b"AT\\r")
print("held", flush=True)
sys.stdin.read()
"""

    def __init__(self, node):
        self._process = subprocess.Popen([sys.executable, "-c", self.WHAT_IT_DOES, node], stdin=subprocess.PIPE,
                                         stdout=subprocess.PIPE, **AS_USER)
        self.pid = self._process.pid
        equal("what it says", self._process.stdout.readline(), b"held\n")

    def release(self):
        self._process.communicate(timeout=LIMIT_S)

    def __enter__(self):
        return self

    def __exit__(self, *problem):
        if self._process.poll() is None:
            self._process.kill()
            self._process.communicate()


@each_line("a modem manager of the same user is named, and waited for", (ftdi, acm))
def named(line):
    line.far.answer('"id" -> line "SIM-1"\n* -> silence')
    account = Account()
    port = port_of(account, os.path.realpath(line.node))
    with OwnManager(line.node) as manager:
        until(lambda: b"AT\r" in line.far.received(), "the question whether it is a modem")
        _, output, _ = account.run("quarn-send", "--list")
        row = next(row for row in output.decode().splitlines() if row.split()[0] == port)
        check(f"(PID {manager.pid})" in row, row)
        status, _, errors = account.run("quarn-send", "--port", port, "--", "id")
        equal(f"status ({errors})", status, 5)
        check(f"(PID {manager.pid})" in errors, errors)
        waiting = account.start("quarn-send", "--raw", "--port", port, "--wait", "30", "--", "id")
        try:
            manager.release()
            output, errors = waiting.communicate(timeout=LIMIT_S)
        finally:
            if waiting.poll() is None:
                waiting.kill()
                waiting.communicate()
        equal(f"status and answer ({errors})", (waiting.returncode, output), (0, b"SIM-1\r"))


class Session:
    """A connected program, and its adapter."""

    def __init__(self):
        ftdi.far.answer('"id" -> line "SIM-1"\n* -> silence')
        self.adapters = Adapters()
        self.account = Account()
        self.port = port_of(self.account, self.adapters.node("first"))
        self.account.settings(COM_PORT=self.port)

    def replug(self, quarn):
        self.adapters.unplug("first")
        quarn.answer(ERROR, "Return")
        self.adapters.plug("first", "QA0001", 1)


@test("window: pulled and plugged in while idle, and a modem manager has the port")
def offer():
    session = Session()
    with Quarn(session.account) as quarn:
        window = quarn.terminal()
        for _ in range(IDLE_CYCLES):
            session.replug(quarn)
            quarn.answer(QUESTION, "Return")
            quarn.answer(INFORMATION, "Return")
            quarn.command(window, "id", b"SIM-1")
        with ModemManager() as manager:
            session.replug(quarn)
            until(manager.holds, "the modem manager")
            quarn.answer(QUESTION, "Return")
            time.sleep(HELD_S)
            check(not quarn.find(INFORMATION) and not quarn.find(ERROR), "it has not waited for the port")
            manager.release()
            quarn.answer(INFORMATION, "Return")
            check(b"AT\r" in ftdi.far.received(), "nobody asked whether it is a modem")
            quarn.command(window, "id", b"SIM-1")
            # And one that keeps it.
            session.replug(quarn)
            until(manager.holds, "the modem manager")
            quarn.answer(QUESTION, "Return")
            quarn.wait_for(ERROR, LIMIT_S)
            status, _, errors = session.account.run("quarn-send", "--port", session.port, "--", "id")
            equal(f"status ({errors})", status, 5)
            check("in use by another program" in errors, errors)
            quarn.answer(ERROR, "Return")
            quarn.wait_for(r"^Quarn   \(NONE\)$")
            manager.release()
            quarn.choose_port(session.port)
            quarn.command(window, "id", b"SIM-1")
        quarn.end()
