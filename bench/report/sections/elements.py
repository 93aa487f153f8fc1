"""Time and memory of a reply by the number of its elements."""
from ..arithmetic import ratios, spread
from ..model import Plot, Ratio, Section, Table
from ..text import range_of, short
from . import growing

WHAT = ("One reply with more and more elements of seven members each, beside the same servant on the ORB as it is packaged. "
        "Time is a whole call, with a client in a process of its own; memory is what the server occupied at most during "
        "the calls, beyond what it did before.")
LABELS = {"plain": "plain ORB", "seam": "seam", "log off": "library, log off", "log on": "library, log on"}


def of(variant, key, factor=1.0):
    return lambda sample: sample[variant][key] * factor


def per_thousand(variant):
    return lambda sample: sample[variant]["ms"] * 1000 / sample["units"]


def quotient(samples, variant, key="ms"):
    return ratios([sample[variant][key] for sample in samples], [sample["plain"][key] for sample in samples])


def table_row(units, samples):
    values = lambda variant, key, factor=1.0: range_of(spread(map(of(variant, key, factor), samples)))
    return [short(units), *(values(variant, "ms") for variant in LABELS),
            range_of(quotient(samples, "log off")), range_of(quotient(samples, "log on")),
            *(values(variant, "memory_kib", 1 / 1024) for variant in ("plain", "log off", "log on"))]


def read(result):
    section = Section("elements", "Elements in one reply", WHAT)
    lines = lambda value: [growing.series(result, label, value(variant)) for variant, label in LABELS.items()]
    marks = growing.bend_marks(result, {label: per_thousand(variant) for variant, label in LABELS.items()})
    section.plots = [
        Plot("elements_time", "Time of a call by elements in the reply", "elements in the reply", "time of a call [ms]",
             lines(lambda variant: of(variant, "ms")), log_x=True, log_y=True),
        Plot("elements_cost", "Time per thousand elements", "elements in the reply", "time per 1000 elements [ms]",
             lines(per_thousand), log_x=True, bends=marks),
        Plot("elements_memory", "Memory that a reply takes in the server", "elements in the reply", "memory [MiB]",
             lines(lambda variant: of(variant, "memory_kib", 1 / 1024)), log_x=True)]
    section.tables = [Table("", ["Elements", *(f"{label}, ms" for label in LABELS.values()), "log off of plain",
                                 "log on of plain", "memory plain, MiB", "memory log off, MiB", "memory log on, MiB"],
                            [table_row(units, samples) for units, samples in growing.steps(result)])]
    section.sentences = [growing.ended(result)]
    section.bends = [
        growing.bend_sentence(result, f"Time per element, {label}", per_thousand(variant))
        for variant, label in LABELS.items()]
    last_units, last = growing.steps(result)[-1]
    for variant in ("log off", "log on"):
        section.ratios.append(Ratio(f"Reply of {short(last_units)} elements, “{LABELS[variant]}”, of the plain ORB's time",
                                    quotient(last, variant), "times"))
    return section
