#include "app/Job/AskedKeys.h"

#include "app/Check/LookedUpKeys.h"
#include "app/Model/QVUserPhotoInputModel.h"
#include "videoRenderCore/SceneFile.h"

namespace multiscene {

using platform::Value;

namespace {

/// How many frames the user's video has: read by groups whose length comes from it.
constexpr const char* kUserVideoFrames = "userVideo_totalFps";

AskedKeys lookUpsOf(const Playable& playable) {
    AskedKeys asked;
    for (const SceneConfigData& scene : playable.scenes()) {
        for (const auto& [key, lookup] : lookedUpKeys(readSceneFile(scene.scenePlistPath)))
            asked[key].kind = lookup == KeyLookup::UserPath ? InputKind::File : InputKind::Text;
    }
    return asked;
}

}  // namespace

const char* inputKindName(InputKind kind) {
    static constexpr const char* names[] = {"a text", "a photo", "a file"};
    return names[static_cast<int>(kind)];
}

AskedKeys askedKeysOf(const Playable& playable) {
    AskedKeys asked = lookUpsOf(playable);
    asked[kUserVideoFrames].kind = InputKind::Text;
    for (const auto& [key, value] : playable.userMediaMap.dictionary())
        asked.try_emplace(
            key, AskedFor{value.stringValue().starts_with('/') ? InputKind::File : InputKind::Text, nullptr});
    for (const auto& input : playable.inputs) {
        const bool isPhoto = dynamic_cast<const QVUserPhotoInputModel*>(input.get());
        asked[input->renderMapKey()] = {isPhoto ? InputKind::Photo : InputKind::Text, input};
    }
    return asked;
}

}  // namespace multiscene
