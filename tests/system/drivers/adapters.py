"""The two adapters, what they are called, and what the machine keeps for its second run."""

import os
import subprocess

from bench import Account, check, equal, options, outside, plug, settle, until

DISK = "/mnt/quarn-drivers"


def keep_disk():
    """A folder that outlives the machine: made in its first run."""
    subprocess.run(["modprobe", "-a", "virtio_blk", "ext4"], check=True)
    until(lambda: os.path.exists("/dev/vda"), "the disk")
    if options["boot"] == 1:
        subprocess.run(["mkfs.ext4", "-q", "/dev/vda"], check=True)
    os.makedirs(DISK, exist_ok=True)
    subprocess.run(["mount", "/dev/vda", DISK], check=True)


def node_of(socket):
    """The node of the adapter in this socket of the bus, or nothing."""
    for name in os.listdir("/sys/bus/usb-serial/devices"):
        path = os.path.realpath("/sys/bus/usb-serial/devices/" + name)
        if f"/usb1/1-{socket}/" in path or f"/usb2/2-{socket}/" in path:
            return "/dev/" + name
    return None


class Adapters:
    """The two adapters, and in which socket each is."""

    def __init__(self):
        # The machine starts with it.
        self.sockets = {"first": 1}

    def plug(self, name, serial, socket):
        plug(name, serial, socket)
        self.sockets[name] = socket
        until(lambda: self.node(name), f"the adapter in socket {socket}")
        settle()

    def node(self, name):
        return node_of(self.sockets[name])

    def unplug(self, name):
        node = self.node(name)
        outside.unplug(line=name)
        del self.sockets[name]
        until(lambda: not os.path.exists(node), f"the end of {node}")
        settle()


def port_of(account, node):
    """The number that the device has got, when the ports are listed."""
    account.settings()
    account.run("quarn-send", "--port", "COM99", "--", "id")
    found = [name for name in os.listdir(account.ports)
             if name.startswith("COM") and os.path.realpath(os.path.join(account.ports, name)) == node]
    equal(f"how many numbers {node} has", len(found), 1)
    return found[0]


def name_behind(account, port):
    """Which instrument answers at this number; nothing if it is not present."""
    status, output, errors = account.run("quarn-send", "--raw", "--port", port, "--", "id")
    if status == 5:
        check("is not present" in errors, errors)
        return None
    equal(f"status ({errors})", status, 0)
    return output.removesuffix(b"\r").decode()


def give_names():
    outside.answer(line="first", rules='"id" -> line "first"')
    outside.answer(line="second", rules='"id" -> line "second"')


def only_first_left(adapters):
    """As the other tests find it."""
    for name in list(adapters.sockets):
        adapters.unplug(name)
    adapters.plug("first", "QA0001", 1)


def for_next_run(name, account, ports):
    with open(os.path.join(DISK, name), "w", encoding="utf-8") as file:
        file.write("\n".join([account.folder, *ports]))


def is_for_next_run():
    return os.path.exists(os.path.join(DISK, "one")) or os.path.exists(os.path.join(DISK, "twins first"))


def of_last_run(name):
    with open(os.path.join(DISK, name), encoding="utf-8") as file:
        folder, *ports = file.read().split("\n")
    return Account.found(folder), ports
