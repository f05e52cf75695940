// What masks, gradients, tints, filters, keys and blend functions give, beside the formulas of the shaders in
// resources/shaders, in plain doubles.
#include <array>

#include "PaintFixture.h"

namespace platform {
namespace {

struct Colour {
    double red = 0, green = 0, blue = 0, alpha = 0;
};

Colour colourOf(const Pixel& p) { return {p.red / 255.0, p.green / 255.0, p.blue / 255.0, p.alpha / 255.0}; }

Colour straightOf(const Pixel& pixel) {
    const Colour c = colourOf(pixel);
    const double most = std::max(c.alpha, 1 / 255.0);
    return {c.red / most, c.green / most, c.blue / most, c.alpha};
}

double clamped(double number) { return std::clamp(number, 0.0, 1.0); }
double between(double a, double b, double part) { return a * (1 - part) + b * part; }

double factorOf(BlendFactor factor, double source, double destination, const Colour& s, const Colour& d) {
    switch (factor) {
        case BlendFactor::Zero:
            return 0;
        case BlendFactor::One:
            return 1;
        case BlendFactor::SrcColor:
            return source;
        case BlendFactor::OneMinusSrcColor:
            return 1 - source;
        case BlendFactor::SrcAlpha:
            return s.alpha;
        case BlendFactor::OneMinusSrcAlpha:
            return 1 - s.alpha;
        case BlendFactor::DstAlpha:
            return d.alpha;
        case BlendFactor::OneMinusDstAlpha:
            return 1 - d.alpha;
        case BlendFactor::DstColor:
            return destination;
        case BlendFactor::OneMinusDstColor:
            return 1 - destination;
        case BlendFactor::SrcAlphaSaturate:
            return std::min(s.alpha, 1 - d.alpha);
    }
    return 0;
}

// The shaders' sent(), and then what GL does.
Colour blended(const Colour& color, double opacity, const BlendFunction& function, const Colour& d) {
    double factor = opacity;
    if (function.source == BlendFactor::One) factor = color.alpha * opacity;
    if (function.source == BlendFactor::Zero || function.source == BlendFactor::SrcAlpha ||
        function.source == BlendFactor::SrcAlphaSaturate)
        factor = 1;
    const Colour s{clamped(color.red * factor), clamped(color.green * factor), clamped(color.blue * factor),
                   clamped(color.alpha * opacity)};
    const auto sum = [&](double source, double destination) {
        return clamped(source * factorOf(function.source, source, destination, s, d) +
                       destination * factorOf(function.destination, source, destination, s, d));
    };
    return {sum(s.red, d.red), sum(s.green, d.green), sum(s.blue, d.blue),
            clamped(s.alpha + d.alpha * (1 - s.alpha))};
}

constexpr Pixel kGround{60, 120, 200, 255};
const Colour kGroundColour = colourOf(kGround);

uint32_t packed(const Pixel& p) {
    return static_cast<uint32_t>(p.blue | p.green << 8 | p.red << 16) | static_cast<uint32_t>(p.alpha) << 24;
}

void expectNear(const Pixel& painted, const Colour& wanted, const std::string& where) {
    EXPECT_NEAR(painted.red, wanted.red * 255, 2) << where;
    EXPECT_NEAR(painted.green, wanted.green * 255, 2) << where;
    EXPECT_NEAR(painted.blue, wanted.blue * 255, 2) << where;
    EXPECT_NEAR(painted.alpha, wanted.alpha * 255, 2) << where;
}

// A picture at its own size over a ground, corner 0 lower left.
class Drawing {
  public:
    explicit Drawing(const Picture& picture, bool opaque = false) : picture_(picture), canvas_(0, 0) {
        const double width = picture.width(), height = picture.height();
        quad.picture = picture.surface(opaque);
        quad.corners = {
            {{0, height, 1, 0, 1}, {width, height, 1, 1, 1}, {width, 0, 1, 1, 0}, {0, 0, 1, 0, 0}}};
    }

    QuadPaint quad;

