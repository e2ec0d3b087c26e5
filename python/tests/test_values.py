import datetime
from datetime import timedelta, timezone

import numpy
import pytest
from conftest import EVERY_TYPE

import tdms

BIG = 2**63
RAMP = numpy.arange(200_000, dtype="int32")


@pytest.fixture
def channel(path):
    with tdms.File(path, "w") as file:
        yield file.create_group("g").create_channel("c")


def same(values, expected):
    if isinstance(expected, list) or expected.dtype.kind not in "fM":
        return type(values) is type(expected) and numpy.array_equal(values, expected)
    return values.dtype == expected.dtype and numpy.array_equal(values, expected, equal_nan=True)


@pytest.mark.parametrize("name", EVERY_TYPE)
def test_every_type_comes_back(run, name):
    given = EVERY_TYPE[name]
    expected = given * 2 if isinstance(given, list) else numpy.concatenate([given, given])
    with tdms.File(run) as file:
        channel = file["types", name]
        assert same(channel[:], expected) and len(channel) == 8 and channel.lost == 0
        assert channel.dtype == (object if name == "string" else expected.dtype)
        for key in (slice(2, 7), slice(None, None, -1), slice(-2, 0, -3), slice(1, 99, 2),
                    slice(5, 5), slice(0, 7, -3), slice(BIG, 2 * BIG), slice(-BIG, BIG * 2, BIG)):
            assert same(channel[key], expected[key]), key
        assert [repr(channel[i]) for i in range(-8, 8)] == [repr(value) for value in expected] * 2
        assert [repr(value) for value in channel] == [repr(value) for value in expected]
        parts = list(channel.chunks(3))
        assert [len(part) for part in parts] == [3, 3, 2] and same(parts[2], expected[6:])
        assert list(numpy.asarray(channel))[2] == expected[2]
        assert same(channel.read(5), expected[5:]) and same(channel.read(8, 0), expected[8:])


@pytest.mark.parametrize("step", [2, 7, 8191, 8192, 65536, 199_999, 10**30])
def test_steps_pick_as_numpy_does(run, step):
    with tdms.File(run) as file:
        channel = file["types", "ramp"]
        for key in (slice(3, -3, step), slice(None, None, -step), slice(150_000, 10, -step)):
            assert same(channel[key], RAMP[key])
        assert sum(channel) == RAMP.sum()


def test_reading_into_an_array(run):
    frozen = numpy.frombuffer(bytes(20), "int32")
    misplaced, sparse = numpy.zeros(21, "uint8")[1:].view("int32"), numpy.zeros(10, "int32")[::2]
    with tdms.File(run) as file:
        channel = file["types", "ramp"]
        out = numpy.zeros(5, "int32")
        assert channel.read(10, 5, out) is out and list(out) == [10, 11, 12, 13, 14]
        for error, use, *wrongs in (
            (ValueError, lambda out: channel.read(10, 5, out),
             numpy.zeros(4, "int32"), numpy.zeros((5, 1), "int32"), frozen, misplaced, sparse),
            (TypeError, lambda out: channel.read(10, 5, out), numpy.zeros(5, ">i4"), bytearray(20)),
            (IndexError, lambda key: channel.read(*key), (-1, 1), (0, -1), (BIG, BIG), (200_001,)),
            (IndexError, channel.__getitem__, 200_000, -200_001, BIG * 4, -BIG * 4),
            (TypeError, channel.__getitem__, None, (1, 2), slice(1.5)),
            (ValueError, channel.chunks, 0), (TypeError, channel.chunks, 1.5),
        ):
            for wrong in wrongs:
                with pytest.raises(error):
                    use(wrong)


MOMENT = datetime.datetime(2024, 5, 17, 12, 0, 0, 123456)
EAST = timezone(timedelta(hours=5, minutes=30))
IN_EAST, IN_UTC = MOMENT.replace(tzinfo=EAST), MOMENT - timedelta(hours=5.5)


@pytest.mark.parametrize("dtype, given, expected", [
    (None, [True, 2], numpy.array([1, 2])), (None, range(3), numpy.arange(3)),
    (None, [BIG], numpy.array([BIG], "uint64")), (None, [1, 2.5], numpy.array([1, 2.5])),
    (None, (True, False), numpy.array([True, False])), (None, numpy.array(["a", "b"]), ["a", "b"]),
    (None, numpy.arange(6, dtype=">i2")[::-2], numpy.array([5, 3, 1], "int16")),
    (None, numpy.array([0, 2], "uint8").view(bool), numpy.array([False, True])),
    (None, [MOMENT, IN_EAST], numpy.array([MOMENT, IN_UTC], "M8[ns]")),
    (None, numpy.array(["1677-10", "NaT"], ">M8[M]"), numpy.array(["1677-10", "NaT"], "M8[ns]")),
    ("uint64", [0, 2 * BIG - 1, numpy.uint64(2 * BIG - 1)], [0, 2 * BIG - 1, 2 * BIG - 1]),
    ("float64", numpy.array([2**53, BIG - 1024, -BIG], ">i8"), [2.0**53, BIG - 1024, -BIG]),
    ("float64", [2**100, -(2**53), numpy.nan], [2.0**100, -(2.0**53), numpy.nan]),
])
def test_what_values_become(channel, dtype, given, expected):
    channel.append([] if dtype is None else numpy.zeros(0, dtype))
    assert channel.dtype == dtype and len(channel[::-1]) == 0
    channel.append(given)
    channel.append([])
    channel.group.file.save()
    assert same(channel[:], expected if dtype is None else numpy.array(expected, dtype))


