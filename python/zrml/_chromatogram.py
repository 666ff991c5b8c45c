"""Series over time: chromatograms of scans, and traces that were recorded beside them."""

from __future__ import annotations

from typing import TYPE_CHECKING

from ._library import TraceRecord, library
from ._show import counted, frame, shortened, span

if TYPE_CHECKING:
    import pandas

    from ._arrays import FloatArray
    from ._handle import Handle


class Chromatogram:
    """One value for each scan of a function.

    name: what it shows, "TIC", "BPC" or a range of m/z.
    minutes: when each scan was taken, float64, shape (scans,); NaN where no file has it.
    intensity: float64, shape (scans,); NaN where no file has it.
    """

    __slots__ = ("name", "minutes", "intensity")

    def __init__(self, name: str, minutes: FloatArray, intensity: FloatArray) -> None:
        self.name = name
        self.minutes = minutes
        self.intensity = intensity

    def to_frame(self) -> pandas.DataFrame:
        """A pandas DataFrame with the columns `minutes` and `intensity`."""
        return frame({"minutes": self.minutes, "intensity": self.intensity})

    def __repr__(self) -> str:
        return f"<zrml.Chromatogram {self.name!r}: {counted(len(self.minutes), 'scan')}{span(self.minutes, 'min')}>"


class Trace:
    """A pressure, a detector's signal: what was recorded beside the scans.

    number: from 1. name: as the file has it.
    The points are read when they are first asked for.
    """

    def __init__(self, handle: Handle, sample: int, function: int, position: int, number: int, name: str) -> None:
        self.number = number
        self.name = name
        self._handle = handle
        self._place = (sample, function, position)
        self._points: tuple[FloatArray, FloatArray] | None = None

    def _read(self) -> tuple[FloatArray, FloatArray]:
        if self._points is None:
            self._points = self._handle.arrays(library.zrml_read_trace, *self._place)
        return self._points

    @property
    def times(self) -> FloatArray:
        """As stored: no file has their unit. float64, shape (points,)."""
        return self._read()[0]

    @property
    def intensity(self) -> FloatArray:
        """float64, shape (points,)."""
        return self._read()[1]

    def to_frame(self) -> pandas.DataFrame:
        """A pandas DataFrame with the columns `time` and `intensity`."""
        return frame({"time": self.times, "intensity": self.intensity})

    def __repr__(self) -> str:
        return f"<zrml.Trace {self.number} {shortened(self.name)!r}>"


def traces_of(handle: Handle, sample: int, function: int) -> tuple[Trace, ...]:
    """The traces of a sample, or of a function."""
    found = handle.all_described(TraceRecord, library.zrml_trace_count, library.zrml_get_trace, sample, function)
    return tuple(
        Trace(handle, sample, function, position, trace["number"], trace["name"])
        for position, trace in enumerate(found)
    )
