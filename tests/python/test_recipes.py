"""The recipes of docs/python.md run as they are printed, and print what stands there."""

import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

import matplotlib.image
import numpy
import support

PAGE = (pathlib.Path(os.environ["ZRML_DOCS"]) / "python.md").read_text(encoding="utf-8")
RECIPE = re.compile(r"^## (.+?)\n(?:(?!^##).)*?^```python\n(.*?)^```\n(?:\n```\n(.*?)^```\n)?", re.M | re.S)
PLOTS = {"Plot a chromatogram": "chromatogram.png", "Average spectrum": "spectrum.png"}


class Recipes(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        (self.folder / "run.raw").symlink_to(support.path("run.raw"))

    def run_recipe(self, name, code):
        environment = {**os.environ, "MPLCONFIGDIR": str(self.folder), "PYTHONIOENCODING": "utf-8"}
        command = [sys.executable, "-B", "-W", "error", "-c", code]
        done = subprocess.run(command, cwd=self.folder, capture_output=True, encoding="utf-8", env=environment)
        self.assertEqual(done.returncode, 0, f"{name}: {done.stderr}")
        return done.stdout

    def test_all(self):
        recipes = RECIPE.findall(PAGE)
        self.assertEqual(len(recipes), 6)
        self.assertEqual(PAGE.count("```python"), len(recipes))
        for name, code, printed in recipes:
            with self.subTest(name):
                self.assertEqual(self.run_recipe(name, code), printed)
                if name in PLOTS:
                    self.check_plot(self.folder / PLOTS[name])
        self.assertLessEqual(set(PLOTS), {name for name, _, _ in recipes})

    def check_plot(self, path):
        """Something is drawn in the middle, too, where the axes are not."""
        image = matplotlib.image.imread(path)[..., :3]
        height, width = image.shape[:2]
        middle = image[height // 5 : -height // 5, width // 5 : -width // 5]
        drawn = numpy.count_nonzero((middle < 0.9).any(axis=-1))
        self.assertGreater(drawn, 200)
        self.assertLess(drawn, middle.size / 3 / 2)


if __name__ == "__main__":
    unittest.main()
