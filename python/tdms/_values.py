"""Converts values of Python and NumPy to values of a file, and back."""
from __future__ import annotations

import ctypes
import datetime
from collections.abc import Sequence
from typing import Any, List, NamedTuple, Optional, Tuple, Type, Union

import numpy
import numpy.typing

from tdms._library import LIB, Value, decode, encode, without_nul

Array = numpy.typing.NDArray[Any]

#: What a property can be set to.
PropertyValue = Union[
    bool, int, float, str, datetime.datetime,
    numpy.bool_, numpy.integer[Any], numpy.floating[Any], numpy.datetime64,
]  # fmt: skip


class ElementType(NamedTuple):
    """A type of values: its code in a file, its NumPy type, and its names in C."""

    code: int
    dtype: numpy.dtype[Any]
    member: str  # of AnyValue
    name: str  # in the names of functions

    @property
    def label(self) -> str:
        """The type as messages name it."""
        return "strings" if self.name == "string" else str(self.dtype)

    @property
    def read(self) -> Any:
        return getattr(LIB, f"tdms_read_{self.name}")

    @property
    def append(self) -> Any:
        return getattr(LIB, f"tdms_append_{self.name}")


def _number(code: int, dtype: str, member: str, name: str = "") -> ElementType:
    return ElementType(code, numpy.dtype(dtype), member, name or dtype)


INT64 = _number(4, "int64", "integer")
UINT64 = _number(8, "uint64", "natural")
DOUBLE = _number(10, "float64", "number", "double")
BOOL = _number(0x21, "bool", "boolean")
NUMBERS = (
    _number(1, "int8", "integer"),
    _number(2, "int16", "integer"),
    _number(3, "int32", "integer"),
    INT64,
    _number(5, "uint8", "natural"),
    _number(6, "uint16", "natural"),
    _number(7, "uint32", "natural"),
    UINT64,
    _number(9, "float32", "number", "float"),
    DOUBLE,
    BOOL,
)
STRING = ElementType(0x20, numpy.dtype(object), "string", "string")
TIME = ElementType(0x44, numpy.dtype("M8[ns]"), "nanoseconds", "nanoseconds")

BY_CODE = {element.code: element for element in (*NUMBERS, STRING, TIME)}
BY_DTYPE = {element.dtype.str: element for element in NUMBERS}

#: The kinds of Python values that a channel takes, by the kind of its NumPy type.
ACCEPTED = {"b": "b", "i": "bi", "u": "bi", "f": "bif", "O": "s", "M": "t"}

EPOCH = datetime.datetime(1970, 1, 1, tzinfo=datetime.timezone.utc)
INT64_RANGE = range(-(2**63), 2**63)


def element_of(dtype: numpy.dtype[Any]) -> ElementType:
    """The type of numbers or bools for a NumPy type of any byte order.

    Raises:
        TypeError: files have no such type.
    """
    element = BY_DTYPE.get(dtype.newbyteorder("=").str)
    if element is None:
        raise TypeError(f"a file has no values of the type {dtype}")
    return element


def exact_times(times: Array) -> Array:
    """Converts times of any unit to nanoseconds.

    Raises:
        ValueError: one is not a whole number of nanoseconds between the years 1677 and 2262.
    """
    if times.dtype == TIME.dtype:
        return times
    converted = times.astype(TIME.dtype)
    # Beyond the range NumPy wraps around, so converting back yields other times.
    same = (converted.astype(times.dtype) == times) | numpy.isnat(times)
    if numpy.datetime_data(times.dtype)[0] == "generic":
        same = numpy.isnat(times)
    if not same.all():
        raise ValueError("times must be whole nanoseconds from 1677-09-21 to 2262-04-11")
    return converted


def nanoseconds(time: Union[datetime.datetime, numpy.datetime64]) -> int:
    """Nanoseconds since 1970 in UTC; a datetime without a time zone is taken as UTC.

    Raises:
        ValueError: as `exact_times`.
    """
    # The datetime class of pandas has nanoseconds.
    exact: Any = getattr(time, "to_datetime64", lambda: time)()
    if isinstance(exact, numpy.datetime64):
        return int(exact_times(numpy.array([exact])).view("int64")[0])
    if exact.utcoffset() is None:
        exact = exact.replace(tzinfo=datetime.timezone.utc)
    since = exact - EPOCH
    value: int = (since.days * 86400 + since.seconds) * 10**9 + since.microseconds * 1000
    if value not in INT64_RANGE:
        raise ValueError(f"{time} is not between 1677-09-21 and 2262-04-11")
    return value


