#!/usr/bin/env bash
# cpp_header_test.sh INCLUDE-DIR LIBRARY COMPILER...: with each compiler, tdms.hpp compiles by itself
# without a warning, in two translation units of one program that has classes of the same names.
set -euo pipefail
include=$1
library=$2
shift 2

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cat >"$scratch/one.cpp" <<'CPP'
#include <tdms.hpp>
class file {} f;
class group {} g;
class channel {} c;
struct error {};
std::vector<double> read(const char* path) { return tdms::file(path)["g"]["c"].read<double>(); }
CPP
cat >"$scratch/two.cpp" <<'CPP'
#include <tdms.hpp>
#include <tdms.hpp>
using namespace tdms;
std::vector<double> read(const char* path);
int main(int count, char** arguments)
{
    file f(arguments[count - 1], "w");
    channel c = f.add_group("g").add_channel("c");
    c.append(read(f.path().c_str()));
    for (const auto& [name, value] : c.properties()) f.property(name, value);
}
CPP

for compiler in "$@"; do
    # -isystem would hide the header's own warnings.
    "$compiler" -std=c++20 -O2 -Wall -Wextra -Wshadow -Wconversion -Wpedantic -Werror -I "$include" \
        "$scratch/one.cpp" "$scratch/two.cpp" -o "$scratch/program" "$library"
done
