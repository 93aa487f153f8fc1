"""The record of one large reply, beside marshalling it."""
from ..arithmetic import ratios, spread
from ..model import Plot, Ratio, Section, Series, Table
from ..text import number, range_of

WHAT = ("A reply of octets, marshalled once in memory, and its record. Memory is the peak while the record is made, beyond "
        "what the process had and beyond the text itself.")


def read(results):
    samples = results["samples"]
    marshal = [sample["marshal_ms"] for sample in samples]
    record = [sample["record_ms"] for sample in samples]
    memory = [sample["memory_beyond_text_mb"] for sample in samples]
    return Section(
        "large_reply", "Operation record: a reply of many megabytes", WHAT,
        ratios=[Ratio("Record of a large reply, of the time to marshal it", ratios(record, marshal), "times")],
        tables=[Table("", ["Figure", "value"], [
            ["marshalling, ms", range_of(spread(marshal))], ["record, ms", range_of(spread(record))],
            ["record, times marshalling", range_of(ratios(record, marshal))],
            ["text of the record, MB", number(results["text_mb"])],
            ["memory beyond the text, MB", range_of(spread(memory))]])],
        plots=[Plot("large_reply", "A large reply", "", "time [ms]", bars=True, series=[
            Series("time", [("marshalling", spread(marshal)), ("record", spread(record))])])])
