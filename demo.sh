#!/usr/bin/env bash
# Builds the library, its tool and the examples, records this machine's counters for a few seconds, and
# shows and draws the recording.
set -euo pipefail
cd "$(dirname "$0")"

scripts/install-packages.sh build tool
echo "building, which takes about a minute"
cmake -S . -B build/demo -DTDMS_BUILD_TESTS=OFF -DTDMS_BUILD_TOOLS=ON >/dev/null
cmake --build build/demo --parallel "$(nproc)" >/dev/null
echo "recording for 3 seconds"
build/demo/examples/record build/demo/record.tdms 3 50
build/demo/tools/tdms info build/demo/record.tdms
build/demo/tools/tdms plot build/demo/record.tdms "system/cpu user" "system/cpu idle"
cat <<'END'
The next three commands to try:

    build/demo/tools/tdms plot build/demo/record.tdms system -o build/demo/record.png
    build/demo/tools/tdms dump build/demo/record.tdms "system/cpu user" system/load --time-first --count 5
    build/demo/tools/tdms info --stats build/demo/record.tdms
END
