#pragma once

#include <hdf5.h>

#include <utility>

namespace tool {

/// Throws a failure with HDF5's reason; if that is an error of the system, with the system's
/// message.
[[noreturn]] void fail_by_hdf5();

/// Returns the result of a function of HDF5. Throws a failure if it is less than 0.
template <class T>
T checked(T result)
{
    if (result < 0) fail_by_hdf5();
    return result;
}

/// The identifier of an object in HDF5, and its owner.
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

    /// Releases the object, or throws a failure: buffered data may be written only now.
    void close() { checked(H5Idec_ref(std::exchange(id_, -1))); }

  private:
    hid_t id_;
};

}  // namespace tool
