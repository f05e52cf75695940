#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <cmath>
#include <numbers>
#include <random>
#include <vector>

#include "platform/pixels/TilePainter.h"

namespace platform {
namespace {

struct Pixel {
    int blue, green, red, alpha;
    bool operator==(const Pixel&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Pixel& pixel) {
    return out << pixel.blue << ',' << pixel.green << ',' << pixel.red << ',' << pixel.alpha;
}

/// A picture with its memory.
class Picture {
  public:
    Picture(int width, int height, Pixel colour = {0, 0, 0, 0}) : width_(width), height_(height) {
        bytes_.resize(static_cast<size_t>(width * height * 4));
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) set(x, y, colour);
    }

    static Picture noise(int width, int height, bool opaque, unsigned seed) {
        Picture picture(width, height);
        std::mt19937 random(seed);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                const int alpha = opaque ? 255 : static_cast<int>(random() % 3 * 255 / 2);
                const auto level = [&] { return static_cast<int>(random() % 256) * alpha / 255; };
                picture.set(x, y, {level(), level(), level(), alpha});
            }
        return picture;
    }

    void set(int x, int y, const Pixel& pixel) {
        uint8_t* bytes = &bytes_[static_cast<size_t>((y * width_ + x) * 4)];
        bytes[0] = static_cast<uint8_t>(pixel.blue);
        bytes[1] = static_cast<uint8_t>(pixel.green);
        bytes[2] = static_cast<uint8_t>(pixel.red);
        bytes[3] = static_cast<uint8_t>(pixel.alpha);
    }
    Pixel at(int x, int y) const {
        const uint8_t* bytes = &bytes_[static_cast<size_t>((y * width_ + x) * 4)];
        return {bytes[0], bytes[1], bytes[2], bytes[3]};
    }
    int width() const { return width_; }
    int height() const { return height_; }
    Surface surface(bool opaque) const { return {bytes_.data(), width_ * 4, width_, height_, opaque}; }
    Canvas canvas() { return {bytes_.data(), width_ * 4, width_, height_}; }
    bool operator==(const Picture&) const = default;

