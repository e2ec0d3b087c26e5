#!/usr/bin/env bash
# run.sh [SECONDS [LIBFUZZER-OPTION...]]: builds the fuzz target, writes seeds, and runs it, for 60
# seconds by default. What it finds is left in build/fuzz.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-packages.sh build fuzz
cmake -S . -B build/fuzz -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
    -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTDMS_SANITIZE=address,undefined -DTDMS_BUILD_FUZZ=ON \
    -DTDMS_BUILD_TESTS=OFF -DTDMS_BUILD_TOOLS=OFF -DTDMS_BUILD_EXAMPLES=OFF >/dev/null
cmake --build build/fuzz --parallel "$(nproc)" >/dev/null

cd build/fuzz
mkdir -p corpus
fuzz/seeds seeds
# Leaks are checked for only at the end: after each input, the strings that the library keeps for
# the process would count as such. No input may make it ask for 64 MiB at once.
exec ./fuzz/fuzz_any_file -max_total_time="${1:-60}" -max_len=8192 -detect_leaks=0 \
    -malloc_limit_mb=64 -rss_limit_mb=4096 -print_final_stats=1 "${@:2}" corpus seeds
