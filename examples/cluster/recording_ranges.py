"""Statistics and spectra of one recording, range by range: the work of the workers.

`make_plan` lists the channels of a recording and divides their values into tasks. A task is a list
of ranges: a long channel takes many tasks, short channels share one. `summarize` performs a task.

The result does not depend on how the values are divided. Values are summed up in blocks of a fixed
size; blocks are merged in pairs, these again in pairs, and so on. A range of 2^n blocks that begins
at a multiple of its size is always one node of that tree. The windows of a spectrum begin at
multiples of half their length in the channel. They belong to the block in which they begin, so a
block is read beyond its end, as far as its windows reach.
"""
from __future__ import annotations

import math
from typing import Any, Dict, Iterable, Iterator, List, NamedTuple, Optional, Sequence, Union

import numpy
import numpy.typing

import tdms

Array = numpy.typing.NDArray[Any]

#: The number of values in a block: few enough to stay in a processor's cache.
BLOCK = 1 << 16
#: The number of values in the windows that are transformed together, for the same reason.
TRANSFORMED = 1 << 14
#: Properties with the sampling rate in Hz, of a channel, its group or the file.
RATES = ("rate", "sampling rate")


class Range(NamedTuple):
    """A range of values of a channel of numbers."""

    channel: int  # its place in the plan
    group: str
    name: str
    first: int
    size: int
    length: int  # of the channel when it was planned; it may be growing


class Channel(NamedTuple):
    """A channel, and what is known without reading it. Only times have `first` and `last`."""

    group: str
    name: str
    type: str
    length: int
    lost: int
    rate: float  # 1 if unknown, so that frequencies are in cycles per sample
    first: str = ""
    last: str = ""


class Plan(NamedTuple):
    """The tasks for a recording, and the problems with it."""

    channels: List[Channel]
    tasks: List[List[Range]]
    problems: List[str]


class Numbers(NamedTuple):
    """The results for some values of a channel."""

    size: int = 0  # without NaN
    nan: int = 0
    minimum: float = math.inf  # an int for integers
    maximum: float = -math.inf
    mean: float = 0.0
    squares: float = 0.0  # the sum of the squared deviations from the mean
    windows: int = 0  # in the sum of power
    skipped: int = 0  # windows with values that are not finite
    power: Any = 0.0  # an array if there are windows

    @property
    def deviation(self) -> float:
        """The standard deviation of the population: the divisor is count, not count - 1."""
        return math.sqrt(self.squares / self.size)

    def density(self, rate: float) -> Array:
        """The one-sided power spectral density, in squared units per Hz, averaged over windows."""
        length = 2 * (len(self.power) - 1)
        result: Array = self.power / (self.windows * rate * numpy.square(_hann(length)).sum())
        result[1:-1] *= 2
        return result


def task_size(values: int, window: int) -> int:
    """The number of values in a task: at least `values`, and 2^n blocks."""
    return max(_power_of_two(values), _block_size(window))


def merged(parts: Sequence[Numbers]) -> Numbers:
    """Merges the results of consecutive blocks or ranges, all of one size except the last."""
    if len(parts) < 2:
        return parts[0] if parts else Numbers()
    half = _power_of_two(len(parts)) // 2
    return _merged_pair(merged(parts[:half]), merged(parts[half:]))


def make_plan(path: str, size: int) -> Plan:
    """Lists the channels in the intact segments of a file, and tasks of at most `size` values.

    Raises:
        OSError: the system did not open the file; trying again may help.
    """
    try:
        file = tdms.File.partial(path)
    except OSError:
        raise
    except tdms.Error as error:
        return Plan([], [], [str(error)])
    with file:
        channels: List[Channel] = []
        problems: List[str] = []
        if file.rest:
            problems.append(f"{path}: {file.rest} bytes after the intact segments are left out")
        file_rate = _rate(file, 0.0)
        for group in file.groups:
            group_rate = _rate(group, file_rate)
            described: List[Channel] = []
            for channel in group.channels:
                try:
                    described.append(_describe(channel, _rate(channel, group_rate)))
                except tdms.Error as error:
                    problems.append(str(error))
            channels += _with_rates(described)
    return Plan(channels, _tasks(_ranges(channels, size), size), problems)


def summarize(path: str, ranges: List[Range], window: int) -> List[Union[Numbers, str]]:
    """The results for each range, or the reason why it cannot be read.

    Every task opens the file itself: a handle is for one thread of one process, and opening reads
    no values. One block at a time is in memory.

    Raises:
        tdms.Error: the file can no longer be opened.
    """
    with tdms.File.partial(path) as file:
        results: List[Union[Numbers, str]] = []
        for part in ranges:
            try:
                results.append(merged(list(_blocks(file[part.group, part.name], part, window))))
            except tdms.Error as error:
                results.append(str(error))
        return results


def _power_of_two(least: int) -> int:
    return 1 << (least - 1).bit_length()


def _block_size(window: int) -> int:
    return max(BLOCK, _power_of_two(4 * window or 1))


def _hann(length: int) -> Array:
    window: Array = 0.5 - 0.5 * numpy.cos(2 * numpy.pi / length * numpy.arange(length))
    return window


def _rate(owner: Union[tdms.File, tdms.Group, tdms.Channel], otherwise: float) -> float:
    for name in RATES:
        rate = owner.properties.get(name)
        if isinstance(rate, (int, float)) and 0 < rate < math.inf:
            return float(rate)
    return otherwise


