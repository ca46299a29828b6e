#!/usr/bin/env python3
"""What quarn-send costs beyond the waits of the rule, on a pseudo-terminal.

    bench/send_bench.py QUARN_SEND [RUNS]

  one command     from the spawn to the end of the process
  one of 50       a command among 50 in one connection: the difference between runs of 51 and of one, for each of 50
  processor       the same, user and system time of the process
  beside others   one command as people script it with two terminals of Debian, in turn on the same line

At 115200 bits per second the rule waits 12 ms of silence after the last byte, and 50 ms after the response. The
instrument answers at once, with its own delay measured and taken off.
"""
import os, resource, select, statistics, subprocess, sys, tempfile, threading, time, tty

SILENCE_MS = 12
SETTLING_MS = 50
ANSWER = b"+1.2345E+00 V\r\n"


class Instrument:
    """Answers each command, and adds up how long it took for that."""

    def __init__(self):
        self.far_end, near_end = os.openpty()
        tty.setraw(near_end)
        self.path = os.ttyname(near_end)
        self.near_end = near_end
        self.busy_s = 0.0
        threading.Thread(target=self.serve, daemon=True).start()

    def serve(self):
        while True:
            select.select([self.far_end], [], [])
            began = time.perf_counter()
            # One of the programs ends a line with LF alone.
            if os.read(self.far_end, 1024).endswith((b"\r", b"\n")):
                os.write(self.far_end, ANSWER)
            self.busy_s += time.perf_counter() - began


def measure(instrument, command, **more):
    """Milliseconds from the spawn to the end without the instrument's own, and of processor."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    instrument.busy_s = 0.0
    began = time.perf_counter()
    done = subprocess.run(command, check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, **more)
    took_ms = (time.perf_counter() - began - instrument.busy_s) * 1000
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    if ANSWER.strip() not in done.stdout:
        sys.exit(f"{command[0]} has not printed the answer: {done.stdout!r}")
    return took_ms, (after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime) * 1000


def quarn_send(program, instrument, count=1):
    return [program, "--port", instrument.path, "--bps", "115200", "--buffer", "6K", "--delimiter", "CRLF",
            "--defaults", "--count", str(count), "meas?"]


def run(program, instrument, count, home):
    """Milliseconds beyond the rule and of processor for a run of so many commands."""
    took_ms, processor_ms = measure(instrument, quarn_send(program, instrument, count),
                                    env={**os.environ, "XDG_CONFIG_HOME": home})
    return took_ms - count * (SILENCE_MS + SETTLING_MS), processor_ms


def beside_others(program, instrument, runs, home):
    """One command with each program in turn."""
    environment = {**os.environ, "XDG_CONFIG_HOME": home, "HOME": home}
    others = {
        "quarn-send, until the line is silent": (quarn_send(program, instrument), {}),
        "tio --response-wait, until the first line end":
            (["tio", "--response-wait", "--response-timeout", "1000", "--mute", "-b", "115200", instrument.path], {"input": b"meas?\n"}),
        "picocom --exit-after 62, until the line is silent":
            (["picocom", "-q", "-b", "115200", "-t", "meas?\r", "--exit-after", "62", instrument.path],
             {"stdin": subprocess.DEVNULL}),
    }
    took = {name: [] for name in others}
    for _ in range(runs):
        for name, (command, more) in others.items():
            took[name].append(measure(instrument, command, env=environment, **more))
    for name, each in took.items():
        times, processor = zip(*each)
        print(f"{name}: median {statistics.median(times):.0f} ms ({min(times):.0f} to {max(times):.0f}), "
              f"processor {statistics.median(processor):.1f} ms, n {runs}")


def main():
    program, runs = os.path.abspath(sys.argv[1]), int(sys.argv[2]) if len(sys.argv) > 2 else 20
    instrument = Instrument()
    with tempfile.TemporaryDirectory() as home:
        run(program, instrument, 1, home)
        ones = [run(program, instrument, 1, home) for _ in range(runs)]
        many = [run(program, instrument, 51, home) for _ in range(max(3, runs // 5))]
        beside_others(program, instrument, runs, home)
    one_ms, one_processor_ms = (statistics.median(each) for each in zip(*ones))
    each_ms, each_processor_ms = (statistics.median((m[i] - o) / 50 for m in many)
                                  for i, o in ((0, one_ms), (1, one_processor_ms)))
    print(f"one command, beyond the rule: median {one_ms:.1f} ms, processor {one_processor_ms:.1f} ms, n {runs}")
    print(f"one of 50 in one connection, beyond the rule: {each_ms:.2f} ms, processor {each_processor_ms:.2f} ms, "
          f"n {len(many)}")
    print("load of the computer:", " ".join(f"{each:.2f}" for each in os.getloadavg()))


if __name__ == "__main__":
    main()
