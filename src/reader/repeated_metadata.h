#pragma once

#include <array>
#include <cstring>
#include <vector>

#include "reader/object_walk.h"

namespace tdms_impl {

/// Hands what parsing found once to `visitor.take(listing)`, one after the other, until that gives
/// a status other than 0. @return that status
template <class Listing, class Visitor>
int take_all(const std::vector<Listing>& known, Visitor& visitor)
{
    for (const Listing& listing : known) {
        if (const int status = visitor.take(listing)) return status;
    }
    return TDMS_OK;
}

/// Walks over the metadata of one segment after the other, and parses none that equals one of the
/// latest two kinds: a steady recording repeats the metadata of its saves byte for byte, and a save
/// makes up to two segments.
///
/// What is remembered is what parsing finds: the objects, which must stay where they are, and their
/// raw data indexes. What these do is done anew each time, since it may depend on the segments
/// before. Properties change only what they set, but metadata that has any is rare: it is parsed.
/// @tparam Listing an object with its raw data index
template <class Listing>
class repeated_metadata {
  public:
    using listing_list = std::vector<Listing>;

    /// What parsing found in these bytes; null if they are not remembered. in_a_row() counts how
    /// often the same metadata was recognised; what lists no object between does not count.
    const listing_list* recognise(std::span<const unsigned char> metadata)
    {
        // The segments of a save take turns.
        if (kinds_[1 - latest_].equals(metadata)) {
            latest_ = 1 - latest_;
        } else if (!kinds_[latest_].equals(metadata)) {
            return nullptr;
        }
        const listing_list* const known = &kinds_[latest_].listings;
        if (!known->empty()) {
            in_a_row_ = known == row_ ? in_a_row_ + 1 : 1;
            row_ = known;
        }
        return known;
    }
    std::uint64_t in_a_row() const { return in_a_row_; }

    /// Parses metadata and remembers it. Calls `visitor.find(path, cursor, listing)` for each
    /// object, which finds or adds the object and reads its index, then `visitor.take(listing)`,
    /// and `visitor.property(entry)` for each property. A status other than 0 ends the walk.
    /// @return that status, or TDMS_CHANNEL_READ when the metadata ends too early
    template <class Visitor>
    int parse(std::span<const unsigned char> metadata, Visitor& visitor)
    {
        row_ = nullptr;
        kind& parsed = kinds_[1 - latest_];
        parsed.bytes.clear();
        parsed.listings.clear();
        recorder<Visitor> recording{visitor, parsed.listings, metadata.size() <= most_remembered};
        const int status = walk_objects(metadata, recording);
        // A visitor that ends the walk by a status of its own, above 0, has seen all that it needs.
        if (status >= TDMS_OK && recording.complete) {
            parsed.bytes.assign(metadata.begin(), metadata.end());
            latest_ = 1 - latest_;
        }
        return status;
    }

    /// Takes what is remembered, and parses what is not.
    template <class Visitor>
    int walk(std::span<const unsigned char> metadata, Visitor& visitor)
    {
        const listing_list* const known = recognise(metadata);
        return known == nullptr ? parse(metadata, visitor) : take_all(*known, visitor);
    }

    /// Forgets everything and frees its memory.
    void forget()
    {
        kinds_ = {};
        row_ = nullptr;
    }

  private:
    // In much larger metadata, parsing costs little beside what it is for, but remembering much
    // memory.
    static constexpr std::size_t most_remembered = std::size_t{1} << 20;

    struct kind {
        std::vector<unsigned char> bytes;  // empty if nothing is remembered
        listing_list listings;

        bool equals(std::span<const unsigned char> metadata) const
        {
            return bytes.size() == metadata.size() &&
                   std::memcmp(bytes.data(), metadata.data(), metadata.size()) == 0;
        }
    };

    template <class Visitor>
    struct recorder {
        Visitor& visitor;
        listing_list& listings;
        bool complete;  // the listings, and they are all that there is

        int object(std::string_view path, metadata_cursor& cursor)
        {
            Listing listing{};
            if (const int status = visitor.find(path, cursor, listing)) return status;
            if (complete) listings.push_back(listing);
            return visitor.take(listing);
        }
        void property(const property_entry& entry)
        {
            complete = false;
            visitor.property(entry);
        }
    };

    std::array<kind, 2> kinds_;
    std::size_t latest_ = 0;
    const listing_list* row_ = nullptr;
    std::uint64_t in_a_row_ = 0;
};

}  // namespace tdms_impl
