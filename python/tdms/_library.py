"""Loads the C library, and declares its functions.

Only functions that never throw are declared: a C++ exception would end the interpreter.
"""
from __future__ import annotations

import ctypes
import os
from typing import Any

HANDLE = ctypes.c_void_p
HANDLES = ctypes.POINTER(ctypes.c_void_p)
TEXT = ctypes.c_char_p
COUNT = ctypes.c_uint64
COUNTS = ctypes.POINTER(ctypes.c_uint64)

ELEMENTS = (
    "int8", "int16", "int32", "int64", "uint8", "uint16", "uint32", "uint64",
    "float", "double", "bool", "nanoseconds",
)  # fmt: skip


class String(ctypes.Structure):
    """Bytes with a length. Not a c_char_p, which would end at a NUL."""

    _fields_ = [("text", ctypes.c_void_p), ("length", ctypes.c_uint64)]


class AnyValue(ctypes.Union):
    """The value of a property; the member depends on its type."""

    _fields_ = [
        ("integer", ctypes.c_int64),
        ("natural", ctypes.c_uint64),
        ("number", ctypes.c_double),
        ("boolean", ctypes.c_bool),
        ("nanoseconds", ctypes.c_int64),
        ("string", String),
    ]


class Value(ctypes.Structure):
    """A property's type and value, `tdms_value` in C."""

    _fields_ = [("type", ctypes.c_int32), ("value", AnyValue)]


VALUES = ctypes.POINTER(Value)

FUNCTIONS = {
    "tdms_status_text": [ctypes.c_int],
    "tdms_open": [TEXT, TEXT, HANDLES],
    "tdms_open_partial": [TEXT, HANDLES, COUNTS],
    "tdms_refresh": [HANDLE, COUNTS],
    "tdms_save": [HANDLE],
    "tdms_sync": [HANDLE],
    "tdms_close": [HANDLES],
    "get_num_group": [HANDLE],
    "get_group": [HANDLE, HANDLES],
    "get_num_channel": [HANDLE],
    "get_channel": [HANDLE, HANDLES],
    "get_channel_datatype": [HANDLE],
    "tdms_get_group_name": [HANDLE, HANDLES, COUNTS],
    "tdms_get_channel_name": [HANDLE, HANDLES, COUNTS],
    "tdms_find_group": [HANDLE, TEXT, HANDLES],
    "tdms_find_channel": [HANDLE, TEXT, HANDLES],
    "tdms_create_group": [HANDLE, TEXT, HANDLES],
    "tdms_create_channel": [HANDLE, TEXT, HANDLES],
    "tdms_get_num_values": [HANDLE, COUNTS, COUNTS],
    "tdms_get_string_size": [HANDLE, COUNT, COUNT, COUNTS],
    "tdms_read_string": [HANDLE, COUNT, COUNT, HANDLE, COUNT, HANDLE],
    "tdms_append_string": [HANDLE, COUNT, ctypes.POINTER(TEXT)],
    "tdms_next_property": [HANDLE, HANDLES, COUNTS, VALUES],
    "tdms_get_property": [HANDLE, TEXT, COUNT, VALUES],
    "tdms_set_property": [HANDLE, TEXT, COUNT, VALUES],
    **{f"tdms_read_{name}": [HANDLE, COUNT, COUNT, HANDLE] for name in ELEMENTS},
    **{f"tdms_append_{name}": [HANDLE, COUNT, HANDLE] for name in ELEMENTS},
}


def _load() -> ctypes.CDLL:
    path = os.environ.get("TDMS_LIBRARY") or "libtdms.so.1"
    try:
        return ctypes.CDLL(path, use_errno=True)
    except OSError as error:
        raise ImportError(
            f"The tdms library cannot be loaded ({error}). Install it and run ldconfig, "
            "or set the environment variable TDMS_LIBRARY to its path."
        ) from error


def _declare(library: ctypes.CDLL) -> None:
    for name, arguments in FUNCTIONS.items():
        try:
            function: Any = getattr(library, name)
        except AttributeError as error:
            raise ImportError(
                f"{library._name} has no function {name}: this package needs version 1.1 "
                "of the tdms library, or later."
            ) from error
        function.argtypes = arguments
        function.restype = ctypes.c_int
    library.tdms_status_text.restype = ctypes.c_char_p


LIB = _load()
_declare(LIB)


def encode(string: str) -> bytes:
    """The bytes that a file stores for a str. Lone surrogates represent bytes that are not UTF-8.

    Raises:
        TypeError: the argument is not a str.
        ValueError: it has lone surrogates that represent no byte.
    """
    if not isinstance(string, str):
        raise TypeError(f"expected a str, not {type(string).__name__}")
    # Calls str.encode itself: a subclass may override it.
    return str.encode(string, "utf-8", "surrogateescape")


def decode(address: int | None, length: int) -> str:
    """The string of `length` bytes at an address."""
    data = ctypes.string_at(address, length) if address else b""
    return data.decode("utf-8", "surrogateescape")


def without_nul(data: bytes, what: str) -> bytes:
    """Returns the bytes, if C can take them as a string that ends with a NUL.

    Raises:
        ValueError: they contain a NUL.
    """
    if b"\0" in data:
        raise ValueError(f"{what} must not contain a NUL: {data!r}")
    return data
