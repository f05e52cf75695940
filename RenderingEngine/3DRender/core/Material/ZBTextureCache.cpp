#include "core/Material/ZBTextureCache.h"

#include <filesystem>

namespace multiscene {

ZBTextureCache& ZBTextureCache::sharedManager() {
    static ZBTextureCache cache;
    return cache;
}

template <typename Load>
ZBTextureCache::Texture ZBTextureCache::cachedOr(const std::string& key, Load load) {
    const std::lock_guard lock(mutex_);
    Texture& place = textureCache_[key];
    if (!place) {
        place = std::make_shared<ZBTexture>();
        load(*place);
    }
    return place;
}

ZBTextureCache::Texture ZBTextureCache::addTextureFromFile(const std::string& path, const std::string& key) {
    const ImageType type = isPvrTexture(path) ? ImageType::Pvr : ImageType::Picture;
    return cachedOr(key, [&](ZBTexture& texture) { texture.loadPicture(path, type); });
}

ZBTextureCache::Texture ZBTextureCache::addTextureFromPvrTexture(const std::string& path,
                                                                 const std::string& key) {
    return cachedOr(key, [&](ZBTexture& texture) { texture.loadTextureFromPvr(path); });
}

ZBTextureCache::Texture ZBTextureCache::addTextureFromImage(const platform::Bitmap& image,
                                                            const std::string& key) {
    return cachedOr(key, [&](ZBTexture& texture) { texture.loadTextureFromImage(image); });
}

bool ZBTextureCache::isPvrTexture(const std::string& path) {
    const std::string extension = std::filesystem::path(path).extension().string();
    return extension == ".pvr" || extension == ".gz";
}

ZBTextureCache::Texture ZBTextureCache::getTextureWithKey(const std::string& key) const {
    const std::lock_guard lock(mutex_);
    const auto found = textureCache_.find(key);
    return found == textureCache_.end() ? nullptr : found->second;
}

void ZBTextureCache::removeTextureWithKey(const std::string& key) {
    const std::lock_guard lock(mutex_);
    textureCache_.erase(key);
}

void ZBTextureCache::removeAllTextrue() {
    const std::lock_guard lock(mutex_);
    textureCache_.clear();
}

}  // namespace multiscene
