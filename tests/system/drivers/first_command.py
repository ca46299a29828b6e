"""The first command after open, every byte, every delimiter, answers at every limit."""

import termios

from bench import FRAMES, LINES, acm, check, each_line, equal, options, until
from line_state import State

# An answer that begins with zero counts as empty.
ALL = bytes(range(1, 256)) + b"\0"
# Those that end a command for the simulated instrument, and zero, which no argument can have.
CONTROLS = b"\x02\x03\n\r"
ORDINARY = bytes(byte for byte in ALL if byte and byte not in CONTROLS)
LIMITS = {"1K": 1024, "2K": 2048, "6K": 6144}

# How much a line keeps while nobody has it open: a chip whose buffer is off, an adapter, and a device made of software.
KEPT = {"16550A": 1, "ftdi_sio": 300, "cdc_acm": 4000}
TRIES = 20 if options["long"] else 6

# A silence that the instrument itself does not make by being delayed: 270 ms.
PATIENT = {"COM_BPS": "4800", "PORT_SPEED": "LOW"}


def quoted(data):
    return '"' + "".join(f"\\x{byte:02x}" for byte in data) + '"'


def rules():
    lines = ['"id" -> line "SIM-1"', f'"all" -> {quoted(ALL)}']
    for most in LIMITS.values():
        lines += [f'"n{count}" -> "x" * {count}' for count in (most, most + 1, most + 2)]
    return "\n".join(lines + ["* -> echo"])


@each_line("first command, quarn-send", LINES)
def first_command(line):
    for delimiter, (before, after) in FRAMES.items():
        line.far.answer(rules(), after)
        # Bytes that do not end the command at this delimiter.
        others = bytes(byte for byte in CONTROLS if byte not in after + before and byte not in b"\x02\x03")
        status, output, errors = line.send("id", b"b" + others + b"b", DELIMITER=delimiter)
        check(status in (0, 2), f"{delimiter}: status {status}, {errors}")
        check(output.startswith(b"[id]\nSIM-1\n"), f"{delimiter}: {output!r}")
        wanted = before + b"id" + after + before + b"b" + others + b"b" + after
        until(lambda: len(line.far.received()) >= len(wanted), f"the commands with {delimiter}")
        equal(f"what the instrument got with {delimiter}", line.far.received(), wanted)


@each_line("all byte values, quarn-send", LINES)
def all_bytes(line):
    for delimiter, (before, after) in FRAMES.items():
        line.far.answer(rules(), after)
        sent = before + ORDINARY + after
        status, output, errors = line.send(ORDINARY, "all", raw=True, DELIMITER=delimiter, **PATIENT)
        equal(f"status with {delimiter} ({errors})", status, 0)
        equal(f"echo and answer with {delimiter}", output, sent + ALL)
        equal(f"what the instrument got with {delimiter}", line.far.received(), sent + before + b"all" + after)


@each_line("answers at the limits, quarn-send", LINES)
def limits(line):
    line.far.answer(rules())
    for buffer, most in LIMITS.items():
        # One byte above the limit still counts as whole.
        status, output, errors = line.send(f"n{most}", f"n{most + 1}", raw=True, COM_BUF=buffer, **PATIENT)
        equal(f"status of {buffer} ({errors})", status, 0)
        equal(f"answers of {most} bytes and one more", output, b"x" * (2 * most + 1))
        status, output, errors = line.send(f"n{most + 2}", raw=True, COM_BUF=buffer, **PATIENT)
        equal(f"an answer of {most + 2} bytes ({errors})", (status, output), (3, b"x" * most))


@each_line("what came before the open is in no answer", LINES)
def before_the_open(line):
    line.far.answer('"id" -> line "SIM-1"')
    line.settings(COM_BPS="19200")
    original = State.of(line.node)
    check(original.local & termios.ECHO, "the line does not echo")
    if line is acm:
        # This driver reads before the open is done, and the system sends that back to the instrument.
        original.with_(9600, local=original.local & ~(termios.ECHO | termios.ECHONL)).set(line.node)
    try:
        for attempt in range(TRIES):
            line.far.say(("old" * KEPT[line.kind])[:KEPT[line.kind]])
            # Then it is at this side of the line, but not yet with the driver.
            until(lambda: not line.far.on_its_way(), "the bytes from before the open")
            status, output, errors = line.account.run("quarn-send", "--raw", "--", "id")
            equal(f"status and answer {attempt} ({errors})", (status, output), (0, b"SIM-1\r"))
        equal("what the instrument got", line.far.received(), b"id\r" * TRIES)
    finally:
        original.set(line.node)
