import numpy
import pytest

import tdms

# Values of every type, with the ends of its range.
EVERY_TYPE = {
    **{name: numpy.array([numpy.iinfo(name).min, 0, 7, numpy.iinfo(name).max], name)
       for name in (f"{kind}{bits}" for kind in ("int", "uint") for bits in (8, 16, 32, 64))},
    "float32": numpy.array([-numpy.inf, 0.1, 3e38, numpy.nan], "float32"),
    "float64": numpy.array([-numpy.inf, 0.1, 1e308, numpy.nan]),
    "bool": numpy.array([True, False, True, True]),
    "datetime64": numpy.array([-(2**63) + 1, -1, 1700000000123456789, 2**63 - 1], "M8[ns]"),
    "string": ["", "Übung", "a\udcffb", "long" * 1000],
}


@pytest.fixture
def path(tmp_path):
    return tmp_path / "run.tdms"


@pytest.fixture
def run(path):
    """A file of two groups: many values of every type, and nothing."""
    with tdms.File(path, "w") as file:
        group = file.create_group("types")
        for name, values in EVERY_TYPE.items():
            channel = group.create_channel(name)
            for _ in range(2):
                channel.append(values)
                file.save()
        group.create_channel("ramp").append(numpy.arange(200_000, dtype="int32"))
        group["ramp"].properties["unit"] = "m"
        file.create_group("empty").create_channel("untyped")
    return path
