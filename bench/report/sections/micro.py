"""Results of google-benchmark, which several benchmarks are written with."""
from ..arithmetic import spread
from ..model import Plot, Section, Series, Table
from ..text import range_of

IN_MICROSECONDS = {"ns": 1e-3, "us": 1.0, "ms": 1e3, "s": 1e6}


def times(results):
    """Name -> microseconds of each repetition, in the order in which they were measured."""
    found = {}
    for run in results["benchmarks"]:
        if run.get("run_type") == "iteration":
            name = "/".join(part for part in run["run_name"].split("/") if not part.startswith(("manual_time", "iterations:")))
            found.setdefault(name, []).append(run["real_time"] * IN_MICROSECONDS[run["time_unit"]])
    return found


def read(results, name, title, what, labels):
    """labels: name of a measured function -> what it stands for."""
    found = {labels.get(key, key): spread(values) for key, values in times(results).items()}
    return Section(name, title, what, tables=[
        Table("", ["Step", "µs"], [[label, range_of(value)] for label, value in found.items()])], plots=[
            Plot(name, title, "", "time [µs]", bars=True, series=[Series("time", list(found.items()))])])
