"""Every number equals what the command line prints, to the bit: of all data layouts, kinds of functions and reports."""

import math
import struct
import unittest
from decimal import Decimal

import support
import zrml
from zrml._library import library

NAMES = ("small.raw", "odd.raw", "cut.raw", "all.raw", "run.raw", "vials.rpt", "unordered.rpt", "report.rpt")
MOST_SCANS = 3 if support.IS_SANITIZED else 8  # of a function whose scans are compared one by one
MOST_BINS = 3
LARGEST = 1  # ZRML_LARGEST


def some(count, most=MOST_SCANS):
    """Positions from the first to the last, evenly apart."""
    return range(count) if count <= most else sorted({i * (count - 1) // (most - 1) for i in range(most)})


def decimal(number):
    """As --range takes it: no exponent, and the same double."""
    return format(Decimal(number), "f")


class Numbers(support.TestCase):
    def each(self):
        for name in NAMES:
            with zrml.open(support.path(name)) as source:
                yield support.path(name), source

    def each_function(self):
        """Every function with the options that the command line has for it."""
        for path, source in self.each():
            for sample in source.samples:
                for function in sample.functions:
                    yield path, ("--function", function.id, "--sample", sample.number), function

    def test_info(self):
        for path, source in self.each():
            printed = support.zrml_json("info", path)
            self.assertEqual(source.path, printed["source"])
            self.assertEqual(source.format == "report", printed["report"])
            self.assertEqual(len(source.samples), len(printed["samples"]))
            for sample, sample_printed in zip(source.samples, printed["samples"]):
                self.compare_sample(sample, sample_printed)

    def compare_sample(self, sample, printed):
        self.assertEqual((sample.number, sample.name), (printed["number"], printed["name"]))
        self.assertEqual([(trace.number, trace.name) for trace in sample.traces], self.names(printed["traces"]))
        scans = None if sample.absorbance is None else len(sample.absorbance.scans)
        self.assertEqual(scans, printed["absorbanceScans"])
        self.assertEqual(len(sample.functions), len(printed["functions"]))
        for function, function_printed in zip(sample.functions, printed["functions"]):
            self.compare_function(function, function_printed)
        if not sample.functions:
            self.assertEqual(sample.metadata, self.with_values(printed["metadata"]))

    @staticmethod
    def names(printed):
        return [(item["number"], item["name"]) for item in printed]

    @staticmethod
    def with_values(printed):
        return {key: value for key, value in printed.items() if value is not None}

    def compare_function(self, function, printed):
        self.assertEqual(function.id, str(printed["number"]))
        self.assertEqual(function.process is None, isinstance(printed["number"], int))
        self.assertEqual(function.name, printed["name"])
        self.assertEqual(function.file, printed["file"])
        self.assertEqual(function.kind, printed["kind"])
        self.assertEqual(function.ms_level, printed["msLevel"])
        self.assertEqual(function.scan_type or "none", printed["scanType"])
        self.assertEqual(function.polarity or "unknown", printed["polarity"])
        self.assertEqual(len(function), printed["scans"])
        self.assertEqual(function.is_centroided, printed["centroided"])
        self.assertEqual(function.drift_bins, printed["driftBins"] or 0)
        self.assertEqual(function.mass_range, printed["massRange"] and tuple(printed["massRange"]))
        times = [time for time in function.times if not math.isnan(time)]
        self.assertEqual([min(times), max(times)] if times else None, printed["minutes"])
        self.assertEqual([(trace.number, trace.name) for trace in function.traces], self.names(printed["traces"]))
        self.assertEqual(function.metadata, self.with_values(printed["metadata"]))

    def test_texts_stand_in_the_report(self):
        compared = 0
        for path, source in self.each():
            for function in (function for sample in source.samples for function in sample.functions):
                if source.format != "report":
                    self.assertIsNone(function.text)
                    continue
                with open(path, "rb") as file:
                    report = file.read()
                encodings = [code for code in ("utf-8", "cp1252") if function.text.encode(code, "replace") in report]
                self.assertNotEqual(encodings, [])
                self.assertTrue(function.text.startswith("[FUNCTION]"))
                compared += 1
        self.assertGreater(compared, 0)

    def test_scans(self):
        compared = 0
        for path, place, function in self.each_function():
            table = function.table()
            for i in some(len(function)):

                def read():
                    scan = function[i]
                    scan.mz
                    return scan

                found = self.both(read, "spectrum", path, *place, "--scan", i + 1)
                if found:
                    self.compare_scan(*found)
                    self.compare_row(table, i, found[1])
                    compared += 1
        self.assertGreater(compared, 100)

    def compare_scan(self, scan, printed):
        self.assert_same(scan.mz, printed["masses"])
        self.assert_same(scan.intensity, printed["intensities"])
        self.assertEqual(scan.number, printed["scan"])
        self.assert_same(
            [scan.minutes, scan.end_minutes, scan.precursor_mz, scan.scan_value],
            [printed["startMinutes"], printed["endMinutes"], printed["precursorMz"], printed["scanValue"]],
        )
        self.assertEqual(scan.is_centroided, printed["centroided"])
        self.assertEqual(scan.lost, printed["lostPoints"] or 0)

    def test_centroids(self):
        peaks = 0
        for path, place, function in self.each_function():
            for i in some(len(function)):
                for areas in (False, True):
                    options = ("--centroid", *(("--areas",) if areas else ()))
                    read = lambda: function[i].centroids(areas=areas)  # noqa: E731
                    found = self.both(read, "spectrum", path, *place, "--scan", i + 1, *options)
                    if found:
                        self.assert_same(found[0].mz, found[1]["masses"])
                        self.assert_same(found[0].intensity, found[1]["intensities"])
                        peaks += len(found[0].mz) if found[1]["centroids"] else 0
        self.assertGreater(peaks, 100)

    def test_sums_and_their_centroids(self):
        compared = 0
        for path, place, function in self.each_function():
            end = min(len(function), 5)
            options = ("--scans", f"1-{end}", "--sum", "--ppm", 20)
            try:
                printed = support.zrml_json("spectrum", path, *place, *options)
            except support.CommandFailed:
                continue
            total = function.sum(0, end, ppm=20)
            self.compare_sum(total, printed)
            printed = support.zrml_json("spectrum", path, *place, *options, "--centroid")
            self.assert_same(total.centroids().mz, printed["masses"])
            self.assert_same(total.centroids().intensity, printed["intensities"])
            compared += len(printed["masses"])
        self.assertGreater(compared, 100)

    def compare_sum(self, total, printed):
        self.assert_same(total.mz, printed["masses"])
        self.assert_same(total.intensity, printed["intensities"])
        self.assertEqual(total.is_centroided, printed["centroided"])
        self.assertEqual(total.scans_added, printed["scansAdded"])
        self.assertEqual(total.scans_left_out, printed["scansLeftOut"])
        self.assertEqual(total.background_left_out, printed["backgroundLeftOut"] or 0)
        self.assertEqual(total.lost, printed["lostPoints"] or 0)

    def test_means_less_a_background_of_chosen_scans(self):
        """Every third scan less those of the first half of the time, by peaks of several widths."""
        compared = left_out = 0
        for path, place, function in self.each_function():
            chosen = range(0, min(len(function), 40), 3)
            times = sorted(time for time in function.times if not math.isnan(time))
            if not times:
                continue
            minus = (times[0], times[len(times) // 2])
            options = ("--scans", ",".join(str(i + 1) for i in chosen), "--minus", "-".join(map(decimal, minus)))
            for name, width in (("ppm", 20), ("da", 0), ("da", 0.3)):
                for mean in (False, True):
                    more = ("--mean" if mean else "--sum", f"--{name}", width)
                    try:
                        printed = support.zrml_json("spectrum", path, *place, *options, *more)
                    except support.CommandFailed as failed:
                        with self.assertRaises((zrml.Error, ValueError)) as raised:
                            function.sum(scans=chosen, minus=minus, mean=mean, **{name: width})
                        self.assertTrue(str(failed).endswith(str(raised.exception)), (failed, raised.exception))
                        continue
                    total = function.sum(scans=chosen, minus=minus, mean=mean, **{name: width})
                    self.compare_sum(total, printed)
                    compared += len(total.mz)
                    left_out += total.scans_left_out + total.background_left_out
        self.assertGreater(compared, 1000)
        self.assertGreater(left_out, 0)

    def compare_row(self, table, row, printed):
        self.assertEqual(table["number"][row], printed["scan"])
        self.assertGreaterEqual(table["points"][row], printed["points"])
        self.assert_same(
            [table[name][row] for name in ("minutes", "precursor_mz", "scan_value")],
            [printed["startMinutes"], printed["precursorMz"], printed["scanValue"]],
        )

    def test_table_of_points(self):
        compared = 0
        for path, place, function in self.each_function():
            try:
                table = function.table(points=True)
            except zrml.Error as error:
                with self.assertRaisesRegex(zrml.Error, f"^{error}$"):
                    [scan.mz for scan in function]
                continue
            for i in some(len(function)):
                printed = support.zrml_json("spectrum", path, *place, "--scan", i + 1)
                self.assertEqual(table["points"][i], printed["points"])
                self.assert_same([table["base_peak_mz"][i]], [printed["basePeakMz"]])
                intensity = 0 if printed["points"] == 0 and not printed["lostPoints"] else printed["basePeakIntensity"]
                self.assert_same([table["base_peak_intensity"][i]], [intensity])
                compared += 1
        self.assertGreater(compared, 100)

    def test_iteration(self):
        for _, _, function in self.each_function():
            for i, scan in enumerate(function):
                try:
                    expected = function[i].mz, function[i].intensity
                except zrml.Error as error:
                    self.assertRaises(type(error), lambda: scan.mz)
                    continue
                self.assertEqual(scan.mz.tobytes(), expected[0].tobytes())
                self.assertEqual(scan.intensity.tobytes(), expected[1].tobytes())

    def compare_chromatogram(self, read, path, place, *options):
        found = self.both(read, "chromatogram", path, *place, *options)
        if found:
            chromatogram, printed = found
            self.assert_same(chromatogram.minutes, printed["times"], options)
            self.assert_same(chromatogram.intensity, printed["intensities"], options)

    def test_chromatograms(self):
        for path, place, function in self.each_function():
            self.compare_chromatogram(function.tic, path, place, "--tic")
            self.compare_chromatogram(function.bpc, path, place, "--bpc")
            self.assert_same(function.table()["tic"], function.tic().intensity)

    def test_ions(self):
        masses = [100.0, 300.0625]
        for path, place, function in self.each_function():
            for width, half in (({"da": 0.5}, [0.5] * len(masses)), ({"ppm": 20}, [mass * 20 / 1e6 for mass in masses])):
                for i, by in enumerate(half):
                    limits = f"{decimal(masses[i] - by)}-{decimal(masses[i] + by)}"
                    self.compare_chromatogram(
                        lambda: function.xic(masses, **width)[i], path, place, "--range", limits
                    )

    def test_many_ions(self):
        """The command line, the C library and the package: all ions in one pass, each beside its range alone."""
        masses = [50.5, 100.0, 195.0877, 300.0625, 556.2771]
        compared = 0
        for path, place, function in self.each_function():
            for name, width in (("ppm", 20), ("da", 0.5)):
                options = ("--mz", ",".join(map(str, masses)), f"--{name}", width)
                found = self.both(lambda: function.xic(masses, **{name: width}), "chromatogram", path, *place, *options)
                if not found:
                    continue
                largest = self.largest(function, [each["massRange"] for each in found[1]["chromatograms"]])
                printed_largest = support.zrml_json("chromatogram", path, *place, *options, "--max")
                for i, chromatogram in enumerate(found[0]):
                    printed = found[1]["chromatograms"][i]
                    limits = "-".join(map(decimal, printed["massRange"]))
                    alone = support.zrml_json("chromatogram", path, *place, "--range", limits)
                    alone_largest = support.zrml_json("chromatogram", path, *place, "--bpc", "--range", limits)
                    self.assertEqual(printed["mz"], masses[i])
                    self.assert_same(chromatogram.minutes, printed["times"], options)
                    self.assert_same(chromatogram.intensity, printed["intensities"], options)
                    self.assert_same(chromatogram.intensity, alone["intensities"], options)
                    self.assert_same(largest[i], printed_largest["chromatograms"][i]["intensities"], options)
                    self.assert_same(largest[i], alone_largest["intensities"], options)
                    compared += any(printed["intensities"])
        self.assertGreater(compared, 20)

    @staticmethod
    def largest(function, ranges):
        """By the C library: for each range the largest intensities of all scans."""
        ends = [end for limits in ranges for end in limits]
        count = len(ranges) * len(function)
        memory = bytes(8 * count)
        function._handle.call(
            library.zrml_read_mass_ranges, *function._place, struct.pack(f"{len(ends)}d", *ends), len(ranges),
            LARGEST, memory, count,
        )
        values = struct.unpack(f"{count}d", memory)
        return [values[i * len(function) : (i + 1) * len(function)] for i in range(len(ranges))]

    def test_traces(self):
        compared = 0
        for path, source in self.each():
            for sample in source.samples:
                owners = [((), sample)] + [(("--function", f.id), f) for f in sample.functions]
                for place, owner in owners:
                    for trace in owner.traces:
                        options = (*place, "--sample", sample.number, "--trace", trace.number)
                        printed = support.zrml_json("chromatogram", path, *options)
                        self.assertEqual(trace.name, printed["traceName"])
                        self.assert_same(trace.times, printed["times"])
                        self.assert_same(trace.intensity, printed["intensities"])
                        compared += 1
        self.assertGreater(compared, 10)

    def test_absorbance(self):
        compared = 0
        for path, source in self.each():
            scans = () if source.absorbance is None else source.absorbance.scans
            for i in some(len(scans)):
                found = self.both(lambda: scans[i].values, "spectrum", path, "--absorbance", "--scan", i + 1)
                if found:
                    self.compare_absorbance(source.absorbance, i, found[1])
                    compared += 1
        self.assertGreater(compared, 6)

    def compare_absorbance(self, absorbance, i, printed):
        scan = absorbance.scans[i]
        self.assertEqual(scan.number, printed["scan"])
        self.assert_same([scan.minutes, absorbance.minutes[i]], [printed["startMinutes"]] * 2)
        self.assert_same(scan.wavelengths, printed["wavelengths"])
        self.assert_same(scan.values, printed["absorbances"])
        if absorbance.values is not None:
            self.assert_same(absorbance.wavelengths, printed["wavelengths"])
            self.assert_same(absorbance.values[i], printed["absorbances"])

    def test_drift_bins(self):
        compared = 0
        for path, place, function in self.each_function():
            for scan in some(len(function) if function.drift_bins else 0, 3):
                for b in some(function.drift_bins, MOST_BINS):
                    options = ("--scan", scan + 1, "--bin", b + 1)
                    found = self.both(lambda: function[scan].drift_bin(b), "spectrum", path, *place, *options)
                    if found:
                        self.assert_same(found[0].mz, found[1]["masses"])
                        self.assert_same(found[0].intensity, found[1]["intensities"])
                        compared += 1
        self.assertGreater(compared, 6)


if __name__ == "__main__":
    unittest.main()
