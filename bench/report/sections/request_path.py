"""Calls and CPU time per call by what the library is set to do."""
from ..arithmetic import ratios, spread
from ..model import Plot, Ratio, Section, Series, Table
from ..text import number, range_of

PLAIN = "plain ORB"
WHAT = ("A small query: a name, a number, a list of structures, an any, a text out. The same servant on the ORB as it is "
        "packaged, on the seam, and behind the library with more and more of it switched on; client and server are "
        "processes on this machine.")


def values(rows, variant, key):
    return [row[variant][key] for row in rows]


def plot(name, title, label, by_threads, variants, key):
    return Plot(name, title, "", label, bars=True, series=[
        Series(f"{threads} client thread{'s' if threads > 1 else ''}",
               [(variant, spread(values(rows, variant, key))) for variant in variants])
        for threads, rows in by_threads.items()])


def table(threads, rows, variants):
    lines = []
    for variant in variants:
        cpu, calls = values(rows, variant, "server_us_per_call"), values(rows, variant, "calls_per_second")
        plain_cpu, plain_calls = values(rows, PLAIN, "server_us_per_call"), values(rows, PLAIN, "calls_per_second")
        added = [a - b for a, b in zip(cpu, plain_cpu)]
        lines.append([variant, range_of(spread(calls)), range_of(ratios(calls, plain_calls)), range_of(spread(cpu)),
                      range_of(ratios(cpu, plain_cpu)), number(spread(added).median)])
    return Table(f"{threads} client thread{'s' if threads > 1 else ''}",
                 ["Server", "calls/s", "of the plain ORB's", "CPU per call, µs", "times the plain ORB's", "added, µs"],
                 lines)


def read(results):
    by_threads = {}
    for sample in results["samples"]:
        by_threads.setdefault(sample["threads"], []).append(sample["variants"])
    variants = list(results["samples"][0]["variants"])
    variants.sort(key=lambda variant: [row["variant"] for row in results["rows"]].index(variant))
    section = Section("request_path", "Request path: CPU per call by log setting", WHAT)
    for threads, rows in by_threads.items():
        section.tables.append(table(threads, rows, variants))
    rows = by_threads[1]
    for variant in variants[1:]:
        section.ratios.append(Ratio(f"Server CPU per call, “{variant}”, of the plain ORB's",
                                    ratios(values(rows, variant, "server_us_per_call"),
                                           values(rows, PLAIN, "server_us_per_call")), "times"))
    section.plots = [
        plot("request_cpu", "CPU per call", "server CPU per call [µs]", by_threads, variants, "server_us_per_call"),
        plot("request_rate", "Calls a second", "calls per second", by_threads, variants, "calls_per_second")]
    return section
