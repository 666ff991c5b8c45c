"""Spectra: points of m/z and intensity."""

from __future__ import annotations

from ctypes import byref, c_size_t
from typing import TYPE_CHECKING, SupportsIndex

import numpy as np

from ._arrays import floats, room_for
from ._errors import OK, exception_of
from ._library import CentroidOptions, ScanRecord, SumRecord, library
from ._position import resolved
from ._show import between, closed_table, counted, frame, html_table, span

if TYPE_CHECKING:
    from collections.abc import Iterator

    import pandas

    from ._arrays import FloatArray
    from ._handle import Points
    from ._function import Function
    from ._loop import Loop


class Spectrum:
    """Points in ascending m/z. Both arrays have one shape, (points,), and cannot be made writable."""

    __slots__ = ("_points", "_has_profile")
    _points: Points | None
    _has_profile: bool

    def __init__(self, mz: FloatArray, intensity: FloatArray, has_profile: bool = False) -> None:
        self._points = (mz, intensity, 0)
        self._has_profile = has_profile

    def _read(self) -> Points:
        assert self._points is not None
        return self._points

    @property
    def mz(self) -> FloatArray:
        """m/z of each point, ascending: float64, shape (points,)."""
        return (self._points or self._read())[0]

    @property
    def intensity(self) -> FloatArray:
        """Intensity of each point, in the file's own counts: float64, shape (points,)."""
        return (self._points or self._read())[1]

    def _is_profile(self) -> bool:
        return self._has_profile

    def centroids(self, *, areas: bool = False, min_signal_to_noise: float = 2.5) -> Spectrum:
        """The peaks of a profile; of what is peaks already, chosen ions or absorbance, a spectrum of the same points.

        areas: the sums of the samples of the peaks in place of their heights.
        min_signal_to_noise: peaks that stand out of what is beside them by less are left out.

        They are not the instrument's own centroids. ValueError for a signal to noise that is not above 0, TypeError
        for areas that are neither True nor False.
        """
        if not isinstance(areas, (bool, np.bool_)):
            raise TypeError(f"areas is True or False, not {areas!r}")
        if not min_signal_to_noise > 0:
            raise ValueError(f"min_signal_to_noise is above 0, not {min_signal_to_noise}")
        if not self._is_profile():
            return Spectrum(self.mz, self.intensity)
        options = CentroidOptions()
        options.is_area = int(bool(areas))
        options.min_signal_to_noise = min_signal_to_noise
        room = len(self.mz)
        mz, intensity, count = room_for(room), room_for(room), c_size_t()
        status = library.zrml_find_centroids(
            self.mz.tobytes(), self.intensity.tobytes(), room, byref(options), mz, intensity, room, byref(count)
        )
        if status != OK:
            raise exception_of(status, "centroids cannot be found")
        return Spectrum(floats(mz, count.value), floats(intensity, count.value))

    def to_frame(self) -> pandas.DataFrame:
        """The points as a pandas DataFrame with the columns `mz` and `intensity`."""
        return frame({"mz": self.mz, "intensity": self.intensity})

    def __repr__(self) -> str:
        return f"<zrml.{type(self).__name__}: {counted(len(self.mz), 'point')}{span(self.mz, 'm/z')}>"


class Sum(Spectrum):
    """Scans added up: `function.sum(...)`.

    is_centroided: whether points are peaks, not samples of a profile.
    scans_added: how many scans it is of; one without points, which measured nothing, is one of them.
    scans_left_out: how many could not be added: peaks among profiles, or the other way round, profiles of one or
        two points, scans whose points are all lost; of absorbance, those with other wavelengths.
    background_added, background_left_out: the same of the background; 0 without one.
    lost: points of the scans that the index declares and the file does not hold.
    """

    __slots__ = (
        "is_centroided",
        "scans_added",
        "scans_left_out",
        "background_added",
        "background_left_out",
        "lost",
    )

    def __init__(self, mz: FloatArray, intensity: FloatArray, record: SumRecord, has_profiles: bool) -> None:
        self.is_centroided = bool(record.is_centroided)
        super().__init__(mz, intensity, has_profiles and not self.is_centroided)
        self.scans_added: int = record.added
        self.scans_left_out: int = record.left_out
        self.background_added: int = record.background_added
        self.background_left_out: int = record.background_left_out
        self.lost: int = record.lost


