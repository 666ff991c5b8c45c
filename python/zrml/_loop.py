"""The points of scans that a loop asks for in their order, read a few scans ahead of it."""

from __future__ import annotations

from bisect import bisect_right
from ctypes import byref, c_int, c_size_t, sizeof
from typing import TYPE_CHECKING

from ._arrays import floats, room_for
from ._library import library

if TYPE_CHECKING:
    from collections.abc import Callable

    from ._handle import Handle, Points

MOST_SCANS = 16
MOST_POINTS = 24_576  # of scans that are read together: arrays of one keep those of all, 384 KB

_read_together = library["zrml_read_points_of_scans"]  # without types, as the reader of one scan
_PerScan = c_size_t * (2 * MOST_SCANS)  # where points end, then how many are lost
_LOST = MOST_SCANS * sizeof(c_size_t)


class Loop:
    """Reads scans of a function, from position `first` on, that have room for so many points each.

    `rooms` are sums, from 0 on: the room of all scans before each, and of all of them. While each scan is asked
    for in turn, twice as many are read as before; one out of turn is read alone. Whether scans that were read
    ahead have been asked for does not count. A scan that cannot be read fails when it is asked for itself. Threads may share a loop: each finds the points of its own
    scan, at worst read twice.
    """

    __slots__ = ("ahead", "handle", "_read_one", "_place", "_first", "_rooms", "_next", "_size", "_results", "_given")

    def __init__(
        self,
        handle: Handle,
        read_one: Callable[[int, int], Points],
        place: tuple[int, int],
        first: int,
        rooms: list[int],
    ) -> None:
        self.ahead: dict[int, Points] = {}  # what was read ahead, by position; each is taken once
        self.handle = handle
        self._read_one = read_one
        self._place = place
        self._first = first
        self._rooms = rooms
        self._next = -1  # the position after all that were read
        self._size = 1
        self._results = room, per_scan, count = c_size_t(), _PerScan(), c_int()
        self._given = room, per_scan, byref(per_scan, _LOST), byref(count)

    def read(self, position: int) -> Points:
        """The points of a scan that are not in `ahead`."""
        is_in_turn = position == self._next and not self.ahead
        self._size = min(2 * self._size, MOST_SCANS) if is_in_turn else 1
        self._next = position + 1
        rooms = self._rooms
        at = position - self._first
        most = min(at + self._size, len(rooms) - 1)
        end = max(at + 1, bisect_right(rooms, rooms[at] + MOST_POINTS, at, most + 1) - 1)
        room = rooms[end] - rooms[at]
        if end == at + 1:
            return self._read_one(position, room)
        return self._read_together(position, end - at, room)

    def _read_together(self, position: int, scans: int, room: int) -> Points:
        handle = self.handle
        sample, function = self._place
        room_given, per_scan, count = self._results
        all_mz, all_intensity = room_for(room), room_for(room)
        with handle.lock:
            pointer = handle.usable_pointer()
            room_given.value = room
            status = _read_together(pointer, sample, function, position, scans, all_mz, all_intensity, *self._given)
            if status:
                raise handle.exception(status)
            read = count.value
            ends, lost = per_scan[:read], per_scan[MOST_SCANS : MOST_SCANS + read]
        mz, intensity = floats(all_mz, ends[-1]), floats(all_intensity, ends[-1])
        self._next = position + read
        # A dictionary of its own, since other threads may be taking from the one before.
        ahead: dict[int, Points] = {}
        begin = 0
        for scan, end, missing in zip(range(position, position + read), ends, lost):
            ahead[scan] = mz[begin:end], intensity[begin:end], missing
            begin = end
        points = ahead.pop(position)
        self.ahead = ahead
        return points
