"""What the span of a request costs."""
from . import micro

WHAT = ("Request and reply together, in a call on an OSS's session: finding out who calls, building the span, handing it "
        "to a recorder that forgets it; and what remains when tracing is off.")
LABELS = {"Caller": "who calls", "Span": "whole span", "TracingOff": "tracing off"}


def read(results):
    return micro.read(results, "call_chain", "Call chain: the span of a request", WHAT, LABELS)
