#include "files/measurement_file.h"

#include <system_error>
#include <type_traits>
#include <variant>

#include "console/report.h"
#include "console/text.h"
#include "core/data_types.h"
#include "files/segments.h"

namespace tool {
namespace {

// A type is shown by the suffix of its functions' names.
template <class T>
constexpr const char* suffix_of = "";
#define TDMS_TOOL_SUFFIX(suffix, type, code) \
    template <>                              \
    constexpr const char* suffix_of<type> = #suffix;
TDMS_ELEMENTS(TDMS_TOOL_SUFFIX)
#undef TDMS_TOOL_SUFFIX

}  // namespace

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
    if (type == TDMS_TYPE_VOID) return "none";
    const auto code = static_cast<std::uint32_t>(type);
    const std::string name = tdms_impl::with_element_type(code, [](auto type_tag) {
        return std::string(suffix_of<typename decltype(type_tag)::type>);
    });
    return name.empty() ? "type " + std::to_string(code) : name;
}

int type_of(const tdms::property_value& value)
{
    return std::visit(
        [](const auto& alternative) -> int {
            using T = std::decay_t<decltype(alternative)>;
            if constexpr (std::is_same_v<T, std::monostate>) return TDMS_TYPE_VOID;
            if constexpr (std::is_same_v<T, std::string>) return TDMS_TYPE_STRING;
            if constexpr (std::is_same_v<T, tdms::time>) return TDMS_TYPE_TIMESTAMP;
            return static_cast<int>(tdms_impl::type_code<T>);
        },
        value);
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
    report(name, intact.fault + "; the last " + number_of(file.rest(), "byte") +
                     " are not shown; see tdms salvage");
    return false;
}

bool report_rest(const std::string& name, const input& from, const tdms::file& file,
                 bool must_be_complete)
{
    if (file.rest() == 0) return true;
    if (!report_damage(name, from, file)) return false;
    report(name, "the last " + number_of(file.rest(), "byte") +
                     (file.rest() == 1 ? " is" : " are") +
                     " not a complete segment: being recorded, or truncated; see tdms salvage");
    return !must_be_complete;
}

}  // namespace tool
