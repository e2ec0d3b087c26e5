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


def stored(channel):
    channel.group.file.save()
    return channel[:]


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
        for index in (0, 3, -1, -8, numpy.int8(2)):
            assert repr(channel[index]) == repr(expected[index])
        assert [repr(value) for value in channel] == [repr(value) for value in expected]
        parts = list(channel.chunks(3))
        assert [len(part) for part in parts] == [3, 3, 2] and same(parts[2], expected[6:])
        array = numpy.asarray(channel)
        assert array.dtype == channel.dtype and list(array)[2] == expected[2]
        assert same(channel.read(5), expected[5:]) and same(channel.read(8, 0), expected[8:])


@pytest.mark.parametrize("step", [1, 2, 7, 1000, 8191, 8192, 65536, 199_999, 10**30])
def test_steps_pick_as_numpy_does(run, step):
    with tdms.File(run) as file:
        channel = file["types", "ramp"]
        for key in (slice(3, -3, step), slice(None, None, -step), slice(150_000, 10, -step)):
            assert same(channel[key], RAMP[key])
        assert sum(channel) == RAMP.sum()


def test_reading_into_an_array(run):
    frozen = numpy.zeros(5, "int32")
    frozen.flags.writeable = False
    misplaced = numpy.zeros(21, "uint8")[1:].view("int32")
    sparse, square = numpy.zeros(10, "int32")[::2], numpy.zeros((5, 1), "int32")
    with tdms.File(run) as file:
        channel = file["types", "ramp"]
        out = numpy.zeros(5, "int32")
        assert channel.read(10, 5, out) is out and list(out) == [10, 11, 12, 13, 14]
        for error, use, *arguments in (
            *((ValueError, lambda out: channel.read(10, 5, out), wrong)
              for wrong in (numpy.zeros(4, "int32"), square, frozen, misplaced, sparse)),
            *((TypeError, lambda out: channel.read(10, 5, out), wrong)
              for wrong in (numpy.zeros(5), numpy.zeros(5, ">i4"), [0] * 5, bytearray(20))),
            *((IndexError, channel.read, *wrong) for wrong in (
                (-1, 1), (0, -1), (199_999, 2), (BIG, BIG), (200_001, None))),
            *((IndexError, channel.__getitem__, wrong)
              for wrong in (200_000, -200_001, BIG * 4, -BIG * 4)),
            *((TypeError, channel.__getitem__, wrong)
              for wrong in (None, 1.0, "1", (1, 2), [1], slice("a"), slice(1.5))),
            (ValueError, channel.__getitem__, slice(None, None, 0)),
            *((ValueError, channel.chunks, wrong) for wrong in (0, -1)),
            *((TypeError, channel.chunks, wrong) for wrong in (None, 1.5)),
        ):
            with pytest.raises(error):
                use(*arguments)


MOMENT = datetime.datetime(2024, 5, 17, 12, 0, 0, 123456)
EAST = timezone(timedelta(hours=5, minutes=30))
IN_EAST, IN_UTC = MOMENT.replace(tzinfo=EAST), MOMENT - timedelta(hours=5.5)


@pytest.mark.parametrize("dtype, given, expected", [
    (None, [True, 2], numpy.array([1, 2])), (None, range(3), numpy.arange(3)),
    (None, [BIG], numpy.array([BIG], "uint64")), (None, [1, 2.5], numpy.array([1, 2.5])),
    (None, (True, False), numpy.array([True, False])), (None, numpy.array(["a", "b"]), ["a", "b"]),
    (None, numpy.array(["a", "bc"], object), ["a", "bc"]),
    (None, [numpy.int16(1), numpy.int16(2)], numpy.array([1, 2], "int16")),
    (None, [numpy.int16(1), 2], numpy.array([1, 2])),
    (None, memoryview(b"ab"), numpy.array([97, 98], "uint8")),
    (None, numpy.arange(6, dtype=">i2")[::-2], numpy.array([5, 3, 1], "int16")),
    (None, numpy.arange(6.0).reshape(2, 3)[:, 1], numpy.array([1.0, 4.0])),
    (None, numpy.array([0, 2], "uint8").view(bool), numpy.array([False, True])),
    (None, [MOMENT, IN_EAST], numpy.array([MOMENT, IN_UTC], "M8[ns]")),
    (None, [numpy.datetime64("1970"), MOMENT], numpy.array(["1970", MOMENT], "M8[ns]")),
    (None, numpy.array(["1677-10", "NaT"], ">M8[M]"), numpy.array(["1677-10", "NaT"], "M8[ns]")),
    (None, numpy.array([5000, -5000], "M8[ps]"), numpy.array([5, -5], "M8[ns]")),
    ("int8", [-128, 127, True], [-128, 127, 1]),
    ("uint64", [0, 2 * BIG - 1, numpy.uint64(2 * BIG - 1)], [0, 2 * BIG - 1, 2 * BIG - 1]),
    ("float32", [1, 0.1, numpy.inf, BIG], [1, 0.1, numpy.inf, BIG]),
    ("float64", numpy.array([1, 2], "float32"), [1, 2]),
    ("int32", numpy.array([1, 2], ">u2"), [1, 2]),
])
def test_what_values_become(channel, dtype, given, expected):
    channel.append([] if dtype is None else numpy.zeros(0, dtype))
    assert channel.dtype == dtype and len(channel[::-1]) == 0
    channel.append(given)
    channel.append([])
    assert same(stored(channel), expected if dtype is None else numpy.array(expected, dtype))


