#pragma once

#include "core/object_model.h"

namespace tdms_impl {

/// The registry of open files as every user of it sees it.
struct registry {
    std::vector<std::shared_ptr<option>>& files;
    std::mutex& lock;
};

registry& open_files() noexcept;

}  // namespace tdms_impl
