#!/usr/bin/env python3
"""Measure events through the notification service, beside the same supplier pushing straight into the consumers.

usage: notification.py BUILD_DIR [--rounds N] [--events N] [--consumers N,N,...] [--buffered N] [--json FILE]

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
import pathlib
import statistics
import sys
import tempfile

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent))
from event_programs import Programs  # noqa: E402
from processes import Failure, end_tidily  # noqa: E402

PACE = 200
PACED_EVENTS = 400


class Bench(Programs):
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

    def through_service(self, count, events, rate, *hung):
        with self.service() as (service, factory):
            channel = self.make_channel(factory)
            with self.start("bench_consumers", count, events, channel, *hung) as consumers:
                consumers.lines_until("ready")
                result = self.run(count, events, rate, [channel], consumers)
            result["service_mib"] = service.peak_mib()
            return result

    def through_library(self, what, events):
        reference = self.folder / "nt.ior"
        with self.service("-IORoutput", reference), self.agent(what, events, reference, 2 * events) as agent:
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


def measure_others(bench, events, buffered, rounds):
    return [{
        "with_hung": bench.through_service(15, max(500, events // 15), 0, "hung"),
        "without_hung": bench.through_service(15, max(500, events // 15), 0),
        "push_event": bench.through_library("push", 4000),
        "drain": bench.through_library("drain", buffered),
    } for _ in range(rounds)]


def print_others(rounds):
    hung = median_and_spread([r["with_hung"]["deliveries_per_second"] / r["without_hung"]["deliveries_per_second"]
                              for r in rounds])
    push = median_and_spread([r["push_event"]["push_event_us"] / r["push_event"]["raw_us"] for r in rounds])
    drain = median_and_spread([r["drain"]["events"] / r["drain"]["seconds"] for r in rounds])
    print(f"15 consumers beside one that hangs, of their rate without it: {hung[0]:.2f} ({hung[1]:.2f}-{hung[2]:.2f})")
    print(f"PushEvent, of a push straight into the channel: {push[0]:.2f} ({push[1]:.2f}-{push[2]:.2f})")
    events = rounds[0]["drain"]["events"]
    print(f"emptying a buffer of {events} events: {drain[0]:.0f} events/s ({drain[1]:.0f}-{drain[2]:.0f})")


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
    parser.add_argument("--buffered", type=int, default=100000, help="events in the library's buffer")
    parser.add_argument("--json")
    options = parser.parse_args()
    end_tidily()
    counts = [int(count) for count in options.consumers.split(",")]
    with tempfile.TemporaryDirectory() as folder:
        bench = Bench(options.build, folder)
        results = measure(bench, counts, options.events, options.rounds)
        print_table(results)
        others = measure_others(bench, options.events, options.buffered, options.rounds)
        print_others(others)
    if options.json:
        pathlib.Path(options.json).write_text(json.dumps({"consumers": results, "others": others}, indent=1))


if __name__ == "__main__":
    try:
        main()
    except Failure as failure:
        sys.exit(f"notification.py: {failure}")
