#!/usr/bin/env python3
"""Prints the mean of a channel of doubles, through ctypes: no package is needed.

    python3 mean.py FILE GROUP CHANNEL
"""
import ctypes
import os
import sys

DOUBLE = 10  # the type code of double-precision numbers

tdms = ctypes.CDLL("libtdms.so.1")
handle = ctypes.c_void_p
handles = ctypes.POINTER(handle)
tdms.get_error_description.restype = ctypes.c_char_p
tdms.open_file.argtypes = [ctypes.c_char_p, ctypes.c_char_p, handles]
tdms.close_file.argtypes = [handles]
tdms.get_num_group.argtypes = [handle]
tdms.get_group.argtypes = [handle, handles]
tdms.get_group_name.argtypes = [handle, ctypes.c_char_p]
tdms.get_num_channel.argtypes = [handle]
tdms.get_channel.argtypes = [handle, handles]
tdms.get_channel_name.argtypes = [handle, ctypes.c_char_p]
tdms.get_channel_datatype.argtypes = [handle]
tdms.get_num_channel_data.argtypes = [handle, ctypes.POINTER(ctypes.c_uint64)]
tdms.get_channel_data_double.argtypes = [handle, ctypes.POINTER(ctypes.c_double)]


def check(status):
    """Counts and type codes pass through; a negative status ends the program."""
    if status < 0:
        sys.exit(f"mean.py: {tdms.get_error_description(status).decode()}")
    return status


def child(parent, count, get, get_name, wanted, room):
    """The group of a file, or the channel of a group, that has the wanted name."""
    found = (handle * check(count(parent)))()
    check(get(parent, found))
    name = ctypes.create_string_buffer(room)
    for each in found:
        check(get_name(each, name))
        if name.value == os.fsencode(wanted):
            return each
    sys.exit(f"mean.py: there is no {wanted}")


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    path, group_name, channel_name = sys.argv[1:]
    file = handle()
    check(tdms.open_file(os.fsencode(path), b"r", file))
    room = os.path.getsize(path) + 1  # no name is longer than the file
    group = child(file, tdms.get_num_group, tdms.get_group, tdms.get_group_name, group_name, room)
    channel = child(group, tdms.get_num_channel, tdms.get_channel, tdms.get_channel_name,
                    channel_name, room)
    if check(tdms.get_channel_datatype(channel)) != DOUBLE:
        sys.exit(f"mean.py: {channel_name} does not hold doubles")
    count = ctypes.c_uint64()
    check(tdms.get_num_channel_data(channel, count))
    values = (ctypes.c_double * count.value)()
    check(tdms.get_channel_data_double(channel, values))
    check(tdms.close_file(file))
    print(sum(values) / count.value if count.value else "no values")


if __name__ == "__main__":
    main()
