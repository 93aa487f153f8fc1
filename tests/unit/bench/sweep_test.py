import contextlib
import io
import pathlib
import unittest

import bench_path  # noqa: F401
from benchmarks import BENCHMARKS
from report.sections import READERS
from sweep import sweep


def measured(cost, first, limit, rounds=1):
    """A sweep whose cost per unit is cost(units)."""
    @contextlib.contextmanager
    def start():
        yield lambda units: {"costs": {"time": cost(units), "memory": 1}}

    with contextlib.redirect_stderr(io.StringIO()):
        return sweep("events", first, limit, rounds, start)


def units(result):
    return [[sample["units"] for sample in samples] for samples in result["rounds"]]


class SweepTest(unittest.TestCase):
    def test_goes_up_to_the_limit(self):
        result = measured(lambda _: 5, 1, 8)
        self.assertEqual(units(result), [[1, 2, 4, 8]])
        self.assertTrue(result["reached_limit"])

    def test_ends_two_steps_behind_the_bend(self):
        result = measured(lambda count: 5 if count < 4 else 11, 1, 64)
        self.assertEqual(units(result), [[1, 2, 4, 8, 16]])
        self.assertFalse(result["reached_limit"])

    def test_all_rounds_take_the_steps_of_the_first(self):
        costs = iter([5, 5, 11, 11, 11] + 5 * [5])
        self.assertEqual(units(measured(lambda _: next(costs), 1, 64, rounds=2)), 2 * [[1, 2, 4, 8, 16]])


class BenchmarksTest(unittest.TestCase):
    def test_each_has_a_reader_for_the_report(self):
        self.assertEqual({one.name for one in BENCHMARKS}, set(READERS))

    def test_command_holds_the_build_and_the_file_of_results(self):
        build = pathlib.Path("/build")
        for one in BENCHMARKS:
            for quick in (False, True):
                line = one.line(build, build / "results.json", quick)
                self.assertNotIn("JSON", line)
                self.assertTrue(any(word.endswith("/build/results.json") for word in line), line)
                self.assertTrue(line[0].startswith("/build/bin/") or pathlib.Path(line[0]).is_file(), line)


if __name__ == "__main__":
    unittest.main()
