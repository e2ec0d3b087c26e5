#!/usr/bin/env bash
# coverage.sh: prints which lines and branches of src/ the tests reach, and which the fuzz target reaches
# with the inputs that it has found so far (build/fuzz/corpus, and its seeds).
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-packages.sh build test tool fuzz coverage
build=$PWD/build/coverage
export LLVM_PROFILE_FILE=/dev/null # of what is run on the way
cmake --preset coverage >/dev/null
cmake --build --preset coverage --parallel "$(nproc)" >/dev/null

report() { # WHAT COMMAND...
    local what=$1
    shift
    rm -rf "$build/profiles"
    if ! LLVM_PROFILE_FILE="$build/profiles/%p" "$@" >"$build/log" 2>&1; then
        tail "$build/log"
        exit 1
    fi
    # Processes that tests kill may leave truncated profiles.
    llvm-profdata merge -failure-mode=all -o "$build/$what.profile" "$build"/profiles/* 2>/dev/null
    echo "== $what"
    llvm-cov report "$build/libtdms.so" -instr-profile "$build/$what.profile" "$PWD/src" |
        awk 'NR == 1 || /^TOTAL/ || /\.(cpp|h) /'
}

report tests ctest --test-dir "$build" --parallel "$(nproc)"
mkdir -p build/fuzz/corpus
"$build/fuzz/seeds" "$build/seeds"
report fuzz "$build/fuzz/fuzz_any_file" -runs=0 build/fuzz/corpus "$build/seeds"
