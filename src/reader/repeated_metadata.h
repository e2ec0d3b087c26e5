#pragma once

#include <array>
#include <cstring>
#include <vector>

#include "reader/object_walk.h"

namespace tdms_impl {

/// What parsing finds of an object: the object itself, and its raw data index.
template <class Object>
struct found_object {
    Object* object;  // null for one without values
    raw_data_index index;
};

/// Passes found objects to `visitor.take(found)`, one after the other, until it returns a status
/// other than 0. @return that status
template <class Object, class Visitor>
int take_all(const std::vector<found_object<Object>>& known, Visitor& visitor)
{
    for (const found_object<Object>& found : known) {
        if (const int status = visitor.take(found)) return status;
    }
    return TDMS_OK;
}

/// Walks over metadata segment by segment, and does not parse any that equals one of the latest two
/// kinds: a steady recording repeats the metadata of its saves byte for byte, and a save makes up
/// to two segments.
///
/// It remembers what parsing finds: the objects, which must stay where they are, and their raw data
/// indexes. These are applied each time, since their meaning may depend on the segments before.
/// Metadata with properties is rare, and is always parsed.
template <class Object>
class repeated_metadata {
  public:
    using object_list = std::vector<found_object<Object>>;

    /// What parsing found in these bytes; null if they are not remembered. in_a_row() counts how
    /// often the same metadata was recognised, ignoring metadata that lists no object.
    const object_list* recognise(std::span<const unsigned char> metadata)
    {
        // The segments of a save take turns.
        if (kinds_[1 - latest_].equals(metadata)) {
            latest_ = 1 - latest_;
        } else if (!kinds_[latest_].equals(metadata)) {
            return nullptr;
        }
        const object_list* const known = &kinds_[latest_].objects;
        if (!known->empty()) {
            in_a_row_ = known == row_ ? in_a_row_ + 1 : 1;
            row_ = known;
        }
        return known;
    }
    std::uint64_t in_a_row() const { return in_a_row_; }

    /// Parses metadata and remembers it. For each object, calls `visitor.find(listed, object)`,
    /// which finds or adds the object, then `visitor.take(found)`; for each property, calls
    /// `visitor.property(entry)`. A status other than 0 ends the walk.
    /// @return as for_each_object()
    template <class Visitor>
    int parse(std::span<const unsigned char> metadata, Visitor& visitor)
    {
        row_ = nullptr;
        kind& parsed = kinds_[1 - latest_];
        parsed.bytes.clear();
        parsed.objects.clear();
        recorder<Visitor> recording{visitor, parsed.objects, metadata.size() <= most_remembered};
        metadata_cursor cursor(metadata);
        const int status = for_each_object(cursor, recording);
        // A visitor that ends the walk with a status above 0 has seen all that it needs.
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
        const object_list* const known = recognise(metadata);
        return known == nullptr ? parse(metadata, visitor) : take_all(*known, visitor);
    }

    /// Forgets everything and frees its memory.
    void forget()
    {
        kinds_ = {};
        row_ = nullptr;
    }

  private:
    // Remembering larger metadata would take much memory to save little time.
    static constexpr std::size_t most_remembered = std::size_t{1} << 20;

    struct kind {
        std::vector<unsigned char> bytes;  // empty if nothing is remembered
        object_list objects;

        bool equals(std::span<const unsigned char> metadata) const
        {
            return bytes.size() == metadata.size() &&
                   std::memcmp(bytes.data(), metadata.data(), metadata.size()) == 0;
        }
    };

    template <class Visitor>
    struct recorder {
        Visitor& visitor;
        object_list& objects;
        bool complete;  // nothing was found that `objects` does not hold

        int object(const listed_object& listed)
        {
            found_object<Object> found{nullptr, listed.index};
            if (const int status = visitor.find(listed, found.object)) return status;
            if (complete) objects.push_back(found);
            return visitor.take(found);
        }
        void property(const property_entry& entry)
        {
            complete = false;
            visitor.property(entry);
        }
    };

    std::array<kind, 2> kinds_;
    std::size_t latest_ = 0;
    const object_list* row_ = nullptr;
    std::uint64_t in_a_row_ = 0;
};

}  // namespace tdms_impl
