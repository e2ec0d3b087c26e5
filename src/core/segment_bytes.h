#pragma once

#include <span>
#include <vector>

#include "core/byte_vector.h"

namespace tdms_impl {

/// The bytes of a segment to be written. Metadata and small blocks are joined in one buffer, which
/// keeps its capacity: a call for each would cost more than copying them. Large blocks stay where
/// they are staged: copying them would cost more than a call for each.
class segment_bytes {
  public:
    using piece = std::span<const unsigned char>;

    /// How many bytes of a block are joined.
    static std::size_t joined_size(const byte_vector& block)
    {
        return block.size() < least_large ? block.size() : 0;
    }

    byte_vector& joined() { return joined_; }
    std::size_t size() const { return joined_.size() + large_size_; }

    void clear()
    {
        joined_.clear();
        large_.clear();
        large_size_ = 0;
    }

    /// REQUIRES: a large block stays as it is until the segment is written or cleared.
    void add_block(const byte_vector& block)
    {
        if (block.size() < least_large) {
            append(joined_, block.data(), block.size());
            return;
        }
        large_.push_back({joined_.size(), block});
        large_size_ += block.size();
    }

    /// Calls `use(piece)` for each piece in turn, until it returns false.
    /// @return whether it never did
    template <class Use>
    bool for_each_piece(Use use) const
    {
        std::size_t done = 0;
        for (const large_block& block : large_) {
            if (!use_joined(done, block.position, use) || !use(block.bytes)) return false;
            done = block.position;
        }
        return use_joined(done, joined_.size(), use);
    }

  private:
    static constexpr std::size_t least_large = std::size_t{64} << 10;

    struct large_block {
        std::size_t position;  // how many of the joined bytes precede it
        piece bytes;
    };

    template <class Use>
    bool use_joined(std::size_t from, std::size_t to, Use use) const
    {
        return from == to || use(piece(joined_.data() + from, to - from));
    }

    byte_vector joined_;
    std::vector<large_block> large_;
    std::size_t large_size_ = 0;
};

}  // namespace tdms_impl
