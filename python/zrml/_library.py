"""The C library beside this file: its records and the types of its functions, as zrml.h has them."""

from __future__ import annotations

import ctypes
import os
import sys
from ctypes import POINTER, Structure, c_char_p, c_double, c_int, c_size_t, c_uint64, c_void_p
from typing import Any

OF_SAMPLE = -1  # in place of a function's position
SUM = 0
RAW_DIRECTORY = 1


class Record(Structure):
    """A structure of the library: its size comes first."""

    def __init__(self) -> None:
        super().__init__(ctypes.sizeof(self))


class SampleRecord(Record):
    _fields_ = [("size", c_size_t), ("number", c_int), ("name", c_char_p)]


class FunctionRecord(Record):
    _fields_ = [
        ("size", c_size_t),
        ("number", c_int),
        ("process", c_int),
        ("repeat", c_int),
        ("id", c_char_p),
        ("file", c_char_p),
        ("name", c_char_p),
        ("kind", c_int),
        ("monitoring", c_int),
        ("scan_type", c_int),
        ("polarity", c_int),
        ("ms_level", c_int),
        ("is_lock_mass", c_int),
        ("has_mobility", c_int),
        ("mass_low", c_double),
        ("mass_high", c_double),
        ("kind_name", c_char_p),
        ("scan_type_name", c_char_p),
        ("polarity_name", c_char_p),
    ]


class ScanRecord(Record):
    _fields_ = [
        ("size", c_size_t),
        ("number", c_int),
        ("is_centroided", c_int),
        ("minutes", c_double),
        ("end_minutes", c_double),
        ("points", c_size_t),
        ("total_intensity", c_double),
        ("base_peak_intensity", c_double),
        ("precursor_mz", c_double),
        ("is_precursor_of_method", c_int),
        ("scan_value", c_double),
    ]


class ScanTable(Record):
    """Addresses of arrays with room for one value a scan: these must live as long as the call."""

    _fields_ = [
        ("size", c_size_t),
        ("number", c_void_p),
        ("minutes", c_void_p),
        ("end_minutes", c_void_p),
        ("points", c_void_p),
        ("is_centroided", c_void_p),
        ("total_intensity", c_void_p),
        ("base_peak_mz", c_void_p),
        ("base_peak_intensity", c_void_p),
        ("precursor_mz", c_void_p),
        ("scan_value", c_void_p),
        ("reads_points", c_int),
    ]


class CentroidOptions(Record):
    _fields_ = [("size", c_size_t), ("is_area", c_int), ("min_signal_to_noise", c_double)]


class SumOptions(Record):
    """`background` is the address of positions, of bytes that must live as long as the call."""

    _fields_ = [
        ("size", c_size_t),
        ("width", c_double),
        ("is_ppm", c_int),
        ("is_mean", c_int),
        ("background", c_char_p),
        ("background_count", c_size_t),
    ]


class SumRecord(Record):
    _fields_ = [
        ("size", c_size_t),
        ("is_centroided", c_int),
        ("added", c_int),
        ("left_out", c_int),
        ("background_added", c_int),
        ("background_left_out", c_int),
        ("lost", c_size_t),
    ]


class TraceRecord(Record):
    _fields_ = [("size", c_size_t), ("number", c_int), ("name", c_char_p)]


class MetadataRecord(Record):
    _fields_ = [("size", c_size_t), ("key", c_char_p), ("value", c_char_p)]


class FindingRecord(Record):
    _fields_ = [
        ("size", c_size_t),
        ("code", c_char_p),
        ("severity", c_char_p),
        ("file", c_char_p),
        ("message", c_char_p),
        ("subject", c_int),
        ("sample", c_int),
        ("function", c_char_p),
        ("count", c_uint64),
        ("first", c_uint64),
    ]


# Called during long work with the context; the numbers of steps that follow it are of no use here, and a
# callee on x86-64 may leave them unread.
Progress = ctypes.CFUNCTYPE(c_int, c_void_p)

_SOURCE = c_void_p
_COUNT = POINTER(c_size_t)
_ARRAY = c_char_p  # a bytes object that nothing else has seen yet, or None
_STATUS = c_int

