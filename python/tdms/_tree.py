"""Files, groups, channels and their properties."""
from __future__ import annotations

import ctypes
import operator
import os
from collections.abc import Iterator, Mapping, MutableMapping
from types import TracebackType
from typing import (
    TYPE_CHECKING, Any, Callable, Dict, Generic, List, NamedTuple, NoReturn, Optional, Tuple, Type,
    TypeVar, Union, overload,
)  # fmt: skip

import numpy
import numpy.typing

from tdms._errors import Error, Status, error_of
from tdms._library import LIB, Value, decode, encode, without_nul
from tdms._session import Session
from tdms._values import BY_CODE, STRING, Array, ElementType, PropertyValue
from tdms._values import from_property, to_property, to_values

if TYPE_CHECKING:
    import pandas  # type: ignore[import]

#: How many values are in memory at a time while a channel is iterated over.
AT_ONCE = 65536
STRINGS_AT_ONCE = 64
#: If the values of a slice are so many bytes apart, each is read by a call of its own: a call costs
#: about as much as copying these bytes.
FAR_APART = 32768
#: The statuses for an object that has no property of a name.
NO_PROPERTY = (
    Status.FILE_PROPERTY_NAME, Status.GROUP_PROPERTY_NAME, Status.CHANNEL_PROPERTY_NAME,
)  # fmt: skip


class _Object:
    """The base class of files, groups and channels."""

    __slots__ = ("_session", "_pointer", "_label", "__weakref__")

    _session: Session
    _pointer: Any  # the handle, a c_void_p or its address
    _label: str  # for messages

    def __init__(self) -> None:
        raise TypeError(f"a {type(self).__name__} comes from a File, by its name")

    @property
    def properties(self) -> Properties:
        """The properties, like a dict whose content is in the file."""
        return Properties._of(self)

    def _checked(self, result: int) -> int:
        """Returns the result of a function of the library.

        Raises:
            Error: the result is negative, which makes it a status.
        """
        if result < 0:
            raise error_of(result, 0, self._session.path, self._label)
        return result

    # Objects are equal if they are the same object of the file, whatever it contains.
    def __eq__(self, other: object) -> bool:
        if not isinstance(other, _Object):
            return NotImplemented
        return self._session is other._session and bool(self._pointer == other._pointer)

    def __hash__(self) -> int:
        return hash((id(self._session), self._label))

    def __reduce_ex__(self, protocol: Any) -> NoReturn:
        raise TypeError(
            f"a {type(self).__name__} cannot be copied or pickled: open the file again by its path"
        )


class Properties(MutableMapping[str, Any]):
    """The properties of a file, a group or a channel, like a dict in the order of their names.

    Reading returns int, float, bool, str or numpy.datetime64 in nanoseconds, and None for a type
    that has no values. Writing takes the same types, and:

    - int is stored as int64, or as uint64 if it is too large for that;
    - NumPy scalars are stored with their own type: ``numpy.int16(3)`` as int16;
    - datetime is converted to UTC if it has a time zone, and taken as UTC if not.

    A new value replaces the old one, even if it has another type. Properties cannot be deleted,
    because files only grow: that raises a TypeError.
    """

    __slots__ = ("_owner",)

    _owner: _Object

    def __init__(self) -> None:
        raise TypeError("properties come from a File, a Group or a Channel")

    @classmethod
    def _of(cls, owner: _Object) -> Properties:
        properties = cls.__new__(cls)
        properties._owner = owner
        return properties

    def __getitem__(self, name: str) -> Any:
        """The value of a property.

        Raises:
            KeyError: there is no property of that name.
            Error: the file is closed.
        """
        owner = self._owner
        data = _lookup_bytes(name) if isinstance(name, str) else None
        value = Value()

        def get() -> Tuple[int, Any]:
            if data is None:
                return NO_PROPERTY[0], None
            status = LIB.tdms_get_property(owner._pointer, data, len(data), ctypes.byref(value))
            return status, from_property(value) if status == 0 else None

        status, result = owner._session.run(get)
        if status in NO_PROPERTY:
            raise KeyError(f"{owner._label or owner._session.path} has no property {name!r}")
        owner._checked(status)
        return result

    def __setitem__(self, name: str, value: PropertyValue) -> None:
        """Creates a property, or replaces it. The next save writes it to the file.

        Raises:
            TypeError: the name is not a str, or files have no values of that type.
            OverflowError: an int that neither int64 nor uint64 holds.
            ValueError: a time that is not a whole number of nanoseconds from 1677 to 2262, or a
                string that cannot be encoded.
            Error: the file is closed, or open for reading only.
        """
        owner = self._owner
        data = encode(name)
        given, bytes_owner = to_property(value)
        owner._session.call(
            _below(owner._label, f"property {name!r}"),
            LIB.tdms_set_property, owner._pointer, data, len(data), ctypes.byref(given),
        )  # fmt: skip
        del bytes_owner  # needed until after the call

    def __delitem__(self, name: str) -> NoReturn:
        self[name]
        raise TypeError("a property cannot be removed: a file only grows. Assign another value")

    def __iter__(self) -> Iterator[str]:
        return iter(self._names())

    def __len__(self) -> int:
        return len(self._names())

    def __repr__(self) -> str:
        try:
            return repr(dict(self))
        except Error as error:
            return f"<tdms.Properties: {error}>"

    def __reduce_ex__(self, protocol: Any) -> NoReturn:
        raise TypeError("properties cannot be copied or pickled: make a dict of them")

    def _names(self) -> List[str]:
        owner = self._owner

        def list_names() -> List[str]:
            name, length, value = ctypes.c_void_p(), ctypes.c_uint64(), Value()
            names: List[str] = []
            while True:
                status = LIB.tdms_next_property(
                    owner._pointer, ctypes.byref(name), ctypes.byref(length), ctypes.byref(value)
                )
                owner._checked(status)
                if not name:
                    return names
                names.append(decode(name.value, length.value))

        return owner._session.run(list_names)


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


