#!/usr/bin/env bash
# documents_test.sh SOURCE LIBRARY: the programs in the documents compile without a warning; those in C++
# and Python run, in their order on the page, each page's in a folder of its own.
set -euo pipefail
source=$1
library=$2
export TDMS_LIBRARY=$library PYTHONPATH=$source/python PYTHONDONTWRITEBYTECODE=1
options=(-Wall -Wextra -Werror -I "$source/include")
link=("$library" "-Wl,-rpath,$(dirname "$library")" -lm)

/usr/bin/python3 -c 'import numpy' 2>/dev/null || exit 77  # skipped

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
for page in README docs/guide docs/languages; do
    folder=$scratch/$(basename "$page")
    mkdir "$folder"
    cd "$folder"
    # The README reads in C++ what it writes in Python.
    awk '/^```(c|cpp|python)$/ { n++; name = sprintf("%02d.%s", n, substr($0, 4)); next }
        /^```$/ { name = "" } name { print >name }' "$source/$page.md"
    for program in *.c; do
        [[ ! -e $program ]] || gcc -std=c99 "${options[@]}" "$program" -o "$program.out" "${link[@]}"
    done
    for program in *.python; do [[ ! -e $program ]] || /usr/bin/python3 "$program" >/dev/null; done
    for program in *.cpp; do
        [[ -e $program ]] || continue
        g++ -std=c++20 "${options[@]}" "$program" -o "$program.out" "${link[@]}"
        ./"$program.out" >/dev/null
    done
done
