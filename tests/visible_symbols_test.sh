#!/usr/bin/env bash
# visible_symbols_test.sh LIBRARY HEADER: the library shows the functions that the header declares, the
# names below, for programs that link to them, and no other.
set -euo pipefail
export LC_ALL=C

by_name() {
    local bytes='unsigned char const*' string='std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >'
    printf '%s\n' fileHandles mtx read_{bool,int8,uint8,string_data}"($bytes)" \
        read_{{,u}int{16,32,64},float,double,timestamp,'string[abi:cxx11]'}"($bytes, bool)" \
        "read_char($bytes, unsigned long&, bool)" read_{data,'string_data[abi:cxx11]'}"($bytes, unsigned int)" \
        'read_leadIn(unsigned char*, unsigned long&, unsigned long&)' \
        write_{'bool[abi:cxx11](bool','int8[abi:cxx11](signed char','uint8[abi:cxx11](unsigned char'}')'
    printf 'write_%s[abi:cxx11](%s, bool)\n' int16 short int32 int int64 long uint16 'unsigned short' \
        uint32 'unsigned int' uint64 'unsigned long' timestamp 'int, int, int, int, int, int, int' \
        float float double double
    printf '%s\n' 'write_leadIn[abi:cxx11](unsigned long, unsigned long)' "write_string($string const&, bool)" \
        "write_string_data(std::vector<$string, std::allocator<$string > > const&, bool)"
}

diff <({ grep -oE '^TDMS_API [^(]*\(' "$2" | sed -E 's/.*[ *](\w+)\($/\1/' && by_name; } | sort) \
    <(nm -D --defined-only "$1" | sed 's/@@TDMS_1\(\.1\)\?$//' | c++filt | cut -d' ' -f3- |
        grep -v '^TDMS_1' | sort)
