// to_hdf5: converts a measurement file to HDF5.
//
//     to_hdf5 FILE OUTPUT
//
// Groups become groups, channels datasets of the same type, properties attributes. Strings have a
// variable length and end at their first NUL; bools are the usual enumeration. Times are
// nanoseconds in 64 bits, as the attribute "units" states, or "NAME units" for a property NAME. In
// names, "_" replaces what HDF5 does not allow. A channel is copied in pieces, so the memory does
// not depend on its length.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <tdms.hpp>
#include <type_traits>
#include <variant>
#include <vector>

#include "support/exit_status.hpp"
#include "support/hdf5.hpp"

namespace {

constexpr std::uint64_t at_once = 65536;
constexpr const char* units = "ns since 1970-01-01T00:00:00Z";

std::string link_name(std::string name)
{
    std::replace(name.begin(), name.end(), '/', '_');
    return name.empty() || name == "." ? "_" : name;
}

template <class T>
h5::id type_of()
{
    if constexpr (std::is_same_v<T, std::string>) {
        h5::id type(H5Tcopy(H5T_C_S1), "string type");
        h5::check(H5Tset_size(type, H5T_VARIABLE), "string type");
        h5::check(H5Tset_cset(type, H5T_CSET_UTF8), "string type");
        return type;
    } else if constexpr (std::is_same_v<T, bool>) {
        h5::id type(H5Tenum_create(H5T_NATIVE_INT8), "bool type");
        const std::int8_t values[] = {0, 1};
        h5::check(H5Tenum_insert(type, "FALSE", &values[0]), "bool type");
        h5::check(H5Tenum_insert(type, "TRUE", &values[1]), "bool type");
        return type;
    } else if constexpr (std::is_floating_point_v<T>) {
        return {H5Tcopy(sizeof(T) == 4 ? H5T_NATIVE_FLOAT : H5T_NATIVE_DOUBLE), "float type"};
    } else {
        h5::id type(H5Tcopy(std::is_unsigned_v<T> ? H5T_NATIVE_UINT64 : H5T_NATIVE_INT64), "type");
        h5::check(H5Tset_size(type, sizeof(T)), "integer type");
        return type;
    }
}

// Writes an attribute, or replaces the one of that name.
template <class T>
void write_attribute(hid_t to, const std::string& name, const T& value)
{
    const h5::id type = type_of<T>();
    const h5::id space(H5Screate(H5S_SCALAR), name);
    if (h5::check(H5Aexists(to, name.c_str()), name) > 0) {
        h5::check(H5Adelete(to, name.c_str()), name);
    }
    const h5::id attribute(H5Acreate2(to, name.c_str(), type, space, H5P_DEFAULT, H5P_DEFAULT),
                           name);
    if constexpr (std::is_same_v<T, std::string>) {
        const char* const text = value.c_str();
        h5::check(H5Awrite(attribute, type, &text), name);
    } else {
        h5::check(H5Awrite(attribute, type, &value), name);
    }
}

// An attribute cannot have attributes, so the unit of a time is a second attribute.
void write_attributes(hid_t to, const tdms::object& from)
{
    for (const auto& [key, value] : from.properties()) {
        const std::string name = key.empty() ? "_" : key;
        const auto write = [&](const auto& v) {
            using T = std::decay_t<decltype(v)>;
            if constexpr (!std::is_same_v<T, std::monostate>) write_attribute(to, name, v);
            if constexpr (std::is_same_v<T, tdms::time>) {
                write_attribute(to, name + " units", std::string(units));
            }
        };
        std::visit(write, value);
    }
}

template <class T>
void convert_as(hid_t group, const tdms::channel& from)
{
    const std::string name = link_name(from.name());
    const hsize_t size = from.size();
    const hsize_t chunk = std::clamp<hsize_t>(size, 1, at_once);
    const hsize_t unlimited = H5S_UNLIMITED;
    const h5::id type = type_of<T>();
    const h5::id space(H5Screate_simple(1, &size, &unlimited), name);
    const h5::id creation(H5Pcreate(H5P_DATASET_CREATE), name);
    h5::check(H5Pset_chunk(creation, 1, &chunk), name);
    const h5::id dataset(
        H5Dcreate2(group, name.c_str(), type, space, H5P_DEFAULT, creation, H5P_DEFAULT), name);
    write_attributes(dataset, from);
    if constexpr (std::is_same_v<T, tdms::time>) {
        write_attribute(dataset, "units", std::string(units));
    }

    const auto values = std::make_unique<T[]>(chunk);
    for (hsize_t first = 0; first < size; first += chunk) {
        const hsize_t count = std::min(chunk, size - first);
        from.read(first, std::span(values.get(), count));
        const h5::id part(H5Screate_simple(1, &count, nullptr), name);
        h5::check(H5Sselect_hyperslab(space, H5S_SELECT_SET, &first, nullptr, &count, nullptr),
                  name);
        const void* data = values.get();
        std::vector<const char*> texts;
        if constexpr (std::is_same_v<T, std::string>) {
            for (hsize_t i = 0; i != count; ++i) texts.push_back(values[i].c_str());
            data = texts.data();
        }
        h5::check(H5Dwrite(dataset, type, part, space, H5P_DEFAULT, data), name);
    }
}

// A channel without a type has no values, and becomes an empty dataset of doubles.
void convert(hid_t group, const tdms::channel& from)
{
    const bool typed = tdms::with_type(from.type(), [&]<class T>() { convert_as<T>(group, from); });
    if (!typed) convert_as<double>(group, from);
}

void convert_file(const char* from, const char* to)
{
    const tdms::file source(from);
    const h5::id access(H5Pcreate(H5P_FILE_ACCESS), to);
    h5::check(H5Pset_libver_bounds(access, H5F_LIBVER_LATEST, H5F_LIBVER_LATEST), to);
    h5::id file(H5Fcreate(to, H5F_ACC_EXCL, H5P_DEFAULT, access), to);
    write_attributes(file, source);
    for (const tdms::group& g : source.groups()) {
        const h5::id group(
            H5Gcreate2(file, link_name(g.name()).c_str(), H5P_DEFAULT, H5P_DEFAULT, H5P_DEFAULT),
            g.name());
        write_attributes(group, g);
        for (const tdms::channel& c : g.channels()) convert(group, c);
    }
    file.close(to);
}

}  // namespace

int main(int argc, char** argv)
{
    return exit_status_of("to_hdf5", [&] {
        h5::be_silent();
        if (argc != 3) throw std::invalid_argument("usage: to_hdf5 FILE OUTPUT");
        convert_file(argv[1], argv[2]);
    });
}
