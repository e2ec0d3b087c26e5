#include "segments.h"

#include "console.h"
#include "measurement_file.h"
#include "reader/metadata.h"
#include "reader/object_finder.h"
#include "reader/object_path.h"
#include "reader/segment_walk.h"

namespace tool {
namespace {

// Reads the metadata of one segment after the other: counts what they hold and finds their faults.
class metadata_reader {
  public:
    // @return a status, of which reason() tells more
    int add_segment(const tdms::segment& s, segment_facts& facts)
    {
        const std::span<const unsigned char> metadata = s.metadata;
        tdms::metadata_cursor cursor(metadata);
        in_channels_ = false;
        raw_left_ = s.raw_length;
        const std::uint32_t object_count = cursor.u32();
        for (object_ = 1; object_ <= object_count && cursor.ok(); ++object_) {
            offset_ = cursor.bytes(0).data() - metadata.data();
            if (const int status = read_object(cursor, facts)) return status;
            ++facts.objects;
        }
        if (cursor.ok()) return TDMS_OK;
        --object_;
        return fault(TDMS_CHANNEL_READ, "reaches beyond the metadata's end");
    }

    const std::string& reason() const { return reason_; }
    bool regular() const { return regular_; }

  private:
    struct known_channel {
        std::uint32_t data_type = 0;
        std::uint64_t chunk_count = 0;
        std::uint64_t chunk_size = 0;
    };

    int read_object(tdms::metadata_cursor& cursor, segment_facts& facts)
    {
        const std::string_view path = cursor.string();
        const tdms::object_path_parts parts = tdms::parse_object_path(path);
        if (parts.kind == tdms::object_kind::invalid) {
            return fault(TDMS_CHANNEL_READ, "has an invalid path: " + in_quotes(path));
        }
        if (parts.kind != tdms::object_kind::channel) {
            const std::uint32_t first = cursor.peek_u32();
            const bool short_form = first == tdms::index_as_before || first == tdms::index_none;
            cursor.bytes(short_form ? 4 : first);
            regular_ = regular_ && first == tdms::index_none && !in_channels_;
        } else if (const int status = read_index(cursor, path, parts.group_path, facts)) {
            return status;
        }
        const std::uint32_t count = cursor.u32();
        for (std::uint32_t i = 0; i != count && cursor.ok(); ++i) {
            tdms::read_property(cursor);
            ++facts.properties;
        }
        return TDMS_OK;
    }

    int read_index(tdms::metadata_cursor& cursor, std::string_view path, std::string_view group,
                   segment_facts& facts)
    {
        known_channel* known = finder_.find(path);
        if (known == nullptr) known = &finder_.add(path);
        if (group_.empty()) group_ = group;
        regular_ = regular_ && group == group_;
        in_channels_ = true;
        const tdms::raw_data_index index = tdms::read_raw_data_index(cursor);
        if (!cursor.ok()) return TDMS_OK;
        const std::uint32_t type_before = known->data_type;
        if (const int status = tdms::apply_index(index, known->data_type, known->chunk_count)) {
            return fault(status, index_fault(index, type_before) + in_quotes(path));
        }
        if (tdms::is_explicit(index.form)) {
            known->chunk_size =
                index.form == tdms::index_string ? index.byte_count : size_of(index);
        }
        if (index.form != tdms::index_none && known->chunk_count != 0) {
            ++facts.channels;
            facts.values += known->chunk_count;
            regular_ = regular_ && known->chunk_size <= raw_left_;
            raw_left_ -= known->chunk_size;
        }
        return TDMS_OK;
    }

    // Why an index is refused, of a channel of that type.
    static std::string index_fault(const tdms::raw_data_index& index, std::uint32_t type)
    {
        if (!tdms::is_known_form(index.form)) {
            return "has a raw data index of the unknown form " + std::to_string(index.form) + ": ";
        }
        const bool texts = index.form == tdms::index_string;
        const bool same_type = texts ? type == TDMS_TYPE_STRING : type == index.data_type;
        return type == 0 || same_type ? "has a dimension other than 1: "
                                      : "changes its data type: ";
    }

    // The bytes of a channel's values; of a type without a size, or if there are too many, all
    // bits.
    static std::uint64_t size_of(const tdms::raw_data_index& index)
    {
        constexpr std::uint64_t unknown = ~std::uint64_t{0};
        const std::uint64_t each = size_of_type(index.data_type);
        std::uint64_t size = 0;
        if (each == 0 || __builtin_mul_overflow(each, index.value_count, &size)) return unknown;
        return size;
    }

