// Every limit of the program's table, tried one below, at, and one above.
#include "platform/base/Limits.h"

#include <fcntl.h>

#include <cmath>
#include <fstream>
#include <functional>
#include <numeric>
#include <set>

#include "platform/archive/ZipArchive.h"
#include "platform/audio/AudioMixer.h"
#include "platform/base/Json.h"
#include "platform/base/PropertyList.h"
#include "platform/base/Xml.h"
#include "platform/gl/ShaderCost.h"
#include "platform/image/ColorTable.h"
#include "platform/image/ImageDecoder.h"
#include "platform/image/PngFile.h"
#include "platform/image/PvrFile.h"
#include "tests/platform/RawZip.h"
#include "tests/program/ProgramTest.h"

namespace multiscene::test {

namespace fs = std::filesystem;
using platform::Error;
using platform::limitOf;
using platform::Value;
using platform::test::RawZip;
using ::testing::AllOf;
using ::testing::HasSubstr;

namespace {

const std::string picture = "$(currentScenePlistROOT)/red.png";
constexpr int kAccepted = 0, kTemplate = 3, kInput = 4;

/// What became of a trial: the exit code and what was said.
struct Verdict {
    int code = kAccepted;
    std::string said;
};

class PlayLimitsTest : public ProgramTest {
  public:
    using ProgramTest::folder;

    /// What takes much longer than its input is long runs out of time.
    Result inTime(std::vector<std::string> words, int cpuSeconds = 20) const {
        const auto wanted = command(std::move(words));
        std::vector<std::string> all{"prlimit", "--cpu=" + std::to_string(cpuSeconds * sanitizerFactor())};
        all.insert(all.end(), wanted.begin(), wanted.end());
        return run(all);
    }
    Verdict verdict(std::vector<std::string> words) const {
        const Result result = inTime(std::move(words));
        EXPECT_LE(result.errorLines().size(), 1u) << result.errors.substr(0, 1000);
        return {result.exitCode, result.output + result.errors};
    }
    std::string written(const std::string& name, const std::string& bytes) const {
        std::ofstream(folder.path() / name, std::ios::binary) << bytes;
        return folder.file(name);
    }
    platform::FileHandle opened(const std::string& name, const std::string& bytes) const {
        return platform::openFile(written(name, bytes), O_RDONLY);
    }
};

/// One limit. `named` is what the refusal says besides the number.
struct Trial {
    std::string limit;
    int code;
    std::vector<std::string> named;
    std::function<Verdict(const PlayLimitsTest&, uint64_t number)> with;
    uint64_t tried = 0;  ///< instead of the table's, where what is tried takes the limit from its caller
    bool isLeast = false;