  private:
    int width_, height_;
    std::vector<uint8_t> bytes_;
};

QuadPaint rectangle(const Surface& picture, double left, double top, double right, double bottom) {
    QuadPaint paint;
    paint.picture = picture;
    paint.corners = {
        {{left, top, 1, 0, 0}, {right, top, 1, 1, 0}, {right, bottom, 1, 1, 1}, {left, bottom, 1, 0, 1}}};
    return paint;
}

QuadPaint turned(const Surface& picture, double x, double y, double width, double height, double degrees) {
    QuadPaint paint = rectangle(picture, -width / 2, -height / 2, width / 2, height / 2);
    const double angle = degrees * std::numbers::pi / 180, c = std::cos(angle), s = std::sin(angle);
    for (PaintCorner& corner : paint.corners) {
        const double across = corner.x, down = corner.y;
        corner.x = x + c * across - s * down;
        corner.y = y + s * across + c * down;
    }
    return paint;
}

void paint(const std::vector<QuadPaint>& paints, uint32_t background, Picture& picture, int threads = 1) {
    std::vector<PreparedPaint> prepared;
    for (const QuadPaint& each : paints) {
        PreparedPaint one;
        if (preparePaint(each, picture.width(), picture.height(), one)) prepared.push_back(one);
    }
    TilePainter(threads).paint(prepared, background, picture.canvas());
}

constexpr uint32_t kBlack = 0xFF000000;

// --- A painter that is slow and obvious: every pixel of every shape by itself, in the order of the formulas.
// ---------

namespace obvious {

int scaled(int colour, int level) {
    const int product = colour * level + 128;
    return (product + (product >> 8)) >> 8;
}

int mixed(int a, int b, int part) { return (a * (256 - part) + b * part + 128) >> 8; }

Pixel mixed(const Pixel& a, const Pixel& b, int part) {
    return {mixed(a.blue, b.blue, part), mixed(a.green, b.green, part), mixed(a.red, b.red, part),
            mixed(a.alpha, b.alpha, part)};
}

int wrapped(int place, int size, Wrap wrap) {
    if (wrap == Wrap::Clamp) return std::clamp(place, 0, size - 1);
    return ((place % size) + size) % size;
}

Pixel texel(const Surface& picture, int x, int y, Wrap wrap) {
    const uint8_t* bytes = picture.pixels + wrapped(y, picture.height, wrap) * picture.stride +
                           wrapped(x, picture.width, wrap) * 4;
    return {bytes[0], bytes[1], bytes[2], bytes[3]};
}

int32_t fixedPoint(double texels) {
    return static_cast<int32_t>(std::lrint(std::clamp(texels, -32000.0, 32000.0) * 65536));
}

struct Place {
    int32_t u, v;
};

// Places are counted from the left column of a tile on.
Place placeOf(const PreparedPaint& paint, int x, int y) {
    const auto& m = paint.toTexel;
    const int left = x / 1024 * 1024;
    if (!paint.perspective) {
        double u = m[0] * left + m[1] * y + m[2] - 0.5, v = m[3] * left + m[4] * y + m[5] - 0.5;
        if (paint.wrap == Wrap::Repeat) {
            u -= paint.picture.width * std::floor(u / paint.picture.width);
            v -= paint.picture.height * std::floor(v / paint.picture.height);
        }
        const auto step = [&](double texels) {
            return fixedPoint(std::clamp(texels, -256.0, 256.0)) * (x - left);
        };
        return {fixedPoint(u) + step(m[0]), fixedPoint(v) + step(m[3])};
    }
    const auto along = [&](size_t i) {
        const auto first = static_cast<float>(m[i] * left + m[i + 1] * y + m[i + 2]);
        const float far = static_cast<float>(m[i]) * static_cast<float>(x - left);
        return first + far;
    };
    const auto fixed = [](float texels) {
        const float bounded = std::clamp(texels - 0.5f, -32000.0f, 32000.0f);
        return static_cast<int32_t>(std::floor(bounded * 65536.0f));
    };
    const float q = along(6);
    return {fixed(along(0) / q), fixed(along(3) / q)};
}

Pixel sample(const PreparedPaint& paint, int x, int y) {
    const auto [u, v] = placeOf(paint, x, y);
    const int left = u >> 16, upper = v >> 16, across = (u >> 8) & 255, down = (v >> 8) & 255;
    const auto column = [&](int at) {
        return mixed(texel(paint.picture, at, upper, paint.wrap),
                     texel(paint.picture, at, upper + 1, paint.wrap), down);
    };
    return mixed(column(left), column(left + 1), across);
}

float coverage(const PaintEdge& edge, int x, int y) {
    const float rest = edge.y * static_cast<float>(y) + edge.away;
    const float distance = edge.x * static_cast<float>(x) + rest;
    if (!edge.smooth) return distance >= 0 ? 1.0f : 0.0f;
    return std::clamp(distance + 0.5f, 0.0f, 1.0f);
}

int levelOf(const PreparedPaint& paint, int x, int y) {
    float level = static_cast<float>(paint.opacity);
    for (const auto& [first, second] : paint.edgePairs)
        level *= std::max(coverage(first, x, y) + coverage(second, x, y) - 1.0f, 0.0f);
    return static_cast<int>(level + 0.5f);
}

Pixel meet(const PreparedPaint& paint, const Pixel& front, const Pixel& back) {
    const auto over = [&](int colour, int under) {
        return std::min(colour + scaled(under, 255 - front.alpha), 255);
    };
    const int alpha = over(front.alpha, back.alpha);
    if (paint.meeting == Meeting::Over)
        return {over(front.blue, back.blue), over(front.green, back.green), over(front.red, back.red), alpha};
    return {std::min(front.blue + back.blue, 255), std::min(front.green + back.green, 255),
            std::min(front.red + back.red, 255), alpha};
}

void paint(const PreparedPaint& paint, Picture& picture) {
    for (int y = paint.top; y < paint.bottom; ++y)
        for (int x = paint.left; x < paint.right; ++x) {
            const int level = levelOf(paint, x, y);
            if (level == 0) continue;
            const Pixel colour = sample(paint, x, y);
            const Pixel front{scaled(colour.blue, level), scaled(colour.green, level),
                              scaled(colour.red, level), scaled(colour.alpha, level)};
            picture.set(x, y, meet(paint, front, picture.at(x, y)));
        }
}

}  // namespace obvious

// A random shape: straight, turned, deep, partly or wholly outside, thin, mirrored, repeated.
class RandomShapes {
  public:
    explicit RandomShapes(unsigned seed) : random_(seed) {
        for (unsigned i = 0; i < 4; ++i)
            pictures_.push_back(Picture::noise(1 + below(90), 1 + below(70), i % 2 == 0, seed * 7 + i));
    }

