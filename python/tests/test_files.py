import copy
import errno
import os
import pathlib
import pickle
import resource
import threading

import numpy
import pytest
from conftest import EVERY_TYPE

import tdms
from tdms import _tree


def test_the_version_is_the_projects():
    header = pathlib.Path(__file__).parents[2] / "include/tdms.h"
    assert f'#define TDMS_VERSION "{tdms.__version__}" ' in header.read_text()


def test_trees_are_mappings(run):
    with tdms.File(run) as file:
        assert list(file) == ["empty", "types"] == [group.name for group in file.groups]
        types = file["types"]
        assert types == file["types"] and hash(types) == hash(file["types"])
        assert types != file["empty"] and types.file is file and types["ramp"].group is types
        assert sorted(types) == sorted([*EVERY_TYPE, "ramp"]) and len(types) == len(types.channels)
        assert "ramp" in types and ("types", "ramp") in file and ("types", "no") not in file
        assert file.get("no") is None and file.get(("types", "no")) is None and 5 not in file
        for wrong in ("no\0", "no\ud800", ("no", "ramp"), ("types", "no")):
            with pytest.raises(KeyError, match="no"):
                file[wrong]
        for wrong in (0, b"types", ("types",), ("types", 0)):
            with pytest.raises(TypeError):
                file[wrong]
        with pytest.raises(TypeError, match="cannot be copied"):
            copy.copy(types["ramp"])


def test_properties_are_a_dict(path):
    names = {"Ü": 1, "a": "string", "a\0b": 1.5, "": True, "\udcff": 2}
    with tdms.File(path, "w") as file:
        properties = file.properties
        properties.update(names)
        assert dict(properties) == names == properties and len(properties) == 5
        assert list(properties) == sorted(names, key=lambda n: n.encode("utf-8", "surrogateescape"))
        assert properties.setdefault("a", 5) == "string" and properties.get("b") is None
        assert 5 not in properties and properties.get(5) is None and properties.pop(5, 6) == 6
        with pytest.raises(TypeError, match="only grows"):
            properties.pop("a")
        for wrong in ("b", "\ud800", 5):
            with pytest.raises(KeyError):
                del properties[wrong]
    with tdms.File(path, "a") as file:
        file.properties["a"] = numpy.int8(3)
    with tdms.File(path) as file:
        with pytest.raises(tdms.Error) as caught:
            file.properties["a"] = 4
        assert caught.value.status is tdms.Status.FILE_HANDLE
        assert file.properties == {**names, "a": 3}


@pytest.mark.parametrize("name", ["", "Übung", "\udc80\udcff", "it's", "a" * 100_000, "a\0b"])
def test_any_name(path, name):
    plain = name.replace("\0", "+")
    with tdms.File(path, "w") as file:
        file.create_group(plain).create_channel(plain).append([1])
        for create in (file.create_group, file[plain].create_channel):
            with pytest.raises(tdms.Error, match="already"):
                create(plain)
            for wrong, error in (("a/b", ValueError), ("a\0b", ValueError), (b"a", TypeError)):
                with pytest.raises(error):
                    create(wrong)
    path.write_bytes(path.read_bytes().replace(b"a+b", b"a\0b"))
    with tdms.File(path) as file:
        assert file[name, name][:] == [1] and list(file) == list(file[name]) == [name]
        assert "a" not in file


@pytest.mark.parametrize("open_file, error, number", [
    (tdms.File, FileNotFoundError, errno.ENOENT), (lambda _: tdms.File(None), TypeError, None),
    (lambda path: tdms.File(path.parent), IsADirectoryError, errno.EISDIR),
    (lambda path: (tdms.File(path, "w"), tdms.File(path, "a")), BlockingIOError, errno.EAGAIN),
    (lambda path: path.write_bytes(b"no such tag") and tdms.File(path), tdms.Error, None),
    (lambda path: tdms.File(path, "x"), ValueError, None),
])
def test_files_that_do_not_open(path, open_file, error, number):
    with pytest.raises(error) as caught:
        open_file(path)
    raised = caught.value
    again = pickle.loads(pickle.dumps(raised))
    assert isinstance(again, error) and type(again) is type(raised) and str(again) == str(raised)
    if isinstance(raised, tdms.Error):
        assert again.status is raised.status and str(path.parent) in str(again)
        assert repr(again) == repr(raised) and raised.status.name in repr(raised)
    if number is not None:
        reason = "Another program" if number == errno.EAGAIN else os.strerror(number)
        assert again.status is tdms.Status.FILE_PATH and reason in str(again)
        assert (again.errno, again.filename) == (number, raised.filename)


