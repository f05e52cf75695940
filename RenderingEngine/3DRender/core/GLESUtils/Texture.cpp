#include "core/GLESUtils/Texture.h"

#include <utility>

#include "core/GLESUtils/PixelRows.h"
#include "core/GLESUtils/TextureUpload.h"
#include "platform/pixels/ClearBlocks.h"

namespace multiscene {

namespace {

bool hasOpaquePixels(const platform::Bitmap& bitmap) {
    for (size_t alpha = 3; alpha < bitmap.rgba.size(); alpha += 4)
        if (bitmap.rgba[alpha] != 255) return false;
    return true;
}

/// Pictures, and where they are empty.
struct KeptLevels {
    std::vector<platform::Bitmap> pictures;
    std::vector<std::unique_ptr<platform::ClearBlocks>> clear;

    explicit KeptLevels(std::vector<platform::Bitmap> levels) : pictures(std::move(levels)) {}

    /// None where looking for them would not pay.
    const platform::ClearBlocks* clearBlocksOf(const platform::Surface& picture) {
        auto blocks = std::make_unique<platform::ClearBlocks>(picture);
        return blocks->isUseful() ? clear.emplace_back(std::move(blocks)).get() : nullptr;
    }
};

}  // namespace

void Texture::setPicture(platform::Bitmap picture) {
    std::vector<platform::Bitmap> levels;
    levels.push_back(std::move(picture));
    setLevels(std::move(levels), true);
}

void Texture::setLevels(std::vector<platform::Bitmap> levels, bool premultiplied) {
    const auto kept = std::make_shared<KeptLevels>(std::move(levels));
    isOpaque_ = hasOpaquePixels(kept->pictures.front());
    isPremultiplied_ = premultiplied;
    std::vector<platform::Surface> surfaces;
    for (platform::Bitmap& level : kept->pictures) {
        uint8_t* pixels = level.rgba.data();
        copyPixels(pixels, pixels, level.width * level.height, true);
        surfaces.push_back({.pixels = pixels,
                            .stride = level.stride(),
                            .width = level.width,
                            .height = level.height,
                            .opaque = isOpaque_});
        if (!isOpaque_) surfaces.back().clear = kept->clearBlocksOf(surfaces.back());
    }
    setMemory(std::move(surfaces), kept);
    isStill_ = true;
}

void Texture::setFrame(std::shared_ptr<const platform::FilmPicture> frame, bool premultiplied) {
    isOpaque_ = frame->isOpaque();
    isPremultiplied_ = premultiplied;
    const platform::Surface surface{.stride = frame->stride(),
                                    .width = frame->width(),
                                    .height = frame->height(),
                                    .opaque = isOpaque_,
                                    .film = frame.get()};
    setMemory({surface}, std::move(frame));
}

void Texture::setPainted(const platform::Surface& memory, std::shared_ptr<const void> owner) {
    isOpaque_ = memory.opaque;
    isPremultiplied_ = true;
    setMemory({memory}, std::move(owner));
}

GLTexture& Texture::setDrawnByGL(int width, int height) {
    dropMemory();
    width_ = width;
    height_ = height;
    isOpaque_ = false;
    isPremultiplied_ = true;
    isStale_ = false;
    return gl_;
}

void Texture::setMemory(std::vector<platform::Surface> levels, std::shared_ptr<const void> owner) {
    levels_ = std::move(levels);
    width_ = levels_.front().width;
    height_ = levels_.front().height;
    owner_ = std::move(owner);
    isStill_ = false;
    isStale_ = true;
}

void Texture::dropMemory() {
    levels_.clear();
    owner_.reset();
}

std::span<const platform::Surface> Texture::levels() const {
    for (platform::Surface& level : levels_)
        if (level.film && !level.pixels) level.pixels = level.film->data();
    return levels_;
}

unsigned int Texture::glName() {
    if (isStale_) upload();
    return gl_.name();
}

void Texture::upload() {
    isStale_ = false;
    gl_.create();
    const platform::Surface& largest = levels().front();
    if (levels_.size() == 1 && largest.width == glWidth_ && largest.height == glHeight_)
        return updateTexture(gl_.name(), largest);
    uploadTexture(gl_.name(), levels_);
    glWidth_ = levels_.size() == 1 ? largest.width : 0;
    glHeight_ = levels_.size() == 1 ? largest.height : 0;
}

}  // namespace multiscene