    QuadPaint next() {
        const auto which = static_cast<size_t>(below(4));
        const Surface picture = pictures_[which].surface(which % 2 == 0);
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
        if (below(4) == 0) paint.meeting = Meeting::Add;
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
    int below(int bound) { return static_cast<int>(random_() % static_cast<unsigned>(bound)); }

    // Turns the shape away from the camera; some of it may come to lie behind.
    void lean(QuadPaint& paint) {
        const double tilt = (below(200) - 100) / 20000.0, swing = (below(200) - 100) / 20000.0;
        for (PaintCorner& corner : paint.corners)
            corner.w = 1 + tilt * (corner.x - 100) + swing * (corner.y - 70);
    }

    std::mt19937 random_;
    std::vector<Picture> pictures_;
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
            ASSERT_EQ(canvas.at(x, y), inside ? picture.at(x - 30, y - 20) : Pixel(0, 0, 0, 255))
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

TEST(TilePainterTest, AnEdgeThatIsSharedShowsNoGround) {
    const Picture white(4, 4, {255, 255, 255, 255});
    QuadPaint whole = turned(white.surface(true), 50, 50, 60, 50, 21);
    // The same shape in two triangles: 0, 1, 2 and 2, 3, 0.
    QuadPaint upper = whole, lower = whole;
    upper.cornerCount = lower.cornerCount = 3;
    lower.corners = {{whole.corners[2], whole.corners[3], whole.corners[0], {}}};
    upper.smooth[2] = lower.smooth[2] = false;
    Picture split(100, 100), one(100, 100);
    paint({upper, lower}, kBlack, split);
    paint({whole}, kBlack, one);
    int differing = 0;
    for (int y = 0; y < 100; ++y)
        for (int x = 0; x < 100; ++x) differing += std::abs(split.at(x, y).red - one.at(x, y).red) > 1;
    EXPECT_LE(differing, 4) << "but for the corners";
    EXPECT_EQ(split.at(50, 50).red, 255);
}

TEST(TilePainterTest, PerspectiveLeadsStraightLinesToStraightLines) {
    // Four columns of black and white, leaning back to the right: the lines between them lie where 1/w says.
    Picture stripes(64, 4);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 64; ++x)
            stripes.set(x, y, x / 16 % 2 ? Pixel{255, 255, 255, 255} : Pixel{0, 0, 0, 255});
    QuadPaint leaning = rectangle(stripes.surface(true), 0, 0, 100, 100);
    for (PaintCorner& corner : leaning.corners)
        if (corner.u == 1) {
            corner.w = 3;
            corner.x *= 3;
            corner.y = corner.v ? 200 : 100;  // in the picture from 33 to 67
        }
    Picture canvas(100, 100);
    paint({leaning}, kBlack, canvas);
    for (const double u : {0.25, 0.5, 0.75}) {
        const double x = 100 * 3 * u / (1 + 2 * u);
        EXPECT_NE(canvas.at(int(x) - 2, 50).red > 127, canvas.at(int(x) + 2, 50).red > 127) << x;
    }
}

}  // namespace
}  // namespace platform
