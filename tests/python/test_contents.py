"""What sources hold that are known by heart; see tests/zrml/small_acquisition.h, tests/zrml/vials.h and make_sources.cpp."""

import math
import unittest

import numpy
import support
import zrml

NAN = math.nan


class Small(support.TestCase):
    def setUp(self):
        self.source = zrml.open(support.path("small.raw"))
        self.addCleanup(self.source.close)
        self.survey, self.products, self.empty, self.unknown, self.lock_mass, self.smoothed = self.source.functions

    def test_source(self):
        self.assertEqual(self.source.path, str(support.path("small.raw")))
        self.assertEqual(self.source.format, "raw directory")
        self.assertEqual([(sample.number, sample.name) for sample in self.source.samples], [(1, "Injection 1")])
        self.assertIs(self.source.functions, self.source.samples[0].functions)

    def test_functions(self):
        of = {name: [getattr(function, name) for function in self.source.functions] for name in vars(self.survey)}
        self.assertEqual(of["number"], [1, 2, 3, 4, 6, 1])
        self.assertEqual(of["process"], [None, None, None, None, None, 1])
        self.assertEqual(of["id"], ["1", "2", "3", "4", "6", "p1"])
        self.assertEqual(of["file"], [f"_FUNC00{i}.DAT" for i in (1, 2, 3, 4, 6)] + ["_PROC001.DAT"])
        self.assertEqual(of["kind"], ["MS", "MS/MS", "MS", "MS", "MS", "MS"])
        self.assertEqual(of["ms_level"], [1, 2, 1, 1, 1, 1])
        self.assertEqual(of["scan_type"], [None, "product", None, None, None, None])
        self.assertEqual(of["polarity"], ["positive", "negative"] + ["positive"] * 4)
        self.assertEqual(of["is_lock_mass"], [False, False, False, False, True, False])
        self.assertEqual(self.survey.mass_range, (50.0, 1200.5))
        self.assertEqual(self.survey.name, "TOF MS ES+")
        self.assertEqual([len(function) for function in self.source.functions], [3, 2, 0, 2, 1, 1])
        self.assertEqual([function.is_centroided for function in self.source.functions[:3]], [False, True, None])
        self.assertEqual([function.drift_bins for function in self.source.functions], [0] * 6)

    def test_function_without_scans_is_true(self):
        self.assertTrue(self.empty)

    def test_scans(self):
        self.assertEqual([scan.number for scan in self.survey], [1, 2, 3])
        self.assert_same([scan.minutes for scan in self.survey], [0.5, 1, 1.5])
        self.assert_same([scan.end_minutes for scan in self.survey], [0.75, 1.25, 1.75])
        self.assert_same([scan.scan_value for scan in self.survey], [2.5, 2.5, 2.5])
        self.assert_same([scan.precursor_mz for scan in self.survey], [NAN, NAN, NAN])
        self.assert_same([scan.precursor_mz for scan in self.products], [NAN, 445.125])
        self.assertEqual([scan.is_centroided for scan in (self.survey[0], self.products[0])], [False, True])

    def test_points(self):
        scan = self.survey[0]
        self.assert_same(scan.mz, [100, 200.5, 300.0625])
        self.assert_same(scan.intensity, [10, 3, 1000000])
        self.assertEqual(scan.lost, 0)
        self.assertEqual(self.survey[2].mz.shape, (0,))
        self.assertEqual(self.survey[2].intensity.shape, (0,))
        self.assert_same(self.smoothed[0].intensity, [11])

    def test_points_are_read_once(self):
        scan = self.survey[0]
        self.assertIs(scan.mz, scan.mz)
        self.assertIs(scan.intensity, scan.intensity)

    def test_iteration_and_positions_give_the_same(self):
        for function in (self.survey, self.products, self.lock_mass):
            self.assertEqual([list(scan.mz) for scan in function], [list(function[i].mz) for i in range(len(function))])
            self.assertEqual(list(function), function[:])

    def test_sequence(self):
        self.assertEqual(self.survey[-1].number, 3)
        self.assertEqual([scan.number for scan in self.survey[::-2]], [3, 1])
        self.assertEqual([scan.number for scan in self.survey[1:99]], [2, 3])
        self.assertEqual(self.survey[numpy.int64(1)].number, 2)
        self.assertEqual([scan.number for scan in reversed(self.survey)], [3, 2, 1])
        self.assertIn(self.survey[1], self.survey)
        self.assertNotIn(self.products[1], self.survey)
        self.assertEqual(self.survey.index(self.survey[1]), 1)
        self.assertEqual(len({self.survey[0], self.survey[0], self.survey[1]}), 2)

    def test_times(self):
        self.assert_same(self.survey.times, [0.5, 1, 1.5])
        self.assertEqual(self.empty.times.shape, (0,))

    def test_table(self):
        table = self.survey.table()
        self.assertEqual(
            list(table),
            ["number", "minutes", "points", "tic", "base_peak_mz", "base_peak_intensity", "precursor_mz", "scan_value"],
        )
        self.assertEqual(table["number"].tolist(), [1, 2, 3])
        self.assertEqual(table["points"].tolist(), [3, 1, 0])
        self.assert_same(table["minutes"], [0.5, 1, 1.5])
        self.assert_same(table["tic"], [1000013, 5, 0])
        self.assert_same(table["base_peak_mz"], [NAN, NAN, NAN])
        self.assert_same(table["base_peak_intensity"], [NAN, NAN, NAN])
        self.assert_same(table["precursor_mz"], [NAN, NAN, NAN])
        self.assert_same(table["scan_value"], [2.5, 2.5, 2.5])
        self.assert_same(self.products.table()["precursor_mz"], [NAN, 445.125])

    def test_table_with_points(self):
        table = self.survey.table(points=True)
        self.assert_same(table["base_peak_mz"], [300.0625, 100.25, NAN])
        self.assert_same(table["base_peak_intensity"], [1000000, 5, 0])
        self.assertEqual(table["points"].tolist(), [3, 1, 0])

    def test_table_without_scans(self):
        for column in self.empty.table(points=True).values():
            self.assertEqual(column.shape, (0,))

    def test_types_of_arrays(self):
        table = self.survey.table()
        types = {name: column.dtype for name, column in table.items()}
        self.assertEqual({name for name, kind in types.items() if kind == numpy.int32}, {"number", "points"})
        self.assertEqual({name for name, kind in types.items() if kind == numpy.float64}, set(table) - {"number", "points"})
        self.assertEqual({column.dtype for column in self.empty.table().values()}, {numpy.dtype("i4"), numpy.dtype("f8")})
        for array in (self.survey[0].mz, self.survey[2].mz, self.survey.times, self.survey.tic().intensity):
            self.assertEqual(array.dtype, numpy.float64)

    def test_chromatograms(self):
        tic, bpc = self.survey.tic(), self.survey.bpc()
        self.assertEqual((tic.name, bpc.name), ("TIC", "BPC"))
        self.assert_same(tic.intensity, [1000013, 5, 0])
        self.assert_same(bpc.intensity, [1000000, 5, 0])
        for chromatogram in (tic, bpc):
            self.assert_same(chromatogram.minutes, [0.5, 1, 1.5])

    def test_one_ion(self):
        found = self.survey.xic(100.125, da=0.125)  # both ends count
        self.assertIsInstance(found, zrml.Chromatogram)
        self.assertEqual(found.name, "m/z 100.125 ± 0.125 Da")
        self.assert_same(found.intensity, [10, 5, 0])
        self.assert_same(found.minutes, [0.5, 1, 1.5])
        self.assert_same(self.survey.xic(numpy.float32(200), 2500).intensity, [3, 0, 0])  # 200.5 is the end
        self.assert_same(self.survey.xic(200, 2499).intensity, [0, 0, 0])

    def test_ten_parts_per_million_are_the_default(self):
        self.assert_same(self.survey.xic(200.5 * (1 + 9.9e-6)).intensity, [3, 0, 0])
        self.assert_same(self.survey.xic(200.5 * (1 - 9.9e-6)).intensity, [3, 0, 0])
        self.assert_same(self.survey.xic(200.5 * (1 + 10.1e-6)).intensity, [0, 0, 0])

    def test_many_ions(self):
        for masses in ([100, 200.5, 150], (100, 200.5, 150), numpy.array([100, 200.5, 150])):
            found = self.survey.xic(masses)
            self.assertIsInstance(found, list)
            self.assertEqual([list(one.intensity) for one in found], [[10, 0, 0], [3, 0, 0], [0, 0, 0]])
        self.assertEqual(self.survey.xic([]), [])
        self.assertEqual([list(one.intensity) for one in self.empty.xic([100, 200])], [[], []])

    # A profile of three points far from each other: up and down in one sample is noise, not a peak.
    def test_centroids(self):
        survey = self.source.functions[0]
        self.assert_same(survey[0].centroids().mz, survey.sum(0, 1).centroids().mz)
        peaks = self.products[1].centroids(areas=True)
        self.assert_same(peaks.mz, [50.5])
        self.assert_same(peaks.intensity, [8])
        self.assert_same(zrml.Spectrum(peaks.mz, peaks.intensity).centroids().mz, [50.5])

    def test_sums(self):
        whole = self.products.sum()
        self.assert_same(whole.mz, [50.5])
        self.assert_same(whole.intensity, [15])
        self.assert_same(self.products.sum(1, 2).intensity, [8])
        self.assert_same(self.products.sum(-1).intensity, [8])
        self.assert_same(self.products.sum(0, -1).intensity, [7])
        self.assert_same(self.products.sum(minutes=(0.125, 1.125)).intensity, [15])
        self.assert_same(self.products.sum(minutes=(0.2, 9)).intensity, [8])

    def test_traces(self):
        self.assertEqual([(t.number, t.name) for t in self.source.traces[:2]], [(1, "Pressure"), (2, "UV\x1b[31m 254")])
        self.assert_same(self.source.traces[0].times, [0.5, 1])
        self.assert_same(self.source.traces[0].intensity, [5, 2])
        self.assert_same(self.source.traces[1].intensity, [6, 0])
        self.assertEqual(self.survey.traces, ())

    def test_absorbance(self):
        found = self.source.absorbance
        self.assert_same(found.minutes, [0.125, 0.25])
        self.assertEqual([scan.number for scan in found.scans], [1, 2])
        self.assert_same([scan.minutes for scan in found.scans], [0.125, 0.25])
        self.assert_same(found.scans[0].wavelengths, [210, 210.5])
        self.assert_same(found.scans[0].values, [0, 3])
        self.assert_same(found.scans[1].values, [4])
        self.assertIsNone(found.wavelengths)  # the scans have not the same ones
        self.assertIsNone(found.values)

    def test_metadata(self):
        self.assertEqual(self.source.metadata["InstrumentName"], "SIM\x85 2")
        self.assertEqual(self.source.metadata["OperatorName"], 'Zoë "Z"')
        self.assertEqual(self.source.metadata, self.source.samples[0].metadata)
        self.assertEqual(self.survey.metadata["InstrumentName"], "SIM\x85 2")
        self.source.metadata.clear()
        self.assertIn("InstrumentName", self.source.metadata)

    def test_data_file_chooses_its_function(self):
        with zrml.open(support.path("small.raw") / "_FUNC002.DAT") as source:
            self.assertEqual([function.number for function in source.functions], [2])


