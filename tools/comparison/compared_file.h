#pragma once

#include <string>
#include <tdms.hpp>

#include "files/input.h"
#include "files/measurement_file.h"

namespace tool {

/// One of the two files that are compared.
struct compared_file {
    explicit compared_file(const std::string& as) : name(as), from(as), file(open_intact(from)) {}

    std::string name;
    input from;
    tdms::file file;
};

/// One of the two files cannot be read.
struct read_failure {
    const compared_file& in;
    std::string message;
};

/// The result of `read()`; throws a read_failure if that throws a tdms::error.
template <class Read>
auto read_from(const compared_file& in, Read read)
{
    try {
        return read();
    } catch (const tdms::error& e) {
        throw read_failure{in, message_of(e.status(), e.system_error())};
    }
}

}  // namespace tool
