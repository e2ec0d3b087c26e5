#pragma once

#include <functional>
#include <string>
#include <tdms.hpp>
#include <utility>
#include <vector>

#include "conversion/hdf5_handle.h"

namespace tool {

using named_string = std::pair<std::string, std::string>;

/// Puts attributes at an object in HDF5: `own` ones, then the properties of `from`. As an attribute
/// has no attributes, the unit of a time NAME is another one beside it, "NAME units".
/// @param complain gets what is said about one that had to be renamed
void put_attributes(hid_t to, const tdms::object& from, const std::vector<named_string>& own,
                    const std::function<void(const std::string& message)>& complain);

}  // namespace tool
