"""Loops over scans: what is read ahead of them, and that nobody notices."""

import random
import unittest
from unittest import mock

import support
import zrml
from zrml import _loop


class Loops(support.TestCase):
    """Scan i, from 0, has the points (100 + i, i + 1) and, if i is odd, (4000, 5)."""

    def setUp(self):
        self.source = zrml.open(support.path("long.raw"))
        self.addCleanup(self.source.close)
        self.function = self.source.functions[0]
        self.together = []  # the first position and the number of the scans of each call that reads several
        read = _loop._read_together

        def watch(pointer, sample, function, position, scans, *rest):
            self.together.append((position, scans))
            return read(pointer, sample, function, position, scans, *rest)

        patch = mock.patch.object(_loop, "_read_together", watch)
        patch.start()
        self.addCleanup(patch.stop)

    def check(self, i, scan):
        second = i % 2 == 1
        self.assert_same(scan.intensity, [i + 1, 5] if second else [i + 1])
        self.assert_same(scan.mz, [100 + i, 4000] if second else [100 + i])
        self.assertEqual(scan.lost, 0)

    def test_more_and_more_are_read_in_turn(self):
        for i, scan in zip(range(40), self.function):
            self.check(i, scan)
        self.assertEqual(self.together, [(1, 2), (3, 4), (7, 8), (15, 16), (31, 16)])

    def test_few_points_are_read_ahead(self):
        with mock.patch.object(_loop, "MOST_POINTS", 6):  # of four scans
            for i, scan in zip(range(21), self.function):
                self.check(i, scan)
        self.assertEqual(self.together, [(1, 2), (3, 4), (7, 4), (11, 4), (15, 4), (19, 4)])

    def test_long_scans_are_read_alone(self):
        with mock.patch.object(_loop, "MOST_POINTS", 2):
            for i, scan in zip(range(20), self.function):
                self.check(i, scan)
        self.assertEqual(self.together, [])

    def test_no_scan_is_read_ahead_where_some_are_left_out(self):
        for i, scan in zip(range(40), self.function):
            if i % 2 == 1:
                self.check(i, scan)
        self.assertEqual(self.together, [])

    def test_by_position_nothing_is_read_ahead(self):
        for i in range(40):
            self.check(i, self.function[i])
        for i, scan in zip(range(40), self.function[:40]):
            self.check(i, scan)
        self.assertEqual(self.together, [])

    def test_any_order(self):
        order = list(enumerate(self.function))
        random.Random(1).shuffle(order)
        for i, scan in order[:700] + sorted(order[700:1400], key=lambda each: each[0]):
            self.check(i, scan)

    def test_loops_within_loops(self):
        for i, scan in zip(range(20), self.function):
            for j, other in zip(range(20), self.function):
                self.check(j, other)
            self.check(i, scan)


if __name__ == "__main__":
    unittest.main()
