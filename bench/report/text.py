"""Numbers as a reader wants them."""


def number(value):
    """Three digits that mean something, no exponent."""
    size = abs(value)
    if size >= 100:
        return f"{value:,.0f}"
    if size >= 10:
        return f"{value:.1f}"
    if size >= 1 or size == 0:
        return f"{value:.2f}"
    return f"{value:.3g}" if size >= 0.001 else f"{value:.1g}"


def short(value):
    """A count on an axis: 16, 2k, 2048, 320k, 1.5M."""
    for limit, letter in ((1e6, "M"), (1e3, "k")):
        if value >= limit and value % (limit / 10) == 0:
            return f"{value / limit:g}{letter}"
    return f"{value:g}"


def range_of(spread):
    """The median with least and greatest: 12.3 (11.9–13.0); a dash for None."""
    if spread is None:
        return "–"
    if spread.least == spread.greatest:
        return number(spread.median)
    return f"{number(spread.median)} ({number(spread.least)}–{number(spread.greatest)})"
