import contextlib
import os
import random
import struct

import numpy
import pytest
from conftest import EVERY_TYPE

import tdms

FILES = 300 * int(os.environ.get("TDMS_TEST_ROUNDS", 1))


def read_everything(file):
    for group in file.groups:
        repr(group), dict(file.properties), dict(group.properties)
        for channel in group.channels:
            dict(channel.properties)
            for use in (lambda: channel[:], lambda: channel[-1], lambda: channel[::-5],
                        lambda: list(channel.chunks(2)), lambda: numpy.asarray(channel)):
                with contextlib.suppress(tdms.Error, IndexError):
                    use()


def test_damaged_files_raise_errors_only(path):
    with tdms.File(path, "w") as file:
        group = file.create_group("g")
        for name, values in EVERY_TYPE.items():
            channel = group.create_channel(name)
            channel.properties["p"] = values[2]
            for _ in range(3):
                channel.append(values[:3])
                file.save()
    good, dice, opened = path.read_bytes(), random.Random(1), 0
    for _ in range(FILES):
        data = bytearray(good)
        for _ in range(dice.randint(1, 3)):
            at, size = dice.randrange(len(data)), dice.choice((1, 4, 8))
            data[at : at + size] = dice.choice((0, 1, 256**size - 1)).to_bytes(size, "little")
            data[dice.randrange(len(data))] ^= 1 << dice.randrange(8)
        if dice.randrange(4) == 0:
            del data[dice.randrange(len(data)) :]
        path.write_bytes(data)
        for open_file in (tdms.File, tdms.File.partial):
            with contextlib.suppress(tdms.Error), open_file(path) as file:
                opened += 1
                read_everything(file)
    assert opened > FILES / 4


@pytest.mark.parametrize("code", [0x0B, 0x19, 0x8000C, 0xFFFFFFFF])
def test_types_without_values(path, code):
    with tdms.File(path, "w") as file:
        file.properties["p"] = ""
        file.create_group("g").create_channel("c").append(numpy.array([1], "int8"))
    unknown, data = struct.pack("<I", code), path.read_bytes()
    data = data.replace(b"p" + struct.pack("<II", 0x20, 0), b"p" + unknown)
    data = data.replace(struct.pack("<II", 20, 1), struct.pack("<I", 20) + unknown)
    segment, metadata = struct.unpack_from("<QQ", data, 12)
    path.write_bytes(data[:12] + struct.pack("<QQ", segment - 4, metadata - 4) + data[28:])
    with tdms.File(path) as file:
        assert file.properties == {"p": None}
        with pytest.raises(tdms.Error) as caught:
            file["g", "c"].dtype
        assert caught.value.status is tdms.Status.DATATYPE
