"""What the tests in the machine stand on: the outside, the lines, quarn-send, and the list of tests."""

import base64
import glob
import grp
import json
import os
import shutil
import subprocess
import tempfile
import threading
import time
import traceback
import tty

from far_end import FarEnd

LIMIT_S = 60
USER = 1000
HOME = tempfile.mkdtemp(prefix="quarn-inside-")
STX, ETX = b"\x02", b"\x03"
FRAMES = {"CR": (b"", b"\r"), "LF": (b"", b"\n"), "CRLF": (b"", b"\r\n"), "STX_ETX": (STX, ETX)}


class Failed(Exception):
    """A promise is broken."""


def check(kept, text):
    if not kept:
        raise Failed(text)


def difference(got, wanted):
    """What is different, in a few words: long values are shown around the first difference."""
    if not isinstance(got, bytes) or not isinstance(wanted, bytes) or max(len(got), len(wanted)) <= 60:
        return f"{got!r:.300} instead of {wanted!r:.300}"
    same = next((at for at, (one, other) in enumerate(zip(got, wanted)) if one != other), min(len(got), len(wanted)))
    around = slice(max(same - 10, 0), same + 20)
    return (f"{len(got)} bytes instead of {len(wanted)}, different from byte {same} on: "
            f"{got[around]!r} instead of {wanted[around]!r}")


def equal(what, got, wanted):
    check(got == wanted, f"{what}: {difference(got, wanted)}")


def until(condition, what, seconds=LIMIT_S, pause=0.02):
    """Waits until the condition holds, and returns its value."""
    deadline = time.monotonic() + seconds
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > deadline:
            raise Failed(f"waited {seconds} s for {what}")
        time.sleep(pause)


class Background:
    """Calls `_step` again and again while it is used in a `with`, in a thread of its own, and `_close` at the end."""

    PAUSE_S = 0.02

    def __init__(self):
        self._ended = threading.Event()
        self._thread = threading.Thread(target=self._run, daemon=True)

    def _run(self):
        while not self._ended.wait(self.PAUSE_S):
            self._step()

    def _close(self):
        pass

    def __enter__(self):
        self._thread.start()
        return self

    def __exit__(self, *problem):
        self._ended.set()
        self._thread.join()
        self._close()


# --- The outside ------------------------------------------------------------------------------------------


class Outside:
    """What is outside of the machine does what it is asked to."""

    def __init__(self):
        self._lock = threading.Lock()
        port = until(lambda: glob.glob("/dev/vport*p*"), "the line to the outside")[0]
        self._stream = open(port, "r+b", buffering=0)

    def __getattr__(self, name):
        return lambda **arguments: self._ask(name, **arguments)

    def _ask(self, what, /, **arguments):
        with self._lock:
            request = json.dumps({"do": what, **arguments}).encode() + b"\n"
            # The line takes 32 KiB at once, and a picture is longer.
            while request:
                request = request[self._stream.write(request):]
            reply = b""
            while not reply.endswith(b"\n"):
                reply += self._stream.read(65536)
        reply = json.loads(reply)
        if "error" in reply:
            raise Failed(f"{what}: {reply['error']}")
        return reply["value"]


outside = Outside()
options = outside.options()


class FarOutside:
    """The far end of a line that leaves the machine."""

    def __init__(self, line):
        self._line = line

    def answer(self, rules, ending=b""):
        outside.answer(line=self._line, rules=rules, ending=ending.decode())

    def received(self):
        return base64.b64decode(outside.received(line=self._line))

    def sent(self):
        return outside.sent(line=self._line)

    def say(self, text):
        outside.say(line=self._line, text=text)

    def on_its_way(self):
        return outside.on_its_way(line=self._line)

    def batch(self, milliseconds, most):
        outside.batch(line=self._line, milliseconds=milliseconds, most=most)


# --- The list of tests ------------------------------------------------------------------------------------

_tests = []


def test(name, *arguments):
    """Makes the function a test of this name, called with the arguments."""

    def add(function):
        _tests.append((name, function, arguments))
        return function

    return add


