"""Commands in the Terminal Screen with every delimiter, answers at the limits, a reset and the end, and what becomes of
DTR and RTS meanwhile."""

import re

from bench import FRAMES, LINES, check, each_line, equal, options
from first_command import LIMITS, PATIENT, quoted, rules
from modem_lines import BOTH, NEITHER, Watched
from window import INFORMATION, Quarn

# Of a line in the log.
COLUMNS = 48
PRINTABLE = "".join(chr(code) for code in range(0x20, 0x7F))
DELIMITERS = dict(zip((line.kind for line in LINES), ("CR", "CRLF", "STX_ETX")))

# And those to which it is changed: all others, or on one line one.
MORE = {kind: [other for other in FRAMES if other != first] if options["long"] else ["LF"] if kind == "cdc_acm" else []
        for kind, first in DELIMITERS.items()}
SIZES = list(LIMITS) if options["long"] else []
# Zero would end the answer.
EVERY = bytes(range(1, 256))
CONTROL_NAMES = ("NULL SOH STX ETX EOT ENG ACK BEL BS HT LF VT FF CR SO SI "
                 "DLE DC1 DC2 DC3 DC4 NAK SYN ETB CAN EM SUB ESC FS GS RS US").split()


@each_line("window: first command, DTR and RTS during a reset", LINES)
def session(line):
    delimiter = DELIMITERS[line.kind]
    before, after = FRAMES[delimiter]
    line.far.answer(rules(), after)
    line.settings(DELIMITER=delimiter, AUTO_CLR="ON", **PATIENT)
    with Watched(line) as lines, Quarn(line.account) as quarn:
        window = quarn.terminal()
        lines.becomes("connected", BOTH)
        lines.forget()
        quarn.command(window, "id")
        equal(f"what the instrument got with {delimiter}", line.far.received(), before + b"id" + after)
        equal(f"log with {delimiter}", quarn.log(window), b"[id]\rSIM-1\r")
        equal("told during the command", [each for each in lines.look() if each == NEITHER], [])
        all_values(line, quarn, window, after)
        for delimiter in MORE[line.kind]:
            quarn.choose_format("DELIMITER", delimiter)
            all_printable(line, quarn, window, delimiter)
        for size in SIZES:
            quarn.choose_format("COM_BUF", size)
            answers_at(line, quarn, window, delimiter, LIMITS[size])
        lines.forget()
        quarn.choose_from_port_menu("r")
        quarn.wait_for(INFORMATION)
        lines.becomes("after the reset", BOTH)
        check(NEITHER in lines.seen, f"they were not lowered: {lines.seen}")
        quarn.answer(INFORMATION, "Return")
        line.far.answer(rules(), FRAMES[delimiter][1])
        lines.forget()
        quarn.press_set(lambda: NEITHER in lines.look() and lines.seen[-1] == BOTH)
        quarn.command(window, "id", b"SIM-1")
        quarn.end()
        lines.becomes("after the end", NEITHER)


def all_values(line, quarn, window, after):
    """An answer with every byte value, spelled out. Only the ends of lines are told apart by the delimiter."""
    wanted = "".join(spelled(byte) for byte in b"(" + EVERY + b")").replace("\r", "").encode()
    removed = {b"\r": (), b"\r\n": (b"<LF>",), b"\x03": (b"<STX>", b"<ETX>")}[after]
    for each in removed:
        wanted = wanted.replace(each, b"")
    line.far.answer(f'"every" -> {quoted(b"(" + EVERY + b")")}', after)
    quarn.command(window, "every")
    _, _, got = quarn.log(window).rpartition(b"[every]\r")
    equal("the answer with every byte value", got.replace(b"\r", b""), wanted)


def spelled(byte):
    if 0x20 <= byte < 0x7F or byte == 0x0D:
        return chr(byte)
    if byte < 0x20:
        return f"<{CONTROL_NAMES[byte]}>"
    return "<DEL>" if byte == 0x7F else f"<0x{byte:02x}>"


def all_printable(line, quarn, window, delimiter):
    """Each printable character is typed, and the instrument gets it."""
    before, after = FRAMES[delimiter]
    line.far.answer('* -> line "OK"', after)
    # A command may have as many characters.
    halves = PRINTABLE[:COLUMNS], PRINTABLE[COLUMNS:]
    for half in halves:
        quarn.command(window, half)
    equal(f"what the instrument got with {delimiter}", line.far.received(),
          b"".join(before + half.encode() + after for half in halves))
    wanted = "".join(f"[{half}]\rOK\r" for half in halves).encode()
    got = quarn.log(window)
    equal(f"the end of the log with {delimiter}", got[-len(wanted):], wanted)


def answers_at(line, quarn, window, delimiter, most):
    """One byte above the limit still counts as whole."""
    _, after = FRAMES[delimiter]
    line.far.answer(rules(), after)
    for count in (most, most + 1, most + 2):
        quarn.command(window, f"n{count}")
    log = quarn.log(window)
    parts = {name: text for name, text in re.findall(rb"\[(n\d+)\]\r([^\[]*)", log)}
    for count in (most, most + 1):
        answer = parts[b"n%d" % count]
        equal(f"the answer of {count} bytes", answer.replace(b"\r", b""), b"x" * count)
    # The last line is not shown, because it may be cut.
    told = b"Error: Receive Buffer Overflow > %d (MAX. %d)" % (most + 1, most)
    lines = [b"x" * COLUMNS] * ((most - 1) // COLUMNS) + [b"...", told]
    equal("the answer that is cut", parts[b"n%d" % (most + 2)], b"\r".join(lines) + b"\r\r")
