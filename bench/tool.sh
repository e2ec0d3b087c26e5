#!/usr/bin/env bash
# tool.sh [GIGABYTES]: time and peak memory of the tool's commands on a recording of that size, 2 by
# default, beside HDF5's own tools on the same data. Takes a few minutes, and three times the size in
# memory, where the files are.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-packages.sh build tool bench hdf5 python
cmake -S . -B build/bench-tool -DTDMS_BUILD_TESTS=OFF -DTDMS_BUILD_TOOLS=ON >/dev/null
cmake --build build/bench-tool --parallel "$(nproc)" >/dev/null
tdms=$PWD/build/bench-tool/tools/tdms
export TDMS_LIBRARY=$PWD/build/bench-tool/libtdms.so PYTHONPATH=$PWD/python PYTHONDONTWRITEBYTECODE=1
work=$(mktemp -d -p /dev/shm)
trap 'rm -rf "$work"' EXIT
cd "$work"

# Times and four channels of doubles, from a converter of 16 bits, as an acquisition program saves
# them: 100,000 samples at a time.
/usr/bin/python3 - "${1:-2}" <<'END'
import sys
import numpy as np
import tdms

ROWS = 100_000
start = np.datetime64("2026-05-04T10:00:00", "ns")
noise = np.random.default_rng(1)
with tdms.File("run.tdms", "w") as f:
    group = f.create_group("run")
    time = group.create_channel("time")
    channels = [group.create_channel(f"acc{i}") for i in range(4)]
    for save in range(int(float(sys.argv[1]) * 1e9 / (48 * ROWS))):
        samples = np.arange(ROWS) + save * ROWS
        time.append(start + (samples * 20_000).astype("timedelta64[ns]"))
        for i, channel in enumerate(channels):
            volts = np.sin(samples * 1e-4 * (i + 1)) * 4 + noise.normal(0, 0.01, ROWS)
            channel.append(np.round(volts / 10 * 32768) * (10 / 32768))
        f.save()
END

measured() { # COMMAND...: prints a row
    local name=$* seconds kibibytes
    /usr/bin/time -f '%e %M' -o time "$@" >/dev/null
    read -r seconds kibibytes <./time
    printf '| `%s` | %.2f | %d |\n' "${name/#$tdms/tdms}" "$seconds" $((kibibytes * 1024 / 1000000))
}
size_of() { # FILE: prints its size
    echo "$1 has $(($(stat -c %s "$1") / 1000000)) MB."
}

size_of run.tdms
echo
echo '| Command | Time, s | Peak memory, MB |'
echo '| --- | --- | --- |'
measured "$tdms" info run.tdms
measured "$tdms" info --stats run.tdms
measured "$tdms" check run.tdms
measured "$tdms" salvage run.tdms -o saved.tdms
rm saved.tdms
measured "$tdms" dump run.tdms
measured "$tdms" dump run.tdms --from 1000000 --count 10
measured "$tdms" plot run.tdms -o run.png
measured "$tdms" diff run.tdms run.tdms
measured "$tdms" convert run.tdms -o run.h5
measured h5stat run.h5
measured h5dump -H run.h5
measured h5dump -d run/acc0 -s 1000000 -c 10 run.h5
measured h5dump run.h5
echo
size_of run.h5
