#!/usr/bin/env bash
# installed_test.sh SOURCE BUILD CMAKE: what an installation in an empty prefix holds is enough to build
# and run the examples for installed libraries, by pkg-config and by CMake, and in Python where NumPy is.
set -euo pipefail
source=$1
build=$2
cmake=$3
command -v pkg-config >/dev/null || exit 77  # skipped

trap 'echo "FAILED: $BASH_COMMAND"' ERR
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"
for component in '' python; do
    "$cmake" --install "$build" --prefix "$scratch/prefix" ${component:+--component "$component"} >log ||
        { cat log && exit 1; }
done

description=$(find prefix -name tdms.pc)
PKG_CONFIG_PATH=$scratch/$(dirname "$description")
package=$(find prefix -path '*/tdms/__init__.py')
PYTHONPATH=$scratch/$(dirname "$package" | xargs dirname)
export PKG_CONFIG_PATH PYTHONPATH PYTHONDONTWRITEBYTECODE=1
export LD_LIBRARY_PATH=${PKG_CONFIG_PATH%/pkgconfig} CMAKE_PREFIX_PATH=$scratch/prefix

try() { # LANGUAGE FOLDER: prints what the example prints
    "$source/scripts/try-examples.sh" "$1" "$source/examples/installed/$2" sine.tdms
}
listed=$'bench/time: 200 values\nbench/voltage: 200 values'
try c c
[[ $(try cpp cpp) == "$listed" ]]
[[ $(try cpp-pkg-config cpp) == "$listed" ]]
[[ ! -e prefix/bin/tdms ]] || prefix/bin/tdms check sine.tdms
! /usr/bin/python3 -c 'import numpy' 2>/dev/null || [[ $(try python python) == 5.0* ]]
