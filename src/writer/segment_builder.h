#pragma once

#include "codec/byte_order.h"
#include "codec/layout.h"
#include "core/object_model.h"

namespace tdms {

/// Builds one segment in a buffer, from front to back: the entries of its objects, each an object,
/// its raw data index and its properties, then the raw data.
class segment_builder {
  public:
    /// Replaces what the buffer holds and reuses its capacity.
    explicit segment_builder(byte_vector& out);

    void object(std::string_view path);

    void no_index() { put(index_none); }
    void fixed_size_index(const channel& of);
    void string_index(const channel& of);

    void no_properties() { put(std::uint32_t{0}); }
    void properties(const property_map& map);

    /// Ends the metadata and makes room for the raw data, once.
    void begin_raw_data(std::size_t size);
    void raw_data(const byte_vector& bytes) { append(out_, bytes.data(), bytes.size()); }

    /// Completes the lead-in.
    void finish();

  private:
    template <class T>
    void put(T value)
    {
        unsigned char bytes[sizeof(T)];
        store(bytes, value, true);
        append(out_, bytes, sizeof(T));
    }

    void put_string(std::string_view text);

    byte_vector& out_;
    std::uint32_t object_count_ = 0;
    std::size_t metadata_end_ = 0;
};

}  // namespace tdms