def _describe(channel: tdms.Channel, rate: float) -> Channel:
    dtype, count = channel.dtype, len(channel)
    kind = "" if dtype is None else "string" if dtype.kind == "O" else str(dtype)
    known = Channel(channel.group.name, channel.name, kind, count, channel.lost, rate)
    if dtype is None or dtype.kind != "M" or count == 0:
        return known
    first, last = channel[0], channel[-1]
    seconds = (last - first) / numpy.timedelta64(1, "s")
    return known._replace(
        rate=(count - 1) / seconds if seconds > 0 else 0.0, first=f"{first}Z", last=f"{last}Z"
    )


def _with_rates(channels: List[Channel]) -> List[Channel]:
    """The channels of a group. One without a rate gets that of the times of the same length."""
    rates: Dict[int, float] = {}
    for channel in channels:
        if channel.first:
            rates.setdefault(channel.length, channel.rate)
    return [
        channel._replace(rate=channel.rate or rates.get(channel.length) or 1.0)
        for channel in channels
    ]


def _ranges(channels: List[Channel], size: int) -> Iterator[Range]:
    for place, channel in enumerate(channels):
        if channel.type in ("", "string") or channel.first:
            continue
        for first in range(0, channel.length, size):
            count = min(size, channel.length - first)
            yield Range(place, channel.group, channel.name, first, count, channel.length)


def _tasks(ranges: Iterable[Range], size: int) -> List[List[Range]]:
    tasks: List[List[Range]] = []
    room = 0
    for part in ranges:
        if part.size > room:
            tasks.append([])
            room = size
        tasks[-1].append(part)
        room -= part.size
    return tasks


def _blocks(channel: tdms.Channel, part: Range, window: int) -> Iterator[Numbers]:
    """The results for each block of a range.

    Large arrays are used again for each block: Dask makes workers return memory to the system at
    once, and touching new memory takes longer than the arithmetic.
    """
    block, end = _block_size(window), part.first + part.size
    most = min(block + window, part.length)
    stored, wide, scratch = numpy.empty(most, channel.dtype), numpy.empty(most), numpy.empty(most)
    some_windows = numpy.empty((max(TRANSFORMED // window, 1), window)) if window else wide
    for first in range(part.first, end, block):
        count = min(block, end - first)
        size = min(count + window, part.length - first)
        channel.read(first, size, out=stored[:size])
        numpy.copyto(wide[:size], stored[:size])
        with numpy.errstate(all="ignore"):
            numbers = _numbers(stored[:count], wide[:count], scratch)
            begin = -first % (window // 2) if window else count
            if begin < count and begin + window <= size:
                windows = numpy.lib.stride_tricks.sliding_window_view(wide[:size], window)
                numbers = _with_power(numbers, windows[begin : count : window // 2], some_windows)
        yield numbers


def _numbers(stored: Array, wide: Array, scratch: Array) -> Numbers:
    """The results for the values of a block, which are given in their type and as double."""
    given = len(stored)
    if stored.dtype == bool:
        stored = stored.view("uint8")
    if numpy.isnan(stored.min()):
        stored, wide = stored[~numpy.isnan(stored)], wide[~numpy.isnan(wide)]
    if len(stored) == 0:
        return Numbers(nan=given)
    mean = wide.mean()
    deviations = numpy.subtract(wide, mean, out=scratch[: len(wide)])
    squares = numpy.square(deviations, out=deviations).sum()
    return Numbers(
        len(stored), given - len(stored),
        stored.min().item(), stored.max().item(), float(mean), float(squares),
    )  # fmt: skip


def _with_power(numbers: Numbers, windows: Array, scratch: Array) -> Numbers:
    """Adds the power of windows, after subtracting their means."""
    at_once, window = scratch.shape
    hann, power, used = _hann(window), numpy.zeros(window // 2 + 1), 0
    for some in (windows[i : i + at_once] for i in range(0, len(windows), at_once)):
        means = some.mean(axis=1, keepdims=True)
        weighted = numpy.subtract(some, means, out=scratch[: len(some)])
        weighted *= hann
        usable = numpy.isfinite(means[:, 0])
        if not usable.all():
            weighted = weighted[usable]
        # The real and the imaginary parts, side by side.
        parts = numpy.fft.rfft(weighted).view("float64")
        power += numpy.square(parts, out=parts).sum(axis=0).reshape(-1, 2).sum(axis=1)
        used += int(usable.sum())
    return numbers._replace(windows=used, skipped=len(windows) - used, power=power if used else 0.0)


def _merged_pair(a: Numbers, b: Numbers) -> Numbers:
    """Merges by the method of Chan, Golub and LeVeque."""
    result = a if a.size else b
    if a.size and b.size:
        count = a.size + b.size
        distance = a.mean - b.mean
        result = Numbers(
            count,
            minimum=min(a.minimum, b.minimum),
            maximum=max(a.maximum, b.maximum),
            mean=(a.size * a.mean + b.size * b.mean) / count,
            squares=a.squares + b.squares + distance * distance * (a.size / count * b.size),
        )
    return result._replace(
        nan=a.nan + b.nan,
        windows=a.windows + b.windows,
        skipped=a.skipped + b.skipped,
        power=a.power + b.power,
    )
