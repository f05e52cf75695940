#include "app/Other/OpenedFiles.h"

#include "other/QVMultiSceneRenderShareSettings.h"
#include "other/QVUtil.h"
#include "platform/base/FileGate.h"

namespace multiscene {

using platform::FileGate;
using platform::Value;

void openHomeFolders() {
    for (const std::string& folder :
         {QVUtil::scenePath(), QVUtil::templatePath(), QVUtil::userResourcesPath()})
        FileGate::shared().allowFolder(folder);
}

void openSceneGroupFiles(const std::filesystem::path& folder, const Value& userMediaMap) {
    FileGate::shared().allowFolder(folder);
    openHomeFolders();
    for (const auto& [key, value] : userMediaMap.dictionary())
        if (const std::string text = value.stringValue(); value.isString() && text.starts_with('/'))
            FileGate::shared().allowFile(text);
    auto& settings = QVMultiSceneRenderShareSettings::shared();
    settings.setCurrentSceneGroupPlistPathFloder(folder.string() + "/");
    settings.setCurrentSceneGroupUserResourcePathFloder(folder.string() + "/");
}

}  // namespace multiscene
