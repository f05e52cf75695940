#include "tests/fuzz/TemplateMaker.h"

#include <cmath>
#include <utility>

#include "app/template/TemplateKeys.h"
#include "format/KeySet.h"
#include "platform/base/PropertyList.h"
#include "sceneFile/SceneFileKeys.h"
#include "tests/fuzz/Scratch.h"
#include "tests/fuzz/ShaderMaker.h"

namespace multiscene::fuzz {

namespace fs = std::filesystem;
using platform::Value;

namespace {

constexpr int deepest = 5;       // dictionaries within dictionaries, unless a source goes on
constexpr uint32_t many = 1000;  // of something small
constexpr const char* strangeNumbers[] = {
    "nan",   "inf", "-1",  "1e30",  "9223372036854775807", "-9223372036854775808",
    "1e-30", "0",   "0.5", "65536", "2147483648",          "100000"};
constexpr const char* texts[] = {
    "",          "a",   "words of a text", "textA", "\xf0\x9f\x8e\x82", "s1", "DejaVu Sans",
    "SRC_ALPHA", "ONE", "textureA",        "30001", "../../etc/passwd"};
constexpr const char* files[] = {"picture.png", "shader.plist", "film.mp4",     "sound.wav", "corner.track",
                                 "picture.pvr", "missing.png",  "scene0.plist", "serial",    "."};

class Maker {
  public:
    Maker(ByteSource& source, fs::path folder) : source_(source), folder_(std::move(folder)) {}

    void make() {
        const uint32_t scenes = 1 + source_.below(3);
        Value::Array records;
        for (uint32_t number = 0; number < scenes; ++number) {
            writeList("scene" + std::to_string(number) + ".plist", scene());
            records.push_back(record(number));
        }
        writeList(folder_.filename().string() + ".plist",
                  broken(Value::Dictionary{{"installScenes", Value(std::move(records))}}, templateFileKeys));
        writeFile(folder_ / "shader.fsh", bytesOf(makeShader(source_)));
        writeList("shader.plist", Value::Dictionary{{"Files", Value::Array{"shader.fsh", "texturedQuad.vsh"}},
                                                    {"Attributes", Value::Array{"position"}},
                                                    {"Uniforms", Value::Array{"videoFrame", "aplae"}}});
        writeMedia();
    }

  private:
    static Bytes bytesOf(const std::string& text) {
        return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
    }
    void writeList(const std::string& name, const Value& content) {
        writeFile(folder_ / name, bytesOf(platform::propertyListXml(content)));
    }

    std::string path(const std::string& file) const {
        return "$(multiSceneSceneROOT)/" + folder_.filename().string() + "/" + file;
    }

    Value record(uint32_t number) {
        const Value::Dictionary whole{{"sId", int64_t{number} + 1},
                                      {"eName", "Fuzz"},
                                      {"scenePlistPath", path("scene" + std::to_string(number) + ".plist")},
                                      {"sceneResourceFolderPath", path("")},
                                      {"fpsLength", 3},
                                      {"wechartTempletInfo", description()}};
        return broken(whole, catalogueRecordKeys);
    }

    Value description() {
        Value::Dictionary whole{{"mediaSize", "16,16"}, {"videoFrameRate", 30}};
        if (source_.below(2)) whole["sceneGroup"] = list(sceneEntryKeys, 0);
        if (source_.below(2)) whole["bgAudioPath"] = path(source_.oneOf(files));
        return broken(whole, templateDescriptionKeys);
    }

    /// A clock that runs for three frames, a camera that sees the nodes, and what the source says.
    Value scene() {
        Value::Dictionary whole{
            {"Camera", Value::Dictionary{{"type", "QVOrthCamera"}, {"OrthWidth", 16}, {"aspect", 1}}},
            {"TimeSource",
             Value::Dictionary{{"type", "QVNullVideoTimeSource"},
                               {"NullVideoInfo", Value::Dictionary{{"videoFps", 30}, {"fpsTotal", 2}}},
                               {"FpsInfo", Value::Dictionary{{"startFps", 0}, {"endFps", 2}}}}},
            {"object3D", list(*sceneFileKeys.find("object3D")->children, 0)}};
        if (source_.below(2))
            whole["LightSourceArray"] = list(*sceneFileKeys.find("LightSourceArray")->children, 0);
        return broken(whole, sceneFileKeys);
    }

    /// Mostly as it is; a part taken away, or put in with whatever the tables allow.
    Value broken(Value::Dictionary whole, const KeyTable& table) {
        if (source_.oneIn(8) && !whole.empty()) {
            auto gone = whole.begin();
            std::advance(gone, source_.below(static_cast<uint32_t>(whole.size())));
            whole.erase(gone);
        }
        if (source_.oneIn(8)) {
            const KeySet keys(table, Value(whole));
            const auto names = keys.names();
            if (!names.empty()) {
                const std::string name(source_.oneOf(names));
                whole[name] = valueOf(*keys.find(name), 0);
            }
        }
        return Value(std::move(whole));
    }

