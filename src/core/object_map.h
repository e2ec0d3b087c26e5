#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

namespace tdms_impl {

/// Objects by path, in byte order. The map is their only owner, and none of them ever moves.
///
/// Segments list the same objects in this order, again and again, and programs stage values in it.
/// So the object wanted is nearly always the one after the latest.
template <class Object>
class object_map {
    using nodes = std::map<std::string, Object, std::less<>>;

  public:
    using entry = typename nodes::value_type;

    object_map() = default;
    object_map(const object_map&) = delete;
    object_map& operator=(const object_map&) = delete;

    auto begin() { return nodes_.begin(); }
    auto end() { return nodes_.end(); }
    auto begin() const { return nodes_.begin(); }
    auto end() const { return nodes_.end(); }
    bool empty() const { return nodes_.empty(); }
    std::size_t size() const { return nodes_.size(); }
    bool contains(std::string_view path) const { return nodes_.contains(path); }

    /// The object at that path; null if there is none.
    Object* find(std::string_view path)
    {
        if (nodes_.empty()) return nullptr;
        if (latest_ == nodes_.end()) latest_ = nodes_.begin();
        const int order = path.compare(latest_->first);
        if (order == 0) return &latest_->second;
        auto found = std::next(latest_);
        if (found == nodes_.end()) {
            // A new path mostly comes after all others.
            if (order > 0) return nullptr;
            found = nodes_.begin();
        }
        if (found->first != path) found = nodes_.lower_bound(path);
        if (found == nodes_.end()) return nullptr;
        latest_ = found;
        return found->first == path ? &found->second : nullptr;
    }

    /// Adds an object, with zeroed members, at a path that has none.
    entry& add(std::string_view path)
    {
        const bool after = latest_ != nodes_.end() && latest_->first < path;
        latest_ = nodes_.try_emplace(after ? std::next(latest_) : latest_, std::string(path));
        return *latest_;
    }

    /// REQUIRES: there is an object at that path.
    void erase(std::string_view path)
    {
        latest_ = nodes_.end();
        nodes_.erase(nodes_.find(path));
    }

    void clear()
    {
        latest_ = nodes_.end();
        nodes_.clear();
    }

    /// Takes over the objects of another map at paths that have none here.
    void take_from(object_map& other)
    {
        other.latest_ = other.nodes_.end();
        nodes_.merge(other.nodes_);
    }

  private:
    nodes nodes_;
    typename nodes::iterator latest_ = nodes_.end();  // found or added
};

}  // namespace tdms_impl