class Odd(support.TestCase):
    def setUp(self):
        self.source = zrml.open(str(support.path("odd.raw")))
        self.addCleanup(self.source.close)
        self.function = self.source.functions[0]

    def test_absorbance_matrix(self):
        found = self.source.absorbance
        self.assert_same(found.wavelengths, [210, 220])
        self.assertEqual(found.values.tolist(), [[1, 2], [3, 4]])

    def test_peaks_of_one_width_become_one(self):
        apart = self.function.sum(0, 2)
        self.assert_same(apart.mz, [100, 200, 200.03125])
        self.assert_same(apart.intensity, [5, 2, 8])
        for width in ({"da": 0.03125}, {"ppm": 200}):
            self.assert_same(self.function.sum(0, 2, **width).intensity, [5, 10])
        for width in ({"da": 0.03}, {"ppm": 100}):
            self.assert_same(self.function.sum(0, 2, **width).intensity, [5, 2, 8])

    def test_scans_of_a_time_need_not_follow_each_other(self):
        with zrml.open(support.path("unordered.rpt")) as source:
            function = source.functions[0]
            self.assert_same(function.times, [2, 1, 3])
            self.assert_same(function.sum(minutes=(1, 2)).intensity, [2])
            self.assert_same(function.sum(minutes=(2, 3)).intensity, [2])  # the scan at 1 min is between them
            self.assert_same(function.sum(minutes=(1, 3)).intensity, [3])

    def test_time_that_prints_like_an_end_is_within(self):
        with zrml.open(support.path("run.raw")) as source:
            function = source.functions[0]
            self.assertGreater(function.times[0], 0.008333333)
            self.assertLess(function.times[0], 0.008333334)  # as the command line prints it
            self.assertEqual(function.sum(minutes=(0.008333334, 0.025)).scans_added, 2)
            self.assertEqual(function.sum(minutes=(0.0083334, 0.025)).scans_added, 1)
            self.assertEqual(function.sum(minutes=(0, 1e300)).scans_added, len(function))

    def test_peaks_and_profiles_are_not_added_up(self):
        found = self.function.sum()
        self.assert_same(found.intensity, [5, 2, 8])
        self.assertEqual((found.scans_added, found.scans_left_out), (2, 1))
        self.assertTrue(found.is_centroided)
        found = self.function.sum(2, 3)
        self.assert_same(found.intensity, [32])
        self.assertEqual((found.scans_added, found.scans_left_out, found.is_centroided), (1, 0, False))

    def test_chosen_scans(self):
        self.assert_same(self.function.sum(scans=[1]).intensity, [4, 8])
        for scans in ([1, 0], (0, 1, 0), range(2), numpy.array([0, 1]), iter([-2, -3])):
            self.assert_same(self.function.sum(scans=scans).intensity, [5, 2, 8])

    def test_means(self):
        self.assert_same(self.function.sum(mean=True).intensity, [2.5, 1, 4])
        self.assert_same(self.function.sum(1, 2, mean=True).intensity, [4, 8])

    # The background's mean is taken off once for each scan that was added.
    def test_background(self):
        found = self.function.sum(0, 2, minus=(1, 1))
        self.assert_same(found.mz, [100, 200, 200.03125])
        self.assert_same(found.intensity, [5 - 2 * 1, 2 - 2 * 2, 8])
        self.assertEqual((found.scans_added, found.background_added, found.background_left_out), (2, 1, 0))
        self.assert_same(self.function.sum(0, 2, minus=(1, 1), mean=True).intensity, [1.5, -1, 4])
        self.assert_same(self.function.sum(0, 1, minus=(1, 2)).intensity, [1 - 2.5, 2 - 1, -4])
        self.assert_same(self.function.sum(0, 1, minus=(2, 2), da=0.03125).intensity, [1 - 4, 2 - 8])
        found = self.function.sum(0, 1, minus=(2, 3))
        self.assertEqual((found.background_added, found.background_left_out), (1, 1))
        with self.assertRaisesRegex(ValueError, "the sum.s kind"):
            self.function.sum(0, 1, minus=(3, 3))
        with self.assertRaisesRegex(ValueError, "no scan in the background"):
            self.function.sum(0, 1, minus=(4, 5))

    def test_lost_points_of_sums(self):
        with zrml.open(support.path("cut.raw")) as source:
            found = source.functions[0].sum()
            self.assert_same(found.mz, [100])  # all points of the second scan are lost; the third has none
            self.assertEqual((found.scans_added, found.scans_left_out, found.lost), (2, 1, 2 + 1))
            self.assertEqual(source.functions[0].sum(0, 1).lost, 2)


