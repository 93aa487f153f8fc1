"""Reads what a run of the benchmarks has left."""
import json
import pathlib

from .sections import READERS


class Run:
    """One run: its description, and a section for each benchmark that has succeeded."""

    def __init__(self, folder):
        self.folder = pathlib.Path(folder)
        self.about = json.loads((self.folder / "run.json").read_text())
        self.sections = [READERS[one["name"]](self.results(one["name"])) for one in self.about["benchmarks"]
                         if one["error"] is None]
        self.failed = [one for one in self.about["benchmarks"] if one["error"] is not None]

    def results(self, name):
        return json.loads((self.folder / f"{name}.json").read_text())

    @property
    def quick(self):
        return self.about["mode"] == "quick"
