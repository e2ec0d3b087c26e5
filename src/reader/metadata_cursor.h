#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "codec/byte_order.h"

namespace tdms_impl {

/// Reads one segment's metadata from front to back and owns the only bounds check. Whoever reads
/// past the end gets zeros and empty strings from then on, and ok() is false.
class metadata_cursor {
  public:
    explicit metadata_cursor(std::span<const unsigned char> metadata) : rest_(metadata) {}

    bool ok() const { return ok_; }

    std::uint32_t u32() { return number<std::uint32_t>(); }
    std::uint64_t u64() { return number<std::uint64_t>(); }

    /// The next 32-bit number, which stays the next.
    std::uint32_t peek_u32()
    {
        metadata_cursor ahead = *this;
        const std::uint32_t value = ahead.u32();
        if (!ahead.ok()) fail();
        return value;
    }

    std::span<const unsigned char> bytes(std::uint64_t count)
    {
        if (count > rest_.size()) {
            fail();
            return {};
        }
        const auto taken = rest_.first(count);
        rest_ = rest_.subspan(count);
        return taken;
    }

    /// The bytes of a length-prefixed string.
    std::string_view string()
    {
        const auto taken = bytes(u32());
        return {reinterpret_cast<const char*>(taken.data()), taken.size()};
    }

  private:
    template <class T>
    T number()
    {
        const auto taken = bytes(sizeof(T));
        return ok_ ? load<T>(taken.data(), true) : T{0};
    }

    void fail()
    {
        ok_ = false;
        rest_ = {};
    }

    std::span<const unsigned char> rest_;
    bool ok_ = true;
};

}  // namespace tdms_impl
