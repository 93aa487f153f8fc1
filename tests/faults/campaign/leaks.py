"""Bounds on what a process may hold once it has recovered, against what it held after its start."""

MORE_FILES = 24  # connections of clients that come and go
MORE_THREADS = 40  # pools that grew while many were served
MORE_RSS_KIB = 96 * 1024  # two checks of passwords take 64 MiB each for a moment
MORE_RSS_SHARE = 0.5


def judge(name, base, sample):
    """Sentences about what has grown out of bounds."""
    problems = []
    bounds = {"files": base["files"] + MORE_FILES, "threads": base["threads"] + MORE_THREADS,
              "rss": int(base["rss"] * (1 + MORE_RSS_SHARE)) + MORE_RSS_KIB}
    for what, unit in (("files", "open files"), ("threads", "threads"), ("rss", "KiB resident")):
        if sample[what] > bounds[what]:
            problems.append(f"{name} has {sample[what]} {unit}; it had {base[what]}, and {bounds[what]} are allowed")
    return problems
