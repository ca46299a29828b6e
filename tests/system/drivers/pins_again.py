"""A COM number stays with its adapter when the machine is started again, and the adapters are in other sockets."""

from adapters import Adapters, give_names, name_behind, of_last_run, only_first_left
from bench import equal, test


@test("an adapter keeps its number when the machine is started again")
def one_adapter_again():
    give_names()
    adapters = Adapters()
    adapters.plug("second", "QA0002", 2)
    account, (port, other) = of_last_run("one")
    equal("who answers", (name_behind(account, port), name_behind(account, other)), ("first", "second"))
    only_first_left(adapters)


def twins_again(first, second):
    give_names()
    adapters = Adapters()
    adapters.unplug("first")
    account, ports = of_last_run("twins " + first)
    # Not in the order in which they were plugged in at first.
    adapters.plug(second, "TWIN", 2)
    adapters.plug(first, "TWIN", 1)
    equal("who answers", [name_behind(account, port) for port in ports], [first, second])
    only_first_left(adapters)


@test("two adapters with one serial number keep theirs when the machine is started again, one way round")
def twins_again_one_way():
    twins_again("first", "second")


@test("two adapters with one serial number keep theirs when the machine is started again, the other way round")
def twins_again_the_other_way():
    twins_again("second", "first")
