"""A port with nothing behind it, such as this computer's end of a cable to another computer."""

import errno
import fcntl
import os
import socket
import struct
import subprocess
import tty

from adapters import port_of
from bench import Account, Background, acm, check, equal, gadget, note, settle, test, until

# The sockets of Bluetooth's serial ports: their family, their protocol, and what makes and removes a port.
AF_BLUETOOTH, BTPROTO_RFCOMM = 31, 3
RFCOMMCREATEDEV, RFCOMMRELEASEDEV = 0x400452C8, 0x400452C9
# What the system says where there is no Bluetooth.
REFUSED = errno.EHOSTUNREACH
# Number, flags, this computer, the other side, channel.
RFCOMM_DEV_REQ = struct.Struct("hxxI6s6sBxxx")


class Answering(Background):
    """Answers each line with OK at the other end. Use it in a `with`."""

    def __init__(self, node):
        super().__init__()
        self._line = os.open(node, os.O_RDWR | os.O_NOCTTY | os.O_NONBLOCK)
        tty.setraw(self._line)
        self.received = b""

    def _step(self):
        try:
            data = os.read(self._line, 4096)
        except BlockingIOError:
            return
        self.received += data
        os.write(self._line, b"OK\r" * data.count(b"\r"))

    def _close(self):
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


class BluetoothPort:
    """A port whose other side is not there. Use it in a `with`."""

    node = "/dev/rfcomm0"
    _request = RFCOMM_DEV_REQ.pack(0, 0, bytes(6), bytes(range(1, 7)), 1)

    def __enter__(self):
        subprocess.run(["modprobe", "rfcomm"], check=True)
        self._socket = socket.socket(AF_BLUETOOTH, socket.SOCK_RAW, BTPROTO_RFCOMM)
        fcntl.ioctl(self._socket, RFCOMMCREATEDEV, self._request)
        until(lambda: os.path.exists(self.node), self.node)
        settle()
        return self

    def __exit__(self, *problem):
        fcntl.ioctl(self._socket, RFCOMMRELEASEDEV, self._request)
        self._socket.close()
        until(lambda: not os.path.exists(self.node), f"the end of {self.node}")


@test("a Bluetooth port gets a number, and the reason why it cannot be opened is told")
def bluetooth():
    account = Account()
    with BluetoothPort() as port:
        number = port_of(account, port.node)
        status, output, errors = account.run("quarn-send", "--list")
        equal(f"status of the list ({errors})", status, 0)
        check(port.node.encode() in output, f"it is not listed: {output}")
        status, _, errors = account.run("quarn-send", "--port", number, "--", "id")
        note(errors.strip())
        equal(f"status ({errors})", status, 5)
        check(f"{port.node}: {os.strerror(REFUSED)}" in errors, f"no reason: {errors}")
