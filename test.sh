#!/usr/bin/env bash
# Builds and tests everything: the plain build with the packages for Python, the same tests under the
# address and undefined behaviour sanitizers, the sessions under the thread sanitizer, a minute of
# fuzzing, static analysis.
# The last line reports how many tests passed and failed; the status is 0 if none failed.
set -uo pipefail
cd "$(dirname "$0")"

scripts/install-packages.sh build test tool fuzz python cluster hdf5 || exit 1

jobs=$(nproc)
passed=0
failed=0

count() { # NAME STATUS: one test that is a whole command
    if (($2 == 0)); then
        ((++passed))
    else
        ((++failed))
        echo "FAILED: $1"
    fi
}

build() { # NAME OPTION...: configures and builds
    local name=$1
    shift
    echo "== $name"
    cmake -S . -B "build/$name" -DTDMS_BUILD_TESTS=ON -DTDMS_BUILD_TOOLS=ON "$@" >/dev/null &&
        "${fixed_addresses[@]}" cmake --build "build/$name" --parallel "$jobs" >/dev/null
    local status=$?
    count "building $name" $status
    return $status
}

run_tests() { # NAME CTEST-OPTION...: runs a build's tests
    local name=$1 output
    shift
    output=$("${fixed_addresses[@]}" ctest --test-dir "build/$name" --parallel "$jobs" \
        --output-on-failure --no-tests=error "$@" 2>&1)
    if [[ $output =~ ([0-9]+)\ tests\ failed\ out\ of\ ([0-9]+) ]]; then
        ((failed += BASH_REMATCH[1], passed += BASH_REMATCH[2] - BASH_REMATCH[1]))
        ((BASH_REMATCH[1] == 0)) || echo "$output"
    else
        count "tests of $name" 1
        echo "$output"
    fi
}

run_pytest() { # NAME FILE...: runs tests in Python with the library of the release build
    local name=$1 output passed_here failed_here
    shift
    echo "== $name"
    # Debian's interpreter, which has Debian's packages.
    output=$(TDMS_LIBRARY=$PWD/build/release/libtdms.so PYTHONPATH=$PWD/python \
        PYTHONDONTWRITEBYTECODE=1 /usr/bin/python3 -m pytest -q -p no:cacheprovider "$@" 2>&1)
    local status=$?
    passed_here=$(grep -oE '[0-9]+ passed' <<<"$output" | tail -n 1 | cut -d ' ' -f 1)
    failed_here=$(grep -oE '[0-9]+ (failed|error)' <<<"$output" | tail -n 1 | cut -d ' ' -f 1)
    ((passed += ${passed_here:-0}, failed += ${failed_here:-0}))
    ((status == 0)) && return
    echo "$output"
    ((${failed_here:-0} > 0)) || count "$name" $status
}

fixed_addresses=()
build release -DCMAKE_COMPILE_WARNING_AS_ERROR=ON && {
    run_tests release
    run_pytest "python" python/tests
    run_pytest "cluster" examples/cluster/cluster_test.py
}
# No test needs this much memory at once, and no damaged file may make the library ask for it.
export ASAN_OPTIONS=max_allocation_size_mb=64
build memory -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTDMS_SANITIZE=address,undefined && run_tests memory

# The thread sanitizer's memory layout does not go with every randomisation of addresses.
setarch -R true 2>/dev/null && fixed_addresses=(setarch -R)
build threads -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTDMS_SANITIZE=thread &&
    run_tests threads --tests-regex Sessions

echo "== fuzz, a minute"
if fuzz_log=$(fuzz/run.sh 60 2>&1); then
    count "fuzz" 0
    grep -E 'executed_units' <<<"$fuzz_log"
else
    count "fuzz" 1
    tail -n 80 <<<"$fuzz_log"
fi

echo "== lint"
./lint.sh
count "lint" $?

echo "$passed passed, $failed failed"
((failed == 0))
