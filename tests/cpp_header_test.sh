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
using time_point = tdms::time;
void write(const char* path);
int main(int, char** argv)
{
    write(argv[1]);
    const auto read = tdms::file(argv[1])["g"]["c"].read<double>();
    return read == std::vector<double>{1, 2} ? 0 : 1;
}
CPP
cat >"$scratch/two.cpp" <<'CPP'
#include <tdms.hpp>
#include <tdms.hpp>
using namespace tdms;
void write(const char* path)
{
    file f(path, "w");
    channel c = f.add_group("g").add_channel("c");
    c.append(std::vector<double>{1, 2});
    c.property("rate", 100);
    for (const auto& [name, value] : c.properties()) f.property(name, value);
    if (f.property<double>("rate") == 100) f.save();
}
CPP

for compiler in "$@"; do
    # -isystem would hide the header's own warnings.
    "$compiler" -std=c++20 -O2 -Wall -Wextra -Wshadow -Wconversion -Wpedantic -Werror -I "$include" \
        "$scratch/one.cpp" "$scratch/two.cpp" -o "$scratch/program" "$library" \
        -Wl,-rpath,"$(dirname "$library")"
    "$scratch/program" "$scratch/file.tdms"
done
