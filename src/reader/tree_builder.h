#pragma once

#include <vector>

#include "core/object_model.h"
#include "reader/repeated_metadata.h"

namespace tdms_impl {

enum class unknown_types { accepted, rejected };

/// Grows a tree segment by segment. The file and groups have no raw data; if they state an index,
/// it is skipped.
class tree_builder {
  public:
    /// @param of_values whether a channel may have a type that the format does not know; if not,
    ///                  that is an exception, as it always is for a property
    /// @param known a tree whose channels' types and latest counts also hold for those of `file`
    explicit tree_builder(option& file, unknown_types of_values = unknown_types::accepted,
                          option* known = nullptr)
        : file_(file), known_(known), of_values_(of_values)
    {
    }

    int add_segment(std::span<const unsigned char> metadata);

    /// Must follow the last segment: of metadata repeated in a row, only the number of values is
    /// new, which is added once.
    void settle();

    // For repeated_metadata, which remembers channels.
    int find(const listed_object& listed, channel*& found);
    int take(const found_object<channel>& found);
    void property(const property_entry& entry);

  private:
    void find_or_add_group(std::string_view path);
    channel& find_or_add_channel(std::string_view path, std::string_view name);
    void add_what_is_known(channel& added) const;

    option& file_;
    option* known_;
    unknown_types of_values_;
    group* group_ = nullptr;              // of the latest group or channel
    property_map* properties_ = nullptr;  // of the latest object
    repeated_metadata<channel> seen_;
    const std::vector<found_object<channel>>* counted_ = nullptr;  // the metadata recognised last
    std::uint64_t pending_ = 0;  // its repetitions not counted yet
};

}  // namespace tdms_impl
