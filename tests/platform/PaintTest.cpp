#include <gtest/gtest.h>
#include <hwy/targets.h>

#include "ObviousPainter.h"
#include "PaintFixture.h"
#include "platform/pixels/ClearBlocks.h"

namespace platform {
namespace {

// A random shape: straight, turned, deep, partly or wholly outside, thin, mirrored, repeated.
class RandomShapes {
  public:
    explicit RandomShapes(unsigned seed) : random_(seed) {
        for (unsigned i = 0; i < 4; ++i)
            pictures_.push_back(Picture::noise(1 + below(90), 1 + below(70), i % 2 == 0, seed * 7 + i));
        empty(pictures_[3]);
    }

    QuadPaint next() {
        const auto which = static_cast<size_t>(below(4));
        const Surface picture = surface(which);
        QuadPaint paint = turned(picture, below(200), below(140), 1 + below(300), 1 + below(200),
                                 below(3) ? below(360) : 90 * below(4));
        if (below(4) == 0)
            paint = rectangle(picture, below(100), below(80), below(100) + picture.width,
                              below(80) + picture.height);
        if (below(5) == 0)  // on whole pixels
            paint = rectangle(picture, 20, 10, 20 + picture.width, 10 + picture.height);
        if (below(3) == 0) lean(paint);
        if (below(4) == 0) paint.cornerCount = 3;
        for (bool& smooth : paint.smooth) smooth = below(6) != 0;
        if (below(3) == 0) paint.opacity = static_cast<float>(below(256)) / 255;
        if (below(4) == 0) paint.blend.destination = BlendFactor::One;
        if (below(4) == 0) paint.blend = {factor(), factor()};
        if (below(2) == 0) treat(paint);
        if (below(4) == 0) {
            paint.wrap = Wrap::Repeat;
            for (PaintCorner& corner : paint.corners) {
                corner.u = corner.u * 3 - 1;
                corner.v *= 2.5;
            }
        }
        return paint;
    }

  private:
    // Of either row order.
    Surface surface(size_t which) {
        const bool isOpaque = which % 2 == 0;
        Surface surface = below(2) ? pictures_[which].surface(isOpaque) : pictures_[which].upwards(isOpaque);
        if (which == 3) surface.clear = clear_.emplace_back(std::make_unique<ClearBlocks>(surface)).get();
        return surface;
    }
    // Most of it holds nothing.
    void empty(Picture& picture) {
        const int left = below(20), top = below(20), bottom = picture.height() - below(10);
        for (int y = top; y < bottom; ++y)
            for (int x = left; x < picture.width(); ++x) picture.set(x, y, {0, 0, 0, 0});
    }
    BlendFactor factor() { return static_cast<BlendFactor>(below(11)); }
    float part() { return static_cast<float>(below(256)) / 255; }
    std::array<float, 4> colour() { return {part(), part(), part(), below(2) ? 1.0f : part()}; }

    void treat(QuadPaint& paint) {
        paint.premultiplied = below(2) == 0;
        paint.isShape = below(4) == 0;
        if (below(6) == 0) paint.picture = {};
        if (below(3) == 0) paint.tint = colour();
        if (below(3) == 0)
            paint.gradient = {below(100) / 100.0, part(),       below(100) / 100.0, part(),
                              below(2) == 0,      below(2) == 0};
        if (below(3) == 0) paint.key = KeyPaint{colour(), part()};
        if (below(3) == 0) paint.key = KeyPaint{{0.5f, 0.5f, 0.5f, 1}, part()};
        if (below(3) == 0) addMask(paint);
        if (below(3) == 0) addFilter(paint);
    }

    void addMask(QuadPaint& paint) {
        const auto which = static_cast<size_t>(below(4));
        MaskPaint mask{.picture = surface(which)};
        mask.premultiplied = below(2) == 0;
        mask.byAlpha = below(2) == 0;
        for (size_t i = 0; i < 4; ++i) mask.at[i] = {paint.corners[i].u, 1 - paint.corners[i].v};
        if (below(2) == 0) mask.wrap = Wrap::Repeat;
        paint.mask = mask;
    }

    void addFilter(QuadPaint& paint) {
        FilterPaint filter;
        filter.type = below(6);
        filter.range = part();
        filter.pixelSize = static_cast<float>(below(8));
        filter.time = part();
        filter.reflection = below(2) == 0;
        filter.pictureColor = colour();
        if (below(2) == 0) filter.borderWidth = part() / 4;
        if (below(2) == 0) filter.cornerRadius = part() / 2;
        filter.frameWidth = 1 + part();
        filter.frameHeight = 1 + part();
        filter.pixelsAUnit = 40 * part();
        filter.borderColor = colour();
        filter.pictureWidth = paint.picture.width + 1;
        filter.pictureHeight = paint.picture.height + 1;
        paint.filter = filter;
    }

