#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""What the capture in the kernel costs, and whether it counts everything; started by bench/capture.

    capture.py [--rounds N] [--seconds S] [--short-seconds S] [--mixed-seconds S] PROGRAMS [PART...]

PROGRAMS is a folder with `nevtora-daemon`, `capture_load` and `traffic_generator`. The parts are `throughput`,
`packets`, `live`, `short` and `mixed`; all of them without a choice.
"""

import argparse
import json
import os
import random
import shutil
import statistics
import subprocess
import sys
import tempfile
import time
from contextlib import contextmanager
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "tests/capture"))

import kinds  # noqa: E402
from capturing_daemon import CapturingDaemon  # noqa: E402
from network import Network, dying_with_us  # noqa: E402
from trial import Trial  # noqa: E402

FAR, LOOPBACK, PORT = "10.77.0.2", "127.77.0.1", "20000"
KERNEL, UNKNOWN = "", "(unknown)"
STATISTICS = Path("/proc/sys/kernel/bpf_stats_enabled")
TICKS_PER_SECOND = os.sysconf("SC_CLK_TCK")
SLOT = 0.05  # seconds, for which a load tells its rate
PROCESSORS = sorted(os.sched_getaffinity(0))

#        name                         address   offloads  load          least median of with/without
LOADS = (
    ("TCP, loopback", LOOPBACK, True, ("stream",), 0.95),
    ("TCP, cable, offloads", FAR, True, ("stream",), 0.95),
    ("TCP, cable, no offloads", FAR, False, ("stream",), 0.90),
    ("UDP of 64 bytes, loopback", LOOPBACK, True, ("datagrams", 64), 0.90),
    ("UDP of 64 bytes, cable", FAR, True, ("datagrams", 64), 0.90),
)


class Bench:
    def __init__(self, options, scratch):
        self.options, self.scratch = options, scratch
        self.network = Network()
        self.started = []

    def close(self):
        for process in self.started:
            process.kill()
            process.wait()
        self.network.close()

    def command(self, end, name, *words):
        """A load in a namespace, on a processor of its own: where the scheduler puts it changes rates by half."""
        processor = {"sender": PROCESSORS[0]}.get(name, PROCESSORS[-1])
        return getattr(self.network, end).inside(["taskset", "-c", processor, self.program(name), *words])

    def program(self, name):
        """A copy of a load's program, so that what is booked to it is this bench's."""
        copy = self.scratch / name
        if not copy.exists():
            shutil.copy(self.options.programs / "capture_load", copy)
        return copy

    def start(self, end, name, *words):
        """A load that says when it is ready."""
        command = dying_with_us(self.command(end, name, *words))
        process = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.started.append(process)
        assert process.stdout.readline() == "ready\n", words
        return process

    def send(self, *words):
        command = self.command("near", "sender", *words)
        return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout

    @contextmanager
    def capture(self):
        daemon = CapturingDaemon(self.options.programs / "nevtora-daemon", Path(tempfile.mkdtemp(dir=self.scratch)))
        try:
            yield daemon
        finally:
            daemon.close()

    @contextmanager
    def sniffer(self):
        """nethogs, in the namespace whose traffic is measured."""
        command = self.network.near.inside(["nethogs", "-a", "-t", "-d", "1"])
        process = subprocess.Popen(dying_with_us(command), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        time.sleep(1)
        try:
            assert process.poll() is None, "nethogs does not run"
            yield
        finally:
            process.kill()
            process.wait()


@contextmanager
def nothing():
    yield


def start_receivers(bench):
    bench.start("far", "receiver", "receive", FAR, PORT)
    bench.start("near", "receiver", "receive", LOOPBACK, PORT)


class Meter:
    """A load that goes on, and how much it moves in a stretch of time."""

    def __init__(self, bench, address, offloads, mode, *words):
        bench.network.near.set_offloads("far", offloads)
        bench.network.far.set_offloads("near", offloads)
        command = bench.command("near", "sender", mode, address, PORT, 1000, *words)
        self.load = subprocess.Popen(dying_with_us(command), stdout=subprocess.PIPE, text=True)
        self.length = bench.options.seconds
        self.stretches = []
        time.sleep(self.length)

    def take(self):
        start = time.monotonic()
        time.sleep(self.length)
        self.stretches.append((start, time.monotonic()))

    def rates(self):
        """Of each stretch, the median of its slots; ends the load."""
        self.load.terminate()
        slots = [tuple(map(float, line.split())) for line in self.load.stdout.readlines()[:-1]]
        self.load.wait()
        return [
            statistics.median(rate for end, rate in slots if start + SLOT <= end <= stop)
            for start, stop in self.stretches
        ]


def ratios_with(monitor, meter, rounds):
    """Of each stretch with the monitor to the mean of those before and after: what else the machine does drifts."""
    meter.take()
    for _ in range(rounds):
        with monitor():
            meter.take()
        meter.take()
    rates = meter.rates()
    without = statistics.median(rates[::2])
    return [2 * rates[i] / (rates[i - 1] + rates[i + 1]) for i in range(1, len(rates), 2)], without


def throughput(bench):
    start_receivers(bench)
    monitors = {"nothing": nothing, "capture": bench.capture}
    if shutil.which("nethogs"):
        monitors["nethogs"] = bench.sniffer
    else:
        print("nethogs is not installed: nothing to compare with")
    print(f"throughput with a monitor / without, median (and quarters) of {bench.options.rounds} rounds")
    for load, address, offloads, (mode, *words), least in LOADS:
        columns = []
        for name, monitor in monitors.items():
            meter = Meter(bench, address, offloads, mode, *words)
            ratios, without = ratios_with(monitor, meter, bench.options.rounds)
            low, median, high = statistics.quantiles(ratios, n=4)
            columns.append(f"{name} {median:.3f} ({low:.2f} to {high:.2f})")
        print(f"  {load:26} {'   '.join(columns)}   wanted {least:.2f}   {without:.3g}/s without", flush=True)


def packet_programs(daemon):
    """By hook: (time in ns, runs) of the daemon's programs that see packets."""
    ours = daemon.kernel_programs()
    shown = json.loads(subprocess.run(["bpftool", "-j", "prog", "show"], check=True, capture_output=True).stdout)
    return {
        program["name"]: (program.get("run_time_ns", 0), program.get("run_cnt", 0))
        for program in shown
        if program["type"] == "cgroup_skb" and program["id"] in ours
    }


