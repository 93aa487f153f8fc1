#!/usr/bin/env python3
"""Measure what SSL costs per call and per connection, and how clients fare beside peers that make trouble.

usage: ssl_bench.py BUILD_DIR [--parts PART...] [--rounds N] [--seconds S] [--per-second N] [--json FILE]

Calls: the same servant on the ORB seam and behind the library, in clear and by SSL with certificates on both sides, one
after the other in each round, from 1 and from 4 client threads. Connections: made one after the other by 1 and by 4
threads, each with one question and its answer; by SSL each goes through a whole handshake. Trouble: an SSL client's
calls per second without and with peers that misbehave so many times a second, by turns, and what the server's memory
and open files have grown by. These peers share the machine with server and client, so the ratio also holds what their
own work takes away. Ratios are taken within a round; the tables show medians and the spread between the rounds.
"""
import argparse
import json
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent))
from processes import Failure, end_tidily, end_with_parent, free_port, start  # noqa: E402
from servers import library_server, measure_calls, seam_server  # noqa: E402

THREADS = (1, 4)
TURNS = 3
PAIRS = (("seam, in clear", "seam, SSL"), ("library, in clear", "library, SSL"))
KINDS = ("half-open", "clear-to-ssl", "ssl-to-clear", "renegotiation", "random-bytes", "no-certificate")
SSL_SETTINGS = 'SSLMode = 1\nCORBAAgent_SSLPort = {port}\nSSL_Profile = "{profile}"\n'


class Bench:
    """The servers, with certificates of their own. Ends them when it is left."""

    def __init__(self, build, work):
        self.build = build
        self.work = work
        self.servers = {}
        self.plain_port, self.ssl_port, self.unprotected_port = free_port(), free_port(), free_port()
        certificates = work / "certificates"
        subprocess.run([build / "bin/qv_ssl", "make", "--dir", certificates], check=True, stdout=subprocess.DEVNULL)
        self.server_profile = str(certificates / "server.conf")
        self.client_profile = str(certificates / "client.conf")

    def __enter__(self):
        try:
            self.start()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        for server in self.servers.values():
            server.stop()

    def folder(self):
        folder = self.work / f"server{len(self.servers)}"
        folder.mkdir()
        return folder

    def start(self):
        build, servers = self.build, self.servers
        servers["seam, in clear"] = seam_server(build, self.folder(), port=self.unprotected_port)
        servers["seam, SSL"] = seam_server(build, self.folder(), "-ORBSvcConf", self.server_profile,
                                           port=f"{self.plain_port}/ssl_port={self.ssl_port}")
        servers["library, in clear"] = library_server(build, self.folder(), "")
        servers["library, SSL"] = library_server(
            build, self.folder(), SSL_SETTINGS.format(port=free_port(), profile=self.server_profile))
        for server in servers.values():
            server.wait_until_ready()

    def calls(self, variant, threads, seconds):
        options = ("-ORBSvcConf", self.client_profile) if variant.endswith("SSL") else ()
        return measure_calls(self.build, self.servers[variant], threads, seconds, *options)

    def connections(self, variant, threads, seconds):
        by_ssl = variant.endswith("SSL")
        server = self.servers[variant]
        before = server.cpu_seconds()
        answer = subprocess.run(
            [self.build / "bin/bench_ssl_connections", str(self.ssl_port if by_ssl else self.unprotected_port),
             str(threads), str(seconds), *([self.client_profile] if by_ssl else [])],
            capture_output=True, text=True, timeout=seconds + 30, preexec_fn=end_with_parent)
        if answer.returncode != 0:
            raise Failure(answer.stderr.strip() or "the connections failed")
        rate = float(answer.stdout)
        return {"per_second": rate, "server_us": (server.cpu_seconds() - before) * 1e6 / (rate * seconds)}


