#include "playback/TextPictureCopy.h"

#include <exception>
#include <filesystem>
#include <utility>

#include "platform/image/ImageWriter.h"

namespace multiscene {

namespace {
constexpr int kJpegQuality = 90;
}

void TextPictureCopy::write(const platform::Bitmap& picture) {
    if (folder_.empty() || picture.isEmpty()) return;
    const std::lock_guard lock(mutex_);
    const bool isExpected = !latest_.isEmpty();
    try {
        latest_ = picture;
        if (!worker_) worker_ = std::make_unique<platform::DispatchQueue>("text picture copy");
        if (!isExpected) worker_->async([this] { writeLatest(); });
    } catch (const std::exception&) {
        latest_ = {};  // nothing depends on the copy
    }
}

void TextPictureCopy::writeLatest() {
    platform::Bitmap picture;
    {
        const std::lock_guard lock(mutex_);
        picture = std::exchange(latest_, {});
    }
    try {
        platform::writeJpeg(std::filesystem::path(folder_) / "text.jpg", picture, kJpegQuality);
    } catch (const std::exception&) {
        // Nothing depends on the copy.
    }
}

}  // namespace multiscene
