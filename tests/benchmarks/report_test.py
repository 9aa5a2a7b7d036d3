# SPDX-License-Identifier: Apache-2.0
"""Tests of the report's arithmetic, on output as the programs print it."""

import json
import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "benchmarks"))

import arithmetic
import document
from arithmetic import Measured, Pair
from measure import Report


def measured(operation, size, instructions, allocations=(1, 1)):
    return Measured(operation, size, Pair(2000, 1000), Pair(*instructions), Pair(*allocations))


class TimesTest(unittest.TestCase):
    def test_the_median_of_the_repetitions_counts(self):
        runs = [{"name": "a b/8/product/manual_time", "run_type": "iteration", "real_time": time,
                 "cpu_time": 77, "time_unit": "us"} for time in (9, 1, 2)]
        runs.append({"name": "a b/8/product/manual_time_mean", "run_type": "aggregate",
                     "real_time": 4, "time_unit": "us"})
        runs.append({"name": "a b/8/floor", "run_type": "iteration", "real_time": 77,
                     "cpu_time": 500, "time_unit": "ns"})
        times = arithmetic.median_times(json.dumps({"benchmarks": runs}))
        self.assertEqual(times, {"a b/8/product": 2000, "a b/8/floor": 500})

    def test_both_sides_make_a_pair(self):
        both = arithmetic.pairs({"a b/8/product": 3, "a b/8/floor": 2})
        self.assertEqual(both, {("a b", 8): Pair(3, 2)})
        self.assertEqual(both[("a b", 8)].ratio, 1.5)

    def test_a_missing_side_is_an_error(self):
        with self.assertRaises(KeyError):
            arithmetic.pairs({"a/8/product": 3})


class InstructionsTest(unittest.TestCase):
    PROFILE = ("desc: I1 cache: \ndesc: Trigger: Client Request: death of a provider/64/floor "
               "calls 10\n\nevents: Ir\nfn=(1)\n16 4\n\ntotals: 1234\n")

    def test_a_profile_holds_the_instructions_of_all_calls(self):
        self.assertEqual(arithmetic.instructions_in(self.PROFILE),
                         ("death of a provider/64/floor", 123.4))

    def test_the_profile_of_the_rest_of_the_program_is_nobodys(self):
        text = "desc: Trigger: Program termination\ntotals: 99\n"
        self.assertIsNone(arithmetic.instructions_in(text))


class AllocationsTest(unittest.TestCase):
    def test_titles_may_hold_blanks(self):
        self.assertEqual(arithmetic.allocations_in("entry point/8/floor 3.50\nx/1/product 2.00\n"),
                         {"entry point/8/floor": 3.5, "x/1/product": 2})


class BarTest(unittest.TestCase):
    KEY = ("a", 1)

    def misses(self, instructions, allocations):
        times = {self.KEY: Pair(1, 1)}
        [entry] = arithmetic.combine(times, {self.KEY: Pair(*instructions)},
                                     {self.KEY: Pair(*allocations)})
        return entry.misses

    def test_a_tenth_more_instructions_are_allowed(self):
        self.assertEqual(self.misses((110, 100), (5, 5)), [])
        self.assertEqual(self.misses((111, 100), (5, 5)), ["instructions"])

    def test_no_allocation_above_the_floors_is_allowed(self):
        self.assertEqual(self.misses((100, 100), (5.1, 5)), ["allocations"])
        self.assertEqual(self.misses((100, 100), (4, 5)), [])

    def test_two_allocations_more_are_allowed_for_a_status_report_and_each_device_of_a_death(self):
        for operation, size, allowed in (("cameraDeviceStatusChange PRESENT", 64, 2),
                                         ("cameraDeviceStatusChange NOT_PRESENT", 64, 2),
                                         ("torchModeStatusChange", 64, 2),
                                         ("death of a provider", 64, 128)):
            self.KEY = (operation, size)
            self.assertEqual(self.misses((100, 100), (5 + allowed, 5)), [])
            self.assertEqual(self.misses((100, 100), (5.1 + allowed, 5)), ["allocations"])

    def test_what_was_not_measured_in_every_way_is_an_error(self):
        with self.assertRaisesRegex(ValueError, "not everything was measured"):
            arithmetic.combine({self.KEY: Pair(1, 1)}, {self.KEY: Pair(1, 1)}, {})

    def test_operations_stay_in_the_order_of_the_programs(self):
        one, two = Pair(1, 1), Pair(2, 2)
        entries = arithmetic.combine({("b", 1): one, ("a", 1): two}, {("b", 1): one, ("a", 1): two},
                                     {("a", 1): two, ("b", 1): one})
        self.assertEqual([(entry.title, entry.nanoseconds) for entry in entries],
                         [("a/1", two), ("b/1", one)])

    def test_the_largest_ratio_is_found(self):
        entries = [measured("a", 1, (105, 100)), measured("b", 2, (107, 100)),
                   measured("c", 3, (1000, 1000))]
        self.assertEqual(arithmetic.largest_ratio(entries).title, "b/2")


