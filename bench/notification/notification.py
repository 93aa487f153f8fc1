#!/usr/bin/env python3
"""Measure events through the notification service, beside the same supplier pushing straight into the consumers.

usage: notification.py BUILD_DIR [--rounds N] [--events N] [--consumers N,N,...] [--json FILE]

The event has 12 filterable properties of mixed types and a time-out. Each round does for each number of consumers, one
after the other:
  rate     pushes as fast as it goes; deliveries per second from the first push to the last receipt
  latency  pushes 200 events a second; how long a push takes its supplier, and an event until it is received
once straight and once through a service that was started for it. Ratios are taken within a round; the table shows
medians and the spread between the rounds. All consumers live in one process, the supplier in another.
"""
import argparse
import json
import pathlib
import socket
import statistics
import subprocess
import sys
import tempfile

PACE = 200
PACED_EVENTS = 400


class Failure(Exception):
    pass


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


class Process:
    def __init__(self, command, log):
        self.log = open(log, "a")
        self.process = subprocess.Popen(command, stdout=subprocess.PIPE, stderr=self.log, text=True)

    def line(self):
        text = self.process.stdout.readline()
        if not text:
            raise Failure(f"{self.process.args[0]} ended; see {self.log.name}")
        return text.strip()

    def lines_until(self, last):
        lines = []
        while (text := self.line()) != last:
            lines.append(text)
        return lines

    def memory_mib(self):
        for text in open(f"/proc/{self.process.pid}/status"):
            if text.startswith("VmHWM:"):
                return int(text.split()[1]) / 1024
        return 0.0

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.kill()
        self.process.wait()
        self.process.stdout.close()
        self.log.close()


class Bench:
    def __init__(self, build, folder):
        self.bin = pathlib.Path(build).resolve() / "bin"
        self.folder = folder

    def start(self, name, *arguments):
        return Process([self.bin / name, *map(str, arguments)], self.folder / f"{name}.log")

    def push(self, events, rate, targets):
        with self.start("bench_supplier", "push", events, rate, *targets) as supplier:
            return json.loads(supplier.line())

    def run(self, count, events, rate, targets, consumers):
        pushed = self.push(events, rate, targets)
        received = json.loads(consumers.line())
        seconds = (received["end"] - pushed["begin"]) / 1e9
        return {
            "deliveries_per_second": events * count / seconds,
            "push_p50_us": pushed["p50_us"], "push_p99_us": pushed["p99_us"],
            "receipt_p50_us": received["p50_us"], "receipt_p99_us": received["p99_us"],
        }

    def straight(self, count, events, rate):
        with self.start("bench_consumers", count, events, "-") as consumers:
            return self.run(count, events, rate, consumers.lines_until("ready"), consumers)

    def through_service(self, count, events, rate):
        port = free_port()
        with tempfile.TemporaryDirectory() as data, \
             self.start("Notify_Service", "-ORBEndpoint", f"iiop://127.0.0.1:{port}", "-u", data) as service:
            service.line()
            factory = f"corbaloc:iiop:127.0.0.1:{port}/NotifyEventChannelFactory"
            with self.start("bench_supplier", "make", factory) as maker:
                channel = maker.line()
            with self.start("bench_consumers", count, events, channel) as consumers:
                consumers.lines_until("ready")
                result = self.run(count, events, rate, [channel], consumers)
            result["service_mib"] = service.memory_mib()
            return result


def median_and_spread(values):
    return statistics.median(values), min(values), max(values)


def measure(bench, counts, events, rounds):
    results = {count: [] for count in counts}
    for _ in range(rounds):
        plain = bench.straight(1, PACED_EVENTS, PACE)
        for count in counts:
            share = max(500, events // count)
            results[count].append({
                "plain_call_p50_us": plain["push_p50_us"],
                "straight": bench.straight(count, share, 0),
                "service": bench.through_service(count, share, 0),
                "paced": bench.through_service(count, PACED_EVENTS, PACE),
            })
    return results


def print_table(results):
    print("consumers  straight/s   service/s  ratio (spread)       push p50 us of plain call (spread)"
          "   receipt p50/p99 us  MiB")
    for count, rounds in results.items():
        ratio = median_and_spread([r["service"]["deliveries_per_second"] / r["straight"]["deliveries_per_second"]
                                   for r in rounds])
        push = median_and_spread([r["paced"]["push_p50_us"] / r["plain_call_p50_us"] for r in rounds])
        middle = lambda kind, key: statistics.median(r[kind][key] for r in rounds)
        print(f"{count:9}  {middle('straight', 'deliveries_per_second'):10.0f}  "
              f"{middle('service', 'deliveries_per_second'):10.0f}  {ratio[0]:5.2f} ({ratio[1]:.2f}-{ratio[2]:.2f})   "
              f"{middle('paced', 'push_p50_us'):10.0f}  {push[0]:5.2f} ({push[1]:.2f}-{push[2]:.2f})     "
              f"{middle('paced', 'receipt_p50_us'):9.0f}/{middle('paced', 'receipt_p99_us'):.0f}  "
              f"{middle('service', 'service_mib'):7.0f}")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("build")
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--events", type=int, default=16000, help="deliveries in all of one run")
    parser.add_argument("--consumers", default="1,4,16,64")
    parser.add_argument("--json")
    options = parser.parse_args()
    counts = [int(count) for count in options.consumers.split(",")]
    with tempfile.TemporaryDirectory() as folder:
        results = measure(Bench(options.build, pathlib.Path(folder)), counts, options.events, options.rounds)
    print_table(results)
    if options.json:
        pathlib.Path(options.json).write_text(json.dumps(results, indent=1))


if __name__ == "__main__":
    try:
        main()
    except Failure as failure:
        sys.exit(f"notification.py: {failure}")
