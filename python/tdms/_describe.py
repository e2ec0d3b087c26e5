"""The repr() of files, groups and channels, which fits on a screen."""
from __future__ import annotations

from typing import List

from tdms._channel import Channel
from tdms._errors import Error
from tdms._tree import File, Group

MOST_LINES = 30
MOST_CHARACTERS = 60


def describe_file(file: File) -> str:
    """The file and its groups with their channels."""
    begin = f"<tdms.File {_short(file.path)}, mode {file.mode!r}"
    if file.closed:
        return f"{begin}, closed>"
    try:
        groups = file.groups
        lines = [f"{begin}: {_number(len(groups), 'group')}>"]
        for done, group in enumerate(groups):
            if len(lines) >= MOST_LINES:
                lines.append(f"  and {_number(len(groups) - done, 'more group')}")
                break
            lines.append(f"  {_short(group.name)}: {_number(len(group), 'channel')}")
            # Every group gets its share of the remaining lines.
            room = (MOST_LINES - len(lines)) // (len(groups) - done)
            if room > 1:
                lines += [f"  {line}" for line in _channel_lines(group, room)]
        return "\n".join(lines)
    except Error as error:
        return f"{begin}: {error}>"


def describe_group(group: Group) -> str:
    """The group and its channels."""
    begin = f"<tdms.Group {_short(group.name)}"
    try:
        lines = [f"{begin}: {_number(len(group), 'channel')}>"]
        return "\n".join(lines + _channel_lines(group, MOST_LINES))
    except Error as error:
        return f"{begin}: {error}>"


def describe_channel(channel: Channel) -> str:
    """Name, type, number of values and unit."""
    begin = _short(channel.name)
    try:
        dtype = channel.dtype
        what = "no type" if dtype is None else "string" if dtype.kind == "O" else str(dtype)
        unit = channel.properties.get("unit")
        shown = f", unit {_short(unit)}" if isinstance(unit, str) else ""
        return f"{begin}: {what}, {_number(len(channel), 'value')}{shown}"
    except Error as error:
        return f"{begin}: {error}"


def _channel_lines(group: Group, most: int) -> List[str]:
    channels = group.channels
    shown = channels if len(channels) <= most else channels[: most - 1]
    lines = [f"  {describe_channel(channel)}" for channel in shown]
    if len(shown) < len(channels):
        lines.append(f"  and {_number(len(channels) - len(shown), 'more channel')}")
    return lines


def _number(count: int, what: str) -> str:
    return f"{count} {what}" if count == 1 else f"{count} {what}s"


def _short(text: str) -> str:
    return repr(text if len(text) <= MOST_CHARACTERS else text[: MOST_CHARACTERS - 3] + "...")
