"""Functions: series of scans with one setting of the instrument."""

from __future__ import annotations

from collections.abc import Iterable, Iterator, Sequence
from ctypes import byref
from functools import cached_property
from itertools import chain
from typing import TYPE_CHECKING, Any, SupportsIndex, overload

import numpy as np

from ._arrays import FLOAT, INTEGER, address_of, floats, room_for, rows, unfilled
from ._chromatogram import Chromatogram, Trace, traces_of
from ._library import SUM, MetadataRecord, ScanTable, SumOptions, SumRecord, library
from ._loop import Loop
from ._position import bound, items, resolved
from ._scan import Scan, Sum, scans_of_loop
from ._show import closed_table, counted, frame, html_table, shortened

if TYPE_CHECKING:
    import numpy.typing as npt
    import pandas

    from ._arrays import AnyArray, FloatArray
    from ._handle import Handle

    Positions = npt.NDArray[np.intc]

_DEFAULT_PPM = 10.0
_COLUMNS: dict[str, np.dtype[Any]] = {  # of table()
    "number": INTEGER,
    "minutes": FLOAT,
    "points": INTEGER,
    "tic": FLOAT,
    "base_peak_mz": FLOAT,
    "base_peak_intensity": FLOAT,
    "precursor_mz": FLOAT,
    "scan_value": FLOAT,
}
_SCANS_AT_ONCE = 1024  # whose numbers of points are read ahead of them


def metadata_of(handle: Handle, sample: int, function: int) -> dict[str, str]:
    """Items with a value; each key is there once."""
    found = handle.all_described(
        MetadataRecord, library.zrml_metadata_count, library.zrml_get_metadata, sample, function
    )
    return {item["key"]: item["value"] for item in found if item["value"] is not None}


def _require_tolerance(value: float, name: str) -> float:
    value = float(value)
    if not 0 <= value < float("inf"):
        raise ValueError(f"{name} is {value}: a tolerance is a number from 0 up")
    return value


def _width(ppm: float | None, da: float | None, default_ppm: float) -> tuple[float, bool]:
    """A tolerance, and whether it is in parts per million."""
    if ppm is not None and da is not None:
        raise ValueError("ppm and da are both given: one of them is enough")
    if da is not None:
        return _require_tolerance(da, "da"), False
    return _require_tolerance(default_ppm if ppm is None else ppm, "ppm"), True


def _masses(mz: Any) -> npt.NDArray[np.float64]:
    """One m/z or several, as they were given but for their type."""
    given = np.asarray(mz)
    if given.dtype.kind not in "iuf":
        raise TypeError(f"m/z is a number or a sequence of numbers, not {type(mz).__name__}")
    if given.ndim > 1:
        raise ValueError("m/z is a number or a sequence of numbers, not an array of more dimensions")
    masses = given.astype(np.float64)
    if not np.all((masses > 0) & np.isfinite(masses)):
        raise ValueError("m/z is a finite number above 0")
    return masses


def _parts_per_million(masses: npt.NDArray[np.float64], width: float) -> npt.NDArray[np.float64]:
    """So much of each m/z; where the product alone is too large for a number, the quotient comes first."""
    with np.errstate(over="ignore"):
        wide = masses * width / 1e6
        return np.where(np.isinf(wide), masses * (width / 1e6), wide)


def _position(scan: SupportsIndex) -> SupportsIndex:
    if isinstance(scan, (bool, np.bool_)):
        raise TypeError("scans are positions; numpy.flatnonzero() gives those of a mask")
    return scan


