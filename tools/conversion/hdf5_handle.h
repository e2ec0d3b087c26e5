#pragma once

#include <hdf5.h>

#include <string>
#include <utility>

namespace tool {

/// HDF5 could do nothing about a file; what() says why, in the system's words if it knows them.
[[noreturn]] void fail_by_hdf5();

/// Results less than 0 are failures, which are thrown.
template <class T>
T checked(T result)
{
    if (result < 0) fail_by_hdf5();
    return result;
}

/// An identifier of any kind of object in HDF5.
class hdf5_handle {
  public:
    explicit hdf5_handle(hid_t id) : id_(checked(id)) {}
    ~hdf5_handle()
    {
        if (id_ >= 0) H5Idec_ref(id_);
    }
    hdf5_handle(hdf5_handle&& other) noexcept : id_(std::exchange(other.id_, -1)) {}
    hdf5_handle& operator=(hdf5_handle&& other) noexcept
    {
        std::swap(id_, other.id_);
        return *this;
    }

    operator hid_t() const { return id_; }  // NOLINT(google-explicit-constructor)

    /// What was buffered may fail to be written only now.
    void close() { checked(H5Idec_ref(std::exchange(id_, -1))); }

  private:
    hid_t id_;
};

}  // namespace tool
