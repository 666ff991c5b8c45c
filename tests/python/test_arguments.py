"""What wrong arguments of every function raise, and paths that cannot be opened."""

import copy
import errno
import os
import pickle
import tempfile
import unittest

import numpy
import support
import zrml

NAN = float("nan")
INFINITY = float("inf")


class Open(support.TestCase):
    def test_every_kind_of_path(self):
        path = support.path("small.raw")
        for given in (path, str(path), os.fsencode(path)):
            with zrml.open(given) as source:
                self.assertEqual(source.path, str(path))

    def test_path_that_is_no_text_for_people(self):
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(os.fsencode(folder), b"\xff<\xc3\xa9>.raw")
            os.symlink(support.path("small.raw"), path)
            with zrml.open(path) as source:
                self.assertEqual(source.path, os.fsdecode(path))
                self.assertEqual(len(source.functions), 6)

    def test_nothing_there(self):
        with self.assertRaises(zrml.NotFoundError) as raised:
            zrml.open("nothing.raw")
        error = raised.exception
        self.assertIsInstance(error, FileNotFoundError)
        self.assertIsInstance(error, zrml.Error)
        self.assertEqual((error.status, error.errno, error.filename), (3, errno.ENOENT, "nothing.raw"))
        self.assertEqual(str(error), "there is no file or folder nothing.raw")

    def test_neither_directory_nor_report(self):
        with self.assertRaises(zrml.NotRecognisedError) as raised:
            zrml.open(__file__)
        self.assertEqual(raised.exception.status, 4)
        self.assertIn(os.path.basename(__file__), str(raised.exception))

    def test_damaged(self):
        copy = self.copy_of("small.raw")
        (copy / "_FUNCTNS.INF").unlink()
        (copy / "_FUNCTNS.INF").mkdir()
        with self.assertRaises(zrml.DamagedError) as raised:
            zrml.open(copy)
        self.assertEqual(raised.exception.status, 7)

    @unittest.skipIf(os.geteuid() != 0, "only root can become somebody else, who may not read")
    def test_unreadable(self):
        copy = self.copy_of("small.raw")
        os.chmod(copy, 0o000)
        os.chmod(copy.parent, 0o755)
        os.seteuid(65534)
        self.addCleanup(os.seteuid, 0)
        with self.assertRaises(zrml.UnreadableError) as raised:
            zrml.open(copy)
        self.assertIsInstance(raised.exception, OSError)
        self.assertEqual(raised.exception.status, 5)

    def test_other_than_paths(self):
        for wrong in (None, 3, 1.5, ["small.raw"], object()):
            self.assertRaises(TypeError, zrml.open, wrong)
        self.assertRaises(ValueError, zrml.open, "small\0.raw")
        self.assertRaises(TypeError, zrml.open)

    def test_errors_survive_other_processes(self):
        for path in ("nothing.raw", __file__):
            try:
                zrml.open(path)
            except zrml.Error as error:
                again = pickle.loads(pickle.dumps(error))
                self.assertIs(type(again), type(error))
                self.assertEqual((str(again), again.status), (str(error), error.status))
            else:
                self.fail(path)

    def test_sources_do_not(self):
        with zrml.open(support.path("small.raw")) as source:
            for thing in (source, source.functions[0], source.functions[0][0], source.traces[0]):
                self.assertRaisesRegex(TypeError, "other process", pickle.dumps, thing)
                self.assertRaisesRegex(TypeError, "not copied", copy.deepcopy, thing)
            self.assertRaisesRegex(TypeError, "not copied", copy.copy, source)


