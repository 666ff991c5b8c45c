"""Absorbance spectra of a sample."""

from __future__ import annotations

from ctypes import byref, c_int
from functools import cached_property
from typing import TYPE_CHECKING

from ._arrays import floats, room_for
from ._library import library
from ._show import counted, frame, span

if TYPE_CHECKING:
    import pandas

    from ._arrays import FloatArray
    from ._handle import Handle


class AbsorbanceScan:
    """One absorbance spectrum: `absorbance.scans[i]`.

    number: from 1. minutes: when it was taken. The arrays are read when they are first asked for.
    """

    def __init__(self, handle: Handle, sample: int, position: int, minutes: float) -> None:
        self.number = position + 1
        self.minutes = minutes
        self._handle = handle
        self._place = (sample, position)
        self._points: tuple[FloatArray, FloatArray] | None = None

    def _read(self) -> tuple[FloatArray, FloatArray]:
        if self._points is None:
            self._points = self._handle.arrays(library.zrml_read_absorbance, *self._place, behind=(None,))
        return self._points

    @property
    def wavelengths(self) -> FloatArray:
        """Nanometres, in the order of the file: float64, shape (points,)."""
        return self._read()[0]

    @property
    def values(self) -> FloatArray:
        """Absorbance at each wavelength, as stored: float64, shape (points,)."""
        return self._read()[1]

    def to_frame(self) -> pandas.DataFrame:
        """A pandas DataFrame with the columns `wavelength` and `value`."""
        return frame({"wavelength": self.wavelengths, "value": self.values})

    def __repr__(self) -> str:
        return f"<zrml.AbsorbanceScan: scan {self.number}, {self.minutes:.6g} min>"


class Absorbance:
    """The absorbance spectra of a sample, one by one or as a matrix."""

    def __init__(self, handle: Handle, sample: int, length: int) -> None:
        self._handle = handle
        self._sample = sample
        self._length = length

    @property
    def minutes(self) -> FloatArray:
        """When each spectrum was taken: float64, shape (scans,)."""
        return self._handle.series(library.zrml_read_absorbance_minutes, self._sample, length=self._length)

    @cached_property
    def scans(self) -> tuple[AbsorbanceScan, ...]:
        """The spectra, in the order of the file."""
        minutes = self.minutes.tolist()
        return tuple(AbsorbanceScan(self._handle, self._sample, i, minutes[i]) for i in range(self._length))

    @property
    def wavelengths(self) -> FloatArray | None:
        """Nanometres, in the order of the file: float64, shape (wavelengths,), where all spectra have the same ones; else None."""
        return self._matrix[0] if self._matrix else None

    @property
    def values(self) -> FloatArray | None:
        """Float64, shape (scans, wavelengths), where all spectra have the same wavelengths; else None."""
        return self._matrix[1] if self._matrix else None

    @cached_property
    def _matrix(self) -> tuple[FloatArray, FloatArray] | None:
        if not self._length:
            return None
        columns = len(self.scans[0].wavelengths)
        wavelengths, values = room_for(columns), room_for(columns * self._length)
        is_matrix = c_int()
        self._handle.call(
            library.zrml_read_absorbance_matrix, self._sample, columns, wavelengths, values, byref(is_matrix)
        )
        if not is_matrix.value:
            return None
        matrix = floats(values, columns * self._length).reshape(self._length, columns)
        return floats(wavelengths, columns), matrix

    def to_frame(self) -> pandas.DataFrame:
        """A pandas DataFrame: a row for each spectrum, by its minutes, and a column for each wavelength.

        ValueError where the spectra have not all the same wavelengths: each of `scans` has a frame of its own.
        """
        if self._matrix is None:
            raise ValueError("the spectra have not all the same wavelengths")
        wavelengths, values = self._matrix
        table = frame(dict(enumerate(values.T)), index=self.minutes)
        table.columns = wavelengths
        return table.rename_axis(index="minutes", columns="wavelength")

    def __repr__(self) -> str:
        times = "" if self._handle.is_closed else span(self.minutes, "min")
        return f"<zrml.Absorbance: {counted(self._length, 'scan')}{times}>"
