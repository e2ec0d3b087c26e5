#include "files/measurement_file.h"

#include <array>
#include <system_error>
#include <variant>

#include "console/report.h"
#include "console/text.h"
#include "files/segments.h"

namespace tool {

std::string message_of(int status, int reason)
{
    if (status == TDMS_FILE_TAG) return "not a TDMS file";
    if (status == TDMS_FILE_PATH) {
        return "cannot be opened: " + std::generic_category().message(reason);
    }
    std::string text = tdms_status_text(status);
    text.pop_back();  // the full stop
    return text + " (" + std::to_string(status) + ")";
}

std::string type_name(int type)
{
    switch (type) {
        case TDMS_TYPE_VOID:
            return "none";
#define TDMS_TOOL_NAME(suffix, T, code) \
    case code:                          \
        return #suffix;
            TDMS_ELEMENTS(TDMS_TOOL_NAME)
#undef TDMS_TOOL_NAME
        default:
            return "type " + std::to_string(static_cast<std::uint32_t>(type));
    }
}

int type_of(const tdms::property_value& value)
{
    // In the order of the alternatives.
    constexpr std::array<int, 14> types{
        TDMS_TYPE_VOID,   TDMS_TYPE_INT8,   TDMS_TYPE_INT16,  TDMS_TYPE_INT32,    TDMS_TYPE_INT64,
        TDMS_TYPE_UINT8,  TDMS_TYPE_UINT16, TDMS_TYPE_UINT32, TDMS_TYPE_UINT64,   TDMS_TYPE_FLOAT,
        TDMS_TYPE_DOUBLE, TDMS_TYPE_BOOL,   TDMS_TYPE_STRING, TDMS_TYPE_TIMESTAMP};
    static_assert(types.size() == std::variant_size_v<tdms::property_value>);
    return types.at(value.index());
}

tdms::file open_intact(const input& from)
{
    try {
        return tdms::file::partial(from.path());
    } catch (const tdms::error& e) {
        const int status = e.status();
        if (status == TDMS_FILE_TAG || status == TDMS_FILE_PATH || status == TDMS_MEMORY) throw;
        throw failure(message_of(status) + "; see tdms check and tdms salvage");
    }
}

bool report_damage(const std::string& name, const input& from, const tdms::file& file)
{
    if (file.rest() == 0) return true;
    const intact_part intact = walk_file(from, [](const segment_facts&) {});
    if (intact.end != file_end::damaged) return true;
    report(name, intact.fault + "; the last " + count_of(file.rest(), "byte") +
                     " are not shown; see tdms salvage");
    return false;
}

bool report_rest(const std::string& name, const input& from, const tdms::file& file,
                 bool must_be_complete)
{
    if (file.rest() == 0) return true;
    if (!report_damage(name, from, file)) return false;
    report(name, "the last " + count_of(file.rest(), "byte") + (file.rest() == 1 ? " is" : " are") +
                     " not a complete segment: being recorded, or truncated; see tdms salvage");
    return !must_be_complete;
}

}  // namespace tool
