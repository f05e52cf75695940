// Private to platform/image.
#pragma once

#include <compare>
#include <functional>
#include <mutex>

#include "platform/base/FileStamp.h"
#include "platform/base/RecentlyWanted.h"
#include "platform/image/ImageDecoder.h"

namespace platform {

/// Decoded pictures, those that were wanted last, up to so many bytes. Any thread.
class KeptImages {
  public:
    void setMostBytes(size_t bytes);
    /// A copy of what was decoded before when the file is the same, else what `decode` gives.
    Bitmap get(const FileHandle& file, const DecodeOptions& options, const std::function<Bitmap()>& decode);

  private:
    struct Key {
        FileStamp file;
        int width, height, maxLongSide;
        auto operator<=>(const Key&) const = default;
    };

    bool isKeeping();
    std::optional<Bitmap> find(const Key& key);
    void keep(const Key& key, const Bitmap& picture);

    std::mutex mutex_;
    RecentlyWanted<Key, Bitmap> pictures_;
};

/// Those of the process; nothing is kept until it is told to.
KeptImages& keptImages();

}  // namespace platform
