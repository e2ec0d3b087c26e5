// list: prints the channels of a measurement file, and how many values each of them has.
//
//     cmake -S . -B build && cmake --build build
//     build/list sine.tdms

#include <iostream>
#include <tdms.hpp>

int main(int argc, char** argv)
try {
    if (argc != 2) {
        std::cerr << "usage: list FILE\n";
        return 2;
    }
    for (const tdms::group& g : tdms::file(argv[1]).groups()) {
        for (const tdms::channel& c : g.channels()) {
            std::cout << g.name() << '/' << c.name() << ": " << c.size() << " values\n";
        }
    }
    return 0;
} catch (const tdms::error& e) {
    std::cerr << "list: " << e.what() << '\n';
    return 1;
}
