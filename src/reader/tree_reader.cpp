#include "reader/tree_reader.h"

#include <algorithm>
#include <stdexcept>

#include "reader/segment_walk.h"
#include "reader/tree_builder.h"
#include "reader/tree_merge.h"

namespace tdms_impl {
namespace {

constexpr int truncated = 1;

// Whether a file of `size` bytes, whose first segment is not intact, ends within that segment. If
// not, `status` is what is wrong with it.
bool ends_within_first_segment(file_window& window, std::uint64_t size, int& status)
{
    const unsigned char* const lead_in =
        window.view(0, std::min<std::uint64_t>(size, lead_in_size));
    status = lead_in == nullptr ? TDMS_FILE_READ : check_lead_in(lead_in, size);
    if (status != TDMS_OK || size < lead_in_size) return status == TDMS_OK;
    std::uint64_t metadata_length = 0;
    std::uint64_t raw_length = 0;
    status = read_lead_in(lead_in, metadata_length, raw_length);
    const bool leads_backwards = raw_length > ~metadata_length;
    status = TDMS_FILE_READ;
    return metadata_length != 0 && !leads_backwards &&
           metadata_length + raw_length > size - lead_in_size;
}

// Adds the segments from `offset` to `size` to a tree, until `unwanted(segment)` returns a status.
// @return as walk_segments()
template <class Unwanted>
int add_segments(tree_builder& tree, option& file, file_window& window, std::uint64_t& offset,
                 std::uint64_t size, Unwanted unwanted)
{
    const int status = walk_segments(window, offset, size, [&](const segment& s) {
        if (const int reason = unwanted(s)) return reason;
        const int added = tree.add_segment(s.metadata);
        if (added == TDMS_OK) file.last_segment = s.begin();
        return added;
    });
    tree.settle();
    return status;
}

constexpr auto none_unwanted = [](const segment&) { return TDMS_OK; };

// Whether the last known segment is still where it was. If not, the file has been emptied and
// recorded again.
bool is_same_file(const option& file, file_window& window)
{
    if (file.file_size == 0) return true;
    const unsigned char* const lead_in = window.view(file.last_segment, lead_in_size);
    std::uint64_t metadata_length = 0;
    std::uint64_t raw_length = 0;
    return lead_in != nullptr && read_lead_in(lead_in, metadata_length, raw_length) == TDMS_OK &&
           file.last_segment + lead_in_size + metadata_length + raw_length == file.file_size;
}

// Calls what reads metadata, and turns the exception for an unknown data type into a status.
template <class Call>
int with_known_types(Call call)
{
    try {
        return call();
    } catch (const std::out_of_range&) {
        return TDMS_DATATYPE;
    }
}

}  // namespace

int read_tree(option& file, const std::string& path)
{
    file.stream = std::fopen(path.c_str(), "rb");
    if (file.stream == nullptr) return TDMS_FILE_PATH;
    // The window is the buffer.
    std::setvbuf(file.stream, nullptr, _IONBF, 0);
    const std::int64_t size =
        std::fseek(file.stream, 0, SEEK_END) == 0 ? std::ftell(file.stream) : -1;
    if (size < 0) return close_unreadable(file, TDMS_FILE_READ);
    file.file_size = static_cast<std::uint64_t>(size);
    file_window window(fileno(file.stream), file.file_size);
    tree_builder tree(file);
    std::uint64_t offset = 0;
    return close_unreadable(
        file, add_segments(tree, file, window, offset, file.file_size, none_unwanted));
}

int read_all_segments(option& file, int from, std::uint64_t size)
{
    file_window window(from, size);
    tree_builder tree(file, unknown_types::rejected);
    file.file_size = 0;
    return with_known_types(
        [&] { return add_segments(tree, file, window, file.file_size, size, none_unwanted); });
}

int read_intact_segments(option& file, int from, std::uint64_t size)
{
    file_window window(from, size);
    tree_builder tree(file, unknown_types::rejected);
    file.file_size = 0;
    int status = with_known_types([&] {
        return add_segments(tree, file, window, file.file_size, size, [size](const segment& s) {
            return s.complete_in(size) ? TDMS_OK : truncated;
        });
    });
    if (window.device_failed()) return TDMS_FILE_READ;
    const std::uint64_t intact = file.file_size;
    if (intact == 0 && status != TDMS_OK) {
        if (status != truncated && status != TDMS_FILE_READ) return status;
        return ends_within_first_segment(window, size, status) ? TDMS_OK : status;
    }
    if (status >= 0) return TDMS_OK;
    // The segment that is damaged may have left something in the tree.
    file.groups.clear();
    file.properties.clear();
    file.unquoted = false;
    return read_all_segments(file, from, intact);
}

int read_appended_segments(option& file, int from, std::uint64_t size)
{
    file_window window(from, size);
    file.replaced = file.replaced || size < file.file_size ||
                    (!is_same_file(file, window) && !window.device_failed());
    if (file.replaced) return TDMS_FILE_READ;
    static_cast<void>(walk_segments(window, file.file_size, size, [&](const segment& s) {
        if (!s.complete_in(size)) return truncated;
        option added{};
        tree_builder tree(added, unknown_types::rejected, &file);
        const int status = with_known_types([&] { return tree.add_segment(s.metadata); });
        if (status != TDMS_OK) return status;
        merge(file, added);
        file.last_segment = s.begin();
        return status;
    }));
    return window.device_failed() ? TDMS_FILE_READ : TDMS_OK;
}

}  // namespace tdms_impl
