#pragma once

#include <string>
#include <tdms.hpp>

namespace tool {

/// Writes what can be read of a measurement file to an HDF5 file, replacing any file at that path.
/// Groups become groups, channels compressed datasets, properties attributes. Throws a failure if
/// the file cannot be written.
/// @param name the name of the measurement file in messages
/// @param target the name of the HDF5 file in messages
/// @return whether all values could be read and written
bool export_hdf5(const std::string& name, const tdms::file& from, const std::string& path,
                 const std::string& target);

}  // namespace tool
