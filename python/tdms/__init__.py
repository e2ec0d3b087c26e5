"""Reads and writes measurement files in the TDMS format.

A file is a mapping of groups, a group is a mapping of channels, and a channel is used like a
sequence of values. Each of them has typed properties, which are used like a dict::

    with tdms.File("run.tdms", "w") as file:
        voltage = file.create_group("bench").create_channel("voltage")
        voltage.properties["unit"] = "V"
        voltage.append([0.1, 0.4, 0.9, 1.6])

    with tdms.File("run.tdms") as file:
        print(file["bench", "voltage"][1:3])

The package calls the library ``libtdms.so.1``, or the one at the path in the environment variable
``TDMS_LIBRARY``.
"""
from tdms._channel import Channel
from tdms._errors import Error, Status
from tdms._objects import Properties
from tdms._tree import File, Group

__version__ = "1.1.0"

__all__ = ["Channel", "Error", "File", "Group", "Properties", "Status"]
