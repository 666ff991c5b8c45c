"""An open source of the library: its lock, its end, what its statuses raise, and Ctrl-C during long work."""

from __future__ import annotations

import ctypes
import os
import threading
from collections.abc import Callable, Generator
from ctypes import byref, c_int, c_size_t, c_void_p
from typing import TYPE_CHECKING, Any, NoReturn, TypeVar

from numpy import frombuffer

from ._arrays import FLOAT, floats, room_for
from ._errors import OK, exception_of
from ._library import Progress, Record, library

if TYPE_CHECKING:
    from ._arrays import FloatArray

    Points = tuple[FloatArray, FloatArray, int]  # m/z, intensity, and how many points are lost

RecordType = TypeVar("RecordType", bound=Record)
Entry = Callable[..., int]  # a function of the library that gives a status

# Without types of its arguments it is called quicker: those that are no `int` of C are objects of their type.
_read_points = library["zrml_read_points"]


def text_of(value: bytes) -> str:
    """The library's text is UTF-8; invalid bytes become U+FFFD."""
    return value.decode("utf-8", "replace")


def refuse_copy() -> NoReturn:
    raise TypeError("a source is not copied and goes to no other process: open it again")


def _watch(caught: list[BaseException]) -> Generator[int, int, None]:
    """Asked during long work: 1 ends it, once an exception such as KeyboardInterrupt has been raised.

    A generator, since the interpreter looks for signals when a function begins, outside of any `try` of that
    function; a generator goes on within its `try`.
    """
    while True:
        try:
            while True:
                yield 1 if caught else 0
        except GeneratorExit:
            return
        except BaseException as error:  # no exception may leave a function that C calls
            caught.append(error)


class Handle:
    """An open source. One thread at a time is in the library with it; the others wait."""

    def __init__(self, path: bytes) -> None:
        self._pointer: c_void_p | None = None
        self.lock = threading.RLock()
        self._is_working = False
        self._room, self._count, self._lost = c_size_t(), c_size_t(), c_size_t()  # of reader()
        self._caught: list[BaseException] = []
        watch = _watch(self._caught)
        next(watch)
        self._progress = Progress(watch.send)
        pointer = c_void_p()
        status = library.zrml_open(path, byref(pointer))
        if status != OK:
            raise self._opening_failed(path, status)
        self._pointer = pointer
        self.is_closed = False  # an attribute, since loops ask at every scan
        self.format: int = library.zrml_format_of(pointer)
        self.call(library.zrml_set_progress, self._progress, None)

    @staticmethod
    def _opening_failed(path: bytes, status: int) -> Exception:
        error = exception_of(status, text_of(library.zrml_open_message()))
        if isinstance(error, OSError):
            error.filename = os.fsdecode(path)
        return error

    def __reduce__(self) -> NoReturn:
        refuse_copy()

    def __del__(self, close: Callable[[c_void_p], None] = library.zrml_close) -> None:
        pointer = getattr(self, "_pointer", None)
        if pointer is not None:
            close(pointer)

    def close(self) -> None:
        """Waits for a thread that reads. Again: does nothing."""
        with self.lock:
            if self._pointer is None:
                return
            self._require_usable()
            pointer, self._pointer = self._pointer, None
            self.is_closed = True
            library.zrml_close(pointer)

    def require_open(self) -> None:
        """Raises ValueError when the source is closed, as files do."""
        if self._pointer is None:
            raise ValueError("the source is closed")

    def _require_usable(self) -> None:
        self.require_open()
        # In the working thread, only code called by a signal or the garbage collector gets here.
        if self._is_working:
            raise RuntimeError("the source is in the middle of work for the same thread")

    def usable_pointer(self) -> c_void_p:
        """For a call that is not long work, by who has the lock."""
        self._require_usable()
        assert self._pointer is not None
        return self._pointer

    def exception(self, status: int) -> Exception:
        return exception_of(status, text_of(library.zrml_message(self._pointer)))

    def call(self, entry: Entry, *arguments: Any) -> None:
        """A function of the library with this source; raises what its status means."""
        with self.lock:
            self._require_usable()
            try:
                self._is_working = True
                status = entry(self._pointer, *arguments)
            finally:
                self._is_working = False
            if self._caught:
                raise self._caught.pop()
            if status != OK:
                raise self.exception(status)

    def count(self, entry: Entry, *place: int) -> int:
        """The number that a function of the library gives."""
        number = c_int()
        self.call(entry, *place, byref(number))
        return number.value

    def record(self, kind: type[RecordType], entry: Entry, *place: int) -> RecordType:
        """A record without texts."""
        record = kind()
        self.call(entry, *place, byref(record))
        return record

    def described(self, kind: type[Record], entry: Entry, *place: int) -> dict[str, Any]:
        """The members of a record. Its texts are read before another thread can close the source."""
        with self.lock:
            record = self.record(kind, entry, *place)
            members = {name: getattr(record, name) for name, *_ in kind._fields_}
        return {name: text_of(value) if isinstance(value, bytes) else value for name, value in members.items()}

    def all_described(self, kind: type[Record], count: Entry, entry: Entry, *place: int) -> list[dict[str, Any]]:
        """The members of every record at a place."""
        with self.lock:
            return [self.described(kind, entry, *place, i) for i in range(self.count(count, *place))]

    def text(self, entry: Entry, *place: int) -> str | None:
        """A text that the library gives with its length, or None."""
        start, length = c_void_p(), c_size_t()
        with self.lock:
            self.call(entry, *place, byref(start), byref(length))
            return text_of(ctypes.string_at(start, length.value)) if start.value else None

    def reader(self, sample: int, function: int) -> Callable[[int, int], Points]:
        """Reads the points of scans of a function: `read(scan, room)`, with room for as many as there may be.

        Loops over scans spend their time here, so it is call() written out, with names that are found quickly.
        """
        lock, room_given, count, lost = self.lock, self._room, self._count, self._lost
        count_at, lost_at = byref(count), byref(lost)

        def read(scan: int, room: int) -> Points:
            size = 8 * room
            mz = bytes(size)
            intensity = bytes(size)
            with lock:
                pointer = self._pointer
                if pointer is None or self._is_working:
                    self._require_usable()
                room_given.value = room
                status = _read_points(pointer, sample, function, scan, mz, intensity, room_given, count_at, lost_at)
                if status:
                    raise self.exception(status)
                found = count.value
                missing = lost.value
            if found == room != 0:
                return frombuffer(mz, FLOAT), frombuffer(intensity, FLOAT), missing
            return floats(mz, found), floats(intensity, found), missing

        return read

    def arrays(self, entry: Entry, *arguments: Any, behind: tuple[Any, ...] = ()) -> tuple[FloatArray, FloatArray]:
        """Two arrays whose length shows only when they are read; `behind` are arguments after the count."""
        count = c_size_t()
        with self.lock:
            self.call(entry, *arguments, None, None, 0, byref(count), *behind)
            room = count.value
            x, y = room_for(room), room_for(room)
            if room:  # nothing was kept of what is empty
                self.call(entry, *arguments, x, y, room, byref(count), *behind)
        return floats(x, room), floats(y, room)

    def series(self, entry: Entry, *place: int, length: int) -> FloatArray:
        """One value for each of `length` scans."""
        values = room_for(length)
        self.call(entry, *place, values, length)
        return floats(values, length)
