"""The open file that all of its objects share."""
from __future__ import annotations

import ctypes
import os
import threading
import warnings
import weakref
from typing import Any, Callable, Optional, Tuple, TypeVar

from tdms._errors import Error, Status, error_of
from tdms._library import LIB

Result = TypeVar("Result")


class Session:
    """The handle of an open file, for one call at a time.

    The library allows only one thread per file, but ctypes lets other threads run during a call. So
    each call holds a lock, from the check that the file is open until it no longer uses the
    library.
    """

    def __init__(self, path: str, writable: bool, open_handle: Callable[[Any], Any]) -> None:
        self.path = path
        self.writable = writable
        self.handle = ctypes.c_void_p()
        self._process = os.getpid()
        self._lock = threading.RLock()
        self._busy = False
        # Before opening, because an interrupt may come as soon as there is a handle.
        self._finalizer = weakref.finalize(
            self, _abandon, self.handle, self._lock, self._process, path, writable
        )
        status = open_handle(ctypes.byref(self.handle))
        if status != 0:
            raise error_of(status, ctypes.get_errno(), path)

    @property
    def closed(self) -> bool:
        return not self.handle

    def run(self, work: Callable[[], Result]) -> Result:
        """The result of `work`, which has exclusive use of the file.

        Raises:
            Error: the file is closed, another process opened it, or this thread is in a call
            already.
        """
        if os.getpid() != self._process:
            raise self._not_now("The file was opened by another process: open it in this one.")
        with self._lock:
            # A signal handler or a finalizer may interrupt a call.
            if self._busy:
                raise self._not_now("The file is in use by the call that this one interrupted.")
            try:
                self._busy = True
                if self.closed:
                    raise self._not_now("The file is closed.")
                return work()
            finally:
                self._busy = False

    def ask(self, function: Any, *arguments: Any) -> Tuple[int, int]:
        """The result of a function of the library, and errno."""

        def result_and_errno() -> Tuple[int, int]:
            result: int = function(*arguments)
            return result, ctypes.get_errno()

        return self.run(result_and_errno)

    def call(self, subject: str, function: Any, *arguments: Any) -> None:
        """Calls a function of the library.

        Raises:
            Error: as `run`, or the status is not 0. The message names `subject`.
        """
        status, number = self.ask(function, *arguments)
        if status != 0:
            raise error_of(status, number, self.path, subject)

    def close(self, save: bool) -> None:
        """Closes the file, if it is open. If something fails, that is raised after closing.

        Does nothing in a forked process: the file belongs to its parent.
        """
        if self.closed or os.getpid() != self._process:
            return

        try:
            error = self.run(lambda: _close(self.handle, self.path, save and self.writable))
        except Error:
            if self.closed:  # another thread closed it meanwhile
                return
            raise
        self._finalizer.detach()
        if error is not None:
            raise error

    def _not_now(self, reason: str) -> Error:
        return Error(f"{self.path}: {reason}", Status.FILE_HANDLE)


def _close(handle: ctypes.c_void_p, path: str, save: bool) -> Optional[Error]:
    """Closes a file, after saving it if `save`. Returns the first error."""
    status = LIB.tdms_save(handle) if save else 0
    number = ctypes.get_errno()
    closed = LIB.tdms_close(ctypes.byref(handle))
    if status == 0:
        status, number = closed, ctypes.get_errno()
    return error_of(status, number, path) if status != 0 else None


def _abandon(
    handle: ctypes.c_void_p, lock: threading.RLock, process: int, path: str, writable: bool
) -> None:
    """Saves and closes a file that was not closed. At exit, it waits for running calls."""
    if os.getpid() != process:
        return
    with lock:
        if not handle:
            return
        error = _close(handle, path, save=writable)
    if error is not None:
        warnings.warn(f"values are lost: {error}", RuntimeWarning)
    elif writable:
        warnings.warn(f"{path} was not closed", ResourceWarning, stacklevel=2)
