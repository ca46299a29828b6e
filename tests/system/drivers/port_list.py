"""The Detailed COM Port List with devices of several kinds, one of them not permitted, one in use. The guide's picture,
and with the other windows that for software centres."""

import base64
import os
import shutil
import subprocess

from adapters import Adapters, give_names, only_first_left
from bench import USER, Account, acm, check, equal, ftdi, outside, test, until, uart
from window import MAIN, Quarn, environment

TITLE = "^Quarn - Detailed COM Port List"
HOLDER_PID = 1234
SOURCES = os.path.join(os.path.dirname(__file__), "../../..")
PERSON = "/home/you"
INSTRUMENT = """
"id"    -> line "SIM-2 power supply, firmware 1.00"
"meas?" -> line "+5.0021E+00 V"
"curr?" -> line "+0.4987E+00 A"
"temp?" -> line "31.5 C"
"out 1" -> line "OK"
"list"  -> line "CH1  +5.0021 V" line "CH2  -0.0071 V"
*       -> line "OK"
"""
SESSION = ("id", "out 1", "list", "meas?", "curr?", "temp?", "meas?", "curr?", "temp?")
DISPLAY = """source scripts/lib/common.sh; PLACE=$1; source scripts/lib/display.sh
             display_width=1280; display_height=1024; """
TAKE = DISPLAY + 'xdotool mousemove 0 1023; picture "$1/picture.png" "${@:2}"'
ARRANGE = DISPLAY + 'xsetroot -solid "$DESKTOP_COLOUR"; arrange "${@:2}"'


def on_display(script, folder, windows):
    done = subprocess.run(["bash", "-c", script, "bash", folder, *map(str, windows)], cwd=SOURCES, env=environment(),
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
    equal(f"status of the display's script ({done.stdout})", done.returncode, 0)


def picture_of(quarn, folder, *windows):
    """The windows with their frames, once they are drawn; the last one is in front."""
    quarn.activate(windows[-1])
    last = b""

    def look():
        nonlocal last
        on_display(TAKE, folder, windows)
        with open(os.path.join(folder, "picture.png"), "rb") as file:
            before, last = last, file.read()
        # Of a window that is not drawn yet there is only the frame.
        return last == before and len(last) > 4000

    until(look, "a picture of the window", pause=0.3)
    return last


def keep(name, picture):
    outside.keep(name=name + ".png", data=base64.b64encode(picture).decode())


def person_with(account):
    """The person's own configuration file, in a home folder that this machine forgets."""
    folder = os.path.join(PERSON, "Instruments")
    os.makedirs(folder, exist_ok=True)
    file = shutil.copy(os.path.join(account.quarn, "Quarn.ini"), os.path.join(folder, "bench.qrn"))
    for each in (PERSON, folder, file):
        os.chown(each, USER, USER)
    return file


def start_holder(account):
    """A program that has the second adapter. The picture is the same each time if it gets this number."""
    with open("/proc/sys/kernel/ns_last_pid", "w", encoding="ascii") as file:
        file.write(str(HOLDER_PID - 1))
    return account.start("quarn-send", "--port", "COM4", "--listen")


def listed(account):
    status, output, errors = account.run("quarn-send", "--list")
    equal(f"status ({errors})", status, 0)
    return output.decode()


@test("the list of ports: a chip, adapters, one in use, one without permission")
def port_list():
    give_names()
    adapters = Adapters()
    adapters.plug("second", "QA0002", 2)
    before = os.stat("/dev/ttyS0")
    # As a login on the console leaves it.
    os.chown("/dev/ttyS0", 0, 5)
    os.chmod("/dev/ttyS0", 0o620)
    account = Account()
    for port, node in (("COM1", "/dev/ttyS0"), ("COM2", uart.node), ("COM4", adapters.node("second")),
                       ("COM5", acm.node), ("COM7", ftdi.node)):
        account.link(port, node)
    holder = start_holder(account)
    try:
        until(lambda: "quarn-send (PID" in listed(account), "the holder to have its port")
        check("no permission" in listed(account), listed(account))
        account.settings(COM_PORT="COM7")
        ftdi.far.answer(INSTRUMENT)
        with Quarn(account, person_with(account)) as quarn:
            terminal = quarn.terminal()
            for command in SESSION:
                quarn.command(terminal, command)
            quarn.choose_from_port_menu("l")
            ports = quarn.wait_for(TITLE)
            keep("detailed-com-port-list", picture_of(quarn, account.folder, ports))
            main = quarn.wait_for(MAIN)
            on_display(ARRANGE, account.folder, (terminal, main, ports))
            keep("software-centre-detailed-com-port-list", picture_of(quarn, account.folder, terminal, main, ports))
    finally:
        holder.kill()
        holder.communicate()
        os.chown("/dev/ttyS0", before.st_uid, before.st_gid)
        os.chmod("/dev/ttyS0", before.st_mode & 0o777)
        only_first_left(adapters)
