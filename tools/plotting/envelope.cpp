#include "plotting/envelope.h"

#include <algorithm>

namespace tool {

void envelope::coarsen()
{
    while (4 * cells_.size() > 3 * limit()) {
        const auto [low, high] = std::ranges::minmax(cells_, {}, &envelope_cell::first_x);
        const auto width =
            static_cast<std::uint64_t>(bin(high)) - static_cast<std::uint64_t>(bin(low));
        if (width > 2 * columns_) {
            ++shift_;
            merge_neighbours();
        } else {
            // Wider cells would be visible; the order of the samples is not.
            unordered_ = true;
            sort();
        }
    }
}

void envelope::sort()
{
    std::ranges::stable_sort(cells_, {}, [this](const envelope_cell& c) { return bin(c); });
    merge_neighbours();
}

void envelope::merge_neighbours()
{
    auto kept = cells_.begin();
    for (auto next = kept + 1; next != cells_.end(); ++next) {
        if (bin(*next) == bin(*kept)) {
            kept->take_in(*next);
        } else {
            *++kept = *next;
        }
    }
    cells_.erase(kept + 1, cells_.end());
}

}  // namespace tool
