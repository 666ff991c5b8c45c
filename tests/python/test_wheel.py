"""test_wheel.py MAKE_WHEEL PACKAGE VERSION PLATFORM: the wheel has what it says, is the same each time, and pip installs it
where there is no network."""

import base64
import csv
import hashlib
import io
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest
import zipfile

MAKE_WHEEL, PACKAGE, VERSION, PLATFORM = sys.argv[1:5]
LIBRARY = {"linux_x86_64": "libzrml.so", "win_amd64": "zrml.dll"}[PLATFORM]
RUNS_HERE = PLATFORM == "linux_x86_64" and not os.environ.get("ZRML_SANITIZE")


def make(folder, package=PACKAGE):
    command = [sys.executable, "-B", MAKE_WHEEL, package, VERSION, PLATFORM, folder]
    done = subprocess.run(command, check=True, capture_output=True, text=True)
    return pathlib.Path(done.stdout.rstrip("\n"))


class Wheel(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.path = make(self.folder)

    def test_name(self):
        self.assertEqual(self.path, self.folder / f"zrml-{VERSION}-py3-none-{PLATFORM}.whl")

    def test_same_bytes_each_time(self):
        other = self.folder / "elsewhere"
        copy = shutil.copytree(PACKAGE, other / "zrml", copy_function=shutil.copyfile)  # with other times
        for path in (copy, *copy.iterdir()):
            os.utime(path, (0, 1e9))
        self.assertEqual(make(other, copy).read_bytes(), self.path.read_bytes())

    def test_files(self):
        with zipfile.ZipFile(self.path) as wheel:
            self.assertIsNone(wheel.testzip())
            names = wheel.namelist()
            content = {name: wheel.read(name) for name in names}
        information = f"zrml-{VERSION}.dist-info/"
        package = {path.name for path in pathlib.Path(PACKAGE).iterdir() if path.name != "__pycache__"}
        self.assertLessEqual({"__init__.py", "py.typed", LIBRARY}, package)
        expected = {f"zrml/{name}" for name in package}
        expected |= {information + name for name in ("METADATA", "WHEEL", "RECORD", "LICENSE", "THIRD_PARTY.md")}
        self.assertEqual(set(names), expected)
        self.assertEqual(len(names), len(set(names)))
        for name in package:
            self.assertEqual(content[f"zrml/{name}"], (pathlib.Path(PACKAGE) / name).read_bytes())
        metadata = content[information + "METADATA"].decode().splitlines()
        for line in ("Name: zrml", f"Version: {VERSION}", "Requires-Python: >=3.9", "Requires-Dist: numpy >=1.20"):
            self.assertIn(line, metadata)
        self.assertIn(f"Tag: py3-none-{PLATFORM}", content[information + "WHEEL"].decode().splitlines())
        for name in ("LICENSE", "THIRD_PARTY.md"):
            self.assertIn(f"License-File: {name}", metadata)
        self.assertIn("MIT License", content[information + "LICENSE"].decode())
        self.check_record(content, information + "RECORD")

    def check_record(self, content, itself):
        rows = list(csv.reader(io.StringIO(content[itself].decode())))
        self.assertEqual({row[0] for row in rows}, set(content))
        for name, digest, size in rows:
            if name == itself:
                self.assertEqual((digest, size), ("", ""))
                continue
            expected = base64.urlsafe_b64encode(hashlib.sha256(content[name]).digest()).rstrip(b"=").decode()
            self.assertEqual((digest, size), (f"sha256={expected}", str(len(content[name]))), name)

    def test_package_without_library(self):
        copy = shutil.copytree(PACKAGE, self.folder / "without" / "zrml")
        (copy / LIBRARY).unlink()
        with self.assertRaises(subprocess.CalledProcessError) as raised:
            make(self.folder / "without", copy)
        self.assertIn(f"has no {LIBRARY}", raised.exception.stderr)

    @unittest.skipUnless(RUNS_HERE, "not for this system")
    def test_installed_without_network(self):
        venv = self.folder / "venv"
        environment = {name: value for name, value in os.environ.items() if name != "PYTHONPATH"}
        environment["PIP_DISABLE_PIP_VERSION_CHECK"] = "1"

        def run(*command):
            done = subprocess.run(command, capture_output=True, text=True, env=environment, cwd=self.folder)
            self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
            return done.stdout

        run(sys.executable, "-m", "venv", "--system-site-packages", venv)
        python = venv / "bin" / "python"
        run(python, "-m", "pip", "install", "--no-index", self.path)
        code = "import zrml; print(zrml.__file__); print(zrml.__version__); print(zrml.open.__name__)"
        file, version, name = run(python, "-c", code).splitlines()
        self.assertTrue(pathlib.Path(file).resolve().is_relative_to(venv.resolve()), file)
        self.assertEqual((version, name), (VERSION, "open"))
        self.assertIn("Requires: numpy", run(python, "-m", "pip", "show", "zrml"))
        run(python, "-m", "pip", "uninstall", "--yes", "zrml")
        self.assertEqual(list((venv / "lib").glob("python*/site-packages/zrml*")), [])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
