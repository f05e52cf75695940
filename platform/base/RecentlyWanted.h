#pragma once

#include <algorithm>
#include <cstddef>
#include <list>
#include <optional>
#include <utility>

namespace platform {

/// Values by their keys, those that were wanted last, up to so many bytes; none until that is set. Few and
/// large ones: they are looked for one after the other. Not for two threads at a time.
template <class Key, class Value>
class RecentlyWanted {
  public:
    void setMostBytes(size_t bytes) { mostBytes_ = bytes; }
    size_t mostBytes() const { return mostBytes_; }

    std::optional<Value> find(const Key& key) {
        const auto found = std::ranges::find(kept_, key, &Kept::key);
        if (found == kept_.end()) return std::nullopt;
        kept_.splice(kept_.begin(), kept_, found);
        return found->value;
    }

    /// Not what would take the place of nearly everything else.
    void keep(Key key, Value value, size_t bytes) {
        if (bytes > mostBytes_ / 4) return;
        kept_.push_front({std::move(key), std::move(value), bytes});
        bytes_ += bytes;
        for (; bytes_ > mostBytes_; kept_.pop_back()) bytes_ -= kept_.back().bytes;
    }

  private:
    struct Kept {
        Key key;
        Value value;
        size_t bytes;
    };

    std::list<Kept> kept_;  ///< the one wanted last in front
    size_t bytes_ = 0, mostBytes_ = 0;
};

}  // namespace platform
