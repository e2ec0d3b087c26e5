#include "files/segment_metadata.h"

#include <stdexcept>

#include "console/text.h"

namespace tool {
namespace {

using tdms_impl::sum_of;
using tdms_impl::too_much;

// Why an index of a channel of that type is rejected.
std::string index_fault(const tdms_impl::raw_data_index& index, std::uint32_t type)
{
    if (!tdms_impl::is_known_form(index.form)) {
        return "has a raw data index of the unknown form " + std::to_string(index.form) + ": ";
    }
    const bool strings = index.form == tdms_impl::index_string;
    const bool same_type = strings ? type == TDMS_TYPE_STRING : type == index.data_type;
    return type == 0 || same_type ? "has a dimension other than 1: " : "changes its data type: ";
}

// Bytes that are not metadata can look like an endless path.
std::string quoted_begin(std::string_view path)
{
    constexpr std::size_t longest = 100;
    const std::string quoted = in_quotes(path.substr(0, longest));
    return path.size() > longest ? quoted + "..." : quoted;
}

}  // namespace

int segment_metadata::read(std::span<const unsigned char> metadata, segment_facts& facts)
{
    changed_.clear();
    added_.clear();
    fault_.clear();
    ran_out_ = false;
    stated_.repeated.clear();
    stated_ = {0, 0, std::move(stated_.repeated)};
    facts_ = &facts;
    facts.objects = facts.properties = facts.channels = facts.values = 0;
    object_ = 0;
    offset_ = 0;
    tdms_impl::metadata_cursor cursor(metadata);
    int status = TDMS_OK;
    try {
        status = tdms_impl::for_each_object(cursor, *this);
    } catch (const std::out_of_range&) {
        status = fail(TDMS_DATATYPE, "has a data type that the format does not know");
    }
    length_ = cursor.position();
    if (status == TDMS_OK) {
        facts.objects = object_;
        return status;
    }
    undo();
    ran_out_ = fault_.empty();
    return ran_out_ ? fail(status, "reaches beyond the end of the metadata") : status;
}

void segment_metadata::undo()
{
    for (; !changed_.empty(); changed_.pop_back()) {
        const auto& [known, before] = changed_.back();
        *known = before;
    }
    for (const std::string& path : added_) channels_.erase(path);
    added_.clear();
}

bool segment_metadata::is_certain(std::uint64_t raw_length) const
{
    if (!stated_.repeated.empty()) {
        // If two of them could have changed, one may have grown by what the other has shrunk.
        return accounts_for(raw_length) &&
               (stated_.repeated.size() == 1 || stated_.repeated_size == 0);
    }
    const bool too_little = stated_.sizes_known && stated_.size > raw_length;
    return !too_little || !stated_.compared || stated_.only_timestamps;
}

void segment_metadata::confirm()
{
    for (known_channel* const known : stated_.repeated) known->losses = losses_;
}

void segment_metadata::begin_object(const tdms_impl::metadata_cursor& cursor)
{
    offset_ = cursor.position();
    facts_->objects = object_++;
}

int segment_metadata::object(const tdms_impl::listed_object& listed)
{
    switch (listed.parts.kind) {
        case tdms_impl::object_kind::invalid:
            return fail(TDMS_CHANNEL_READ, "has an invalid path: " + quoted_begin(listed.path));
        case tdms_impl::object_kind::channel:
            return apply(listed);
        default:
            if (listed.index.form != tdms_impl::index_none) stated_.sizes_known = false;
            return TDMS_OK;
    }
}

void segment_metadata::property(const tdms_impl::property_entry&)
{
    ++facts_->properties;
}

segment_metadata::known_channel& segment_metadata::find_or_add(std::string_view path)
{
    if (known_channel* const known = channels_.find(path)) {
        changed_.emplace_back(known, *known);
        return *known;
    }
    added_.emplace_back(path);
    return channels_.add(path).second;
}

int segment_metadata::apply(const tdms_impl::listed_object& listed)
{
    const tdms_impl::raw_data_index& index = listed.index;
    known_channel& known = find_or_add(listed.path);
    const std::uint32_t type_before = known.data_type;
    if (const int status = tdms_impl::apply_index(index, known.data_type, known.chunk_count)) {
        return fail(status, index_fault(index, type_before) + quoted_begin(listed.path));
    }
    tdms_impl::DataSize.at(known.data_type);
    if (index.form == tdms_impl::index_none) return TDMS_OK;
    take_size(index, known);
    if (known.chunk_count != 0) {
        ++facts_->channels;
        facts_->values = sum_of(facts_->values, known.chunk_count);
    }
    return TDMS_OK;
}

void segment_metadata::take_size(const tdms_impl::raw_data_index& index, known_channel& known)
{
    const bool may_be_lost = known.losses != losses_;
    if (tdms_impl::is_explicit(index.form)) {
        const bool strings = index.form == tdms_impl::index_string;
        known.size_known =
            strings || index.value_count == 0 || tdms_impl::DataSize.at(index.data_type) != 0;
        if (!tdms_impl::stated_size(index, known.size)) known.size = too_much;
        known.losses = losses_;
        stated_.compared = stated_.compared || (may_be_lost && !strings);
    } else if (may_be_lost) {
        stated_.repeated.push_back(&known);
        stated_.repeated_size = sum_of(stated_.repeated_size, known.size);
    }
    stated_.size = sum_of(stated_.size, known.size);
    stated_.sizes_known = stated_.sizes_known && known.size_known;
    stated_.only_timestamps =
        stated_.only_timestamps && known.data_type == std::uint32_t{TDMS_TYPE_TIMESTAMP};
}

int segment_metadata::fail(int status, const std::string& what)
{
    fault_ = "its object " + std::to_string(object_) + ", at byte " + std::to_string(offset_) +
             " of the metadata, " + what;
    return status;
}

}  // namespace tool
