#!/usr/bin/env python3
"""Starts the machine in which Quarn meets the kernel's serial drivers, and serves what is outside of it.

    outside.py --kernel FILE --initrd FILE --programs FOLDER --logs FOLDER [--long] [--only WORDS]

Outside are the simulated instruments at the far ends of its lines, the sockets into which adapters are plugged, and
the record of what the adapters were told. The tests run inside (inside.py) and ask for these over a line of their
own, one request per line. Every test that was announced must report; else the run has failed.
"""

import argparse
import base64
import json
import os
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time

from far_end import FarEnd

BOOT_S = 180
REPORT_S = 240
DISK_BYTES = 64 << 20
# The lines: a chip on the board, and two adapters.
LINES = ("uart", "first", "second")


def connected(path, deadline):
    """A socket connected to this path, as soon as somebody listens there."""
    while True:
        line = socket.socket(socket.AF_UNIX)
        try:
            line.connect(path)
            return line
        except OSError:
            line.close()
            if time.monotonic() > deadline:
                raise
            time.sleep(0.05)


class Monitor:
    """The machine's own monitor."""

    def __init__(self, path, deadline):
        self._stream = connected(path, deadline).makefile("rw")
        self._events = []
        self._answer()
        self.ask("qmp_capabilities")

    def ask(self, command, **arguments):
        self._stream.write(json.dumps({"execute": command, "arguments": arguments}) + "\n")
        self._stream.flush()
        return self._answer()

    def wait_for(self, event, **data):
        while True:
            for each in self._events:
                if each["event"] == event and data.items() <= each.get("data", {}).items():
                    self._events.remove(each)
                    return
            self._take(json.loads(self._stream.readline()))

    def _answer(self):
        while True:
            message = json.loads(self._stream.readline())
            if "error" in message:
                raise RuntimeError(message["error"]["desc"])
            if "event" not in message:
                return message.get("return")
            self._take(message)

    def _take(self, message):
        if "event" in message:
            self._events.append(message)


