"""Channels and groups as pandas objects."""
from __future__ import annotations

from typing import TYPE_CHECKING, Any, Optional

from tdms._channel import Channel
from tdms._tree import Group

if TYPE_CHECKING:
    import pandas  # type: ignore[import]


def _pandas() -> Any:
    try:
        import pandas
    except ImportError as error:
        raise ImportError("to_pandas() needs the package pandas, which is not installed") from error
    return pandas


def _first_times(group: Group) -> Optional[Channel]:
    for channel in group.channels:
        if channel.dtype is not None and channel.dtype.kind == "M":
            return channel
    return None


def series_of(channel: Channel) -> pandas.Series:
    """See Channel.to_pandas."""
    pandas = _pandas()
    times = _first_times(channel.group)
    series = _column(channel, len(channel))
    if times is not None and times != channel and len(times) == len(series):
        series.index = pandas.Index(times.read(), name=times.name)
    return series


def frame_of(group: Group) -> pandas.DataFrame:
    """See Group.to_pandas."""
    pandas = _pandas()
    channels = group.channels
    rows = max((len(channel) for channel in channels), default=0)
    times = _first_times(group)
    if times is not None and len(times) == rows:
        channels.remove(times)
        index = pandas.Index(times.read(), name=times.name)
    else:
        index = pandas.RangeIndex(rows)
    columns = {channel.name: _column(channel, rows).array for channel in channels}
    return pandas.DataFrame(columns, index=index)


def _column(channel: Channel, rows: int) -> pandas.Series:
    """The values, followed by missing values up to that number of rows."""
    pandas = _pandas()
    series = pandas.Series(channel.read(), name=channel.name, dtype=channel.dtype)
    if len(series) >= rows:
        return series
    nullable = {"b": "boolean", "i": str(series.dtype).title(), "u": f"UI{str(series.dtype)[2:]}"}
    return series.astype(nullable.get(series.dtype.kind, series.dtype)).reindex(range(rows))
