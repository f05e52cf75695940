// What a template may ask for.
#include "tests/program/LimitTrial.h"

namespace multiscene::test {

namespace {

const std::string picture = "$(currentScenePlistROOT)/red.png";

Trial ofTemplate(const std::string& limit, std::vector<std::string> named,
                 std::function<void(SmallTemplate&, uint64_t)> fill, uint64_t tried = 0) {
    return {limit, kTemplate, std::move(named),
            [fill = std::move(fill)](const PlayLimitsTest& test, uint64_t number) {
                SmallTemplate small;
                fill(small, number);
                return test.verdict({"check", small.write(test.folder.path())});
            },
            tried};
}

void fillRecords(SmallTemplate& small, size_t number) {
    for (int more = 1; more < static_cast<int>(number); ++more)
        small.moreRecords.push_back(
            recordOf(SmallTemplate::sId + more, small.name, "scene.plist", SmallTemplate::frames));
}

Value::Dictionary curved(uint64_t samples, uint64_t points, const std::string& identifier = "30000") {
    return {{"bezierIdentifier", identifier},
            {"interpolationTotal", static_cast<int64_t>(samples)},
            {"interpolationXYZ", 21},
            {"controlPoints", Value::Array(points, "1,2")}};
}

void fillCurves(SmallTemplate& small, const std::vector<Value::Dictionary>& curves) {
    Value::Dictionary node = quad("curved", picture);
    node["BezierArray"] = Value::Array(curves.begin(), curves.end());
    small.nodes = {node};
}

/// As many curves as it takes.
void fillSamples(SmallTemplate& small, uint64_t samples) {
    std::vector<Value::Dictionary> curves;
    for (int number = 30'000; samples > 0; ++number) {
        const uint64_t now = std::min(samples, limitOf("maxCurveSamples"));
        curves.push_back(curved(now, 1, std::to_string(number)));
        samples -= now;
    }
    fillCurves(small, curves);
}

void fillShader(SmallTemplate& small, size_t bytes) {
    small.shaderSource = "void main() { gl_FragColor = vec4(1.0); }";
    small.shaderSource.resize(bytes, '\n');
    Value::Dictionary node = quad("shaded", picture);
    node["type"] = "QVQuadCustomShaderOneVariable";
    node["FpsInfo"] = Value::Dictionary{{"customShaderPath", "$(currentScenePlistROOT)/own.plist"}};
    small.nodes = {node};
}

/// Warned of, and left out.
Trial ofWarning(const std::string& limit, std::vector<std::string> named,
                std::function<void(SmallTemplate&, uint64_t)> fill) {
    return {limit, kTemplate, std::move(named), [=](const PlayLimitsTest& test, uint64_t number) {
                SmallTemplate small;
                fill(small, number);
                return test.verdict({"check", "--strict", small.write(test.folder.path())});
            }};
}

/// A text whose key `key` is this.
std::function<void(SmallTemplate&, uint64_t)> textKey(const std::string& key) {
    return [=](SmallTemplate& small, uint64_t number) {
        Value::Dictionary info = small.nodes[2]["TextureInfo"].dictionary();
        info[key] = static_cast<int64_t>(number);
        info["isShowTextShadow"] = true;
        info["textDrawingMode"] = 2;
        small.nodes[2] = small.nodes[2].with("TextureInfo", info);
    };
}

}  // namespace

void fillNodes(SmallTemplate& small, uint64_t number) {
    const Value::Dictionary empty{{"type", "QVObject3DTransformBase"}};
    small.nodes.resize(1);
    small.nodes.resize(number - 2, empty);  // camera and clock are nodes too
}

void fillFiles(SmallTemplate& small, uint64_t number) {
    small.nodes.assign(number, quad("again", picture));
    small.more = [](const fs::path& folder) { writePicture(folder / "red.png", 0xff0000, 2000, 2000); };
}

void fillScenes(SmallTemplate& small, uint64_t number) {
    small.description["sceneGroup"] =
        Value::Array(number, Value::Dictionary{{"mainSceneId", SmallTemplate::sId}});
}

/// Nodes that draw into textures of so many bytes together, the first as wide as may be.
void fillTargets(SmallTemplate& small, uint64_t bytes) {
    const auto add = [&](uint64_t width, uint64_t height) {
        Value::Dictionary node = quad("target", picture);
        node["FpsInfo"] =
            Value::Dictionary{{"isRenderToTexture", true},
                              {"textureMapKey", "t" + std::to_string(small.nodes.size())},
                              {"textureSize", std::to_string(width) + "," + std::to_string(height)}};
        small.nodes.push_back(node);
    };
    const uint64_t side = limitOf("maxTargetSide"), row = side * 4;
    small.nodes.clear();
    for (; bytes > row * side; bytes -= row * side) add(side, side);
    if (bytes > row) add(side, bytes / row - 1), bytes -= row * (bytes / row - 1);
    if (bytes > row) add(side, 1), bytes -= row;
    if (bytes > 0) add((bytes + 3) / 4, 1);
}

std::vector<Trial> templateTrials() {
    const auto mediaSize = [](SmallTemplate& small, uint64_t width, uint64_t height) {
        small.description["mediaSize"] = std::to_string(width) + "," + std::to_string(height);
    };
    return {
        ofTemplate("maxSceneNodes", {"scene.plist", "object3D[19998]"}, fillNodes),
        ofTemplate("maxSceneFiles", {"scene.plist", "object3D[2000].TextureInfo.texture"}, fillFiles),
        ofTemplate("maxGroupScenes", {"small.plist", "sceneGroup"}, fillScenes),
        ofTemplate("maxRecords", {"small.plist", "installScenes"}, fillRecords),
        ofTemplate("maxShaderBytes", {"own.fsh", "customShaderPath"}, fillShader),
        ofTemplate("maxPictureBytes", {"red.png", "object3D[0].TextureInfo.texture"},
                   [](SmallTemplate& small, uint64_t bytes) {
                       small.more = [=](const fs::path& folder) {
                           fs::resize_file(folder / "red.png", bytes);
                       };
                   }),
        ofTemplate("maxTargetSide", {"scene.plist", "textureSize"},
                   [](SmallTemplate& small, uint64_t side) {
                       fillTargets(small, 4);
                       Value::Dictionary node = small.nodes[0].dictionary();
                       node["FpsInfo"] = node["FpsInfo"].with("textureSize", std::to_string(side) + ",1");
                       small.nodes[0] = node;
                   }),
        ofTemplate("maxSceneTargetBytes", {"scene.plist", "FpsInfo.textureSize"}, fillTargets),
        ofTemplate("maxCurveSamples", {"scene.plist", "BezierArray[0].interpolationTotal"},
                   [](SmallTemplate& small, uint64_t samples) { fillCurves(small, {curved(samples, 2)}); }),
        ofTemplate("maxSceneCurveSamples", {"scene.plist", "BezierArray[20].interpolationTotal"},
                   fillSamples),
        ofTemplate("maxCurvePoints", {"scene.plist", "BezierArray[0].controlPoints"},
                   [](SmallTemplate& small, uint64_t points) { fillCurves(small, {curved(10, points)}); }),
        ofTemplate("maxSceneCurveSteps", {"scene.plist", "BezierArray[1]"},
                   [](SmallTemplate& small, uint64_t steps) {
                       constexpr uint64_t samples = 19'999, points = 100;
                       fillCurves(small, {curved(samples, points, "30001"),
                                          curved(steps - samples * points * points, 1)});
                   }),
        ofWarning("maxFilters", {"scene.plist", "filters"},
                  [](SmallTemplate& small, uint64_t number) {
                      Value::Dictionary node = small.nodes[0].dictionary();
                      node["type"] = "QVQuadFrameObject3D";
                      node["FrameInfo"] = Value::Dictionary{
                          {"filters",
                           Value::Array(number, Value::Dictionary{{"filter", "blur"}, {"radius", 0.01}})}};
                      small.nodes[0] = node;
                  }),
        ofWarning("maxLights", {"scene.plist", "LightSourceArray"},
                  [](SmallTemplate& small, uint64_t number) {
                      const Value::Dictionary light{{"lightSourceType", 2},
                                                    {"lightSourceColor", "1,1,1"},
                                                    {"lightSourcePosition", "0,0,1"}};
                      Value::Dictionary node = small.nodes[0].dictionary();
                      node["FpsInfo"] = node["FpsInfo"].with("isLightEnable", true);
                      node["LightSourceArray"] = Value::Array(number, light);
                      small.nodes[0] = node;
                  }),
        ofTemplate("maxFontSize", {"scene.plist", "fontSize"}, textKey("fontSize")),
        ofTemplate("maxTextStroke", {"scene.plist", "strokeWidth"}, textKey("strokeWidth")),
        ofTemplate("maxTextBlur", {"scene.plist", "shadowBlurRadius"}, textKey("shadowBlurRadius")),
        ofTemplate("maxVideoSide", {"small.plist", "mediaSize"},
                   [=](SmallTemplate& small, uint64_t side) { mediaSize(small, (side + 1) / 2 * 2, 2); }),
        ofTemplate("maxVideoPixels", {"small.plist", "mediaSize"},
                   [=](SmallTemplate& small, uint64_t pixels) {
                       const uint64_t most = limitOf("maxVideoPixels");
                       mediaSize(small, 4096,
                                 most / 4096 + (pixels > most ? 2 : 0) - (pixels < most ? 2 : 0));
                   }),
        ofTemplate("maxFramesPerSecond", {"small.plist", "videoFrameRate"},
                   [](SmallTemplate& small, uint64_t rate) {
                       small.description["videoFrameRate"] = static_cast<int64_t>(rate);
                       small.clock["NullVideoInfo"] = Value::Dictionary{{"videoFps", 10}, {"fpsTotal", 5}};
                   }),
    };
}

}  // namespace multiscene::test
