#include "dataMode/TextSettings.h"

#include <algorithm>

#include "other/QVMultiSceneRenderShareSettings.h"
#include "other/RenderReport.h"
#include "platform/base/FileGate.h"

namespace multiscene {

namespace {

bool namesFile(const std::string& fontName) {
    return !fontName.empty() && (fontName.front() == '$' || fontName.front() == '/');
}

}  // namespace

platform::Color readTextColor(const KeyReader& reader, std::string_view key) {
    const std::string text = reader.text(key);
    const glm::vec4 numbers = reader.vector4(key);
    const bool hasAlpha = std::ranges::count(text, ',') >= 3;
    return {numbers.x, numbers.y, numbers.z, hasAlpha ? numbers.w : 1.0f};
}

std::string findText(const std::string& key, const std::string& sceneIdentifier, int maxLength) {
    const auto text = QVMultiSceneRenderShareSettings::valueOrUsers(key, sceneIdentifier);
    return platform::truncateText(text.stringValue(), maxLength);
}

platform::TextFont findFont(const std::string& name, float size, const std::string& sceneFolder) {
    auto& report = RenderReport::shared();
    if (!namesFile(name)) {
        if (!platform::isFontInstalled(name)) report.add({"font not installed", name, sceneFolder, ""});
        return {name, "", size};
    }
    const std::string file =
        QVMultiSceneRenderShareSettings::multiSceneRenderPathResourcesWithString(name, sceneFolder);
    if (file.empty() || !platform::FileGate::shared().exists(file))
        report.add({"missing font file", name, sceneFolder, ""});
    return {"", file, size};
}

}  // namespace multiscene
