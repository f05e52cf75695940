#include "core/Material/QVMaterialBase.h"

#include "core/Material/TextureInfoKeys.h"
#include "core/Material/ZBTexture.h"
#include "core/QVObject3DTextureBase.h"
#include "core/SkippedMedia.h"

namespace multiscene {

std::shared_ptr<QVMaterialBase> QVMaterialBase::loadTextureWithDic(const platform::Value& textureInfo,
                                                                   const MaterialContext& context) {
    const auto* known = MaterialTypes::find(KeyReader(textureInfoKeys, textureInfo).text("textureType"));
    if (!known) return nullptr;
    auto material = known->make(textureInfo, context);
    if (!material) return nullptr;
    material->setObject3D(context.object3D);
    material->loadMaterial();
    return material;
}

Playback* QVMaterialBase::playback() const { return object3D_ ? object3D_->playback() : nullptr; }

ShownBox QVMaterialBase::largestShownBox() const {
    auto* drawable = dynamic_cast<QVObject3DTextureBase*>(object3D_);
    return drawable ? drawable->largestShownBox() : ShownBox{};
}

void QVMaterialBase::reportSkippedPicture(const std::string& path, const platform::Value& textureInfo) const {
    if (!object3D_) return;
    if (path.empty())
        reportSkipped(*object3D_, "missing file", textureNameOf(textureInfo));
    else
        reportSkipped(*object3D_, "missing or unreadable file", path);
}

}  // namespace multiscene