    uint64_t most() const {
        for (const platform::Limit& row : platform::limits::kAll)
            if (row.name == limit) return tried ? tried : row.value;
        return 0;
    }
};

void PrintTo(const Trial& trial, std::ostream* stream) { *stream << trial.limit; }

/// What a function throws, or says is wrong.
Verdict verdictOf(const std::function<std::string()>& work) {
    try {
        const std::string said = work();
        return {said.empty() ? kAccepted : kTemplate, said};
    } catch (const Error& error) {
        return {error.exitCode(), error.what()};
    }
}

std::string repeated(const std::string& text, size_t times) {
    std::string all;
    for (size_t turn = 0; turn < times; ++turn) all += text;
    return all;
}

// --- Archives -------------------------------------------------------------------------------------------

Trial ofArchive(const std::string& limit, uint64_t platform::ZipLimits::*changed, uint64_t most,
                std::function<RawZip(uint64_t)> zip) {
    return {limit,
            kTemplate,
            {"a.zip"},
            [=](const PlayLimitsTest& test, uint64_t number) {
                platform::ZipLimits limits;
                limits.*changed = most;
                if (changed == &platform::ZipLimits::ratioFreeBytes) limits.maxRatio = 2;
                if (changed == &platform::ZipLimits::maxRatio) limits.ratioFreeBytes = 1;
                const std::string file = test.written("a.zip", zip(number).bytes());
                return verdictOf([&] {
                    const platform::ZipArchive archive(file, platform::ErrorKind::Template, limits);
                    return std::string();
                });
            },
            most};
}

std::vector<Trial> archives() {
    using Limits = platform::ZipLimits;
    const auto filled = [](const std::string& name, uint64_t bytes, bool packed = false) {
        return platform::test::RawZipEntry{
            .name = name, .content = std::string(bytes, 'z'), .deflated = packed};
    };
    const auto one = [=](const std::string& name) { return RawZip().add(filled(name, 1)); };
    return {
        ofArchive("maxArchiveBytes", &Limits::maxArchiveBytes, 300,
                  [=](uint64_t bytes) {
                      return RawZip().add(filled("a", bytes - RawZip().add(filled("a", 0)).bytes().size()));
                  }),
        ofArchive("maxEntries", &Limits::maxEntries, 5,
                  [=](uint64_t number) {
                      RawZip zip;
                      for (uint64_t at = 0; at < number; ++at) zip.add(filled(std::to_string(at), 1));
                      return zip;
                  }),
        ofArchive("maxEntryBytes", &Limits::maxEntryBytes, 5000,
                  [=](uint64_t bytes) { return RawZip().add(filled("a", bytes)); }),
        ofArchive(
            "maxTotalBytes", &Limits::maxTotalBytes, 8000,
            [=](uint64_t bytes) { return RawZip().add(filled("a", 5000)).add(filled("b", bytes - 5000)); }),
        ofArchive("ratioFreeBytes", &Limits::ratioFreeBytes, 2000,
                  [=](uint64_t bytes) { return RawZip().add(filled("a", bytes, true)); }),
        ofArchive("maxRatio", &Limits::maxRatio, 10,
                  [=](uint64_t tenths) {
                      auto entry = filled("a", 1000, true);
                      const uint64_t packed = RawZip().add(entry).entriesAlone().size() - 31;
                      entry.bytes = static_cast<uint32_t>(packed * 10 + tenths - 10);
                      return RawZip().add(entry);
                  }),
        ofArchive("maxNameBytes", &Limits::maxNameBytes, 20,
                  [=](uint64_t bytes) { return one("a/" + std::string(bytes - 2, 'b')); }),
        ofArchive("maxComponentBytes", &Limits::maxComponentBytes, 10,
                  [=](uint64_t bytes) { return one("a/" + std::string(bytes, 'b')); }),
        ofArchive("maxDepth", &Limits::maxDepth, 4,
                  [=](uint64_t depth) { return one(repeated("a/", depth - 1) + "a"); }),
    };
}

// --- Lists and texts ------------------------------------------------------------------------------------

Trial ofList(const std::string& limit, platform::PropertyListLimits limits, uint64_t most,
             std::function<std::string(uint64_t)> content) {
    return {limit,
            kTemplate,
            {"a.plist"},
            [=](const PlayLimitsTest&, uint64_t number) {
                const std::string text = "<plist version=\"1.0\">" + content(number) + "</plist>";
                return verdictOf([&] {
                    platform::parsePropertyList({reinterpret_cast<const uint8_t*>(text.data()), text.size()},
                                                "a.plist", platform::ErrorKind::Template, limits);
                    return std::string();
                });
            },
            most};
}

std::vector<Trial> lists() {
    return {
        ofList("maxListBytes", {.maxBytes = 2000}, 2000,
               [](uint64_t bytes) { return "<string>" + std::string(bytes - 46, 'a') + "</string>"; }),
        ofList("maxListDepth", {.maxDepth = 5}, 5,
               [](uint64_t depth) { return repeated("<array>", depth) + repeated("</array>", depth); }),
        ofList("maxListValues", {.maxValues = 100}, 100,
               [](uint64_t values) {
                   return "<!-- <true/> --><array>" + repeated("<true/>", values - 1) + "</array>";
               }),
        {"maxJsonDepth",
         kInput,
         {"a.json"},
         [](const PlayLimitsTest&, uint64_t depth) {
             return verdictOf([&] {
                 platform::parseJson(std::string(depth, '[') + std::string(depth, ']'), "a.json",
                                     platform::ErrorKind::Input);
                 return std::string();
             });
         }},
        {"maxXmlDepth",
         kTemplate,
         {"too deep"},
         [](const PlayLimitsTest&, uint64_t depth) {
             const std::string text = repeated("<a>", depth) + repeated("</a>", depth);
             return Verdict{platform::parseXml({text.begin(), text.end()}) ? kAccepted : kTemplate,
                            "too deep: " + std::to_string(depth - 1)};
         }},
        {"maxMediaFileBytes",
         kInput,
         {"a.json"},
         [](const PlayLimitsTest& test, uint64_t bytes) {
             const std::string file = test.written("a.json", "{}" + std::string(bytes - 2, ' '));
             return test.verdict({"frames", SmallTemplate().write(test.folder.path()), "--at", "0", "--media",
                                  file, "-o", test.folder.file("out")});
         }},
        {"maxSettingsBytes",
         1,
         {"settings.json"},
         [](const PlayLimitsTest& test, uint64_t bytes) {
             fs::create_directories(test.folder.path() / "home");
             test.written("home/settings.json", "{}" + std::string(bytes - 2, ' '));
             return test.verdict({"templates", "list"});
         }},
        {"maxTextOverRoom",
         kInput,
         {"title", "5"},  // the small template has room for 5
         [](const PlayLimitsTest& test, uint64_t characters) {
             return test.verdict({"frames", SmallTemplate().write(test.folder.path()), "--at", "0", "--text",
                                  "title=" + std::string(characters, 'a'), "-o", test.folder.file("out")});
         },
         10},
    };
}

// --- Templates ------------------------------------------------------------------------------------------

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

void fillNodes(SmallTemplate& small, size_t number) {
    const Value::Dictionary empty{{"type", "QVObject3DTransformBase"}};
    small.nodes.resize(1);
    small.nodes.resize(number - 2, empty);  // camera and clock are nodes too
}

void fillFiles(SmallTemplate& small, size_t number) {
    small.nodes.assign(number, quad("again", picture));
    small.more = [](const fs::path& folder) { writePicture(folder / "red.png", 0xff0000, 2000, 2000); };
}

void fillScenes(SmallTemplate& small, size_t number) {
    small.description["sceneGroup"] =
        Value::Array(number, Value::Dictionary{{"mainSceneId", SmallTemplate::sId}});
}

void fillRecords(SmallTemplate& small, size_t number) {
    for (int more = 1; more < static_cast<int>(number); ++more)
        small.moreRecords.push_back(
            recordOf(SmallTemplate::sId + more, small.name, "scene.plist", SmallTemplate::frames));
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
        for (const char* shows : {"isShowTextShadow"}) info[shows] = true;
        info["textDrawingMode"] = 2;
        small.nodes[2] = small.nodes[2].with("TextureInfo", info);
    };
}

std::vector<Trial> templates() {
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

// --- Shaders --------------------------------------------------------------------------------------------

std::string mainOf(const std::string& body) { return "void main(){" + body + "}"; }

/// Statements of so many words.
std::string shaderWords(uint64_t words) {
    constexpr uint64_t longest = 1000;
    std::string text;
    for (; words > longest; words -= longest) text += repeated("x ", longest) + ";";
    return text + repeated("x ", words) + ";";
}

Trial ofShader(const std::string& limit, std::function<std::string(uint64_t)> text) {
    return {limit, kTemplate, {}, [=](const PlayLimitsTest&, uint64_t number) {
                return verdictOf([&] { return platform::shaderTextProblem(text(number)); });
            }};
}

std::vector<Trial> shaders() {
    // A "main" around a body has six words.
    constexpr uint64_t around = 6;
    return {
        ofShader("maxShaderWords",
                 [](uint64_t words) {
                     return mainOf(repeated("x;", (words - around) / 2)) + (words % 2 ? ";" : "");
                 }),
        ofShader("maxShaderStatementWords",
                 [](uint64_t words) { return mainOf("x" + repeated("+", words - 1) + ";"); }),
        ofShader("maxShaderInlinedWords",
                 [](uint64_t words) {
                     // A call is three words, and the function's own besides.
                     constexpr uint64_t own = 4093, calls = 15;
                     return "void f(){" + shaderWords(own) + "}" +
                            mainOf(repeated("f();", calls) + shaderWords(words - calls * (own + 3)));
                 }),
        ofShader("maxShaderWork",
                 [](uint64_t words) {
                     constexpr uint64_t turns = 1000, head = 14, own = 1900;
                     return mainOf("for(int i=0;i<" + std::to_string(turns) + ";i++){" + shaderWords(own) +
                                   "}" + "for(int i=0;i<10;i++){" +
                                   shaderWords((words - turns * (head + own)) / 10 - head) + "}" +
                                   shaderWords((words - turns * (head + own)) % 10));
                 }),
        ofShader("maxShaderDepth",
                 [](uint64_t depth) {
                     return mainOf(repeated("{", depth - 1) + "x;" + repeated("}", depth - 1));
                 }),
        ofShader("maxMacroDepth",
                 [](uint64_t depth) {
                     std::string text = "#define m0 x\n";
                     for (uint64_t level = 1; level < depth; ++level)
                         text +=
                             "#define m" + std::to_string(level) + " m" + std::to_string(level - 1) + "\n";
                     return text + mainOf("m" + std::to_string(depth - 1) + ";");
                 }),
        ofShader("maxShaderArray",
                 [](uint64_t size) { return mainOf("float a[" + std::to_string(size) + "];"); }),
    };
}

// --- Pictures -------------------------------------------------------------------------------------------

std::string bigEndian(uint64_t number) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(number >> shift);
    return bytes;
}

std::string chunk(const std::string& type, const std::string& content) {
    const auto sum = ::crc32(0, reinterpret_cast<const Bytef*>((type + content).data()),
                             static_cast<uInt>(4 + content.size()));
    return bigEndian(content.size()) + type + content + bigEndian(sum);
}

/// A PNG that says it has this size. `kind`: depth, colours, two zeros, interlace.
std::string png(uint64_t width, uint64_t height, const std::string& kind, const std::string& more = "") {
    return "\x89PNG\r\n\x1a\n" + chunk("IHDR", bigEndian(width) + bigEndian(height) + kind) + more +
           chunk("IDAT", std::string("\x78\x9c\x03\x00\x00\x00\x00\x01", 8)) + chunk("IEND", "");
}

const std::string grey8("\x08\x00\x00\x00\x00", 5), interlacedRgba8("\x08\x06\x00\x00\x01", 5);

Trial ofPicture(const std::string& limit, std::function<std::string(uint64_t)> bytes) {
    return {limit, kInput, {"a.png"}, [=](const PlayLimitsTest& test, uint64_t number) {
                return verdictOf([&] {
                    const auto file = test.opened("a.png", bytes(number));
                    platform::readImageSize(file, {.name = "a.png"});
                    return std::string();
                });
            }};
}

/// Two sides of a picture of so many pixels, or of so few more that it has two; fewer, when `isLess`.
std::pair<uint64_t, uint64_t> sidesOf(uint64_t pixels, bool isLess) {
    const uint64_t longest = limitOf("maxPictureSide");
    for (;; pixels += isLess ? -1 : 1)
        for (auto side = static_cast<uint64_t>(std::sqrt(pixels)); side >= pixels / longest; --side)
            if (pixels % side == 0 && pixels / side <= longest) return {side, pixels / side};
}

/// What is kept of a PNG's chunk of so many bytes.
Trial ofChunk(const std::string& limit, const std::string& name) {
    return {limit, kTemplate, {}, [=](const PlayLimitsTest& test, uint64_t bytes) {
                const std::string content = png(8, 8, grey8, chunk(name, std::string(bytes, 'a')));
                uint64_t kept = 0;
                for (const auto& range : platform::picturePartsOfPng(test.opened("a.png", content)))
                    kept += range.length;
                return Verdict{kept == content.size() ? kAccepted : kTemplate,
                               "left out: more than " + std::to_string(bytes - 1)};
            }};
}

std::string pvr(uint64_t width, uint64_t height, uint64_t levels, uint64_t bytes) {
    std::string file;
    for (const uint64_t field : std::initializer_list<uint64_t>{52, height, width, levels, 0x16, bytes, 8, 0,
                                                                0, 0, 0, 0x21525650, 1})
        for (int shift = 0; shift < 32; shift += 8) file += static_cast<char>(field >> shift);
    return file + std::string(bytes, '\0');
}

Trial ofPvr(const std::string& limit, std::function<std::string(uint64_t)> bytes) {
    return {limit, kTemplate, {}, [=](const PlayLimitsTest&, uint64_t number) {
                const std::string file = bytes(number);
                return verdictOf([&] { return platform::PvrFile({file.begin(), file.end()}).problem(); });
            }};
}

std::vector<Trial> pictures() {
    return {
        ofPicture("maxPictureSide", [](uint64_t side) { return png(side, 1, grey8); }),
        ofPicture("maxPicturePixels",
                  [](uint64_t pixels) {
                      const auto [width, height] = sidesOf(pixels, pixels <= limitOf("maxPicturePixels"));
                      return png(width, height, grey8);
                  }),
        ofPicture("maxPictureHeldBytes",
                  [](uint64_t bytes) {
                      const bool isLess = bytes <= limitOf("maxPictureHeldBytes");
                      const auto [width, height] = sidesOf(isLess ? bytes / 4 : bytes / 4 + 1, isLess);
                      return png(width, height, interlacedRgba8);
                  }),
        ofPicture("maxPngParts",
                  [](uint64_t parts) {  // three are there anyway
                      return png(8, 8, grey8, repeated(chunk("tEXt", ""), parts - 3));
                  }),
        ofChunk("maxPngProfileBytes", "iCCP"),
        ofChunk("maxPngExifBytes", "eXIf"),
        ofPvr("maxPvrSide", [](uint64_t side) { return pvr(side, 1, 0, side); }),
        ofPvr("maxPvrPixels",
              [](uint64_t pixels) {
                  const uint64_t row = 4096, rows = (pixels + row - 1) / row;
                  return pvr(row, rows, 0, row * rows);
              }),
        ofPvr("maxPvrLevels", [](uint64_t levels) { return pvr(1, 1, levels, levels + 1); }),
        {"maxColorTableSide",
         kTemplate,
         {"line 1"},
         [](const PlayLimitsTest&, uint64_t side) {
             const std::string text =
                 "LUT_3D_SIZE " + std::to_string(side) + "\n" + repeated("0 0 0\n", side * side * side);
             return verdictOf([&] { return platform::ColorTable::parse(text), std::string(); });
         }},
        {"maxColorTableBytes",
         kTemplate,
         {"a.cube"},
         [](const PlayLimitsTest& test, uint64_t bytes) {
             std::string text = "LUT_3D_SIZE 2\n" + repeated("0 0 0\n", 8) + "#";
             text.resize(bytes, ' ');
             return verdictOf([&] {
                 return platform::ColorTable::read(fs::path(test.written("a.cube", text))), std::string();
             });
         }},
    };
}

// --- Sounds, films, options -----------------------------------------------------------------------------

std::string littleEndian(uint64_t number, int bytes) {
    std::string text;
    for (int byte = 0; byte < bytes; ++byte) text += static_cast<char>(number >> 8 * byte);
    return text;
}

/// Silence.
std::string wav(uint64_t rate, uint64_t channels, uint64_t seconds = 1) {
    const std::string samples(std::min<uint64_t>(rate, 8000) * channels * seconds, '\x80');
    return "RIFF" + littleEndian(36 + samples.size(), 4) + "WAVEfmt " + littleEndian(16, 4) +
           littleEndian(1, 2) + littleEndian(channels, 2) + littleEndian(rate, 4) +
           littleEndian(rate * channels, 4) + littleEndian(channels, 2) + littleEndian(8, 2) + "data" +
           littleEndian(samples.size(), 4) + samples;
}

Trial ofSound(const std::string& limit, std::function<std::string(uint64_t)> bytes, bool isLeast = false) {
    return {limit,
            kInput,
            {"a.wav"},
            [=](const PlayLimitsTest& test, uint64_t number) {
                return verdictOf([&] {
                    const platform::AudioFile sound(test.opened("a.wav", bytes(number)), "a.wav",
                                                    platform::ErrorKind::Input);
                    return std::string();
                });
            },
            0,
            isLeast};
}

/// A film of the user that says of itself what it is.
Trial ofFilm(const std::string& limit, std::vector<std::string> named, bool givesLength,
             std::function<std::vector<std::string>(uint64_t)> source) {
    return {
        limit, kInput, std::move(named), [=](const PlayLimitsTest& test, uint64_t number) {
            std::vector<std::string> words{"ffmpeg", "-y", "-v", "error", "-f", "lavfi", "-i"};
            for (const std::string& word : source(number)) words.push_back(word);
            words.insert(words.end(), {"-c:v", "mjpeg", "-q:v", "31", test.folder.file("a.mov")});
            EXPECT_EQ(run(words).exitCode, 0);
            SmallTemplate small;
            Value::Dictionary film = quad("film", "clip");
            film["TextureInfo"] =
                Value::Dictionary{{"textureType", "mp4Video"}, {"texture", "clip"}, {"videoFps", 10}};
            small.nodes = {film};
            small.description["userInputArray"] =
                Value::Array{Value::Dictionary{{"userInputType", 3}, {"renderMapKey", "clip"}}};
            if (givesLength) {
                small.clock["FpsInfo"] = Value::Dictionary{{"startFps", 0}, {"endFps", "userVideo_totalFps"}};
                small.record["fpsLength"] = 0;
                small.record["sourceType"] = 7;
            }
            return test.verdict({"frames", small.write(test.folder.path()), "--at", "0", "--video",
                                 "clip=" + test.folder.file("a.mov"), "-o", test.folder.file("out")});
        }};
}

/// A text that is drawn, and told of when something of it is not.
Trial ofDrawnText(const std::string& limit, std::function<std::string(uint64_t)> text) {
    return {limit, kTemplate, {"long"}, [=](const PlayLimitsTest& test, uint64_t number) {
                SmallTemplate small;
                small.nodes.resize(1);
                small.nodes.push_back(Value::Dictionary{
                    {"type", "QVGLFont2DTextureFontObject3D"},
                    {"TextureFontInfo", Value::Dictionary{{"textString", "long"}, {"fontSize", 10}}}});
                small.description["userInputArray"] =
                    Value::Array{Value::Dictionary{{"userInputType", 0}, {"renderMapKey", "long"}}};
                test.written("a.json", platform::jsonText(Value::Dictionary{{"long", text(number)}}));
                const Result result =
                    test.inTime({"frames", small.write(test.folder.path()), "--at", "0", "--json", "--media",
                                 test.folder.file("a.json"), "-o", test.folder.file("out")});
                if (result.exitCode != kAccepted) return Verdict{result.exitCode, result.errors};
                const Value told = result.jsonLines().back()["usedOtherwise"];
                return Verdict{told.array().empty() ? kAccepted : kTemplate, platform::jsonText(told)};
            }};
}

/// A template that is not there is only looked for when the words are right.
Trial ofOption(const std::string& limit, const std::string& option, bool isLeast = false) {
    return {limit,
            2,
            {option},
            [=](const PlayLimitsTest& test, uint64_t number) {
                Verdict verdict = test.verdict(
                    {"make", "none", "-o", test.folder.file("out.mp4"), option, std::to_string(number)});
                if (verdict.code == kTemplate) verdict.code = kAccepted;
                return verdict;
            },
            0,
            isLeast};
}

std::vector<Trial> soundsAndFilms() {
    const auto color = [](const std::string& size, const std::string& rate, uint64_t seconds) {
        return std::vector<std::string>{"color=s=" + size + ":r=" + rate + ":d=" + std::to_string(seconds)};
    };
    return {
        ofSound(
            "minSoundRate", [](uint64_t rate) { return wav(rate, 1); }, true),
        ofSound("maxSoundRate", [](uint64_t rate) { return wav(rate, 1); }),
        ofSound("maxSoundChannels", [](uint64_t channels) { return wav(8000, channels); }),
        {"maxSoundSeconds",
         kTemplate,
         {},
         [](const PlayLimitsTest& test, uint64_t seconds) {
             const platform::AudioFile sound(test.opened("a.wav", wav(1000, 1, seconds)), "a.wav");
             const bool isWhole =
                 sound.frameCount() == static_cast<int64_t>(seconds) * platform::kAudioSampleRate;
             return Verdict{isWhole ? kAccepted : kTemplate,
                            "left out: more than " + std::to_string(seconds - 1)};
         }},
        {"maxSoundsAtOnce",
         kTemplate,
         {"a.wav"},
         [](const PlayLimitsTest& test, uint64_t number) {
             const auto sound =
                 std::make_shared<platform::AudioFile>(test.opened("a.wav", wav(8000, 1)), "a.wav");
             platform::AudioTimeline timeline;
             for (uint64_t at = 0; at < number; ++at)
                 timeline.tracks.push_back({{{.file = sound,
                                              .duration = platform::CMTimeMake(1, 1),
                                              .at = platform::CMTimeMake(0, 1)}},
                                            {}});
             // What begins when the others end is not heard with them.
             timeline.tracks.push_back(
                 {{{.file = sound, .duration = platform::CMTimeMake(1, 1), .at = platform::CMTimeMake(1, 1)}},
                  {}});
             return verdictOf([&] { return platform::AudioMixer(timeline), std::string(); });
         }},
        ofDrawnText("maxTextCharacters", [](uint64_t characters) { return std::string(characters, 'a'); }),
        ofDrawnText("maxCharacterCodePoints",
                    [](uint64_t codePoints) { return "a" + repeated("\u0301", codePoints - 1); }),
        ofFilm("maxFilmSide", {"a.mov"}, false,
               [=](uint64_t side) { return color(std::to_string((side + 1) / 2 * 2) + "x2", "10", 1); }),
        ofFilm("maxPictureSeconds", {"a.mov"}, false,
               [=](uint64_t seconds) { return color("16x16", "1/" + std::to_string(seconds), 4 * seconds); }),
        ofFilm("maxUserFilmSeconds", {"a.mov"}, true,
               [=](uint64_t seconds) { return color("16x16", "1", seconds); }),
        ofOption("maxBitRate", "--bitrate"),
        ofOption("minBitRate", "--bitrate", true),
        ofOption("maxMusicSeconds", "--music-start"),
    };
}

std::vector<Trial> all() {
    std::vector<Trial> trials;
    for (auto& group : {archives(), lists(), templates(), shaders(), pictures(), soundsAndFilms()})
        trials.insert(trials.end(), group.begin(), group.end());
    return trials;
}

class LimitsTest : public PlayLimitsTest, public ::testing::WithParamInterface<Trial> {};

}  // namespace

