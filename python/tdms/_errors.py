"""The exceptions for the statuses that the C library returns."""
from __future__ import annotations

import enum
import errno
import functools
import os
from typing import Any, Optional, Tuple, Type

from tdms._library import LIB


class Status(enum.IntEnum):
    """Why a call failed: the status that the library returned, also in `Error.status`."""

    FILE_PATH = -5001  #: the file cannot be opened
    FILE_TAG = -5002  #: a segment does not begin with the format's tag
    FILE_TOC = -5003  #: a segment is of a kind that is not supported
    FILE_VERSION = -5004  #: a segment has an unknown version
    FILE_HANDLE = -5005  #: the file is closed, or open for reading only
    FILE_READ = -5006  #: the file ends within a segment, or cannot be read
    FILE_PROPERTY_NAME = -5007  #: the file has no property of that name
    INDEX = -5010  #: a raw data index has an unsupported form
    GROUP_HANDLE = -5011  #: the file has no such group
    GROUP_REPEATED = -5012  #: the file has a group of that name already
    GROUP_PROPERTY_NAME = -5013  #: the group has no property of that name
    CHANNEL_HANDLE = -5015  #: the group has no such channel
    CHANNEL_READ = -5016  #: a segment's metadata is damaged or contradictory
    CHANNEL_REPEATED = -5017  #: the group has a channel of that name already
    CHANNEL_PROPERTY_NAME = -5018  #: the channel has no property of that name
    CHANNEL_DATATYPE = -5020  #: the channel holds values of another type
    CHANNEL_DATA_READ = -5021  #: the channel's values cannot be read
    ARGUMENT = -5101  #: an argument is not allowed
    MEMORY = -5102  #: not enough memory
    WRITE = -5103  #: the system could not write the file
    RANGE = -5104  #: a range ends beyond the channel's last value
    DATATYPE = -5105  #: a type that the format does not know


class Error(Exception):
    """A call of the library failed.

    If the system gave a reason, the error is also the corresponding OSError, such as
    FileNotFoundError, PermissionError, or BlockingIOError for a file that is being written, with
    `errno` and `filename`. If memory ran out, it is also a MemoryError.

    Attributes:
        status: the status that the library returned; a `Status` if it is one of these.
    """

    __module__ = "tdms"  # as programs import it and tracebacks show it

    status: int

    def __init__(self, message: str = "", status: int = Status.ARGUMENT) -> None:
        super().__init__(message, status)
        self.message = message
        self.status = status

    def __str__(self) -> str:
        return self.message

    def __repr__(self) -> str:
        status = getattr(self.status, "name", self.status)
        return f"<tdms.{type(self).__name__}, status {status}: {self.message}>"


def make_error(message: str, status: int, number: int = 0, path: Optional[str] = None) -> Error:
    """The error for a status. It is also the OSError for `number`, an errno, unless that is 0."""
    if status == Status.MEMORY:
        kind: Type[Exception] = MemoryError
    elif number != 0:
        kind = type(OSError(number, ""))
    else:
        return Error(message, status)
    both: Any = _both
    error: Error = both(kind)(message, status, number, path)
    return error


@functools.lru_cache(maxsize=None)
def _both(kind: Type[Exception]) -> Any:
    """The class of errors that are also exceptions of another kind.

    Tracebacks show it as ``tdms.Error (FileNotFoundError)``.
    """

    def initialize(self: Any, message: str, status: int, number: int, path: Optional[str]) -> None:
        self.message = message
        self.status = status
        self._made_of = (message, status, number, path)
        if issubclass(kind, OSError):
            kind.__init__(self, number, os.strerror(number), path)
        else:
            kind.__init__(self, message)

    # Pickle cannot find the class by a name, so it calls make_error() instead.
    def reduce(self: Any) -> Tuple[Any, ...]:
        return make_error, self._made_of

    members = {"__init__": initialize, "__reduce__": reduce, "__module__": Error.__module__}
    return type(f"Error ({kind.__name__})", (Error, kind), members)


def error_of(status: int, number: int, path: str, subject: str = "") -> Error:
    """The error for a status. Its message names the file, and the subject if there is one."""
    try:
        status = Status(status)
    except ValueError:
        pass
    message = ": ".join(part for part in (path, subject) if part)
    message += f": {LIB.tdms_status_text(status).decode()}"
    if status not in (Status.FILE_PATH, Status.WRITE):
        number = 0  # errno is from an earlier call
    if status == Status.FILE_PATH and number == errno.EWOULDBLOCK:
        message += " Another program is writing to it."
    elif number != 0:
        message += f" {os.strerror(number)}."
    return make_error(message, status, number, path)
