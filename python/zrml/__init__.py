"""Reads mass-spectrometry data: raw directories and reports.

    import zrml

    with zrml.open("run.raw") as source:
        for function in source.functions:
            print(function.number, function.name, len(function))
        scan = source.functions[0][0]
        print(scan.minutes, scan.mz, scan.intensity)

A source has samples, a sample has functions, traces, absorbance spectra and metadata, a function is a sequence of
scans. Positions count from 0, as everywhere in Python; `number` is the file's own number, which people see.

Times are minutes, masses are m/z, wavelengths are nanometres. Arrays are NumPy's, float64, and cannot be made
writable: take a copy to change one. Numbers that no file has are NaN, words are None.

A position that is not there raises IndexError, a wrong value ValueError, and what is wrong with the data a
zrml.Error. `to_frame()` gives pandas; nothing else needs it.
"""

from . import _library
from ._absorbance import Absorbance, AbsorbanceScan
from ._chromatogram import Chromatogram, Trace
from ._errors import DamagedError, Error, NotFoundError, NotRecognisedError, UnreadableError
from ._function import Function
from ._scan import Scan, Spectrum, Sum
from ._source import Finding, Sample, Source, open

__version__: str = _library.library.zrml_version().decode()

__all__ = [
    "Absorbance",
    "AbsorbanceScan",
    "Chromatogram",
    "DamagedError",
    "Error",
    "Finding",
    "Function",
    "NotFoundError",
    "NotRecognisedError",
    "Sample",
    "Scan",
    "Source",
    "Spectrum",
    "Sum",
    "Trace",
    "UnreadableError",
    "open",
]

for _name in __all__:  # where people find them, not where they are written
    globals()[_name].__module__ = __name__
del _name
