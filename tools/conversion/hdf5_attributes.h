#pragma once

#include <functional>
#include <string>
#include <tdms.hpp>
#include <utility>
#include <vector>

#include "conversion/hdf5_handle.h"

namespace tool {

using named_string = std::pair<std::string, std::string>;

/// Adds attributes to an object in HDF5: first `own`, then the properties of `from`. An attribute
/// has no attributes itself, so the unit of a time NAME is another attribute, "NAME units".
/// @param on_renamed is called for each attribute that had to be renamed
void put_attributes(hid_t to, const tdms::object& from, const std::vector<named_string>& own,
                    const std::function<void(const std::string& message)>& on_renamed);

}  // namespace tool
