#pragma once

#include "core/object_model.h"

namespace tdms_impl {

/// Whether the file ends at `saved_size`. If not, another program has changed it, in spite of the
/// lock, and errno is ESTALE: nothing may be written or cut.
bool is_ours(const option& file);

/// Removes what is after the last intact save. @return whether nothing follows it; if not, errno
bool cut_back(option& file);

/// Finds the end of the last intact save and cuts the file back to it. Call this before writing
/// anything. @return 0, or TDMS_WRITE if that fails, or something has gone wrong since the last
///                     call that has not been reported yet
int report_write_error(option& file);

}  // namespace tdms_impl
