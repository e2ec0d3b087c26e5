#include "files/segments.h"

#include "console/output.h"
#include "console/report.h"
#include "console/text.h"
#include "core/object_map.h"
#include "files/measurement_file.h"
#include "reader/object_path.h"
#include "reader/object_walk.h"
#include "reader/segment_walk.h"

namespace tool {
namespace {

// Reads the metadata of one segment after the other: counts what they hold and finds their faults.
class metadata_reader {
  public:
    // @return a status, and the reason for it
    int add_segment(std::span<const unsigned char> metadata, segment_facts& facts)
    {
        facts_ = &facts;
        begin_ = metadata.data();
        object_ = 0;
        next_ = sizeof(std::uint32_t);  // after the number of objects
        int status = TDMS_OK;
        try {
            status = tdms_impl::walk_objects(metadata, *this);
        } catch (const std::out_of_range&) {
            return fault(TDMS_DATATYPE, "has a data type that the format does not know");
        }
        if (status == TDMS_OK) facts.objects = object_;
        if (status == TDMS_OK || !reason_.empty()) return status;
        return fault(status, "reaches beyond the end of the metadata");
    }

    const std::string& reason() const { return reason_; }

    // For walk_objects().
    int object(std::string_view path, tdms_impl::metadata_cursor& cursor)
    {
        offset_ = next_;
        facts_->objects = object_++;
        if (!cursor.ok()) return TDMS_CHANNEL_READ;
        const tdms_impl::object_kind kind = tdms_impl::parse_object_path(path).kind;
        if (kind == tdms_impl::object_kind::invalid) {
            return fault(TDMS_CHANNEL_READ, "has an invalid path: " + in_quotes(path));
        }
        if (kind != tdms_impl::object_kind::channel) {
            tdms_impl::skip_index(cursor);
        } else if (const int status = read_index(path, cursor)) {
            return status;
        }
        if (!cursor.ok()) return TDMS_CHANNEL_READ;
        // After the number of properties.
        next_ = offset_of(cursor.bytes(0).data()) + sizeof(std::uint32_t);
        return TDMS_OK;
    }

    void property(const tdms_impl::property_entry& entry)
    {
        ++facts_->properties;
        next_ = offset_of(entry.value.data()) + entry.value.size();
    }

  private:
    struct known_channel {
        std::uint32_t data_type = 0;
        std::uint64_t chunk_count = 0;
    };

    std::size_t offset_of(const unsigned char* byte) const
    {
        return static_cast<std::size_t>(byte - begin_);
    }

    int read_index(std::string_view path, tdms_impl::metadata_cursor& cursor)
    {
        known_channel* known = channels_.find(path);
        if (known == nullptr) known = &channels_.add(path).second;
        const tdms_impl::raw_data_index index = tdms_impl::read_raw_data_index(cursor);
        if (!cursor.ok()) return TDMS_CHANNEL_READ;
        const std::uint32_t type_before = known->data_type;
        if (const int status =
                tdms_impl::apply_index(index, known->data_type, known->chunk_count)) {
            return fault(status, index_fault(index, type_before) + in_quotes(path));
        }
        tdms_impl::DataSize.at(known->data_type);
        if (index.form != tdms_impl::index_none && known->chunk_count != 0) {
            ++facts_->channels;
            facts_->values += known->chunk_count;
        }
        return TDMS_OK;
    }

    // Why an index of a channel of that type is rejected.
    static std::string index_fault(const tdms_impl::raw_data_index& index, std::uint32_t type)
    {
        if (!tdms_impl::is_known_form(index.form)) {
            return "has a raw data index of the unknown form " + std::to_string(index.form) + ": ";
        }
        const bool strings = index.form == tdms_impl::index_string;
        const bool same_type = strings ? type == TDMS_TYPE_STRING : type == index.data_type;
        return type == 0 || same_type ? "has a dimension other than 1: "
                                      : "changes its data type: ";
    }

