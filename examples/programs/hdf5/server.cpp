// server: the server of ../server.cpp for HDF5 files.
//
//     server FOLDER [PORT]        default: any free port, which it prints
//
// Files in single-writer mode (SWMR) can be read while they are recorded. Integers with an
// attribute "units" are times. HDF5 allows one thread at a time, and refreshing a dataset disturbs
// other threads that read it, so requests are answered one after the other.
#include <sys/stat.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "../support/conversions.hpp"
#include "../support/exit_status.hpp"
#include "../support/hdf5.hpp"
#include "../support/line_server.hpp"
#include "../support/range_request.hpp"

namespace {

// Some values of a dataset.
struct range {
    hid_t dataset;
    h5::id stored;
    h5::id memory;
    std::size_t count;
};

range select(const h5::id& dataset, const range_request& r)
{
    h5::check(H5Drefresh(dataset), r.channel);
    const hsize_t first = r.first;
    const hsize_t count = r.count;
    h5::id space(H5Dget_space(dataset), r.channel);
    const auto size =
        static_cast<hsize_t>(h5::check(H5Sget_simple_extent_npoints(space), r.channel));
    if (first > size || count > size - first) {
        throw std::runtime_error(r.channel + ": the range ends beyond the last value");
    }
    h5::check(H5Sselect_hyperslab(space, H5S_SELECT_SET, &first, nullptr, &count, nullptr),
              r.channel);
    return {dataset, std::move(space), {H5Screate_simple(1, &count, nullptr), r.channel}, r.count};
}

void read(const range& r, hid_t type, void* values)
{
    h5::check(H5Dread(r.dataset, type, r.memory, r.stored, H5P_DEFAULT, values), "values");
}

template <class T>
std::string number_lines(const range& r, hid_t type)
{
    std::vector<T> values(r.count);
    read(r, type, values.data());
    std::string text;
    for (const T value : values) text += to_text(value) + '\n';
    return text;
}

std::string variable_string_lines(const range& r, const h5::id& type)
{
    std::vector<char*> values(r.count);
    read(r, type, values.data());
    std::string text;
    for (const char* const value : values) {
        text += to_text(std::string(value == nullptr ? "" : value)) + '\n';
    }
    h5::check(H5Dvlen_reclaim(type, r.memory, H5P_DEFAULT, values.data()), "strings");
    return text;
}

std::string fixed_string_lines(const range& r, const h5::id& type)
{
    const std::size_t size = H5Tget_size(type);
    std::vector<char> values(r.count * size);
    read(r, type, values.data());
    std::string text;
    for (std::size_t i = 0; i != r.count; ++i) {
        const char* const value = values.data() + i * size;
        text += to_text(std::string(value, strnlen(value, size))) + '\n';
    }
    return text;
}

// The open files, for one thread at a time.
class recordings {
  public:
    explicit recordings(std::string folder) : folder_(std::move(folder)) {}

    std::string answer(const range_request& r)
    {
        const std::lock_guard lock(mutex_);
        const h5::id group(H5Gopen2(open(r.file), r.group.c_str(), H5P_DEFAULT), r.group);
        const h5::id dataset(H5Dopen2(group, r.channel.c_str(), H5P_DEFAULT), r.channel);
        const range selected = select(dataset, r);
        const h5::id type(H5Dget_type(dataset), r.channel);
        return "ok " + to_text(r.count) + '\n' + lines(selected, type);
    }

  private:
    static std::string lines(const range& r, const h5::id& type)
    {
        if (H5Tget_class(type) == H5T_INTEGER && H5Aexists(r.dataset, "units") > 0) {
            return number_lines<moment>(r, H5T_NATIVE_INT64);
        }
        if (H5Tget_class(type) != H5T_STRING) return number_lines<double>(r, H5T_NATIVE_DOUBLE);
        const bool variable = h5::check(H5Tis_variable_str(type), "type") > 0;
        return variable ? variable_string_lines(r, type) : fixed_string_lines(r, type);
    }

    // Identifies files by device and inode: another file can take over a name. Files in older
    // formats have no single-writer mode.
    const h5::id& open(const std::string& name)
    {
        constexpr std::size_t most_files = 16;
        const std::string path = folder_ + '/' + name;
        struct stat facts {};
        if (stat(path.c_str(), &facts) != 0) {
            throw std::system_error(errno, std::generic_category(), name);
        }
        const std::pair file_id(facts.st_dev, facts.st_ino);
        if (const auto known = files_.find(file_id); known != files_.end()) return known->second;
        if (files_.size() == most_files) files_.clear();
        hid_t file = H5Fopen(path.c_str(), H5F_ACC_RDONLY | H5F_ACC_SWMR_READ, H5P_DEFAULT);
        if (file < 0) file = H5Fopen(path.c_str(), H5F_ACC_RDONLY, H5P_DEFAULT);
        return files_.emplace(file_id, h5::id(file, path)).first->second;
    }

    std::mutex mutex_;
    std::string folder_;
    std::map<std::pair<dev_t, ino_t>, h5::id> files_;
};

}  // namespace

int main(int argc, char** argv)
{
    return exit_status_of("server", [&] {
        if (argc < 2 || argc > 3) throw std::invalid_argument("usage: server FOLDER [PORT]");
        line_server server(argc > 2 ? to_number<std::uint16_t>(argv[2]) : std::uint16_t(0));
        recordings files(argv[1]);
        server.run(8, [&] {
            h5::be_silent();
            return [&](const std::string& line) { return files.answer(to_request(line)); };
        });
    });
}
