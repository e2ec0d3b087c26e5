#pragma once

#include <string>

#include "core/object_model.h"

namespace tdms_impl {

/// Opens the file at `path` for reading and builds the tree of its groups, channels and properties
/// in `file`, which is fresh. No values are read. The stream stays open, except on TDMS_FILE_READ.
/// A property of an unknown type is an exception.
int read_tree(option& file, const std::string& path);

// The functions below read from a descriptor, and set `file_size` to the end of what they read. An
// unknown type of a property or of values is TDMS_DATATYPE.

/// Builds the tree of a fresh `file` from all segments of a file of `size` bytes.
int read_all_segments(option& file, int from, std::uint64_t size);

/// Builds the tree of a fresh `file` from the intact segments at the beginning of a file of `size`
/// bytes. @return 0; the status of the first segment if that is damaged, not just truncated;
///         TDMS_FILE_READ if the device fails
int read_intact_segments(option& file, int from, std::uint64_t size);

/// Adds the intact segments from `file_size` on to a tree, in which every object stays where it
/// is. If memory runs out, only complete segments have been added.
/// @return 0, or TDMS_FILE_READ if the device fails, or the file is not the one that was opened
int read_appended_segments(option& file, int from, std::uint64_t size);

}  // namespace tdms_impl