    int below(int bound) { return static_cast<int>(random_() % static_cast<unsigned>(bound)); }

    // Turns the shape away from the camera; some of it may come to lie behind.
    void lean(QuadPaint& paint) {
        const double tilt = (below(200) - 100) / 20000.0, swing = (below(200) - 100) / 20000.0;
        for (PaintCorner& corner : paint.corners)
            corner.w = 1 + tilt * (corner.x - 100) + swing * (corner.y - 70);
    }

    std::mt19937 random_;
    std::vector<Picture> pictures_;
    std::vector<std::unique_ptr<ClearBlocks>> clear_;
};

TEST(TilePainterTest, EqualsTheObviousPainterBitForBit) {
    for (unsigned seed = 0; seed < 60; ++seed) {
        RandomShapes shapes(seed);
        Picture wanted(seed % 10 ? 203 : 1100, 141, {40, 30, 20, 255});
        std::vector<PreparedPaint> prepared;
        for (int i = 0; i < 6; ++i) {
            PreparedPaint one;
            if (!preparePaint(shapes.next(), wanted.width(), wanted.height(), one)) continue;
            obvious::paint(one, wanted);
            prepared.push_back(one);
        }
        for (const int64_t target : hwy::SupportedAndGeneratedTargets()) {
            hwy::SetSupportedTargetsForTest(target);
            Picture painted(wanted.width(), wanted.height());
            TilePainter(seed % 3 + 1).paint(prepared, 0xFF141E28, painted.canvas());
            ASSERT_EQ(painted == wanted, true) << "seed " << seed << " on " << hwy::TargetName(target);
            TilePainter(2).paint(prepared, 0xFF141E28, painted.upwardsCanvas());
            ASSERT_EQ(painted.flipped() == wanted, true) << "upwards, seed " << seed;
        }
        hwy::SetSupportedTargetsForTest(0);
    }
}

TEST(TilePainterTest, APictureOnWholePixelsIsCopied) {
    const Picture picture = Picture::noise(50, 40, true, 3);
    Picture canvas(100, 80);
    // Matrices leave a rest.
    paint({rectangle(picture.surface(true), 30.0004, 20 - 0.0003, 80.0004, 60 - 0.0003)}, kBlack, canvas);
    for (int y = 0; y < 80; ++y)
        for (int x = 0; x < 100; ++x) {
            const bool inside = x >= 30 && x < 80 && y >= 20 && y < 60;
            ASSERT_EQ(canvas.at(x, y), inside ? picture.at(x - 30, y - 20) : (Pixel{0, 0, 0, 255}))
                << x << ',' << y;
        }
}

TEST(TilePainterTest, AnEdgeCoversAPixelAsFarAsItReachesIntoIt) {
    const Picture white(1, 1, {255, 255, 255, 255});
    Picture canvas(100, 100);
    paint({rectangle(white.surface(true), 10.25, 20, 50.5, 60)}, kBlack, canvas);
    EXPECT_EQ(canvas.at(10, 40).red, 191);
    EXPECT_EQ(canvas.at(50, 40).red, 128);
    EXPECT_EQ(canvas.at(9, 40).red, 0);
    EXPECT_EQ(canvas.at(30, 19).red, 0);
    EXPECT_EQ(canvas.at(30, 20).red, 255);
    // A line of half a pixel is half as bright, wherever it lies in the pixel.
    for (const double x : {30.0, 30.2, 30.5}) {
        paint({rectangle(white.surface(true), x, 20, x + 0.5, 60)}, kBlack, canvas);
        EXPECT_NEAR(canvas.at(30, 40).red, 128, 1) << x;
        EXPECT_EQ(canvas.at(31, 40).red, 0) << x;
    }
    // The brightness of a turned square is its area.
    paint({turned(white.surface(true), 50, 50, 40, 40, 33)}, kBlack, canvas);
    double sum = 0;
    for (int y = 0; y < 100; ++y)
        for (int x = 0; x < 100; ++x) sum += canvas.at(x, y).red / 255.0;
    EXPECT_NEAR(sum, 1600, 3);
}

}  // namespace
}  // namespace platform