class Machine:
    """One run of the machine, from power on to power off."""

    def __init__(self, options, folder, state):
        self._options = options
        self._folder = folder
        self.state = state
        self._done = False
        self._trace = os.path.join(options.logs, "told.log")
        deadline = time.monotonic() + BOOT_S
        # Nobody raises a line of this one: there is nothing but a pseudo-terminal behind it.
        self._mute, mute_name = os.openpty()
        self._mute_name = os.ttyname(mute_name)
        self._process = subprocess.Popen(self._command(), stdin=subprocess.DEVNULL)
        os.close(mute_name)
        self._far_ends = {}
        try:
            self._monitor = Monitor(self._path("monitor"), deadline)
            self.control = connected(self._path("control"), deadline)
            for name in LINES:
                line = connected(self._path(name), deadline)
                line.setblocking(False)
                self._far_ends[name] = FarEnd(os.path.join(options.programs, "quarn-device"), folder, name,
                                              lambda line=line: os.dup(line.fileno()))
                setattr(self, "_socket_" + name, line)
        except BaseException:
            self.end()
            raise

    def _path(self, name):
        return os.path.join(self._folder, name)

    def _socket(self, name):
        return ["-chardev", f"socket,id={name},path={self._path(name)},server=on,wait=off"]

    def _command(self):
        for each in os.listdir(self._folder):
            if each != "disk":
                os.unlink(self._path(each))
        if "disk" not in os.listdir(self._folder):
            with open(self._path("disk"), "wb") as file:
                file.truncate(DISK_BYTES)
        command = ["qemu-system-x86_64", "-accel", "tcg,thread=multi", "-cpu", "max", "-smp", "2", "-m", "2048"]
        command += ["-nodefaults", "-no-user-config", "-display", "none", "-no-reboot"]
        command += ["-kernel", self._options.kernel, "-initrd", self._options.initrd]
        command += ["-append", "console=ttyS0,115200 panic=-1 quiet mitigations=off audit=0"]
        command += ["-chardev", f"file,id=console,path={self._options.logs}/console.log,append=on"]
        command += ["-serial", "chardev:console"]
        for name in LINES + ("control",):
            command += self._socket(name)
        command += ["-serial", "chardev:uart"]
        command += ["-chardev", f"serial,id=mute,path={self._mute_name}", "-serial", "chardev:mute"]
        command += ["-fsdev", "local,id=system,path=/,security_model=none,readonly=on,multidevs=remap"]
        command += ["-device", "virtio-9p-pci,fsdev=system,mount_tag=system"]
        command += ["-device", "virtio-serial-pci", "-device", "virtserialport,chardev=control,name=control"]
        command += ["-drive", f"file={self._path('disk')},if=virtio,format=raw"]
        command += ["-device", "virtio-rng-pci", "-device", "qemu-xhci,id=bus"]
        command += ["-qmp", f"unix:{self._path('monitor')},server=on,wait=off"]
        command += ["-trace", "usb_serial_*", "-trace", "serial_write", "-D", self._trace]
        return command

    # --- What the tests ask for ---------------------------------------------------------------------------

    def do_plan(self, names):
        self.state["plan"] += [name for name in names if name not in self.state["plan"]]

    def do_result(self, name, ok, seconds, detail):
        print(f"{'passed' if ok else 'FAILED'} {seconds:6.1f} s  {name}", flush=True)
        for line in detail.splitlines():
            print(f"                   {line}", flush=True)
        self.state["results"][name] = ok

    def do_note(self, text):
        print(f"                   {text}", flush=True)

    def do_answer(self, line, rules, ending=""):
        self._far_ends[line].answer(rules, ending.encode())

    def do_received(self, line):
        return base64.b64encode(self._far_ends[line].received()).decode()

    def do_sent(self, line):
        return self._far_ends[line].sent()

    def do_say(self, line, text):
        self._far_ends[line].say(text)

    def do_on_its_way(self, line):
        return self._far_ends[line].on_its_way()

    def do_batch(self, line, milliseconds, most):
        self._far_ends[line].batch(milliseconds, most)

    def do_line_break(self, line):
        """The instrument on this line sends a break."""
        self._monitor.ask("chardev-send-break", id=line)

    def do_plug(self, line, serial, port):
        self._monitor.ask("device_add", driver="usb-serial", id="adapter-" + line, chardev=line, serial=serial,
                          bus="bus.0", port=str(port), **{"always-plugged": True})

    def do_unplug(self, line):
        self._monitor.ask("device_del", id="adapter-" + line)
        self._monitor.wait_for("DEVICE_DELETED", device="adapter-" + line)

    def do_told(self, since):
        """What the adapters and chips were told, as text, from this byte on; and where the next part begins."""
        with open(self._trace, "rb") as file:
            file.seek(since)
            text = file.read()
        return [text.decode(errors="replace"), since + len(text)]

    def do_keep(self, name, data):
        """A file among the logs."""
        with open(os.path.join(self._options.logs, name), "wb") as file:
            file.write(base64.b64decode(data))

    def do_again(self):
        """The machine is to be started once more after this run."""
        self.state["again"] = True

    def do_done(self):
        """No more tests in this run."""
        self._done = True

    def do_options(self):
        return {"long": self._options.long, "only": self._options.only, "programs": self._options.programs,
                "boot": self.state["boots"]}

    # --- Serving ------------------------------------------------------------------------------------------

    def serve(self):
        """Answers requests until the machine is off. Fails when it is silent for too long."""
        self.control.settimeout(BOOT_S)
        pending = b""
        while True:
            try:
                data = self.control.recv(65536)
            except TimeoutError:
                print("The machine has become silent.", flush=True)
                return False
            if not data:
                return self._process.wait(timeout=60) == 0 and self._done
            self.control.settimeout(REPORT_S)
            pending += data
            while b"\n" in pending:
                request, pending = pending.split(b"\n", 1)
                self.control.sendall(self._reply(json.loads(request)).encode() + b"\n")

    def _reply(self, request):
        try:
            return json.dumps({"value": getattr(self, "do_" + request.pop("do"))(**request)})
        except (OSError, RuntimeError) as error:
            return json.dumps({"error": str(error)})

    def end(self):
        if self._process.poll() is None:
            self._process.terminate()
            self._process.wait()
        for each in self._far_ends.values():
            each.close()
        os.close(self._mute)


def main():
    parser = argparse.ArgumentParser()
    for name in ("kernel", "initrd", "programs", "logs"):
        parser.add_argument("--" + name, required=True)
    parser.add_argument("--long", action="store_true")
    parser.add_argument("--only", default="")
    options = parser.parse_args()
    for each in (signal.SIGTERM, signal.SIGHUP, signal.SIGINT):
        signal.signal(each, lambda number, frame: sys.exit(128 + number))
    state = {"plan": [], "results": {}, "again": True, "boots": 0}
    folder = tempfile.mkdtemp(prefix="quarn-drivers-")
    began = time.monotonic()
    ended = True
    try:
        while ended and state["again"]:
            state["again"] = False
            state["boots"] += 1
            machine = Machine(options, folder, state)
            try:
                ended = machine.serve()
            finally:
                machine.end()
    finally:
        shutil.rmtree(folder)
    missing = [name for name in state["plan"] if name not in state["results"]]
    for name in missing:
        print(f"NOT RUN           {name}")
    failed = [name for name, ok in state["results"].items() if not ok]
    passed = len(state["results"]) - len(failed)
    print(f"{passed} of {len(state['plan'])} passed in {time.monotonic() - began:.0f} s", flush=True)
    if not ended:
        print(f"The machine did not end properly; see {options.logs}/console.log")
    sys.exit(0 if ended and state["plan"] and not missing and not failed else 1)


if __name__ == "__main__":
    main()
