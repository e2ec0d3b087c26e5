#include "reader/tree_builder.h"

namespace tdms_impl {

int tree_builder::add_segment(std::span<const unsigned char> metadata)
{
    const auto* const known = seen_.recognise(metadata);
    if (known == nullptr) {
        settle();
        return seen_.parse(metadata, *this);
    }
    if (known->empty()) return TDMS_OK;
    if (seen_.in_a_row() > 1) {
        ++pending_;
        return TDMS_OK;
    }
    settle();
    counted_ = known;
    return take_all(*known, *this);
}

void tree_builder::settle()
{
    if (pending_ == 0) return;
    for (const auto& [object, index] : *counted_) {
        if (object == nullptr || index.form == index_none) continue;
        // A segment may list a channel twice.
        if (is_explicit(index.form)) object->chunk_count = index.value_count;
        object->value_count += pending_ * object->chunk_count;
    }
    pending_ = 0;
}

int tree_builder::find(const listed_object& listed, channel*& found)
{
    const object_path_parts& parts = listed.parts;
    switch (parts.kind) {
        case object_kind::invalid:
            return TDMS_CHANNEL_READ;
        case object_kind::file:
            properties_ = &file_.properties;
            break;
        case object_kind::group:
            find_or_add_group(listed.path);
            properties_ = &group_->properties;
            break;
        case object_kind::channel:
            // The group need not have been listed: this library itself does not write a group that
            // was created after the first save and has no properties.
            find_or_add_group(parts.group_path);
            found = &find_or_add_channel(listed.path, parts.name);
            properties_ = &found->properties;
            break;
    }
    return TDMS_OK;
}

int tree_builder::take(const found_object<channel>& found)
{
    if (found.object == nullptr) return TDMS_OK;
    channel& of = *found.object;
    if (const int status = apply_index(found.index, of.data_type, of.chunk_count)) return status;
    if (of_values_ == unknown_types::rejected) DataSize.at(of.data_type);
    if (found.index.form != index_none) of.value_count += of.chunk_count;
    return TDMS_OK;
}

void tree_builder::property(const property_entry& entry)
{
    auto found = properties_->find(entry.name);
    if (found == properties_->end()) {
        found = properties_->emplace(entry.name, std::make_shared<tdms_impl::property>()).first;
    }
    tdms_impl::property& stored = *found->second;
    stored.data_type = entry.data_type;
    stored.data.assign(entry.value.begin(), entry.value.end());
    stored.origin = property_origin::read;
}

// Makes the group at `path` the current one.
void tree_builder::find_or_add_group(std::string_view path)
{
    if (group_ != nullptr && group_->path == path) return;
    group_ = file_.groups.find(path);
    if (group_ != nullptr) return;
    group_ = &add_group(file_, path, std::string(group_name(path)));
    if (!is_quoted(path, {})) file_.unquoted = true;
}

channel& tree_builder::find_or_add_channel(std::string_view path, std::string_view name)
{
    if (channel* const found = group_->channels.find(path)) return *found;
    channel& added = add_channel(*group_, path, std::string(name));
    if (!is_quoted(path, group_->path)) group_->unquoted = true;
    if (known_ != nullptr) add_what_is_known(added);
    return added;
}

void tree_builder::add_what_is_known(channel& added) const
{
    group* const owner = known_->groups.find(group_->path);
    const channel* const same = owner == nullptr ? nullptr : owner->channels.find(added.path);
    if (same == nullptr) return;
    added.data_type = same->data_type;
    added.chunk_count = same->chunk_count;
}

}  // namespace tdms_impl
