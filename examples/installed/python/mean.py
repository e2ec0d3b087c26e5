#!/usr/bin/env python3
"""Prints the mean of a channel of numbers, through ctypes: no package is needed.

    python3 mean.py FILE GROUP CHANNEL

The loader must find libtdms.so.1: run ldconfig after installing it, or set LD_LIBRARY_PATH to its
folder.
"""
import ctypes
import os
import sys

AT_ONCE = 65536  # values that are in memory at a time

tdms = ctypes.CDLL("libtdms.so.1")
handle = ctypes.c_void_p
handles = ctypes.POINTER(handle)
count = ctypes.c_uint64
counts = ctypes.POINTER(count)
tdms.tdms_status_text.restype = ctypes.c_char_p
tdms.tdms_open.argtypes = [ctypes.c_char_p, ctypes.c_char_p, handles]
tdms.tdms_close.argtypes = [handles]
tdms.tdms_find_group.argtypes = [handle, ctypes.c_char_p, handles]
tdms.tdms_find_channel.argtypes = [handle, ctypes.c_char_p, handles]
tdms.tdms_get_num_values.argtypes = [handle, counts, counts]
tdms.tdms_read_double.argtypes = [handle, count, count, ctypes.POINTER(ctypes.c_double)]


def check(status):
    """A status other than 0 ends the program."""
    if status != 0:
        sys.exit(f"mean.py: {tdms.tdms_status_text(status).decode()}")


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    path, group_name, channel_name = map(os.fsencode, sys.argv[1:])
    file, group, channel, stored = handle(), handle(), handle(), count()
    check(tdms.tdms_open(path, b"r", file))
    check(tdms.tdms_find_group(file, group_name, group))
    check(tdms.tdms_find_channel(group, channel_name, channel))
    check(tdms.tdms_get_num_values(channel, stored, None))
    total = 0.0
    for first in range(0, stored.value, AT_ONCE):
        values = (ctypes.c_double * min(AT_ONCE, stored.value - first))()
        check(tdms.tdms_read_double(channel, first, len(values), values))
        total += sum(values)
    check(tdms.tdms_close(file))
    print(total / stored.value if stored.value else "no values")


if __name__ == "__main__":
    main()
