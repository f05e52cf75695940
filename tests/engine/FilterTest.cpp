// Image filters: what each does to known colours, both painters beside each other over all of them, and what
// scene files may ask for.
#include <hwy/targets.h>

#include <fstream>
#include <numeric>
#include <random>

#include "DrawableFixture.h"
#include "pictureFilter/Filter.h"
#include "platform/image/ColorTable.h"

namespace multiscene {
namespace {

using namespace testing;

/// Slopes, a bright disc, fine stripes and noise: something for each filter to work on.
Texture motif(int width, int height, bool isOpaque) {
    std::mt19937 random(7);
    platform::Bitmap bitmap(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const double across = double(x) / width, down = double(y) / height;
            const bool isDisc = std::hypot(x - 0.6 * width, y - 0.4 * height) < 0.2 * height;
            const double noise = double(random() % 24) / 255, stripe = x % 7 < 3 && down > 0.7 ? 0.4 : 0;
            const double alpha = isOpaque || across > 0.4 ? 1 : std::floor(across * 9) / 4;
            const std::array<double, 4> color{isDisc ? 0.95 : 0.8 * across + noise,
                                              0.7 * down + noise + stripe,
                                              isDisc ? 0.8 : 0.5 - 0.5 * across + noise, 1};
            for (size_t i = 0; i < 4; ++i)
                bitmap.rgba[size_t(y * width + x) * 4 + i] = uint8_t(std::min(color[i], 1.0) * alpha * 255);
        }
    Texture texture;
    texture.setPicture(std::move(bitmap));
    return texture;
}

std::shared_ptr<const platform::ColorTable> swappedColors() {
    return std::make_shared<platform::ColorTable>(
        platform::ColorTable::parse("TITLE \"red and blue change places\"\nLUT_3D_SIZE 2\n0 0 0\n0 0 1\n0 1 "
                                    "0\n0 1 1\n1 0 0\n1 0 1\n1 1 0\n1 1 1\n"));
}

/// With its default numbers and colours.
Filter filterNamed(std::string_view name) {
    Filter filter{.type = filterTypeNamed(name)};
    const KeyReader reader(*filter.type->keys, platform::Value(Dictionary()));
    size_t number = 0, color = 0;
    for (const Key* key : keysOf(*filter.type, KeyType::Number))
        filter.numbers[number++] = reader.number(key->name);
    for (const Key* key : keysOf(*filter.type, KeyType::Color))
        filter.colors[color++] = reader.vector4(key->name);
    if (filter.type->aside == FilterAside::Table) filter.table = swappedColors();
    filter.frame = 3;
    return filter;
}

QuadDraw quadOf(Texture& texture, std::vector<Filter> filters, bool isUpsideDown = false) {
    QuadDraw quad{.corners = {-1, -1, 0, 1, -1, 0, 1, 1, 0, -1, 1, 0},
                  .textureCoordinates = {0, 1, 1, 1, 1, 0, 0, 0},
                  .texture = &texture,
                  .look = PlainLook{},
                  .state = {}};
    if (isUpsideDown) quad.textureCoordinates = {0, 0, 1, 0, 1, 1, 0, 1};
    const glm::vec2 size(texture.width(), texture.height());
    if (!filters.empty())
        quad.filters =
            std::make_shared<FilterChain>(FilterChain{.filters = std::move(filters), .pictureSize = size});
    return quad;
}

class FilterTest : public DrawableFixture {
  protected:
    /// By both painters, pixel for pixel.
    PaintedPicture shown(const QuadDraw& quad) {
        painters.edgePixels = mayDiffer;
        return painters.paint(quad.texture->width(), quad.texture->height(), kNothing,
                              [&](Painter& painter) { painter.draw(quad); });
    }
    /// What a filter makes of a large area of one colour.
    Pixel of(const Pixel& color, const Filter& filter, int64_t x = 20, int64_t y = 20) {
        platform::Bitmap bitmap(40, 40);
        for (size_t i = 0; i < bitmap.rgba.size(); ++i) bitmap.rgba[i] = color[i % 4];
        Texture texture;
        texture.setPicture(std::move(bitmap));
        return shown(quadOf(texture, {filter})).at(int(x), int(y));
    }
    static Filter with(std::string_view name, std::array<float, 6> numbers, float strength = 1) {
        Filter filter = filterNamed(name);
        filter.numbers = numbers;
        filter.strength = strength;
        return filter;
    }
};

TEST(FilteredSizeTest, PicturesWithFiltersAreNoLargerThanTheTableSays) {
    for (const int side : {2047, 2048, 2049, 4096}) {
        const FilteredSize size = filteredSize(side, side / 2, glm::vec2(side, side / 2));
        EXPECT_EQ(size.width, std::min(side, 2048)) << side;
        EXPECT_NEAR(size.height, std::min(side, 2048) / 2, 1) << side;
    }
}

TEST_F(FilterTest, BothPaintersAgreeOverEveryFilter) {
    mayDiffer = 4;  // where a rounding tips over
    Texture opaque = motif(150, 101, true), clear = motif(90, 61, false);
    const auto plain = shown(quadOf(opaque, {}));
    for (const FilterType& type : filterTypes()) {
        SCOPED_TRACE(type.name);
        const auto whole = shown(quadOf(opaque, {filterNamed(type.name)}));
        Filter half = filterNamed(type.name);
        half.strength = 0.4f;
        shown(quadOf(clear, {half}));
        shown(quadOf(opaque, {half}, true));
        Filter most = filterNamed(type.name), least = most;
        size_t place = 0;
        for (const Key* key : keysOf(type, KeyType::Number)) {
            most.numbers[place] = float(key->maximum);
            least.numbers[place++] = float(key->minimum);
        }
        const auto strong = shown(quadOf(opaque, {most}));
        EXPECT_TRUE(whole.pixels != plain.pixels || strong.pixels != plain.pixels) << "it does something";
        shown(quadOf(clear, {most}));
        shown(quadOf(clear, {least}));
    }
    // One after the other, the next one on what the first one made.
    const auto chained =
        shown(quadOf(opaque, {filterNamed("wave"), filterNamed("grey"), filterNamed("duotone")}));
    const auto direct = shown(quadOf(opaque, {filterNamed("wave"), filterNamed("duotone")}));
    for (size_t i = 0; i < chained.pixels.size(); ++i)
        ASSERT_TRUE(isNear(chained.pixels[i], direct.pixels[i], 1)) << "duotone sees grey alone";
}

TEST_F(FilterTest, TheSameBytesOnEveryProcessor) {
    Texture texture = motif(61, 40, true);
    for (const FilterType& type : filterTypes()) {
        const QuadDraw quad = quadOf(texture, {filterNamed(type.name)});
        std::vector<Pixel> first;
        for (const int64_t target : hwy::SupportedAndGeneratedTargets()) {
            hwy::SetSupportedTargetsForTest(target);
            const auto picture =
                TwoPainters::paint(painters.software, 61, 40, kNothing, [&](Painter& painter) {
                    // A still picture is filtered once: another one each time.
                    Texture again = motif(61, 40, true);
                    QuadDraw fresh = quad;
                    fresh.texture = &again;
                    painter.draw(fresh);
                });
            hwy::SetSupportedTargetsForTest(0);
            if (first.empty()) first = picture.pixels;
            EXPECT_EQ(picture.pixels, first) << type.name << " by " << hwy::TargetName(target);
        }
    }
}

TEST_F(FilterTest, ColoursBecomeTheKnownOnes) {
    const Pixel orange{200, 100, 0, 255};
    EXPECT_TRUE(isNear(of(orange, filterNamed("grey")), {119, 119, 119, 255}, 1));
    EXPECT_TRUE(isNear(of(orange, filterNamed("sepia")), {142, 119, 95, 255}, 1));
    EXPECT_TRUE(isNear(of(orange, with("negative", {}, 0.5f)), {128, 128, 128, 255}, 1));
    EXPECT_TRUE(isNear(of({100, 50, 0, 128}, filterNamed("negative")), {28, 78, 128, 128}, 2))
        << "straight colours";
    EXPECT_TRUE(isNear(of(orange, with("adjust", {0.2f, 0, 0})), {226, 126, 26, 255}, 1));
    EXPECT_TRUE(isNear(of(orange, with("adjust", {0, -1, 0})), {128, 128, 128, 255}, 1)) << "no contrast";
    EXPECT_TRUE(isNear(of(orange, with("adjust", {0, 0, -1})), {119, 119, 119, 255}, 1)) << "no colour";
    EXPECT_TRUE(isNear(of({100, 100, 100, 255}, with("temperature", {1, 0})), {128, 104, 68, 255}, 1));
    Filter duotone = filterNamed("duotone");
    duotone.colors = {glm::vec4(1, 0, 0, 1), glm::vec4(0, 0, 1, 1)};
    EXPECT_TRUE(isNear(of({0, 0, 0, 255}, duotone), {255, 0, 0, 255}, 1));
    EXPECT_TRUE(isNear(of({255, 255, 255, 255}, duotone), {0, 0, 255, 255}, 1));
    EXPECT_TRUE(isNear(of({100, 140, 250, 255}, with("posterise", {3})), {128, 128, 255, 255}, 1));
    EXPECT_TRUE(isNear(of(orange, filterNamed("film")), {0, 100, 200, 255}, 1))
        << "a table that swaps red and blue";
    EXPECT_EQ(of(orange, filterNamed("vignette")), orange) << "the middle stays";
    EXPECT_LT(of(orange, filterNamed("vignette"), 0, 39)[0], 80);
    for (const char* focus : {"blur", "tiltShift", "sharpen", "pixelate", "swirl", "wave"})
        EXPECT_TRUE(isNear(of(orange, filterNamed(focus)), orange, 1)) << focus << " of one colour";
}

TEST_F(FilterTest, PlacesAndNeighboursCount) {
    Texture dot = [] {
        platform::Bitmap bitmap(64, 64);
        for (size_t i = 3; i < bitmap.rgba.size(); i += 4) bitmap.rgba[i] = 255;
        for (int y = 28; y < 36; ++y) std::fill_n(&bitmap.rgba[size_t(y * 64 + 28) * 4], 32, 255);
        Texture texture;
        texture.setPicture(std::move(bitmap));
        return texture;
    }();
    const auto light = [](const PaintedPicture& picture) {
        return std::accumulate(picture.pixels.begin(), picture.pixels.end(), 0,
                               [](int sum, const Pixel& pixel) { return sum + pixel[0]; });
    };
    const int given = light(shown(quadOf(dot, {})));
    for (const float radius : {0.02f, 0.08f, 0.2f}) {
        const auto blurred = shown(quadOf(dot, {with("blur", {radius})}));
        EXPECT_NEAR(light(blurred), given, given / 8 + radius * 4000)
            << "light is spread, not lost: " << radius;
        EXPECT_NEAR(blurred.at(31, 26)[0], blurred.at(31, 37)[0], 3) << "to all sides alike";
        EXPECT_NEAR(blurred.at(26, 31)[0], blurred.at(31, 26)[0], 3);
        // Two bell curves under a square of 8: the share of the middle.
        const double part = std::erf(4 / (radius * 64 * std::sqrt(2.0)));
        EXPECT_NEAR(blurred.at(31, 31)[0], 255 * part * part, 12) << radius;
    }
    const auto tiles = shown(quadOf(dot, {with("pixelate", {0.25f})}));
    EXPECT_EQ(tiles.at(16, 16), tiles.at(31, 31));
    EXPECT_NE(tiles.at(16, 16), tiles.at(15, 15));
    EXPECT_EQ(shown(quadOf(dot, {filterNamed("edges")})).at(31, 31), kBlack) << "no line inside";
    EXPECT_GT(shown(quadOf(dot, {filterNamed("edges")})).at(28, 31)[0], 200);

    // Grain differs by frame, and is the same for the same frame.
    Filter grain = filterNamed("grain");
    Texture grey = motif(64, 64, true);
    const auto third = shown(quadOf(grey, {grain}));
    EXPECT_EQ(shown(quadOf(grey, {grain})).pixels, third.pixels);
    grain.frame = 4;
    EXPECT_NE(shown(quadOf(grey, {grain})).pixels, third.pixels);
}

TEST_F(FilterTest, ListsInSceneFilesMoveByKeyFrames) {
    const std::string photo = picture("photo.png", {{200, 100, 0, 255}});
    const auto drawn = [&](std::vector<Dictionary> filters, int64_t number, Dictionary frameInfo = {}) {
        newScene();
        Value::Array list;
        for (Dictionary& each : filters) list.emplace_back(std::move(each));
        Dictionary info = quad("QVQuadFrameObject3D", photo);
        frameInfo["filters"] = Value(std::move(list));
        info["FrameInfo"] = Value(std::move(frameInfo));
        info["FpsInfo"] = frames(0, 20);
        add(info);
        for (int64_t shown = 0; shown <= number; ++shown) draw(shown, kBlack);
        return at(32, 32);
    };
    const auto moved = [](const char* number, double start, double end) {
        return array({dictionary(
            {{"sartFps", 0}, {"endFps", 10}, {"number", number}, {"start", start}, {"end", end}})});
    };
    const Dictionary fading{{"filter", "grey"}, {"AnimationInfo", moved("strength", 0, 1)}};
    EXPECT_TRUE(isNear(drawn({fading}, 0), {200, 100, 0, 255}));
    EXPECT_TRUE(isNear(drawn({fading}, 5), {159, 109, 59, 255}, 2));
    EXPECT_TRUE(isNear(drawn({fading}, 20), {119, 119, 119, 255}, 2)) << "the last value stays";
    const Dictionary brighter{{"filter", "adjust"}, {"AnimationInfo", moved("brightness", 0, 1e30)}};
    EXPECT_TRUE(isNear(drawn({brighter}, 20), {255, 228, 128, 255}, 2)) << "no number leaves its range";
    EXPECT_TRUE(isNear(drawn({{{"filter", "grey"}}, {{"filter", "negative"}}}, 0), {136, 136, 136, 255}, 2));
    EXPECT_TRUE(isNear(drawn({{{"filter", "no such"}}, {{"filter", "grey"}, {"strength", "nan"}}}, 0),
                       {200, 100, 0, 255}));

    std::ofstream(path("swap.cube"))
        << "LUT_3D_SIZE 2\n0 0 0\n0 0 1\n0 1 0\n0 1 1\n1 0 0\n1 0 1\n1 1 0\n1 1 1\n";
    EXPECT_TRUE(isNear(drawn({{{"filter", "film"}, {"table", "$(currentScenePlistROOT)/swap.cube"}}}, 0),
                       {0, 100, 200, 255}));
    EXPECT_TRUE(isNear(drawn({{{"filter", "film"}, {"look", "silver"}}}, 0), {125, 125, 124, 255}, 2));
    EXPECT_TRUE(reported().empty());
    EXPECT_TRUE(isNear(drawn({{{"filter", "film"}, {"table", "$(currentScenePlistROOT)/none.cube"}}}, 0),
                       {200, 100, 0, 255}));
    EXPECT_EQ(reported().size(), 1u);
}

TEST_F(FilterTest, CornersAreRoundAndSmooth) {
    const std::string photo = picture("photo.png", {{200, 100, 0, 255}});
    const auto drawn = [&](Dictionary frameInfo) {
        Dictionary info = quad("QVQuadFrameObject3D", photo, 60, 40);
        info["FrameInfo"] = Value(std::move(frameInfo));
        show(info, 0, kBlack);
    };
    const Pixel orange{200, 100, 0, 255};
    for (const char* type : {"image", "filter", "color"}) {
        SCOPED_TRACE(type);
        drawn({{"frameType", type}, {"frameColor", "0.784,0.392,0,1"}, {"cornerRadius", 0.25}});
        EXPECT_EQ(at(2, 12), kBlack) << "a corner";
        EXPECT_EQ(at(61, 51), kBlack);
        EXPECT_TRUE(isNear(at(12, 12), orange, 1));
        EXPECT_TRUE(isNear(at(3, 30), orange, 1));
        EXPECT_TRUE(isNear(at(6, 16), orange, 1)) << "inside of the arc";
        int light = 0;  // the arc leaves pi/4 of the corner's 100 pixels
        for (int y = 12; y < 22; ++y)
            for (int x = 2; x < 12; ++x) light += at(x, y)[0];
        EXPECT_NEAR(light / 200.0, 78.5, 1);
    }
    drawn({{"frameType", "filter"}, {"cornerRadius", 0.25}, {"frameWidth", 0.1}, {"frameColor", "0,0,1,1"}});
    EXPECT_TRUE(isNear(at(30, 14), kBlue));
    EXPECT_TRUE(isNear(at(30, 17), orange, 1));
    EXPECT_TRUE(isNear(at(6, 16), kBlue, 1)) << "the border follows the corner";
    EXPECT_EQ(at(2, 12), kBlack);
}

TEST(ColorTableTest, OnlyWholeTablesAreRead) {
    const auto problem = [](std::string text) -> std::string {
        try {
            platform::ColorTable::parse(text);
        } catch (const platform::Error& error) {
            EXPECT_EQ(error.kind(), platform::ErrorKind::Template);
            return error.what();
        }
        return "";
    };
    const std::string eight = "0 0 0\n1 0 0\n0 1 0\n1 1 0\n0 0 1\n1 0 1\n0 1 1\n1 1 1";
    const std::string least = "LUT_3D_SIZE 2\n" + eight;
    EXPECT_EQ(problem("# a remark\r\nTITLE \"x\"\r\nDOMAIN_MIN 0 0 0\nDOMAIN_MAX 1 1 1\n\n" + least + "\n"),
              "");
    for (const char* size : {"1", "34", "1e9", "-2", "2.5", "nan", "x", ""})
        EXPECT_NE(problem(std::string("LUT_3D_SIZE ") + size + "\n" + eight), "") << size;
    EXPECT_NE(problem(""), "");
    EXPECT_NE(problem(eight), "");
    EXPECT_NE(problem(least + "\nLUT_3D_SIZE 2"), "");
    EXPECT_NE(problem("LUT_1D_SIZE 2\n" + eight), "");
    EXPECT_NE(problem("DOMAIN_MAX 2 2 2\n" + least), "");
    EXPECT_EQ(problem(least + "\n0 0 0"), "line 10 is one colour more than the size asks for");
    EXPECT_NE(problem(least.substr(0, least.size() - 6)), "");
    EXPECT_EQ(problem("LUT_3D_SIZE 2\n0 0 inf\n"), "line 2 is no colour of three numbers");
    const auto table = platform::ColorTable::parse("LUT_3D_SIZE 2\n-3 7 0.5\n" + eight.substr(6));
    EXPECT_EQ(table.picture().pixels[0], 128);
    EXPECT_EQ(table.picture().pixels[1], 255) << "beyond the range is its end";
    EXPECT_EQ(table.picture().pixels[2], 0);
}

}  // namespace
}  // namespace multiscene