class SlopeTest(unittest.TestCase):
    def test_is_the_exponent(self):
        self.assertAlmostEqual(arithmetic.slope([(1, 5), (64, 5), (1000, 5)]), 0)
        self.assertAlmostEqual(arithmetic.slope([(1, 3), (64, 192), (1000, 3000)]), 1)
        self.assertAlmostEqual(arithmetic.slope([(1, 3), (10, 300), (100, 30000)]), 2)

    def test_of_the_largest_two_leaves_the_others_out(self):
        self.assertAlmostEqual(arithmetic.last_slope([(64, 64), (1, 50), (1000, 1000)]), 1)

    def test_needs_two_sizes(self):
        self.assertIsNone(arithmetic.slope([(8, 5)]))


class RelocationsTest(unittest.TestCase):
    def test_are_counted_by_type(self):
        listing = ("\nRelocation section '.rela.dyn' at offset 0x10 contains 3 entries:\n"
                   "    Offset             Info             Type     Symbol's Value\n"
                   "000000000001d8b0  0000000000000008 R_X86_64_RELATIVE 9c50\n"
                   "000000000001d8b8  0000000000000008 R_X86_64_RELATIVE 9c10\n"
                   "000000000001dfe8  0000001500000007 R_X86_64_JUMP_SLOT 0000 free + 0\n")
        self.assertEqual(arithmetic.relocations_in(listing),
                         {"R_X86_64_RELATIVE": 2, "R_X86_64_JUMP_SLOT": 1})


class WordsTest(unittest.TestCase):
    def test_three_digits_count(self):
        words = {0: "0", 1.234: "1.23", 12.34: "12.3", 123.4: "123", 1234567: "1,230,000"}
        for value, text in words.items():
            self.assertEqual(arithmetic.in_words(value), text)

    def test_times_have_units(self):
        words = {512: "512 ns", 1500: "1.50 µs", 2.5e6: "2.50 ms", 3e9: "3.00 s"}
        for value, text in words.items():
            self.assertEqual(arithmetic.time_in_words(value), text)


class DocumentTest(unittest.TestCase):
    LOAD = measured("loading a map file", 10, (100, 100))

    def report(self, operations):
        library = {"stripped bytes": 100_000, "relocations": {"R_X86_64_RELATIVE": 7},
                   "page faults alone": 50, "page faults together": 400,
                   "load nanoseconds alone": 1e6, "load nanoseconds together": 5e6,
                   "libraries": 12}
        return Report({"processor": "A Processor", "cores": 2}, operations, {10: 5000},
                      [(8, 800), (64, 6400)], [(10, 500, Pair(2**20, 2**20))], Pair(3e6, 2e6), Pair(192, 192), library)

    def test_shows_the_bare_walk_beside_a_load(self):
        text = document.text(self.report([measured("loading a map file", size, (7500, 7000))
                                          for size in (10, 300)]))
        self.assertIn("| 10 | 7,500 | 7,000 | 5,000 | 1.50 |", text)
        self.assertIn("the exponent from 8 to\n64 providers is 1.00.", text)

    def test_says_that_the_bar_is_met(self):
        operations = [measured("getCameraIdList", size, (105 * size, 100 * size))
                      for size in (1, 8)]
        text = document.text(self.report(operations + [self.LOAD]))
        self.assertIn("All 3 rows stay below 1.10", text)
        self.assertIn("| getCameraIdList, 8 | 2.00 µs | 1.00 µs | 2.00 | 840 | 800 | 1.05 |", text)
        self.assertIn("| getCameraIdList | 1, 8 providers of 16 ids | 1.00 | 1.00 | 1.00 | 1.00 |"
                      " 0.00 | 0.00 |",
                      text)

    def test_names_what_misses_the_bar(self):
        bad = measured("getVendorTags", 8, (200, 100))
        bad.misses = ["instructions"]
        text = document.text(self.report([measured("getVendorTags", 1, (100, 100)), bad, self.LOAD]))
        self.assertIn("* getVendorTags, 8: instructions\n", text)

    def test_plots_are_drawn(self):
        operations = [measured("getCameraIdList", size, (105 * size, 100 * size))
                      for size in (1, 8)] + [self.LOAD]
        with tempfile.TemporaryDirectory() as directory:
            document.write(self.report(operations), Path(directory))
            for name in ("ratios.svg", "growth.svg"):
                self.assertIn("<svg", (Path(directory) / "performance" / name).read_text())


if __name__ == "__main__":
    unittest.main()
