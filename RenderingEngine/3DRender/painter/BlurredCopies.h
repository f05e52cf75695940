#pragma once

#include <memory>
#include <vector>

#include "core/GLESUtils/Texture.h"
#include "painter/Draw.h"
#include "platform/pixels/TilePainter.h"

namespace multiscene {

/// Blurred copies of the pictures that are shown so, each made once for as long as its picture stays.
class BlurredCopies {
  public:
    /// Of the largest of its pictures in memory; it stays until the picture has gone.
    Texture& of(const Texture& texture, const BlurLook& look, platform::TilePainter& tiles);

  private:
    struct Copy {
        std::weak_ptr<const void> original;
        const uint8_t* pixels = nullptr;  ///< the original's
        std::shared_ptr<std::vector<uint8_t>> memory = std::make_shared<std::vector<uint8_t>>();
        Texture texture;
    };

    std::vector<std::unique_ptr<Copy>> copies_;
};

}  // namespace multiscene
