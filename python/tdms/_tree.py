"""Files and groups."""
from __future__ import annotations

import ctypes
import os
from collections.abc import Iterator, Mapping
from types import TracebackType
from typing import (
    TYPE_CHECKING, Any, Callable, Dict, Generic, List, NamedTuple, Optional, Tuple, Type, TypeVar,
    Union, overload,
)  # fmt: skip

from tdms._channel import Channel
from tdms._errors import Status
from tdms._library import LIB, decode, encode, without_nul
from tdms._objects import Object, below, lookup_bytes
from tdms._session import Session

if TYPE_CHECKING:
    import pandas  # type: ignore[import]


class _Level(NamedTuple):
    """The library's functions for the children of an object."""

    what: str
    count: Any
    fill: Any
    get_name: Any
    find: Any
    create: Any
    absent: int


GROUPS = _Level(
    "group", LIB.get_num_group, LIB.get_group, LIB.tdms_get_group_name, LIB.tdms_find_group,
    LIB.tdms_create_group, Status.GROUP_HANDLE,
)  # fmt: skip
CHANNELS = _Level(
    "channel", LIB.get_num_channel, LIB.get_channel, LIB.tdms_get_channel_name,
    LIB.tdms_find_channel, LIB.tdms_create_channel, Status.CHANNEL_HANDLE,
)  # fmt: skip

Child = TypeVar("Child", "Group", "Channel")


class _Parent(Object, Mapping[str, Child], Generic[Child]):
    """A mapping of names to children, in the byte order of their paths."""

    __slots__ = ()

    _level: _Level

    def _child(self, name: str, pointer: int) -> Child:
        raise NotImplementedError

    __eq__ = Object.__eq__  # a mapping would compare its items
    __hash__ = Object.__hash__

    def __iter__(self) -> Iterator[str]:
        return iter([name for name, _ in self._list()])

    def __len__(self) -> int:
        return self._checked(self._session.ask(self._level.count, self._pointer)[0])

    def __contains__(self, name: object) -> bool:
        return isinstance(name, str) and self._find(name) is not None

    def _get(self, name: str) -> Child:
        pointer = self._find(name)
        if pointer is None:
            where = below(self._session.path, self._label)
            raise KeyError(f"{where} has no {self._level.what} {name!r}")
        return self._child(name, pointer)

    def _create(self, name: str) -> Child:
        data = without_nul(encode(name), "a name")
        if b"/" in data:
            raise ValueError(f"a name must not contain a slash: {name!r}")
        pointer = ctypes.c_void_p()
        self._session.call(
            below(self._label, f"{self._level.what} {name!r}"),
            self._level.create, self._pointer, data, ctypes.byref(pointer),
        )  # fmt: skip
        assert pointer.value is not None
        return self._child(name, pointer.value)

    def _find(self, name: str) -> Optional[int]:
        data = lookup_bytes(name)
        if data is None:
            return None
        if b"\0" in data:  # C would end the name there
            return next((pointer for other, pointer in self._list() if other == name), None)
        pointer = ctypes.c_void_p()
        status, _ = self._session.ask(self._level.find, self._pointer, data, ctypes.byref(pointer))
        if status == self._level.absent:
            return None
        self._checked(status)
        return pointer.value

    def _list(self) -> List[Tuple[str, int]]:
        """The names and handles of all children."""

        def list_all() -> List[Tuple[str, int]]:
            pointers = (ctypes.c_void_p * self._checked(self._level.count(self._pointer)))()
            self._checked(self._level.fill(self._pointer, pointers))
            return [(name_of(pointer), pointer) for pointer in pointers if pointer is not None]

        def name_of(pointer: int) -> str:
            status = self._level.get_name(pointer, ctypes.byref(name), ctypes.byref(length))
            self._checked(status)
            return decode(name.value, length.value)

        name, length = ctypes.c_void_p(), ctypes.c_uint64()
        return self._session.run(list_all)


