// The edges of what is drawn.
#include "output/PictureSink.h"
#include "tests/engine/PlayFixture.h"

namespace multiscene {
namespace {

using testing::Dictionary;
using testing::flatScene;
using testing::Pixel;
using testing::Value;

using Nodes = Value::Array;
using Picture = std::vector<Pixel>;  ///< rows from the top

class EdgeTest : public testing::PlayFixture {
  protected:
    static constexpr int side = 256;  ///< pixels of the picture

    /// The frames of a scene with one unit a pixel.
    std::vector<Picture> play(const Nodes& nodes, int64_t lastFrame = 0) {
        std::vector<Picture> frames;
        completions_ = 0;
        scenes_.clear();
        addScene(1, flatScene(side, side, testing::clock(lastFrame), nodes), lastFrame + 1);
        PlayFixture::play(1);
        create(std::make_shared<PictureSink>(side, side, [&](const PictureSink::Picture& shown) {
            const auto* pixels = reinterpret_cast<const Pixel*>(shown.rgba);
            frames.emplace_back(pixels, pixels + side * side);
        }));
        run();
        EXPECT_EQ(failures_, 0);
        return frames;
    }

    std::string picture(const std::string& name, const Picture& colors, int width = 1) const {
        return testing::writePicture(folder_ / name, colors, width);
    }

    /// A quad at a place, turned by an angle in radians about z.
    static Dictionary quad(const std::string& type, const std::string& file, double x, double y, double size,
                           double angle = 0) {
        Dictionary info =
            testing::texturedQuad(type, {{"textureType", "image"}, {"texture", Value(file)}}, size, size);
        info["TransformArray"] = Value(
            Nodes{Value(Dictionary{{"sartFps", 0},
                                   {"endFps", 1000},
                                   {"startTranslate", std::to_string(x) + "," + std::to_string(y) + ",0"},
                                   {"startRotate", "0,0," + std::to_string(angle)}})});
        return info;
    }
};

TEST_F(EdgeTest, TargetsThatShowEachOtherStepOnceAFrame) {
    const auto showing = [&](const char* key, double x) {
        Dictionary info = quad("QVQuadObject3D", "", x, 0, side);
        info["TextureInfo"] = Value(Dictionary{{"textureType", "RTTTexture"}, {"textureMapKey", key}});
        return Value(info);
    };
    const auto drawnInto = [](const char* key, double depth, Nodes children) {
        return Value(Dictionary{{"type", "QVObject3DTransformBase"},
                                {"FpsInfo", Value(Dictionary{{"isRenderToTexture", true},
                                                             {"textureSize", "256,256"},
                                                             {"textureMapKey", key},
                                                             {"RenderDepth", depth}})},
                                {"childNode", Value(std::move(children))}});
    };
    // The first target shows what the second one held a frame before, moved to the right.
    const Value dot = Value(quad("QVQuadObject3D", picture("red.png", {{255, 0, 0, 255}}), -80, 0, 16));
    // Materials look for targets that are there: the second node is configured first.
    const Nodes nodes{drawnInto("second", 1, {showing("first", 0)}),
                      drawnInto("first", 2, {showing("second", 20), dot}), showing("second", 0)};
    const auto frames = play(nodes, 3);
    ASSERT_EQ(frames.size(), 4u);
    for (int frame = 0; frame < 4; ++frame)
        for (int step = 0; step < 6; ++step) {
            const Pixel& at = frames[size_t(frame)][size_t(side / 2 * side + side / 2 - 80 + 20 * step)];
            EXPECT_EQ(at[0] > 128, step <= frame) << "frame " << frame << ", place " << step;
        }
}

TEST_F(EdgeTest, PicturesHoldTheirEdgeColoursUnlessTheyAreRepeated) {
    const std::string halves = picture("halves.png", {{255, 255, 255, 255}, {0, 0, 0, 255}});
    // Four times as large as the picture: its upper edge in the first row, or its lower one in the last.
    for (const bool isUpper : {true, false}) {
        const double y = isUpper ? -1.5 * side : 1.5 * side;
        const Picture shown = play({Value(quad("QVQuadObject3D", halves, 0, y, 4 * side))}).at(0);
        EXPECT_EQ(int(isUpper ? shown.front()[0] : shown.back()[0]), isUpper ? 255 : 0);
    }
    Dictionary tiled = quad("QVQuadObject3D", halves, 0, 0, side);
    tiled["TransformArray"] = Value(Nodes{Value(Dictionary{{"sartFps", 0},
                                                           {"endFps", 9},
                                                           {"startTextureOrigin", "0,0"},
                                                           {"endTextureOrigin", "0,0"},
                                                           {"startTextureSize", "1,2"},
                                                           {"endTextureSize", "1,2"}})});
    const Picture shown = play({Value(tiled)}, 1).at(1);
    std::string column;
    for (const int row : {20, 100, 148, 228})
        column += shown[size_t(row * side)][0] > 128 ? "white " : "black ";
    EXPECT_EQ(column, "white black white black ");
}

}  // namespace
}  // namespace multiscene
