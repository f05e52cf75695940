#pragma once

#include <array>
#include <memory>
#include <span>
#include <unordered_map>
#include <vector>

#include "platform/pixels/ClearBlocks.h"
#include "platform/pixels/TilePainter.h"

namespace multiscene {

/// Remembers what is painted frame after frame at the same place, so that its picture is scaled, turned or
/// seen in perspective once and copied from then on. What is painted stays the same to the last bit.
class StillPaints {
  public:
    /// Who keeps the picture of a paint alive; none for one that may change in its memory.
    using Owner = std::shared_ptr<const void>;

    /// Replaces what can be copied. `owners` belong to the paints, one each. `frame` counts up.
    void replace(std::span<platform::PreparedPaint> paints, std::span<const Owner> owners, int width,
                 int height, int64_t frame, platform::TilePainter& tiles);

  private:
    /// Everything that the samples of a paint depend on.
    struct Key {
        const uint8_t* pixels;
        platform::PlaceMatrix toTexel;
        std::array<int, 7> numbers;  ///< bounds, canvas, wrap
        bool operator==(const Key&) const = default;
    };
    struct Hash {
        size_t operator()(const Key& key) const;
    };
    struct Still {
        Owner owner;
        int64_t lastFrame = 0;
        std::vector<uint8_t> samples;  ///< empty: seen once so far
        std::unique_ptr<platform::ClearBlocks> clear;
    };

    static Key keyOf(const platform::PreparedPaint& paint, int width, int height);
    bool takeSamples(Still& still, const platform::PreparedPaint& paint, size_t most, int width, int height,
                     platform::TilePainter& tiles);
    static platform::Surface surfaceOf(const Still& still, const platform::PreparedPaint& paint);
    void forget(int64_t beforeFrame);

    std::unordered_map<Key, Still, Hash> stills_;
    size_t bytes_ = 0;
};

}  // namespace multiscene
