#pragma once

#include <string>
#include <tdms.hpp>

#include "files/input.h"

namespace tool {

/// The message for a status of the library, such as "not a TDMS file".
/// @param reason the errno that goes with the status, if any
std::string message_of(int status, int reason = 0);

/// The name of a ::tdms_type.
std::string type_name(int type);

/// The ::tdms_type of a property.
int type_of(const tdms::property_value& value);

/// Opens the intact segments of a file.
tdms::file open_intact(const input& from);

/// Reports damage after the intact segments.
/// @return whether there is none
bool report_damage(const std::string& name, const input& from, const tdms::file& file);

/// Reports what follows the intact segments: damage, or a segment that is not complete.
/// @return false if there is damage, or if the file must be complete and is not
bool report_rest(const std::string& name, const input& from, const tdms::file& file,
                 bool must_be_complete);

}  // namespace tool