class Arguments(support.TestCase):
    def setUp(self):
        self.source = zrml.open(support.path("small.raw"))
        self.addCleanup(self.source.close)
        self.survey, self.products, self.empty, self.unknown, *_ = self.source.functions

    def test_positions(self):
        for sequence in (
            self.source.samples,
            self.source.functions,
            self.survey,
            self.source.traces,
            self.source.absorbance.scans,
        ):
            count = len(sequence)
            self.assertGreater(count, 0)
            for wrong in (count, -count - 1, 2**31, 2**64, -(2**64)):
                with self.assertRaises(IndexError):
                    sequence[wrong]
            for wrong in (1.0, "0", None, NAN):
                with self.assertRaises(TypeError):
                    sequence[wrong]
            with self.assertRaises(TypeError):
                sequence[0] = None

    def test_slices_reach_no_further(self):
        self.assertEqual(self.survey[5:9], [])
        self.assertEqual(len(self.survey[-99:99]), 3)
        with self.assertRaises(ValueError):
            self.survey[::0]

    def test_message_of_a_position(self):
        with self.assertRaisesRegex(IndexError, "no scan at position 3: there are 3"):
            self.survey[3]

    def test_drift_bins(self):
        for wrong in (0, -1, 2**40):
            self.assertRaises(IndexError, self.survey[0].drift_bin, wrong)
        self.assertRaises(TypeError, self.survey[0].drift_bin, 0.0)
        with zrml.open(support.path("all.raw")) as source:
            function = next(function for function in source.functions if function.drift_bins)
            for wrong in (function.drift_bins, -function.drift_bins - 1):
                self.assertRaises(IndexError, function[0].drift_bin, wrong)

    def test_ions(self):
        for wrong in ("100", b"100", None, object(), True, [100, "200"], ["100"], 100j, {100: 1}, [None]):
            with self.subTest(wrong), self.assertRaises(TypeError):
                self.survey.xic(wrong)
        for wrong in (0, -1, NAN, INFINITY, [100, NAN], [[100, 200]], [-0.0], numpy.zeros((2, 2))):
            with self.subTest(wrong), self.assertRaises(ValueError):
                self.survey.xic(wrong)
        self.assertRaises(TypeError, self.survey.xic)

    def test_tolerances(self):
        for reading in (lambda **width: self.survey.xic(100, **width), lambda **width: self.products.sum(**width)):
            for name in ("ppm", "da"):
                for wrong in (-1, NAN, INFINITY, -INFINITY):
                    self.assertRaises(ValueError, reading, **{name: wrong})
                self.assertRaises((TypeError, ValueError), reading, **{name: "x"})
                self.assertRaises(TypeError, reading, **{name: [1]})
            self.assertRaises(ValueError, reading, ppm=10, da=0.1)

    def test_centroids(self):
        for wrong in (0, -1, float("nan")):
            self.assertRaisesRegex(ValueError, "above 0", self.survey[0].centroids, min_signal_to_noise=wrong)
        self.assertRaises(TypeError, self.survey[0].centroids, True)
        for wrong in ("x", "", None, 0.5, [True], 1, numpy.int64(1)):
            for spectrum in (self.survey[0], self.products[1]):  # a profile, and peaks
                self.assertRaisesRegex(TypeError, "^areas is True or False, not ", spectrum.centroids, areas=wrong)
        for right in (True, numpy.True_):
            self.assertEqual(len(self.survey[0].centroids(areas=right).mz), len(self.survey[0].centroids().mz))

    def test_sums(self):
        for wrong in ((3, 4), (0, 3), (-3, 2), (0, -3), (0, 2**40)):
            self.assertRaises(IndexError, self.products.sum, *wrong)
        for wrong in ((0, 0), (1, 1), (1, 0), (2, 2), (2,)):
            self.assertRaisesRegex(ValueError, "no scan", self.products.sum, *wrong)
        for wrong in ((0.0, 1), ("0",), (0, [1])):
            self.assertRaises(TypeError, self.products.sum, *wrong)
        self.assertRaisesRegex(ValueError, "no scan", self.empty.sum)
        for wrong in ((5, 6), (1.125, 0.125), (NAN, NAN)):
            self.assertRaisesRegex(ValueError, "no scan", self.products.sum, minutes=wrong)
        for ends in ((0,), (None, 1)):
            for wrong in ({"minutes": (0, 1)}, {"scans": [0]}):
                self.assertRaisesRegex(ValueError, "one of them is enough", self.products.sum, *ends, **wrong)
        self.assertRaisesRegex(ValueError, "one of them", self.products.sum, minutes=(0, 1), scans=[0])
        for name in ("minutes", "minus"):
            for wrong in (5, (1, 2, 3), ("a", "b"), (1,), (None, 2)):
                with self.assertRaises(TypeError) as raised:
                    self.products.sum(**{name: wrong})
                self.assertEqual(
                    str(raised.exception), f"{name} is a pair of times, the first and the last, not {wrong!r}"
                )

    def test_mz_near_the_end_of_numbers(self):
        for chromatogram in (self.products.xic(1e308), self.products.xic(1e308, ppm=20)):
            self.assertEqual(chromatogram.intensity.tolist(), [0] * len(self.products))

    def test_scans_of_sums(self):
        for wrong in ([2], [0, -3], [2**40]):
            self.assertRaises(IndexError, self.products.sum, scans=wrong)
        for wrong in (5, [0.0], "01", [[0]], [None]):
            self.assertRaises(TypeError, self.products.sum, scans=wrong)
        for mask in ([True, False], numpy.array([True, False])):
            self.assertRaisesRegex(TypeError, "positions", self.products.sum, scans=mask)
        self.assertRaisesRegex(ValueError, "no scan", self.products.sum, scans=[])
        self.assertRaises(TypeError, self.products.sum, 0, 1, (0, 1))  # the rest is by keyword

    def test_data_that_nobody_knows(self):
        for reading in (
            lambda: self.unknown[0].mz,
            lambda: self.unknown[0].intensity,
            lambda: self.unknown[0].lost,
            lambda: next(iter(self.unknown)).mz,
            lambda: self.unknown.table(points=True),
            lambda: self.unknown.xic(100),
            lambda: self.unknown.sum(),
            lambda: self.unknown.bpc(),
            lambda: self.unknown[0].to_frame(),
        ):
            with self.assertRaisesRegex(zrml.DamagedError, "scan 1 of function 4") as raised:
                reading()
            self.assertEqual(raised.exception.status, 7)
        self.assertEqual(len(self.unknown.table()["minutes"]), 2)

    def test_matrix_of_different_wavelengths(self):
        self.assertRaisesRegex(ValueError, "wavelengths", self.source.absorbance.to_frame)


