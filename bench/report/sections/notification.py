"""Throughput and latency of events by the number of consumers."""
from ..arithmetic import ratios, spread
from ..model import Plot, Ratio, Section, Series, Table
from ..text import number, range_of

WHAT = ("Events with 12 filterable properties. Throughput is from the first push to the last receipt, as fast as it goes; "
        "latency is at 200 events a second. “Straight” is the same supplier calling each consumer itself, with no service "
        "between.")


def values(rounds, kind, key):
    return [one[kind][key] for one in rounds]


def rates(rounds):
    return values(rounds, "service", "deliveries_per_second"), values(rounds, "straight", "deliveries_per_second")


def line(label, by_count, value):
    return Series(label, [(count, spread(value(rounds))) for count, rounds in by_count.items()])


def plots(by_count):
    paced = lambda key: lambda rounds: [v / 1000 for v in values(rounds, "paced", key)]
    return [
        Plot("events_rate", "Deliveries a second by consumers", "consumers", "deliveries per second", log_x=True, series=[
            line("through the service", by_count, lambda rounds: rates(rounds)[0]),
            line("straight into the consumers", by_count, lambda rounds: rates(rounds)[1])]),
        Plot("events_latency", "Latency by consumers, at 200 events a second", "consumers", "time [ms]", log_x=True,
             log_y=True, series=[
                 line("push until answered, p50", by_count, paced("push_p50_us")),
                 line("push until answered, p99", by_count, paced("push_p99_us")),
                 line("push until received, p50", by_count, paced("receipt_p50_us")),
                 line("push until received, p99", by_count, paced("receipt_p99_us"))])]


def row(count, rounds):
    service, straight = rates(rounds)
    paced = lambda key: range_of(spread(values(rounds, "paced", key)).scaled(1 / 1000))
    return [str(count), range_of(spread(service)), range_of(spread(straight)), range_of(ratios(service, straight)),
            paced("push_p50_us"), paced("push_p99_us"), paced("receipt_p50_us"), paced("receipt_p99_us"),
            number(spread(values(rounds, "service", "service_mib")).median)]


def others(section, rounds):
    hung = ratios(values(rounds, "with_hung", "deliveries_per_second"),
                  values(rounds, "without_hung", "deliveries_per_second"))
    push = ratios(values(rounds, "push_event", "push_event_us"), values(rounds, "push_event", "raw_us"))
    drain = spread(one["drain"]["events"] / one["drain"]["seconds"] for one in rounds)
    events = number(rounds[0]["drain"]["events"])
    section.ratios += [Ratio("Deliveries to 15 consumers beside one that hangs, of those without it", hung),
                       Ratio("The library's PushEvent, of a push straight into the channel", push, "times")]
    section.tables.append(Table("Beside", ["Figure", "value"], [
        ["15 consumers beside one that hangs, of their rate without it", range_of(hung)],
        ["PushEvent, times a push straight into the channel", range_of(push)],
        [f"emptying the agent's buffer of {events} events, events/s", range_of(drain)]]))


def read(results):
    by_count = {int(count): rounds for count, rounds in results["consumers"].items()}
    section = Section("notification", "Events by number of consumers", WHAT, plots=plots(by_count), tables=[Table(
        "", ["Consumers", "deliveries/s", "straight/s", "service of straight", "push p50, ms", "push p99, ms",
             "receipt p50, ms", "receipt p99, ms", "service, MiB"],
        [row(count, rounds) for count, rounds in by_count.items()])])
    for count in (min(by_count), max(by_count)):
        section.ratios.append(Ratio(f"Deliveries through the service to {count} consumer{'s' if count > 1 else ''}, of "
                                    "those straight", ratios(*rates(by_count[count]))))
    others(section, results["others"])
    return section
