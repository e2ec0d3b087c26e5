#!/usr/bin/env bash
# run.sh [SECONDS]: builds the fuzz target, makes seeds, and runs it (60 seconds unless told otherwise).
# What it finds is left in build/fuzz; the seeds are whole files and files cut in their middle.
set -euo pipefail
cd "$(dirname "$0")/.."

cmake/install-packages.sh build fuzz
cmake -S . -B build/fuzz -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
    -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTDMS_SANITIZE=address,undefined \
    -DTDMS_BUILD_FUZZ=ON -DTDMS_BUILD_TESTS=OFF -DTDMS_BUILD_TOOLS=OFF >/dev/null
cmake --build build/fuzz --parallel "$(nproc)" >/dev/null

seeds=build/fuzz/seeds
mkdir -p "$seeds" build/fuzz/corpus
for rate in 2 5; do
    build/fuzz/examples/record "$seeds/record$rate" 1 "$rate"
    head -c 900 "$seeds/record$rate" >"$seeds/cut$rate"
done
cd build/fuzz
exec ./fuzz/fuzz_open_and_read -max_total_time="${1:-60}" -max_len=8192 -print_final_stats=1 corpus seeds