_FUNCTIONS: dict[str, tuple[Any, ...]] = {
    "zrml_version": (c_char_p,),
    "zrml_open": (_STATUS, c_char_p, POINTER(_SOURCE)),
    "zrml_close": (None, _SOURCE),
    "zrml_message": (c_char_p, _SOURCE),
    "zrml_open_message": (c_char_p,),
    "zrml_format_of": (c_int, _SOURCE),
    "zrml_set_progress": (_STATUS, _SOURCE, Progress, c_void_p),
    "zrml_sample_count": (_STATUS, _SOURCE, POINTER(c_int)),
    "zrml_get_sample": (_STATUS, _SOURCE, c_int, POINTER(SampleRecord)),
    "zrml_function_count": (_STATUS, _SOURCE, c_int, POINTER(c_int)),
    "zrml_get_function": (_STATUS, _SOURCE, c_int, c_int, POINTER(FunctionRecord)),
    "zrml_function_text": (_STATUS, _SOURCE, c_int, c_int, POINTER(c_void_p), _COUNT),
    "zrml_scan_count": (_STATUS, _SOURCE, c_int, c_int, POINTER(c_int)),
    "zrml_get_scan": (_STATUS, _SOURCE, c_int, c_int, c_int, POINTER(ScanRecord)),
    "zrml_read_scan_table": (_STATUS, _SOURCE, c_int, c_int, c_int, c_int, POINTER(ScanTable)),
    "zrml_read_minutes": (_STATUS, _SOURCE, c_int, c_int, _ARRAY, c_size_t),
    "zrml_read_total_ions": (_STATUS, _SOURCE, c_int, c_int, _ARRAY, c_size_t),
    "zrml_read_base_peaks": (_STATUS, _SOURCE, c_int, c_int, _ARRAY, c_size_t),
    "zrml_read_mass_ranges": (_STATUS, _SOURCE, c_int, c_int, c_void_p, c_size_t, c_int, _ARRAY, c_size_t),
    "zrml_find_centroids": (
        _STATUS,
        _ARRAY,
        _ARRAY,
        c_size_t,
        POINTER(CentroidOptions),
        _ARRAY,
        _ARRAY,
        c_size_t,
        _COUNT,
    ),
    "zrml_read_sum_of_scans": (
        _STATUS,
        _SOURCE,
        c_int,
        c_int,
        c_char_p,
        c_size_t,
        POINTER(SumOptions),
        _ARRAY,
        _ARRAY,
        c_size_t,
        _COUNT,
        POINTER(SumRecord),
    ),
    "zrml_drift_bin_count": (_STATUS, _SOURCE, c_int, c_int, POINTER(c_int)),
    "zrml_read_drift_bin": (_STATUS, _SOURCE, c_int, c_int, c_int, c_int, _ARRAY, _ARRAY, c_size_t, _COUNT),
    "zrml_trace_count": (_STATUS, _SOURCE, c_int, c_int, POINTER(c_int)),
    "zrml_get_trace": (_STATUS, _SOURCE, c_int, c_int, c_int, POINTER(TraceRecord)),
    "zrml_read_trace": (_STATUS, _SOURCE, c_int, c_int, c_int, _ARRAY, _ARRAY, c_size_t, _COUNT),
    "zrml_absorbance_count": (_STATUS, _SOURCE, c_int, POINTER(c_int)),
    "zrml_read_absorbance_minutes": (_STATUS, _SOURCE, c_int, _ARRAY, c_size_t),
    "zrml_read_absorbance": (_STATUS, _SOURCE, c_int, c_int, _ARRAY, _ARRAY, c_size_t, _COUNT, _COUNT),
    "zrml_read_absorbance_matrix": (_STATUS, _SOURCE, c_int, c_size_t, _ARRAY, _ARRAY, POINTER(c_int)),
    "zrml_metadata_count": (_STATUS, _SOURCE, c_int, c_int, POINTER(c_int)),
    "zrml_get_metadata": (_STATUS, _SOURCE, c_int, c_int, c_int, POINTER(MetadataRecord)),
    "zrml_finding_count": (_STATUS, _SOURCE, POINTER(c_int)),
    "zrml_get_finding": (_STATUS, _SOURCE, c_int, POINTER(FindingRecord)),
}


def _load() -> ctypes.CDLL:
    name = "zrml.dll" if sys.platform == "win32" else "libzrml.so"
    library = ctypes.CDLL(os.path.join(os.path.dirname(os.path.abspath(__file__)), name))
    for function, (result, *arguments) in _FUNCTIONS.items():
        entry = getattr(library, function)
        entry.restype = result
        entry.argtypes = arguments
    return library


library = _load()  # its functions release the interpreter's lock
