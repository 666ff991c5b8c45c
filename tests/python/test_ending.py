"""Closed sources, files that change under the reader, and long work that is cut short."""

import os
import signal
import unittest
import weakref

import support
import zrml
from zrml._library import library


def open_files():
    paths = [f"/proc/self/fd/{name}" for name in os.listdir("/proc/self/fd")]
    return {os.readlink(path) for path in paths if os.path.exists(path)}


class Closed(support.TestCase):
    def setUp(self):
        self.source = zrml.open(support.path("all.raw"))
        self.source.functions[0][0].mz
        self.function = next(function for function in self.source.functions if function.drift_bins)
        self.another = self.source.functions[-1]
        self.scan = self.function[0]
        self.sample = self.source.samples[0]
        self.trace = self.source.traces[0]
        self.absorbance = self.source.absorbance

    def readings(self):
        source, sample, function, scan = self.source, self.sample, self.function, self.scan
        return {
            "samples": lambda: source.samples,
            "functions": lambda: source.functions,
            "traces": lambda: source.traces,
            "absorbance": lambda: source.absorbance,
            "metadata": lambda: source.metadata,
            "findings": lambda: source.findings,
            "with": lambda: source.__enter__(),
            "metadata of the sample": lambda: sample.metadata,
            "times": lambda: function.times,
            "table": lambda: function.table(),
            "table of points": lambda: function.table(points=True),
            "tic": lambda: function.tic(),
            "bpc": lambda: function.bpc(),
            "xic": lambda: function.xic(100),
            "sum": lambda: function.sum(0, 1),
            "metadata of the function": lambda: function.metadata,
            "traces of the function": lambda: function.traces,
            "text": lambda: function.text,
            "number": lambda: scan.number,
            "minutes": lambda: scan.minutes,
            "mz": lambda: scan.mz,
            "intensity": lambda: scan.intensity,
            "lost": lambda: scan.lost,
            "drift bin": lambda: scan.drift_bin(0),
            "length": lambda: len(self.another),
            "iteration": lambda: next(iter(function)),
            "trace": lambda: self.trace.times,
            "absorbance minutes": lambda: self.absorbance.minutes,
            "absorbance scans": lambda: self.absorbance.scans,
            "matrix": lambda: self.absorbance.values,
        }

    def test_asking_for_more_raises(self):
        self.source.close()
        for name, read in self.readings().items():
            with self.subTest(name), self.assertRaisesRegex(ValueError, "closed"):
                read()

    def test_no_such_reading_raises_before(self):
        for name, read in self.readings().items():
            try:
                read()
            except zrml.Error:
                pass  # some of the data are noise
            except ValueError as error:
                self.assertNotIn("closed", str(error), name)

    def test_what_was_given_stays(self):
        mz = self.source.functions[0][0].mz
        before = mz.copy()
        self.source.close()
        self.assertEqual(mz.tobytes(), before.tobytes())

    def test_loop_gives_no_more_after_the_end(self):
        source = zrml.open(support.path("long.raw"))
        scans = iter(source.functions[0])
        kept = [next(scans) for _ in range(20)]
        for scan in kept[:9]:
            scan.mz  # those behind may be read ahead now
        source.close()
        self.assertEqual(kept[8].mz.tolist(), [108])
        for scan in kept[9:]:
            with self.assertRaisesRegex(ValueError, "closed"):
                scan.mz

    def test_loop_goes_on_without_points_after_the_end(self):
        source = zrml.open(support.path("long.raw"))
        scans = iter(source.functions[0])
        for _ in range(5):
            next(scans).mz  # the first, two more, four more: two of them are read ahead now
        source.close()
        for scan, _ in zip(scans, range(4)):
            with self.assertRaisesRegex(ValueError, "closed"):
                scan.mz

    def test_closing_again_does_nothing(self):
        self.assertFalse(self.source.closed)
        self.source.close()
        self.source.close()
        self.assertTrue(self.source.closed)

    def test_with_closes_also_when_it_fails(self):
        with self.assertRaises(KeyError), zrml.open(support.path("small.raw")) as source:
            raise KeyError
        self.assertTrue(source.closed)

    def test_path_and_format_stay(self):
        self.source.close()
        self.assertEqual((self.source.path, self.source.format), (str(support.path("all.raw")), "raw directory"))

    def test_files_are_closed(self):
        self.source.close()
        path = os.path.realpath(support.path("run.raw"))
        source = zrml.open(path)
        source.functions[0][0].mz
        self.assertTrue(any(name.startswith(path) for name in open_files()))
        source.close()
        self.assertFalse(any(name.startswith(path) for name in open_files()))

    def test_source_that_nobody_has_is_closed(self):
        path = os.path.realpath(support.path("run.raw"))
        source = zrml.open(path)
        scan = source.functions[0][0]
        gone = weakref.ref(source._handle)
        del source
        self.assertGreater(len(scan.mz), 0)  # a scan keeps its source open
        self.assertIsNotNone(gone())
        del scan
        self.assertIsNone(gone())
        self.assertFalse(any(name.startswith(path) for name in open_files()))


