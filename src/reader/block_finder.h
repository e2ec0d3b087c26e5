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
    std::uint64_t string_count;
    bool strings;
};

/// Finds one channel's block segment by segment. A block follows the blocks of those channels of
/// the same group that the segment lists before it.
class block_finder {
  public:
    block_finder(channel& target, std::vector<block>& found)
        : target_(target),
          members_(target.group->channels),
          found_(found),
          string_count_(target.chunk_count)
    {
    }

    /// Adds the channel's block in this segment, if it has one. An empty block may be anywhere;
    /// any other lies within the segment's raw data.
    /// @return 0, or less if the block cannot be found
    int add_segment(const segment& where);

    // For repeated_metadata.
    int find(const listed_object& listed, channel*& member);
    int take(const found_object<channel>& found);
    void property(const property_entry&) {}

  private:
    static int apply(const raw_data_index& index, channel& member, std::uint64_t& size);
    int add_block(const raw_data_index& index, std::uint64_t size);

    channel& target_;
    object_map<channel>& members_;
    std::vector<block>& found_;
    std::uint64_t string_count_;  // of the latest index of strings
    segment segment_{};           // the one that is being walked over
    std::uint64_t before_ = 0;    // bytes of the blocks before the next one in it
    bool member_met_ = false;     // in it
    repeated_metadata<channel> seen_;
};

}  // namespace tdms_impl
