// repack: the converter of ../to_hdf5.cpp for HDF5 files.
//
//     repack FILE OUTPUT
//
// Copies groups, datasets of one dimension, and attributes. The new datasets are chunked, have
// unlimited size and use the types of this machine; strings get a variable length. A dataset is
// copied in pieces, so the memory does not depend on its length.
#include <algorithm>
#include <cstddef>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "../support/exit_status.hpp"
#include "../support/hdf5.hpp"

namespace {

constexpr hsize_t at_once = 65536;

// Reads values of any type, and writes them: strings with variable length, others with the types of
// this machine. HDF5 converts numbers, but strings of fixed length have to be converted here.
template <class Read, class Write>
void transfer(const h5::id& stored, const h5::id& space, Read read, Write write)
{
    const auto count =
        static_cast<std::size_t>(h5::check(H5Sget_simple_extent_npoints(space), "size"));
    if (H5Tget_class(stored) == H5T_STRING && h5::check(H5Tis_variable_str(stored), "type") == 0) {
        const std::size_t size = H5Tget_size(stored);
        std::vector<char> bytes(count * size);
        read(stored, bytes.data());
        std::vector<std::string> texts;
        for (std::size_t i = 0; i != count; ++i) {
            texts.emplace_back(&bytes[i * size], strnlen(&bytes[i * size], size));
        }
        std::vector<const char*> pointers;
        pointers.reserve(count);
        for (const std::string& text : texts) pointers.push_back(text.c_str());
        write(pointers.data());
        return;
    }
    const h5::id type(H5Tget_native_type(stored, H5T_DIR_DEFAULT), "type");
    std::vector<char> bytes(count * H5Tget_size(type));
    read(type, bytes.data());
    write(bytes.data());
    if (h5::check(H5Tdetect_class(type, H5T_VLEN), "type") > 0 ||
        h5::check(H5Tis_variable_str(type), "type") > 0) {
        h5::check(H5Dvlen_reclaim(type, space, H5P_DEFAULT, bytes.data()), "strings");
    }
}

h5::id output_type(const h5::id& stored)
{
    if (H5Tget_class(stored) != H5T_STRING)
        return {H5Tget_native_type(stored, H5T_DIR_DEFAULT), "type"};
    h5::id type(H5Tcopy(H5T_C_S1), "string type");
    h5::check(H5Tset_size(type, H5T_VARIABLE), "string type");
    h5::check(H5Tset_cset(type, H5T_CSET_UTF8), "string type");
    return type;
}

void copy_attribute(const h5::id& from, const h5::id& to)
{
    std::string name(
        static_cast<std::size_t>(h5::check(H5Aget_name(from, 0, nullptr), "attribute")), '\0');
    h5::check(H5Aget_name(from, name.size() + 1, name.data()), "attribute");
    const h5::id stored(H5Aget_type(from), name);
    const h5::id space(H5Aget_space(from), name);
    const h5::id type = output_type(stored);
    const h5::id attribute(H5Acreate2(to, name.c_str(), type, space, H5P_DEFAULT, H5P_DEFAULT),
                           name);
    transfer(
        stored, space, [&](hid_t t, void* values) { h5::check(H5Aread(from, t, values), name); },
        [&](const void* values) { h5::check(H5Awrite(attribute, type, values), name); });
}

void copy_attributes(const h5::id& from, const h5::id& to)
{
    H5O_info_t facts;
    h5::check(H5Oget_info(from, &facts), "attributes");
    for (hsize_t i = 0; i != facts.num_attrs; ++i) {
        copy_attribute(
            {H5Aopen_by_idx(from, ".", H5_INDEX_NAME, H5_ITER_INC, i, H5P_DEFAULT, H5P_DEFAULT),
             "attribute"},
            to);
    }
}

void copy_dataset(const h5::id& from, const h5::id& group, const std::string& name)
{
    const h5::id stored(H5Dget_type(from), name);
    const h5::id source(H5Dget_space(from), name);
    if (H5Sget_simple_extent_ndims(source) != 1) {
        throw std::runtime_error(name + ": does not have one dimension");
    }
    const auto size = static_cast<hsize_t>(h5::check(H5Sget_simple_extent_npoints(source), name));
    const hsize_t chunk = std::clamp<hsize_t>(size, 1, at_once);
    const hsize_t unlimited = H5S_UNLIMITED;
    const h5::id type = output_type(stored);
    const h5::id target(H5Screate_simple(1, &size, &unlimited), name);
    const h5::id creation(H5Pcreate(H5P_DATASET_CREATE), name);
    h5::check(H5Pset_chunk(creation, 1, &chunk), name);
    const h5::id to(
        H5Dcreate2(group, name.c_str(), type, target, H5P_DEFAULT, creation, H5P_DEFAULT), name);
    copy_attributes(from, to);

    for (hsize_t first = 0; first < size; first += chunk) {
        const hsize_t count = std::min(chunk, size - first);
        const h5::id part(H5Screate_simple(1, &count, nullptr), name);
        h5::check(H5Sselect_hyperslab(source, H5S_SELECT_SET, &first, nullptr, &count, nullptr),
                  name);
        h5::check(H5Sselect_hyperslab(target, H5S_SELECT_SET, &first, nullptr, &count, nullptr),
                  name);
        transfer(
            stored, part,
            [&](hid_t t, void* v) {
                h5::check(H5Dread(from, t, part, source, H5P_DEFAULT, v), name);
            },
            [&](const void* v) {
                h5::check(H5Dwrite(to, type, part, target, H5P_DEFAULT, v), name);
            });
    }
}

std::string link_name(const h5::id& group, hsize_t index)
{
    const ssize_t size = h5::check(
        H5Lget_name_by_idx(group, ".", H5_INDEX_NAME, H5_ITER_INC, index, nullptr, 0, H5P_DEFAULT),
        "link");
    std::string name(static_cast<std::size_t>(size), '\0');
    h5::check(H5Lget_name_by_idx(group, ".", H5_INDEX_NAME, H5_ITER_INC, index, name.data(),
                                 name.size() + 1, H5P_DEFAULT),
              "link");
    return name;
}

void copy_group(const h5::id& from, const h5::id& to)
{
    copy_attributes(from, to);
    H5G_info_t facts;
    h5::check(H5Gget_info(from, &facts), "group");
    for (hsize_t i = 0; i != facts.nlinks; ++i) {
        const std::string name = link_name(from, i);
        const h5::id object(H5Oopen(from, name.c_str(), H5P_DEFAULT), name);
        if (H5Iget_type(object) == H5I_GROUP) {
            copy_group(object,
                       {H5Gcreate2(to, name.c_str(), H5P_DEFAULT, H5P_DEFAULT, H5P_DEFAULT), name});
        } else if (H5Iget_type(object) == H5I_DATASET) {
            copy_dataset(object, to, name);
        }
    }
}

void repack(const char* from, const char* to)
{
    const h5::id source(H5Fopen(from, H5F_ACC_RDONLY, H5P_DEFAULT), from);
    const h5::id access(H5Pcreate(H5P_FILE_ACCESS), to);
    h5::check(H5Pset_libver_bounds(access, H5F_LIBVER_LATEST, H5F_LIBVER_LATEST), to);
    h5::id file(H5Fcreate(to, H5F_ACC_EXCL, H5P_DEFAULT, access), to);
    {
        const h5::id source_root(H5Gopen2(source, "/", H5P_DEFAULT), from);
        const h5::id root(H5Gopen2(file, "/", H5P_DEFAULT), to);
        copy_group(source_root, root);
    }
    file.close(to);
}

}  // namespace

int main(int argc, char** argv)
{
    return exit_status_of("repack", [&] {
        h5::be_silent();
        if (argc != 3) throw std::invalid_argument("usage: repack FILE OUTPUT");
        repack(argv[1], argv[2]);
    });
}
