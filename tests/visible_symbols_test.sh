#!/usr/bin/env bash
# visible_symbols_test.sh LIBRARY LIST: the library shows the names in the list and no other. A name with
# <T> stands for one of each element type.
set -euo pipefail
export LC_ALL=C

types=(bool double float int8 int16 int32 int64 uint8 uint16 uint32 uint64 string timestamp)
listed() {
    local name type
    while IFS= read -r name; do
        [[ $name == *'<T>' ]] || { echo "$name" && continue; }
        for type in "${types[@]}"; do echo "${name%<T>}$type"; done
    done <"$1"
}

diff <(listed "$2" | sort) <(nm -D --defined-only "$1" | sed 's/@@TDMS_1\(\.1\)\?$//' | c++filt |
    cut -d' ' -f3- | grep -v '^TDMS_1' | sort)
