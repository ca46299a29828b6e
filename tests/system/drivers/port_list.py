"""The Detailed COM Port List with devices of several kinds, one of them not permitted, one in use. The guide's picture."""

import base64
import os
import subprocess

from adapters import Adapters, give_names, only_first_left
from bench import Account, acm, check, equal, ftdi, outside, test, until, uart
from window import Quarn, environment

TITLE = "^Quarn - Detailed COM Port List"
HOLDER_PID = 1234
SOURCES = os.path.join(os.path.dirname(__file__), "../../..")
TAKE = """source scripts/lib/common.sh; PLACE=$1; source scripts/lib/display.sh
          display_width=1280; display_height=1024; xdotool mousemove 0 1023; picture "$1/picture.png" "$2" """


def picture_of(quarn, title, folder):
    """The window with its frame, once it is drawn."""
    window = quarn.wait_for(title)
    quarn.activate(window)
    last = b""

    def look():
        nonlocal last
        made = subprocess.run(["bash", "-c", TAKE, "bash", folder, str(window)], cwd=SOURCES, env=environment(),
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
        equal(f"status of the picture ({made.stdout})", made.returncode, 0)
        with open(os.path.join(folder, "picture.png"), "rb") as file:
            before, last = last, file.read()
        # Of a window that is not drawn yet there is only the frame.
        return last == before and len(last) > 4000

    until(look, "a picture of the window", pause=0.3)
    return last


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
        account.settings(COM_PORT="COM7", START_DISP="OFF")
        with Quarn(account) as quarn:
            quarn.wait_for(r"^Quarn   \(COM7\)$")
            quarn.wait_gone("^Quarn : ")
            quarn.choose_from_port_menu("l")
            picture = picture_of(quarn, TITLE, account.folder)
            outside.keep(name="detailed-com-port-list.png", data=base64.b64encode(picture).decode())
    finally:
        holder.kill()
        holder.communicate()
        os.chown("/dev/ttyS0", before.st_uid, before.st_gid)
        os.chmod("/dev/ttyS0", before.st_mode & 0o777)
        only_first_left(adapters)
