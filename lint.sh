#!/usr/bin/env bash
# Static analysis: compiler warnings, clang-format, clang-tidy, cppcheck, for what is written in C
# gcc's analyzer, and for Python mypy. Reports what failed; the status is 0 if nothing did.
set -uo pipefail
cd "$(dirname "$0")"

scripts/install-packages.sh build test lint tool python cluster hdf5 || exit 1

jobs=$(nproc)
status=0

check() { # NAME COMMAND...: the command's output is shown if it fails
    local name=$1 output
    shift
    if output=$("$@" 2>&1); then
        echo "$name: nothing found"
    else
        status=1
        echo "$output"
        echo "FAILED: $name"
    fi
}

# The build that the test command tests.
warnings() {
    cmake -S . -B build/release -DTDMS_BUILD_TESTS=ON -DTDMS_BUILD_TOOLS=ON \
        -DCMAKE_COMPILE_WARNING_AS_ERROR=ON >/dev/null &&
        cmake --build build/release --parallel "$jobs" >/dev/null
}

format() {
    find include src tests fuzz bench examples tools -name '*.[hc]' -o -name '*.[hc]pp' |
        xargs clang-format --dry-run --Werror
}

tidy() {
    find src tools examples/programs -name '*.cpp' | xargs -P "$jobs" -n 4 clang-tidy --quiet -p build/release
}

cpp_check() {
    cppcheck --std=c++20 --enable=warning,performance,portability --quiet --error-exitcode=1 \
        -j "$jobs" -I include -I src src tools examples bench
}

analyzer() {
    find examples -name '*.c' | xargs -P "$jobs" -n 1 gcc -std=c99 -D_POSIX_C_SOURCE=200809L -O1 \
        -Wall -Wextra -Wshadow -Wconversion -Werror -fanalyzer -I include -S -o /dev/null
}

# Debian's interpreter, which has Debian's packages.
types() {
    /usr/bin/python3 -m mypy --strict --no-incremental python/tdms &&
        MYPYPATH=python /usr/bin/python3 -m mypy --strict --allow-untyped-calls --no-incremental \
            examples/cluster/recording_*.py
}

check "compiler warnings" warnings
check clang-format format
check clang-tidy tidy
check cppcheck cpp_check
check "gcc's analyzer" analyzer
check mypy types
exit $status
