// A small scene with an orthographic camera of one unit a pixel, drawn by both painters; files that it may
// open lie in a folder of the test's own.
#pragma once

#include <cmath>
#include <filesystem>
#include <string>

#include "FakeDriver.h"
#include "TwoPainters.h"
#include "core/SceneNodes.h"
#include "tests/platform/TemporaryFolder.h"

namespace multiscene::testing {

using platform::Value;
using Dictionary = Value::Dictionary;

inline constexpr Pixel kRed{255, 0, 0, 255}, kGreen{0, 255, 0, 255}, kBlue{0, 0, 255, 255},
    kWhite{255, 255, 255, 255}, kBlack{0, 0, 0, 255}, kNothing{0, 0, 0, 0};

class DrawableFixture : public ::testing::Test {
  protected:
    static constexpr int side = 64;  ///< pixels of the picture

    DrawableFixture() {
        driver.played.gate().allowFolder(folder);
        painters.gate.allowFolder(folder);
        driver.width = driver.height = side;
        driver.shownBy = &painters.software;
        newScene();
    }
    ~DrawableFixture() override {
        scene.reset();
        driver.current.reset();
    }

    void newScene() {
        scene = QVScene3D::initRenderManager(driver);
        driver.current = scene;
        SceneConfigData data;
        data.scenePlistPath = folder / "scene.plist";
        data.sceneResourceFolderPath = folder.string() + "/";
        scene->setSceneConfigData(data);
        scene->setCamera(QVCamera3D::cameraWithInfo(
            dictionary({{"type", "QVOrthCamera"}, {"OrthWidth", side}, {"aspect", 1}}), scene));
    }

    std::string path(const std::string& name) const { return (folder / name).string(); }

    std::string picture(const std::string& name, const std::vector<Pixel>& colors, int width = 1) const {
        return writePicture(path(name), colors, width);
    }
    std::string film(const std::string& name, int frames, int framesPerSecond = 30) const {
        return writeFilm(path(name), frames, framesPerSecond);
    }

    /// A node from its dictionary, added to the scene.
    template <typename Node = QVObject3DFpsBase>
    std::shared_ptr<Node> add(const Value& info) {
        const auto node = std::dynamic_pointer_cast<Node>(SceneNodes::object3DWithInfo(info, scene));
        scene->addChild(node);
        return node;
    }

    /// The dictionary of a quad over the whole picture, or of the given size.
    static Dictionary quad(const std::string& type, const std::string& file, float width = side,
                           float height = side) {
        return {{"type", Value(type)},
                {"TextureInfo", dictionary({{"textureType", "image"}, {"texture", Value(file)}})},
                {"QuadInfo", dictionary({{"modelWidth", double(width)}, {"modelHeight", double(height)}})}};
    }
    static Value frames(int64_t first, int64_t last) {
        return dictionary({{"startFps", Value(first)}, {"endFps", Value(last)}});
    }
    /// One key frame over frames 0 to 10 from `start` to `end`.
    static Value keys(const std::string& startKey, const Value& start, const std::string& endKey,
                      const Value& end) {
        return array(
            {dictionary({{"sartFps", 0}, {"endFps", 10}, {"ease", 0}, {startKey, start}, {endKey, end}})});
    }

    void setUserMediaMap(const Value& map) { driver.played.settings().setUserMediaMapDic(map); }
    std::vector<RenderReport::Entry> reported() { return driver.played.report().entries(); }

    /// Updates the scene for a frame and draws it over `background`.
    void draw(int64_t number, const Pixel& background = kNothing) {
        scene->setCurrentRenderTime(frame(number));
        scene->updateData();
        scene->updateMatrix();
        drawAgain(background);
    }
    void drawAgain(const Pixel& background = kNothing) {
        painters.edgePixels = mayDiffer;
        picture_ = painters.paint(side, side, background, [&](Painter& painter) { scene->render(painter); });
    }

    /// Draws a scene of this node alone.
    void show(const Value& info, int64_t number = 0, const Pixel& background = kNothing) {
        newScene();
        add(info);
        draw(number, background);
    }

    /// A pixel of the last picture, from the upper left.
    const Pixel& at(int x, int y) const { return picture_.at(x, y); }

    const platform::test::TemporaryFolder temporary_;  ///< outlives what writes into it
    const std::filesystem::path folder = temporary_.path();
    TwoPainters painters;
    FakeDriver driver;
    std::shared_ptr<QVScene3D> scene;
    /// Pixels in which the painters may differ: those of edges that do not lie on pixels, and the like.
    size_t mayDiffer = 32;

    PaintedPicture picture_;
};

}  // namespace multiscene::testing