class Shrinking(support.TestCase):
    def shrunk(self, name, file):
        copy = self.copy_of(name)
        source = zrml.open(copy)
        self.addCleanup(source.close)
        function = source.functions[0]
        function[0].mz
        size = (copy / file).stat().st_size
        os.truncate(copy / file, size // 2)
        return function

    def test_points(self):
        function = self.shrunk("run.raw", "_FUNC001.DAT")
        self.assertRaises(zrml.UnreadableError, lambda: function[-1].mz)
        self.assertRaises(zrml.UnreadableError, lambda: [scan.mz for scan in function])

    def test_scans_of_a_loop_fail_each_for_itself(self):
        copy = self.copy_of("run.raw")
        with zrml.open(support.path("run.raw")) as whole, zrml.open(copy) as source:
            expected = [scan.mz.tolist() for scan in whole.functions[0]]
            size = (copy / "_FUNC001.DAT").stat().st_size
            found = []
            for scan in source.functions[0]:
                if scan.number == 40:
                    os.truncate(copy / "_FUNC001.DAT", size * 3 // 4)
                try:
                    found.append(scan.mz.tolist())
                except zrml.UnreadableError as error:
                    self.assertEqual(str(error), "_FUNC001.DAT has become shorter since it was opened")
                    found.append(None)
        read = found.index(None)
        self.assertGreater(read, len(expected) // 2)
        self.assertEqual(found[:read], expected[:read])
        self.assertEqual(found[read:], [None] * (len(expected) - read))

    def test_chromatograms_and_sums(self):
        function = self.shrunk("run.raw", "_FUNC001.DAT")
        self.assertRaises(zrml.UnreadableError, function.xic, 200)
        self.assertRaises(zrml.UnreadableError, function.bpc)
        self.assertRaises(zrml.UnreadableError, function.sum)
        self.assertRaises(zrml.UnreadableError, function.table, points=True)


class Interrupted(Exception):
    pass


@unittest.skipUnless(hasattr(signal, "setitimer"), "no timers")
class Interruption(support.TestCase):
    """A signal during long work: its handler runs soon, and what it raises ends the work."""

    ATTEMPTS = 200

    def setUp(self):
        self.source = zrml.open(support.path("run.raw"))
        self.addCleanup(self.source.close)
        self.function = self.source.functions[0]
        self.handle = self.source._handle
        self.addCleanup(signal.setitimer, signal.ITIMER_REAL, 0)

    def interrupt(self, work, number, handler):
        """Until a signal has come in the middle of the library's work, not before or behind it."""
        previous = signal.signal(number, handler)
        self.addCleanup(signal.signal, number, previous)
        for attempt in range(self.ATTEMPTS):
            signal.setitimer(signal.ITIMER_REAL, 0.0005 * (1 + attempt % 20))
            try:
                work()
            except (Interrupted, KeyboardInterrupt) as error:
                signal.setitimer(signal.ITIMER_REAL, 0)
                if self.was_working:
                    return error
            signal.setitimer(signal.ITIMER_REAL, 0)
        self.fail("no signal came in the middle of the work")

    def raise_it(self, *_):
        self.was_working = self.handle._is_working
        raise Interrupted

    def test_every_long_work(self):
        masses = [100 + i for i in range(300)]
        for work in (
            self.function.sum,
            self.function.bpc,
            lambda: self.function.xic(masses),
            lambda: self.function.table(points=True),
        ):
            self.interrupt(work, signal.SIGALRM, self.raise_it)
            self.assertEqual(library.zrml_message(self.handle._pointer), b"cancelled")
            self.assertEqual(self.handle._caught, [])

    def test_source_goes_on(self):
        expected = self.function.bpc().intensity.tolist()
        self.interrupt(self.function.sum, signal.SIGALRM, self.raise_it)
        self.assertEqual(self.function.bpc().intensity.tolist(), expected)

    def test_control_c(self):
        def press(*_):
            self.was_working = self.handle._is_working
            signal.default_int_handler(signal.SIGINT, None)

        self.assertIsInstance(self.interrupt(self.function.sum, signal.SIGALRM, press), KeyboardInterrupt)

    def test_handler_cannot_use_the_source(self):
        refused = []

        def use(*_):
            self.was_working = self.handle._is_working
            for reading in (lambda: self.function[0].mz, self.function.tic, self.source.close):
                try:
                    reading()
                except RuntimeError as error:
                    refused.append(str(error))
            raise Interrupted

        self.interrupt(self.function.sum, signal.SIGALRM, use)
        self.assertGreaterEqual(refused.count("the source is in the middle of work for the same thread"), 3)
        self.assertFalse(self.source.closed)

    def test_another_source_can_be_used(self):
        found = []

        def use(*_):
            self.was_working = self.handle._is_working
            with zrml.open(support.path("small.raw")) as other:
                found.append(other.functions[0].bpc().intensity.tolist())
            raise Interrupted

        self.interrupt(self.function.sum, signal.SIGALRM, use)
        self.assertEqual(found[-1], [1000000, 5, 0])


if __name__ == "__main__":
    unittest.main()