def each_line(name, lines):
    """Makes the function a test for each of the lines."""

    def add(function):
        for line in lines:
            _tests.append((f"{name}: {line.kind}", function, (line,)))
        return function

    return add


def run_tests(prefix=""):
    words = options["only"].split(",")
    chosen = [each for each in _tests if any(word in each[0] for word in words)]
    outside.plan(names=[name for name, _, _ in chosen])
    for name, function, arguments in chosen:
        began = time.monotonic()
        detail = ""
        try:
            function(*arguments)
        except Failed as problem:
            detail = str(problem)
        except Exception:
            detail = traceback.format_exc()
        outside.result(name=name, ok=not detail, seconds=time.monotonic() - began, detail=detail)


def note(text):
    outside.note(text=text)


# --- The programs -----------------------------------------------------------------------------------------


def _copied_programs():
    folder = os.path.join(HOME, "bin")
    os.mkdir(folder)
    for name in ("quarn", "quarn-send", "quarn-device", "quarn-driver-cases"):
        shutil.copy(os.path.join(options["programs"], name), folder)
    os.chmod(HOME, 0o755)
    return folder


# An ordinary user, who may not look into the folders in which they were built.
PROGRAMS = _copied_programs()
AS_USER = {"user": USER, "group": USER, "extra_groups": [grp.getgrnam("dialout").gr_gid], "cwd": "/"}


def _default_values():
    demo = os.path.join(os.path.dirname(__file__), "../../../packaging/demo/demo.qrn")
    with open(demo, encoding="utf-8") as file:
        lines = file.read().splitlines()
    return lines


class Account:
    """A user with settings and COM numbers of their own; `folder` is where the home folder is made."""

    def __init__(self, folder=HOME):
        self._lead_to(tempfile.mkdtemp(prefix="account-", dir=folder))
        os.makedirs(self.ports)
        os.mkdir(os.path.join(self.folder, "run"), 0o700)
        self.give()

    @classmethod
    def found(cls, folder):
        """One that was made before."""
        account = cls.__new__(cls)
        account._lead_to(folder)
        return account

    def _lead_to(self, folder):
        self.folder = folder
        self.quarn = os.path.join(self.folder, "config/Halvo/Quarn")
        self.ports = os.path.join(self.quarn, "ports")
        self.environment = {"PATH": os.environ["PATH"], "LC_ALL": "C.UTF-8", "HOME": self.folder,
                            "XDG_CONFIG_HOME": os.path.join(self.folder, "config"),
                            "XDG_RUNTIME_DIR": os.path.join(self.folder, "run")}

    def give(self):
        """Everything in it belongs to the user."""
        for folder, folders, files in os.walk(self.folder):
            for each in ["."] + folders + files:
                os.chown(os.path.join(folder, each), USER, USER, follow_symlinks=False)

    def link(self, port, node):
        os.symlink(node, os.path.join(self.ports, port))
        self.give()

    def settings(self, **values):
        values = {"COM_BPS": "9600", "START_DISP": "ON", **values}
        text = []
        for line in _default_values():
            key = line.split("=")[0]
            text.append(f"{key}={values.pop(key)}" if key in values else line)
        check(not values, f"no such settings: {values}")
        with open(os.path.join(self.quarn, "Quarn.ini"), "w", encoding="utf-8", newline="\r\n") as file:
            file.write("\n".join(text) + "\n")
        self.give()

    def setting(self, name):
        """What its file says now."""
        with open(os.path.join(self.quarn, "Quarn.ini"), encoding="utf-8") as file:
            return next((line.split("=", 1)[1].strip() for line in file if line.startswith(name + "=")), None)

    def start(self, program, *arguments, **more):
        return self.start_command([os.path.join(PROGRAMS, program), *arguments], **AS_USER, **more)

    def start_command(self, command, **more):
        return subprocess.Popen(command, env=self.environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                stderr=subprocess.PIPE, **more)

    def run(self, program, *arguments):
        """Status, standard output, errors."""
        process = self.start(program, *arguments)
        try:
            output, errors = process.communicate(timeout=LIMIT_S)
        except subprocess.TimeoutExpired:
            process.kill()
            process.communicate()
            raise Failed(f"{program} did not end in {LIMIT_S} s") from None
        return process.returncode, output, errors.decode(errors="replace")


