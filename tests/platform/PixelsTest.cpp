#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <algorithm>
#include <random>
#include <vector>

#include "PaintFixture.h"
#include "platform/pixels/FilmPicture.h"
#include "platform/pixels/FrameLayout.h"
#include "platform/pixels/FromYuv.h"
#include "platform/pixels/ToI420.h"

namespace platform {
namespace {

struct Planes {
    std::vector<uint8_t> y, u, v;
    bool operator==(const Planes&) const = default;
};

Planes converted(const PixelBuffer& picture, YuvMatrix matrix) {
    const auto pixels = static_cast<size_t>(picture.width() * picture.height());
    Planes planes{std::vector<uint8_t>(pixels), std::vector<uint8_t>(pixels / 4),
                  std::vector<uint8_t>(pixels / 4)};
    const int width = picture.width();
    toI420(picture, matrix, {planes.y.data(), width, planes.u.data(), width / 2, planes.v.data(), width / 2});
    return planes;
}

PixelBuffer noise(int width, int height) {
    std::mt19937 random(static_cast<unsigned>(width * 31 + height));
    PixelBuffer picture(width, height);
    // Extremes are frequent: there the sums come nearest to overflowing.
    for (size_t i = 0; i < picture.size(); ++i) {
        const unsigned number = random();
        picture.data()[i] = static_cast<uint8_t>(number % 3 == 0 ? 0 : number % 3 == 1 ? 255 : number >> 8);
    }
    return picture;
}

struct Yuv {
    double y, u, v;
};

Yuv exactly(double red, double green, double blue, YuvMatrix matrix) {
    const double kr = matrix == YuvMatrix::BT709 ? 0.2126 : 0.299,
                 kb = matrix == YuvMatrix::BT709 ? 0.0722 : 0.114;
    const double luma = kr * red + (1 - kr - kb) * green + kb * blue;
    return {16 + 219 * luma / 255, 128 + 112 * (blue - luma) / (1 - kb) / 255,
            128 + 112 * (red - luma) / (1 - kr) / 255};
}

TEST(ToI420Test, EveryPixelIsTheStandardsColourRounded) {
    for (const YuvMatrix matrix : {YuvMatrix::BT601, YuvMatrix::BT709}) {
        const PixelBuffer picture = noise(278, 6);
        const Planes planes = converted(picture, matrix);
        const auto colour = [&](int x, int y, int channel) {
            return picture.data()[y * picture.stride() + x * 4 + 2 - channel];
        };
        double worst = 0;
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x) {
                const Yuv wanted = exactly(colour(x, y, 0), colour(x, y, 1), colour(x, y, 2), matrix);
                worst = std::max(worst, std::abs(planes.y[size_t(y * picture.width() + x)] - wanted.y));
            }
        for (int y = 0; y < picture.height(); y += 2)
            for (int x = 0; x < picture.width(); x += 2) {
                double sum[3] = {};
                for (int c = 0; c < 3; ++c)
                    sum[c] = (colour(x, y, c) + colour(x + 1, y, c) + colour(x, y + 1, c) +
                              colour(x + 1, y + 1, c)) /
                             4.0;
                const Yuv wanted = exactly(sum[0], sum[1], sum[2], matrix);
                const auto at = static_cast<size_t>(y / 2 * (picture.width() / 2) + x / 2);
                worst =
                    std::max({worst, std::abs(planes.u[at] - wanted.u), std::abs(planes.v[at] - wanted.v)});
            }
        EXPECT_LT(worst, 0.52);
    }
}

TEST(ToI420Test, EveryInstructionSetGivesTheSameBytes) {
    for (const int width : {2, 30, 32, 66, 126, 254, 720}) {
        const PixelBuffer picture = noise(width, 4);
        const Planes own = converted(picture, YuvMatrix::BT709);
        int tried = 0;
        for (const int64_t target : hwy::SupportedAndGeneratedTargets()) {
            hwy::SetSupportedTargetsForTest(target);
            EXPECT_EQ(converted(picture, YuvMatrix::BT709), own)
                << hwy::TargetName(target) << ", " << width << " pixels";
            ++tried;
        }
        hwy::SetSupportedTargetsForTest(0);
        EXPECT_GT(tried, 0);
    }
}

// A picture of random samples, of any kind.
struct Stored {
    YuvPicture picture;
    std::array<std::vector<uint8_t>, 3> bytes;

