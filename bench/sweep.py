"""A quantity that doubles from step to step, and what is measured at each step."""
import sys

from report.arithmetic import doubling, has_bent


def goes_on(samples):
    """Whether no cost per unit has doubled for good so far."""
    return not any(has_bent(sample["costs"][name] for sample in samples) for name in samples[0]["costs"])


def sweep(what, first, limit, rounds, start):
    """Measures `rounds` times. start() is a context that gives a function of the number of units, which returns a
    sample with "costs": the costs per unit by name. The first round goes up to the limit or until a cost has doubled,
    and decides on the steps of the others."""
    steps = list(doubling(first, limit))
    results = []
    for number in range(rounds):
        samples = []
        with start() as measure:
            for units in steps:
                samples.append({"units": units, **measure(units)})
                if number == 0 and not goes_on(samples):
                    break
        steps = [sample["units"] for sample in samples]
        results.append(samples)
        print(f"{what}: round {number + 1} of {rounds} done, up to {steps[-1]}", file=sys.stderr)
    return {"what": what, "limit": limit, "reached_limit": steps[-1] * 2 > limit, "rounds": results}


def print_costs(result, columns):
    """columns: title -> (key of the sample, factor); the medians of the rounds."""
    print(f"{result['what']:>14}  " + "  ".join(f"{title:>16}" for title in columns))
    for place, sample in enumerate(result["rounds"][0]):
        values = []
        for key, factor in columns.values():
            rounds = sorted(samples[place][key] for samples in result["rounds"])
            values.append(rounds[len(rounds) // 2] * factor)
        print(f"{sample['units']:>14}  " + "  ".join(f"{value:16.2f}" for value in values))
    print("up to the limit" if result["reached_limit"] else "ended where a cost per unit had doubled")