    void draw(const Pixel& ground = kGround) {
        canvas_ = Picture(picture_.width(), picture_.height());
        paint({quad}, packed(ground), canvas_);
    }
    Pixel at(int x, int y) const { return canvas_.at(x, y); }

    /// `wanted(x, y)` is the colour of a pixel.
    void expect(const auto& wanted) {
        draw();
        for (int y = 0; y < canvas_.height(); ++y)
            for (int x = 0; x < canvas_.width(); ++x)
                expectNear(at(x, y), wanted(x, y), std::to_string(x) + "," + std::to_string(y));
    }

    MaskPaint mask(const Surface& surface) const {
        MaskPaint mask{.picture = surface};
        for (size_t i = 0; i < 4; ++i) mask.at[i] = {quad.corners[i].u, quad.corners[i].v};
        return mask;
    }

  private:
    const Picture& picture_;
    Picture canvas_;
};

TEST(TreatmentTest, EveryBlendFunctionGivesWhatGLGives) {
    const Picture picture = Picture::noise(24, 6, false, 1);
    const Pixel ground{30, 90, 120, 150};
    for (int source = 0; source < 11; ++source)
        for (int destination = 0; destination < 11; ++destination)
            for (const float opacity : {1.0f, 0.6f}) {
                Drawing drawing(picture);
                drawing.quad.blend = {static_cast<BlendFactor>(source),
                                      static_cast<BlendFactor>(destination)};
                drawing.quad.opacity = opacity;
                drawing.draw(ground);
                for (int x = 0; x < 24; ++x)
                    expectNear(
                        drawing.at(x, 3),
                        blended(straightOf(picture.at(x, 3)), opacity, drawing.quad.blend, colourOf(ground)),
                        std::to_string(source) + "/" + std::to_string(destination));
            }
}

TEST(TreatmentTest, StraightColoursAreMultipliedByTheirAlpha) {
    Picture picture(16, 4);
    for (int x = 0; x < 16; ++x)
        for (int y = 0; y < 4; ++y) picture.set(x, y, {x * 17, 255 - x * 17, 200, y * 85});
    for (const BlendFunction blend : {BlendFunction{}, BlendFunction{BlendFactor::One, BlendFactor::One},
                                      BlendFunction{BlendFactor::DstColor, BlendFactor::Zero},
                                      BlendFunction{BlendFactor::SrcAlpha, BlendFactor::OneMinusSrcColor}}) {
        Drawing drawing(picture);
        drawing.quad.premultiplied = false;
        drawing.quad.blend = blend;
        drawing.quad.opacity = 0.7f;
        drawing.expect(
            [&](int x, int y) { return blended(colourOf(picture.at(x, y)), 0.7f, blend, kGroundColour); });
    }
}

TEST(TreatmentTest, AMaskShowsWhereItIsBright) {
    const Picture picture = Picture::noise(30, 20, true, 5), mask = Picture::noise(30, 20, false, 6);
    for (const bool isByAlpha : {true, false})
        for (const bool isPremultiplied : {true, false}) {
            Drawing drawing(picture, true);
            drawing.quad.mask = drawing.mask(mask.surface(false));
            drawing.quad.mask->byAlpha = isByAlpha;
            drawing.quad.mask->premultiplied = isPremultiplied;
            drawing.expect([&](int x, int y) {
                const Colour m = colourOf(mask.at(x, y));
                const double brightness = m.red * 0.299 + m.green * 0.587 + m.blue * 0.114;
                const double shown = isByAlpha && !isPremultiplied ? brightness * m.alpha : brightness;
                return blended(colourOf(picture.at(x, y)), shown, {}, kGroundColour);
            });
        }
}

TEST(TreatmentTest, AMaskHasAPlaceAndAWrapOfItsOwn) {
    const Picture white(40, 40, {255, 255, 255, 255});
    Picture mask(2, 1);
    mask.set(1, 0, {255, 255, 255, 255});
    Drawing drawing(white, true);
    drawing.quad.mask = drawing.mask(mask.surface(true));
    for (auto& [u, v] : drawing.quad.mask->at) u = u * 2;
    drawing.quad.mask->wrap = Wrap::Repeat;
    drawing.draw({0, 0, 0, 255});
    // Black, white, black, white, each ten pixels wide, mixed between their middles.
    for (const int x : {5, 25}) EXPECT_LT(drawing.at(x, 20).red, 30) << x;
    for (const int x : {15, 35}) EXPECT_GT(drawing.at(x, 20).red, 225) << x;
    drawing.quad.mask->wrap = Wrap::Clamp;
    drawing.draw({0, 0, 0, 255});
    for (const int x : {15, 25, 35}) EXPECT_GT(drawing.at(x, 20).red, 225) << x;
}

double progressBetween(double start, double end, double along) {
    if (std::abs(end - start) < 0.0001) return along < start ? 0.0 : 1.0;
    return clamped((along - start) / (end - start));
}

TEST(TreatmentTest, AGradientFollowsThePlaceOnTheQuad) {
    const Picture picture = Picture::noise(50, 40, true, 8);
    const GradientPaint gradients[] = {{0.2, 0.1, 0.8, 1, false, false},
                                       {0.2, 0.1, 0.8, 1, true, false},
                                       {0.9, 0, 0.3, 0.8, true, true},
                                       {0, 1, 1, 0, false, true},
                                       {0.505, 0, 0.505, 1, true, false}};
    for (const GradientPaint& gradient : gradients) {
        Drawing drawing(picture, true);
        drawing.quad.gradient = gradient;
        drawing.expect([&](int x, int y) {
            const double along = gradient.vertical ? (y + 0.5) / 40 : (x + 0.5) / 50;
            double p = progressBetween(gradient.startPlace, gradient.endPlace, along);
            if (gradient.soft) p = p * p * (3 - 2 * p);
            return blended(colourOf(picture.at(x, y)), between(gradient.startOpacity, gradient.endOpacity, p),
                           {}, kGroundColour);
        });
    }
}

TEST(TreatmentTest, AGradientLeansWithItsQuad) {
    const Picture white(1, 1, {255, 255, 255, 255});
    QuadPaint leaning;
    leaning.picture = white.surface(true);
    // Three times as far away on the right.
    leaning.corners = {{{0, 100, 1, 0, 1}, {300, 200, 3, 1, 1}, {300, 100, 3, 1, 0}, {0, 0, 1, 0, 0}}};
    leaning.gradient = GradientPaint{};
    leaning.gradient->startOpacity = 0;
    Picture canvas(100, 100);
    paint({leaning}, kBlack, canvas);
    for (int x = 5; x < 95; x += 10) {
        const double along = (x + 0.5) / 100, place = along / (3 - 2 * along);
        EXPECT_NEAR(canvas.at(x, 50).red, place * 255, 2) << x;
    }
}

Colour filtered(const FilterPaint& filter, const Colour& c) {
    const double grey = c.red * 0.299 + c.green * 0.587 + c.blue * 0.114;
    Colour other = c;
    if (filter.type == 1) other = {grey, grey, grey, 0};
    if (filter.type == 2) other = {std::min(grey * 1.2, 1.0), grey, std::min(grey * 0.8, 1.0), 0};
    if (filter.type == 3) other = {1 - c.red, 1 - c.green, 1 - c.blue, 0};
    const auto mix = [&](double a, double b, size_t i) {
        return between(a, b, filter.range) * filter.pictureColor[i];
    };
    return {mix(c.red, other.red, 0), mix(c.green, other.green, 1), mix(c.blue, other.blue, 2),
            c.alpha * filter.pictureColor[3]};
}

TEST(TreatmentTest, AFilterChangesColoursAndDrawsABorder) {
    const Picture picture = Picture::noise(60, 40, false, 9);
    for (int type = 0; type < 4; ++type)
        for (const float range : {1.0f, 0.4f}) {
            FilterPaint filter{.type = type, .range = range, .pictureColor = {0.9f, 0.5f, 1, 0.8f}};
            filter.borderWidth = 0.1f;  // four pixels
            filter.borderColor = {1, 0.2f, 0, 0.5f};
            filter.frameWidth = 60;
            filter.frameHeight = 40;
            Drawing drawing(picture);
            drawing.quad.filter = filter;
            drawing.quad.opacity = 0.9f;
            drawing.expect([&](int x, int y) {
                const bool isBorder = x < 4 || y < 4 || x >= 56 || y >= 36;
                const Colour shown =
                    isBorder ? Colour{1, 0.2, 0, 0.5} : filtered(filter, straightOf(picture.at(x, y)));
                return blended(shown, 0.9f, {}, kGroundColour);
            });
        }
}

TEST(TreatmentTest, AMosaicShowsTheMiddleOfEachTile) {
    const Picture picture = Picture::noise(50, 35, true, 10);
    FilterPaint filter{.type = 4, .pixelSize = 5};
    filter.pictureWidth = 50;
    filter.pictureHeight = 35;
    Drawing drawing(picture, true);
    drawing.quad.filter = filter;
    drawing.expect([&](int x, int y) { return colourOf(picture.at(x / 5 * 5 + 2, y / 5 * 5 + 2)); });
}

TEST(TreatmentTest, AWaveMovesRowsSideways) {
    // Red tells the column; the lower half mirrors the upper one.
    Picture picture(200, 60);
    for (int y = 0; y < 60; ++y)
        for (int x = 0; x < 200; ++x) picture.set(x, y, {y * 4, 0, x, 255});
    FilterPaint filter{.type = 5, .range = 0.8f, .time = 0.15f};
    Drawing drawing(picture, true);
    drawing.quad.filter = filter;
    const auto shift = [](double place) {
        return 0.8 * 0.05 * 200 * std::sin(2 * std::numbers::pi * (3 * place - 0.15));
    };
    drawing.draw();
    for (int y = 0; y < 60; ++y)
        for (int x = 20; x < 180; x += 7) {
            EXPECT_NEAR(drawing.at(x, y).red, x + shift((y + 0.5) / 60), 1) << x << ',' << y;
            EXPECT_NEAR(drawing.at(x, y).blue, y * 4, 1) << x << ',' << y;
        }
    drawing.quad.filter = FilterPaint{.reflection = true};
    drawing.draw();
    for (int y = 0; y < 60; ++y) {
        EXPECT_EQ(drawing.at(50, y).blue, (y < 30 ? y : 59 - y) * 4) << y;
        EXPECT_EQ(drawing.at(50, y).red, 50) << y;
    }
}

// resources/shaders/chromaKey_Shader.fsh
struct Keyed {
    Colour front;
    double opacity;
};

Keyed keyedOut(const KeyPaint& key, const Colour& c) {
    const double k[3] = {key.color[0], key.color[1], key.color[2]}, p[3] = {c.red, c.green, c.blue};
    double keyDifferences[3], differences[3], saturation = 0, far = 0;
    for (int i = 0; i < 3; ++i) {
        keyDifferences[i] = k[i] - k[(i + 1) % 3];
        differences[i] = p[i] - p[(i + 1) % 3];
        saturation = std::max(saturation, std::abs(keyDifferences[i]));
        far += (p[i] - k[i]) * (p[i] - k[i]);
    }
    double cut = clamped(1 - std::sqrt(far)), freed = cut;
    if (saturation >= 0.04) {
        double sum = 0, count = 0, least = 1;
        for (int i = 0; i < 3; ++i) {
            if (std::abs(keyDifferences[i]) < 0.5 * saturation) continue;
            sum += differences[i] / keyDifferences[i];
            least = std::min(least, differences[i] / keyDifferences[i]);
            ++count;
        }
        const double mean = sum / count;
        cut = clamped(least);
        freed = clamped(std::min(between(least, mean, 0.3) + 2 * std::max(least, 0.0), mean));
    }
    const double edge = std::clamp(double(key.softEdge), 0.001, 0.75), kept = std::max(1 - freed, 0.25);
    const auto front = [&](size_t i) { return clamped((p[i] - freed * k[i]) / kept); };
    return {{front(0), front(1), front(2), c.alpha}, clamped((0.75 - cut) / edge)};
}

TEST(TreatmentTest, AKeyIsTakenOutOfThePicture) {
    const Picture picture = Picture::noise(60, 60, true, 11);
    const std::array<float, 4> keys[] = {{0, 0.8f, 0.2f, 1}, {0.1f, 0.2f, 0.9f, 1}, {0.5f, 0.5f, 0.5f, 1}};
    for (const auto& key : keys)
        for (const float softEdge : {0.2f, 0.75f}) {
            Drawing drawing(picture, true);
            drawing.quad.key = KeyPaint{key, softEdge};
            drawing.expect([&](int x, int y) {
                const auto [front, opacity] = keyedOut(*drawing.quad.key, colourOf(picture.at(x, y)));
                return blended(front, opacity, {}, kGroundColour);
            });
        }
}

TEST(TreatmentTest, LettersTakeTheirColourAndTheirAlphaFades) {
    const Picture letters = Picture::noise(40, 10, false, 12);
    for (const BlendFunction blend : {BlendFunction{}, BlendFunction{BlendFactor::One, BlendFactor::One},
                                      BlendFunction{BlendFactor::DstColor, BlendFactor::OneMinusSrcAlpha}}) {
        Drawing drawing(letters);
        drawing.quad.blend = blend;
        drawing.quad.tint = {0.9f, 0.3f, 0.1f, 0.7f};
        drawing.expect([&](int x, int y) {
            const Colour c = straightOf(letters.at(x, y));
            const Colour letter{c.red * 0.9, c.green * 0.3, c.blue * 0.1, 1};
            return blended(letter, c.alpha * 0.7, blend, kGroundColour);
        });
    }
}

TEST(TreatmentTest, AQuadWithoutAPictureHasOneColour) {
    const Picture size(20, 10);
    Drawing drawing(size);
    drawing.quad.picture = {};
    drawing.quad.tint = {0.9f, 0.3f, 0.1f, 0.7f};
    drawing.quad.opacity = 0.5f;
    drawing.expect([&](int, int) { return blended({0.9, 0.3, 0.1, 0.7}, 0.5, {}, kGroundColour); });
}

TEST(TreatmentTest, WhatIsTreatedNoLongerHidesWhatLiesUnderIt) {
    const Picture below(30, 30, {0, 0, 255, 255}), above(30, 30, {255, 0, 0, 255});
    const auto mixes = [&](auto treat) {
        QuadPaint upper = rectangle(above.surface(true), 0, 0, 30, 30);
        treat(upper);
        Picture canvas(30, 30);
        paint({rectangle(below.surface(true), 0, 0, 30, 30), upper}, 0, canvas);
        return canvas.at(15, 15).red > 60 && canvas.at(15, 15).alpha == 255;
    };
    EXPECT_FALSE(mixes([](QuadPaint&) {}));
    EXPECT_TRUE(mixes([](QuadPaint& quad) { quad.tint = {1, 1, 1, 0.5f}; }));
    EXPECT_TRUE(mixes([](QuadPaint& quad) { quad.gradient = {0, 0.5, 1, 0.5, false, false}; }));
    EXPECT_TRUE(mixes([](QuadPaint& quad) { quad.key = KeyPaint{{0, 0, 1, 1}, 0.1f}; }));
    EXPECT_TRUE(mixes([](QuadPaint& quad) { quad.filter = FilterPaint{.pictureColor = {1, 1, 1, 0.5f}}; }));
    EXPECT_TRUE(mixes([](QuadPaint& quad) {
        quad.filter = FilterPaint{.borderWidth = 1, .borderColor = {0, 0, 1, 0.5f}};
    }));
    EXPECT_TRUE(mixes([&](QuadPaint& quad) { quad.mask = MaskPaint{.picture = above.surface(true)}; }));
    EXPECT_TRUE(mixes([](QuadPaint& quad) { quad.blend = {BlendFactor::One, BlendFactor::One}; }));
}

}  // namespace
}  // namespace platform
