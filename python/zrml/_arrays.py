"""Arrays that the library fills and that nobody can change afterwards.

The library writes into a new bytes object, which nothing else has seen yet; NumPy then looks at its memory. An
array over bytes can never be made writable, not even by setting its flags.
"""

from __future__ import annotations

import ctypes
from typing import TYPE_CHECKING, Any

import numpy as np

if TYPE_CHECKING:
    import numpy.typing as npt

    FloatArray = npt.NDArray[np.float64]
    AnyArray = npt.NDArray[Any]

# An object of its own, so that its types are nobody else's.
_new_bytes = ctypes.pythonapi["PyBytes_FromStringAndSize"]
_new_bytes.restype = ctypes.py_object
_new_bytes.argtypes = (ctypes.c_void_p, ctypes.c_ssize_t)

FLOAT = np.dtype(np.float64)
INTEGER = np.dtype(np.int32)
_EMPTY: FloatArray = np.frombuffer(bytes(FLOAT.itemsize), FLOAT)[:0]

_LARGE_PAGE = 1 << 21  # bytes


def _room(size: int) -> bytes:
    """Memory without zeros in it, which would take their time: the library fills it."""
    memory: bytes = _new_bytes(None, size)
    return memory


def room_for(count: int) -> bytes:
    """Memory for so many doubles."""
    return _room(8 * count)


def unfilled(count: int, kind: np.dtype[Any]) -> AnyArray:
    """An array for the library to fill, at address_of(). Where it is large, it has large pages to itself, so that the
    system need not make it up of small ones."""
    size = count * kind.itemsize
    if size < _LARGE_PAGE:
        return np.frombuffer(_room(max(size, 1)), kind, count)
    memory = _room((size // _LARGE_PAGE + 2) * _LARGE_PAGE)
    begin = address_of(np.frombuffer(memory, np.uint8))
    return np.frombuffer(memory, kind, count, -begin % _LARGE_PAGE)


def address_of(array: AnyArray) -> int:
    return int(array.__array_interface__["data"][0])


def floats(memory: bytes, count: int) -> FloatArray:
    """The first `count` doubles; memory of which more than half is not needed is given back."""
    if not count:
        return _EMPTY
    if 16 * count < len(memory):
        memory = memory[: 8 * count]
    return np.frombuffer(memory, FLOAT, count)


def rows(memory: bytes, count: int, length: int) -> list[FloatArray]:
    """`count` arrays of `length` doubles, one after the other."""
    if not length:
        return [_EMPTY] * count
    return [np.frombuffer(memory, FLOAT, length, 8 * length * row) for row in range(count)]