class _Parent(_Object, Mapping[str, Child], Generic[Child]):
    """A mapping of names to children, in the byte order of their paths."""

    __slots__ = ()

    _level: _Level

    def _child(self, name: str, pointer: int) -> Child:
        raise NotImplementedError

    __eq__ = _Object.__eq__  # a mapping would compare its items
    __hash__ = _Object.__hash__

    def __iter__(self) -> Iterator[str]:
        return iter([name for name, _ in self._list()])

    def __len__(self) -> int:
        return self._checked(self._session.ask(self._level.count, self._pointer)[0])

    def __contains__(self, name: object) -> bool:
        return isinstance(name, str) and self._find(name) is not None

    def _get(self, name: str) -> Child:
        pointer = self._find(name)
        if pointer is None:
            where = _below(self._session.path, self._label)
            raise KeyError(f"{where} has no {self._level.what} {name!r}")
        return self._child(name, pointer)

    def _create(self, name: str) -> Child:
        data = without_nul(encode(name), "a name")
        if b"/" in data:
            raise ValueError(f"a name must not contain a slash: {name!r}")
        pointer = ctypes.c_void_p()
        self._session.call(
            _below(self._label, f"{self._level.what} {name!r}"),
            self._level.create, self._pointer, data, ctypes.byref(pointer),
        )  # fmt: skip
        assert pointer.value is not None
        return self._child(name, pointer.value)

    def _find(self, name: str) -> Optional[int]:
        data = _lookup_bytes(name)
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


