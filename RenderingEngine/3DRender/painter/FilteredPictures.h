#pragma once

#include <array>
#include <memory>
#include <vector>

#include "core/GLESUtils/Texture.h"
#include "pictureFilter/Filter.h"
#include "platform/pixels/BellBlur.h"
#include "platform/pixels/TilePainter.h"

namespace multiscene {

/// Pictures with their filters applied by the processor. What stays the same from frame to frame is filtered
/// once.
class FilteredPictures {
  public:
    /// The largest of the texture's pictures in memory, which there has to be, filtered; its first row in
    /// memory is its lowest where `isUpsideDown`. The texture stays until the end of the next frame. `frame`
    /// counts up.
    Texture& of(const Texture& texture, const FilterChain& chain, bool isUpsideDown, int64_t frame,
                platform::TilePainter& tiles);

  private:
    using Memory = std::shared_ptr<std::vector<uint8_t>>;
    struct Result {
        std::weak_ptr<const void> original;
        const uint8_t* pixels = nullptr;  ///< the original's
        bool isStill = false;             ///< the original shows the same for as long as it is there
        FilterChain chain;
        int64_t lastFrame = 0;
        Memory memory;
        Texture texture;
    };

    void forget(int64_t beforeFrame);
    Memory memoryFor(size_t bytes);
    void apply(const platform::Surface& picture, const FilterChain& chain, const platform::Canvas& result,
               platform::TilePainter& tiles);
    platform::Surface loaded(const Texture& texture, const FilteredSize& size, bool isUpsideDown,
                             platform::TilePainter& tiles);

    std::vector<std::unique_ptr<Result>> results_;
    std::vector<Memory> spare_;
    std::vector<uint8_t> loaded_;
    std::array<std::vector<uint8_t>, 2> steps_;
    platform::BellBlur blur_;
};

}  // namespace multiscene
