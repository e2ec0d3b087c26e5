#pragma once

#include <vector>

#include "core/object_model.h"
#include "reader/repeated_metadata.h"
#include "reader/segment_walk.h"

namespace tdms_impl {

/// Where one segment holds values of a channel. A block of strings is a table of end offsets and
/// the bytes of the strings; any other block is values back to back.
struct block {
    std::uint64_t offset;  // in the file
    std::uint64_t size;
    std::uint64_t text_count;
    bool texts;
};

/// Finds one channel's block in one segment after the other. A block follows the blocks of those
/// channels of the same group that the segment lists before it.
class block_finder {
  public:
    block_finder(channel& target, std::vector<block>& found)
        : target_(target),
          members_(target.group->channels),
          found_(found),
          text_count_(target.chunk_count)
    {
    }

    /// Adds the channel's block in this segment, if it has one. An empty block may be anywhere;
    /// any other lies within the segment's raw data.
    int add_segment(const segment& where);

    // For repeated_metadata.
    struct listing {
        channel* object;  // null for one that is no channel of the group
        raw_data_index index;
    };
    int find(std::string_view path, metadata_cursor& cursor, listing& found);
    int take(const listing& found);
    void property(const property_entry&) {}

  private:
    static int apply(const raw_data_index& index, channel& member, std::uint64_t& size);
    int add_block(const raw_data_index& index, std::uint64_t size);

    channel& target_;
    object_map<channel>& members_;
    std::vector<block>& found_;
    std::uint64_t text_count_;  // of the latest index of strings
    segment segment_{};         // the one that is being walked over
    std::uint64_t before_ = 0;  // bytes of the blocks before the next one in it
    bool member_met_ = false;   // in it
    repeated_metadata<listing> seen_;
};

}  // namespace tdms_impl
