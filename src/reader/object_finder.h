#pragma once

#include "core/object_model.h"

namespace tdms {

/// Finds objects of a map by their paths. Segments list their objects in the map's order, and one
/// after the other the same ones, so the object wanted is nearly always the one behind the last.
template <class Object>
class object_finder {
  public:
    /// Holds no map: REQUIRES assignment before use.
    object_finder() = default;
    explicit object_finder(object_map<Object>& objects) : objects_(&objects), next_(objects.end())
    {
    }

    /// The object at that path, or null.
    Object* find(std::string_view path)
    {
        if (next_ == objects_->end()) next_ = objects_->begin();
        if (next_ == objects_->end()) return nullptr;
        if (next_->first != path) next_ = objects_->lower_bound(path);
        if (next_ == objects_->end() || next_->first != path) return nullptr;
        return (next_++)->second.get();
    }

    /// Adds an empty object. REQUIRES: the last call was a find() of that path, which gave null.
    Object& add(std::string_view path)
    {
        const auto added = objects_->emplace_hint(next_, path, std::make_shared<Object>());
        next_ = std::next(added);
        return *added->second;
    }

  private:
    object_map<Object>* objects_ = nullptr;
    typename object_map<Object>::iterator next_{};
};

}  // namespace tdms