    Value list(const KeyTable& table, int depth) {
        Value::Array items;
        for (uint32_t count = source_.below(4); count > 0; --count) items.push_back(dictionary(table, depth));
        // Once: copies of copies are gigabytes before anybody has read them.
        if (source_.oneIn(32) && !items.empty() && !std::exchange(hasMany_, true))
            for (uint32_t count = source_.below(many); count > 0; --count) items.push_back(items.back());
        return Value(std::move(items));
    }

    Value dictionary(const KeyTable& table, int depth) {
        Value::Dictionary content;
        choose(table, content);
        const KeySet keys(table, Value(content));
        for (const KeyTable* part : keys.tables())
            for (const Key& key : part->keys)
                if (!content.contains(std::string(key.name)) && isGiven(key))
                    content[std::string(key.name)] = valueOf(key, depth + 1);
        return Value(std::move(content));
    }

    bool isGiven(const Key& key) { return key.required ? !source_.oneIn(32) : source_.below(3) == 1; }

    /// The variants of a dictionary, one after the other.
    void choose(const KeyTable& table, Value::Dictionary& content) {
        const KeyTable* part = &table;
        while (part && part->variants) {
            const auto names = part->variants->names();
            const std::string name = source_.oneIn(64) ? "none of them" : std::string(source_.oneOf(names));
            content[std::string(part->variants->key)] = name;
            part = part->variants->find(name);
        }
    }

    Value valueOf(const Key& key, int depth) {
        if (source_.oneIn(32)) return wrong(depth);
        switch (key.type) {
            case KeyType::Bool:
                return Value(source_.below(2) == 1);
            case KeyType::Integer:
                return whole(key);
            case KeyType::Number:
                return number(key);
            case KeyType::Vector2:
                return vector(key, 2);
            case KeyType::Vector3:
                return vector(key, 3);
            case KeyType::Color:
                return vector(key, 4);
            case KeyType::Text:
                return Value(text(key));
            case KeyType::Choice:
                return key.choices.empty() ? Value(text(key)) : Value(source_.oneOf(key.choices));
            case KeyType::TextArray: {
                Value::Array items;
                for (uint32_t count = source_.below(5); count > 0; --count)
                    items.push_back(source_.below(2) ? vector(key, 2) : Value(text(key)));
                return Value(std::move(items));
            }
            case KeyType::Dictionary:
                return key.children && goesOn(depth) ? dictionary(*key.children, depth)
                                                     : Value(Value::Dictionary());
            case KeyType::Array:
                return key.children && goesOn(depth) ? list(*key.children, depth) : Value(Value::Array());
        }
        return {};
    }

    bool goesOn(int depth) { return depth < deepest || (depth < 70 && source_.below(3) != 0); }

    Value wrong(int depth) {
        switch (source_.below(6)) {
            case 0:
                return Value(source_.oneOf(strangeNumbers));
            case 1:
                return Value(Value::Array{Value(1), Value("a")});
            case 2:
                return Value(Value::Dictionary{{"a", 1}});
            case 3:
                return Value(std::string(source_.below(many), 'x'));
            case 4:
                return depth > 0 ? Value(std::nan("")) : Value(true);
            default:
                return Value(Value::Data{{1, 2, 3}});
        }
    }

    std::string numberText(const Key& key) {
        if (source_.oneIn(16)) return source_.oneOf(strangeNumbers);
        if (std::isfinite(key.minimum) && std::isfinite(key.maximum) && source_.below(2)) {
            const double share = source_.below(5) / 4.0;
            return Value(key.minimum + share * (std::min(key.maximum, 1000.0) - key.minimum)).stringValue();
        }
        return std::to_string(static_cast<int>(source_.below(40)) - 4);
    }
    Value whole(const Key& key) {
        const std::string text = numberText(key);
        return source_.below(4) ? Value(Value(text).integerValue()) : Value(text);
    }
    Value number(const Key& key) {
        const std::string text = numberText(key);
        return source_.below(4) ? Value(Value(text).doubleValue()) : Value(text);
    }
    Value vector(const Key& key, int count) {
        std::string text;
        if (source_.oneIn(16)) --count;
        for (int at = 0; at < count; ++at) text += (at ? "," : "") + numberText(key);
        return Value(text);
    }

    std::string text(const Key& key) {
        const bool isPath = key.lookup == KeyLookup::Path || key.lookup == KeyLookup::UserPath;
        if (isPath && !source_.oneIn(16)) return path(source_.oneOf(files));
        return source_.oneOf(texts);
    }

    /// Under names that need not tell the truth.
    void writeMedia() {
        static constexpr const char* names[] = {"picture.png", "film.mp4", "sound.wav", "corner.track",
                                                "picture.pvr"};
        const fs::path seeds = fs::path(MULTISCENE_FUZZ_CORPUS).parent_path() / "media";
        for (const char* name : names)
            fs::copy_file(seeds / (source_.oneIn(16) ? source_.oneOf(names) : name), folder_ / name);
        fs::create_directory(folder_ / "serial");
        for (const char* name : {"0.png", "1.png"})
            fs::copy_file(seeds / "picture.png", folder_ / "serial" / name);
    }

    ByteSource& source_;
    fs::path folder_;
    bool hasMany_ = false;
};

}  // namespace

void makeTemplate(ByteSource& source, const fs::path& folder) { Maker(source, folder).make(); }

}  // namespace multiscene::fuzz
