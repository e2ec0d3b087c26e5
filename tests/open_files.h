// The registry of open files, for programs that link to it by name.
#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "core/object_model.h"

extern std::vector<std::shared_ptr<tdms_impl::option>> fileHandles;
extern std::mutex mtx;
