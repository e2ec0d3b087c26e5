#include "writer/segment_builder.h"

#include <algorithm>

#include "codec/lead_in.h"
#include "codec/property_entry.h"

namespace tdms_impl {

segment_builder::segment_builder(segment_bytes& out) : out_(out)
{
    out_.clear();
    out_.joined().resize(lead_in_size + sizeof object_count_);
}

void segment_builder::object(std::string_view path)
{
    ++object_count_;
    put_string(out_.joined(), path);
}

void segment_builder::index(const channel& of)
{
    if (of.data_type == TDMS_TYPE_STRING) {
        put_string_index(out_.joined(), of.chunk_count, of.string_ends.size() + of.data.size());
    } else {
        put_fixed_size_index(out_.joined(), of.data_type, of.chunk_count);
    }
}

void segment_builder::properties(const property_map& map)
{
    put(out_.joined(), static_cast<std::uint32_t>(map.size()));
    for (const auto& entry : map) property(entry);
}

void segment_builder::new_properties(const property_map& map)
{
    put(out_.joined(), static_cast<std::uint32_t>(std::count_if(map.begin(), map.end(), is_new)));
    for (const auto& entry : map) {
        if (is_new(entry)) property(entry);
    }
}

void segment_builder::finish()
{
    unsigned char* const lead_in = out_.joined().data();
    store(lead_in + lead_in_size, object_count_, true);
    store_lead_in(lead_in, metadata_end_ - lead_in_size, out_.size() - metadata_end_);
}

void segment_builder::property(const property_map::value_type& entry)
{
    const auto& [name, stored] = entry;
    put_property(out_.joined(), {name, stored->data_type, stored->data});
}

}  // namespace tdms_impl
