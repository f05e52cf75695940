#include "other/QVMultiSceneRenderShareSettings.h"

#include <limits>
#include <string_view>

#include "other/QVUtil.h"

namespace multiscene {

using platform::Value;

namespace {

constexpr std::string_view kSceneMacro = "$(currentScenePlistROOT)",
                           kGroupMacro = "$(currentSceneGroupPlistROOT)",
                           kUserMacro = "$(currentSceneGroupUserResourcePathROOT)";

}  // namespace

const QVMultiSceneRenderShareSettings& QVMultiSceneRenderShareSettings::none() {
    static const QVMultiSceneRenderShareSettings settings;
    return settings;
}

/// The root of a macro that means something only while a group plays; null for every other component.
const std::string* QVMultiSceneRenderShareSettings::rootOf(std::string_view component,
                                                           const std::string& sceneFolder) const {
    if (component == kSceneMacro) return &sceneFolder;
    if (component == kGroupMacro) return &groupFolder_;
    if (component == kUserMacro) return &userResourceFolder_;
    return nullptr;
}

void QVMultiSceneRenderShareSettings::setScenePath(const std::string& folder) {
    scenePath_ = folder.ends_with('/') ? folder : folder + "/";
}

Value QVMultiSceneRenderShareSettings::computeUserMap(const std::string& key,
                                                      const std::string& sceneIdentifier) const {
    return userMediaMapDic_[key + sceneIdentifier];
}

Value QVMultiSceneRenderShareSettings::valueOrUsers(const Value& value,
                                                    const std::string& sceneIdentifier) const {
    if (!value.isString()) return value;
    const Value users = computeUserMap(value.stringValue(), sceneIdentifier);
    return users ? users : value;
}

std::string QVMultiSceneRenderShareSettings::computeFilePathUserMap(
    const std::string& text, const std::string& sceneIdentifier,
    const std::string& sceneResourceFolderPath) const {
    return multiSceneRenderPathResourcesWithString(valueOrUsers(text, sceneIdentifier).stringValue(),
                                                   sceneResourceFolderPath);
}

void QVMultiSceneRenderShareSettings::computeStartAndEndFps(const Value& fpsInfo,
                                                            const std::string& sceneIdentifier,
                                                            int64_t& startFps, int64_t& endFps) const {
    startFps = valueOrUsers(fpsInfo["startFps"], sceneIdentifier).integerValue();
    endFps = fpsInfo.has("endFps") ? valueOrUsers(fpsInfo["endFps"], sceneIdentifier).integerValue()
                                   : std::numeric_limits<int64_t>::max();
}

std::string QVMultiSceneRenderShareSettings::multiSceneRenderPathResourcesWithString(
    const std::string& path, const std::string& currentSceneFolderPath) const {
    if (currentSceneFolderPath.empty() || path.empty() || path.front() == '/')
        return QVUtil::multiScenePathWithString(path, scenePath_);
    const std::string_view component = QVUtil::firstComponent(path);
    const std::string* root = rootOf(component, currentSceneFolderPath);
    return root ? *root + QVUtil::removingMacro(path, component)
                : QVUtil::multiScenePathWithString(path, scenePath_);
}

std::vector<std::string_view> QVMultiSceneRenderShareSettings::pathMacros() {
    std::vector<std::string_view> macros = QVUtil::pathMacros();
    macros.insert(macros.end(), {kSceneMacro, kGroupMacro, kUserMacro});
    return macros;
}

}  // namespace multiscene
