#include "report/RenderReport.h"

#include <algorithm>

namespace multiscene {

void RenderReport::add(Entry entry) {
    const std::lock_guard lock(mutex_);
    if (std::find(entries_.begin(), entries_.end(), entry) == entries_.end())
        entries_.push_back(std::move(entry));
}

std::vector<RenderReport::Entry> RenderReport::entries() const {
    const std::lock_guard lock(mutex_);
    return entries_;
}

}  // namespace multiscene
