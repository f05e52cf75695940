#include "platform/image/KeptImages.h"

#include <algorithm>

namespace platform {

void keepDecodedImages(size_t mostBytes) { keptImages().setMostBytes(mostBytes); }

KeptImages& keptImages() {
    static KeptImages images;
    return images;
}

void KeptImages::setMostBytes(size_t bytes) {
    const std::lock_guard lock(mutex_);
    mostBytes_ = bytes;
}

bool KeptImages::isKeeping() {
    const std::lock_guard lock(mutex_);
    return mostBytes_ > 0;
}

Bitmap KeptImages::get(const FileHandle& file, const DecodeOptions& options,
                       const std::function<Bitmap()>& decode) {
    const auto stamp = isKeeping() ? FileStamp::of(file) : std::nullopt;
    if (!stamp) return decode();
    const Key key{*stamp, options.canvas.width, options.canvas.height, options.maxLongSide};
    if (auto kept = find(key)) return std::move(*kept);
    Bitmap picture = decode();
    if (FileStamp::of(file) == stamp) keep(key, picture);
    return picture;
}

std::optional<Bitmap> KeptImages::find(const Key& key) {
    const std::lock_guard lock(mutex_);
    const auto found = std::ranges::find(kept_, key, &Kept::key);
    if (found == kept_.end()) return std::nullopt;
    kept_.splice(kept_.begin(), kept_, found);
    return found->picture;
}

void KeptImages::keep(const Key& key, const Bitmap& picture) {
    const std::lock_guard lock(mutex_);
    if (picture.rgba.size() > mostBytes_ / 4) return;
    kept_.push_front({key, picture});
    bytes_ += picture.rgba.size();
    for (; bytes_ > mostBytes_; kept_.pop_back()) bytes_ -= kept_.back().picture.rgba.size();
}

}  // namespace platform
