"""Compares the example, on a cluster of two workers, with NumPy on complete arrays."""
import csv
import os
import signal
import subprocess
import sys

import dask
import numpy
import pytest
from distributed import Client, LocalCluster, WorkerPlugin

import recording_statistics
import tdms

# A warning from the web server inside Dask.
pytestmark = pytest.mark.filterwarnings("ignore:make_current is deprecated")

LENGTH = 300_001  # several blocks and ranges
WINDOW = 1000
RNG = numpy.random.default_rng(1)

NUMBERS = {
    **{
        dtype: RNG.integers(0, numpy.iinfo(dtype).max, LENGTH, dtype, endpoint=True)
        for dtype in ("int8", "int16", "int32", "int64", "uint8", "uint16", "uint32", "uint64")
    },
    "float32": 1000 + RNG.standard_normal(LENGTH, "float32"),
    "float64": 1e6 + RNG.standard_normal(LENGTH) + numpy.sin(numpy.arange(LENGTH) / 7),
    "gaps": numpy.where(numpy.arange(LENGTH) % 70_001 < 150, numpy.nan, RNG.random(LENGTH)),
    "nan, then not": numpy.where(numpy.arange(LENGTH) < 140_000, numpy.nan, 5.0),
    "only nan": numpy.full(70_000, numpy.nan),
    "infinite": numpy.array([1.0, numpy.inf, 2.0]),
    "bool": RNG.random(LENGTH) < 0.25,
    "shorter than a window": RNG.random(WINDOW - 1),
}
OTHERS = {
    "strings": ["a", "Übung", "c"],
    "times": numpy.datetime64(0, "ns") + numpy.arange(LENGTH) * numpy.timedelta64(4_000_000, "ns"),
}
NAMES = ("a.tdms", "b.tdms", "below/c.tdms", "d.tdms")


@pytest.fixture(scope="module")
def scheduler():
    with dask.config.set({"distributed.scheduler.allowed-failures": 1}):
        with LocalCluster(
            n_workers=2, threads_per_worker=1, dashboard_address=recording_statistics.ANY_PORT
        ) as cluster:
            yield cluster.scheduler_address


@pytest.fixture(scope="module")
def recordings(tmp_path_factory):
    root = tmp_path_factory.mktemp("recordings")
    (root / "below").mkdir()
    for name in NAMES:
        with tdms.File(root / name, "w") as file:
            group = file.create_group("bench")
            for channel, values in {**NUMBERS, **OTHERS}.items():
                group.create_channel(channel).append(values)
            group["float64"].properties["rate"] = 1000.0
            file.create_group("empty").create_channel("untyped")
    return root


@pytest.fixture(scope="module")
def expected(scheduler, recordings, tmp_path_factory):
    """The results if channels are not divided."""
    return run(scheduler, recordings, tmp_path_factory.mktemp("undivided"), 1 << 24)


def run(scheduler, recordings, results, values, status=0):
    """The contents of the result files, by their names."""
    assert status == recording_statistics.main(
        [str(recordings), "--scheduler", scheduler, "--range", str(values),
         "-o", str(results), "--spectrum", str(WINDOW)]
    )  # fmt: skip
    paths = [path for path in results.rglob("*") if path.is_file()]
    return {str(path.relative_to(results)): path.read_bytes() for path in paths}


def table(results):
    lines = results["statistics.csv"].decode().splitlines()
    return {(line["file"], line["channel"]): line for line in csv.DictReader(lines)}


def test_statistics_against_numpy(expected):
    rows = table(expected)
    assert len(rows) == len(NAMES) * (len(NUMBERS) + len(OTHERS) + 1)
    for (_, name), row in rows.items():
        values = NUMBERS.get(name, OTHERS.get(name, []))
        assert (int(row["count"]), row["lost"]) == (len(values), "0"), name
        if name not in NUMBERS:
            continue
        numbers = values[~numpy.isnan(values)]
        assert int(row["nan"]) == len(values) - len(numbers), name
        if len(numbers) == 0:
            assert row["minimum"] == row["deviation"] == "", name
            continue
        exact = int if numbers.dtype.kind in "biu" else numbers.dtype.type
        assert exact(row["minimum"]) == numbers.min() and exact(row["maximum"]) == numbers.max()
        with numpy.errstate(invalid="ignore"):
            mean, deviation = numbers.mean(dtype="float64"), numbers.std(dtype="float64")
        actual = float(row["mean"]), float(row["deviation"])
        numpy.testing.assert_allclose(actual, (mean, deviation), 1e-9, err_msg=name)
    times = rows["a.tdms", "times"]
    assert [times["first"], times["last"]] == [f"{OTHERS['times'][i]}Z" for i in (0, -1)]


