#include "tests/program/SmallTemplate.h"

#include <cmath>
#include <cstring>
#include <fstream>

#include "platform/base/PropertyList.h"
#include "platform/image/ImageWriter.h"
#include "platform/media/VideoWriter.h"
#include "tests/platform/WavBytes.h"

namespace multiscene::test {

namespace fs = std::filesystem;
using platform::Value;

namespace {

Value::Dictionary input(int type, const std::string& key) {
    return {{"userInputType", type}, {"renderMapKey", key}};
}

Value::Dictionary textNode() {
    Value::Dictionary node = quad("title", "");
    node["TextureInfo"] = Value::Dictionary{{"textureType", "text2d"},
                                            {"textString", "title"},
                                            {"fontSize", 16},
                                            {"textColor", "1,1,1,1"},
                                            {"textFixedResolution", "64,32"}};
    return node;
}

void writeShader(const fs::path& folder, const std::string& fragmentSource) {
    std::ofstream(folder / "own.fsh") << fragmentSource;
    std::ofstream(folder / "own.vsh") << "attribute vec4 position; void main() { gl_Position = position; }";
    platform::writePropertyList(folder / "own.plist",
                                Value::Dictionary{{"Files", Value::Array{"own.vsh", "own.fsh"}},
                                                  {"Attributes", Value::Array{"position"}},
                                                  {"Uniforms", Value::Array{}}});
}

}  // namespace

Value::Dictionary quad(const std::string& name, const std::string& texture) {
    return {{"type", "QVQuadObject3D"},
            {"name", name},
            {"FpsInfo", Value::Dictionary{{"startFps", 0}, {"endFps", 1000}}},
            {"TextureInfo", Value::Dictionary{{"textureType", "image"}, {"texture", texture}}},
            {"QuadInfo", Value::Dictionary{{"modelWidth", 64}, {"modelHeight", 64}}}};
}

Value::Dictionary clockOf(int frames) {
    return {{"type", "QVNullVideoTimeSource"},
            {"NullVideoInfo", Value::Dictionary{{"videoFps", 10}, {"fpsTotal", frames - 1}}},
            {"FpsInfo", Value::Dictionary{{"startFps", 0}, {"endFps", frames - 1}}}};
}

Value::Dictionary recordOf(int sId, const std::string& folder, const std::string& sceneFile, int frames) {
    const std::string root = "$(multiSceneSceneROOT)/" + folder + "/";
    return {{"sId", sId},
            {"eName", folder},
            {"scenePlistPath", root + sceneFile},
            {"sceneResourceFolderPath", root},
            {"fpsLength", frames},
            {"sourceType", 1}};
}

SmallTemplate::SmallTemplate()
    : record(recordOf(sId, name, "scene.plist", frames)),
      camera{{"type", "QVOrthCamera"}, {"OrthWidth", 64}},
      clock(clockOf(frames)),
      nodes{quad("background", "$(currentScenePlistROOT)/red.png"), quad("photo", "photo"), textNode()} {
    Value::Dictionary title = input(0, "title"), photo = input(1, "photo");
    title["maxLenght"] = 5;
    title["maxLine"] = 1;
    photo["aspectWidth"] = 1;
    photo["aspectHeight"] = 1;
    description = {
        {"mediaSize", "64,96"}, {"videoFrameRate", 10}, {"userInputArray", Value::Array{title, photo}}};
}

Value::Dictionary SmallTemplate::scene() const {
    Value::Dictionary scene{{"Camera", camera}, {"object3D", nodes}};
    if (!clock.empty()) scene["TimeSource"] = clock;
    return scene;
}

fs::path SmallTemplate::write(const fs::path& parent) const {
    const fs::path folder = parent / name;
    fs::create_directories(folder);
    Value::Dictionary first = record;
    first["wechartTempletInfo"] = description;
    Value::Array records{first};
    records.insert(records.end(), moreRecords.begin(), moreRecords.end());
    platform::writePropertyList(folder / (name + ".plist"), Value::Dictionary{{"installScenes", records}});
    platform::writePropertyList(folder / "scene.plist", scene());
    writePicture(folder / "red.png", 0xff0000);
    if (!shaderSource.empty()) writeShader(folder, shaderSource);
    if (more) more(folder);
    return folder;
}

void writePicture(const fs::path& file, uint32_t rgb, int width, int height) {
    platform::Bitmap bitmap(width, height);
    for (size_t pixel = 0; pixel < bitmap.rgba.size(); pixel += 4) {
        bitmap.rgba[pixel] = static_cast<uint8_t>(rgb >> 16);
        bitmap.rgba[pixel + 1] = static_cast<uint8_t>(rgb >> 8);
        bitmap.rgba[pixel + 2] = static_cast<uint8_t>(rgb);
        bitmap.rgba[pixel + 3] = 255;
    }
    platform::writePng(file, bitmap);
}

void writeVideo(const fs::path& file, int frames, int framesPerSecond) {
    platform::VideoWriter writer(
        {.path = file, .width = 64, .height = 96, .framesPerSecond = framesPerSecond});
    for (int frame = 0; frame < frames; ++frame) {
        auto picture = writer.takeBuffer();
        std::memset(picture->data(), 40 * frame, picture->size());
        writer.append(std::move(picture), frame);
    }
    writer.finish();
}

void writeSound(const fs::path& file, double seconds) {
    constexpr int rate = 8000;
    std::ofstream(file, std::ios::binary)
        << platform::test::wav(rate, 1, static_cast<int64_t>(seconds * rate), [](int64_t at, int) {
               return 0.25 * std::sin(static_cast<double>(at) * 0.3);
           });
}

}  // namespace multiscene::test
