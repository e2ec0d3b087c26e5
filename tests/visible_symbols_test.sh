#!/usr/bin/env bash
# visible_symbols_test.sh LIBRARY HEADER LIST: the library shows the functions that the header declares,
# the names in the list, and no other.
set -euo pipefail
export LC_ALL=C

declared() {
    grep -oE '^TDMS_API [^(]*\(' "$1" | sed -E 's/.*[ *](\w+)\($/\1/'
}

diff <({ declared "$2" && cat "$3"; } | sort) <(nm -D --defined-only "$1" |
    sed 's/@@TDMS_1\(\.1\)\?$//' | c++filt | cut -d' ' -f3- | grep -v '^TDMS_1' | sort)
