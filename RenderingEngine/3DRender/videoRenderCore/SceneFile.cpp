#include "videoRenderCore/SceneFile.h"

#include "other/RenderReport.h"
#include "platform/base/FileGate.h"
#include "platform/base/PropertyList.h"

namespace multiscene {

platform::Value readSceneFile(const std::string& path) {
    const platform::FileGate::Opened opened = platform::FileGate::shared().open(path);
    if (opened.verdict == platform::FileGate::Verdict::Missing)
        throw platform::Error(platform::ErrorKind::Template, "there is no such file", path);
    if (opened.verdict != platform::FileGate::Verdict::Allowed)
        throw platform::Error(platform::ErrorKind::Template, platform::describe(opened.verdict), path);
    const auto bytes = platform::readFile(opened.file, path, platform::PropertyListLimits{}.maxBytes,
                                          platform::ErrorKind::Template);
    return platform::parsePropertyList(bytes, path);
}

platform::Value sceneFileOrEmpty(const std::string& path) {
    try {
        return readSceneFile(path);
    } catch (const platform::Error& error) {
        if (error.kind() == platform::ErrorKind::Transient) throw;
        RenderReport::shared().add({.what = error.message(), .name = path, .scene = path, .node = {}});
        return {};
    }
}

}  // namespace multiscene
