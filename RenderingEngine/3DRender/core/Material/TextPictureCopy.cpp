#include "core/Material/TextPictureCopy.h"

#include <filesystem>

#include "platform/base/Error.h"
#include "platform/image/ImageWriter.h"

namespace multiscene {

namespace {

constexpr int jpegQuality = 90;

void writeQuietly(const std::filesystem::path& file, const platform::Bitmap& picture) {
    try {
        platform::writeJpeg(file, picture, jpegQuality);
    } catch (const platform::Error&) {
        // Nothing depends on the copy.
    }
}

}  // namespace

TextPictureCopy& TextPictureCopy::shared() {
    static TextPictureCopy copy;
    return copy;
}

void TextPictureCopy::setFolder(const std::string& folder) {
    const std::lock_guard lock(mutex_);
    worker_.reset();
    folder_ = folder;
}

void TextPictureCopy::write(platform::Bitmap picture) {
    const std::lock_guard lock(mutex_);
    if (folder_.empty()) return;
    if (!worker_) worker_ = std::make_unique<platform::DispatchQueue>("text picture copy");
    worker_->async(
        [file = std::filesystem::path(folder_) / "text.jpg",
         copy = std::make_shared<const platform::Bitmap>(std::move(picture))] { writeQuietly(file, *copy); });
}

}  // namespace multiscene