    int fault(int status, const std::string& what)
    {
        reason_ = "its object " + std::to_string(object_) + ", at byte " + std::to_string(offset_) +
                  " of the metadata, " + what;
        return status;
    }

    tdms_impl::object_map<known_channel> channels_;
    segment_facts* facts_ = nullptr;  // of the segment being read
    const unsigned char* begin_ = nullptr;
    std::uint64_t object_ = 0;  // the one being read, counted from 1
    std::size_t offset_ = 0;    // where it begins
    std::size_t next_ = 0;      // where the next one does
    std::string reason_;
};

std::string stated_and_there(const char* what, std::uint64_t stated, std::uint64_t there)
{
    return std::to_string(stated) + " bytes of " + what + " are stated, " + std::to_string(there) +
           " are there";
}

// Why a segment cannot be walked over, by its lead-in.
std::string lead_in_fault(tdms_impl::file_window& window, segment_facts& facts, std::uint64_t left)
{
    facts.state = "truncated";
    if (left < tdms_impl::lead_in_size) {
        return "of the " + std::to_string(tdms_impl::lead_in_size) + " bytes of its lead-in, " +
               std::to_string(left) + " are there";
    }
    unsigned char* const lead_in = window.view(facts.offset, tdms_impl::lead_in_size);
    if (lead_in == nullptr) return "its lead-in cannot be read from the device";
    unsigned long metadata = 0;
    unsigned long raw = 0;
    const int status = read_leadIn(lead_in, metadata, raw);
    left -= tdms_impl::lead_in_size;
    if (status == TDMS_OK && metadata > left) return stated_and_there("metadata", metadata, left);
    if (status == TDMS_OK && metadata != 0 && raw > left - metadata) {
        if (raw <= ~std::uint64_t{0} - metadata) {
            return stated_and_there("raw data", raw, left - metadata);
        }
        facts.state = "damaged";
        return "the next segment is stated to begin within its metadata";
    }
    facts.state = "damaged";
    switch (status) {
        case TDMS_FILE_TAG:
            return "no segment begins there";
        case TDMS_FILE_TOC:
            return "its table of contents is " +
                   std::to_string(tdms_impl::load<std::uint32_t>(lead_in + 4, true)) + ", not 14";
        case TDMS_FILE_VERSION:
            return "its version is " +
                   std::to_string(tdms_impl::load<std::uint32_t>(lead_in + 8, true)) + ", not 4713";
        default:
            return metadata == 0 ? "it has no metadata" : "it cannot be read from the device";
    }
}

}  // namespace

intact_part walk_file(const input& file, const std::function<void(const segment_facts&)>& visit)
{
    intact_part intact;
    intact.file_size = file.size();
    tdms_impl::file_window window(file.file(), intact.file_size);
    metadata_reader metadata;
    segment_facts facts{1, 0};
    const auto add_segment = [&](const tdms_impl::segment& s) {
        facts.metadata_length = s.metadata.size();
        facts.raw_length = s.raw_length;
        if (const int status = metadata.add_segment(s.metadata, facts)) return status;
        // The walk ends with a segment that is not complete.
        if (!s.complete_in(intact.file_size)) return int{TDMS_OK};
        visit(facts);
        ++intact.segments;
        intact.values += facts.values;
        facts = {intact.segments + 1, s.end()};
        return int{TDMS_OK};
    };
    const int status = tdms_impl::walk_segments(window, intact.size, intact.file_size, add_segment);
    if (status == TDMS_OK) return intact;
    std::string reason = metadata.reason();
    if (reason.empty()) {
        reason = lead_in_fault(window, facts, intact.file_size - intact.size);
    } else {
        facts.state = "damaged";
    }
    visit(facts);
    intact.end =
        std::string_view(facts.state) == "truncated" ? file_end::truncated : file_end::damaged;
    intact.fault = std::string("segment ") + std::to_string(facts.number) + " at offset " +
                   std::to_string(facts.offset) + " is " + facts.state + ": " + reason + ": " +
                   message_of(status);
    return intact;
}

}  // namespace tool