class Function(Sequence[Scan]):
    """A sequence of scans: `len(function)`, `function[i]`, `function[-1]`, slices and iteration give Scan.

    number: the number of its files, from 1; of processed data, that of the function it goes back to.
    process: the process number of processed data; None of acquired data.
    id: how people name it: "4", "p2" of process 2, "p2.2" of the second one with that number.
    name: display name, as its files have it.
    file: name of its data file; None in a report.
    kind: "MS", "MS/MS", "ion monitoring", "reaction monitoring", "absorbance" or "other".
    ms_level: 1, or 2 and more of fragment spectra; None where it is not known.
    scan_type: "precursor", "product", "neutral loss", "neutral gain" or None.
    polarity: "positive", "negative" or None where no file has it.
    is_lock_mass: whether it is a reference function, by its name.
    mass_range: (low, high) in m/z, set in the acquisition method; None where no file has it.
    """

    def __init__(self, handle: Handle, sample: int, position: int, members: dict[str, Any]) -> None:
        self._handle = handle
        self._place = (sample, position)
        self._read_points = handle.reader(sample, position)
        self.number: int = members["number"]
        self.process: int | None = members["process"] or None
        self.id: str = members["id"]
        self.name: str = members["name"]
        self.file: str | None = members["file"] or None
        self.kind: str = members["kind_name"]
        self.ms_level: int | None = members["ms_level"] or None
        self.scan_type: str | None = members["scan_type_name"] or None
        self.polarity: str | None = members["polarity_name"] or None
        self.is_lock_mass = bool(members["is_lock_mass"])
        low, high = members["mass_low"], members["mass_high"]
        self.mass_range: tuple[float, float] | None = None if low != low else (low, high)

    @cached_property
    def _length(self) -> int:
        return self._handle.count(library.zrml_scan_count, *self._place)

    def __len__(self) -> int:
        return self._length

    def __bool__(self) -> bool:
        return True  # a function without scans is a function all the same

    def _scan(self, position: int) -> Scan:
        return Scan(self, position)

    @overload
    def __getitem__(self, at: SupportsIndex) -> Scan: ...
    @overload
    def __getitem__(self, at: slice) -> list[Scan]: ...
    def __getitem__(self, at: SupportsIndex | slice) -> Scan | list[Scan]:
        """A scan, or a list of those of a slice. IndexError where there is none. Reads nothing yet."""
        return items(self._scan, at, self._length, "scan")

    def __iter__(self) -> Iterator[Scan]:
        return chain.from_iterable(self._pieces())

    def _pieces(self) -> Iterator[Iterable[Scan]]:
        for first in range(0, self._length, _SCANS_AT_ONCE):
            count = min(_SCANS_AT_ONCE, self._length - first)
            loop = Loop(self._handle, self._read_points, self._place, first, self._rooms(first, count))
            yield scans_of_loop(self, range(first, first + count), loop)

    def _rooms(self, first: int, count: int) -> list[int]:
        """How many points the scans before each may have, and all of them."""
        points = unfilled(count, INTEGER)
        table = ScanTable()
        table.points = address_of(points)
        self._read_table(table, first, count)
        rooms: list[int] = np.cumsum(points, dtype=np.int64).tolist()
        return [0, *rooms]

    def _read_table(self, table: ScanTable, first: int, count: int) -> None:
        self._handle.call(library.zrml_read_scan_table, *self._place, first, count, byref(table))

    @cached_property
    def is_centroided(self) -> bool | None:
        """Whether the points of the first scan are peaks, not samples of a profile; None without scans, or where
        it is not known."""
        return self[0].is_centroided if self._length else None

    @cached_property
    def drift_bins(self) -> int:
        """Drift bins of each scan; 0 without mobility data or where the maker's library is not installed."""
        return self._handle.count(library.zrml_drift_bin_count, *self._place)

    @property
    def traces(self) -> tuple[Trace, ...]:
        """The function's own traces, which reports have."""
        return traces_of(self._handle, *self._place)

    @property
    def metadata(self) -> dict[str, str]:
        """The sample's items with the values that this function has of its own."""
        return metadata_of(self._handle, *self._place)

    @property
    def text(self) -> str | None:
        """A report's text of the function, unchanged; None for a raw directory, and for a text that is longer
        than 10,000,000 characters."""
        return self._handle.text(library.zrml_function_text, *self._place)

    @property
    def times(self) -> FloatArray:
        """When each scan was taken, in minutes: float64, shape (scans,); NaN where no file has it."""
        return self._handle.series(library.zrml_read_minutes, *self._place, length=self._length)

    def table(self, points: bool = False) -> dict[str, AnyArray]:
        """One entry a scan in each array, all of shape (scans,).

        number: int32, from 1
        minutes: float64
        points: int32, at most so many; with `points=True` as many as were read
        tic: float64, the total intensity as it is stored
        base_peak_mz, base_peak_intensity: float64, of the first of the most intense points
        precursor_mz: float64
        scan_value: float64, the scan's additional value

        All of it is from index and statistics, and NaN where these do not tell it, which of base_peak_mz is
        always so. `points=True` reads the points of every scan for what only they tell: long work.
        """
        columns = {name: unfilled(self._length, kind) for name, kind in _COLUMNS.items()}
        wanted = ScanTable()
        for name, column in columns.items():
            setattr(wanted, "total_intensity" if name == "tic" else name, address_of(column))
        wanted.reads_points = bool(points)
        self._read_table(wanted, 0, self._length)
        return columns

    def to_frame(self, points: bool = False) -> pandas.DataFrame:
        """table() as a pandas DataFrame with a row for each scan."""
        return frame(self.table(points))

    def tic(self) -> Chromatogram:
        """The total ion chromatogram: the total intensity of each scan as it is stored."""
        return self._stored("TIC", library.zrml_read_total_ions)

    def bpc(self) -> Chromatogram:
        """The base peak chromatogram: the largest intensity of each scan. Long work but in a report, which has
        it stored."""
        return self._stored("BPC", library.zrml_read_base_peaks)

    def _stored(self, name: str, entry: Any) -> Chromatogram:
        return Chromatogram(name, self.times, self._handle.series(entry, *self._place, length=self._length))

    @overload
    def xic(self, mz: float, ppm: float | None = None, da: float | None = None) -> Chromatogram: ...
    @overload
    def xic(
        self, mz: Sequence[float] | AnyArray, ppm: float | None = None, da: float | None = None
    ) -> list[Chromatogram]: ...
    def xic(self, mz: Any, ppm: float | None = None, da: float | None = None) -> Chromatogram | list[Chromatogram]:
        """Extracted ion chromatograms: the summed intensity within `mz` ± a tolerance, both ends included.

        mz: one m/z, which gives a Chromatogram, or a sequence of them, which gives a list; all are read in one
            pass over the scans, which is long work.
        ppm: the tolerance on either side in parts per million; 10 where neither is given.
        da: the tolerance on either side in m/z.

        The intensity of a scan is 0 without points in the range, and NaN when all its points are lost.
        ValueError for m/z that are not above 0, for negative tolerances, and when both are given.
        """
        masses = _masses(mz)
        width, is_ppm = _width(ppm, da, _DEFAULT_PPM)
        tolerance = _parts_per_million(masses, width) if is_ppm else np.full_like(masses, width)
        ranges = np.column_stack((masses - tolerance, masses + tolerance)).tobytes()
        count, scans = masses.size, self._length
        values = room_for(count * scans)
        minutes = self.times
        self._handle.call(
            library.zrml_read_mass_ranges, *self._place, ranges, count, SUM, values, count * scans
        )
        unit = "ppm" if is_ppm else "Da"
        found = [
            Chromatogram(f"m/z {mass:.10g} ± {width:g} {unit}", minutes, row)
            for mass, row in zip(masses.flat, rows(values, count, scans))
        ]
        return found if masses.ndim else found[0]

    def sum(
        self,
        start: SupportsIndex | None = None,
        stop: SupportsIndex | None = None,
        *,
        minutes: tuple[float, float] | None = None,
        scans: Iterable[SupportsIndex] | None = None,
        mean: bool = False,
        minus: tuple[float, float] | None = None,
        ppm: float | None = None,
        da: float | None = None,
    ) -> Sum:
        """The scans from position `start` up to, not including, `stop`, added up in their order.

        start, stop: negative ones count from the end; all scans without them.
        minutes: in place of them, the scans from the first time to the second, both included.
        scans: in place of them, positions; each counts once, in the order of the function.
        mean: the sum divided by the number of scans that were added.
        minus: the background, from the first time to the second, both included: the mean of its scans is taken
            off each scan added, so that intensities may become negative.
        ppm, da: how far apart peaks may be, on either side of the stronger one and in parts per million or
            m/z, that become one; without them only those of one m/z do. Profiles are added on one grid.

        Scans of another kind, peaks or a profile, than the first one with points are left out, and so are some
        others: see Sum, which counts them.

        Long work. IndexError for positions that are not there; ValueError when there is no scan to add up, or none
        of a background that can be taken off.
        """
        wanted = self._chosen(start, stop, minutes, scans)
        if not wanted.size:
            raise ValueError("there is no scan to add up")
        options = SumOptions()
        width, options.is_ppm = _width(ppm, da, 0.0)
        options.width = 2 * width  # on both sides together
        options.is_mean = int(bool(mean))
        if minus is not None:
            background = self._within(minus, "minus")
            if not background.size:
                raise ValueError("there is no scan in the background")
            options.background, options.background_count = background.tobytes(), background.size
        record = SumRecord()
        mz, intensity = self._handle.arrays(
            library.zrml_read_sum_of_scans,
            *self._place,
            wanted.tobytes(),
            wanted.size,
            byref(options),
            behind=(byref(record),),
        )
        return Sum(mz, intensity, record, self._has_profiles)

    @property
    def _has_profiles(self) -> bool:
        """Whether points are samples of profiles, where scans are not centroided."""
        return self.kind not in ("ion monitoring", "reaction monitoring", "absorbance")

    def _chosen(
        self,
        start: SupportsIndex | None,
        stop: SupportsIndex | None,
        minutes: tuple[float, float] | None,
        scans: Iterable[SupportsIndex] | None,
    ) -> Positions:
        has_ends = start is not None or stop is not None
        if has_ends + (minutes is not None) + (scans is not None) > 1:
            raise ValueError("start and stop, minutes, and scans: one of them is enough")
        if minutes is not None:
            return self._within(minutes, "minutes")
        length = self._length
        if scans is not None:
            return np.array([resolved(_position(scan), length, "scan") for scan in scans], np.intc)
        first = 0 if start is None else bound(start, length, "scan")
        return np.arange(first, length if stop is None else bound(stop, length, "scan"), dtype=np.intc)

    def _within(self, minutes: tuple[float, float], name: str) -> Positions:
        """The scans of a time. One that prints like an end of it is in it: as at the command line, where text has
        the decimals of single precision."""
        try:
            low, high = map(float, minutes)
        except (TypeError, ValueError):
            raise TypeError(f"{name} is a pair of times, the first and the last, not {minutes!r}") from None
        times = self.times
        with np.errstate(over="ignore"):
            short, low_short, high_short = times.astype(np.float32), np.float32(low), np.float32(high)
        is_within = ((times >= low) | (short == low_short)) & ((times <= high) | (short == high_short))
        return np.flatnonzero(is_within).astype(np.intc)

    def _summary(self) -> str:
        words = [self.kind, self.polarity]
        if not self._handle.is_closed:
            words.append(counted(self._length, "scan"))
        return ", ".join(word for word in words if word)

    def __repr__(self) -> str:
        return f"<zrml.Function {self.id} {shortened(self.name)!r}: {self._summary()}>"

    def _repr_html_(self) -> str:
        caption = f"function {self.id}: {self.name}"
        if self._handle.is_closed:
            return closed_table(caption)
        low, high = self.mass_range or (None, None)
        rows = [
            ("kind", self.kind),
            ("MS level", self.ms_level),
            ("scan type", self.scan_type),
            ("polarity", self.polarity),
            ("mass range", f"{low} to {high}" if self.mass_range else None),
            ("scans", len(self)),
            ("drift bins", self.drift_bins),
        ]
        return html_table(caption, ("", "value"), rows)
