"""Threads: several on one source are served one after the other, several sources at once."""

import ctypes
import sys
import threading
import unittest

import support
import zrml
from zrml._library import library

ROUNDS = 3


def everything(source):
    """Something of every number of a source."""
    numbers = []
    for function in source.functions:
        numbers += [scan.mz.sum() + scan.intensity.sum() + scan.minutes for scan in function]
        numbers += function.xic([100.0, 300.0])[1].intensity.tolist()
        numbers += function.table()["tic"].tolist()
        numbers += function.sum(0, 5).intensity.tolist()
    for trace in source.traces:
        numbers += trace.intensity.tolist()
    return support.bits(numbers)


class Threads(support.TestCase):
    def setUp(self):
        interval = sys.getswitchinterval()
        self.addCleanup(sys.setswitchinterval, interval)
        sys.setswitchinterval(1e-5)  # threads take turns often
        self.path = support.path("run.raw")
        with zrml.open(self.path) as source:
            self.expected = everything(source)

    def compare(self, sources):
        """Each in a thread of its own; what goes wrong there is shown here."""
        wrong = []

        def read(source):
            try:
                for _ in range(ROUNDS):
                    if everything(source) != self.expected:
                        wrong.append("other numbers")
            except BaseException as error:
                wrong.append(repr(error))

        threads = [threading.Thread(target=read, args=(source,)) for source in sources]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual(wrong, [])

    def test_two_on_one_source(self):
        with zrml.open(self.path) as source:
            self.compare([source, source])

    def test_scans_of_one_loop(self):
        with zrml.open(support.path("long.raw")) as source:
            expected = [scan.mz.tolist() for scan in source.functions[0]]
            wrong = []

            def read(scans):
                try:
                    if [scan.mz.tolist() for scan in scans] != expected:
                        wrong.append("other numbers")
                except BaseException as error:
                    wrong.append(repr(error))

            sys.setswitchinterval(1e-6)
            for _ in range(20 * ROUNDS):  # what goes wrong between two of a hundred steps is rare
                scans = list(source.functions[0])
                threads = [threading.Thread(target=read, args=(scans,)) for _ in range(6)]
                for thread in threads:
                    thread.start()
                for thread in threads:
                    thread.join()
            self.assertEqual(wrong, [])

    def test_two_on_two_sources(self):
        with zrml.open(self.path) as one, zrml.open(self.path) as other:
            self.compare([one, other])

    def test_closing_while_another_reads(self):
        for _ in range(20):
            source = zrml.open(self.path)
            function = source.functions[0]
            outcome = []

            def read():
                try:
                    while True:
                        outcome.append(len(function[0].mz) + len(function.sum(0, 3).mz))
                except ValueError as error:
                    outcome.append(str(error))

            thread = threading.Thread(target=read)
            thread.start()
            while not outcome:
                pass
            source.close()
            thread.join()
            self.assertEqual(outcome[-1], "the source is closed")

    def test_reading_releases_the_lock_of_the_interpreter(self):
        self.assertIsInstance(library, ctypes.CDLL)
        self.assertNotIsInstance(library, ctypes.PyDLL)


if __name__ == "__main__":
    unittest.main()
