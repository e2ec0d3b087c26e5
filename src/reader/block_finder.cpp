#include "reader/block_finder.h"

#include <stdexcept>

namespace tdms {
namespace {

void skip_properties(metadata_cursor& cursor)
{
    const std::uint32_t count = cursor.u32();
    for (std::uint32_t i = 0; i != count && cursor.ok(); ++i) read_property(cursor);
}

}  // namespace

int block_finder::add_segment(const segment& where)
{
    metadata_cursor cursor(where.metadata);
    std::uint64_t before = 0;
    bool member_met = false;
    const std::uint32_t object_count = cursor.u32();
    for (std::uint32_t i = 0; i != object_count && cursor.ok(); ++i) {
        channel* const member = members_.find(cursor.string());
        const raw_data_index index = read_raw_data_index(cursor);
        if (!cursor.ok()) break;
        // Deliberate: behind a channel of the group every object is taken for one, and one that is
        // not ends the call as a failed lookup.
        if (member == nullptr && member_met) throw std::out_of_range("map::at");
        if (member == nullptr) {
            // Deliberate: values of another group's channel in front of the group's are refused.
            if (index.form != index_none) return TDMS_CHANNEL_DATA_READ;
        } else {
            member_met = true;
            std::uint64_t size = 0;
            if (const int status = apply(index, *member, size)) return status;
            if (member == &target_) return add_block(index, where, before, size);
            if (__builtin_add_overflow(before, size, &before)) return TDMS_CHANNEL_DATA_READ;
        }
        skip_properties(cursor);
    }
    return cursor.ok() ? TDMS_OK : TDMS_CHANNEL_DATA_READ;
}

// The size of the member's block. It is kept for a later segment with the same index.
int block_finder::apply(const raw_data_index& index, channel& member, std::uint64_t& size)
{
    switch (index.form) {
        case index_none:
            return TDMS_OK;
        case index_as_before:
            break;
        case index_fixed_size:
            if (__builtin_mul_overflow(index.value_count, DataSize.at(index.data_type),
                                       &member.chunk_size)) {
                return TDMS_CHANNEL_DATA_READ;
            }
            break;
        case index_string:
            member.chunk_size = index.byte_count;
            break;
        default:
            return TDMS_INDEX;
    }
    size = member.chunk_size;
    return TDMS_OK;
}

int block_finder::add_block(const raw_data_index& index, const segment& where, std::uint64_t before,
                            std::uint64_t size)
{
    if (index.form == index_string) target_.chunk_count = index.value_count;
    const bool texts = index.form == index_string ||
                       (index.form == index_as_before && target_.data_type == TDMS_TYPE_STRING);
    const std::uint64_t text_count = texts ? target_.chunk_count : 0;
    if (size == 0 && text_count == 0) return TDMS_OK;
    if (size > where.raw_length || before > where.raw_length - size) return TDMS_CHANNEL_DATA_READ;
    found_.push_back({where.raw_offset + before, size, text_count, texts});
    return TDMS_OK;
}

}  // namespace tdms
