"""Answers from an adapter that delivers every 16 ms: cut where the line was silent for longer than the rule says."""

import json
import re
import subprocess
import threading
import time

from bench import LIMIT_S, check, equal, ftdi, note, options, test, until
from modem_lines import BusWatch

BATCH_MS = 16
# About what comes in that time at 115200 bits per second.
BATCH_BYTES = 180
ANSWER_BYTES = 900
# How many cut answers are enough, and after how many answers it is given up.
ENOUGH, MOST_ANSWERS = 5, 40
# How many answers must have come in time, how many are asked for at once, and after how many it is given up.
IN_TIME, AT_ONCE, MOST_ASKED = (1000, 250, 4000) if options["long"] else (8, 8, 64)
# An answer, and what is left of it when it is cut, takes half of this.
EVERY_S = "0.2"
HIGH_MS, LOW_MS = 12, 18
# The record tells when the bus had the data. The driver, and the program that waits for it, are later by this at most;
# if not, because the computer is busy, the answer says nothing.
LATE_MS = 3
# What the bus carries at once, with two bytes of the adapter's state.
PACKET_BYTES = 64


class Arrivals(BusWatch):
    """When data came from the adapter, as the kernel's own monitor of the bus shows it. Use it in a `with`: it keeps
    only little until it is read."""

    def __enter__(self):
        self._parts = []
        self._ended = threading.Event()
        self._thread = threading.Thread(target=self._collect, daemon=True)
        self._thread.start()
        return self

    def _collect(self):
        while not self._ended.wait(0.005):
            self._parts.append(self.text())

    def __exit__(self, *problem):
        self._ended.set()
        self._thread.join()
        self.close()

    def answers(self):
        """For each command since the beginning: when data came, in milliseconds, and how many bytes."""
        pattern = rf" (\d+) (?:(S Bo):{self._address}:\d+ |C Bi:{self._address}:\d+ 0 (\d+))"
        lines = re.findall(pattern, "".join(self._parts))
        answers = []
        for time, sent, size in lines:
            data = int(size) - 2 * -(-int(size) // PACKET_BYTES) if size else 0
            if sent:
                answers.append([])
            elif data and answers:
                answers[-1].append((int(time) / 1000, data))
        return answers


def gaps_of(arrivals):
    """The silences in an answer: how many milliseconds, and after how many bytes."""
    gaps, before = [], 0
    for (last, size), (now, _) in zip(arrivals, arrivals[1:]):
        before += size
        gaps.append((now - last, before))
    return gaps


def longest(arrivals):
    return max((gap for gap, _ in gaps_of(arrivals)), default=0)


class Batches:
    """The adapter delivers so. Use it in a `with`."""

    def __enter__(self):
        ftdi.far.answer(f'* -> "x" * {ANSWER_BYTES}')
        ftdi.far.batch(BATCH_MS, BATCH_BYTES)

    def __exit__(self, *problem):
        ftdi.far.batch(0, 65536)


def ask(speed, count):
    """The answers to so many commands: how many bytes Quarn took of each, and what the bus carried."""
    ftdi.settings(COM_BPS="115200", PORT_SPEED=speed)
    before = ftdi.far.sent()
    with Arrivals(ftdi.node) as monitor:
        process = ftdi.account.start("quarn-send", "--json", "--every", EVERY_S, "--count", str(count), "--", "much")
        deadline = time.monotonic() + LIMIT_S + count
        while True:
            try:
                output, errors = process.communicate(timeout=20)
                break
            except subprocess.TimeoutExpired:
                # The outside is told that there is somebody.
                check(ftdi.far.sent() >= before and time.monotonic() < deadline, "quarn-send does not end")
        equal(f"status ({errors})", process.returncode, 0)
        # An answer that was cut goes on.
        until(lambda: ftdi.far.sent() == before + count * ANSWER_BYTES, "the rest of the answers")
        until(lambda: sum(size for each in monitor.answers() for _, size in each) >= ANSWER_BYTES, "the record")
        taken = [len(bytes.fromhex(json.loads(line)["bytes"])) for line in output.splitlines()]
        return list(zip(taken, monitor.answers(), strict=True))


def cut_by(taken, arrivals):
    """The silence that cut the answer there, and the longest before it; nothing if there was none at that place."""
    cut = next((gap for gap, before in gaps_of(arrivals) if before == taken), None)
    return cut, max((gap for gap, before in gaps_of(arrivals) if before < taken), default=0)


def text(taken, arrivals):
    silences = ", ".join(f"{gap:.1f} ms after {before}" for gap, before in gaps_of(arrivals))
    return f"{taken} bytes of silences {silences}"


@test("batches of 16 ms at 115200: HIGH cuts the answers")
def high_cuts():
    exact = late = 0
    with Batches():
        while exact < ENOUGH and exact + late < MOST_ANSWERS:
            (taken, arrivals), = ask("HIGH", 1)
            equal("the bytes in the record", sum(size for _, size in arrivals), ANSWER_BYTES)
            cut, before = cut_by(taken, arrivals)
            if taken < ANSWER_BYTES:
                check(cut is not None and cut > HIGH_MS - LATE_MS, text(taken, arrivals))
            if taken < ANSWER_BYTES and before <= HIGH_MS + LATE_MS:
                exact += 1
            else:
                late += 1
    note(f"{exact} cut at the first silence of more than {HIGH_MS} ms, {late} later")
    equal("answers that are cut there", exact, ENOUGH)


@test("batches of 16 ms at 115200: LOW cuts no answer")
def low_cuts_none():
    asked, in_time = 0, 0
    while in_time < IN_TIME and asked < MOST_ASKED:
        with Batches():
            answers = ask("LOW", AT_ONCE)
        asked += len(answers)
        for taken, arrivals in answers:
            # A busy computer can be late with a batch; then the line was silent for too long.
            if longest(arrivals) <= LOW_MS - 1 and sum(size for _, size in arrivals) == ANSWER_BYTES:
                in_time += 1
                check(taken == ANSWER_BYTES, text(taken, arrivals))
    note(f"{in_time} of {asked} were delivered in time, and all of these are whole")
    check(in_time >= IN_TIME, "the batches came too late to tell")
