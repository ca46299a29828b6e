"""The far end of a line: the simulated instrument, and what the line between does to the bytes."""

import fcntl
import os
import selectors
import signal
import struct
import subprocess
import termios
import threading
import time
import tty


class FarEnd:
    """A simulated instrument that answers on a descriptor: a socket of the machine, or the other side of a gadget.

    `open_line` returns a descriptor, and is called again after a hang-up.
    """

    def __init__(self, program, folder, name, open_line):
        self._program = program
        self._base = os.path.join(folder, name)
        self._open_line = open_line
        self._lock = threading.Lock()
        self._received = bytearray()
        self._pending = b""
        self._beginning_of_end = b""
        self._sent = 0
        self._unasked = b""
        self._held = False
        self._is_open = False
        self._line = None
        self._batch = 0.0
        self._most = 65536
        self._instrument = None
        self._near = None
        self._running = True
        self._wake, self._waker = os.pipe()
        self._thread = threading.Thread(target=self._serve, name=name, daemon=True)
        self.answer('* -> line "OK"')
        self._thread.start()

    def answer(self, rules, ending=b""):
        """Begins anew with an instrument that has these rules.

        Where commands end with two bytes, it gets both at once: for the instrument the first alone is an end too, and
        between two bytes a line may take its time.
        """
        with open(self._base + ".rules", "w", encoding="ascii") as file:
            file.write(rules + "\n")
        instrument = subprocess.Popen([self._program, "--rules", self._base + ".rules"], stdout=subprocess.PIPE)
        node = instrument.stdout.readline().decode().strip()
        if not node:
            raise RuntimeError("the simulated instrument did not start")
        near = os.open(node, os.O_RDWR | os.O_NOCTTY | os.O_NONBLOCK)
        tty.setraw(near)
        with self._lock:
            self._end_instrument()
            self._instrument, self._near = instrument, near
            self._received.clear()
            self._pending = b""
            self._beginning_of_end = ending[:-1]
            self._sent = 0
        os.write(self._waker, b"x")

    def received(self):
        """Every byte that has come from the line since the rules were set."""
        with self._lock:
            return bytes(self._received)

    def sent(self):
        """How many bytes have gone to the line since the rules were set."""
        return self._sent

    def say(self, text):
        """Sends this without having been asked."""
        with self._lock:
            self._unasked += text.encode()
        os.write(self._waker, b"x")

    def on_its_way(self):
        """Whether something of it, or of an answer, has not got to the other side of the line yet."""
        with self._lock:
            if self._unasked or self._line is None:
                return bool(self._unasked)
            return struct.unpack("i", fcntl.ioctl(self._line, termios.TIOCOUTQ, bytes(4)))[0] > 0

    def hold(self, held):
        """While held, nobody has the line open at this end, so that nothing is taken from it."""
        self._held = held
        os.write(self._waker, b"x")
        while held and self._is_open:
            time.sleep(0.01)

    def batch(self, milliseconds, most):
        """Answers come at whole multiples of this time, with so many bytes at most; 0 ms: as soon as they can."""
        self._batch, self._most = milliseconds / 1000, most

    def close(self):
        self._running = False
        os.write(self._waker, b"x")
        self._thread.join()
        self._end_instrument()

    def _end_instrument(self):
        if self._instrument is None:
            return
        os.close(self._near)
        self._instrument.send_signal(signal.SIGTERM)
        self._instrument.wait()
        self._instrument.stdout.close()
        self._instrument = self._near = None

    def _serve(self):
        while self._running:
            if self._line is not None and self._held:
                self._leave()
            self._is_open = self._line is not None
            if self._line is None and self._held:
                time.sleep(0.02)
                continue
            if self._line is None:
                try:
                    self._line = self._open_line()
                except OSError:
                    time.sleep(0.05)
                    continue
            try:
                self._relay_once(self._line)
            except OSError:
                self._leave()
        self._leave()

    def _leave(self):
        with self._lock:
            if self._line is not None:
                os.close(self._line)
            self._line = None

    def _relay_once(self, line):
        with selectors.DefaultSelector() as selector:
            with self._lock:
                near = self._near
                selector.register(self._wake, selectors.EVENT_READ)
                selector.register(near, selectors.EVENT_READ)
                selector.register(line, selectors.EVENT_READ)
            ready = [key.fd for key, _ in selector.select()]
        if self._wake in ready:
            os.read(self._wake, 4096)
            with self._lock:
                _write_all(line, self._unasked, lambda: self._running)
                self._unasked = b""
            return
        if line in ready:
            data = os.read(line, 65536)
            if not data:
                raise OSError("the line has hung up")
            with self._lock:
                self._received += data
                self._pending += data
                if not (self._beginning_of_end and self._pending.endswith(self._beginning_of_end)):
                    _write_all(self._near, self._pending, lambda: True)
                    self._pending = b""
        if near in ready:
            self._give_answer(line, near)

    def _give_answer(self, line, near):
        if self._batch:
            # Not before the next moment at which such an adapter delivers.
            time.sleep(self._batch - time.monotonic() % self._batch)
        with self._lock:
            if near != self._near:
                return
            try:
                data = os.read(near, self._most)
            except BlockingIOError:
                return
            instrument = self._instrument
        # An answer of an earlier instrument is of no use to anybody.
        _write_all(line, data, lambda: self._running and self._instrument is instrument)
        self._sent += len(data)


def _write_all(descriptor, data, still):
    while data and still():
        try:
            data = data[os.write(descriptor, data):]
        except BlockingIOError:
            time.sleep(0.001)
