#include "core/component/QVObject3DComponentBase.h"

#include "core/QVObjectContainer3D.h"
#include "core/QVScene3D.h"
#include "other/QVMultiSceneRenderShareSettings.h"

namespace multiscene {

static constexpr Key componentKeyList[] = {
    {.name = "type", .type = KeyType::Text, .meaning = "the component's class", .required = true},
    {.name = "startFps",
     .type = KeyType::Integer,
     .unit = "frames",
     .fallback = "0",
     .meaning = "first frame, counted in the scene",
     .lookup = KeyLookup::UserMap,
     .minimum = 0},
    {.name = "endFps",
     .type = KeyType::Integer,
     .unit = "frames",
     .fallback = "0",
     .meaning = "last frame, inclusive",
     .lookup = KeyLookup::UserMap,
     .minimum = 0},
};
static constexpr KeyVariants componentVariants = variantsOfTypes<ComponentTypes>("component", "type");
const KeyTable componentKeys{"QVObject3DComponentBase", "A behaviour attached to a node.", nullptr,
                             componentKeyList, &componentVariants};

void QVObject3DComponentBase::rendInfoWithDic(const platform::Value& info) {
    componentInfo_ = info;
    computeStartAndEndFps(info);
}

void QVObject3DComponentBase::computeStartAndEndFps(const platform::Value& info) {
    // As written: the text of a fallback would be looked up as a key of the user.
    const auto frameNumber = [&](const char* key) {
        return settings().valueOrUsers(info[key], sceneIdentifier()).integerValue();
    };
    sartFps_ = frameNumber("startFps");
    endFps_ = frameNumber("endFps");
}

const QVMultiSceneRenderShareSettings& QVObject3DComponentBase::settings() const {
    return object3D_ ? object3D_->settings() : QVMultiSceneRenderShareSettings::none();
}

std::string QVObject3DComponentBase::sceneIdentifier() const {
    const auto scene = object3D_ ? object3D_->scene() : nullptr;
    return scene ? scene->sceneIdentifier() : std::string();
}

}  // namespace multiscene
