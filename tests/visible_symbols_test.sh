#!/usr/bin/env bash
# visible_symbols_test.sh LIBRARY LIST: the library shows the names in the list and no other.
set -euo pipefail
export LC_ALL=C
diff "$2" <(nm -D --defined-only "$1" | sed 's/@@TDMS_1\(\.1\)\?$//' | c++filt | cut -d' ' -f3- |
    grep -v '^TDMS_1' | sort)