class Scan(Spectrum):
    """One scan of a function: `function[i]`.

    Its points are read when they are first asked for, or ahead of that in a loop, and kept as long as the scan
    itself. Numbers that no file tells are NaN. Reading raises DamagedError or UnreadableError when the points
    cannot be read at all, and ValueError when the source is closed.
    """

    __slots__ = ("_function", "_position", "_loop", "_record")

    def __init__(self, function: Function, position: int) -> None:
        self._function = function
        self._position = position
        self._loop: Loop | None = None
        self._record: ScanRecord | None = None
        self._points = None

    def _is_profile(self) -> bool:
        return not self._described().is_centroided and self._function._has_profiles

    def _read(self) -> Points:
        loop = self._loop
        if loop is None:
            points = self._function._read_points(self._position, self._described().points)
        else:
            ahead = loop.ahead.pop(self._position, None)
            points = loop.read(self._position) if ahead is None or loop.handle.is_closed else ahead
        self._points = points
        return points

    def _described(self) -> ScanRecord:
        if self._record is None:
            function = self._function
            self._record = function._handle.record(
                ScanRecord, library.zrml_get_scan, *function._place, self._position
            )
        return self._record

    @property
    def number(self) -> int:
        """The file's own number, from 1."""
        return int(self._described().number)

    @property
    def minutes(self) -> float:
        """When the scan begins, in minutes of the run."""
        return float(self._described().minutes)

    @property
    def end_minutes(self) -> float:
        """When the scan ends, in minutes of the run."""
        return float(self._described().end_minutes)

    @property
    def is_centroided(self) -> bool | None:
        """Whether points are peaks, not samples of a profile; None where it is not known."""
        kind = self._described().is_centroided
        return None if kind < 0 else bool(kind)

    @property
    def precursor_mz(self) -> float:
        """m/z of the precursor; NaN for functions without precursors."""
        return float(self._described().precursor_mz)

    @property
    def scan_value(self) -> float:
        """The scan's additional value, such as a cone voltage."""
        return float(self._described().scan_value)

    @property
    def lost(self) -> int:
        """How many points the index declares that the file does not hold."""
        return (self._points or self._read())[2]

    def drift_bin(self, b: SupportsIndex) -> Spectrum:
        """The points of drift bin `b`, from 0 up to `function.drift_bins`; negative ones count from the last.

        IndexError where there is no such bin, and always without mobility data.
        """
        function = self._function
        bin_position = resolved(b, function.drift_bins, "drift bin")
        mz, intensity = function._handle.arrays(
            library.zrml_read_drift_bin, *function._place, self._position, bin_position
        )
        return Spectrum(mz, intensity, self._is_profile())

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Scan):
            return NotImplemented
        return self._function is other._function and self._position == other._position

    def __hash__(self) -> int:
        return hash((id(self._function), self._position))

    def _place(self) -> str:
        return f"scan {self._position + 1} of function {self._function.id}"

    def __repr__(self) -> str:
        place = self._place()
        if self._function._handle.is_closed:
            return f"<zrml.Scan: {place} of a closed source>"
        record = self._described()
        points = f"at most {counted(record.points, 'point')}"
        if self._points is not None:
            points = counted(len(self.mz), "point") + span(self.mz, "m/z")
        return f"<zrml.Scan: {place}, {record.minutes:.6g} min, {points}>"

    def _repr_html_(self) -> str:
        if self._function._handle.is_closed:
            return closed_table(self._place())
        rows = [
            ("minutes", f"{self.minutes:.6g} to {self.end_minutes:.6g}"),
            ("points", len(self.mz)),
            ("m/z", between(self.mz)),
            ("precursor m/z", self.precursor_mz),
            ("scan value", self.scan_value),
        ]
        return html_table(self._place(), ("", "value"), rows)


def scans_of_loop(function: Function, positions: range, loop: Loop) -> Iterator[Scan]:
    """The scans of a loop, with their points where these were read ahead. A call of __init__ for each would take
    as long as all else."""
    new, handle = Scan.__new__, loop.handle
    for position in positions:
        scan = new(Scan)
        scan._function = function
        scan._position = position
        scan._loop = loop
        scan._record = None
        scan._points = None if handle.is_closed else loop.ahead.pop(position, None)
        yield scan
