#pragma once

#include "core/object_model.h"

namespace tdms_impl {

/// A descriptor for reading the file of a handle; less than 0 if there is none. A stream that was
/// opened for writing only gets a second one.
int reading_descriptor(option& file);

/// Call this when a write to the stream fails for the first time. Keeps the reason, and how much of
/// the file was written before: later writes may follow missing bytes.
void note_failed_write(option& file);

/// Determines where the last intact save of a writable file ends, after save_file() has passed some
/// to the stream. If the stream could not write all, `write_error` keeps the reason.
/// @return whether it is known; if not, errno, and nothing may be written
bool find_saved_size(option& file);

}  // namespace tdms_impl