@pytest.mark.parametrize("dtype, given, error", [
    *((None, wrong, TypeError) for wrong in (
        None, "abc", b"abc", {1, 2}, iter([1]), [None], [1, "a"], [1j], [MOMENT, 1],
        [numpy.float16(1)], [numpy.longdouble(1)], [numpy.timedelta64(1)],
        *(numpy.zeros(1, dtype) for dtype in ("f2", "g", "m8[s]", "S3", "i4,i4")),
        numpy.array([1, "a"], object), numpy.ma.masked_array([1, 2], [True, False]))),
    *((None, wrong, ValueError) for wrong in (
        numpy.zeros((1, 1)), numpy.array(5), [[1]], [numpy.array(5)], ["a\0b"], ["\ud800"],
        numpy.array(["2263"], "M8[Y]"), numpy.array([1], "M8[ps]"), numpy.array([5]).view("M8"),
        [datetime.datetime(9999, 1, 1, tzinfo=EAST)], [1, 2.5, 2**60 + 1])),
    *((None, wrong, OverflowError) for wrong in ([2 * BIG], [-1, BIG], [1.5, 10**400])),
    *((dtype, wrong, OverflowError) for dtype, wrong in (
        ("int8", [128]), ("uint16", [-1]), ("float32", [1e39]), ("float32", [2**200]))),
    *((dtype, wrong, ValueError) for dtype, wrong in (
        ("float32", [0.1, numpy.int64(2**24 + 1)]),
        ("float64", numpy.array([0, -(2**60) - 1], ">i8")),
        ("float64", numpy.array([0, 2 * BIG - 1], "u8")))),
    *((dtype, wrong, TypeError) for dtype, wrong in (
        ("int8", [1.0]), ("bool", [1]), ("float32", numpy.array([1.0])), ("M8[ns]", [1]))),
])
def test_values_that_no_channel_takes(channel, dtype, given, error):
    channel.append([] if dtype is None else numpy.zeros(0, dtype))
    with pytest.raises(error):
        channel.append(given)
    channel.group.file.save()
    assert channel.dtype == dtype and len(channel) == 0


@pytest.mark.parametrize("given, read", [
    (-BIG, -BIG), (BIG, BIG), (2 * BIG - 1, 2 * BIG - 1), (True, True), (numpy.bool_(0), False),
    (1.5, 1.5), (numpy.float32(0.1), float(numpy.float32(0.1))), ("", ""), (numpy.str_("s"), "s"),
    *((values[3], int(values[3])) for name, values in EVERY_TYPE.items() if "int" in name),
    ("Ü\0\udcff", "Ü\0\udcff"), *((time, time) for time in EVERY_TYPE["datetime64"]),
    (MOMENT, numpy.datetime64(MOMENT, "ns")), (IN_EAST, numpy.datetime64(IN_UTC, "ns")),
])
def test_properties_of_every_type(path, given, read):
    with tdms.File(path, "w") as file:
        group = file.create_group("g")
        for owner in (file, group, group.create_channel("c")):
            owner.properties["p"] = given
            assert repr(owner.properties["p"]) == repr(read)
    with tdms.File(path) as file:
        for owner in (file, file["g"], file["g", "c"]):
            assert repr(owner.properties) == repr({"p": read})


@pytest.mark.parametrize("name, value, error", [
    *(("p", wrong, TypeError) for wrong in (
        None, b"b", MOMENT.date(), numpy.array(5), numpy.longdouble(1), numpy.timedelta64(1))),
    ("p", 2 * BIG, OverflowError), ("p", -BIG - 1, OverflowError), ("p", "\ud800", ValueError),
    ("p", datetime.datetime(1600, 1, 1), ValueError), ("p", numpy.datetime64(1, "ps"), ValueError),
    (None, 1, TypeError), (b"p", 1, TypeError), ("\ud800", 1, ValueError),
])
def test_properties_that_no_file_takes(channel, name, value, error):
    with pytest.raises(error):
        channel.properties[name] = value
    assert not channel.properties
