"""Makes report.html and report.md of the results in a folder.

usage: python3 bench/report RESULTS
"""
import pathlib
import sys

sys.dont_write_bytecode = True
if not __package__:
    sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent))

from report.collect import Run  # noqa: E402
from report.page import page  # noqa: E402
from report.plots import PlotError, draw  # noqa: E402
from report.summary import summary  # noqa: E402


def write_report(folder):
    """The names of the files that it has written. Throws PlotError."""
    folder = pathlib.Path(folder)
    run = Run(folder)
    drawings = {plot.name: draw(plot) for section in run.sections for plot in section.plots}
    files = folder / "report.html", folder / "report.md"
    files[0].write_text(page(run, drawings))
    files[1].write_text(summary(run))
    return files


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__.strip())
    try:
        for file in write_report(sys.argv[1]):
            print(f"written: {file}")
    except (PlotError, OSError, KeyError) as problem:
        sys.exit(f"report: {problem}")


if __name__ == "__main__":
    main()
