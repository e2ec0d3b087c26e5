#pragma once

#include "codec/raw_data_index.h"
#include "core/object_model.h"

namespace tdms_impl {

/// Whether no file has the property yet.
inline bool is_new(const property_map::value_type& entry)
{
    return entry.second->origin == property_origin::created;
}

/// How many bytes of a channel's staged values are joined with the metadata.
inline std::size_t joined_size(const channel& of)
{
    return segment_bytes::joined_size(of.string_ends) + segment_bytes::joined_size(of.data);
}

/// Builds one segment from front to back: for each object its path, raw data index and properties,
/// then the raw data.
class segment_builder {
  public:
    /// Replaces the contents of `out` and reuses its capacity.
    explicit segment_builder(segment_bytes& out);

    void object(std::string_view path);

    void no_index() { put(out_.joined(), index_none); }
    /// The index of the channel's staged values.
    void index(const channel& of);

    void no_properties() { put(out_.joined(), std::uint32_t{0}); }
    void properties(const property_map& map);
    /// Only those that no file has yet.
    void new_properties(const property_map& map);

    /// Ends the metadata, and makes room once for the blocks that are joined with it.
    void begin_raw_data(std::size_t joined_size)
    {
        metadata_end_ = out_.size();
        make_room(out_.joined(), joined_size);
    }
    /// The staged values of a channel; strings are preceded by the table of their ends.
    void raw_data(const channel& of)
    {
        out_.add_block(of.string_ends);
        out_.add_block(of.data);
    }

    /// Completes the lead-in.
    void finish();

  private:
    void property(const property_map::value_type& entry);

    segment_bytes& out_;
    std::uint32_t object_count_ = 0;
    std::size_t metadata_end_ = 0;
};

}  // namespace tdms_impl
