#include "core/SkippedMedia.h"

#include "core/QVScene3D.h"
#include "playback/Playback.h"

namespace multiscene {

namespace {

std::string sceneName(const QVObjectContainer3D& node) {
    const auto scene = node.scene();
    if (!scene) return {};
    const std::string& file = scene->sceneConfigData().scenePlistPath;
    return file.empty() ? scene->sceneIdentifier() : file;
}

void report(const QVObjectContainer3D& node, std::string what, std::string name, bool isLeftOut) {
    Playback* const playback = node.playback();
    if (!playback) return;
    playback->report().add({.what = std::move(what),
                            .name = std::move(name),
                            .scene = sceneName(node),
                            .node = node.name().empty() ? node.className() : node.name(),
                            .isLeftOut = isLeftOut});
}

}  // namespace

void reportSkipped(const QVObjectContainer3D& node, std::string what, std::string name) {
    report(node, std::move(what), std::move(name), true);
}

void reportUsedOtherwise(const QVObjectContainer3D& node, std::string what, std::string name) {
    report(node, std::move(what), std::move(name), false);
}

}  // namespace multiscene
