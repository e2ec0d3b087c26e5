#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "codec/byte_order.h"
#include "core/byte_vector.h"

// The metadata of a segment is little-endian numbers and length-prefixed strings back to back.

namespace tdms_impl {

/// Appends numbers, one after the other.
template <class... Number>
void put(byte_vector& metadata, Number... values)
{
    unsigned char bytes[(sizeof(Number) + ...)];
    unsigned char* next = bytes;
    ((store(next, values, true), next += sizeof(Number)), ...);
    append(metadata, bytes, sizeof bytes);
}

/// Appends a length-prefixed string.
inline void put_string(byte_vector& metadata, std::string_view string)
{
    put(metadata, static_cast<std::uint32_t>(string.size()));
    append(metadata, string.data(), string.size());
}

/// Reads one segment's metadata from front to back and owns the only bounds check. Reading past the
/// end yields zeros and empty strings from then on, and makes ok() false.
class metadata_cursor {
  public:
    explicit metadata_cursor(std::span<const unsigned char> metadata)
        : begin_(metadata.data()), rest_(metadata)
    {
    }

    bool ok() const { return ok_; }

    /// How many bytes have been read.
    std::size_t position() const { return static_cast<std::size_t>(rest_.data() - begin_); }

    std::uint32_t u32() { return number<std::uint32_t>(); }
    std::uint64_t u64() { return number<std::uint64_t>(); }

    /// The next 32-bit number, without consuming it.
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
        rest_ = rest_.first(0);
    }

    const unsigned char* begin_;
    std::span<const unsigned char> rest_;
    bool ok_ = true;
};

}  // namespace tdms_impl