class Long(support.TestCase):
    def test_iteration(self):
        with zrml.open(support.path("long.raw")) as source:
            function = source.functions[0]
            self.assertEqual(len(function), 2100)
            for i, scan in enumerate(function):
                second = i % 2 == 1
                self.assert_same(scan.mz, [100 + i, 4000] if second else [100 + i])
                self.assert_same(scan.intensity, [i + 1, 5] if second else [i + 1])
                self.assertEqual((scan.number, scan.minutes), (i + 1, i / 64))
            self.assertEqual(i, 2099)


class Cut(support.TestCase):
    def test_lost_points_and_findings(self):
        with zrml.open(support.path("cut.raw")) as source:
            survey = source.functions[0]
            self.assert_same(survey[0].mz, [100])
            self.assertEqual([scan.lost for scan in survey], [2, 1, 0])
            self.assert_same(survey.xic(100).intensity, [10, NAN, 0])
            self.assert_same(survey.table(points=True)["base_peak_intensity"], [10, NAN, 0])
            cut = [finding for finding in source.findings if finding.code == "data-cut"]
            self.assertEqual(
                [(f.severity, f.file, f.function, f.count, f.first, f.sample) for f in cut],
                [("lost", "_FUNC001.DAT", "1", 3, 1, 0)],  # the third scan has no points, behind the end
            )
            self.assertTrue(cut[0].message)
            self.assertIs(source.findings, source.findings)

    def test_sound_source_has_none_lost(self):
        with zrml.open(support.path("run.raw")) as source:
            self.assertEqual(source.findings, ())