def test_spectra_against_numpy(expected, tmp_path):
    (tmp_path / "a.npz").write_bytes(expected["a.tdms.npz"])
    spectra = numpy.load(tmp_path / "a.npz")
    hann = numpy.hanning(WINDOW + 1)[:-1]
    for i, name in enumerate(spectra["channel"]):
        values = NUMBERS[name].astype("float64")
        windows = numpy.lib.stride_tricks.sliding_window_view(values, WINDOW)[:: WINDOW // 2]
        finite = windows[numpy.isfinite(windows).all(axis=1)]
        assert spectra["windows"][i] == len(finite)
        assert spectra["skipped"][i] == len(windows) - len(finite)
        power = abs(numpy.fft.rfft((finite - finite.mean(axis=1)[:, None]) * hann)) ** 2
        rate = 1000.0 if name == "float64" else 250.0  # of its own, or of the times
        assert spectra["rate"][i] == pytest.approx(rate)
        density = power.mean(axis=0) / (rate * (hann**2).sum())
        density[1:-1] *= 2
        # Relative to the largest density: small ones consist of rounding errors.
        numpy.testing.assert_allclose(spectra["density"][i], density, 1e-7, 1e-9 * density.max())
    absent = {"only nan", "infinite", "shorter than a window"}
    assert set(NUMBERS) - set(spectra["channel"]) == absent


def test_ranges_and_a_killed_worker_change_nothing(
    scheduler, recordings, expected, tmp_path, monkeypatch
):
    with Client(scheduler) as client:
        workers = list(client.run(os.getpid).values())
    progress = recording_statistics.Report.progress

    def kill_one(report):
        if report.done_values and workers:
            assert report.done_values < report.planned_values
            os.kill(workers.pop(), signal.SIGKILL)
            workers.clear()
        progress(report)

    monkeypatch.setattr(recording_statistics.Report, "progress", kill_one)
    assert run(scheduler, recordings, tmp_path, 65536) == expected
    assert not workers


class Poison(WorkerPlugin):
    """Kills every worker that reads a certain file."""

    def setup(self, worker):
        partial = tdms.File.partial

        def deadly(path):
            if path.endswith("poison.tdms"):
                os.kill(os.getpid(), signal.SIGKILL)
            return partial(path)

        tdms.File.partial = deadly


def test_bad_files_among_good_ones(scheduler, recordings, expected, tmp_path, capsys):
    folder = tmp_path / "recordings"
    folder.mkdir()
    good = (recordings / "a.tdms").read_bytes()
    (folder / "truncated.tdms").write_bytes(good)
    with tdms.File(folder / "truncated.tdms", "a") as file:
        file["bench", "bool"].append([True])
    bad = {
        "truncated.tdms": (folder / "truncated.tdms").read_bytes()[:-1],
        "foreign.tdms": b"no such file" * 100,
        "poison.tdms": good,
        "damaged.tdms": good[:1000],
    }
    for name, data in {"a.tdms": good, **bad, "z.tdms": good, "empty.tdms": b""}.items():
        (folder / name).write_bytes(data)
    (folder / "gone.tdms").symlink_to("nowhere")
    with Client(scheduler) as client:
        client.register_worker_plugin(Poison(), "poison")
    rows = table(run(scheduler, folder, tmp_path / "results", 1 << 24, status=1))
    reported = capsys.readouterr().err
    for name in (*bad, "gone.tdms"):
        assert reported.count(f"{folder / name}: ") == 1, name
    assert {name for name, _ in rows} == {"a.tdms", "truncated.tdms", "z.tdms"}
    for (name, channel), row in rows.items():
        assert row == {**table(expected)["a.tdms", channel], "file": name}


def test_own_workers_and_standard_output(recordings, expected):
    program = [sys.executable, recording_statistics.__file__, recordings, "--workers", "1"]
    done = subprocess.run(program, capture_output=True)
    assert (done.returncode, done.stdout) == (0, expected["statistics.csv"])