    Stored(int width, int height, int depth, bool halfWidth, bool halfHeight) {
        picture.width = width;
        picture.height = height;
        picture.depth = depth;
        picture.halfWidth = halfWidth;
        picture.halfHeight = halfHeight;
        std::mt19937 random(static_cast<unsigned>(width * 7 + depth));
        for (size_t plane = 0; plane < 3; ++plane) {
            const int columns = plane && halfWidth ? (width + 1) / 2 : width;
            const int rows = plane && halfHeight ? (height + 1) / 2 : height;
            picture.strides[plane] = columns * (depth > 8 ? 2 : 1);
            bytes[plane].resize(size_t(picture.strides[plane]) * size_t(rows));
            for (int i = 0; i < columns * rows; ++i) {
                const unsigned number = random(), most = (1u << depth) - 1;
                const unsigned sample = number % 3 == 0 ? 0 : number % 3 == 1 ? most : (number >> 8) & most;
                for (int byte = 0; byte < (depth > 8 ? 2 : 1); ++byte)
                    bytes[plane][size_t(i * (depth > 8 ? 2 : 1) + byte)] = uint8_t(sample >> (8 * byte));
            }
            picture.planes[plane] = bytes[plane].data();
        }
    }

    /// A sample in 8-bit levels; colours are interpolated at the picture's pixel.
    double sample(size_t plane, int x, int y) const {
        if (plane == 0) return stored(plane, x, y);
        double sum = 0;
        for (const auto& [column, across] : neighbours(x, picture.halfWidth, picture.width))
            for (const auto& [row, down] : neighbours(y, picture.halfHeight, picture.height))
                sum += across * down * stored(plane, column, row);
        return sum;
    }

