#pragma once

#include <vector>

#include "reader/metadata.h"
#include "reader/object_finder.h"
#include "reader/segment_walk.h"

namespace tdms {

/// Where one segment holds values of a channel. A block of texts is a table of end offsets and the
/// bytes of the texts; any other block is values back to back.
struct block {
    std::uint64_t offset;  // in the file
    std::uint64_t size;
    std::uint64_t text_count;
    bool texts;
};

/// Finds one channel's block in one segment after the other. A block begins behind the blocks of
/// those channels of the same group that the segment lists before it.
class block_finder {
  public:
    block_finder(channel& target, std::vector<block>& found)
        : target_(target), members_(target.group->channels), found_(found)
    {
    }

    /// Adds the channel's block in this segment, if it has one. An empty block may be anywhere;
    /// any other lies within the segment's raw data.
    int add_segment(const segment& where);

  private:
    static int apply(const raw_data_index& index, channel& member, std::uint64_t& size);
    int add_block(const raw_data_index& index, const segment& where, std::uint64_t before,
                  std::uint64_t size);

    channel& target_;
    object_finder<channel> members_;
    std::vector<block>& found_;
};

}  // namespace tdms