    int fault(int status, const std::string& what)
    {
        reason_ = "its object " + std::to_string(object_) + ", at byte " + std::to_string(offset_) +
                  " of the metadata, " + what;
        return status;
    }

    bool regular_ = true;
    bool in_channels_ = false;  // of the segment
    std::uint64_t raw_left_ = 0;
    std::string group_;  // of the first channel
    tdms::object_map<known_channel> channels_;
    tdms::object_finder<known_channel> finder_{channels_};
    std::uint64_t object_ = 0;  // the one being read, counted from 1
    std::ptrdiff_t offset_ = 0;
    std::string reason_;
};

std::string stated_and_there(const char* what, std::uint64_t stated, std::uint64_t there)
{
    return std::to_string(stated) + " bytes of " + what + " are stated, " + std::to_string(there) +
           " are there";
}

// Why a segment cannot be walked over, by its lead-in.
std::string lead_in_fault(tdms::file_window& window, segment_facts& facts, std::uint64_t left)
{
    facts.state = "torn";
    if (left < tdms::lead_in_size) {
        return "of the " + std::to_string(tdms::lead_in_size) + " bytes of its lead-in, " +
               std::to_string(left) + " are there";
    }
    unsigned char* const lead_in = window.view(facts.offset, tdms::lead_in_size);
    if (lead_in == nullptr) return "its lead-in cannot be read from the device";
    unsigned long metadata = 0;
    unsigned long raw = 0;
    const int status = read_leadIn(lead_in, metadata, raw);
    left -= tdms::lead_in_size;
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
                   std::to_string(tdms::load<std::uint32_t>(lead_in + 4, true)) + ", not 14";
        case TDMS_FILE_VERSION:
            return "its version is " +
                   std::to_string(tdms::load<std::uint32_t>(lead_in + 8, true)) + ", not 4713";
        default:
            return metadata == 0 ? "it has no metadata" : "it cannot be read from the device";
    }
}

}  // namespace

sound_part walk_file(const input& file, const std::function<void(const segment_facts&)>& visit)
{
    sound_part sound;
    std::FILE* stream = file.stream();
    const std::unique_ptr<std::FILE*, void (*)(std::FILE**)> closer(&stream, [](std::FILE** open) {
        if (*open != nullptr) std::fclose(*open);
    });
    std::setvbuf(stream, nullptr, _IONBF, 0);
    sound.file_size = file.size();
    tdms::file_window window(stream, sound.file_size);
    metadata_reader metadata;
    segment_facts facts{};
    const auto begin_segment = [&] { facts = {sound.segments + 1, sound.size}; };
    std::string message;
    std::string reason;
    const auto add_segment = [&](const tdms::segment& s) {
        begin_segment();
        facts.metadata_length = s.metadata.size();
        facts.raw_length = s.raw_length;
        if (const int status = metadata.add_segment(s, facts)) return status;
        // A segment that is not all there is looked at behind the walk, which ends with it.
        if (s.raw_length > sound.file_size - s.raw_offset) return int{TDMS_OK};
        visit(facts);
        ++sound.segments;
        sound.values += facts.values;
        sound.size = s.raw_offset + s.raw_length;
        begin_segment();
        return int{TDMS_OK};
    };
    begin_segment();
    try {
        const int status = tdms::walk_segments(stream, sound.file_size, window, add_segment);
        sound.regular = metadata.regular();
        if (status == TDMS_OK) return sound;
        message = message_of(status);
        reason = metadata.reason();
    } catch (const std::out_of_range& e) {
        reason = "a property has a data type that the format does not know";
        message = e.what();
    }
    if (reason.empty()) {
        if (stream == nullptr) stream = file.stream();
        tdms::file_window again(stream, sound.file_size);
        reason = lead_in_fault(again, facts, sound.file_size - sound.size);
    } else {
        facts.state = "damaged";
    }
    visit(facts);
    sound.fault = std::string("segment ") + std::to_string(facts.number) + " at offset " +
                  std::to_string(facts.offset) + " is " + facts.state + ": " + reason + ": " +
                  message;
    return sound;
}

}  // namespace tool
