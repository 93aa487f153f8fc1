#!/usr/bin/env python3
"""Measure events through the notification service, beside the same supplier pushing straight into the consumers.

usage: notification.py BUILD_DIR [--rounds N] [--events N] [--consumers N,N,...] [--json FILE]

The event has 12 filterable properties of mixed types and a time-out. Each round does for each number of consumers, one
after the other:
  rate     pushes as fast as it goes; deliveries per second from the first push to the last receipt
  latency  pushes 200 events a second; how long a push takes its supplier, and an event until it is received
once straight and once through a service that was started for it. Then, also once a round: 15 consumers with and without
a 16th that never answers; the library's PushEvent beside a push straight into the channel; and the library's buffer of
100,000 events, from the moment at which the channel is there until it is empty. Ratios are taken within a round; the
table shows medians and the spread between the rounds. All consumers live in one process, the supplier in another.
"""
import argparse
import json
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent))
from servers import Failure, free_port  # noqa: E402

PACE = 200
PACED_EVENTS = 400


# Of the agent that pushes; the service's reference stands in the file.
AGENT = """
[agent]
CORBAAgent_Host = "127.0.0.1"
CORBAAgent_Port = {port}
CORBAAgent_Option = "-nt {reference}"
EventQueueLength = 200000
bLogNotify = 0
"""
BUFFERED = 100000


class Process:
    def __init__(self, command, log, environment=None):
        self.log = open(log, "a")
        self.process = subprocess.Popen(command, stdout=subprocess.PIPE, stderr=self.log, text=True,
                                        env={**os.environ, **(environment or {})})

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

    def start(self, name, *arguments, environment=None):
        return Process([self.bin / name, *map(str, arguments)], self.folder / f"{name}.log", environment)

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

    def service(self, port, data, *options):
        return self.start("Notify_Service", "-ORBEndpoint", f"iiop://127.0.0.1:{port}", "-u", data, *options)

    def through_service(self, count, events, rate, *hung):
        port = free_port()
        with tempfile.TemporaryDirectory() as data, self.service(port, data) as service:
            service.line()
            factory = f"corbaloc:iiop:127.0.0.1:{port}/NotifyEventChannelFactory"
            with self.start("bench_supplier", "make", factory) as maker:
                channel = maker.line()
            with self.start("bench_consumers", count, events, channel, *hung) as consumers:
                consumers.lines_until("ready")
                result = self.run(count, events, rate, [channel], consumers)
            result["service_mib"] = service.memory_mib()
            return result

    def through_library(self, what, events):
        port = free_port()
        with tempfile.TemporaryDirectory() as data:
            reference = f"{data}/nt.ior"
            config = pathlib.Path(data, "agent.toml")
            config.write_text(AGENT.format(port=free_port(), reference=reference))
            settings = {"QV_AGENT_CONFIG": str(config), "QV_LOG_DIR": data, "QV_ENV_ROOT": data, "QV_CFG_DIR": data}
            with self.service(port, data, "-IORoutput", reference) as service:
                service.line()
                with self.start("bench_push_event", what, events, environment=settings) as agent:
                    return json.loads(agent.line())


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


def measure_others(bench, events, rounds):
    return [{
        "with_hung": bench.through_service(15, max(500, events // 15), 0, "hung"),
        "without_hung": bench.through_service(15, max(500, events // 15), 0),
        "push_event": bench.through_library("push", 4000),
        "drain": bench.through_library("drain", BUFFERED),
    } for _ in range(rounds)]


def print_others(rounds):
    hung = median_and_spread([r["with_hung"]["deliveries_per_second"] / r["without_hung"]["deliveries_per_second"]
                              for r in rounds])
    push = median_and_spread([r["push_event"]["push_event_us"] / r["push_event"]["raw_us"] for r in rounds])
    drain = median_and_spread([r["drain"]["events"] / r["drain"]["seconds"] for r in rounds])
    print(f"15 consumers beside one that hangs, of their rate without it: {hung[0]:.2f} ({hung[1]:.2f}-{hung[2]:.2f})")
    print(f"PushEvent, of a push straight into the channel: {push[0]:.2f} ({push[1]:.2f}-{push[2]:.2f})")
    print(f"emptying a buffer of {BUFFERED} events: {drain[0]:.0f} events/s ({drain[1]:.0f}-{drain[2]:.0f})")


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
        bench = Bench(options.build, pathlib.Path(folder))
        results = measure(bench, counts, options.events, options.rounds)
        print_table(results)
        others = measure_others(bench, options.events, options.rounds)
        print_others(others)
    if options.json:
        pathlib.Path(options.json).write_text(json.dumps({"consumers": results, "others": others}, indent=1))


if __name__ == "__main__":
    try:
        main()
    except Failure as failure:
        sys.exit(f"notification.py: {failure}")
