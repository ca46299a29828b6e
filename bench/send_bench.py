#!/usr/bin/env python3
"""What quarn-send costs beyond the waits of the rule, on a pseudo-terminal.

    bench/send_bench.py QUARN_SEND [RUNS]

  one command     from the spawn to the end of the process
  one of 50       a command among 50 in one connection: the difference between runs of 51 and of one, for each of 50
  processor       the same, user and system time of the process

At 115200 bits per second the rule waits 12 ms of silence after the last byte, and 50 ms after the response. The
instrument answers at once, with its own delay measured and taken off.
"""
import os, resource, select, statistics, subprocess, sys, tempfile, threading, time, tty

SILENCE_MS = 12
SETTLING_MS = 50
ANSWER = b"+1.2345E+00 V\r"


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
            if b"\r" in os.read(self.far_end, 1024):
                os.write(self.far_end, ANSWER)
            self.busy_s += time.perf_counter() - began


def run(program, instrument, count, home):
    """Milliseconds beyond the rule and of processor for a run of so many commands."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    instrument.busy_s = 0.0
    began = time.perf_counter()
    subprocess.run([program, "--port", instrument.path, "--bps", "115200", "--buffer", "6K", "--defaults",
                    "--count", str(count), "meas?"], check=True, stdout=subprocess.DEVNULL,
                   env={**os.environ, "XDG_CONFIG_HOME": home})
    took_ms = (time.perf_counter() - began - instrument.busy_s) * 1000
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    processor_ms = (after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime) * 1000
    return took_ms - count * (SILENCE_MS + SETTLING_MS), processor_ms


def main():
    program, runs = os.path.abspath(sys.argv[1]), int(sys.argv[2]) if len(sys.argv) > 2 else 20
    instrument = Instrument()
    with tempfile.TemporaryDirectory() as home:
        run(program, instrument, 1, home)
        ones = [run(program, instrument, 1, home) for _ in range(runs)]
        many = [run(program, instrument, 51, home) for _ in range(max(3, runs // 5))]
    one_ms, one_processor_ms = (statistics.median(each) for each in zip(*ones))
    each_ms, each_processor_ms = (statistics.median((m[i] - o) / 50 for m in many)
                                  for i, o in ((0, one_ms), (1, one_processor_ms)))
    print(f"one command, beyond the rule: median {one_ms:.1f} ms, processor {one_processor_ms:.1f} ms, n {runs}")
    print(f"one of 50 in one connection, beyond the rule: {each_ms:.2f} ms, processor {each_processor_ms:.2f} ms, "
          f"n {len(many)}")
    print("load of the computer:", " ".join(f"{each:.2f}" for each in os.getloadavg()))


if __name__ == "__main__":
    main()
