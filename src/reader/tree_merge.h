#pragma once

#include "core/object_model.h"

namespace tdms_impl {

/// Merges the tree of appended segments into the tree of the file: new objects move over, and those
/// already there take over counts and properties. Nothing is allocated, so a segment is added
/// completely or not at all.
void merge(option& into, option& added) noexcept;

}  // namespace tdms_impl
