#include "conversion/hdf5_types.h"

#include <charconv>
#include <system_error>

#include "console/report.h"
#include "console/text.h"

namespace tool {

void fail_by_hdf5()
{
    std::string reason;
    const auto take_innermost = [](unsigned number, const H5E_error2_t* entry, void* to) -> herr_t {
        if (number == 0) *static_cast<std::string*>(to) = entry->desc;
        return 0;
    };
    H5Ewalk2(H5E_DEFAULT, H5E_WALK_UPWARD, take_innermost, &reason);
    constexpr std::string_view before_number = "errno = ";
    const std::size_t found = reason.find(before_number);
    if (found == std::string::npos) throw failure("HDF5: " + printable(reason));
    int number = 0;
    std::from_chars(&reason[found + before_number.size()], reason.data() + reason.size(), number);
    throw failure(std::generic_category().message(number));
}

hdf5_handle hdf5_string_type()
{
    hdf5_handle type(H5Tcopy(H5T_C_S1));
    checked(H5Tset_size(type, H5T_VARIABLE));
    checked(H5Tset_cset(type, H5T_CSET_UTF8));
    return type;
}

hdf5_handle hdf5_bool_type()
{
    hdf5_handle type(H5Tenum_create(H5T_NATIVE_INT8));
    constexpr std::int8_t no = 0;
    constexpr std::int8_t yes = 1;
    checked(H5Tenum_insert(type, "FALSE", &no));
    checked(H5Tenum_insert(type, "TRUE", &yes));
    return type;
}

}  // namespace tool
