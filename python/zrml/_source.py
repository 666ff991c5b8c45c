"""Sources: raw directories and reports, and the samples in them."""

from __future__ import annotations

import os
from dataclasses import dataclass
from functools import cached_property
from types import TracebackType
from typing import Any, NoReturn, Union

from ._absorbance import Absorbance
from ._chromatogram import Trace, traces_of
from ._function import Function, metadata_of
from ._handle import Handle, refuse_copy
from ._library import OF_SAMPLE, RAW_DIRECTORY, FindingRecord, FunctionRecord, SampleRecord, library
from ._show import closed_table, counted, html_table, shortened

StrPath = Union[str, bytes, "os.PathLike[Any]"]


@dataclass(frozen=True)
class Finding:
    """What is known of damage."""

    code: str  #: its name, such as "data-cut"
    severity: str  #: "lost": something measured is gone; "suspect": it may not be what was measured; "note"
    file: str | None  #: name of the file, without its folder; None when it is about the whole
    function: str | None  #: the function's `id`; None when it is about no function
    count: int  #: how many scans, points or traces
    message: str  #: what the problem is
    first: int = 0  #: number of the first of them, from 1; 0 where nothing is numbered
    sample: int = 0  #: number of a report's sample; 0 elsewhere


class Sample:
    """What one injection gave. A raw directory has one, a report may have many.

    number: from 1. name: display name, never empty.
    """

    def __init__(self, handle: Handle, position: int, number: int, name: str) -> None:
        self.number = number
        self.name = name
        self._handle = handle
        self._position = position

    @cached_property
    def functions(self) -> tuple[Function, ...]:
        """Functions with scans in mass, then processed ones; without the absorbance function."""
        found = self._handle.all_described(
            FunctionRecord, library.zrml_function_count, library.zrml_get_function, self._position
        )
        return tuple(Function(self._handle, self._position, i, members) for i, members in enumerate(found))

    @cached_property
    def traces(self) -> tuple[Trace, ...]:
        """Traces of the sample."""
        return traces_of(self._handle, self._position, OF_SAMPLE)

    @cached_property
    def absorbance(self) -> Absorbance | None:
        """Absorbance spectra, or None where there is no absorbance function."""
        count = self._handle.count(library.zrml_absorbance_count, self._position)
        return Absorbance(self._handle, self._position, count) if count >= 0 else None

    @property
    def metadata(self) -> dict[str, str]:
        """Items of the sample that have a value, a new dict each time."""
        return metadata_of(self._handle, self._position, OF_SAMPLE)

    def __repr__(self) -> str:
        return f"<zrml.Sample {self.number} {shortened(self.name)!r}>"

    def _repr_html_(self) -> str:
        return self._html(f"sample {self.number}: {self.name}")

    def _html(self, caption: str) -> str:
        if self._handle.is_closed:
            return closed_table(caption)
        head = ("number", "name", "kind", "MS level", "polarity", "scans")
        rows = [(f.id, f.name, f.kind, f.ms_level, f.polarity, len(f)) for f in self.functions]
        return html_table(caption, head, rows)


class Source:
    """An open raw directory or report; zrml.open() gives it. A context manager: `with` closes it.

    Threads may share a source: one after the other is served, and reading lets the others run. Sources are
    independent of each other. Long work ends with KeyboardInterrupt soon after
    Ctrl-C; only `findings` goes on to its end. What a source gave stays
    when it is closed; asking it for more raises ValueError then.
    """

    def __init__(self, path: StrPath) -> None:
        given = os.fspath(path)
        name = os.fsencode(given)
        if b"\0" in name:
            raise ValueError("a path has no null character")
        self._path = os.fsdecode(given)
        self._handle = Handle(name)

    def close(self) -> None:
        """Closes the files; waits for a thread that reads. Again: does nothing."""
        self._handle.close()

    @property
    def closed(self) -> bool:
        """Whether close() was called."""
        return self._handle.is_closed

    def __reduce__(self) -> NoReturn:
        refuse_copy()

    def __enter__(self) -> Source:
        self._handle.require_open()
        return self

    def __exit__(
        self, kind: type[BaseException] | None, error: BaseException | None, trace: TracebackType | None
    ) -> None:
        self.close()

    @property
    def path(self) -> str:
        """As it was given."""
        return self._path

    @property
    def format(self) -> str:
        """ "raw directory" or "report"."""
        return "raw directory" if self._handle.format == RAW_DIRECTORY else "report"

    @property
    def samples(self) -> tuple[Sample, ...]:
        """A raw directory has one, a report may have many, or none."""
        self._handle.require_open()
        return self._samples

    @cached_property
    def _samples(self) -> tuple[Sample, ...]:
        found = self._handle.all_described(SampleRecord, library.zrml_sample_count, library.zrml_get_sample)
        return tuple(Sample(self._handle, i, members["number"], members["name"]) for i, members in enumerate(found))

    @property
    def functions(self) -> tuple[Function, ...]:
        """Those of the first sample; empty without one."""
        return self.samples[0].functions if self.samples else ()

    @property
    def traces(self) -> tuple[Trace, ...]:
        """Those of the first sample; empty without one."""
        return self.samples[0].traces if self.samples else ()

    @property
    def absorbance(self) -> Absorbance | None:
        """That of the first sample; None where it has none."""
        return self.samples[0].absorbance if self.samples else None

    @property
    def metadata(self) -> dict[str, str]:
        """That of the first sample; empty without one."""
        return self.samples[0].metadata if self.samples else {}

    @property
    def findings(self) -> tuple[Finding, ...]:
        """What is known of damage. The first time it looks at the structure of every file and reads a report to
        its end."""
        self._handle.require_open()
        return self._findings

    @cached_property
    def _findings(self) -> tuple[Finding, ...]:
        found = self._handle.all_described(FindingRecord, library.zrml_finding_count, library.zrml_get_finding)
        return tuple(
            Finding(
                code=members["code"],
                severity=members["severity"],
                file=members["file"] or None,
                function=members["function"] or None,
                count=members["count"],
                message=members["message"],
                first=members["first"],
                sample=members["sample"],
            )
            for members in found
        )

    def __repr__(self) -> str:
        return f"<zrml.Source {self.path!r}: {self._summary()}>"

    def _summary(self) -> str:
        if self.closed:
            return f"{self.format}, closed"
        if len(self.samples) != 1:
            return f"{self.format}, {counted(len(self.samples), 'sample')}"
        absorbance = f", {counted(self.absorbance._length, 'absorbance scan')}" if self.absorbance else ""
        functions, traces = counted(len(self.functions), "function"), counted(len(self.traces), "trace")
        return f"{self.format}, {functions}, {traces}{absorbance}"

    def _repr_html_(self) -> str:
        caption = f"{self.path}: {self._summary()}"
        if self.closed:
            return html_table(caption, (), ())  # which says so
        if len(self.samples) == 1:
            return self.samples[0]._html(caption)
        rows = [(sample.number, sample.name, len(sample.functions)) for sample in self.samples]
        return html_table(caption, ("number", "name", "functions"), rows)


def open(path: StrPath) -> Source:
    """Opens a raw directory, one of its data files (which chooses that function), or a report.

    path: str, bytes or os.PathLike.

    Raises NotFoundError, NotRecognisedError, UnreadableError or DamagedError, all of them zrml.Error.
    """
    return Source(path)