def test_closing_saves(path):
    with tdms.File(path, "w") as file:
        file.create_group("g").create_channel("c").append([1])
    file.close()
    with pytest.raises(RuntimeError), tdms.File(path, "a") as file:
        file["g", "c"].append([2])
        raise RuntimeError
    with tdms.File(path, "a") as file:
        file["g", "c"].append([3])
        file.close(save=False)
    with pytest.warns(ResourceWarning):
        tdms.File(path, "a")["g", "c"].append([4])
    with tdms.File(path, "a") as file:
        assert list(file["g", "c"]) == [1, 2, 4]


def test_a_full_disk(path):
    file = tdms.File(path, "w")
    file.create_group("g").create_channel("c").append(numpy.zeros(1000))
    limits = resource.getrlimit(resource.RLIMIT_FSIZE)
    resource.setrlimit(resource.RLIMIT_FSIZE, (500, limits[1]))
    for attempt in (file.save, file.close):
        with pytest.raises(OSError) as caught:
            attempt()
        assert (caught.value.errno, caught.value.filename) == (errno.EFBIG, str(path))
        assert caught.value.status is tdms.Status.WRITE
    resource.setrlimit(resource.RLIMIT_FSIZE, limits)
    assert file.closed
    tdms.File(path, "w").close()  # no lock is left


def test_a_closed_file(run):
    file = tdms.File(run)
    channel = file["types", "ramp"]
    chunks = channel.chunks(3)
    file.close()
    for use in (
        lambda: file["types"], lambda: list(file), lambda: len(file), file.save, file.refresh,
        lambda: channel.group.create_channel("x"), lambda: channel.dtype, lambda: channel[0],
        lambda: next(chunks), lambda: channel.append([1]), lambda: file.properties["x"],
    ):
        with pytest.raises(tdms.Error, match="closed"):
            use()
    assert all("closed" in repr(thing) for thing in (file, channel.group, channel.properties))


@pytest.mark.parametrize("what, use", [
    ("count", len), ("count", list), ("fill", list), ("get_name", list),
    ("find", lambda file: file["types"]), ("tdms_next_property", lambda file: len(file.properties)),
])
def test_calls_that_fail_in_the_middle(run, monkeypatch, what, use):
    with tdms.File(run) as file:
        if what in _tree.GROUPS._fields:
            level = _tree.GROUPS._replace(**{what: lambda *_: tdms.Status.MEMORY})
            monkeypatch.setattr(tdms.File, "_level", level)
        else:
            monkeypatch.setattr(_tree.LIB, what, lambda *_: tdms.Status.MEMORY)
        with pytest.raises(MemoryError):
            use(file)


def test_following_a_recording(path):
    with tdms.File(path, "w") as recorder:
        reader = tdms.File.partial(path)
        channel = recorder.create_group("g").create_channel("c")
        for step in range(3):
            channel.append([step])
            recorder.save()
            assert reader.refresh() == 0
            assert list(reader["g", "c"]) == list(range(step + 1))
    path.write_bytes(path.read_bytes() + b"TDSm" + bytes(6))
    assert reader.refresh() == reader.rest == 10
    os.truncate(path, 30)
    with pytest.raises(tdms.Error) as caught:
        reader.refresh()
    assert caught.value.status is tdms.Status.FILE_READ
    with pytest.raises(tdms.Error, match="g/c"):
        reader["g", "c"][:]


def test_threads_share_a_file_that_is_closed(run):
    def use():
        started.wait()
        with pytest.raises(tdms.Error, match="closed"):
            while True:
                assert file["types", "ramp"][::-1][0] == 199_999
                assert file["types", "ramp"].properties["unit"] == "m"
        ended.append(True)

    for _ in range(20):
        file, started, ended = tdms.File(run), threading.Barrier(5), []
        threads = [threading.Thread(target=use) for _ in range(4)]
        [thread.start() for thread in threads]
        started.wait()
        file.close()
        [thread.join() for thread in threads]
        assert len(ended) == 4
