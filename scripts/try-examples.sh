#!/bin/sh
# try-examples.sh c|cpp|cpp-pkg-config|python EXAMPLE FILE: builds an example of examples/installed/
# against the installed library, in the current folder, and runs it: the one in C writes FILE, which the
# others read.
set -eu

language=$1
example=$2
file=$3
case $language in
    c)
        # The flags are several words.
        # shellcheck disable=SC2046
        ${CC:-cc} "$example/write.c" -o write $(pkg-config --cflags --libs tdms) -lm
        ./write "$file"
        ;;
    cpp)
        cmake -S "$example" -B list >/dev/null
        cmake --build list >/dev/null
        list/list "$file"
        ;;
    cpp-pkg-config)
        # shellcheck disable=SC2046
        ${CXX:-c++} -std=c++20 "$example/list.cpp" -o list.out $(pkg-config --cflags --libs tdms)
        ./list.out "$file"
        ;;
    python) /usr/bin/python3 "$example/mean.py" "$file" bench voltage ;;
esac
