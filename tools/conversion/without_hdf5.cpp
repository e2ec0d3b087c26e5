#include "console/report.h"
#include "conversion/hdf5_export.h"

namespace tool {

bool export_hdf5(const std::string&, const tdms::file&, const std::string&, const std::string&)
{
    throw failure("this tdms was built without HDF5");
}

}  // namespace tool
