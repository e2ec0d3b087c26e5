#!/usr/bin/env python3
"""Prints the mean of a channel of numbers, of any length.

    python3 mean.py FILE GROUP CHANNEL
"""
import sys

import tdms


def main() -> None:
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    path, group, channel = sys.argv[1:]
    with tdms.File(path) as file:
        values = file[group, channel]
        if values.dtype is not None and values.dtype.kind not in "biuf":
            sys.exit(f"mean.py: {channel} has values of the type {values.dtype}")
        total = sum(float(part.sum()) for part in values.chunks(65536))
        print(total / len(values) if len(values) else "no values")


if __name__ == "__main__":
    try:
        main()
    except (tdms.Error, KeyError) as error:
        sys.exit(f"mean.py: {error}")
