"""Channels and their values."""
from __future__ import annotations

import ctypes
import operator
from collections.abc import Iterator
from typing import TYPE_CHECKING, Any, List, Optional, Tuple

import numpy
import numpy.typing

from tdms._errors import Status
from tdms._library import LIB
from tdms._objects import Object
from tdms._values import BY_CODE, STRING, Array, ElementType, to_values

if TYPE_CHECKING:
    import pandas  # type: ignore[import]

    from tdms._tree import Group

#: How many values are in memory at a time while a channel is iterated over.
AT_ONCE = 65536
STRINGS_AT_ONCE = 64
#: If the values of a slice are so many bytes apart, each is read by a call of its own: a call costs
#: about as much as copying these bytes.
FAR_APART = 32768


class Channel(Object):
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
