import unittest

import bench_path  # noqa: F401
from report.arithmetic import Spread, bend, doubling, growth, has_bent, ratios, spread


class SpreadTest(unittest.TestCase):
    def test_is_least_median_and_greatest(self):
        self.assertEqual(spread([9, 1, 5]), Spread(1, 5, 9))

    def test_median_of_an_even_number_lies_between(self):
        self.assertEqual(spread([1, 2, 4, 10]).median, 3)

    def test_takes_any_iterable_and_one_value(self):
        self.assertEqual(spread(value for value in [7]), Spread(7, 7, 7))

    def test_of_nothing_is_an_error(self):
        with self.assertRaises(ValueError):
            spread([])

    def test_is_scaled_as_a_whole(self):
        self.assertEqual(Spread(1, 2, 3).scaled(10), Spread(10, 20, 30))


class RatiosTest(unittest.TestCase):
    def test_are_taken_within_each_round(self):
        # The machine was ten times slower in the second round: the ratio stays.
        self.assertEqual(ratios([2, 20], [1, 10]), Spread(2, 2, 2))

    def test_leave_out_rounds_without_a_counterpart(self):
        self.assertEqual(ratios([2, 5], [1, 0]), Spread(2, 2, 2))

    def test_are_none_when_no_round_is_left(self):
        self.assertIsNone(ratios([1], [0]))

    def test_need_as_many_rounds_on_both_sides(self):
        with self.assertRaises(ValueError):
            ratios([1, 2], [1])


class DoublingTest(unittest.TestCase):
    def test_goes_up_to_the_limit_and_not_beyond(self):
        self.assertEqual(list(doubling(1000, 8000)), [1000, 2000, 4000, 8000])
        self.assertEqual(list(doubling(3, 20)), [3, 6, 12])

    def test_is_empty_below_the_first(self):
        self.assertEqual(list(doubling(10, 9)), [])


class BendTest(unittest.TestCase):
    def test_of_a_constant_cost_is_nowhere(self):
        self.assertIsNone(bend([(1, 5.0), (2, 5.1), (4, 4.9), (8, 5.0)]))

    def test_is_where_the_cost_has_doubled_and_stays_so(self):
        self.assertEqual(bend([(1, 5), (2, 5), (4, 9.9), (8, 10), (16, 19)]), 8)

    def test_is_not_a_single_outlier(self):
        self.assertIsNone(bend([(1, 5), (2, 50), (4, 5), (8, 5)]))

    def test_needs_a_step_behind_it(self):
        self.assertIsNone(bend([(1, 5), (2, 5), (4, 10)]))

    def test_counts_from_the_least_cost_so_far(self):
        # Fixed costs make the first units dear: from 40 down to 10, and up again.
        self.assertEqual(bend([(1, 40), (2, 20), (4, 10), (8, 15), (16, 21), (32, 30)]), 16)

    def test_ignores_costs_of_zero(self):
        self.assertIsNone(bend([(1, 0), (2, 3), (4, 3)]))

    def test_takes_another_factor(self):
        self.assertEqual(bend([(1, 10), (2, 14), (4, 16), (8, 16)], factor=1.5), 4)


class HasBentTest(unittest.TestCase):
    def test_needs_three_steps_in_a_row(self):
        self.assertFalse(has_bent([5, 5, 10, 12]))
        self.assertTrue(has_bent([5, 5, 10, 12, 11]))
        self.assertFalse(has_bent([5, 10, 12, 9]))

    def test_needs_a_step_to_compare_with(self):
        self.assertFalse(has_bent([10, 12, 11]))
        self.assertTrue(has_bent([5, 10, 12, 11]))


class GrowthTest(unittest.TestCase):
    def test_is_what_a_unit_adds(self):
        self.assertEqual(growth((10, 1000), (110, 3000)), 20)


if __name__ == "__main__":
    unittest.main()
