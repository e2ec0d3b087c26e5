"""What files, groups and channels have in common: a handle, and properties."""
from __future__ import annotations

import ctypes
from collections.abc import Iterator, MutableMapping
from typing import Any, List, NoReturn, Optional, Tuple

from tdms._errors import Error, Status, error_of
from tdms._library import LIB, Value, decode, encode
from tdms._session import Session
from tdms._values import PropertyValue, from_property, to_property

#: The statuses for an object that has no property of a name.
NO_PROPERTY = (
    Status.FILE_PROPERTY_NAME, Status.GROUP_PROPERTY_NAME, Status.CHANNEL_PROPERTY_NAME,
)  # fmt: skip


class Object:
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
        if not isinstance(other, Object):
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

    _owner: Object

    def __init__(self) -> None:
        raise TypeError("properties come from a File, a Group or a Channel")

    @classmethod
    def _of(cls, owner: Object) -> Properties:
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
        data = lookup_bytes(name) if isinstance(name, str) else None
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
            below(owner._label, f"property {name!r}"),
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


def below(owner: str, name: str) -> str:
    return ": ".join(part for part in (owner, name) if part)


def lookup_bytes(name: str) -> Optional[bytes]:
    """The bytes of a name to find; None if no name can have them."""
    try:
        return encode(name)
    except UnicodeEncodeError:
        return None