class Hidden(support.TestCase):
    """A report whose first function's Type is cut by a zero, and whose only spectrum says neither TRUE nor FALSE."""

    TEXT = """[SAMPLE]
{
[FUNCTION]
{
Type MS/\0
[SPECTRUM]
{
Time 0.5
BPI 10
Continuum false
[MS]
{
100 50
}
}
}
}
"""

    def test_level_and_kind_are_none(self):
        path = self.folder() / "hidden.rpt"
        path.write_text(self.TEXT, encoding="ascii")
        with zrml.open(path) as source:
            function = source.functions[0]
            self.assertIsNone(function.ms_level)
            self.assertIsNone(function.is_centroided)
            self.assertIsNone(function[0].is_centroided)
            self.assert_same(function[0].mz, [100])
            self.assert_same(function[0].intensity, [5])
            self.assertEqual([finding.code for finding in source.findings], ["bytes-zeroed", "representation-unread"])


class Vials(support.TestCase):
    def setUp(self):
        self.source = zrml.open(support.path("vials.rpt"))
        self.addCleanup(self.source.close)

    def test_samples(self):
        self.assertEqual(self.source.format, "report")
        self.assertEqual([sample.number for sample in self.source.samples], [1, 2, 3])
        self.assertEqual(self.source.samples[0].name, "VIAL_1")
        self.assertEqual([len(sample.functions) for sample in self.source.samples], [2, 0, 0])
        self.assertEqual(self.source.samples[-1].functions, ())
        self.assertEqual(self.source.metadata["OperatorName"], "someone")

    def test_functions(self):
        survey, targets = self.source.functions
        self.assertEqual((survey.number, survey.name, survey.kind, survey.polarity), (1, "ES- MS survey", "MS", "negative"))
        self.assertEqual((targets.number, targets.kind, targets.polarity), (3, "ion monitoring", None))
        self.assertEqual([function.file for function in (survey, targets)], [None, None])
        self.assertIsNone(survey.mass_range)

    def test_points_are_sorted(self):
        scan = self.source.functions[0][0]
        self.assert_same(scan.mz, [100, 300])
        self.assert_same(scan.intensity, [200, 100])  # of the base peak's 200, as many in a hundred

    def test_stored_chromatograms(self):
        survey = self.source.functions[0]
        self.assert_same(survey.times, [0.5, 1.5, 2.5])
        self.assert_same(survey.bpc().intensity, [200, 200, 200])
        self.assert_same(survey.tic().intensity, [7, 7, 7])
        self.assert_same(survey.table()["base_peak_intensity"], [200, 200, 200])

    def test_traces(self):
        self.assertEqual([trace.name for trace in self.source.traces], ["Pressure", "Temperature"])
        trace = self.source.functions[1].traces[0]
        self.assertEqual((trace.number, trace.name), (1, "caffeine"))
        self.assert_same(trace.times, [1, 2])
        self.assert_same(trace.intensity, [50, 0])
        self.assertIsNone(self.source.absorbance)