def packets(bench):
    start_receivers(bench)
    before = STATISTICS.read_text()
    STATISTICS.write_text("1")
    try:
        with bench.capture() as daemon:
            print("ns a packet, by the kernel's own statistics of the programs")
            for load, address, offloads, (mode, *words), _ in LOADS:
                bench.network.near.set_offloads("far", offloads)
                bench.network.far.set_offloads("near", offloads)
                old = packet_programs(daemon)
                bench.send(mode, address, PORT, 2, *words)
                new = packet_programs(daemon)
                costs = [
                    f"{name} {(new[name][0] - old[name][0]) / max(1, new[name][1] - old[name][1]):.0f}"
                    for name in sorted(new)
                ]
                print(f"  {load:28} {'   '.join(costs)}   wanted 140 out, 100 in")
    finally:
        STATISTICS.write_text(before)


def processor_seconds(daemon):
    fields = Path(f"/proc/{daemon.process.pid}/stat").read_text().rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / TICKS_PER_SECOND


def resident_megabytes(daemon):
    status = Path(f"/proc/{daemon.process.pid}/status").read_text()
    return int(status.partition("VmRSS:")[2].split()[0]) / 1024


def live(bench):
    bench.start("far", "echo", "echo", FAR, PORT)
    with bench.capture() as daemon:
        seconds = 30
        bench.start("near", "sender", "live", FAR, PORT, 1000, 100, seconds + 5)
        time.sleep(3)
        before = processor_seconds(daemon)
        time.sleep(seconds)
        share = (processor_seconds(daemon) - before) / seconds
        print(f"1,000 connections, 100 of them moving: {share:.2%} of a core (wanted 0.7%)", end="")
        print(f", {resident_megabytes(daemon):.1f} MB resident (wanted 30)")


def short(bench):
    bench.start("near", "echo", "echo", "0.0.0.0", PORT)
    with bench.capture() as daemon:
        count, rates, memory = 0, [], []
        for _ in range(4):
            words = bench.send("short", LOOPBACK, PORT, 10000, bench.options.short_seconds / 4).split()
            count, rates = count + int(words[0]), [*rates, int(words[1])]
            memory.append(f"{resident_megabytes(daemon):.1f}")
        time.sleep(4)
        print(f"{count} connections, {statistics.mean(rates):.0f} a second, of 100 bytes there and back: ", end="")
        print(f"{', '.join(memory)} MB resident after each quarter")
        daemon.stop()
        history, rows = daemon.history(), daemon.connections()
        for name in ("sender", "echo"):
            path = str(bench.scratch / name)
            received, sent = history[path].payload
            kept = sum(row.path == path and int(row.remote) != 0 for row in rows)
            print(f"  {name}: lost {count - kept} connections, ", end="")
            print(f"{100 * count - received} bytes received, {100 * count - sent} sent")


def mixed(bench):
    """
    Kinds of traffic at random: the sum over their programs and the kernel against the counters of the cable. What the
    kernel says elsewhere on the machine meanwhile is part of the sum.
    """
    generator = bench.options.programs / "traffic_generator"
    usual = [
        kind
        for kind in kinds.KINDS
        if kind.cables == (kinds.Cable("far", "near"),) and not kind.is_older and not kind.lacks()
    ]
    with bench.capture() as daemon:
        before = bench.network.far.counters("near")
        end = time.monotonic() + bench.options.mixed_seconds
        count = 0
        while time.monotonic() < end:
            trial = Trial(random.choice(usual), bench.network, bench.scratch, generator)
            trial.run()
            count += 1
            if trial.failure:
                raise trial.failure
        time.sleep(12)  # half-open connections are booked after ten
        crossed = sum(bench.network.far.counters("near")) - sum(before)
        daemon.stop()
        applications = {
            path: application
            for path, application in daemon.history().items()
            if str(bench.scratch) in path or path in (KERNEL, UNKNOWN)  # some are below another root
        }
        print(f"{count} loads of {len(usual)} kinds: {crossed} bytes crossed the cable, each sent and received once")
        for way, name in enumerate(("received", "sent")):
            booked = sum(application.wire[way] for application in applications.values())
            print(f"  {name} by all applications: {booked}, {booked / crossed - 1:+.4%} (wanted 0.1%)")


PARTS = (throughput, packets, live, short, mixed)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--rounds", type=int, default=15)
    parser.add_argument("--seconds", type=float, default=0.6, help="of each stretch of a load")
    parser.add_argument("--short-seconds", type=float, default=60)
    parser.add_argument("--mixed-seconds", type=float, default=600)
    parser.add_argument("programs", type=Path)
    parser.add_argument("parts", nargs="*")
    options = parser.parse_args()
    for part in PARTS:
        if part.__name__ in (options.parts or [p.__name__ for p in PARTS]):
            with tempfile.TemporaryDirectory(prefix="nevtora-bench-") as scratch:
                bench = Bench(options, Path(scratch))
                try:
                    part(bench)
                finally:
                    bench.close()
                sys.stdout.flush()


if __name__ == "__main__":
    main()
