"""Memory of events that wait."""
from ..arithmetic import Spread, spread
from ..model import Plot, Ratio, Section, Table
from ..text import number, range_of, short
from . import growing

SERVICE = ("Events wait in the notification service for a consumer that never answers. Memory is what the service "
           "occupies; per event, what it occupies beyond what it did before the first one.")
AGENT = ("Events wait in the agent's buffer while its event channel is out of service. Memory is what the agent occupies; "
         "per event, what it occupies beyond what it did before the first one.")


def memory(sample):
    return sample["rss_kib"] / 1024


def per_event(sample):
    return sample["octets_per_event"]


def read(name, title, what, result, push_key):
    def push(sample):
        return sample[push_key]

    event = result["event_octets"]
    empty = spread(samples[0]["empty_kib"] / 1024 for samples in result["rounds"])
    rows = [["0", range_of(empty), "", ""]] + [
        [short(units), range_of(spread(map(memory, samples))), range_of(spread(map(per_event, samples))),
         range_of(spread(map(push, samples)))] for units, samples in growing.steps(result)]
    added = growing.added_per_unit(result, lambda sample: sample["rss_kib"] * 1024)
    section = Section(name, title, what)
    section.ratios = [Ratio(f"{title}: an event that waits, of its size as octets", added.scaled(1 / event), "times"),
                      Ratio(f"{title}: an event that waits", added, "octets")]
    section.sentences = [
        growing.ended(result), f"The event as octets (CDR) has {event}."]
    section.bends = [
        growing.bend_sentence(result, f"{title}, memory per event", per_event),
        growing.bend_sentence(result, f"{title}, time of a push", push)]
    section.tables = [Table("", ["Events that wait", "resident memory, MiB", "octets per event", "push p50, µs"], rows)]
    costs = {"memory per event": per_event, "push": push}
    memory_line = growing.series(result, "resident memory", memory)
    memory_line.points.insert(0, (0, empty))
    section.plots = [
        Plot(f"{name}_memory", "Resident memory by events that wait", "events that wait", "resident memory [MiB]",
             [memory_line], bends=growing.bend_marks(result, {"memory per event": per_event})),
        Plot(f"{name}_per_event", "Memory of an event that waits", "events that wait", "memory per event [octets]",
             [growing.series(result, "memory per event", per_event),
              growing.series(result, "the event as octets", lambda _: event)], log_x=True,
             bends=growing.bend_marks(result, costs))]
    return section


def read_service(result):
    section = read("service_backlog", "Events waiting in the notification service", SERVICE, result, "push_p50_us")
    left = [Spread(*(spread(one[key] for one in result["left"]).scaled(1 / 1024)))
            for key in ("full_kib", "destroyed_kib")]
    section.sentences.append(f"Once the channel is destroyed the service occupies {number(left[1].median)} MiB of the "
                             f"{number(left[0].median)} MiB before.")
    return section


def read_agent(result):
    return read("agent_backlog", "Events waiting in the agent's buffer", AGENT, result, "push_us")
