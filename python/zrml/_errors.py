"""What is raised when a source cannot be read, and how the library's statuses become exceptions."""

from __future__ import annotations

import errno

OK = 0
WRONG_ARGUMENT = 2
NO_MEMORY = 9
CANCELLED = 10


class Error(Exception):
    """A source that cannot be read as asked. The text is one line.

    `status` is that of the C library and the exit status of the command line: 3 there is no such path, 4 it is
    neither a raw directory nor a report, 5 it cannot be read, 7 it is damaged.
    """

    status: int = 0

    def __init__(self, message: str) -> None:
        super().__init__(message)
        self.message = message

    def __str__(self) -> str:
        return self.message


class NotFoundError(Error, FileNotFoundError):
    """There is no file or folder of that name (status 3)."""

    status = 3

    def __init__(self, message: str) -> None:
        super().__init__(message)
        self.errno = errno.ENOENT


class NotRecognisedError(Error):
    """The path is neither a raw directory nor a report (status 4)."""

    status = 4


class UnreadableError(Error, OSError):
    """The system refuses to read it, or it has changed while it was read (status 5)."""

    status = 5


class DamagedError(Error):
    """What is asked for is damaged or missing in its files (status 7)."""

    status = 7


_ERRORS = {kind.status: kind for kind in (NotFoundError, NotRecognisedError, UnreadableError, DamagedError)}


def exception_of(status: int, message: str) -> Exception:
    """The exception for a status that is not OK."""
    if status == WRONG_ARGUMENT:
        return ValueError(message)
    if status == NO_MEMORY:
        return MemoryError(message)
    if status in _ERRORS:
        return _ERRORS[status](message)
    error = Error(message)
    error.status = status  # of a later version of the library
    return error
