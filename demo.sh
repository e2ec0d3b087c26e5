#!/usr/bin/env bash
# Builds the library and the examples, records this machine's counters for a few seconds, and prints
# what is in the file.
set -euo pipefail
cd "$(dirname "$0")"

cmake/install-packages.sh build
echo "building, about a minute"
cmake -S . -B build/demo -DTDMS_BUILD_TESTS=OFF -DTDMS_BUILD_TOOLS=OFF >/dev/null
cmake --build build/demo --parallel "$(nproc)" >/dev/null
build/demo/examples/record build/demo/record.tdms 3 50
build/demo/examples/summary build/demo/record.tdms
