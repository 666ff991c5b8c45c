"""Where the tests find sources and the command line, and how they compare numbers."""

import functools
import json
import os
import pathlib
import shutil
import struct
import subprocess
import tempfile
import unittest

import zrml

SOURCES = pathlib.Path(os.environ["ZRML_SOURCES"])
PROGRAM = os.environ["ZRML_PROGRAM"]
IS_SANITIZED = "ZRML_SANITIZED" in os.environ


def path(name):
    return SOURCES / name


class CommandFailed(Exception):
    """The command line has failed; the text is its line about that."""


@functools.lru_cache(maxsize=None)
def zrml_json(*arguments):
    """What the command line prints with --json; nobody changes it."""
    environment = {name: value for name, value in os.environ.items() if name != "LD_PRELOAD"}
    done = subprocess.run([PROGRAM, *map(str, arguments), "--json"], capture_output=True, env=environment)
    if done.returncode != 0:
        raise CommandFailed(done.stderr.decode().strip())
    return json.loads(done.stdout, parse_int=lambda text: -0.0 if text == "-0" else int(text))


def bits(values):
    """Doubles by their bits; a NaN is a NaN, whatever its bits, and so is what JSON has no number for."""
    numbers = [float("nan") if value is None else float(value) for value in values]
    return ["nan" if number != number else struct.pack("<d", number).hex() for number in numbers]


class TestCase(unittest.TestCase):
    def assert_same(self, found, expected, about=None):
        """The same numbers to the bit, in the same order."""
        self.assertEqual(bits(found), bits(expected), about)

    def both(self, read, *arguments):
        """What `read` gives and what the command line prints; None when both fail with the same words."""
        try:
            printed = zrml_json(*arguments)
        except CommandFailed as failed:
            with self.assertRaises(zrml.Error) as raised:
                read()
            self.assertTrue(str(failed).endswith(f": {raised.exception}"), (str(failed), str(raised.exception)))
            return None
        return read(), printed

    def folder(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        return pathlib.Path(folder.name)

    def copy_of(self, name):
        """A source that the test may change."""
        return pathlib.Path(shutil.copytree(path(name), self.folder() / name))
