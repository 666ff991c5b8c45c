"""Reading leaves no memory behind."""

import gc
import os
import tracemalloc
import unittest

import support
import zrml

SPECTRA = 100_000
# Pages of freed blocks that the system does not get back at once. Forty bytes for each of as many are more.
MOST_BYTES = 4_000_000
# Python's own memory is counted to the byte, which is slow: no more than a byte for each of so many.
TRACED = 1_000 if support.IS_SANITIZED else 10_000


def resident():
    with open("/proc/self/statm") as file:
        return int(file.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")


def traced():
    gc.collect()
    return tracemalloc.get_traced_memory()[0]


class Memory(support.TestCase):
    def check(self, work, times):
        """`work(n)` does something n times."""
        work(TRACED // 10)
        tracemalloc.start()
        self.addCleanup(tracemalloc.stop)
        before = traced()
        work(min(times, TRACED))
        self.assertLess(traced() - before, min(times, TRACED))
        tracemalloc.stop()
        if support.IS_SANITIZED:
            return  # freed blocks are kept there, to watch them
        before = resident()
        work(times)
        self.assertLess(resident() - before, MOST_BYTES)

    def test_spectra(self):
        with zrml.open(support.path("run.raw")) as source:

            def read(spectra):
                while spectra > 0:
                    for function in source.functions:
                        for scan in function:
                            self.assertEqual(len(scan.mz), len(scan.intensity))
                        spectra -= len(function)

            self.check(read, SPECTRA)

    def test_scans_by_position(self):
        with zrml.open(support.path("run.raw")) as source:
            function = source.functions[1]

            def read(spectra):
                for i in range(spectra):
                    scan = function[i % len(function)]
                    self.assertEqual(len(scan.mz), len(scan.intensity))
                    self.assertGreater(scan.minutes, 0)

            self.check(read, SPECTRA)

    def test_sources(self):
        def open_and_close(times):
            for i in range(times):
                source = zrml.open(support.path("small.raw"))
                for function in source.functions[:2]:
                    function.table()
                    function[0].mz
                    function.xic([100, 200])
                source.absorbance.scans[0].values
                source.findings
                if i % 2:
                    source.close()  # the others are closed when nobody has them

        self.check(open_and_close, 2000)

    def test_failures(self):
        def fail(times):
            for _ in range(times):
                self.assertRaises(zrml.DamagedError, lambda: function[0].mz)
                self.assertRaises(zrml.NotFoundError, zrml.open, "nothing.raw")

        with zrml.open(support.path("small.raw")) as source:
            function = source.functions[3]
            self.check(fail, 10000)

    def test_lost_points_take_no_memory(self):
        with zrml.open(support.path("cut.raw")) as source:
            scan = source.functions[0][0]  # one of three points is left
            self.assertEqual(len(scan.mz.base), 8)


if __name__ == "__main__":
    unittest.main()