class File(_Parent["Group"]):
    """A measurement file: a mapping of groups by their names.

    ``file[group]`` is a Group, ``file[group, channel]`` a Channel. What was created, appended or
    assigned is in memory until `save`, or until `close`, which the ``with`` statement calls. Any
    number of threads may use a file; calls wait for each other. Every process must open the file
    itself.
    """

    __slots__ = ("_mode", "_rest")

    _level = GROUPS

    def __init__(self, path: Union[str, bytes, os.PathLike[Any]], mode: str = "r") -> None:
        """Opens a file.

        Args:
            path: the file's path.
            mode: "r" reads a file; "w" creates one, or empties one that exists; "a" reads a file
                and appends to it. "w" and "a" lock it against other writers.

        Raises:
            TypeError, ValueError: the path or the mode is invalid.
            Error: the file is damaged, truncated, or being recorded: see `partial`. If the system
                does not open it, the error is also an OSError, such as FileNotFoundError or
                PermissionError, or BlockingIOError if another handle writes to it.
        """
        if not isinstance(mode, str):
            raise TypeError(f"mode must be a str, not {type(mode).__name__}")
        if mode not in ("r", "w", "a"):
            raise ValueError(f'mode must be "r", "w" or "a", not {mode!r}')
        name = _path_bytes(path)
        self._open(name, mode, lambda handle: LIB.tdms_open(name, str.encode(mode), handle))

    @classmethod
    def partial(cls: Type[F], path: Union[str, bytes, os.PathLike[Any]]) -> F:
        """Opens a truncated file, or one that is being recorded, to read its intact segments.

        `rest` is the number of bytes after the intact segments; `refresh` takes in what was
        appended.

        Raises:
            TypeError, ValueError, Error: as ``File(path)``, but damage is an error only in the
            first
                segment.
        """
        name, rest = _path_bytes(path), ctypes.c_uint64()
        file = cls.__new__(cls)
        file._open(
            name, "r", lambda handle: LIB.tdms_open_partial(name, handle, ctypes.byref(rest))
        )
        file._rest = rest.value
        return file

    def _open(self, path: bytes, mode: str, open_handle: Callable[[Any], Any]) -> None:
        self._session = Session(os.fsdecode(path), mode != "r", open_handle)
        self._pointer = self._session.handle
        self._label = ""
        self._mode = mode
        self._rest = 0

    @property
    def path(self) -> str:
        """The path with which the file was opened."""
        return self._session.path

    @property
    def mode(self) -> str:
        """The mode that the file was opened with: "r", "w" or "a"."""
        return self._mode

    @property
    def rest(self) -> int:
        """The number of bytes after the intact segments, as of `partial` or the last `refresh`."""
        return self._rest

    @property
    def closed(self) -> bool:
        """Whether the file was closed."""
        return self._session.closed

    @property
    def groups(self) -> List[Group]:
        """All groups, in the order of iteration."""
        return [self._child(name, pointer) for name, pointer in self._list()]

    @overload
    def __getitem__(self, name: str) -> Group:
        ...

    @overload
    def __getitem__(self, name: Tuple[str, str]) -> Channel:
        ...

    def __getitem__(self, name: Union[str, Tuple[str, str]]) -> Union[Group, Channel]:
        """The group of a name, or the channel of the names of its group and its own.

        Raises:
            KeyError: there is no such group or channel.
            TypeError: neither one name nor two.
            Error: the file is closed.
        """
        if isinstance(name, tuple):
            group, channel = _two_names(name)
            return self._get(group)[channel]
        return self._get(name)

    def __contains__(self, name: object) -> bool:
        if isinstance(name, tuple) and len(name) == 2:
            group, channel = name
            return group in self and channel in self[group]
        return super().__contains__(name)

    def create_group(self, name: str) -> Group:
        """Creates an empty group.

        Raises:
            TypeError: the name is not a str.
            ValueError: the name contains a slash or a NUL.
            Error: there is a group of that name, or the file is closed or open for reading only.
        """
        return self._create(name)

    def save(self) -> None:
        """Appends everything new to the file, and hands it to the operating system.

        Raises:
            Error: writing failed; everything stays in memory for the next call. The error is also
                an OSError with the system's reason, such as a full disk.
        """
        self._session.call("", LIB.tdms_save, self._pointer)

    def sync(self) -> None:
        """Waits until the disk has what was saved, so that it survives a loss of power.

        Raises:
            Error: that failed; the error is also an OSError with the system's reason.
        """
        self._session.call("", LIB.tdms_sync, self._pointer)

    def refresh(self) -> int:
        """Takes in what was appended to a file that is open for reading.

        All objects stay valid. Returns the number of bytes after the intact segments, as `rest`
        does afterwards.

        Raises:
            Error: the file has become shorter, or is another recording: open it again.
        """
        rest = ctypes.c_uint64()
        self._session.call("", LIB.tdms_refresh, self._pointer, ctypes.byref(rest))
        self._rest = rest.value
        return self._rest

    def close(self, save: bool = True) -> None:
        """Saves what was not saved, and closes the file. Does nothing if the file is closed.

        Args:
            save: False discards what was not saved.

        Raises:
            Error: saving failed. The file is closed nevertheless.
        """
        self._session.close(save)

    def to_pandas(self) -> Dict[str, pandas.DataFrame]:
        """A dict with the DataFrame of each group: see `Group.to_pandas`."""
        return {group.name: group.to_pandas() for group in self.groups}

    def __enter__(self: F) -> F:
        self._session.run(lambda: None)
        return self

    def __exit__(
        self,
        kind: Optional[Type[BaseException]],
        error: Optional[BaseException],
        trace: Optional[TracebackType],
    ) -> None:
        self.close()

    def __repr__(self) -> str:
        from tdms._describe import describe_file

        return describe_file(self)

    def _child(self, name: str, pointer: int) -> Group:
        group = Group.__new__(Group)
        group._session = self._session
        group._pointer = pointer
        group._label = name
        group._file = self
        return group


