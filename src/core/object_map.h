#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

namespace tdms {

/// Objects by path, in byte order. The map is their only owner, and none of them ever moves.
///
/// Segments list their objects in this order, and one after the other the same ones; a program that
/// stages values does so as well. So the object wanted is nearly always the one after the last.
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
        if (next_ == nodes_.end()) {
            // What is new mostly comes after all others.
            if (nodes_.empty() || nodes_.rbegin()->first < path) return nullptr;
            next_ = nodes_.begin();
        }
        if (next_->first != path) next_ = nodes_.lower_bound(path);
        if (next_ == nodes_.end() || next_->first != path) return nullptr;
        return &(next_++)->second;
    }

    /// Adds an object, its members zero, at a path that has none.
    entry& add(std::string_view path)
    {
        const auto added = nodes_.try_emplace(next_, std::string(path));
        next_ = std::next(added);
        return *added;
    }

    /// REQUIRES: there is an object at that path.
    void erase(std::string_view path) { next_ = nodes_.erase(nodes_.find(path)); }

    void clear()
    {
        nodes_.clear();
        next_ = nodes_.end();
    }

    /// Takes over the objects of another map at paths that have none here.
    void take_from(object_map& other)
    {
        nodes_.merge(other.nodes_);
        other.next_ = other.nodes_.end();
    }

  private:
    nodes nodes_;
    typename nodes::iterator next_ = nodes_.end();
};

}  // namespace tdms
