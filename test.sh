#!/usr/bin/env bash
# test.sh [--thorough]: builds and tests, as its usage says. The last line reports how many tests passed
# and failed; the status is 0 if none failed.
set -uo pipefail
cd "$(dirname "$0")" || exit

usage='usage: ./test.sh [--thorough]

Builds with warnings as errors and runs all tests, those of the Python package too. With --thorough it
makes more rounds of the random tests, runs all tests also under the address and undefined behaviour
sanitizers, the sessions under the thread sanitizer and the tests of the example for a cluster, fuzzes
for a minute, and runs ./lint.sh. It installs missing packages with apt, as root or with sudo, and
leaves its logs in build/logs.'
thorough=false
case $* in
    '') ;;
    --thorough) thorough=true ;;
    -h | --help)
        echo "$usage"
        exit
        ;;
    *)
        echo "$usage" >&2
        exit 2
        ;;
esac

jobs=$(nproc)
logs=$PWD/build/logs
passed=0
failed=0
ticker=
trap '[[ -z $ticker ]] || kill "$ticker"' EXIT
mkdir -p "$logs"

say() { printf '%4d s  %s\n' "$SECONDS" "$*"; }

# step NAME COMMAND...: runs a command with its output in the log NAME, of which it shows the last line
# every 15 seconds, and all if the command fails.
step() {
    local name=$1 log=$logs/$1 begin=$SECONDS
    shift
    say "$name"
    # The sleep may outlive its loop, and must not keep our output open.
    while sleep 15 >/dev/null 2>&1; do
        say "$name: $(tail -n 1 "$log" | cut -c 1-100)"
    done &
    ticker=$!
    "$@" >"$log" 2>&1
    local status=$?
    kill "$ticker"
    wait "$ticker" 2>/dev/null
    ticker=
    if ((status == 0)); then
        say "$name: took $((SECONDS - begin)) s"
    else
        cat "$log"
        say "$name: FAILED after $((SECONDS - begin)) s"
    fi
    return "$status"
}

# count STATUS [PASSED FAILED]: the tests of a step, or the step as one test.
count() {
    local good=${2:-0} bad=${3:-0}
    if (($1 != 0 && bad == 0)); then bad=1; fi
    if (($1 == 0 && good == 0)); then good=1; fi
    ((passed += good, failed += bad))
    return "$1"
}

configure_and_build() { # PRESET
    cmake --preset "$1" &&
        "${fixed_addresses[@]}" cmake --build --preset "$1" --parallel "$jobs"
}

build() { # PRESET
    step "build of $1" configure_and_build "$1"
    count $?
}

run_tests() { # PRESET
    step "tests of $1" "${fixed_addresses[@]}" ctest --preset "$1" --parallel "$jobs"
    local status=$?
    [[ $(<"$logs/tests of $1") =~ ([0-9]+)\ tests\ failed\ out\ of\ ([0-9]+) ]]
    count $status $((${BASH_REMATCH[2]:-0} - ${BASH_REMATCH[1]:-0})) "${BASH_REMATCH[1]:-0}"
}

run_pytest() { # NAME FILE...: tests in Python, with the library of the release build
    # Debian's interpreter, which has Debian's packages.
    step "$1" env TDMS_LIBRARY="$PWD/build/release/libtdms.so" PYTHONPATH="$PWD/python" \
        PYTHONDONTWRITEBYTECODE=1 /usr/bin/python3 -m pytest -q -p no:cacheprovider "${@:2}"
    local status=$? summary
    summary=$(tail -n 1 "$logs/$1")
    count $status "$(grep -oP '\d+(?= passed)' <<<"$summary")" \
        "$(grep -oP '\d+(?= (failed|error))' <<<"$summary" | head -n 1)"
}

groups=(build test tool python)
if $thorough; then groups+=(fuzz cluster hdf5 lint); fi
step packages scripts/install-packages.sh "${groups[@]}" || exit

if $thorough; then export TDMS_TEST_ROUNDS=5; fi
fixed_addresses=()
if build release; then
    run_tests release
    run_pytest "tests in Python" python/tests
    if $thorough; then run_pytest "tests of the cluster example" examples/cluster/cluster_test.py; fi
fi

if $thorough; then
    build asan && run_tests asan
    # The thread sanitizer does not tolerate every address-space layout.
    setarch -R true 2>/dev/null && fixed_addresses=(setarch -R)
    build tsan && run_tests tsan
    step fuzzing fuzz/run.sh 60
    count $? && grep executed_units "$logs/fuzzing"
    step lint ./lint.sh
    count $?
fi

echo "$passed passed, $failed failed"
((failed == 0))
