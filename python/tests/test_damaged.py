import contextlib
import random

import numpy
import pytest
from conftest import EVERY_TYPE

import tdms

FILES = 2000


@pytest.fixture
def seeds(path):
    """Files of segments of every type, of repeated ones, and of strings only."""
    made = []
    for types, saves in ((EVERY_TYPE, 1), (EVERY_TYPE, 3), ({"string": ["a", "", "bc"]}, 4)):
        with tdms.File(path, "w") as file:
            group = file.create_group("g")
            for save in range(saves):
                for name, values in types.items():
                    channel = group.get(name) or group.create_channel(name)
                    channel.append([value[:9] for value in values] if name == "string" else values)
                    channel.properties["p"] = name if save == 0 else values[2]
                file.save()
        made.append(path.read_bytes())
    return made


def damage(seeds, dice):
    """A file with a few bytes changed or cut off, or with the end of another."""
    data = bytearray(dice.choice(seeds))
    for _ in range(dice.randint(1, 4)):
        at, kind = dice.randrange(len(data)), dice.randrange(5)
        if kind < 2:
            data[at] ^= 1 << dice.randrange(8)
        elif kind == 2:
            size = dice.choice((1, 4, 8))
            data[at : at + size] = dice.choice((b"\0", b"\xff", b"\x01\0\0\0")) * size
        elif kind == 3:
            other = dice.choice(seeds)
            data[at:] = other[dice.randrange(len(other)) :]
        else:
            del data[at + 1 :]
    return bytes(data)


def read_everything(file):
    repr(file), dict(file.properties)
    for group in file.groups:
        repr(group), dict(group.properties)
        for channel in group.channels:
            dict(channel.properties)
            for use in (lambda: channel[:], lambda: channel[-1], lambda: channel[::-5],
                        lambda: list(channel.chunks(2)), lambda: numpy.asarray(channel)):
                with contextlib.suppress(tdms.Error, IndexError):
                    use()


def test_damaged_files_raise_errors_only(seeds, path):
    dice = random.Random(1)
    opened = 0
    for _ in range(FILES):
        path.write_bytes(damage(seeds, dice))
        for open_file in (tdms.File, tdms.File.partial):
            with contextlib.suppress(tdms.Error), open_file(path) as file:
                opened += 1
                read_everything(file)
    assert opened > FILES / 4
