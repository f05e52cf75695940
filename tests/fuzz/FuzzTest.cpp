#include <gtest/gtest.h>

#include "core/SceneNodes.h"
#include "format/TrackFile.h"
#include "other/QVMultiSceneGropPlistFileManager.h"
#include "platform/base/Paths.h"
#include "platform/base/PropertyList.h"
#include "platform/image/PvrFile.h"
#include "platform/image/PvrtcDecoder.h"
#include "sceneFile/SceneValidation.h"
#include "tests/engine/FakeDriver.h"
#include "tests/engine/TwoPainters.h"
#include "tests/fuzz/Mutations.h"

namespace multiscene::testing {
namespace {

using platform::decodePvrtc;
using platform::PvrFile;
using platform::PvrFormat;
using platform::PvrLevel;
using platform::PvrtcBits;
using platform::Value;
using Dictionary = Value::Dictionary;

class FuzzTest : public ::testing::Test {
  protected:
    TwoPainters painters;
};

Value dictionaryOf(Dictionary entries) { return Value(std::move(entries)); }

/// A node with something in every key that the engine computes with.
Value richNode(const char* type) {
    const Value item = dictionaryOf({{"sartFps", 0},
                                     {"endFps", 3},
                                     {"startTranslate", "0,0,0"},
                                     {"endTranslate", "10,30001,30001"},
                                     {"endScale", "2,2,2"},
                                     {"endRotate", "0,0,90"},
                                     {"rotateEase", 30001},
                                     {"endTextureOrigin", "0.5,0.5"},
                                     {"endTextureSize", "1,1"}});
    const Value mutableItem =
        dictionaryOf({{"transformType", 2}, {"fpsStart", 0}, {"fpsEnd", 4}, {"iRotate", 24}});
    const Value path = dictionaryOf({{"bezierIdentifier", "30001"},
                                     {"interpolationTotal", 8},
                                     {"controlPoints", Value(Value::Array{"0,0", "5,5", "9,1"})},
                                     {"interpolationXYZ", 21}});
    return dictionaryOf(
        {{"type", type},
         {"name", "node"},
         {"FpsInfo", dictionaryOf({{"startFps", 0},
                                   {"endFps", 5},
                                   {"RenderDepth", 2},
                                   {"isChangeBlend", true},
                                   {"srcBlend", "ONE"},
                                   {"isRenderToTexture", true},
                                   {"textureSize", "16,16"},
                                   {"textureMapKey", "k"}})},
         {"QuadInfo",
          dictionaryOf({{"modelWidth", 10}, {"modelHeight", 20}, {"quadObject3DContentMode", 1}})},
         {"TextureInfo", dictionaryOf({{"textureType", "textureSerial"},
                                       {"animationFps", 2},
                                       {"animationStart", 1},
                                       {"animationEnd", 9},
                                       {"isLastLoop", true}})},
         {"AnimationInfo", Value(Value::Array{dictionaryOf({{"sartFps", 0},
                                                            {"endFps", 4},
                                                            {"ease", 22},
                                                            {"startRenderAlpha", 0},
                                                            {"endRenderAlpha", 1}})})},
         {"CameraInfo", dictionaryOf({{"type", "QVFrustumCamera"}, {"FrustumFov", 60}, {"aspect", 0.5}})},
         {"LightSourceArray", Value(Value::Array{dictionaryOf({{"lightSourceType", 3}})})},
         {"TransformArray", Value(Value::Array{item})},
         {"MutableTransformArray", Value(Value::Array{mutableItem})},
         {"BezierArray", Value(Value::Array{path})}});
}

TEST_F(FuzzTest, SceneFiles) {
    FakeDriver driver;
    driver.shownBy = &painters.software;
    const Value scene = dictionaryOf(
        {{"Camera", dictionaryOf({{"type", "QVOrthCamera"}, {"OrthWidth", 720}})},
         {"object3D",
          Value(Value::Array{richNode("QVQuadDiaphaneityObject3D"), richNode("QVQuadObject3D")})}});
    survive(
        bytesOf(platform::propertyListXml(scene)),
        [&](const Bytes& bytes) {
            bool isTaken = false;
            try {
                const Value parsed = platform::parsePropertyList(bytes, "scene.plist");
                SceneValidation::sceneProblems(parsed, "scene.plist");
                const auto root = QVScene3D::initRenderManager(driver);
                for (const Value& node : parsed.array("object3D"))
                    root->addChild(SceneNodes::object3DWithInfo(node, root));
                for (int64_t number = 0; number < 3; ++number) {
                    root->setCurrentRenderTime(frame(number));
                    root->updateData();
                    root->tweens().update();
                    root->updateMatrix();
                    TwoPainters::paint(painters.software, 72, 128, {},
                                       [&](Painter& painter) { root->render(painter); });
                    root->renderComplete();
                }
                isTaken = true;
            } catch (const platform::Error&) {
                // a clear refusal is fine
            }
            return isTaken;
        },
        400);
}

TEST_F(FuzzTest, SceneGroups) {
    const Value group = dictionaryOf(
        {{"scene", Value(Value::Array{
                       dictionaryOf({{"mainSceneId", 1}, {"sceneIdentifier", "a"}}),
                       dictionaryOf({{"mainSceneId", 2},
                                     {"sceneTansitionsInfo", dictionaryOf({{"tansitionsSceneId", 3},
                                                                           {"fpsTotal", 10},
                                                                           {"sceneTansitionsType", 0}})}})})},
         {"userMediaMap", dictionaryOf({{"texta", "hello"}, {"userVideo_totalFpsa", 40}})},
         {"sceneGroupFpsTotal", 200}});
    class NoScenes : public SceneCatalogue {
        std::optional<SceneConfigData> querySceneWithSid(int64_t) override { return std::nullopt; }
    } catalogue;
    survive(bytesOf(platform::propertyListXml(group)), [&](const Bytes& bytes) {
        try {
            SceneGroup read =
                QVMultiSceneGropPlistFileManager::groupOf(platform::parsePropertyList(bytes, "group.plist"));
            read.scenes = scenesNamedBy(read.entries, catalogue);
            SceneValidation::sceneGroupProblems(read, "group.plist");
            return true;
        } catch (const platform::Error&) {
            return false;
        }
    });
}

TEST_F(FuzzTest, ShaderDescriptions) {
    const Value description =
        dictionaryOf({{"Files", Value(Value::Array{"texturedQuad.vsh", "normal_renderShader.fsh"})},
                      {"Attributes", Value(Value::Array{"position", "inputTextureCoordinate"})},
                      {"Uniforms", Value(Value::Array{"u_mvpMatrix", "videoFrame"})}});
    const std::string folder = (platform::resourcesFolder() / "shaders").string();
    // Linking a program takes milliseconds, so every prefix is more than a run has time for.
    survive(
        bytesOf(platform::propertyListXml(description)),
        [&](const Bytes& bytes) {
            try {
                const Value parsed = platform::parsePropertyList(bytes, "shader.plist");
                platform::FileGate gate;
                return ShaderManager(gate).createShader("fuzz", parsed, folder)->programHandle() != 0;
            } catch (const platform::Error&) {
                return false;
            }
        },
        200);
}

Bytes pvr(uint8_t format, uint32_t bitsPerPixel) {
    Bytes bytes;
    const auto put = [&](uint32_t value) {
        for (int shift = 0; shift < 32; shift += 8) bytes.push_back(static_cast<uint8_t>(value >> shift));
    };
    for (const uint32_t field :
         {52u, 16u, 16u, 2u, uint32_t{format}, 0u, bitsPerPixel, 0u, 0u, 0u, 1u, 0x21525650u, 1u})
        put(field);
    bytes.resize(52 + 2048, 0x5A);
    return bytes;
}

TEST_F(FuzzTest, PvrTextures) {
    for (const auto& [format, bits] : {std::pair<uint8_t, uint32_t>{18, 32}, {24, 2}, {25, 4}, {19, 16}}) {
        survive(
            pvr(format, bits),
            [](const Bytes& bytes) {
                const PvrFile file(bytes);
                const bool isTwoBits = file.format() == PvrFormat::Pvrtc2;
                const bool isPvrtc = isTwoBits || file.format() == PvrFormat::Pvrtc4;
                for (const PvrLevel& level : file.levels())
                    if (isPvrtc)
                        decodePvrtc(level.data, level.width, level.height,
                                    isTwoBits ? PvrtcBits::Two : PvrtcBits::Four, true);
                return !file.levels().empty();
            },
            500);
    }
}

TEST_F(FuzzTest, CornerPinTracks) {
    std::string xml = "<?xml version=\"1.0\"?><CornerPinInfoDoc><Object>";
    for (int i = 0; i < 3; ++i)
        xml +=
            "<Frame><bottomleftx>0.1</bottomleftx><bottomlefty>0.1</bottomlefty><bottomrightx>0.9</"
            "bottomrightx>"
            "<bottomrighty>0.1</bottomrighty><toprightx>0.9</toprightx><toprighty>0.9</toprighty>"
            "<topleftx>0.1</topleftx><toplefty>0.9</toplefty></Frame>";
    xml += "</Object></CornerPinInfoDoc>";
    const Bytes plain = bytesOf(xml);
    survive(plain, [](const Bytes& bytes) { return !TrackFile::frames(bytes).empty(); });
    survive(TrackFile::encryptedAES256DataUsingDefaultKey(plain, "track.xml"), [](const Bytes& bytes) {
        return TrackFile::decryptedAES256DataUsingDefaultKey(bytes).has_value();
    });
}

}  // namespace
}  // namespace multiscene::testing
