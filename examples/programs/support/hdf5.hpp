// HDF5's C functions with exceptions, and identifiers that close themselves.
#ifndef EXAMPLES_HDF5_HPP
#define EXAMPLES_HDF5_HPP

#include <hdf5.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <utility>

namespace h5 {

/// Stops HDF5 from printing errors, in the thread that calls this.
inline void be_silent()
{
    H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr);
}

/// The innermost reason that HDF5 gives for a failure.
inline std::string reason()
{
    std::string text;
    const auto take_first = [](unsigned number, const H5E_error2_t* entry, void* to) {
        if (number == 0) *static_cast<std::string*>(to) = entry->desc;
        return 0;
    };
    H5Ewalk2(H5E_DEFAULT, H5E_WALK_UPWARD, take_first, &text);
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

/// Returns the result of a function of HDF5. Throws if it is less than 0.
template <class T>
T check(T result, const std::string& subject)
{
    if (result < 0) throw std::runtime_error(subject + ": " + reason());
    return result;
}

/// The identifier of an object, and its owner.
class id {
  public:
    id(hid_t value, const std::string& subject) : value_(check(value, subject)) {}
    id(id&& from) noexcept : value_(std::exchange(from.value_, -1)) {}
    id& operator=(id&& from) noexcept
    {
        std::swap(value_, from.value_);
        return *this;
    }
    ~id()
    {
        if (value_ >= 0) H5Idec_ref(value_);
    }

    operator hid_t() const { return value_; }

    /// Closes it, and throws if that fails.
    void close(const std::string& subject)
    {
        check(H5Idec_ref(std::exchange(value_, -1)), subject);
    }

  private:
    hid_t value_;
};

}  // namespace h5

#endif
