"""The first command in the Terminal Screen, a reset and the end, and what becomes of DTR and RTS meanwhile."""

from bench import FRAMES, LINES, check, each_line, equal
from first_command import rules
from modem_lines import BOTH, NEITHER, Watched
from window import INFORMATION, Quarn

DELIMITERS = dict(zip((line.kind for line in LINES), ("CR", "CRLF", "STX_ETX")))


@each_line("window: first command, DTR and RTS during a reset", LINES)
def session(line):
    delimiter = DELIMITERS[line.kind]
    before, after = FRAMES[delimiter]
    line.far.answer(rules())
    line.settings(DELIMITER=delimiter, AUTO_CLR="ON")
    with Watched(line) as lines, Quarn(line.account) as quarn:
        window = quarn.terminal()
        lines.becomes("connected", BOTH)
        lines.forget()
        quarn.command(window, "id")
        equal(f"what the instrument got with {delimiter}", line.far.received(), before + b"id" + after)
        equal(f"log with {delimiter}", quarn.log(window), b"[id]\rSIM-1\r")
        equal("told during the command", [each for each in lines.look() if each == NEITHER], [])
        lines.forget()
        quarn.choose_from_port_menu("r")
        quarn.wait_for(INFORMATION)
        lines.becomes("after the reset", BOTH)
        check(NEITHER in lines.seen, f"they were not lowered: {lines.seen}")
        quarn.answer(INFORMATION, "Return")
        quarn.end()
        lines.becomes("after the end", NEITHER)
