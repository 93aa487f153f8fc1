"""SSL beside calls in clear, and clients beside peers that make trouble."""
from ..arithmetic import ratios, spread
from ..model import Plot, Ratio, Section, Series, Table
from ..text import range_of

WHAT = ("The same calls in clear and by SSL with certificates on both sides, as many connections as go, each with a whole "
        "handshake, and an SSL client's calls beside peers that misbehave 100 times a second.")
SERVANTS = ("seam", "library")


def pairs(part, servant, threads, key):
    """Values in clear and by SSL, round by round."""
    rows = [sample["variants"] for sample in part["samples"] if sample["threads"] == threads]
    clear, by_ssl = f"{servant}, in clear", f"{servant}, SSL"
    if clear not in rows[0]:
        return None
    return [row[clear][key] for row in rows], [row[by_ssl][key] for row in rows]


def all_pairs(part, key):
    """(servant, threads) -> values in clear and by SSL."""
    threads = sorted({sample["threads"] for sample in part["samples"]})
    found = {(servant, count): pairs(part, servant, count, key) for servant in SERVANTS for count in threads}
    return {name: pair for name, pair in found.items() if pair}


def label(name):
    servant, threads = name
    return f"{servant}, {threads} thread{'s' if threads > 1 else ''}"


def table(title, part, rate, cpu):
    rates, costs = all_pairs(part, rate), all_pairs(part, cpu)
    rows = []
    for name, (clear, by_ssl) in rates.items():
        clear_cpu, ssl_cpu = costs[name]
        rows.append([label(name), range_of(spread(clear)), range_of(spread(by_ssl)), range_of(ratios(by_ssl, clear)),
                     range_of(spread(clear_cpu)), range_of(spread(ssl_cpu))])
    return Table(title, ["Server, clients", "in clear, a second", "by SSL, a second", "SSL of clear",
                         "CPU in clear, µs", "CPU by SSL, µs"], rows)


def plot(name, title, y_label, part, key):
    found = all_pairs(part, key)
    return Plot(name, title, "", y_label, bars=True, series=[
        Series("in clear", [(label(who), spread(clear)) for who, (clear, _) in found.items()]),
        Series("by SSL", [(label(who), spread(by_ssl)) for who, (_, by_ssl) in found.items()])])


def add_trouble(section, rows):
    ratio = {row["kind"]: spread(sample["ratio"] for sample in row["samples"]) for row in rows}
    section.tables.append(Table("SSL calls of one client beside trouble", [
        "Trouble", "made", "calls/s without", "calls/s beside", "ratio", "memory grown, KiB", "files grown"], [
            [row["kind"], str(row["made"]), range_of(spread(s["calm"] for s in row["samples"])),
             range_of(spread(s["beside"] for s in row["samples"])), range_of(ratio[row["kind"]]),
             str(row["memory_grown_kib"]), str(row["files_grown"])] for row in rows]))
    section.plots.append(Plot("ssl_trouble", "SSL calls beside trouble", "", "calls, of those without trouble",
                              bars=True, series=[Series("ratio", list(ratio.items()))]))
    worst = min(ratio, key=lambda kind: ratio[kind].median)
    section.ratios.append(Ratio(f"SSL calls beside the worst trouble ({worst}), of those without", ratio[worst]))


def read(results):
    section = Section("ssl", "SSL", WHAT)
    if "calls" in results:
        section.tables.append(table("Calls", results["calls"], "calls_per_second", "server_us_per_call"))
        section.plots.append(plot("ssl_calls", "Calls in clear and by SSL", "calls per second", results["calls"],
                                  "calls_per_second"))
        clear, by_ssl = pairs(results["calls"], "library", 1, "calls_per_second")
        section.ratios.append(Ratio("Calls a second by SSL, of those in clear (library, 1 thread)",
                                    ratios(by_ssl, clear)))
    if "connections" in results:
        section.tables.append(table("Connections, each with one question", results["connections"], "per_second",
                                    "server_us"))
        section.plots.append(plot("ssl_connections", "New connections", "connections per second",
                                  results["connections"], "per_second"))
        clear, by_ssl = pairs(results["connections"], "seam", 1, "per_second")
        section.ratios.append(Ratio("New connections by SSL, of those in clear (1 thread)", ratios(by_ssl, clear)))
    if "trouble" in results:
        add_trouble(section, results["trouble"]["rows"])
    return section
