"""Not run: mypy finds the types of what the package gives, and wrong uses of it. An `ignore` that is not needed is an error."""

from __future__ import annotations

import pathlib

import numpy as np
import numpy.typing as npt
import zrml

Floats = npt.NDArray[np.float64]


def right_uses() -> None:
    with zrml.open("run.raw") as source, zrml.open(pathlib.Path("run.raw")) as other:
        path: str = source.path
        samples: tuple[zrml.Sample, ...] = other.samples
        function: zrml.Function = source.functions[0]
        polarity: str | None = function.polarity
        limits: tuple[float, float] | None = function.mass_range
        scan: zrml.Scan = function[-1]
        scans: list[zrml.Scan] = function[1:3]
        points: Floats = scan.mz
        minutes: list[float] = [one.minutes for one in function]
        one: zrml.Chromatogram = function.xic(445.12)
        many: list[zrml.Chromatogram] = function.xic([445.12, 556.2771], da=0.01)
        spectrum: zrml.Spectrum = function.sum(minutes=(1.5, 2))
        total: zrml.Sum = function.sum(scans=[0, 2], mean=True, minus=(0.5, 1), ppm=10)
        added: int = total.scans_added
        column: npt.NDArray[np.generic] = function.table()["tic"]
        metadata: dict[str, str] = source.metadata
        matrix: Floats | None = source.absorbance.values if source.absorbance else None
        codes: list[str] = [finding.code for finding in source.findings]
    try:
        zrml.open(b"run.raw")
    except zrml.NotFoundError as error:
        status: int = error.status
        number: int | None = error.errno


def wrong_uses(source: zrml.Source) -> None:
    zrml.open(3)  # type: ignore[arg-type]
    source.functions[0]["1"]  # type: ignore[call-overload]
    source.functions[0].xic("445")  # type: ignore[arg-type]
    source.functions[0].sum(0.5)  # type: ignore[arg-type]
    source.functions[0].sum(minus=0.5)  # type: ignore[arg-type]
    source.functions[0].sum(scans=3)  # type: ignore[arg-type]
    source.functions[0].xic([445.12]).intensity  # type: ignore[attr-defined]
    source.absorbance.values  # type: ignore[union-attr]
    source.path = "other.raw"  # type: ignore[misc]
