"""What pandas gets."""

import subprocess
import sys
import unittest

import support
import zrml


class Frames(support.TestCase):
    def setUp(self):
        self.source = zrml.open(support.path("odd.raw"))
        self.addCleanup(self.source.close)
        self.function = self.source.functions[0]

    def columns(self, frame):
        return {name: frame[name].tolist() for name in frame.columns}

    def test_spectra(self):
        expected = {"mz": [100, 200], "intensity": [1, 2]}
        self.assertEqual(self.columns(self.function[0].to_frame()), expected)
        self.assertEqual(self.columns(self.function.sum(0, 1).to_frame()), expected)

    def test_chromatograms(self):
        expected = {"minutes": [1, 2, 3], "intensity": [1, 4, 32]}
        self.assertEqual(self.columns(self.function.xic(100).to_frame()), expected)

    def test_function(self):
        frame = self.function.to_frame(points=True)
        self.assertEqual(list(frame.columns), list(self.function.table()))
        self.assertEqual(frame["base_peak_mz"].tolist(), [200, 200.03125, 100])
        self.assertEqual(frame["number"].tolist(), [1, 2, 3])
        self.assertTrue(self.function.to_frame()["base_peak_mz"].isna().all())

    def test_absorbance(self):
        frame = self.source.absorbance.to_frame()
        self.assertEqual(frame.columns.tolist(), [210, 220])
        self.assertEqual(frame.index.tolist(), [0.5, 1.5])
        self.assertEqual(frame.values.tolist(), [[1, 2], [3, 4]])
        self.assertEqual((frame.index.name, frame.columns.name), ("minutes", "wavelength"))
        scan = self.source.absorbance.scans[0].to_frame()
        self.assertEqual(self.columns(scan), {"wavelength": [210, 220], "value": [1, 2]})

    def test_traces(self):
        with zrml.open(support.path("small.raw")) as source:
            self.assertEqual(self.columns(source.traces[0].to_frame()), {"time": [0.5, 1], "intensity": [5, 2]})

    def test_frames_can_be_changed(self):
        frame = self.function[0].to_frame()
        frame.loc[0, "mz"] = 7
        self.assertEqual(frame["mz"][0], 7)
        self.assertEqual(self.function[0].mz[0], 100)

    def test_pandas_is_not_loaded_before(self):
        code = "import sys, zrml; zrml.open(sys.argv[1]).functions[0].table(); print('pandas' in sys.modules)"
        command = [sys.executable, "-B", "-c", code, str(support.path("odd.raw"))]
        self.assertEqual(subprocess.run(command, capture_output=True, text=True, check=True).stdout, "False\n")


if __name__ == "__main__":
    unittest.main()
