#include "app/template/TemplateFolder.h"

#include <algorithm>
#include <set>

#include "app/language/LocalizedName.h"
#include "app/template/TemplateKeys.h"
#include "platform/base/Error.h"
#include "platform/base/File.h"
#include "platform/base/FileGate.h"
#include "platform/base/Limits.h"
#include "platform/base/PropertyList.h"
#include "platform/base/Utf8.h"

namespace multiscene {

using platform::Error;
using platform::ErrorKind;
using platform::limitOf;
using platform::Value;
namespace fs = std::filesystem;

namespace {

bool isNumeric(const Value& value) {
    if (!value.isString()) return value.isNumber();
    const std::string text = value.stringValue();
    return !text.empty() &&
           text.find_first_not_of("0123456789", text.front() == '-' ? 1 : 0) == std::string::npos;
}

/// What a value must be for its record to be read at all.
struct Shape {
    bool fits;
    const char* words;
};

Shape shapeOf(KeyType type, const Value& value) {
    switch (type) {
        case KeyType::Integer:
            return {isNumeric(value), "a number"};
        case KeyType::Dictionary:
            return {value.isDictionary(), "a dictionary"};
        case KeyType::Array:
            return {value.isArray(), "an array"};
        default:
            return {value.isString(), "text"};
    }
}

/// Where a message points: the file and the path of keys so far.
struct Place {
    std::string file, keyPath;

