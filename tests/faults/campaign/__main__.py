"""The command line; run_faults.sh calls it in a mount namespace of its own."""
import argparse
import random
import shutil
import signal
import sys
from pathlib import Path

from . import faults
from .campaign import Campaign

QUICK_MINUTES = 2.5
DEFAULT_MINUTES = 15.0
MOST_MINUTES = 60.0


def parse():
    parser = argparse.ArgumentParser(
        prog="run_faults.sh", usage="run_faults.sh BUILD_DIR WORK_DIR [options]",
        description="Runs agent, services and OSSs on three hosts through faults, and checks after each of them that "
                    "the accounts of requests, events, records and audit balance.")
    parser.add_argument("build", type=Path, metavar="BUILD_DIR")
    parser.add_argument("work", type=Path, metavar="WORK_DIR")
    parser.add_argument("--seed", type=int, help="play the faults of an earlier run (default: by chance)")
    parser.add_argument("--minutes", type=float, default=DEFAULT_MINUTES,
                        help="how long faults are played (default %(default)g, at most 60)")
    parser.add_argument("--quick", action="store_true", help=f"for {QUICK_MINUTES:g} minutes")
    parser.add_argument("--only", default="", metavar="WORD,...",
                        help="only kinds of faults whose name holds one of the words: " +
                             ", ".join(kind.name for kind in faults.KINDS))
    parser.add_argument("--keep-going", action="store_true", help="do not end with the first account that is off")
    settings = parser.parse_args()
    settings.minutes = QUICK_MINUTES if settings.quick else settings.minutes
    if not 0 < settings.minutes <= MOST_MINUTES:
        parser.error("--minutes goes up to 60")
    settings.only = [word for word in settings.only.split(",") if word]
    if settings.only and not any(word in kind.name for kind in faults.KINDS for word in settings.only):
        parser.error("--only names no kind of fault")
    if settings.seed is None:
        settings.seed = random.SystemRandom().randrange(1, 1_000_000)
    settings.source = Path(__file__).resolve().parents[3]
    settings.build = settings.build.resolve()
    settings.work = settings.work.resolve() / "faults"
    return settings


def main():
    settings = parse()
    shutil.rmtree(settings.work, ignore_errors=True)
    settings.work.mkdir(parents=True)
    print(f"==> seed {settings.seed}, {settings.minutes:g} minutes, everything below {settings.work}", flush=True)
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    campaign = Campaign(settings)
    campaign.run()
    return 0 if campaign.report() else 1


if __name__ == "__main__":
    sys.exit(main())
