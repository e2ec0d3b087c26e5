#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "core/object_model.h"

namespace tdms_impl {

/// The registry of open files.
struct registry {
    std::vector<std::shared_ptr<option>>& files;  // in the order of opening; their only owner
    std::mutex& lock;                             // guards `files`
};

registry& open_files() noexcept;

}  // namespace tdms_impl
