#include "painter/BlurredCopies.h"

#include <algorithm>

#include "platform/pixels/Blur.h"

namespace multiscene {

Texture& BlurredCopies::of(const Texture& texture, const BlurLook& look, platform::TilePainter& tiles) {
    const platform::Surface& picture = texture.levels().front();
    std::erase_if(copies_, [](const auto& copy) { return copy->original.expired(); });
    const auto known =
        std::ranges::find_if(copies_, [&](const auto& copy) { return copy->pixels == picture.pixels; });
    if (known != copies_.end()) return (*known)->texture;

    auto copy = std::make_unique<Copy>();
    const ptrdiff_t stride = ptrdiff_t{picture.width} * 4;
    copy->original = texture.memoryOwner();
    copy->pixels = picture.pixels;
    copy->memory->resize(static_cast<size_t>(stride * picture.height));
    blurAlongDiagonal(
        picture, look.pictureSize.x, look.pictureSize.y, tiles,
        {.pixels = copy->memory->data(), .stride = stride, .width = picture.width, .height = picture.height});
    copy->texture.setPainted({.pixels = copy->memory->data(),
                              .stride = stride,
                              .width = picture.width,
                              .height = picture.height,
                              .opaque = picture.opaque},
                             copy->memory);
    return copies_.emplace_back(std::move(copy))->texture;
}

}  // namespace multiscene