def _element_of_int(low: int, high: int) -> ElementType:
    for element in (INT64, UINT64):
        if _holds(element, low, high):
            return element
    both = f"both {low} and {high}" if low != high else str(low)
    raise OverflowError(f"no type of integers holds {both}")


def _holds(element: ElementType, low: int, high: int) -> bool:
    limits = numpy.iinfo(element.dtype)
    return low >= limits.min and high <= limits.max


def to_property(value: PropertyValue) -> Tuple[Value, object]:
    """The value of a property for C, and the object that owns its bytes.

    Raises:
        TypeError: properties have no values of this type.
        OverflowError: an int that neither int64 nor uint64 holds.
        ValueError: as `nanoseconds` and `encode`.
    """
    kind = kind_of(type(value))
    given: Any = value
    plain: Any
    result = Value()
    if kind == "s":
        data = encode(given)
        result.type = STRING.code
        result.value.string.text = ctypes.cast(ctypes.c_char_p(data), ctypes.c_void_p)
        result.value.string.length = len(data)
        return result, data
    if kind == "t":
        element, plain = TIME, nanoseconds(given)
    elif isinstance(given, numpy.generic):
        element, plain = element_of(given.dtype), given.item()
    elif kind == "b":
        element, plain = BOOL, given
    elif kind == "i":
        plain = int(given)
        element = _element_of_int(plain, plain)
    else:
        element, plain = DOUBLE, float(given)
    result.type = element.code
    setattr(result.value, element.member, plain)
    return result, None


def from_property(value: Value) -> Any:
    """The value of a property for Python; None for a type without values."""
    element = BY_CODE.get(value.type)
    if element is None:
        return None
    if element is STRING:
        return decode(value.value.string.text, value.value.string.length)
    plain = getattr(value.value, element.member)
    return numpy.datetime64(plain, "ns") if element is TIME else plain


def kind_of(cls: Type[Any]) -> str:
    """b for bool, i for integers, f for floating point, s for str, t for times.

    Raises:
        TypeError: files have no such values.
    """
    if issubclass(cls, (bool, numpy.bool_)):
        return "b"
    if issubclass(cls, (int, numpy.integer)) and not issubclass(cls, numpy.timedelta64):
        return "i"
    if issubclass(cls, (float, numpy.float32)):
        return "f"
    if issubclass(cls, str):
        return "s"
    if issubclass(cls, (datetime.datetime, numpy.datetime64)):
        return "t"
    raise TypeError(f"a file has no values of the type {cls.__name__}")


def to_values(
    values: object, known: Optional[ElementType]
) -> Optional[Tuple[ElementType, Union[Array, List[bytes]]]]:
    """The type and the values for a channel of a known type, or of none yet.

    The values are an array that C can read, or the bytes of strings. The result is None if there
    are no values and nothing determines the type.

    Raises:
        TypeError, ValueError, OverflowError: as `Channel.append`.
    """
    if isinstance(values, (str, bytes, bytearray)):
        raise TypeError(f"expected values, not one {type(values).__name__}")
    if isinstance(values, numpy.ma.MaskedArray):
        raise TypeError("masked values have no place in a file: fill them first")
    if hasattr(values, "__array__") or isinstance(values, memoryview):
        return _from_array(numpy.asarray(values), known)
    if isinstance(values, Sequence):
        return _from_list(list(values), known)
    raise TypeError(f"expected an array or a sequence, not {type(values).__name__}")


def _from_array(
    values: Array, known: Optional[ElementType]
) -> Optional[Tuple[ElementType, Union[Array, List[bytes]]]]:
    if values.ndim != 1:
        raise ValueError(f"values must be one-dimensional, not {values.ndim}-dimensional")
    kind = values.dtype.kind
    if kind in "OU":
        given = STRING if kind == "U" else None
        return _from_list(values.tolist(), known or given)
    if kind == "M":
        values = exact_times(values)
    element = TIME if kind == "M" else element_of(values.dtype)
    wanted = known or element
    if wanted is not element:
        numbers = element in NUMBERS and wanted in NUMBERS
        if not numbers or not numpy.can_cast(element.dtype, wanted.dtype, "safe"):
            raise TypeError(f"a channel of {wanted.label} does not take an array of {element.label}")
    if element is BOOL:
        values = values.view("uint8") != 0  # the bytes of a view may be neither 0 nor 1
    converted = numpy.require(values, wanted.dtype, ["C", "A"])
    # NumPy calls this cast safe, but a float64 has only 53 bits.
    if element in (INT64, UINT64) and wanted is DOUBLE:
        _check_exact(values, converted)
    return wanted, converted


