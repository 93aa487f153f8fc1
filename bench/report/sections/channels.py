"""A notification service by the number of channels."""
from ..arithmetic import ratios, spread
from ..model import Plot, Ratio, Section, Table
from ..text import range_of, short
from . import growing

WHAT = ("Channels of one notification service, each with one consumer; events are pushed into one after the other. All "
        "consumers live in one process. Persistent channels are kept in the store as they are made.")


def making(sample):
    return sample["create_us"] / 1000


def deliveries(sample):
    return sample["deliveries_per_second"]


def delivery(sample):
    return 1e6 / deliveries(sample)


def memory(sample):
    return sample["rss_kib"] / 1024


def marked(results, costs):
    return [(at, f"{kind}: {label}") for kind, result in results.items()
            for at, label in growing.bend_marks(result, costs)]


def table(kind, result):
    return Table(f"Channels, {kind}", ["Channels", "making, ms", "making p99, ms", "connecting a consumer and a supplier, ms",
                                       "plain call, ms", "deliveries/s", "resident memory, MiB", "KiB per channel"], [
        [short(units), *(range_of(spread(map(value, samples))) for value in (
            making, lambda s: s["create_p99_us"] / 1000, lambda s: s["connect_us"] / 1000,
            lambda s: s["plain_call_us"] / 1000, deliveries, memory, lambda s: s["octets_per_channel"] / 1024))]
        for units, samples in growing.steps(result)])


def read(results):
    section = Section("channels", "Channels", WHAT)
    lines = lambda value: [growing.series(result, kind, value) for kind, result in results.items()]
    section.plots = [
        Plot("channels_making", "Making a channel by channels there are", "channels", "time to make one, p50 [ms]",
             lines(making), log_x=True, bends=marked(results, {"making": making})),
        Plot("channels_rate", "Deliveries a second by channels", "channels", "deliveries per second", lines(deliveries),
             log_x=True, bends=marked(results, {"delivery": delivery})),
        Plot("channels_memory", "Resident memory by channels", "channels", "resident memory [MiB]", lines(memory),
             log_x=True)]
    for kind, result in results.items():
        section.tables.append(table(kind, result))
        section.sentences.append(f"{kind[0].upper()}{kind[1:]}: {growing.ended(result)}")
        section.bends += [
            growing.bend_sentence(result, f"Making a channel, {kind}", making),
            growing.bend_sentence(result, f"Time per delivery, {kind}", delivery)]
        first, last = growing.steps(result)[0], growing.steps(result)[-1]
        call = [sample["plain_call_us"] / 1000 for sample in last[1]]
        section.ratios += [
            Ratio(f"Making a channel ({kind}), of a plain call", ratios(map(making, last[1]), call), "times"),
            Ratio(f"Deliveries with {short(last[0])} channels ({kind}), of those with {short(first[0])}",
                  ratios(map(deliveries, last[1]), map(deliveries, first[1]))),
            Ratio(f"Memory of a channel with its consumer ({kind})",
                  growing.added_per_unit(result, lambda sample: sample["rss_kib"]), "KiB")]
    return section
