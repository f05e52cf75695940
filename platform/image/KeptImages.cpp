#include "platform/image/KeptImages.h"

namespace platform {

void keepDecodedImages(size_t mostBytes) { keptImages().setMostBytes(mostBytes); }

KeptImages& keptImages() {
    static KeptImages images;
    return images;
}

void KeptImages::setMostBytes(size_t bytes) {
    const std::lock_guard lock(mutex_);
    pictures_.setMostBytes(bytes);
}

bool KeptImages::isKeeping() {
    const std::lock_guard lock(mutex_);
    return pictures_.mostBytes() > 0;
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
    return pictures_.find(key);
}

void KeptImages::keep(const Key& key, const Bitmap& picture) {
    const std::lock_guard lock(mutex_);
    pictures_.keep(key, picture, picture.rgba.size());
}

}  // namespace platform
