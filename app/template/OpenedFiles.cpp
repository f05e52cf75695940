#include "app/template/OpenedFiles.h"

#include "other/QVUtil.h"

namespace multiscene {

using platform::FileGate;
using platform::Value;

void openHomeFolders(FileGate& gate) {
    for (const std::string& folder :
         {QVUtil::scenePath(), QVUtil::templatePath(), QVUtil::userResourcesPath()})
        gate.allowFolder(folder);
}

void openSceneGroupFiles(const std::filesystem::path& folder, const Value& userMediaMap, Playback& playback) {
    FileGate& gate = playback.gate();
    gate.allowFolder(folder);
    openHomeFolders(gate);
    for (const auto& [key, value] : userMediaMap.dictionary())
        if (const std::string text = value.stringValue(); value.isString() && text.starts_with('/'))
            gate.allowFile(text);
    auto& settings = playback.settings();
    settings.setCurrentSceneGroupPlistPathFloder(folder.string() + "/");
    settings.setCurrentSceneGroupUserResourcePathFloder(folder.string() + "/");
}

}  // namespace multiscene
