#include "painter/StillPaints.h"

#include <bit>

namespace multiscene {

using platform::PreparedPaint;

namespace {

constexpr size_t mostPictures = 6;  // of the canvas's size: what is kept at most
constexpr size_t bytesAPixel = 4;

}  // namespace

size_t StillPaints::Hash::operator()(const Key& key) const {
    size_t hash = std::bit_cast<size_t>(key.pixels);
    const auto add = [&](size_t part) { hash = (hash ^ part) * 0x9E3779B97F4A7C15u + (hash >> 29); };
    for (const double place : key.toTexel) add(std::bit_cast<uint64_t>(place));
    for (const int number : key.numbers) add(static_cast<size_t>(number));
    return hash;
}

StillPaints::Key StillPaints::keyOf(const PreparedPaint& paint, int width, int height) {
    return {paint.picture.surface.pixels,
            paint.picture.toTexel,
            {paint.left, paint.top, paint.right, paint.bottom, width, height,
             static_cast<int>(paint.picture.wrap)}};
}

void StillPaints::replace(std::span<PreparedPaint> paints, std::span<const Owner> owners, int width,
                          int height, int64_t frame, platform::TilePainter& tiles) {
    forget(frame - 1);
    const size_t most = mostPictures * bytesAPixel * static_cast<size_t>(width) * static_cast<size_t>(height);
    for (size_t i = 0; i < paints.size(); ++i) {
        PreparedPaint& paint = paints[i];
        if (!owners[i] || !platform::TilePainter::canBeSampled(paint)) continue;
        const auto [found, isNew] = stills_.try_emplace(keyOf(paint, width, height));
        Still& still = found->second;
        still.lastFrame = frame;
        if (isNew) still.owner = owners[i];
        if (isNew) continue;
        if (!still.samples.empty() || takeSamples(still, paint, most, width, height, tiles))
            paint = platform::TilePainter::withSamples(paint, surfaceOf(still, paint));
    }
}

/// False when there is no room.
bool StillPaints::takeSamples(Still& still, const PreparedPaint& paint, size_t most, int width, int height,
                              platform::TilePainter& tiles) {
    const platform::Surface samples = surfaceOf(still, paint);
    const size_t bytes = static_cast<size_t>(samples.stride) * static_cast<size_t>(samples.height);
    if (bytes_ + bytes > most) return false;
    still.samples.resize(bytes);
    bytes_ += bytes;
    tiles.sample(paint, width, height,
                 {.pixels = still.samples.data(),
                  .stride = samples.stride,
                  .width = samples.width,
                  .height = samples.height});
    if (!samples.opaque) still.clear = std::make_unique<platform::ClearBlocks>(surfaceOf(still, paint));
    return true;
}

platform::Surface StillPaints::surfaceOf(const Still& still, const PreparedPaint& paint) {
    const int columns = paint.right - paint.left;
    return {.pixels = still.samples.data(),
            .stride = columns * static_cast<ptrdiff_t>(bytesAPixel),
            .width = columns,
            .height = paint.bottom - paint.top,
            .opaque = paint.picture.surface.opaque,
            .clear = still.clear.get()};
}

void StillPaints::forget(int64_t beforeFrame) {
    std::erase_if(stills_, [&](const auto& entry) {
        if (entry.second.lastFrame >= beforeFrame) return false;
        bytes_ -= entry.second.samples.size();
        return true;
    });
}

}  // namespace multiscene
