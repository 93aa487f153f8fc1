"""What printing a call's parameters costs."""
from . import micro

WHAT = ("The text of five parameters, among them a list of structures and an any, as the operation log holds it; nothing "
        "is written.")
LABELS = {"PrintParameters/threads:1": "1 thread", "PrintParameters/threads:2": "2 threads at once"}


def read(results):
    return micro.read(results, "operation_record", "Operation record: printing the parameters", WHAT, LABELS)