TEST_P(LimitsTest, HoldsToTheLast) {
    const Trial& trial = GetParam();
    const uint64_t most = trial.most(), beyond = trial.isLeast ? most - 1 : most + 1;
    ASSERT_GT(most, 0u);
    for (const uint64_t number : {trial.isLeast ? most + 1 : most - 1, most}) {
        const Verdict verdict = trial.with(*this, number);
        EXPECT_EQ(verdict.code, kAccepted) << number << ": " << verdict.said.substr(0, 1000);
    }
    const Verdict refused = trial.with(*this, beyond);
    EXPECT_EQ(refused.code, trial.code) << refused.said.substr(0, 1000);
    for (const std::string& named : trial.named) EXPECT_THAT(refused.said.substr(0, 4000), HasSubstr(named));
    EXPECT_THAT(refused.said.substr(0, 4000), HasSubstr(std::to_string(most)));
}

INSTANTIATE_TEST_SUITE_P(All, LimitsTest, ::testing::ValuesIn(all()),
                         [](const auto& trial) { return trial.param.limit; });

/// What is added to the table is tried here, or is said to be tried elsewhere.
TEST(LimitsTableTest, EveryLimitIsTried) {
    std::set<std::string> tried{
        // by a job's worker, in FenceTest
        "jobMemory", "jobMemoryPerPixel", "maxJobMemory", "jobSeconds", "jobMillisecondsPerFrame",
        "jobNanosecondsPerPixel", "maxJobCpuSeconds", "maxJobSeconds", "maxStepCpuSeconds", "maxStepSeconds",
        "jobFileBytes", "jobFileBytesPerPixel", "maxJobFileBytes", "maxJobOpenFiles", "maxJobThreads",
        // in time and by connections, in HttpDownloadTest
        "maxDownloadSeconds", "maxListSeconds", "minDownloadSpeed", "maxStallSeconds", "maxConnectSeconds",
        "maxDownloadTries", "maxRedirects",
        // by what is seen, in the tests of pictures, texts, letters and archives
        "maxCanvasSide", "maxFilteredSide", "maxTextTextureSide", "maxTextBitmapSide", "maxLetterCorners",
        "maxBevelSteps", "maxDecodedPixels", "maxFontFiles",
        // sizes of whole files, kept by the one function that others try here
        "maxTrackBytes", "maxThumbnailBytes", "maxPvrBytes", "maxCatalogueBytes", "maxToldBytes",
        // too large to be made here
        "maxFilmPixels", "maxSequencePictures", "maxWatchedFolders"};
    for (const Trial& trial : all()) EXPECT_TRUE(tried.emplace(trial.limit).second) << trial.limit;
    for (const platform::Limit& limit : platform::limits::kAll)
        EXPECT_EQ(tried.erase(std::string(limit.name)), 1u) << limit.name;
    EXPECT_TRUE(tried.empty()) << *tried.begin() << " is no limit";
}

