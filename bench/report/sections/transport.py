"""What handing a span over costs."""
from . import micro

WHAT = ("What the stand-alone recorder costs the thread of a request: handing a span over at 10,000 a second while the "
        "file is written beside it, and the parts of that.")
LABELS = {"Lookup": "look up the recorder", "NewId": "make an id", "CopyOfSpan": "copy a span",
          "LineOfSpan": "print a span", "ReportSpan": "hand a span over"}


def read(results):
    return micro.read(results, "span_transport", "Call chain: handing a span over", WHAT, LABELS)
