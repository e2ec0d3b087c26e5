// edit: the editor of ../edit.cpp for HDF5 files.
//
//     edit FILE GROUP CHANNEL NAME=TEXT [VALUE...]
//
// The attribute is a double if TEXT is a number, otherwise a string; it replaces an attribute of
// that name. Values are converted to the dataset's type. A missing group or dataset is created, a
// dataset with doubles; an existing dataset must be chunked and have one unlimited dimension.
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "../support/conversions.hpp"
#include "../support/exit_status.hpp"
#include "../support/hdf5.hpp"

namespace {

using words = std::span<const char* const>;

// Values in memory, converted from words, and their type.
struct converted {
    h5::id type;
    std::vector<char> bytes;
};

template <class T>
converted to_numbers(hid_t type, words values)
{
    converted result{{H5Tcopy(type), "type"}, {}};
    for (const char* const value : values) {
        const T number = to_number<T>(value);
        const char* const bytes = reinterpret_cast<const char*>(&number);
        result.bytes.insert(result.bytes.end(), bytes, bytes + sizeof number);
    }
    return result;
}

converted to_strings(const h5::id& type, words values)
{
    converted result{{H5Tcopy(type), "type"}, {}};
    if (h5::check(H5Tis_variable_str(type), "type") > 0) {
        const char* const begin = reinterpret_cast<const char*>(values.data());
        result.bytes.assign(begin, begin + values.size_bytes());
        return result;
    }
    const std::size_t size = H5Tget_size(type);
    for (std::string text : values) {
        if (text.size() > size) throw std::invalid_argument(text + ": too long for its dataset");
        text.resize(size);
        result.bytes.insert(result.bytes.end(), text.begin(), text.end());
    }
    return result;
}

// A bool is an enumeration of one byte.
converted to_values(const h5::id& type, words values)
{
    switch (H5Tget_class(type)) {
        case H5T_STRING:
            return to_strings(type, values);
        case H5T_FLOAT:
            return H5Tget_size(type) == 4 ? to_numbers<float>(H5T_NATIVE_FLOAT, values)
                                          : to_numbers<double>(H5T_NATIVE_DOUBLE, values);
        case H5T_ENUM:
            return to_numbers<std::int8_t>(type, values);
        case H5T_INTEGER:
            return H5Tget_sign(type) == H5T_SGN_NONE
                       ? to_numbers<std::uint64_t>(H5T_NATIVE_UINT64, values)
                       : to_numbers<std::int64_t>(H5T_NATIVE_INT64, values);
        default:
            throw std::runtime_error("the dataset holds neither numbers nor strings");
    }
}

// HDF5 would store an out-of-range number as the nearest one in range.
H5T_conv_ret_t reject_out_of_range(H5T_conv_except_t, hid_t, hid_t, void*, void*, void*)
{
    return H5T_CONV_ABORT;
}

void append(const h5::id& dataset, const converted& values, hsize_t count)
{
    h5::id space(H5Dget_space(dataset), "dataspace");
    const auto first =
        static_cast<hsize_t>(h5::check(H5Sget_simple_extent_npoints(space), "dataspace"));
    const hsize_t size = first + count;
    const h5::id transfer(H5Pcreate(H5P_DATASET_XFER), "transfer");
    h5::check(H5Pset_type_conv_cb(transfer, reject_out_of_range, nullptr), "transfer");
    h5::check(H5Dset_extent(dataset, &size), "more values");
    space = h5::id(H5Dget_space(dataset), "dataspace");
    h5::check(H5Sselect_hyperslab(space, H5S_SELECT_SET, &first, nullptr, &count, nullptr),
              "range");
    const h5::id memory(H5Screate_simple(1, &count, nullptr), "dataspace");
    if (H5Dwrite(dataset, values.type, memory, space, transfer, values.bytes.data()) < 0) {
        const std::string reason = h5::reason();
        H5Dset_extent(dataset, &first);
        throw std::runtime_error("values: " + reason);
    }
}

void set_attribute(hid_t object, const std::string& name, const std::string& text)
{
    double number = 0;
    h5::id type(H5Tcopy(H5T_NATIVE_DOUBLE), "type");
    const void* value = &number;
    try {
        number = to_number<double>(text);
    } catch (const std::invalid_argument&) {
        type = h5::id(H5Tcopy(H5T_C_S1), "type");
        h5::check(H5Tset_size(type, text.size() + 1), "type");
        h5::check(H5Tset_cset(type, H5T_CSET_UTF8), "type");
        value = text.c_str();
    }
    if (h5::check(H5Aexists(object, name.c_str()), name) > 0) {
        h5::check(H5Adelete(object, name.c_str()), name);
    }
    const h5::id space(H5Screate(H5S_SCALAR), name);
    const h5::id attribute(H5Acreate2(object, name.c_str(), type, space, H5P_DEFAULT, H5P_DEFAULT),
                           name);
    h5::check(H5Awrite(attribute, type, value), name);
}

h5::id open_group(hid_t file, const char* name)
{
    const bool exists = h5::check(H5Lexists(file, name, H5P_DEFAULT), name) > 0;
    return {exists ? H5Gopen2(file, name, H5P_DEFAULT)
                   : H5Gcreate2(file, name, H5P_DEFAULT, H5P_DEFAULT, H5P_DEFAULT),
            name};
}

h5::id open_dataset(hid_t group, const char* name)
{
    if (h5::check(H5Lexists(group, name, H5P_DEFAULT), name) > 0) {
        return {H5Dopen2(group, name, H5P_DEFAULT), name};
    }
    const hsize_t none = 0;
    const hsize_t unlimited = H5S_UNLIMITED;
    const hsize_t chunk = 8192;
    const h5::id space(H5Screate_simple(1, &none, &unlimited), name);
    const h5::id creation(H5Pcreate(H5P_DATASET_CREATE), name);
    h5::check(H5Pset_chunk(creation, 1, &chunk), name);
    return {H5Dcreate2(group, name, H5T_NATIVE_DOUBLE, space, H5P_DEFAULT, creation, H5P_DEFAULT),
            name};
}

void sync(hid_t file, const char* path)
{
    void* descriptor = nullptr;
    h5::check(H5Fflush(file, H5F_SCOPE_LOCAL), path);
    h5::check(H5Fget_vfd_handle(file, H5P_DEFAULT, &descriptor), path);
    if (fsync(*static_cast<const int*>(descriptor)) != 0) {
        throw std::system_error(errno, std::generic_category(), path);
    }
}

void edit(const char* path, const char* group, const char* channel, const std::string& assignment,
          words values)
{
    const std::size_t equals = assignment.find('=');
    if (equals == std::string::npos) throw std::invalid_argument(assignment + ": not NAME=TEXT");
    h5::id f(H5Fopen(path, H5F_ACC_RDWR, H5P_DEFAULT), path);
    const h5::id g = open_group(f, group);
    const h5::id c = open_dataset(g, channel);
    const h5::id type(H5Dget_type(c), channel);
    append(c, to_values(type, values), values.size());
    set_attribute(c, assignment.substr(0, equals), assignment.substr(equals + 1));
    sync(f, path);
    f.close(path);
}

}  // namespace

int main(int argc, char** argv)
{
    return exit_status_of("edit", [&] {
        h5::be_silent();
        if (argc < 5) {
            throw std::invalid_argument("usage: edit FILE GROUP CHANNEL NAME=TEXT [VALUE...]");
        }
        edit(argv[1], argv[2], argv[3], argv[4], words(argv + 5, argv + argc));
    });
}
