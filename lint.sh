#!/usr/bin/env bash
# Static analysis: compiler warnings, clang-format, includes between folders, clang-tidy, cppcheck, gcc's
# analyzer for C, mypy for Python, shellcheck. Reports what failed; the status is 0 if nothing did.
set -uo pipefail
cd "$(dirname "$0")" || exit

scripts/install-packages.sh build test lint tool python cluster hdf5 || exit

jobs=$(nproc)
status=0

check() { # NAME COMMAND...: the command's output is shown if it fails
    local name=$1 output begin=$SECONDS
    shift
    echo "$name"
    if output=$("$@" 2>&1); then
        echo "$name: nothing found, $((SECONDS - begin)) s"
    else
        status=1
        echo "$output"
        echo "FAILED: $name"
    fi
}

warnings() {
    cmake --preset release && cmake --build --preset release --parallel "$jobs"
}

format() {
    find include src tests fuzz bench examples tools \( -name '*.[hc]' -o -name '*.[hc]pp' \) -print0 |
        xargs -0 clang-format --dry-run --Werror
}

tidy() {
    find src tools examples/programs -name '*.cpp' -print0 |
        xargs -0 -P "$jobs" -n 4 clang-tidy --quiet -p build/release
}

# No folder of src/ includes one that uses it. Opening and closing files are the exception, for the reason
# that docs/design.md gives.
layers() {
    local order=(core codec reader channel_data writer) i later
    for i in "${!order[@]}"; do
        later=$(IFS='|' && echo "${order[*]:i+1}${order[i+1]+|}properties")
        grep -rnE "#include \"($later)/" "src/${order[i]}" --exclude=file.cpp --exclude=opening.cpp && return 1
    done
    ! grep -rnE '#include "(reader|channel_data|writer)/' src/properties
}

cpp_check() {
    cppcheck --std=c++20 --enable=warning,performance,portability --quiet --error-exitcode=1 \
        -j "$jobs" -I include -I src src tools examples bench
}

analyzer() {
    find examples -name '*.c' -print0 |
        xargs -0 -P "$jobs" -n 1 gcc -std=c99 -D_POSIX_C_SOURCE=200809L -O1 \
            -Wall -Wextra -Wshadow -Wconversion -Werror -fanalyzer -I include -S -o /dev/null
}

# Debian's interpreter, which has Debian's packages.
types() {
    /usr/bin/python3 -m mypy --strict --no-incremental python/tdms &&
        MYPYPATH=python /usr/bin/python3 -m mypy --strict --allow-untyped-calls --no-incremental \
            examples/cluster/recording_*.py
}

shell() {
    find . -path ./build -prune -o -name '*.sh' -print0 |
        xargs -0 shellcheck --severity=warning .ci/run cmake/debian/python/* &&
        shellcheck --severity=warning --shell=bash tools/completion/tdms
}

check "compiler warnings" warnings
check clang-format format
check "includes between folders" layers
check cppcheck cpp_check
check "gcc's analyzer" analyzer
check mypy types
check shellcheck shell
check clang-tidy tidy
exit $status
