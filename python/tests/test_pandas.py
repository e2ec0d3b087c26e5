import numpy
import pytest

import tdms

pandas = pytest.importorskip("pandas")


def test_frames(path):
    times = numpy.array(["2024-05-17", "2024-05-18", "2024-05-19"], "M8[ns]")
    with tdms.File(path, "w") as file:
        even, uneven = file.create_group("even"), file.create_group("uneven")
        file.create_group("nothing")
        for group, name, values in (
            (even, "a", [0.5, 1.5, 2.5]), (even, "t", times), (even, "text", ["x", "", "z"]),
            (uneven, "t", times), (uneven, "long", numpy.arange(5, dtype="uint8")),
            (uneven, "big", [2**62 + 1]), (uneven, "on", [True, False]), (uneven, "none", []),
        ):
            group.create_channel(name).append(values)
        file.save()
        frames = file.to_pandas()
        assert sorted(frames) == ["even", "nothing", "uneven"] and frames["nothing"].empty
        columns = {"a": [0.5, 1.5, 2.5], "text": ["x", "", "z"]}
        expected = pandas.DataFrame(columns, pandas.Index(times, name="t"))
        pandas.testing.assert_frame_equal(frames["even"], expected)
        pandas.testing.assert_series_equal(even["a"].to_pandas(), expected["a"])
        frame = frames["uneven"]
        assert list(frame.index) == list(range(5)) and frame["long"].dtype == "uint8"
        for name, values in (("big", [2**62 + 1]), ("on", [True, False]), ("none", [])):
            assert list(frame[name].dropna()) == values and len(frame[name]) == 5

        # And back, with a time zone and nanoseconds.
        moments = pandas.Series(times + numpy.timedelta64(1, "ns")).dt.tz_localize("Asia/Kolkata")
        even.create_channel("moments").append(moments)
        file.save()
        assert even["moments"][0] == numpy.datetime64("2024-05-16T18:30:00.000000001")
