#include "writer/segment_builder.h"

#include <algorithm>

namespace tdms_impl {

segment_builder::segment_builder(segment_bytes& out) : out_(out)
{
    out_.clear();
    out_.joined().resize(lead_in_size + sizeof object_count_);
}

void segment_builder::object(std::string_view path)
{
    ++object_count_;
    put_string(path);
}

void segment_builder::fixed_size_index(const channel& of)
{
    put(index_fixed_size, of.data_type, std::uint32_t{1}, of.chunk_count);
}

void segment_builder::string_index(const channel& of)
{
    const std::uint64_t size = of.text_ends.size() + of.data.size();
    put(index_string, of.data_type, std::uint32_t{1}, of.chunk_count, size);
}

void segment_builder::properties(const property_map& map)
{
    put(static_cast<std::uint32_t>(map.size()));
    for (const auto& [name, stored] : map) put_property(name, *stored);
}

void segment_builder::new_properties(const property_map& map)
{
    put(static_cast<std::uint32_t>(std::count_if(map.begin(), map.end(), is_new)));
    for (const auto& entry : map) {
        if (is_new(entry)) put_property(entry.first, *entry.second);
    }
}

void segment_builder::finish()
{
    unsigned char* const lead_in = out_.joined().data();
    store(lead_in + lead_in_size, object_count_, true);
    store_lead_in(lead_in, metadata_end_ - lead_in_size, out_.size() - metadata_end_);
}

void segment_builder::put_string(std::string_view text)
{
    put(static_cast<std::uint32_t>(text.size()));
    append(out_.joined(), text.data(), text.size());
}

void segment_builder::put_property(std::string_view name, const property& stored)
{
    put_string(name);
    put(stored.data_type);
    append(out_.joined(), stored.data.data(), stored.data.size());
}

}  // namespace tdms_impl
