import unittest

import bench_path  # noqa: F401
from report.arithmetic import Spread
from report.model import Plot, Series
from report.page import page
from report.plots import apart, fit_into_page, script_of, wrapped
from report.sections import growing, request_path
from report.summary import summary
from report.text import number, range_of, short


def sweep(costs, reached_limit=True):
    """Of one round: (units, cost)."""
    return {"what": "events", "limit": 64, "reached_limit": reached_limit,
            "rounds": [[{"units": units, "cost": cost} for units, cost in costs]]}


def cost(sample):
    return sample["cost"]


class TextTest(unittest.TestCase):
    def test_numbers_have_three_digits(self):
        self.assertEqual([number(value) for value in (12345.6, 99.94, 1.234, 0.01234, 0)],
                         ["12,346", "99.9", "1.23", "0.0123", "0.00"])

    def test_counts_are_short(self):
        self.assertEqual([short(value) for value in (16, 2000, 2048, 320000, 1500000)],
                         ["16", "2k", "2048", "320k", "1.5M"])

    def test_ranges_name_the_spread_if_there_is_one(self):
        self.assertEqual(range_of(Spread(1, 2, 3)), "2.00 (1.00–3.00)")
        self.assertEqual(range_of(Spread(2, 2, 2)), "2.00")
        self.assertEqual(range_of(None), "–")


class SweepTest(unittest.TestCase):
    def test_says_where_a_cost_bends(self):
        sentence = growing.bend_sentence(sweep([(8, 5), (16, 5), (32, 11), (64, 12)]), "Push", cost)
        self.assertEqual(sentence, "Push: bends at 32 events (twice the least before); at 64 it is 2.40 times.")

    def test_says_that_a_cost_does_not_bend(self):
        sentence = growing.bend_sentence(sweep([(8, 5), (16, 4), (32, 6)]), "Push", cost)
        self.assertEqual(sentence, "Push: no bend up to 32 events, where it is 1.50 times the least.")

    def test_judges_by_the_median_of_the_rounds(self):
        result = sweep([(8, 5), (16, 5), (32, 50)])
        result["rounds"] += 2 * sweep([(8, 5), (16, 5), (32, 6)])["rounds"]
        self.assertIsNone(growing.bend_of(result, cost))

    def test_tells_what_a_unit_of_the_last_step_added(self):
        # The first units found room: 0 for 8 of them, 100 for the next 8, 400 for the last 16.
        result = sweep([(8, 1000), (16, 1100), (32, 1500)])
        self.assertEqual(growing.added_per_unit(result, cost), Spread(25, 25, 25))

    def test_says_how_it_ended(self):
        self.assertIn("limit of 16", growing.ended(sweep([(8, 5), (16, 5)])))
        self.assertIn("had doubled", growing.ended(sweep([(8, 5), (16, 11)], reached_limit=False)))


class PlotTest(unittest.TestCase):
    lines = Plot("one", "A plot", "events", "time [ms]", [Series("a", [(8, Spread(1, 2, 3)), (16, Spread(2, 3, 4))])],
                 log_x=True, bends=[(16, "a"), (16, "b")])

    def test_script_holds_the_data_with_its_spread(self):
        self.assertIn("\n8 2 1 3\n16 3 2 4\n", script_of(self.lines))

    def test_script_names_axes_and_bends(self):
        script = script_of(self.lines)
        self.assertIn('set ylabel "time [ms]"', script)
        self.assertIn('"bends: a; b"', script)

    def test_names_on_a_linear_axis_do_not_touch(self):
        self.assertEqual(apart([0, 10, 20, 40, 80, 160, 640]), [640, 160, 80, 20])

    def test_bars_without_a_value_leave_a_gap(self):
        bars = Plot("two", "", "", "", [Series("a", [("x", Spread(1, 1, 1)), ("y", Spread(1, 1, 1))]),
                                        Series("b", [("y", Spread(2, 2, 2))])], bars=True)
        self.assertIn('"x" ? ? ?', script_of(bars))

    def test_labels_of_bars_are_broken_at_spaces(self):
        self.assertEqual(wrapped("library, log and spans on", 13), "library, log\nand spans on")

    def test_svg_takes_the_colour_of_the_page_and_has_its_own_names(self):
        svg = fit_into_page("<?xml version='1.0'?><!DOCTYPE x><svg><title>Gnuplot</title><g id='gp' color='black' fill='black'/>"
                            "<use xlink:href='#gp'/></svg>", self.lines)
        self.assertEqual(svg, "<svg><title>A plot</title><g id='one_gp'  fill='currentColor'/>"
                              "<use xlink:href='#one_gp'/></svg>")


class Run:
    """A run of one benchmark that succeeded and one that failed."""

    def __init__(self, quick):
        row = {"plain ORB": {"calls_per_second": 1000.0, "server_us_per_call": 10.0},
               "library": {"calls_per_second": 800.0, "server_us_per_call": 15.0}}
        self.about = {"started": "now", "seconds": 60, "mode": "full", "machine": {"CPU": "fast <one>"},
                      "load_before": 0.0, "load_after": 1.0}
        self.quick = quick
        self.failed = [{"name": "ssl", "error": "no <port>"}]
        self.sections = [request_path.read({
            "rows": [{"variant": variant} for variant in row],
            "samples": [{"round": number, "threads": threads, "variants": row}
                        for number in range(2) for threads in (1, 4)]})]


class PageTest(unittest.TestCase):
    def page(self, quick=False):
        run = Run(quick)
        return page(run, {plot.name: f"<svg>{plot.name}</svg>" for plot in run.sections[0].plots})

    def test_holds_ratio_machine_and_drawing(self):
        text = self.page()
        self.assertIn("<td>1.50 times</td>", text)
        self.assertIn("fast &lt;one&gt;", text)
        self.assertIn("<svg>request_cpu</svg>", text)

    def test_needs_nothing_from_elsewhere(self):
        self.assertNotIn("http", self.page())
        self.assertNotIn("src=", self.page())

    def test_tells_a_quick_run_and_what_failed(self):
        self.assertIn("Quick run.", self.page(quick=True))
        self.assertNotIn("Quick run.", self.page())
        self.assertIn("<b>ssl</b> failed: no &lt;port&gt;", self.page())

    def test_summary_holds_the_ratio(self):
        self.assertIn("| 1.50 times |", summary(Run(False)))
        self.assertIn("**ssl** failed", summary(Run(False)))


if __name__ == "__main__":
    unittest.main()
