#include "sceneFile/SceneFile.h"

#include "platform/base/PropertyList.h"

namespace multiscene {

using platform::Error;
using platform::FileGate;
using platform::Value;

Value readSceneFile(const std::string& path, FileGate& gate) {
    const FileGate::Opened opened = gate.open(path);
    if (opened.verdict == FileGate::Verdict::Missing)
        throw Error(platform::ErrorKind::Template, "there is no such file", path);
    if (opened.verdict != FileGate::Verdict::Allowed)
        throw Error(platform::ErrorKind::Template, platform::describe(opened.verdict), path);
    const auto bytes = platform::readFile(opened.file, path, platform::PropertyListLimits{}.maxBytes,
                                          platform::ErrorKind::Template);
    return platform::parsePropertyList(bytes, path);
}

void readScenes(SceneGroup& group, const std::map<std::string, Value>& known, FileGate& gate) {
    std::map<std::string, Value> contents = known;
    for (auto& [number, scene] : group.scenes) {
        const std::string& path = scene.record.scenePlistPath;
        try {
            auto content = contents.find(path);
            if (content == contents.end()) content = contents.emplace(path, readSceneFile(path, gate)).first;
            scene.content = content->second;
        } catch (const Error& error) {
            if (error.kind() == platform::ErrorKind::Transient) throw;
            scene.fault = error;
        }
    }
}

}  // namespace multiscene
