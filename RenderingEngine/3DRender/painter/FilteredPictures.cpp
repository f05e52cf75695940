#include "painter/FilteredPictures.h"

#include <algorithm>

#include "platform/image/ColorTable.h"
#include "platform/pixels/GrainNoise.h"
#include "platform/pixels/PictureFilter.h"

namespace multiscene {

using platform::Canvas;
using platform::FilterPass;
using platform::Surface;

namespace {

constexpr ptrdiff_t bytesAPixel = 4;

/// Memory as a picture whose upper row is the first or the last one there.
Canvas canvasIn(std::vector<uint8_t>& memory, const FilteredSize& size, bool isUpsideDown) {
    const ptrdiff_t stride = size.width * bytesAPixel;
    memory.resize(static_cast<size_t>(stride * size.height));
    return {.pixels = memory.data() + (isUpsideDown ? stride * (size.height - 1) : 0),
            .stride = isUpsideDown ? -stride : stride,
            .width = size.width,
            .height = size.height};
}

Surface seen(const Canvas& canvas, bool isOpaque) {
    return {.pixels = canvas.pixels,
            .stride = canvas.stride,
            .width = canvas.width,
            .height = canvas.height,
            .opaque = isOpaque};
}

/// The same picture, upright.
Surface upright(Surface surface, bool isUpsideDown) {
    if (!isUpsideDown) return surface;
    surface.pixels += surface.stride * (surface.height - 1);
    surface.stride = -surface.stride;
    return surface;
}

/// A picture over all of a canvas, as colours multiplied by alpha.
void stretch(const Surface& picture, bool isPremultiplied, const Canvas& canvas,
             platform::TilePainter& tiles) {
    const double right = canvas.width, bottom = canvas.height;
    platform::QuadPaint paint;
    paint.picture = picture;
    paint.premultiplied = isPremultiplied;
    paint.corners = {{{.x = 0, .y = bottom, .u = 0, .v = 1},
                      {.x = right, .y = bottom, .u = 1, .v = 1},
                      {.x = right, .y = 0, .u = 1, .v = 0},
                      {.x = 0, .y = 0, .u = 0, .v = 0}}};
    paint.smooth = {false, false, false, false};
    platform::PreparedPaint prepared;
    const bool isShown = platform::preparePaint(paint, canvas.width, canvas.height, prepared);
    tiles.paint({&prepared, isShown ? 1u : 0u}, 0, canvas);
}

FilterPass passOf(const Filter& filter, const Surface& picture, const Canvas& filtered) {
    FilterPass pass;
    pass.picture = picture;
    pass.filtered = filtered;
    pass.strength = filter.strength;
    pass.numbers = filter.numbers;
    for (size_t i = 0; i < filter.colors.size(); ++i)
        pass.colors[i] = {filter.colors[i].r, filter.colors[i].g, filter.colors[i].b, filter.colors[i].a};
    return pass;
}

void lookAside(const Filter& filter, FilterPass& pass, platform::BellBlur& blur,
               platform::TilePainter& tiles) {
    const FilteredSize size{pass.picture.width, pass.picture.height};
    switch (filter.type->aside) {
        case FilterAside::None:
            break;
        case FilterAside::Blurred: {
            const platform::BellSteps steps = platform::bellSteps(blurOf(filter, size));
            pass.aside = blur.blur(pass.picture, steps, tiles);
            pass.asideScale = 1.0f / static_cast<float>(1 << steps.halvings);
            break;
        }
        case FilterAside::Noise:
            pass.aside = platform::grainNoise();
            pass.asideScale = grainScale(filter, size);
            pass.asideShift = platform::grainShift(filter.frame);
            break;
        case FilterAside::Table:
            pass.aside = filter.table->picture();
            break;
    }
}

}  // namespace

Texture& FilteredPictures::of(const Texture& texture, const FilterChain& chain, bool isUpsideDown,
                              int64_t frame, platform::TilePainter& tiles) {
    forget(frame - 1);
    const Surface& picture = texture.levels().front();
    const auto known = std::ranges::find_if(results_, [&](const auto& result) {
        return result->isStill && !result->original.expired() && result->pixels == picture.pixels &&
               result->chain == chain;
    });
    if (known != results_.end()) {
        (*known)->lastFrame = frame;
        return (*known)->texture;
    }
    const FilteredSize size = filteredSize(picture.width, picture.height, chain.pictureSize);
    auto result = std::make_unique<Result>();
    result->original = texture.memoryOwner();
    result->isStill = texture.isStill();
    result->pixels = picture.pixels;
    result->chain = chain;
    result->lastFrame = frame;
    result->memory = memoryFor(static_cast<size_t>(size.width * size.height * bytesAPixel));
    const Canvas canvas = canvasIn(*result->memory, size, isUpsideDown);
    apply(loaded(texture, size, isUpsideDown, tiles), chain, canvas, tiles);
    Surface inMemory = seen(canvas, picture.opaque);
    inMemory = upright(inMemory, isUpsideDown);  // back again
    result->texture.setPainted(inMemory, result->memory);
    return results_.emplace_back(std::move(result))->texture;
}

/// The picture upright, in the size that it is filtered in.
Surface FilteredPictures::loaded(const Texture& texture, const FilteredSize& size, bool isUpsideDown,
                                 platform::TilePainter& tiles) {
    const Surface& picture = texture.levels().front();
    const bool isReady = texture.isPremultiplied() || picture.opaque;
    if (isReady && FilteredSize{picture.width, picture.height} == size) return upright(picture, isUpsideDown);
    const Canvas canvas = canvasIn(loaded_, size, false);
    stretch(picture, texture.isPremultiplied(), canvas, tiles);
    return upright(seen(canvas, picture.opaque), isUpsideDown);
}

void FilteredPictures::apply(const Surface& picture, const FilterChain& chain, const Canvas& result,
                             platform::TilePainter& tiles) {
    Surface shown = picture;
    const size_t count = chain.filters.size();
    for (size_t i = 0; i < count; ++i) {
        const Filter& filter = chain.filters[i];
        const Canvas canvas =
            i + 1 == count ? result : canvasIn(steps_[i % 2], {result.width, result.height}, false);
        FilterPass pass = passOf(filter, shown, canvas);
        lookAside(filter, pass, blur_, tiles);
        platform::filterPicture(pass, platform::filterLoopNamed(filter.type->name), tiles);
        shown = seen(canvas, picture.opaque);
    }
}

FilteredPictures::Memory FilteredPictures::memoryFor(size_t bytes) {
    const auto free =
        std::ranges::find_if(spare_, [](const Memory& memory) { return memory.use_count() == 1; });
    Memory memory = std::make_shared<std::vector<uint8_t>>();
    if (free != spare_.end()) {
        memory = std::move(*free);
        spare_.erase(free);
    }
    memory->resize(bytes);
    return memory;
}

void FilteredPictures::forget(int64_t beforeFrame) {
    constexpr size_t mostSpare = 4;
    std::erase_if(results_, [&](const auto& result) {
        const bool isOver = result->lastFrame < beforeFrame;
        if (isOver && spare_.size() < mostSpare) spare_.push_back(result->memory);
        return isOver;
    });
}

}  // namespace multiscene
