#include "platform/pixels/Blur.h"

#include <hwy/targets.h>

#include <cmath>

#include "PaintFixture.h"

namespace platform {
namespace {

double texel(const Picture& picture, int x, int y, int Pixel::*colour) {
    return picture.at(std::clamp(x, 0, picture.width() - 1), std::clamp(y, 0, picture.height() - 1)).*colour;
}

double between(const Picture& picture, double x, double y, int Pixel::*colour) {
    const int left = int(std::floor(x)), upper = int(std::floor(y));
    const double across = x - left, down = y - upper;
    const auto row = [&](int at) {
        return texel(picture, left, at, colour) * (1 - across) +
               texel(picture, left + 1, at, colour) * across;
    };
    return row(upper) * (1 - down) + row(upper + 1) * down;
}

// Seventeen taps of a bell curve, two steps of the picture apart; two neighbours are one tap between them.
double blurred(const Picture& picture, int x, int y, double xStep, double yStep, int Pixel::*colour) {
    const auto bell = [](int tap) { return std::exp(-tap * tap / 512.0); };
    double sum = texel(picture, x, y, colour), weights = 1;
    for (int tap = 1; tap <= 8; tap += 2) {
        const double weight = bell(tap) + bell(tap + 1), offset = tap + bell(tap + 1) / weight;
        for (const double way : {offset, -offset})
            sum += weight * between(picture, x + way * xStep, y + way * yStep, colour);
        weights += 2 * weight;
    }
    return sum / weights;
}

TEST(BlurTest, MixesTheTapsAlongTheDiagonal) {
    const Picture picture = Picture::noise(61, 47, false, 3);
    for (const double scale : {1.0, 1.7}) {
        Picture canvas(61, 47);
        TilePainter painter(2);
        blurAlongDiagonal(picture.surface(false), 61 * scale, 47 / scale, painter, canvas.canvas());
        for (int y = 0; y < 47; ++y)
            for (int x = 0; x < 61; ++x)
                for (const auto colour : {&Pixel::blue, &Pixel::green, &Pixel::red, &Pixel::alpha})
                    ASSERT_NEAR(canvas.at(x, y).*colour, blurred(picture, x, y, 2 / scale, 2 * scale, colour),
                                0.7)
                        << x << ',' << y;
    }
}

TEST(BlurTest, GivesTheSameBytesOnEveryProcessorAndWayUp) {
    const Picture picture = Picture::noise(203, 90, false, 4);
    Picture wanted(203, 90);
    TilePainter painter(3);
    blurAlongDiagonal(picture.surface(false), 203, 90, painter, wanted.canvas());
    for (const int64_t target : hwy::SupportedAndGeneratedTargets()) {
        hwy::SetSupportedTargetsForTest(target);
        Picture canvas(203, 90);
        blurAlongDiagonal(picture.surface(false), 203, 90, painter, canvas.canvas());
        EXPECT_EQ(canvas == wanted, true) << hwy::TargetName(target);
    }
    hwy::SetSupportedTargetsForTest(0);
    Picture flipped = picture.flipped(), canvas(203, 90);
    blurAlongDiagonal(flipped.upwards(false), 203, 90, painter, canvas.upwardsCanvas());
    EXPECT_EQ(canvas.flipped() == wanted, true);
}

}  // namespace
}  // namespace platform
