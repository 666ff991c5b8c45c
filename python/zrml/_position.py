"""Positions within sequences, as in Python's own."""

from __future__ import annotations

import operator
from collections.abc import Callable
from typing import SupportsIndex, TypeVar, overload

Item = TypeVar("Item")


def resolved(position: SupportsIndex, length: int, what: str) -> int:
    """From 0; negative ones count from the end. IndexError where there is none, TypeError for anything but
    an integer."""
    index = operator.index(position)
    if not -length <= index < length:
        raise IndexError(f"there is no {what} at position {index}: there are {length}")
    return index + length if index < 0 else index


def bound(position: SupportsIndex, length: int, what: str) -> int:
    """The same for an end of a range, which may be after the last one."""
    index = operator.index(position)
    return length if index == length else resolved(index, length, what)


@overload
def items(make: Callable[[int], Item], at: SupportsIndex, length: int, what: str) -> Item: ...
@overload
def items(make: Callable[[int], Item], at: slice, length: int, what: str) -> list[Item]: ...
def items(make: Callable[[int], Item], at: SupportsIndex | slice, length: int, what: str) -> Item | list[Item]:
    """What `sequence[at]` gives: an item, or a list of those of a slice."""
    if isinstance(at, slice):
        return [make(i) for i in range(*at.indices(length))]
    return make(resolved(at, length, what))
