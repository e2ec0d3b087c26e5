#include "conversion/column_writer.h"

#include <limits>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace tool {
namespace {

template <class T>
class typed_writer : public column_writer {
  public:
    typed_writer(tdms::channel to, char decimal) : to_(std::move(to)), decimal_(decimal) {}

    std::size_t add(const csv_field& field) override
    {
        std::optional<T> value = value_from<T>(field.text, decimal_);
        if constexpr (std::is_same_v<T, double>) {
            if (field.is_missing()) value = std::numeric_limits<double>::quiet_NaN();
        }
        if (!value) return 0;
        std::size_t bytes = sizeof(T);
        if constexpr (std::is_same_v<T, std::string>) {
            if (value->find('\0') != std::string::npos) return 0;
            bytes += value->size();
        }
        values_.push_back(std::move(*value));
        return bytes;
    }

    void flush() override
    {
        to_.append(values_);
        values_.clear();
    }

  private:
    tdms::channel to_;
    char decimal_;
    std::vector<T> values_;
};

}  // namespace

std::unique_ptr<column_writer> writer_of(const csv_column_profile& profile, const tdms::channel& to)
{
    const auto make = [&](auto value) -> std::unique_ptr<column_writer> {
        return std::make_unique<typed_writer<decltype(value)>>(to, profile.decimal());
    };
    switch (profile.type()) {
        case TDMS_TYPE_BOOL:
            return make(bool{});
        case TDMS_TYPE_INT64:
            return make(std::int64_t{});
        case TDMS_TYPE_UINT64:
            return make(std::uint64_t{});
        case TDMS_TYPE_DOUBLE:
            return make(double{});
        case TDMS_TYPE_TIMESTAMP:
            return make(tdms::time{});
        case TDMS_TYPE_STRING:
            return make(std::string{});
        default:
            return nullptr;
    }
}

}  // namespace tool
