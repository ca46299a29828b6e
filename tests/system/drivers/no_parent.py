"""A port with nothing behind it, such as this computer's end of a cable to another computer."""

import os
import threading
import tty

from bench import Account, acm, check, equal, gadget, test, until


class Answering:
    """Answers each line with OK at the other end. Use it in a `with`."""

    def __init__(self, node):
        self._line = os.open(node, os.O_RDWR | os.O_NOCTTY | os.O_NONBLOCK)
        tty.setraw(self._line)
        self.received = b""
        self._ended = threading.Event()
        self._thread = threading.Thread(target=self._serve, daemon=True)

    def _serve(self):
        while not self._ended.wait(0.02):
            try:
                data = os.read(self._line, 4096)
            except BlockingIOError:
                continue
            self.received += data
            os.write(self._line, b"OK\r" * data.count(b"\r"))

    def __enter__(self):
        self._thread.start()
        return self

    def __exit__(self, *problem):
        self._ended.set()
        self._thread.join()
        os.close(self._line)


@test("a port without a device behind it gets no number, and can be given one")
def without_parent():
    account = Account()
    check(not os.path.exists("/sys/class/tty/" + os.path.basename(gadget.near) + "/device"), "it has a parent")
    account.settings(COM_PORT="COM20", DELIMITER="CR")
    gadget.far.hold(True)
    try:
        status, _, errors = account.run("quarn-send", "--", "id")
        equal(f"status without a number ({errors})", status, 5)
        targets = {os.path.realpath(os.path.join(account.ports, name)) for name in os.listdir(account.ports)}
        check(os.path.realpath(acm.node) in targets, f"no adapter has a number: {targets}")
        check(gadget.near not in targets, f"{gadget.near} has a number")
        account.link("COM20", gadget.near)
        with Answering(acm.node) as other:
            status, output, errors = account.run("quarn-send", "--raw", "--", "id")
            equal(f"status and answer ({errors})", (status, output.strip()), (0, b"OK"))
            until(lambda: other.received, "the command")
            equal("what came over the cable", other.received, b"id\r")
    finally:
        gadget.far.hold(False)
