"""What the report computes from measured values."""
import statistics
from typing import NamedTuple

BEND_FACTOR = 2.0


class Spread(NamedTuple):
    """The values of the rounds: least, median, greatest."""
    least: float
    median: float
    greatest: float

    def scaled(self, factor):
        return Spread(*(value * factor for value in self))


def spread(values):
    """The spread of one or more values."""
    values = list(values)
    return Spread(min(values), statistics.median(values), max(values))


def ratios(above, below):
    """The spread of above/below, taken within each round; rounds in which `below` is 0 say nothing. None when no
    round is left."""
    quotients = [a / b for a, b in zip(above, below, strict=True) if b != 0]
    return spread(quotients) if quotients else None


def doubling(first, limit):
    """first, its double, and so on, up to the limit."""
    units = first
    while units <= limit:
        yield units
        units *= 2


def bend(points, factor=BEND_FACTOR):
    """Where a cost per unit bends: the first number of units at which it is `factor` times the least cost at fewer
    units, and still is at the next step, so that no outlier is taken for a bend. None when it nowhere does.

    points: (units, cost per unit), with units that grow."""
    points = list(points)
    for place in range(1, len(points) - 1):
        least = min(cost for _, cost in points[:place])
        if least > 0 and min(points[place][1], points[place + 1][1]) >= factor * least:
            return points[place][0]
    return None


def has_bent(costs, factor=BEND_FACTOR, steps=3):
    """Whether the last `steps` of a growing sweep's costs per unit are all `factor` times the least before them, so
    that going on shows nothing new."""
    costs = list(costs)
    if len(costs) <= steps:
        return False
    least = min(costs[:-steps])
    return least > 0 and min(costs[-steps:]) >= factor * least


def growth(first, last):
    """(units, total) at two places: what each unit between them added."""
    return (last[1] - first[1]) / (last[0] - first[0])