def _from_list(
    values: List[Any], known: Optional[ElementType]
) -> Optional[Tuple[ElementType, Union[Array, List[bytes]]]]:
    if not values:
        if known is None:
            return None
        return known, [] if known is STRING else numpy.empty(0, known.dtype)
    classes = set(map(type, values))
    if any(issubclass(cls, (list, tuple, numpy.ndarray)) for cls in classes):
        raise ValueError("values must be one-dimensional")
    kinds = {kind_of(cls) for cls in classes}
    if known is None:
        known = _element_of_list(values, classes, kinds)
    if not kinds <= set(ACCEPTED[known.dtype.kind]):
        names = ", ".join(sorted(cls.__name__ for cls in classes))
        raise TypeError(f"a channel of {known.label} does not take values of the types {names}")
    convert: Any = CONVERSIONS[known.dtype.kind]
    return known, convert(values, known)


def _element_of_list(values: List[Any], classes: set[Type[Any]], kinds: set[str]) -> ElementType:
    """The type of a new channel whose first values are these."""
    only = next(iter(classes))
    if len(classes) == 1 and issubclass(only, numpy.generic) and kinds <= set("bif"):
        return element_of(numpy.dtype(only))
    if kinds == {"i"} or kinds == {"b", "i"}:
        integers = [int(value) for value in values]
        return _element_of_int(min(integers), max(integers))
    for kind, element in (("f", DOUBLE), ("b", BOOL), ("s", STRING), ("t", TIME)):
        if kind in kinds:
            return element
    raise AssertionError(kinds)


def _integers(values: List[Any], element: ElementType) -> Array:
    integers = [int(value) for value in values]
    low, high = min(integers), max(integers)
    if not _holds(element, low, high):
        wrong = low if low < numpy.iinfo(element.dtype).min else high
        raise OverflowError(f"{wrong} is not in the range of {element.dtype}")
    return numpy.array(integers, element.dtype)


def _floats(values: List[Any], element: ElementType) -> Array:
    wide = numpy.array([float(value) for value in values], numpy.float64)
    with numpy.errstate(over="ignore"):
        result = wide.astype(element.dtype)
    lost = numpy.isinf(result) & ~numpy.isinf(wide)
    if lost.any():
        raise OverflowError(f"{wide[lost][0]} is not in the range of {element.dtype}")
    for value, number in zip(values, result.tolist()):
        # Python compares an int and a float exactly; NumPy does not.
        if isinstance(value, (int, numpy.integer)) and int(value) != number:
            raise _inexact(int(value), element.dtype)
    return result


def _check_exact(integers: Array, floats: Array) -> None:
    """Raises a ValueError if casting int64 or uint64 to float64 changed a value."""
    # The largest integers are rounded up to 2^63 or 2^64, which cannot be cast back.
    limit = float(numpy.iinfo(integers.dtype).max)
    back = numpy.where(floats < limit, floats, 0)
    changed = back.astype(integers.dtype) != integers
    if changed.any():
        raise _inexact(int(integers[changed][0]), floats.dtype)


def _inexact(integer: int, dtype: numpy.dtype[Any]) -> ValueError:
    return ValueError(f"{integer} is no {dtype}: it would be rounded")


def _bools(values: List[Any], element: ElementType) -> Array:
    return numpy.array([bool(value) for value in values], element.dtype)


def _times(values: List[Any], element: ElementType) -> Array:
    return numpy.array([nanoseconds(value) for value in values], "int64").view(element.dtype)


def _strings(values: List[Any], element: ElementType) -> List[bytes]:
    return [without_nul(encode(value), "a string of a channel") for value in values]


CONVERSIONS = {
    "b": _bools, "i": _integers, "u": _integers, "f": _floats, "M": _times, "O": _strings,
}  # fmt: skip
