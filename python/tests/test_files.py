import copy
import errno
import os
import pickle
import resource
import subprocess
import sys
import threading

import numpy
import pytest
from conftest import EVERY_TYPE

import tdms
from tdms import _tree


def test_trees_are_mappings(run):
    with tdms.File(run) as file:
        assert list(file) == ["empty", "types"] == [group.name for group in file.groups]
        types = file["types"]
        assert types == file["types"] and hash(types) == hash(file["types"])
        assert types != file["empty"] and types.file is file and types["ramp"].group is types
        assert sorted(types) == sorted([*EVERY_TYPE, "ramp"]) and len(types) == len(types.channels)
        assert [name for name, _ in types.items()] == [channel.name for channel in types.values()]
        assert "ramp" in types and ("types", "ramp") in file and ("types", "no") not in file
        assert file.get("no") is None and file.get(("types", "no")) is None and 5 not in file
        for wrong in ("no", "no\0", "no\ud800", ("no", "ramp"), ("types", "no")):
            with pytest.raises(KeyError, match="no"):
                file[wrong]
        for wrong in (0, None, b"types", ("types",), ("types", 0), slice(None)):
            with pytest.raises(TypeError):
                file[wrong]
        for thing in (file, types, types["ramp"], types.properties):
            for duplicate in (copy.copy, copy.deepcopy, pickle.dumps):
                with pytest.raises(TypeError):
                    duplicate(thing)
    for cls in (tdms.Group, tdms.Channel, tdms.Properties):
        with pytest.raises(TypeError):
            cls()


def test_properties_are_a_dict(path):
    names = {"Ü": 1, "a": "string", "a\0b": 1.5, "": True, "\udcff": 2}
    with tdms.File(path, "w") as file:
        properties = file.properties
        properties.update(names)
        assert dict(properties) == names == properties and len(properties) == 5
        assert list(properties) == sorted(names, key=lambda n: n.encode("utf-8", "surrogateescape"))
        assert properties.setdefault("a", 5) == "string" and properties.get("b") is None
        assert 5 not in properties and properties.get(5) is None and properties.pop(5, 6) == 6
        for remove in (properties.clear, properties.popitem, lambda: properties.pop("a")):
            with pytest.raises(TypeError, match="only grows"):
                remove()
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


@pytest.mark.parametrize("name", ["", "Übung", "\udc80\udcff", "it's 'quoted'", "a" * 100_000])
def test_any_name(path, name):
    with tdms.File(path, "w") as file:
        file.create_group(name).create_channel(name).append([1])
        for create, status in ((file.create_group, -5012), (file[name].create_channel, -5017)):
            with pytest.raises(tdms.Error) as caught:
                create(name)
            assert caught.value.status == status
            for wrong, error in (("a/b", ValueError), ("a\0b", ValueError), ("\ud800", ValueError),
                                 (None, TypeError), (b"a", TypeError)):
                with pytest.raises(error):
                    create(wrong)
    with tdms.File(path) as file:
        assert file[name, name][:] == [1] and list(file) == list(file[name]) == [name]


def test_names_with_nuls(path):
    with tdms.File(path, "w") as file:
        for name in ("a", "a+b"):
            file.create_group(name).create_channel(name).append([len(name)])
    path.write_bytes(path.read_bytes().replace(b"a+b", b"a\0b"))
    with tdms.File(path) as file:
        assert sorted(file) == ["a", "a\0b"] and file["a\0b", "a\0b"][:] == [3]