class Arrays(support.TestCase):
    """No array can be made writable, and none changes."""

    def setUp(self):
        self.source = zrml.open(support.path("odd.raw"))
        self.addCleanup(self.source.close)
        small = zrml.open(support.path("small.raw"))
        self.addCleanup(small.close)
        function = self.source.functions[0]
        absorbance = self.source.absorbance
        loop = [(scan.mz, scan.intensity) for scan in small.functions[0]]
        self.arrays = {
            **{f"scan {i} of a loop, array {j}": loop[i][j] for i in range(3) for j in range(2)},
            "mz": function[0].mz,
            "intensity": function[0].intensity,
            "no points": small.functions[0][2].mz,
            "times": function.times,
            "no times": small.functions[2].times,
            "sum": function.sum(0, 2).mz,
            "tic": function.tic().intensity,
            "bpc": function.bpc().minutes,
            "xic": function.xic(100).intensity,
            "xics": function.xic([100, 200])[1].intensity,
            "no xic": small.functions[2].xic([100, 200])[1].intensity,
            "trace": small.traces[0].times,
            "absorbance": absorbance.scans[0].values,
            "absorbance minutes": absorbance.minutes,
            "wavelengths": absorbance.wavelengths,
            "matrix": absorbance.values,
            "a row": absorbance.values[0],
            **{f"table of {name}": column for name, column in function.table().items()},
            **{f"table of no {name}": column for name, column in small.functions[2].table().items()},
        }

    def test_cannot_be_made_writable(self):
        for name, array in self.arrays.items():
            with self.subTest(name):
                self.assertFalse(array.flags.writeable)
                with self.assertRaises(ValueError):
                    array.flags.writeable = True
                with self.assertRaises(ValueError):
                    array.setflags(write=True)
                with self.assertRaises(ValueError):
                    array[...] = 0
                with self.assertRaises(ValueError):
                    array.view().flags.writeable = True
                base = array.base
                while isinstance(base, numpy.ndarray):
                    with self.assertRaises(ValueError):
                        base.flags.writeable = True
                    base = base.base
                self.assertIsInstance(base, bytes)

    def test_copies_can_be_changed(self):
        copy = self.arrays["mz"].copy()
        copy[0] = 7
        self.assertEqual(self.arrays["mz"][0], 100)

    def test_stay_as_they_are(self):
        before = {name: array.copy() for name, array in self.arrays.items()}
        for function in self.source.functions:
            for scan in function:
                scan.mz
            function.table(points=True)
            function.xic([200, 300, 400])
        self.source.close()
        for name, array in self.arrays.items():
            numpy.testing.assert_array_equal(array, before[name], name)


if __name__ == "__main__":
    unittest.main()
