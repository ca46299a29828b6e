"""What other users of serial lines test of theirs (docs/reliability.md has the list), on each driver."""

import os
import re
import subprocess
import tempfile

from bench import AS_USER, HOME, LIMIT_S, LINES, PROGRAMS, USER, Background, check, each_line, equal, note, options

# Opened and closed a thousand times.
LONG = "*.AThousandOpenings*"
LIMIT_OF_ALL_S = 10 * LIMIT_S
NOTHING = "* -> silence"


class Requests(Background):
    """Serves the instrument of a line to the test program, by the files that quarn-line-server describes. Use it in a
    `with`."""

    def __init__(self, line):
        super().__init__()
        self._far = line.far
        self._folder = tempfile.mkdtemp(prefix="requests-", dir=HOME)
        os.chown(self._folder, USER, USER)
        self._answer = 0
        self._is_served = False
        self.environment = {"QUARN_LINES": self._folder, "QUARN_LINE_NODE": line.node}

    def _path(self, kind):
        return os.path.join(self._folder, "port-com3." + kind)

    def _write(self, kind, content):
        with open(self._path("new"), "wb") as file:
            file.write(content)
        os.rename(self._path("new"), self._path(kind))

    def _step(self):
        is_wanted = os.path.exists(self._path("rules"))
        if is_wanted and not self._is_served:
            self._begin()
        elif not is_wanted and self._is_served:
            self._end()
        elif is_wanted:
            self._write("received", self._far.received())
            self._write("answers", b"%d" % (self._far.sent() // self._answer if self._answer else 0))

    def _begin(self):
        with open(self._path("rules"), encoding="utf-8") as file:
            rules = file.read()
        self._far.answer(rules or NOTHING)
        plain = re.search(r'-> "([^"\\]*)"$', rules)
        self._answer = len(plain[1]) if plain else 0
        self._is_served = True
        self._write("ready", b"")

    def _end(self):
        self._is_served = False
        for kind in ("received", "answers", "ready"):
            if os.path.exists(self._path(kind)):
                os.remove(self._path(kind))


@each_line("the cases of others", LINES)
def cases(line):
    chosen = "*" if options["long"] else f"-{LONG}"
    with Requests(line) as requests:
        ended = subprocess.run([os.path.join(PROGRAMS, "quarn-driver-cases"), f"--gtest_filter={chosen}"],
                               env={**line.account.environment, **requests.environment}, stdin=subprocess.DEVNULL,
                               stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=LIMIT_OF_ALL_S, check=False,
                               **AS_USER)
    text = ended.stdout.decode(errors="replace")
    check(ended.returncode == 0, f"status {ended.returncode}: {text[-2000:]}")
    passed = re.search(r"\[  PASSED  \] (\d+) test", text)
    equal("how many passed", int(passed[1]) if passed else 0, 8 if options["long"] else 7)
    note(f"{passed[1]} passed")