  private:
    static std::array<std::pair<int, double>, 2> neighbours(int at, bool half, int size) {
        if (!half) return {{{at, 1.0}, {at, 0.0}}};
        const int far = std::clamp(at / 2 + (at % 2 ? 1 : -1), 0, (size + 1) / 2 - 1);
        return {{{at / 2, 0.75}, {far, 0.25}}};
    }
    double stored(size_t plane, int x, int y) const {
        const uint8_t* row = picture.planes[plane] + y * picture.strides[plane];
        if (picture.depth == 8) return row[x];
        return (row[2 * x] + 256 * row[2 * x + 1]) / double(1 << (picture.depth - 8));
    }
};

TEST(YuvConverterTest, EveryKindOfPictureGivesTheStandardsColours) {
    for (const int depth : {8, 10, 12})
        for (const int kind : {0, 1, 2, 3})
            for (const YuvMatrix matrix : {YuvMatrix::BT601, YuvMatrix::BT709, YuvMatrix::BT2020})
                for (const bool fullRange : {false, true}) {
                    Stored stored(kind == 3 ? 5 : 131, 7, depth, kind >= 1, kind >= 2);
                    stored.picture.matrix = matrix;
                    stored.picture.fullRange = fullRange;
                    PixelBuffer pixels;
                    yuvToPixels(stored.picture, pixels);
                    const auto [kr, kb] = brightnessOf(matrix);
                    double worst = 0;
                    for (int y = 0; y < pixels.height(); ++y)
                        for (int x = 0; x < pixels.width(); ++x) {
                            const double luma = fullRange ? stored.sample(0, x, y)
                                                          : (stored.sample(0, x, y) - 16) * 255 / 219;
                            const double gain = fullRange ? 1 : 255.0 / 224;
                            const double u = (stored.sample(1, x, y) - 128) * gain * 2 * (1 - kb);
                            const double v = (stored.sample(2, x, y) - 128) * gain * 2 * (1 - kr);
                            const double wanted[] = {luma + v, luma - (kb * u + kr * v) / (1 - kr - kb),
                                                     luma + u};
                            const uint8_t* pixel = pixels.data() + y * pixels.stride() + 4 * x;
                            for (int c = 0; c < 3; ++c)
                                worst = std::max(worst,
                                                 std::abs(pixel[2 - c] - std::clamp(wanted[c], 0.0, 255.0)));
                            EXPECT_EQ(pixel[3], 255);
                        }
                    EXPECT_LT(worst, 0.6) << depth << " bits, kind " << kind << (fullRange ? ", full" : "");
                }
}

TEST(YuvConverterTest, EveryInstructionSetGivesTheSameBytes) {
    for (const int width : {1, 7, 16, 33, 64, 129, 720})
        for (const int depth : {8, 10}) {
            const Stored stored(width, 5, depth, true, true);
            PixelBuffer own, other;
            yuvToPixels(stored.picture, own);
            for (const int64_t target : hwy::SupportedAndGeneratedTargets()) {
                hwy::SetSupportedTargetsForTest(target);
                yuvToPixels(stored.picture, other);
                EXPECT_TRUE(std::equal(own.data(), own.data() + own.size(), other.data()))
                    << hwy::TargetName(target) << ", " << width << " pixels";
            }
            hwy::SetSupportedTargetsForTest(0);
        }
}

TEST(FilmPictureTest, WhatIsPaintedFromPlanesIsWhatIsPaintedFromPixels) {
    const Stored stored(1101, 45, 8, true, true);
    const auto wishes = std::make_shared<FilmWishes>();
    const auto film = [&] {
        return std::make_unique<FilmPicture>(stored.picture, nullptr, PixelBufferPool(), wishes);
    };
    const auto read = film();
    const Surface inPixels{read->data(), read->stride(), read->width(), read->height(), true};
    const Picture sheet = Picture::noise(300, 20, false, 1);
    struct Case {
        double left, top, scale;
        float opacity;
        bool paintsPlanes;
    };
    // Wholly over the canvas, with parts beyond it, at odd places; not copied: scaled, between pixels, faded,
    // with its own edge on the canvas.
    for (const Case& it : {Case{0, 0, 1, 1, true}, Case{-7, -3, 1, 1, true}, Case{-1, -5, 1, 1, true},
                           Case{0, 0, 1.5, 1, false}, Case{-0.5, 0, 1, 1, false}, Case{0, 0, 1, 0.5, false},
                           Case{3, 2, 1, 1, false}}) {
        wishes->setWantsPixels(!it.paintsPlanes);
        const auto painted = [&](const Surface& surface) {
            Picture canvas(1090, 40);
            QuadPaint shown =
                rectangle(surface, it.left, it.top, it.left + 1101 * it.scale, it.top + 45 * it.scale);
            shown.opacity = it.opacity;
            paint({shown, turned(sheet.surface(false), 500, 20, 300, 20, 3)}, kBlack, canvas, 2);
            return canvas;
        };
        const auto unread = film();
        Surface inPlanes = inPixels;
        inPlanes.pixels = nullptr;
        inPlanes.film = unread.get();
        EXPECT_TRUE(painted(inPlanes) == painted(inPixels)) << it.left << ", " << it.scale;
        EXPECT_EQ(wishes->wantsPixels(), !it.paintsPlanes) << it.left << ", " << it.scale;
        EXPECT_EQ(unread->planesAlone() != nullptr, it.paintsPlanes) << it.left << ", " << it.scale;
    }
}

TEST(FrameLayoutTest, OnlyAnotherShapeIsFitted) {
    for (const Fit fit : {Fit::Blur, Fit::Pad, Fit::Crop, Fit::Stretch}) {
        EXPECT_TRUE(FrameLayout::fitted(720, 1280, 360, 640, fit).isWhole());
        EXPECT_TRUE(FrameLayout::fitted(720, 1280, 404, 720, fit).isWhole()) << "405 is odd";
    }
    EXPECT_EQ(FrameLayout::fitted(720, 1280, 1280, 720, Fit::Pad), (FrameLayout{406, 720, 1280, 720, false}));
    EXPECT_EQ(FrameLayout::fitted(720, 1280, 720, 720, Fit::Crop), (FrameLayout{720, 1280, 720, 720, false}));
    EXPECT_TRUE(FrameLayout::fitted(720, 1280, 1280, 720, Fit::Stretch).isWhole());
}

}  // namespace
}  // namespace platform