class Trouble:
    """Peers that misbehave as long as this stands; `made` is how often they did."""

    def __init__(self, bench, kind, per_second):
        self.process = start(
            [bench.build / "bin/bench_ssl_trouble", kind, str(bench.plain_port), str(bench.ssl_port),
             bench.client_profile, str(per_second)], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.made = 0

    def __enter__(self):
        if self.process.stdout.readline().strip() != "ready":
            raise Failure("the peers that make trouble did not start")
        return self

    def __exit__(self, *_):
        try:
            answer, _ = self.process.communicate(timeout=30)
        finally:
            self.process.kill()
        self.made, failed = map(int, answer.split())
        if failed > 0:
            raise Failure(f"{failed} of {self.made + failed} peers were served that should not have been, or not heard")


def pairs_of_rows(samples, key, more):
    """The rows of a table: for each number of threads and each pair of variants, in clear and by SSL."""
    rows = []
    for threads in THREADS:
        mine = [sample["variants"] for sample in samples if sample["threads"] == threads]
        for clear, by_ssl in PAIRS:
            if clear not in mine[0]:
                continue
            ratios = [row[by_ssl][key] / row[clear][key] for row in mine]
            rows.append({
                "threads": threads, "servant": clear.split(",")[0],
                "clear": statistics.median(row[clear][key] for row in mine),
                "ssl": statistics.median(row[by_ssl][key] for row in mine),
                "ratio": statistics.median(ratios), "ratio_min": min(ratios), "ratio_max": max(ratios),
                "clear_server_us": statistics.median(row[clear][more] for row in mine),
                "ssl_server_us": statistics.median(row[by_ssl][more] for row in mine),
                "server_us_ratio": statistics.median(row[by_ssl][more] / max(row[clear][more], 1e-9) for row in mine)})
    return rows


def rounds_of(measure, variants, rounds):
    samples = []
    for number in range(rounds):
        order = variants if number % 2 == 0 else variants[::-1]
        for threads in THREADS:
            samples.append({"threads": threads, "variants": {name: measure(name, threads) for name in order}})
    return samples


def settled_files(server, expected):
    """The server's open files, once it has noticed that the peers are gone; `expected` or more."""
    deadline = time.monotonic() + 15
    while server.open_files() > expected and time.monotonic() < deadline:
        time.sleep(0.05)
    return server.open_files()


def beside_trouble(bench, kind, options):
    server = bench.servers["seam, SSL"]
    samples = []
    calm_files = server.open_files()
    with Trouble(bench, kind, options.per_second):
        bench.calls("seam, SSL", 1, options.seconds)
    # What the first of them leaves behind stays: the rooms for 200 threads, for one.
    files = settled_files(server, calm_files)
    memory = server.memory_kib()
    # Short turns, so that a slow spell of the machine hits both.
    for _ in range(options.rounds * TURNS):
        calm = bench.calls("seam, SSL", 1, options.seconds / TURNS)["calls_per_second"]
        with Trouble(bench, kind, options.per_second) as trouble:
            beside = bench.calls("seam, SSL", 1, options.seconds / TURNS)["calls_per_second"]
        samples.append({"calm": calm, "beside": beside, "ratio": beside / calm, "made": trouble.made})
    ratios = [sample["ratio"] for sample in samples]
    return {"kind": kind, "calm": statistics.median(s["calm"] for s in samples),
            "beside": statistics.median(s["beside"] for s in samples), "ratio": statistics.median(ratios),
            "ratio_min": min(ratios), "ratio_max": max(ratios), "made": sum(s["made"] for s in samples),
            "files_grown": settled_files(server, files) - files, "memory_grown_kib": server.memory_kib() - memory,
            "samples": samples}


def print_pairs(title, rows):
    print(f"{title}\n{'threads':>8}  {'servant':<8} {'clear/s':>9} {'SSL/s':>9} {'ratio':>7}  {'spread':<12} "
          f"{'clear CPU us':>12} {'SSL CPU us':>11} {'ratio':>7}")
    for row in rows:
        spread = f"{row['ratio_min']:.2f}-{row['ratio_max']:.2f}"
        print(f"{row['threads']:>8}  {row['servant']:<8} {row['clear']:>9.0f} {row['ssl']:>9.0f} {row['ratio']:>7.3f}  "
              f"{spread:<12} {row['clear_server_us']:>12.1f} {row['ssl_server_us']:>11.1f} "
              f"{row['server_us_ratio']:>7.2f}")


def print_trouble(rows):
    print(f"SSL calls of one client beside trouble\n{'trouble':<15} {'made':>6} {'calm/s':>8} {'beside/s':>9} "
          f"{'ratio':>6}  {'spread':<12} {'memory':>10} {'files':>6}")
    for row in rows:
        spread = f"{row['ratio_min']:.2f}-{row['ratio_max']:.2f}"
        print(f"{row['kind']:<15} {row['made']:>6} {row['calm']:>8.0f} {row['beside']:>9.0f} {row['ratio']:>6.2f}  "
              f"{spread:<12} {row['memory_grown_kib']:>+6} KiB {row['files_grown']:>+6}")


def calls(bench, options):
    samples = rounds_of(lambda name, threads: bench.calls(name, threads, options.seconds),
                        [name for pair in PAIRS for name in pair], options.rounds)
    rows = pairs_of_rows(samples, "calls_per_second", "server_us_per_call")
    print_pairs("Calls", rows)
    return {"rows": rows, "samples": samples}


def connections(bench, options):
    samples = rounds_of(lambda name, threads: bench.connections(name, threads, options.seconds), list(PAIRS[0]),
                        options.rounds)
    rows = pairs_of_rows(samples, "per_second", "server_us")
    print_pairs("Connections, each with one question", rows)
    return {"rows": rows, "samples": samples}


def trouble(bench, options):
    rows = [beside_trouble(bench, kind, options) for kind in KINDS]
    print_trouble(rows)
    return {"rows": rows}


PARTS = {"calls": calls, "connections": connections, "trouble": trouble}


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--seconds", type=float, default=1.0)
    parser.add_argument("--per-second", type=int, default=100, help="how often trouble is made")
    parser.add_argument("--parts", nargs="+", choices=PARTS, help="what to measure (default: all)")
    parser.add_argument("--json", type=pathlib.Path)
    options = parser.parse_args()
    end_tidily()
    with tempfile.TemporaryDirectory(prefix="qv_bench_") as work:
        try:
            with Bench(options.build.resolve(), pathlib.Path(work)) as bench:
                result = {part: PARTS[part](bench, options) for part in options.parts or PARTS}
        except (Failure, subprocess.CalledProcessError) as failure:
            sys.exit(f"ssl_bench: {failure}")
    if options.json:
        options.json.write_text(json.dumps(result, indent=2) + "\n")
        print(f"written to {options.json}")


if __name__ == "__main__":
    main()