@pytest.mark.parametrize("dtype, given, error", [
    *((None, wrong, TypeError) for wrong in (
        None, 5, "abc", b"abc", bytearray(b"abc"), {1: 2}, {1, 2}, iter([1]), object(),
        [None], [b"a"], [1, "a"], [1j], ["a", None], [MOMENT, 1], [MOMENT.date()],
        [timedelta(1)], [numpy.float16(1)], [numpy.longdouble(1)], [numpy.timedelta64(1)],
        *(numpy.zeros(1, dtype) for dtype in ("f2", "g", "c8", "m8[s]", "S3", "i4,i4")),
        numpy.array([1, "a"], object), numpy.ma.masked_array([1, 2], [True, False]))),
    *((None, wrong, ValueError) for wrong in (
        numpy.zeros((1, 1)), numpy.array(5), [[1]], [(1,), (2,)], [numpy.array(5)],
        ["a\0b"], ["\ud800"], numpy.array(["a\0b"]),
        numpy.array(["2263"], "M8[Y]"), numpy.array(["1600-01-01"], "M8[s]"),
        numpy.array([1], "M8[ps]"), numpy.array([5]).view("M8"), numpy.array([2**62], "M8[s]"),
        [datetime.datetime(1, 1, 1)], [datetime.datetime(9999, 1, 1, tzinfo=EAST)])),
    *((None, wrong, OverflowError) for wrong in ([2 * BIG], [-1, BIG], [1.5, 10**400])),
    *((dtype, wrong, OverflowError) for dtype, wrong in (
        ("int8", [128]), ("int8", [-129, 0]), ("uint16", [-1]), ("int64", [10**30]),
        ("float32", [1e39]), ("float64", [10**400]))),
    *((dtype, wrong, TypeError) for dtype, wrong in (
        ("int8", [1.0]), ("bool", [1]), ("int8", numpy.array([1])), ("int8", ["1"]),
        ("float32", numpy.array([1.0])), ("int64", numpy.array([1], "M8[ns]")),
        ("M8[ns]", numpy.array([1])), ("M8[ns]", [1]), ("int8", numpy.array(["1"])))),
])
def test_values_that_no_channel_takes(channel, dtype, given, error):
    channel.append([] if dtype is None else numpy.zeros(0, dtype))
    with pytest.raises(error):
        channel.append(given)
    assert channel.dtype == dtype and len(stored(channel)) == 0


NANOSECONDS = numpy.datetime64(1700000000123456789, "ns")


@pytest.mark.parametrize("given, read", [
    (-BIG, -BIG), (BIG, BIG), (2 * BIG - 1, 2 * BIG - 1), (True, True), (numpy.bool_(0), False),
    (1.5, 1.5), (numpy.float32(0.1), float(numpy.float32(0.1))), ("", ""), (numpy.str_("s"), "s"),
    *((values[3], int(values[3])) for name, values in EVERY_TYPE.items() if "int" in name),
    ("Ü\0\udcff", "Ü\0\udcff"), (NANOSECONDS, NANOSECONDS),
    (MOMENT, numpy.datetime64(MOMENT, "ns")), (IN_EAST, numpy.datetime64(IN_UTC, "ns")),
])
def test_properties_of_every_type(path, given, read):
    with tdms.File(path, "w") as file:
        group = file.create_group("g")
        for owner in (file, group, group.create_channel("c")):
            owner.properties["p"] = "replaced"
        file.save()
        for owner in (file, group, group["c"]):
            owner.properties["p"] = given
            assert repr(owner.properties["p"]) == repr(read)
    with tdms.File(path) as file:
        for owner in (file, file["g"], file["g", "c"]):
            assert repr(owner.properties) == repr({"p": read})


@pytest.mark.parametrize("name, value, error", [
    *(("p", wrong, TypeError) for wrong in (
        None, [1], b"b", 1j, MOMENT.date(), numpy.array(5), numpy.float16(1),
        numpy.longdouble(1), numpy.timedelta64(1), object())),
    ("p", 2 * BIG, OverflowError), ("p", -BIG - 1, OverflowError), ("p", "\ud800", ValueError),
    ("p", datetime.datetime(1600, 1, 1), ValueError), ("p", numpy.datetime64(1, "ps"), ValueError),
    (None, 1, TypeError), (b"p", 1, TypeError), ("\ud800", 1, ValueError),
])
def test_properties_that_no_file_takes(channel, name, value, error):
    with pytest.raises(error):
        channel.properties[name] = value
    assert not channel.properties
