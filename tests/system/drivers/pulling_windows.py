"""Cycles of pull and plug with the windows: one error, one offer to return, and nothing is left behind."""

import os
import time
from collections import Counter

from adapters import Adapters, port_of
from bench import Account, Failed, acm, check, equal, ftdi, note, options, outside, test, until
from closing import fill
from pulling import AcmCable, FtdiCable, RULES, drain
from window import ERROR, INFORMATION, QUESTION, Appearances, Quarn

PAGE_KIB = os.sysconf("SC_PAGESIZE") // 1024
MOST_GROWTH_KIB = 2048
# In the first cycle of each state what it needs for the first time is loaded.
MOST_AT_FIRST_KIB = 8192
IDLE_S = 4 if options["long"] else 2
MEASUREMENTS = 20
# Two measurements of the same may differ by as much.
NOISE = 1.1
# As the kernel numbers the clocks of another process: the time that its threads really ran.
PROCESS_CPU_CLOCK = 2


class Session:
    """A connected program. What it leaves open and uses is the system's figures."""

    def __init__(self, quarn, line, port):
        self.quarn, self.line, self.port = quarn, line, port
        self.window = quarn.terminal()
        self._folder = f"/proc/{quarn.process.pid}/"
        self.threads_at_rest = self.threads()

    def threads(self):
        return len(os.listdir(self._folder + "task"))

    def is_busy(self):
        """A transaction has a thread of its own."""
        return self.threads() > self.threads_at_rest

    def descriptors(self):
        return len(os.listdir(self._folder + "fd"))

    def memory(self):
        with open(self._folder + "statm", encoding="ascii") as file:
            return int(file.read().split()[1]) * PAGE_KIB

    def idle_ms(self, enough=None):
        """The processor time per second while nobody does anything: the least of three measurements, or of more until
        it is enough. A busy computer adds to it."""
        self.quarn.activate(self.window)
        least = float("inf")
        for attempt in range(MEASUREMENTS):
            before, began = self._used_ms(), time.monotonic()
            time.sleep(IDLE_S)
            least = min(least, (self._used_ms() - before) / (time.monotonic() - began))
            if (least <= NOISE * enough) if enough is not None else attempt == 2:
                return least
        raise Failed(f"it uses {least:.1f} ms of processor time a second, and before it was {enough:.1f}")

    def _used_ms(self):
        """Of all threads, those that have ended included: the process's own clock of processor time."""
        return time.clock_gettime((~self.quarn.process.pid << 3) | PROCESS_CPU_CLOCK) * 1000


# --- What it does when the cable is pulled ----------------------------------------------------------------


def is_idle(_):
    return None


def waits(session):
    session.quarn.enter(session.window, "mute")
    until(lambda: session.line.far.received().endswith(b"mute\r"), "the command")


def receives(session):
    session.quarn.enter(session.window, "much")
    until(lambda: session.line.far.sent() > 100, "the beginning of the answer")


def writes(session):
    session.line.far.hold(True)
    fill(session.line.node)
    session.quarn.enter(session.window, "id")
    until(session.is_busy, "the command that does not go out")


def dialog(letter, title):
    def opens(session):
        session.quarn.choose_from_port_menu(letter)
        session.quarn.wait_for(title)
        return title

    return opens


number = dialog("n", "^Quarn - COM Port Number")
port_list = dialog("l", "^Quarn - Detailed COM Port List")
settings = dialog("s", "^Quarn - COM Port Settings")

STATES = {ftdi: (port_list, receives, waits, number, settings, is_idle),
          acm: (writes, settings, receives, number, waits, port_list, is_idle)}
BUSY = (waits, receives, writes)
MEASURED = is_idle if options["long"] else port_list


# The list is told to have changed, twice; the error; the offer to return, and that it was done.
PASSING, OTHERS = "Quarn : Infomation", ("Quarn : Confirmation", "Quarn : Error", "Quarn : Information")
BOXES = (PASSING, PASSING, *OTHERS)


def cycle(session, cable, state, appeared):
    """The cable is pulled in this state, and plugged in again."""
    quarn, far = session.quarn, session.line.far
    far.answer(RULES)
    title = state(session)
    appeared.take()
    equal("whether it is busy", session.is_busy(), state in BUSY)
    measured = state is MEASURED
    before = session.idle_ms() if measured else 0
    cable.pull()
    quarn.answer(ERROR, "Return")
    quarn.wait_for(rf"^Quarn   \({session.port}-NC\)")
    if measured:
        note(f"{before:.1f} ms of processor time a second before the pull, {session.idle_ms(before):.1f} after it")
    far.answer(RULES)
    cable.plug()
    quarn.wait_for(QUESTION)
    drain(session.line)
    far.answer(RULES)
    quarn.answer(QUESTION, "Return")
    quarn.answer(INFORMATION, "Return")
    quarn.wait_for(rf"^Quarn   \({session.port}\)")
    if title:
        quarn.answer(title, "Escape")
    quarn.command(session.window, "id", b"it")
    equal("what the instrument got", far.received(), b"id\r")
    boxes = appeared.take()
    # One that has just come, or is about to go, has no title.
    few = not Counter(title for title in boxes if title) - Counter(BOXES)
    check(len(boxes) == len(BOXES) and few, f"the boxes that appeared: {boxes}")
    equal("what the other adapter got", outside.received(line="second"), "")
    until(lambda: session.threads() == session.threads_at_rest, "the end of its threads")


def cycles(cable, count):
    @test(f"window: pulled and plugged in again {count} times: {cable.line.kind}")
    def run():
        adapters = Adapters()
        adapters.plug("second", "QA0002", 2)
        outside.answer(line="second", rules='* -> line "second"')
        used, states = cable(), STATES[cable.line]
        account = Account()
        port = port_of(account, os.path.realpath(used.line.node))
        account.settings(COM_PORT=port, COM_BPS="4800", PORT_SPEED="LOW", R_TIMEOUT="OFF", AUTO_CLR="ON")
        try:
            with Appearances() as appeared, Quarn(account) as quarn:
                session = Session(quarn, used.line, port)
                figures = [(session.descriptors(), session.memory())]
                for each in range(count):
                    cycle(session, used, states[each % len(states)], appeared)
                    figures.append((session.descriptors(), session.memory()))
                quarn.end()
        finally:
            # For the tests that follow a failure.
            used.plug()
            adapters.unplug("second")
        descriptors, memory = figures[0]
        last_descriptors, last_memory = figures[-1]
        most = MOST_AT_FIRST_KIB
        if count > len(states):
            memory = figures[len(states)][1]
            most = MOST_GROWTH_KIB
        note(f"{descriptors} descriptors, then {last_descriptors}; {memory} KiB, then {last_memory} KiB")
        equal("descriptors", last_descriptors, descriptors)
        check(last_memory - memory <= most, f"memory has grown by {last_memory - memory} KiB")

    return run


cycles(FtdiCable, 50 if options["long"] else 3)
cycles(AcmCable, 50 if options["long"] else 1)
