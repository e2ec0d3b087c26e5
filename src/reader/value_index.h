#pragma once

#include <vector>

#include "core/object_map.h"
#include "reader/repeated_metadata.h"
#include "reader/segment_walk.h"

namespace tdms_impl {

/// Blocks of a channel's values of equal size at equal distances, as a steady recording makes them.
/// A block of strings is a table of end offsets and the bytes of the strings; any other block is
/// values back to back.
struct block_run {
    std::uint64_t first;     // number of the first block's first value in the channel
    std::uint64_t offset;    // of the first block in the file
    std::uint64_t distance;  // from one block to the next
    std::uint64_t blocks;
    std::uint64_t values;  // in each block, never 0
    std::uint64_t size;    // of each block in bytes
};

/// What a file holds of one channel: where its values are, numbered from 0 without gaps.
class stored_channel {
  public:
    std::uint32_t data_type() const { return data_type_; }
    std::uint64_t count() const { return count_; }
    /// How many values the file states that are not in it, or cannot be located.
    std::uint64_t lost() const { return lost_; }

    /// Calls `use(run, block, first, count)` for each block that the range reaches, with the part
    /// of it, until one returns a status other than 0. REQUIRES: first + count <= count().
    template <class Use>
    int for_each_block(std::uint64_t first, std::uint64_t count, Use use) const
    {
        for (auto run = run_of(first); count != 0; ++run) {
            std::uint64_t block = (first - run->first) / run->values;
            std::uint64_t skipped = (first - run->first) % run->values;
            for (; block != run->blocks && count != 0; ++block, skipped = 0) {
                const std::uint64_t part = std::min(count, run->values - skipped);
                const std::uint64_t offset = run->offset + block * run->distance;
                if (const int status = use(*run, offset, skipped, part)) return status;
                first += part;
                count -= part;
            }
        }
        return TDMS_OK;
    }

  private:
    friend class value_index;

    std::vector<block_run>::const_iterator run_of(std::uint64_t value) const;
    void add_block(std::uint64_t offset, std::uint64_t values, std::uint64_t size);

    std::vector<block_run> runs_;
    std::uint64_t count_ = 0;
    std::uint64_t lost_ = 0;
    std::uint32_t data_type_ = 0;
    // The latest explicit index: whether there was one, and what it stated.
    bool stated_ = false;
    bool strings_ = false;
    bool size_known_ = true;
    std::uint64_t latest_count_ = 0;
    std::uint64_t latest_size_ = 0;
};

/// Where the values of every channel of a file are.
///
/// The object list of a segment names the blocks in the order in which they are stored, whatever
/// their groups, so each follows the blocks listed before it. Some segments state more bytes than
/// they hold. What a save can have left out then decides which blocks are stored:
/// - Of several timestamp channels, save_file() stores only the last one's values.
/// - A string channel with a count but no table was not staged.
/// - A channel that states the count of its previous index again may not have been staged. If the
///   others account for the bytes exactly, only those are stored.
/// What stays undecided counts as lost, for that segment only.
class value_index {
  public:
    /// Adds the segments up to `size`, which a walk has found intact before. If it cannot, it
    /// forgets all of them, and the next call begins again.
    /// @return 0, or the status of what is wrong: the file has changed, or the device fails
    int update(int file, std::uint64_t size);

    /// What the file holds of the channel at that path; null if it does not list it.
    const stored_channel* find(std::string_view path) { return channels_.find(path); }

    // For repeated_metadata.
    int find(const listed_object& listed, stored_channel*& found);
    int take(const found_object<stored_channel>& found);
    void property(const property_entry&) {}

  private:
    // A block that a segment states.
    struct stated_block {
        stored_channel* owner;  // null for an object that is no channel
        std::uint64_t values;
        std::uint64_t size;
        bool size_known;
        bool readable;  // of the form that the channel's type has
        bool repeated;  // the index, or its count: perhaps not staged
    };

    void forget();
    int add_segment(const segment& s);
    void place_blocks(const segment& s);
    std::uint64_t total_size(bool with_repeated) const;
    bool only_timestamps() const;
    template <class IsThere>
    void add_blocks(const segment& s, IsThere is_there);

    object_map<stored_channel> channels_;
    std::vector<stated_block> blocks_;  // of the segment that is being walked over
    std::uint64_t stated_size_ = 0;     // the bytes of those whose size is known
    bool sizes_known_ = true;           // of all of them
    repeated_metadata<stored_channel> seen_;
    std::uint64_t end_ = 0;  // of the segments added
};

}  // namespace tdms_impl
