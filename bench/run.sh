#!/bin/bash
# Builds the benchmark in Release mode, runs it, and prints its tables as Markdown.
#
#   bench/run.sh                          the comparison, with targets
#   bench/run.sh --without-huge-pages     the same, with transparent huge pages disabled
#   bench/run.sh --benchmark_filter=bulk  the same runs under Google Benchmark, with its options
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=$root/build/bench

# Only the tables go to the standard output, so that they can be redirected into a file.
{
    "$root/scripts/install-packages.sh" bench python
    cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release -DTDMS_BUILD_BENCH=ON \
        -DTDMS_BUILD_TESTS=OFF -DTDMS_BUILD_EXAMPLES=OFF
    cmake --build "$build" --target tdms_bench --parallel
} >&2

# The program removes its own files; the folder is removed even if it is killed or crashes.
scratch=$(mktemp -d /dev/shm/tdms-bench-XXXXXX)
trap 'kill $! 2>/dev/null || true; wait; rm -rf "$scratch"' EXIT
TDMS_BENCH_DIR=$scratch "$build/bench/tdms_bench" "$@" &
wait $!
case $* in *--benchmark_*) exit ;; esac
# A last row of the table of ratios, by Debian's interpreter, which has Debian's packages.
PYTHONPATH=$root/python PYTHONDONTWRITEBYTECODE=1 /usr/bin/python3 "$root/bench/python_interface.py" \
    "$build/libtdms.so" "$scratch" &
wait $!