    Place at(const std::string& key) const { return {file, keyPath + "." + key}; }
    [[noreturn]] void fail(const std::string& message) const {
        throw Error(ErrorKind::Template, message, file, keyPath);
    }
};

void judge(const Value& dictionary, const KeyTable& table, const Place& place) {
    for (const Key& key : table.keys) {
        const Place element = place.at(std::string(key.name));
        const Value& value = dictionary[key.name];
        if (value.isNone() && key.required) element.fail("is missing");
        const Shape shape = shapeOf(key.type, value);
        if (!value.isNone() && !shape.fits)
            element.fail(std::string("is ") + typeName(value.type()) + ", not " + shape.words);
    }
}

void requireAtMost(uint64_t limit, const char* things, const Value::Array& list, const Place& place) {
    if (list.size() > limit) place.fail(platform::beyondLimit(list.size(), things, limit));
}

void judgeDescription(const Value& description, const Place& place) {
    judge(description, templateDescriptionKeys, place);
    if (description.has("mediaSize") && !parseMediaSize(description.string("mediaSize")))
        place.at("mediaSize").fail("is no size such as \"720,1280\"");
    requireAtMost(limitOf("maxGroupScenes"), "scenes", description.array("sceneGroup"),
                  place.at("sceneGroup"));
    const Value::Array& inputs = description.array("userInputArray");
    for (size_t index = 0; index < inputs.size(); ++index)
        if (!inputs[index].isDictionary())
            place.at("userInputArray[" + std::to_string(index) + "]").fail("is no dictionary");
}

QVTempletDataModel judgedRecord(const Value& record, const Place& place) {
    if (!record.isDictionary()) place.fail("is no dictionary");
    judge(record, catalogueRecordKeys, place);
    if (record.integer("sId") < 0) place.at("sId").fail("is negative");
    if (record.string("scenePlistPath").empty()) place.at("scenePlistPath").fail("is empty");
    judgeDescription(record["wechartTempletInfo"], place.at("wechartTempletInfo"));
    return QVTempletDataModel::templetDataModelWithDic(record);
}

bool liesIn(const fs::path& folder, const fs::path& path) {
    const fs::path normal = path.lexically_normal();
    const auto mismatch = std::mismatch(folder.begin(), folder.end(), normal.begin(), normal.end());
    return mismatch.first == folder.end();
}

std::vector<uint8_t> readThroughFence(const fs::path& folder, const fs::path& file) {
    platform::FileGate fence;
    fence.allowFolder(folder);
    const platform::FileGate::Opened opened = fence.open(file);
    if (opened.verdict == platform::FileGate::Verdict::Missing)
        throw Error(ErrorKind::Template, "does not exist; a template's folder NAME holds its NAME.plist",
                    file.string());
    if (opened.verdict != platform::FileGate::Verdict::Allowed)
        throw Error(ErrorKind::Template, describe(opened.verdict), file.string());
    return platform::readFile(opened.file, file.string(), platform::PropertyListLimits().maxBytes,
                              ErrorKind::Template);
}

}  // namespace

std::vector<QVTempletDataModel> templateRecords(const Value& description, const std::string& file) {
    const Place place{file, "installScenes"};
    const Value& scenes = description["installScenes"];
    if (scenes.isNone()) place.fail("is missing: a template lists its catalogue records there");
    if (!scenes.isArray() || scenes.array().empty()) place.fail("is not a filled array of catalogue records");
    requireAtMost(limitOf("maxRecords"), "records", scenes.array(), place);

    std::vector<QVTempletDataModel> records;
    std::set<int64_t> numbers;
    for (const Value& scene : scenes.array()) {
        const Place element{file, "installScenes[" + std::to_string(records.size()) + "]"};
        records.push_back(judgedRecord(scene, element));
        if (!numbers.insert(records.back().sId()).second)
            element.at("sId").fail(std::to_string(records.back().sId()) +
                                   " is given to an earlier record too");
    }
    return records;
}

TemplateFolder readTemplateFolder(const fs::path& folder) {
    TemplateFolder result;
    // The folder keeps the name by which the user knows it, even where that is a link to another folder.
    result.folder = (fs::absolute(folder) / "").lexically_normal().parent_path();
    if (!platform::isFolder(result.folder))
        throw Error(ErrorKind::Template, platform::isThere(result.folder) ? "is no folder" : "does not exist",
                    folder.string());
    result.name = result.folder.filename().string();
    const std::string file = result.plistPath().string();
    const auto bytes = readThroughFence(result.folder, file);
    result.description = platform::parsePropertyList(bytes, file);
    result.faults = platform::propertyListFaults(bytes);
    if (!result.description.isDictionary()) throw Error(ErrorKind::Template, "holds no dictionary", file);
    result.records = templateRecords(result.description, file);
    return result;
}

Value namesInDescription(const Value& description) {
    const auto& records = description.array("installScenes");
    return records.empty() ? Value(Value::Dictionary{}) : namesOf(records.front());
}

std::string nameInDescription(const Value& description) {
    return nameInUserLanguage(namesInDescription(description));
}

std::string displayName(const TemplateFolder& folder) {
    const std::string name = nameInDescription(folder.description);
    return name.empty() ? folder.name : name;
}

void requireOwnPaths(const TemplateFolder& folder, const std::string& scenePath) {
    const fs::path own = fs::path(scenePath).lexically_normal() / folder.name;
    for (size_t index = 0; index < folder.records.size(); ++index) {
        const QVTempletDataModel& record = folder.records[index];
        const std::pair<const char*, const std::string&> paths[] = {
            {"scenePlistPath", record.scenePlistPath()},
            {"sceneResourceFolderPath", record.sceneResourceFolderPath()}};
        for (const auto& [key, path] : paths) {
            if (path.empty() || liesIn(own, QVUtil::multiScenePathWithString(path, scenePath))) continue;
            Place{folder.plistPath().string(), "installScenes[" + std::to_string(index) + "]." + key}.fail(
                "\"" + path + "\" does not lie in the template's folder; write \"$(multiSceneSceneROOT)/" +
                folder.name + "/…\"");
        }
    }
}

std::string templateOwning(const std::string& scenePlistPath) {
    const fs::path relative =
        fs::path(scenePlistPath)
            .lexically_normal()
            .lexically_relative(fs::path(QVUtil::scenePath()).lexically_normal().parent_path());
    const std::string first = relative.empty() ? "" : relative.begin()->string();
    return first == ".." || first == "." ? "" : first;
}

bool isTemplateName(const std::string& name) {
    const bool plain = std::none_of(name.begin(), name.end(), [](unsigned char letter) {
        return letter < 0x20 || letter == 0x7f || letter == '/' || letter == '\\';
    });
    return plain && platform::firstInvalidUtf8(name) == std::string::npos && !name.empty() &&
           name.front() != '.' && name.size() <= 200;
}

}  // namespace multiscene