class SandboxAccount(Account):
    """One whose programs run in a sandbox: they see the devices, but neither udev's data nor its messages."""

    INSIDE = 'mount -t tmpfs tmpfs /run/udev && exec setpriv --reuid="$0" --regid="$0" --groups="$1" -- "${@:2}"'

    def start(self, program, *arguments, **more):
        return self.start_command(["unshare", "--mount", "--net", "--", "bash", "-c", self.INSIDE, str(USER),
                                   str(AS_USER["extra_groups"][0]), os.path.join(PROGRAMS, program), *arguments],
                                  cwd="/", **more)


# --- The lines --------------------------------------------------------------------------------------------


class Line:
    """A serial line of this machine, with an account in which it is COM11."""

    def __init__(self, kind, node, far):
        self.kind = kind
        self.node = node
        self.far = far
        self.account = Account()
        self.account.link("COM11", node)

    def settings(self, **values):
        self.account.settings(COM_PORT="COM11", **values)

    def send(self, *commands, raw=False, **values):
        """quarn-send with these settings: status, output, errors."""
        self.settings(**values)
        return self.account.run("quarn-send", *(["--raw"] if raw else []), "--", *commands)


def write(path, text):
    with open(path, "w", encoding="ascii") as file:
        file.write(text)


def read(path):
    with open(path, encoding="ascii", errors="replace") as file:
        return file.read().strip()


def settle():
    subprocess.run(["udevadm", "settle"], check=True)


def plug(line, serial, port):
    outside.plug(line=line, serial=serial, port=port)


class Gadget:
    """A USB device made of software, with one serial function."""

    folder = "/sys/kernel/config/usb_gadget/instrument"

    def __init__(self):
        os.makedirs(self.folder + "/strings/0x409")
        write(self.folder + "/idVendor", "0x1d6b")
        write(self.folder + "/idProduct", "0x0104")
        write(self.folder + "/strings/0x409/serialnumber", "GA0001")
        write(self.folder + "/strings/0x409/product", "Played Instrument")
        os.makedirs(self.folder + "/configs/c.1")
        os.makedirs(self.folder + "/functions/acm.usb0")
        os.symlink(self.folder + "/functions/acm.usb0", self.folder + "/configs/c.1/acm.usb0")
        self.near = "/dev/ttyGS" + read(self.folder + "/functions/acm.usb0/port_num")
        self.far = FarEnd(os.path.join(PROGRAMS, "quarn-device"), HOME, "gadget", self._open)

    def _open(self):
        # The far end of a cable that is not plugged in cannot be served.
        if not self.is_plugged():
            raise OSError("unplugged")
        line = os.open(self.near, os.O_RDWR | os.O_NOCTTY | os.O_NONBLOCK)
        tty.setraw(line)
        return line

    def is_plugged(self):
        return bool(read(self.folder + "/UDC"))

    def plug(self):
        write(self.folder + "/UDC", "dummy_udc.0")

    def unplug(self):
        write(self.folder + "/UDC", "\n")


def _only(pattern):
    return until(lambda: (glob.glob(pattern) or [None])[0], pattern)


plug("first", "QA0001", 1)
subprocess.run(["modprobe", "dummy_hcd"], check=True)
subprocess.run(["modprobe", "-a", "libcomposite", "usb_f_acm"], check=True)
subprocess.run(["mount", "-t", "configfs", "configfs", "/sys/kernel/config"], check=False)
gadget = Gadget()
gadget.plug()
uart = Line("16550A", "/dev/ttyS1", FarOutside("uart"))
ftdi = Line("ftdi_sio", _only("/dev/serial/by-id/*QA0001*"), FarOutside("first"))
acm = Line("cdc_acm", _only("/dev/serial/by-id/*GA0001*"), gadget.far)
# Nobody raises CTS on this one.
mute = Line("16550A without CTS", "/dev/ttyS2", None)
LINES = (uart, ftdi, acm)
settle()
