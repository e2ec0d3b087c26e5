"""An open file as every object in it uses it."""
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
    """The handle of an open file, used by one call at a time.

    ctypes lets other threads run during a call, and the library allows one thread per file. So
    every call holds the lock from the check that the file is open to the end of its last use of the
    library.
    """

    def __init__(self, path: str, writable: bool, open_handle: Callable[[Any], Any]) -> None:
        self.path = path
        self.writable = writable
        self.handle = ctypes.c_void_p()
        self._process = os.getpid()
        self._lock = threading.RLock()
        self._busy = False
        # Before opening: an interrupt may come as soon as there is a handle.
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
        """The result of `work`, which has the file for itself.

        Raises:
            Error: the file is closed, or is another process's, or this thread is within a call.
        """
        if os.getpid() != self._process:
            raise self._not_now("The file was opened by another process: open it in this one.")
        with self._lock:
            # A signal handler, or what the garbage collector calls, may interrupt a call.
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
        """What a function of the library returns, and errno."""

        def result_and_errno() -> Tuple[int, int]:
            result: int = function(*arguments)
            return result, ctypes.get_errno()

        return self.run(result_and_errno)

    def call(self, subject: str, function: Any, *arguments: Any) -> None:
        """Calls a function of the library.

        Raises:
            Error: as `run`, or for a status other than 0. It names `subject`.
        """
        status, number = self.ask(function, *arguments)
        if status != 0:
            raise error_of(status, number, self.path, subject)

    def close(self, save: bool) -> None:
        """Closes the file, if it is open. What fails is raised when it is closed.

        In a process that was forked off nothing happens: the file belongs to the one before.
        """
        if self.closed or os.getpid() != self._process:
            return

        try:
            error = self.run(lambda: _close(self.handle, self.path, save and self.writable))
        except Error:
            if self.closed:  # by another thread meanwhile
                return
            raise
        self._finalizer.detach()
        if error is not None:
            raise error

    def _not_now(self, reason: str) -> Error:
        return Error(f"{self.path}: {reason}", Status.FILE_HANDLE)


def _close(handle: ctypes.c_void_p, path: str, save: bool) -> Optional[Error]:
    """Closes a file, saved or not. The result is what failed first."""
    status = LIB.tdms_save(handle) if save else 0
    number = ctypes.get_errno()
    closed = LIB.tdms_close(ctypes.byref(handle))
    if status == 0:
        status, number = closed, ctypes.get_errno()
    return error_of(status, number, path) if status != 0 else None


def _abandon(
    handle: ctypes.c_void_p, lock: threading.RLock, process: int, path: str, writable: bool
) -> None:
    """Saves and closes what nobody has closed. At exit, running calls end first."""
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
