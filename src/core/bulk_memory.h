#pragma once

#include <cstddef>

#include "core/object_model.h"

namespace tdms {

/// Makes room for at least `size` bytes in all, keeping the contents. Room for many megabytes comes
/// on huge pages where the system has them: touching fresh memory page by page for the first time
/// costs several times as much as copying into it.
void reserve_bulk(byte_vector& bytes, std::size_t size);

}  // namespace tdms