class Channel(_Object):
    """A channel: values of one type, used like a sequence.

    ``channel[5]`` is a NumPy scalar, a str or a numpy.datetime64; ``channel[10:20]`` is an array or
    a list of str. Only these values are read. Appended values can be read once they are saved.
    """

    __slots__ = ("_name", "_group", "_known")

    _name: str
    _group: Group
    _known: Optional[ElementType]

    @property
    def name(self) -> str:
        """The channel's name."""
        return self._name

    @property
    def group(self) -> Group:
        """The group that the channel is in."""
        return self._group

    @property
    def dtype(self) -> Optional[numpy.dtype[Any]]:
        """The NumPy type of the values: object for strings, datetime64[ns] for times.

        It is None until the first values fix it.

        Raises:
            Error: the file is closed, or the channel has an unknown type.
        """
        element = self._element()
        return None if element is None else element.dtype

    @property
    def lost(self) -> int:
        """The number of values that the file states but does not hold; len() does not count them.

        Raises:
            Error: the values cannot be located, or the file is closed.
        """
        return self._counts()[1]

    def __len__(self) -> int:
        return self._counts()[0]

    def __getitem__(self, key: Any) -> Any:
        """A value, or the values of a slice.

        Raises:
            IndexError, TypeError, ValueError: as a list does.
            Error: the values cannot be read, or the file is closed.
        """
        length = len(self)
        if isinstance(key, slice):
            return self._read_every(range(length)[key])
        index = operator.index(key)
        if index < 0:
            index += length
        if not 0 <= index < length:
            raise IndexError(f"{self._label} has {length} values, and none at {key}")
        return self._read(index, 1)[0]

    def __iter__(self) -> Iterator[Any]:
        """Iterates over the current values, with a bounded number in memory at a time."""
        for part in self.chunks(STRINGS_AT_ONCE if self._element() is STRING else AT_ONCE):
            yield from part

    def chunks(self, size: int) -> Iterator[Any]:
        """Iterates over the current values in arrays, or lists of str.

        Args:
            size: the number of values in each; the last may have fewer.

        Raises:
            TypeError, ValueError: the size is not a positive integer.
            Error: as `read`, while iterating.
        """
        size = operator.index(size)
        if size < 1:
            raise ValueError(f"the size of a chunk must be positive, not {size}")
        length = len(self)
        return (self._read(first, min(size, length - first)) for first in range(0, length, size))

    def read(self, first: int = 0, count: Optional[int] = None, out: Optional[Array] = None) -> Any:
        """Reads a range of values.

        Args:
            first: the index of the first value.
            count: how many values; None for all from the first on.
            out: an array of `count` elements of the channel's dtype, for the values. With it, many
                reads need no new memory.

        Returns:
            A one-dimensional array of the channel's dtype, which is `out` if that was given; for
            strings a list of str.

        Raises:
            IndexError: the range ends beyond the last value.
            TypeError, ValueError: `out` is not such an array.
            Error: the values cannot be read, or the file is closed.
        """
        length = len(self)
        first = operator.index(first)
        count = length - first if count is None else operator.index(count)
        if first < 0 or count < 0 or first + count > length:
            raise IndexError(f"{self._label} has {length} values: not {count} from {first} on")
        return self._read(first, count, out)

    def append(self, values: Any) -> None:
        """Adds values after the existing ones. They are in memory until the next save.

        The first values fix the type of a channel. For an array, or an object that converts itself
        to one, it is the array's type; later arrays must have the same type, or one that NumPy
        casts to it safely. For a sequence of bool, int, float, str or datetime it is bool, int64
        (uint64 if a value is too large), float64, string or time; later sequences are converted to
        the channel's type. An empty sequence fixes no type. Only floats are rounded: integers that
        a channel of floats cannot hold exactly are rejected, also in arrays. Times without a time
        zone are taken as UTC.

        Args:
            values: a one-dimensional array or a sequence.

        Raises:
            TypeError: files, or this channel, have no values of that type.
            ValueError: the values have more than one dimension; a time is not a whole number of
                nanoseconds from 1677 to 2262; a string contains a NUL; the channel's floats cannot
                hold an integer exactly, such as 2**53 + 1.
            OverflowError: a number is out of the range of the channel's type.
            Error: the file is closed or open for reading only, or there would be more than 4 GiB of
                strings in one save. After all of these errors nothing was added. After an
                interrupt, such as KeyboardInterrupt, all values may have been added.
        """
        converted = to_values(values, self._element())
        if converted is None:
            return
        element, data = converted
        argument: Any
        if isinstance(data, list):
            argument = (ctypes.c_char_p * len(data))(*data)
        else:
            argument = data.ctypes.data
        self._session.call(self._label, element.append, self._pointer, len(data), argument)

    def to_pandas(self) -> pandas.Series:
        """The values as a Series with the channel's name.

        The index is the group's first channel of times if that is another channel of the same
        length; otherwise it is a range of integers.

        Raises:
            ImportError: pandas is not installed.
            Error: as `read`.
        """
        from tdms._frames import series_of

        return series_of(self)

    def __array__(
        self, dtype: Optional[numpy.typing.DTypeLike] = None, copy: Optional[bool] = None
    ) -> Array:
        if copy is False:
            raise ValueError("the values are in a file: an array of them is a copy")
        values = self.read()
        array: Array = numpy.array(values, object) if isinstance(values, list) else values
        return array if dtype is None else array.astype(dtype, copy=False)

    def __repr__(self) -> str:
        from tdms._describe import describe_channel

        return f"<tdms.Channel {describe_channel(self)}>"

    def _element(self) -> Optional[ElementType]:
        """The channel's type, which does not change once it has one."""
        code, _ = self._session.ask(LIB.get_channel_datatype, self._pointer)
        if self._known is None and code != 0:
            self._known = BY_CODE.get(code)
            if self._known is None:
                # -1 is not a status, but the code of a type.
                self._checked(Status.DATATYPE if code >= -1 else code)
        return self._known

    def _counts(self) -> Tuple[int, int]:
        count, lost = ctypes.c_uint64(), ctypes.c_uint64()
        self._session.call(
            self._label,
            LIB.tdms_get_num_values, self._pointer, ctypes.byref(count), ctypes.byref(lost),
        )  # fmt: skip
        return count.value, lost.value

    def _read(self, first: int, count: int, out: Optional[Array] = None) -> Any:
        element = self._element()
        if element is STRING:
            if out is not None:
                raise TypeError("strings are not read into an array")
            return self._read_strings(first, count)
        dtype = element.dtype if element is not None else numpy.dtype("float64")
        array = numpy.empty(count, dtype) if out is None else _usable(out, count, dtype)
        if element is not None:
            self._session.call(
                self._label, element.read, self._pointer, first, count, array.ctypes.data
            )
        return array if out is None else out

    def _read_strings(self, first: int, count: int) -> List[str]:
        size = ctypes.c_uint64()
        self._session.call(
            self._label,
            LIB.tdms_get_string_size, self._pointer, first, count, ctypes.byref(size),
        )  # fmt: skip
        bytes_read = numpy.empty(size.value, "uint8")
        begins = numpy.empty(count + 1, "uint64")
        begin = bytes_read.ctypes.data
        self._session.call(
            self._label, LIB.tdms_read_string,
            self._pointer, first, count, begin, size.value, begins.ctypes.data,
        )  # fmt: skip
        offsets = (begins - numpy.uint64(begin)).tolist()
        view = bytes_read.data
        return [
            str(view[offset : end - 1], "utf-8", "surrogateescape")
            for offset, end in zip(offsets, offsets[1:])
        ]

    def _read_every(self, wanted: range) -> Any:
        """The values at these indexes, without all values between them in memory."""
        if wanted.step < 0:
            return self._read_every(wanted[::-1])[::-1]
        count, step = len(wanted), wanted.step
        if step == 1 or count < 2:
            return self._read(wanted.start if count else 0, count)
        dtype = self.dtype
        assert dtype is not None  # a channel that has values
        strings = dtype == STRING.dtype
        at_once = STRINGS_AT_ONCE if strings else AT_ONCE
        per_read = max(at_once // step, 1) if step * dtype.itemsize < FAR_APART else 1
        result: Any = [""] * count if strings else numpy.empty(count, dtype)
        for done in range(0, count, per_read):
            part = wanted[done : done + per_read]
            read = self._read(part.start, part[-1] - part.start + 1)
            result[done : done + len(part)] = read[::step]
        return result


def _below(owner: str, name: str) -> str:
    return ": ".join(part for part in (owner, name) if part)


def _lookup_bytes(name: str) -> Optional[bytes]:
    """The bytes of a name to find; None if no name can have them."""
    try:
        return encode(name)
    except UnicodeEncodeError:
        return None


def _path_bytes(path: Union[str, bytes, os.PathLike[Any]]) -> bytes:
    return without_nul(os.fsencode(path), "a path")


def _two_names(names: Tuple[Any, ...]) -> Tuple[str, str]:
    if len(names) != 2:
        raise TypeError(f"expected the names of a group and a channel, not {names!r}")
    return names[0], names[1]


def _usable(out: Array, count: int, dtype: numpy.dtype[Any]) -> Array:
    """The same memory as a plain array, if C can write `count` values of the type to it.

    A subclass of numpy.ndarray could report other attributes than its memory has.
    """
    if not isinstance(out, numpy.ndarray):
        raise TypeError(f"out must be an array of {dtype}")
    plain = numpy.asarray(out)
    if plain.dtype != dtype:
        raise TypeError(f"out must be an array of {dtype}")
    if plain.shape != (count,) or not plain.flags.carray:
        raise ValueError(f"out must be a contiguous, writable array of {count} values")
    return plain
