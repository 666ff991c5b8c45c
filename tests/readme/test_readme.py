"""test_readme.py README PROGRAM MAKE_SAMPLE PACKAGE: what README shows does what it says: each command at the shell, the example in
Python, each file that it points to. The example in C++ is a test of its own, and packages are installed by test-packages.sh."""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

README, PROGRAM, MAKE_SAMPLE, PACKAGE = (pathlib.Path(argument) for argument in sys.argv[1:5])
TEXT = README.read_text(encoding="utf-8")
COMMANDS = re.findall(r"^    (zrml .*?)(?:  +#.*)?$", TEXT, re.M)


class Readme(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        for sample in ("run.raw", "report.rpt"):
            subprocess.run([MAKE_SAMPLE, sample], cwd=self.folder, check=True, capture_output=True)
        shutil.copytree(self.folder / "run.raw", self.folder / "plate/run.raw")
        (self.folder / "ions.tsv").write_text("mz\n195.0877\n556.2771\n")

    def run_here(self, command):
        environment = {**os.environ, "PATH": f"{PROGRAM.parent}:{os.environ['PATH']}", "PYTHONPATH": str(PACKAGE)}
        done = subprocess.run(command, cwd=self.folder, env=environment, capture_output=True, text=True)
        self.assertEqual((done.returncode, done.stderr), (0, ""), command)
        return done.stdout

    def test_commands(self):
        self.assertGreaterEqual(len(COMMANDS), 10)
        for command in COMMANDS:
            with self.subTest(command):
                self.run_here(["bash", "-c", command])
        rows = (self.folder / "tic.tsv").read_text().splitlines()
        self.assertEqual(sum(not row.startswith("#") for row in rows), 1 + 630)  # the sample's survey functions: 600 scans and 30
        self.assertIn("<indexedmzML", (self.folder / "run.mzML").read_text()[:200])
        self.assertTrue((self.folder / "mzml" / "run.mzML").exists())

    def test_five_commands(self):
        first = TEXT[TEXT.index("## Five commands") :].split("\n\n")[1]
        self.assertEqual(len(first.splitlines()), 5)

    def test_python(self):
        (code,) = re.findall(r"```python\n(.*?)```", TEXT, re.S)
        (expected,) = re.findall(r"print\(.*\)  # (.*)$", code, re.M)
        self.assertEqual(self.run_here(["/usr/bin/python3", "-B", "-c", code]), expected + "\n")

    def test_links(self):
        links = [link for link in re.findall(r"\]\(([^)#]+)", TEXT) if not link.startswith("http")]
        self.assertGreaterEqual(len(links), 10)
        for link in links:
            self.assertTrue((README.parent / link).exists(), link)
        rows = re.findall(r"^\| (`[a-z/`, ]+/`) \|", TEXT, re.M)
        self.assertGreaterEqual(len(rows), 15)
        for folder in re.findall(r"`([a-z/]+)`", " ".join(rows)):
            self.assertTrue((README.parent / folder).is_dir(), folder)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