F = TypeVar("F", bound=File)


class Group(_Parent["Channel"]):
    """A group of a file: a mapping of channels by their names."""

    __slots__ = ("_file",)

    _level = CHANNELS
    _file: File

    @property
    def name(self) -> str:
        """The group's name."""
        return self._label

    @property
    def file(self) -> File:
        """The file that the group is in."""
        return self._file

    @property
    def channels(self) -> List[Channel]:
        """All channels, in the order of iteration."""
        return [self._child(name, pointer) for name, pointer in self._list()]

    def __getitem__(self, name: str) -> Channel:
        """The channel of a name.

        Raises:
            KeyError: there is no such channel.
            TypeError: the name is not a str.
            Error: the file is closed.
        """
        return self._get(name)

    def create_channel(self, name: str) -> Channel:
        """Creates a channel. Its first values fix its type.

        Raises:
            TypeError: the name is not a str.
            ValueError: the name contains a slash or a NUL.
            Error: there is a channel of that name, or the file is closed or open for reading only.
        """
        return self._create(name)

    def to_pandas(self) -> pandas.DataFrame:
        """A DataFrame with a column for each channel.

        The index is the first channel of times, unless another channel is longer; then it is a
        range of integers. Columns shorter than the longest one end in missing values; if they hold
        integers or bools they then have pandas' nullable types, so that no value changes.

        Raises:
            ImportError: pandas is not installed.
            Error: as `Channel.read`.
        """
        from tdms._frames import frame_of

        return frame_of(self)

    def __repr__(self) -> str:
        from tdms._describe import describe_group

        return describe_group(self)

    def _child(self, name: str, pointer: int) -> Channel:
        channel = Channel.__new__(Channel)
        channel._session = self._session
        channel._pointer = pointer
        channel._label = f"{self._label}/{name}"
        channel._name = name
        channel._group = self
        channel._known = None
        return channel


def _path_bytes(path: Union[str, bytes, os.PathLike[Any]]) -> bytes:
    return without_nul(os.fsencode(path), "a path")


def _two_names(names: Tuple[Any, ...]) -> Tuple[str, str]:
    if len(names) != 2:
        raise TypeError(f"expected the names of a group and a channel, not {names!r}")
    return names[0], names[1]
