#include "tests/program/CheckFaults.h"

#include <sys/stat.h>

#include "platform/base/Json.h"
#include "platform/crypto/Cipher.h"
#include "platform/image/ImageWriter.h"
#include "tests/program/ProgramTest.h"
#include "tween/Ease.h"

namespace multiscene::test {

std::function<void(SmallTemplate&)> nodeWith(const std::string& key, const Value& value) {
    return [=](SmallTemplate& small) { small.nodes[1] = small.nodes[1].with(key, value); };
}

Value entry(int sId, const std::string& identifier, int transitionFrames, int type) {
    Value::Dictionary entry{{"mainSceneId", sId}, {"sceneIdentifier", identifier}, {identifier, identifier}};
    if (transitionFrames)
        entry["sceneTansitionsInfo"] = Value::Dictionary{
            {"tansitionsSceneId", 8}, {"fpsTotal", transitionFrames}, {"sceneTansitionsType", type}};
    return entry;
}

Value range(int start, int end) { return Value::Dictionary{{"startFps", start}, {"endFps", end}}; }

Value childStartingAt(int start) { return Value(quad("child", "photo")).with("FpsInfo", range(start, 5)); }

std::function<void(SmallTemplate&)> image(const std::string& path) {
    return nodeWith("TextureInfo", Value::Dictionary{{"textureType", "image"}, {"texture", path}});
}

namespace {

/// Sets keys; null takes one away.
void change(Value::Dictionary& dictionary, const Value& changes) {
    for (const auto& [key, value] : changes.dictionary())
        if (value.isNone())
            dictionary.erase(key);
        else
            dictionary[key] = value;
}

/// A track of one frame, changed and stored without the judgement of "encrypt-track".
void writeTrack(const fs::path& file, const std::string& right, const std::string& wrong) {
    std::string plain = "<CornerPinInfoDoc><Object><Frame";
    for (const std::string corner : {"topleft", "topright", "bottomleft", "bottomright"})
        plain += " " + corner + "x=\"0.5\" " + corner + "y=\"0.5\"";
    plain += "/></Object></CornerPinInfoDoc>";
    plain.replace(plain.find(right), right.size(), wrong);
    const auto key = platform::cipherKeyFromText("multiscene corner-pin tracks, 1");
    const auto stored = platform::encryptAES256({plain.begin(), plain.end()}, key);
    platform::writeFileAtomically(file, {reinterpret_cast<const char*>(stored.data()), stored.size()});
}

/// Text, a link, seconds of a sound, a pipe, or nothing.
void writeAnything(const fs::path& file, const Value& content) {
    fs::remove(file);
    if (content.isString()) platform::writeFileAtomically(file, content.stringValue());
    if (content.isDictionary()) fs::create_symlink(content.string("link"), file);
    if (content.type() == Value::Type::Integer) writeSound(file, content.doubleValue());
    if (content.isBool()) ::mkfifo(file.c_str(), 0600);
}

}  // namespace

void makeFault(const Value& fault, SmallTemplate& small) {
    Value::Dictionary photo = small.nodes[1].dictionary();
    change(photo, fault["node"]);
    Value::Array children;
    for (const Value& child : fault.array("children"))
        children.push_back(child.type() == Value::Type::Integer
                               ? childStartingAt(static_cast<int>(child.integerValue()))
                               : child);
    if (!children.empty()) photo["childNode"] = children;
    small.shaderSource = fault.string("shader");
    if (!small.shaderSource.empty())
        photo["FpsInfo"] = Value::Dictionary{{"customShaderPath", "$(currentScenePlistROOT)/own.plist"}};
    small.nodes[1] = photo;

    change(small.camera, fault["camera"]);
    change(small.clock, fault["clock"]);
    change(small.record, fault["record"]);
    change(small.description, fault["description"]);
    Value::Array scenes;
    for (const Value& each : fault.array("group")) {  // number, identifier, frames and type of a transition
        const auto number = [&](size_t at) {
            return at < each.array().size() ? static_cast<int>(each.array()[at].integerValue()) : 0;
        };
        scenes.push_back(entry(number(0), each.array()[1].stringValue(), number(2), number(3)));
    }
    if (!scenes.empty()) {
        small.description["sceneGroup"] = scenes;
        small.moreRecords = {recordOf(8, "small", "scene.plist", SmallTemplate::frames)};
    }
    small.more = [fault](const fs::path& at) {
        writeSound(at / "s.wav", 0.2);
        platform::writePng(at / "soft.png", platform::Bitmap(16, 16));
        if (fault.has("filmOfRate")) writeVideo(at / "film.mp4", 6, fault.int32("filmOfRate"));
        const Value::Array& track = fault.array("track");
        if (!track.empty()) writeTrack(at / "t.xml", track[0].stringValue(), track[1].stringValue());
        for (const auto& [name, content] : fault["files"].dictionary()) writeAnything(at / name, content);
    };
}

std::vector<Fault> faults() {
    std::vector<Fault> all;
    const Value listed =
        platform::parseJson(contentOf(MULTISCENE_SOURCE "/tests/program/faults.json"), "faults.json");
    for (const Value& fault : listed.array())
        all.push_back({fault.string("name"), fault.string("key"), fault.string("says"),
                       [fault](SmallTemplate& small) { makeFault(fault, small); }});
    const auto firstFreeEase = static_cast<int64_t>(easeTable().size());
    all.push_back(
        {"NoSuchEaseOfAKey", "object3D[1].AnimationInfo[0].ease", "no ease " + std::to_string(firstFreeEase),
         nodeWith("AnimationInfo",
                  Value::Array{Value::Dictionary{{"sartFps", 0}, {"endFps", 3}, {"ease", firstFreeEase}}})});
    return all;
}

}  // namespace multiscene::test