class ManyScans(support.TestCase):
    """Columns of several large pages, which are not where their memory begins."""

    SCANS = 600_000

    def test_table(self):
        path = self.copy_of("run.raw")
        kinds = [("offset", "<u4"), ("points", "<u4"), ("total", "<f4"), ("minutes", "<f4"), ("unused", "V6")]
        index = numpy.zeros(self.SCANS, kinds)
        position = numpy.arange(self.SCANS)
        index["points"] = position % 7
        index["total"] = position % 1000
        index["minutes"] = position / 1024
        index.tofile(path / "_FUNC001.IDX")
        with zrml.open(path) as source:
            table = source.functions[0].table()
        numpy.testing.assert_array_equal(table["number"], position + 1)
        numpy.testing.assert_array_equal(table["points"], position % 7)
        numpy.testing.assert_array_equal(table["tic"], position % 1000)
        numpy.testing.assert_array_equal(table["minutes"], position / 1024)  # exact in 32 bits
        for name in ("base_peak_mz", "base_peak_intensity", "precursor_mz"):
            self.assertTrue(numpy.isnan(table[name]).all(), name)
        for name, column in table.items():
            self.assertEqual(column.shape, (self.SCANS,))
            self.assertTrue(column.flags.aligned, name)
            with self.assertRaises(ValueError):
                column.flags.writeable = True


class DriftBins(support.TestCase):
    def test_bins_add_up_to_something(self):
        with zrml.open(support.path("all.raw")) as source:
            function = next(function for function in source.functions if function.number == 17)
            self.assertGreater(function.drift_bins, 0)
            self.assertIsInstance(function[0].drift_bin(0), zrml.Spectrum)
            self.assertEqual(list(function[0].drift_bin(-1).mz), list(function[0].drift_bin(function.drift_bins - 1).mz))


if __name__ == "__main__":
    unittest.main()
