#include "app/job/AskedKeys.h"

#include "app/Model/QVUserPhotoInputModel.h"
#include "app/Model/QVUserVideoInputModel.h"
#include "app/check/LookedUpKeys.h"
#include "group/UserFilm.h"

namespace multiscene {

using platform::Value;

namespace {

InputKind kindOf(LookUpKind lookUp) {
    if (lookUp == LookUpKind::Text) return InputKind::Text;
    return lookUp == LookUpKind::Video ? InputKind::Video : InputKind::File;
}

InputKind kindOf(const QVUserInputModelBase& input) {
    if (dynamic_cast<const QVUserPhotoInputModel*>(&input)) return InputKind::Photo;
    return dynamic_cast<const QVUserVideoInputModel*>(&input) ? InputKind::Video : InputKind::Text;
}

AskedKeys lookUpsOf(const Playable& playable) {
    AskedKeys asked;
    for (const auto& [number, scene] : playable.group.scenes)
        for (const auto& [key, lookUp] : lookedUpKeys(scene.content)) asked[key].kind = kindOf(lookUp);
    return asked;
}

}  // namespace

const char* inputKindName(InputKind kind) {
    static constexpr const char* names[] = {"a text", "a photo", "a file", "a video"};
    return names[static_cast<int>(kind)];
}

AskedKeys askedKeysOf(const Playable& playable) {
    AskedKeys asked = lookUpsOf(playable);
    asked[kUserVideoFrames].kind = InputKind::Text;
    for (const auto& [key, value] : playable.group.userMediaMap.dictionary())
        asked.try_emplace(
            key, AskedFor{value.stringValue().starts_with('/') ? InputKind::File : InputKind::Text, nullptr});
    for (const auto& input : playable.inputs) {
        asked[input->renderMapKey()] = {kindOf(*input), input};
    }
    return asked;
}

}  // namespace multiscene
