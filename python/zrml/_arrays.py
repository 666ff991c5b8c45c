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
_INTEGER = np.dtype(np.int32)
_EMPTY: FloatArray = np.frombuffer(bytes(FLOAT.itemsize), FLOAT)[:0]
_EMPTY_INTEGERS: AnyArray = np.frombuffer(bytes(_INTEGER.itemsize), _INTEGER)[:0]


def _room(size: int) -> bytes:
    """Memory without zeros in it, which would take their time: the library fills it."""
    memory: bytes = _new_bytes(None, size)
    return memory


def room_for(count: int) -> bytes:
    """Memory for so many doubles."""
    return _room(8 * count)


def room_for_integers(count: int) -> bytes:
    """Memory for so many integers of 32 bits."""
    return _room(4 * count)


def floats(memory: bytes, count: int) -> FloatArray:
    """The first `count` doubles; memory of which more than half is not needed is given back."""
    if not count:
        return _EMPTY
    if 16 * count < len(memory):
        memory = memory[: 8 * count]
    return np.frombuffer(memory, FLOAT, count)


def integers(memory: bytes) -> AnyArray:
    """All integers of 32 bits."""
    return np.frombuffer(memory, _INTEGER) if memory else _EMPTY_INTEGERS


def rows(memory: bytes, count: int, length: int) -> list[FloatArray]:
    """`count` arrays of `length` doubles, one after the other."""
    if not length:
        return [_EMPTY] * count
    return [np.frombuffer(memory, FLOAT, length, 8 * length * row) for row in range(count)]
