"""Results of sweeps: what is measured while a quantity doubles from step to step."""
from ..arithmetic import bend, growth, spread
from ..model import Series
from ..text import number, short


def steps(result):
    """(units, the samples of all rounds) for each step."""
    return [(samples[0]["units"], samples) for samples in zip(*result["rounds"])]


def series(result, label, value):
    """value: of one sample."""
    return Series(label, [(units, spread(map(value, samples))) for units, samples in steps(result)])


def bend_of(result, cost):
    """Where the medians of cost(sample), a cost per unit, bend; None when they don't."""
    return bend([(units, spread(map(cost, samples)).median) for units, samples in steps(result)])


def bend_sentence(result, what, cost):
    """What is to be said of a cost per unit."""
    last = result["rounds"][0][-1]["units"]
    unit = result["what"]
    at = bend_of(result, cost)
    medians = [spread(map(cost, samples)).median for _, samples in steps(result)]
    change = number(medians[-1] / min(medians)) if min(medians) > 0 else "?"
    if at is None:
        return f"{what}: no bend up to {short(last)} {unit}, where it is {change} times the least."
    return f"{what}: bends at {short(at)} {unit} (twice the least before); at {short(last)} it is {change} times."


def bend_marks(result, costs):
    """Marks for a plot; costs: label -> cost per unit of a sample."""
    found = [(bend_of(result, cost), label) for label, cost in costs.items()]
    return [(at, label) for at, label in found if at is not None]


def added_per_unit(result, value):
    """The spread over the rounds of what each unit of the last step added to value(sample). First units may find room
    that the process had anyway."""
    return spread(growth((before["units"], value(before)), (last["units"], value(last)))
                  for before, last in (samples[-2:] for samples in result["rounds"]))


def ended(result):
    """How the sweep ended."""
    last = short(result["rounds"][0][-1]["units"])
    if result["reached_limit"]:
        return f"The sweep went up to its limit of {last} {result['what']}."
    return f"The sweep ended at {last} {result['what']}, where a cost per unit had doubled; its limit was " \
           f"{short(result['limit'])}."
