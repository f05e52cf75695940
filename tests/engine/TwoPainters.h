// The two painters beside each other: what one draws, the other must draw too.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "painter/GLPainter.h"
#include "painter/SoftwarePainter.h"
#include "tests/engine/MediaFiles.h"

namespace multiscene::testing {

/// Pixels from the upper left, red first, colours multiplied by alpha.
struct PaintedPicture {
    int width = 0, height = 0;
    std::vector<Pixel> pixels;

    const Pixel& at(int x, int y) const { return pixels[size_t(y * width + x)]; }
};

/// Both draw with the same software GL what only GL can draw.
class TwoPainters {
  public:
    TwoPainters() : gl(makeContext, gate, GLPainter::PictureMemory::Kept), software(makeContext, gate, 2) {
        gl.makeCurrent();
    }

    using Drawing = std::function<void(Painter&)>;

    static PaintedPicture paint(Painter& painter, int width, int height, const Pixel& background,
                                const Drawing& drawing) {
        PaintedPicture picture{width, height, std::vector<Pixel>(size_t(width) * size_t(height))};
        painter.beginFrame(width, height,
                           uint32_t{background[3]} << 24 | uint32_t{background[0]} << 16 |
                               uint32_t{background[1]} << 8 | background[2]);
        drawing(painter);
        painter.endFrame({.pixels = picture.pixels[0].data(),
                          .stride = ptrdiff_t{width} * 4,
                          .width = width,
                          .height = height});
        for (Pixel& pixel : picture.pixels) std::swap(pixel[0], pixel[2]);
        return picture;
    }

    /// The processor's picture, after a look at GL's: they differ by `tolerance` at most, except where shapes
    /// have edges within them.
    PaintedPicture paint(int width, int height, const Pixel& background, const Drawing& drawing,
                         int tolerance = 3) {
        const PaintedPicture byGL = paint(gl, width, height, background, drawing);
        PaintedPicture bySoftware = paint(software, width, height, background, drawing);
        size_t different = 0;
        std::string first;
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                if (isNear(byGL.at(x, y), bySoftware.at(x, y), tolerance)) continue;
                if (different++ == 0)
                    first = std::to_string(x) + "," + std::to_string(y) + ": GL " +
                            ::testing::PrintToString(byGL.at(x, y)) + ", software " +
                            ::testing::PrintToString(bySoftware.at(x, y));
            }
        EXPECT_LE(different, edgePixels) << "first " << first;
        return bySoftware;
    }

    platform::FileGate gate;  ///< for shaders of templates
    GLPainter gl;
    SoftwarePainter software;
    /// How many pixels may differ: those of smoothed edges.
    size_t edgePixels = 0;

  private:
    static std::shared_ptr<platform::GLContext> makeContext() {
        static std::weak_ptr<platform::GLContext> shared;
        auto context = shared.lock();
        if (!context) shared = context = platform::GLContext::create(platform::GLContext::Driver::Software);
        return context;
    }
};

}  // namespace multiscene::testing
