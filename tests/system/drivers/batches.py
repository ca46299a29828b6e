"""Answers from an adapter that delivers every 16 ms: cut where the line was silent for longer than the rule says."""

import re

from bench import check, equal, ftdi, note, test, until
from modem_lines import BusWatch

BATCH_MS = 16
# About what comes in that time at 115200 bits per second.
BATCH_BYTES = 180
ANSWER_BYTES = 900
ANSWERS = 8
MOST_ANSWERS = 30
LOW_MS = 18


class Arrivals(BusWatch):
    """When data came from the adapter, as the kernel's own monitor of the bus shows it."""

    def gaps(self):
        """Milliseconds without data, in the order of the gaps, since the last call."""
        # The first two bytes of each packet are the adapter's state.
        times = [int(time) for time, size in
                 re.findall(rf" (\d+) C Bi:{self._address}:\d+ 0 (\d+)", self.text()) if int(size) > 2]
        return [(after - before) / 1000 for before, after in zip(times, times[1:])]


def ask(speed):
    """One answer: how many bytes of it Quarn took, and the gaps in it."""
    ftdi.far.answer(f'* -> "x" * {ANSWER_BYTES}')
    monitor = Arrivals(ftdi.node)
    try:
        status, output, errors = ftdi.send("much", raw=True, COM_BPS="115200", PORT_SPEED=speed)
        equal(f"status ({errors})", status, 0)
        check(output == b"x" * len(output), f"{output!r:.100}")
        until(lambda: ftdi.far.sent() == ANSWER_BYTES, "the rest of the answer")
        return len(output), monitor.gaps()
    finally:
        monitor.close()


def text(answers):
    return "; ".join(f"{taken} bytes, gaps to {max(gaps, default=0):.0f} ms" for taken, gaps in answers)


def measure(speed, enough):
    """Answers until they are enough, but not too many."""
    ftdi.far.batch(BATCH_MS, BATCH_BYTES)
    answers = []
    try:
        while not enough(answers) and len(answers) < MOST_ANSWERS:
            answers.append(ask(speed))
    finally:
        ftdi.far.batch(0, 65536)
    note(text(answers))
    check(enough(answers), "the batches came too late to tell")
    return answers


@test("batches of 16 ms at 115200: HIGH cuts the answers")
def high_cuts():
    answers = measure("HIGH", lambda them: len(them) == ANSWERS)
    cut = [taken for taken, _ in answers if taken < ANSWER_BYTES]
    check(2 * len(cut) > ANSWERS, f"only {len(cut)} of {ANSWERS} are cut")
    for taken in cut:
        equal("bytes behind the last whole batch", taken % BATCH_BYTES, 0)


def in_time(answers):
    """A busy computer can be late with a batch; then the line was silent for too long."""
    return [(taken, gaps) for taken, gaps in answers if max(gaps, default=0) < LOW_MS]


@test("batches of 16 ms at 115200: LOW cuts no answer")
def low_cuts_none():
    for taken, gaps in in_time(measure("LOW", lambda them: len(in_time(them)) == ANSWERS // 2)):
        equal(f"bytes of an answer with gaps {gaps}", taken, ANSWER_BYTES)