TEST_F(PlayLimitsTest, AsManyNodesAsAreAllowedArePlayed) {
    SmallTemplate small;
    fillNodes(small, limitOf("maxSceneNodes"));
    const fs::path path = small.write(folder.path());
    const Result result = inTime({"frames", path, "--at", "0,5", "-o", folder.file("out")}, 4);
    EXPECT_EQ(result.exitCode, 0) << result.errors.substr(0, 1000);
}

/// Force does not help, and no such template is packed.
TEST_F(PlayLimitsTest, HoldForEveryCommand) {
    for (const auto& fill : {fillNodes, fillFiles, fillScenes, fillTargets}) {
        const uint64_t beyond =
            fill == &fillTargets ? limitOf("maxSceneTargetBytes") + 1 : limitOf("maxSceneNodes") + 1;
        SmallTemplate small;
        fill(small, beyond);
        const fs::path path = small.write(folder.path());
        for (const std::vector<std::string>& words :
             {std::vector<std::string>{"frames", path, "--at", "0", "--force", "-o", folder.file("out")},
              std::vector<std::string>{"template", "pack", path, "-o", folder.file("out.zip")}}) {
            const Result result = inTime(words);
            EXPECT_EQ(result.exitCode, kTemplate) << words.front();
            EXPECT_THAT(result.output + result.errors, HasSubstr("allowed")) << words.front();
        }
    }
}

}  // namespace multiscene::test