@pytest.mark.parametrize("open_file, error, number", [
    (lambda path: tdms.File(path), FileNotFoundError, errno.ENOENT),
    (lambda path: tdms.File(path.parent), IsADirectoryError, errno.EISDIR),
    (lambda path: (tdms.File(path, "w"), tdms.File(path, "a")), BlockingIOError, errno.EAGAIN),
    (lambda path: path.write_bytes(b"no such tag") and tdms.File(path), tdms.Error, None),
    (lambda path: tdms.File(None), TypeError, None),
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
        assert repr(again) == repr(raised) and str(raised) in repr(raised)
        assert raised.status.name in repr(raised) and error.__name__ in repr(raised)
    if number is not None:
        assert isinstance(again, tdms.Error) and again.status is tdms.Status.FILE_PATH
        assert (again.errno, again.filename) == (number, raised.filename)
        assert raised.filename in str(again) and os.strerror(number) in str(again)


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
        assert list(file["g", "c"]) == [1, 2]


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
    group = file["types"]
    channel = group["ramp"]
    chunks = channel.chunks(3)
    file.close()
    for use in (
        lambda: file["types"], lambda: list(file), lambda: len(file), lambda: "types" in file,
        lambda: file.groups, lambda: file.save(), lambda: file.sync(), lambda: file.refresh(),
        lambda: file.create_group("x"), lambda: group["ramp"], lambda: group.create_channel("x"),
        lambda: len(channel), lambda: channel[0], lambda: channel[:], lambda: channel.dtype,
        lambda: channel.lost, lambda: next(chunks), lambda: list(channel), lambda: channel.read(),
        lambda: channel.append([1]), lambda: numpy.asarray(channel), lambda: file.properties["x"],
        lambda: list(channel.properties), lambda: group.properties.update(x=1), file.__enter__,
    ):
        with pytest.raises(tdms.Error, match="closed"):
            use()
    for thing in (file, group, channel, channel.properties):
        assert "closed" in repr(thing)


@pytest.mark.parametrize("what", ["count", "fill", "get_name", "find", "tdms_next_property"])
def test_calls_that_fail_in_the_middle(run, monkeypatch, what):
    with tdms.File(run) as file:
        if what in _tree.GROUPS._fields:
            level = _tree.GROUPS._replace(**{what: lambda *_: tdms.Status.MEMORY})
            monkeypatch.setattr(tdms.File, "_level", level)
        else:
            monkeypatch.setattr(_tree.LIB, what, lambda *_: tdms.Status.MEMORY)
        with pytest.raises(MemoryError):
            len(file), list(file), file["types"], list(file.properties)


def test_following_a_recording(path):
    with tdms.File(path, "w") as recorder:
        reader = tdms.File.partial(path)
        assert list(reader) == [] and reader.rest == 0
        channel = recorder.create_group("g").create_channel("c")
        for step in range(3):
            channel.append([step])
            recorder.save()
            assert reader.refresh() == 0
            assert list(reader["g", "c"]) == list(range(step + 1))
    intact = path.stat().st_size
    path.write_bytes(path.read_bytes() + b"TDSm" + bytes(6))
    assert reader.refresh() == reader.rest == 10
    with tdms.File.partial(path) as file:
        assert file.rest == 10 and list(file["g", "c"]) == [0, 1, 2]
    os.truncate(path, intact - 1)
    with pytest.raises(tdms.Error) as caught:
        reader.refresh()
    assert caught.value.status is tdms.Status.FILE_READ
    os.truncate(path, 30)
    with pytest.raises(tdms.Error, match="g/c"):
        reader["g", "c"][:]


def test_threads_share_a_file_that_is_closed(run):
    def use():
        started.wait()
        with pytest.raises(tdms.Error, match="closed"):
            while True:
                assert file["types", "ramp"][::-1][0] == 199_999
                assert file["types", "string"][-1] == "long" * 1000
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


@pytest.mark.parametrize("path, words", [("/no/libtdms.so", "TDMS_LIBRARY"), ("libc.so.6", "1.1")])
def test_a_library_that_is_missing_or_too_old(path, words):
    done = subprocess.run([sys.executable, "-c", "import tdms"], capture_output=True, text=True,
                          env={**os.environ, "TDMS_LIBRARY": path})
    assert "ImportError" in done.stderr and words in done.stderr
