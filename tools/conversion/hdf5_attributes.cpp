#include "conversion/hdf5_attributes.h"

#include <algorithm>

#include "console/text.h"
#include "conversion/hdf5_types.h"
#include "conversion/names.h"

namespace tool {
namespace {

std::string allowed_name(std::string name)
{
    std::ranges::replace(name, '\0', '_');
    return name.empty() ? "_" : name;
}

void put(hid_t to, const std::string& name, const hdf5_handle& type, const hdf5_handle& space,
         const void* value)
{
    const hdf5_handle creation(H5Pcreate(H5P_ATTRIBUTE_CREATE));
    checked(H5Pset_char_encoding(creation, H5T_CSET_UTF8));
    hdf5_handle attribute(H5Acreate2(to, name.c_str(), type, space, creation, H5P_DEFAULT));
    if (value != nullptr) checked(H5Awrite(attribute, type, value));
    attribute.close();
}

template <class T>
void put_value(hid_t to, const std::string& name, const T& value)
{
    put(to, name, hdf5_type_of<T>(), hdf5_handle(H5Screate(H5S_SCALAR)), &value);
}

// A property of a type without values.
void put_value(hid_t to, const std::string& name, std::monostate)
{
    put(to, name, hdf5_type_of<double>(), hdf5_handle(H5Screate(H5S_NULL)), nullptr);
}

void put_value(hid_t to, const std::string& name, const std::string& value)
{
    const hdf5_handle space(H5Screate(H5S_SCALAR));
    if (value.find('\0') == std::string::npos) {
        const char* const text = value.c_str();
        return put(to, name, hdf5_string_type(), space, &text);
    }
    // Only strings of fixed length keep what follows a zero byte.
    const hdf5_handle type(H5Tcopy(H5T_C_S1));
    checked(H5Tset_size(type, value.size()));
    checked(H5Tset_strpad(type, H5T_STR_NULLPAD));
    checked(H5Tset_cset(type, H5T_CSET_UTF8));
    put(to, name, type, space, value.data());
}

}  // namespace

void put_attributes(hid_t to, const tdms::object& from, const std::vector<named_string>& own,
                    const std::function<void(const std::string& message)>& on_renamed)
{
    std::vector<std::pair<std::string, tdms::property_value>> all(own.begin(), own.end());
    for (const auto& property : from.properties()) all.push_back(property);
    const std::size_t properties_end = all.size();
    for (std::size_t i = own.size(); i != properties_end; ++i) {
        if (!std::holds_alternative<tdms::time>(all[i].second)) continue;
        all.emplace_back(all[i].first + " units", std::string(unit_of_times));
    }
    std::vector<std::string> wanted(all.size());
    std::ranges::transform(all, wanted.begin(), [](const auto& each) { return each.first; });
    const std::vector<std::string> names = distinct_names(wanted, allowed_name);
    for (std::size_t i = 0; i != all.size(); ++i) {
        std::visit([&](const auto& value) { put_value(to, names[i], value); }, all[i].second);
        if (names[i] == wanted[i]) continue;
        on_renamed("the attribute " + in_quotes(wanted[i]) + " is named " + in_quotes(names[i]));
    }
}

}  // namespace tool
