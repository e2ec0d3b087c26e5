#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "core/object_map.h"
#include "reader/object_walk.h"

namespace tool {

/// What one segment holds. If its lead-in or metadata cannot be read, only the first two members
/// are set.
struct segment_facts {
    std::uint64_t number;
    std::uint64_t offset;
    std::uint64_t metadata_length = 0;
    std::uint64_t raw_length = 0;
    std::uint64_t objects = 0;
    std::uint64_t properties = 0;
    std::uint64_t channels = 0;  // with values
    std::uint64_t values = 0;
    const char* state = "intact";  // or "truncated": the file ends within it; or "damaged"
};

/// Reads metadata segment by segment: counts what it holds, finds its faults, and keeps what later
/// segments refer to.
class segment_metadata {
  public:
    /// @return a status other than 0 if there is a fault; then nothing that the segment states
    /// applies
    int read(std::span<const unsigned char> metadata, segment_facts& facts);

    /// Undoes what the latest segment stated.
    void undo();

    /// Why the latest read() failed, and whether because the metadata ended too early.
    const std::string& fault() const { return fault_; }
    bool ran_out() const { return ran_out_; }

    /// The bytes of the latest metadata up to the end of its last object, or of the fault.
    std::size_t length() const { return length_; }

    /// To be called where segments are lost: they may have replaced what earlier ones stated.
    void lose() { ++losses_; }

    /// The bytes of raw data that the latest segment states, as far as they are known.
    std::uint64_t stated_size() const { return stated_.size; }

    /// Whether they are known and are what the segment has.
    bool accounts_for(std::uint64_t raw_length) const
    {
        return stated_.sizes_known && stated_.size == raw_length;
    }

    /// Whether the length of the raw data proves where the latest segment's values are, whatever
    /// lost segments stated.
    bool is_certain(std::uint64_t raw_length) const;

    /// The latest segment's values have been located, so what it repeats counts as stated again.
    void confirm();

    // For for_each_object().
    void begin_object(const tdms_impl::metadata_cursor& cursor);
    int object(const tdms_impl::listed_object& listed);
    void property(const tdms_impl::property_entry& entry);

  private:
    struct known_channel {
        std::uint32_t data_type = 0;
        std::uint64_t chunk_count = 0;
        std::uint64_t size = 0;  // of the chunk
        bool size_known = true;
        std::uint64_t losses = 0;  // before the latest explicit index
    };

    // The raw data that a segment states.
    struct stated_data {
        std::uint64_t size = 0;
        std::uint64_t repeated_size = 0;       // of it, that lost segments may have changed
        std::vector<known_channel*> repeated;  // the channels it belongs to
        bool sizes_known = true;
        bool only_timestamps = true;
        bool compared = false;  // a count with one that may have been lost
    };

    known_channel& find_or_add(std::string_view path);
    int apply(const tdms_impl::listed_object& listed);
    void take_size(const tdms_impl::raw_data_index& index, known_channel& known);
    int fail(int status, const std::string& what);

    tdms_impl::object_map<known_channel> channels_;
    std::vector<std::pair<known_channel*, known_channel>> changed_;  // and what was known before
    std::vector<std::string> added_;
    std::uint64_t losses_ = 0;

    // Of the latest segment.
    segment_facts* facts_ = nullptr;
    stated_data stated_;
    std::uint64_t object_ = 0;  // the one being read, counted from 1
    std::size_t offset_ = 0;    // where it begins
    std::size_t length_ = 0;
    std::string fault_;
    bool ran_out_ = false;
};

}  // namespace tool
