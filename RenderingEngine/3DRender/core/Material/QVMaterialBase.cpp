#include "core/Material/QVMaterialBase.h"

#include <sstream>

#include "core/Material/TextureInfoKeys.h"
#include "core/Material/ZBTexture.h"
#include "core/QVObject3DTextureBase.h"
#include "core/SkippedMedia.h"

namespace multiscene {

namespace {

std::shared_ptr<QVMaterialBase> made(const platform::Value& textureInfo, const MaterialContext& context) {
    const auto* known = MaterialTypes::find(KeyReader(textureInfoKeys, textureInfo).text("textureType"));
    auto material = known ? known->make(textureInfo, context) : nullptr;
    if (material) material->setObject3D(context.object3D);
    return material;
}

}  // namespace

std::shared_ptr<QVMaterialBase> QVMaterialBase::loadTextureWithDic(const platform::Value& textureInfo,
                                                                   const MaterialContext& context) {
    auto material = made(textureInfo, context);
    if (material) material->loadMaterial();
    return material;
}

void QVMaterialBase::expectPictureWithDic(const platform::Value& textureInfo,
                                          const MaterialContext& context) {
    if (const auto material = made(textureInfo, context)) material->expectPicture();
}

Playback* QVMaterialBase::playback() const { return object3D_ ? object3D_->playback() : nullptr; }

ShownBox QVMaterialBase::largestShownBox() const {
    auto* drawable = dynamic_cast<QVObject3DTextureBase*>(object3D_);
    return drawable ? drawable->loadedShownBox() : ShownBox{};
}

std::string QVMaterialBase::pictureName(const std::string& path) const {
    const ShownBox box = largestShownBox();
    std::ostringstream name;
    name << object3D_ << ' ' << box.width << 'x' << box.height << ' ' << path;
    return name.str();
}

void QVMaterialBase::reportSkippedPicture(const std::string& path, const platform::Value& textureInfo) const {
    if (!object3D_) return;
    if (path.empty())
        reportSkipped(*object3D_, "missing file", textureNameOf(textureInfo));
    else
        reportSkipped(*object3D_, "missing or unreadable file", path);
}

}  // namespace multiscene
