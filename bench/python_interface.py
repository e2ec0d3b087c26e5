"""Compares reading a channel of 1 GB through the Python package with the C function.

    python_interface.py LIBRARY FOLDER

Both read in turn, each time into a new array. Prints a row of the table of ratios.
"""
from __future__ import annotations

import ctypes
import os
import statistics
import sys
import time
from typing import Any, Callable

import numpy

VALUES = 1 << 27
SAVES = 16
ROUNDS = 11
HIGHEST = 1.1


def record(path: str) -> None:
    with tdms.File(path, "w") as file:
        channel = file.create_group("g").create_channel("c")
        values = numpy.random.default_rng(1).random(VALUES // SAVES)
        for _ in range(SAVES):
            channel.append(values)
            file.save()


def reader_in_c(library: str, path: str) -> Callable[[], Any]:
    c = ctypes.CDLL(library)
    file, group, channel = ctypes.c_void_p(), ctypes.c_void_p(), ctypes.c_void_p()
    assert c.tdms_open(os.fsencode(path), b"r", ctypes.byref(file)) == 0
    assert c.tdms_find_group(file, b"g", ctypes.byref(group)) == 0
    assert c.tdms_find_channel(group, b"c", ctypes.byref(channel)) == 0
    c.tdms_read_double.argtypes = [
        ctypes.c_void_p, ctypes.c_uint64, ctypes.c_uint64, ctypes.c_void_p,
    ]  # fmt: skip

    def read() -> Any:
        values = numpy.empty(VALUES)
        assert c.tdms_read_double(channel, 0, VALUES, values.ctypes.data) == 0
        return values

    return read


def seconds(read: Callable[[], Any]) -> float:
    begin = time.perf_counter()
    read()
    return time.perf_counter() - begin


def main() -> None:
    library, folder = sys.argv[1:]
    path = os.path.join(folder, "python.tdms")
    record(path)
    with tdms.File(path) as file:
        channel = file["g", "c"]
        in_python = lambda: channel[:]
        in_c = reader_in_c(library, path)
        assert numpy.array_equal(in_python(), in_c())
        times = [(seconds(in_python), seconds(in_c)) for _ in range(ROUNDS)]
    os.remove(path)
    python, c = (statistics.median(each) for each in zip(*times))
    print(
        f"| 1 GB of doubles by `tdms.Channel` in Python | {python * 1e3:.4g} ms "
        f"| `tdms_read_double` by ctypes | {c * 1e3:.4g} ms | {python / c:.3g} | {HIGHEST} "
        f"| {'yes' if python / c <= HIGHEST else '**no**'} |"
    )


if __name__ == "__main__":
    os.environ["TDMS_LIBRARY"] = sys.argv[1]
    import tdms

    main()
