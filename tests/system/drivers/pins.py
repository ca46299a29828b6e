"""A COM number stays with its adapter, whatever is pulled and plugged."""

import contextlib
import glob
import os
import signal
import subprocess

from adapters import DISK, Adapters, for_next_run, give_names, name_behind, only_first_left, port_of
from bench import Account, SandboxAccount, acm, check, equal, gadget, plug, read, settle, test, until


def one_adapter(account):
    """Returns its number, and that of the second."""
    give_names()
    adapters = Adapters()
    port = port_of(account, adapters.node("first"))
    target = os.readlink(os.path.join(account.ports, port))
    check(target.startswith("/dev/serial/by-id/"), f"{port} is {target}")
    equal("who answers", name_behind(account, port), "first")
    for socket in (1, 2):
        adapters.unplug("first")
        equal("who answers when it is pulled", name_behind(account, port), None)
        adapters.plug("first", "QA0001", socket)
        equal(f"who answers in socket {socket}", name_behind(account, port), "first")
    # Another adapter is another port.
    adapters.unplug("first")
    adapters.plug("second", "QA0002", 1)
    equal("who answers when another is plugged in", name_behind(account, port), None)
    other = port_of(account, adapters.node("second"))
    equal("who answers at the other number", name_behind(account, other), "second")
    adapters.plug("first", "QA0001", 2)
    equal("who answers at both", (name_behind(account, port), name_behind(account, other)), ("first", "second"))
    only_first_left(adapters)
    return port, other


@test("an adapter keeps its number: pulled, plugged in again, in another socket")
def one_outside():
    account = Account(DISK)
    for_next_run("one", account, one_adapter(account))


@test("an adapter keeps its number in a sandbox: pulled, plugged in again, in another socket")
def one_in_sandbox():
    one_adapter(SandboxAccount())


def twins(first, second, account):
    """Two adapters of one serial number; `first` is plugged in first. Returns their numbers."""
    give_names()
    adapters = Adapters()
    adapters.unplug("first")
    sockets = {first: 1, second: 2}
    adapters.plug(first, "TWIN", sockets[first])
    ports = {first: port_of(account, adapters.node(first))}
    adapters.plug(second, "TWIN", sockets[second])
    ports[second] = port_of(account, adapters.node(second))

    def answers():
        return tuple(name_behind(account, ports[name]) for name in (first, second))

    equal("who answers", answers(), (first, second))
    for order in ((first, second), (second, first)):
        for name in order:
            adapters.unplug(name)
        for name in order:
            adapters.plug(name, "TWIN", sockets[name])
            alone = tuple(each if each in adapters.sockets else None for each in (first, second))
            wrong = [got for got, wanted in zip(answers(), alone) if got not in (wanted, None)]
            equal(f"wrong adapters when {name} is plugged in", wrong, [])
        equal("who answers when both are back", answers(), (first, second))
    for name in (first, second):
        adapters.unplug(name)
    adapters.plug(first, "TWIN", sockets[second])
    adapters.plug(second, "TWIN", sockets[first])
    # Nothing else tells them apart.
    equal("who answers when each is in the other's socket", answers(), (second, first))
    for name in (first, second):
        adapters.unplug(name)
    for name in (first, second):
        adapters.plug(name, "TWIN", sockets[name])
    equal("who answers when both are where they were", answers(), (first, second))
    only_first_left(adapters)
    return ports[first], ports[second]


def twins_outside(first, second):
    account = Account(DISK)
    for_next_run("twins " + first, account, twins(first, second, account))


@test("two adapters with one serial number keep theirs, one way round")
def twins_one_way():
    twins_outside("first", "second")


@test("two adapters with one serial number keep theirs, the other way round")
def twins_the_other_way():
    twins_outside("second", "first")


@test("two adapters with one serial number keep theirs in a sandbox")
def twins_in_sandbox():
    twins("first", "second", SandboxAccount())


def connected_ms(node):
    """How long the adapter has been plugged in."""
    device = "/sys/class/tty/" + os.path.basename(node)
    # The driver has the port a little earlier than the system.
    until(lambda: os.path.exists(device), device)
    place = os.path.realpath(device)
    while not os.path.exists(place + "/idVendor"):
        check(place != "/", f"{device} is not on a bus")
        place = os.path.dirname(place)
    return int(read(place + "/power/connected_duration"))


@contextlib.contextmanager
def udev_halted():
    daemons = subprocess.run(["pidof", "systemd-udevd"], check=True, capture_output=True).stdout.split()
    for pid in daemons:
        os.kill(int(pid), signal.SIGSTOP)
    try:
        yield
    finally:
        for pid in daemons:
            os.kill(int(pid), signal.SIGCONT)


@test("in a sandbox an adapter gets a number also if its names never come")
def without_names():
    give_names()
    adapters = Adapters()
    account = SandboxAccount()
    adapters.unplug("first")
    with udev_halted():
        plug("first", "QA0001", 1)
        adapters.sockets["first"] = 1
        node = until(lambda: adapters.node("first"), "the adapter")
        check(connected_ms(node) > 0, "the system does not say since when the adapter has been plugged in")
        until(lambda: node.encode() in account.run("quarn-send", "--list")[1], f"{node} in the list")
        equal("the targets", [os.readlink(each) for each in glob.glob(account.ports + "/COM*")
                              if os.path.realpath(each) == node], [node])
    settle()
    only_first_left(adapters)


@test("a number stays with a cdc_acm device that is pulled and plugged in again")
def acm_device():
    acm.far.answer('"id" -> line "acm"')
    account = Account()
    port = port_of(account, os.path.realpath(acm.node))
    equal("the device of the number", os.readlink(os.path.join(account.ports, port)), acm.node)
    for _ in range(2):
        equal("who answers", name_behind(account, port), "acm")
        gadget.unplug()
        until(lambda: not os.path.exists(acm.node), f"the end of {acm.node}")
        settle()
        equal("who answers when it is pulled", name_behind(account, port), None)
        gadget.plug()
        until(lambda: os.path.exists(acm.node), acm.node)
        settle()
    equal("who answers", name_behind(account, port), "acm")
    equal("the numbers", port_of(account, os.path.realpath(acm.node)), port)
