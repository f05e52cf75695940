#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "core/Material/ZBTexture.h"

namespace multiscene {

/// Textures by key, one cache for the process: a facility for scene code. The materials make textures of
/// their own. Adding and removing one: render queue, GL context current; looking up and emptying lock the
/// cache.
class ZBTextureCache {
  public:
    using Texture = std::shared_ptr<ZBTexture>;

    static ZBTextureCache& sharedManager();

    /// The cached texture of that key, else the file's, also when it could not be loaded.
    Texture addTextureFromFile(const std::string& path) { return addTextureFromFile(path, path); }
    Texture addTextureFromFile(const std::string& path, const std::string& key);
    Texture addTextureFromPvrTexture(const std::string& path) { return addTextureFromPvrTexture(path, path); }
    Texture addTextureFromPvrTexture(const std::string& path, const std::string& key);
    Texture addTextureFromImage(const platform::Bitmap& image, const std::string& key);

    /// The extension is exactly "pvr" or "gz".
    static bool isPvrTexture(const std::string& path);

    /// None when there is no such texture.
    Texture getTextureWithKey(const std::string& key) const;
    void removeTextureWithKey(const std::string& key);
    void removeAllTextrue();

  private:
    ZBTextureCache() = default;
    template <typename Load>
    Texture cachedOr(const std::string& key, Load load);

    mutable std::mutex mutex_;
    std::map<std::string, Texture> textureCache_;
};

}  // namespace multiscene
