#include "core/QVObject3DTextureBase.h"

#include "core/Material/QVImage2dMaterial.h"
#include "core/Material/QVTextureMaterial.h"
#include "core/Material/TextureInfoKeys.h"
#include "core/Material/ZBTexture.h"
#include "core/QVScene3D.h"
#include "group/PhotoSlot.h"
#include "playback/Playback.h"

namespace multiscene {

static constexpr Key textureBaseKeyList[] = {
    {.name = "TextureInfo",
     .type = KeyType::Dictionary,
     .meaning = "what the node shows; none: it draws nothing",
     .children = &textureInfoKeys},
};
const KeyTable textureBaseKeys{"QVObject3DTextureBase", "A node drawn with a texture.", &transformKeys,
                               textureBaseKeyList};

void QVObject3DTextureBase::rendInfoWithDic(const platform::Value& info) {
    QVObject3DTransformBase::rendInfoWithDic(info);
    textureInfo_ = KeyReader(textureBaseKeys, info).value("TextureInfo");
}

std::string QVObject3DTextureBase::computeTexturePath() const {
    Playback* const played = playback();
    return played ? texturePathThrough(played->gate()) : std::string();
}

std::string QVObject3DTextureBase::texturePathThrough(platform::FileGate& gate) const {
    const std::string name = textureNameOf(textureInfo_);
    if (name.empty()) return {};
    const platform::Value users = settings().computeUserMap(name, sceneIdentifier());
    std::string path = resolvedPath(users.isNone() ? name : users.stringValue());
    if (path.empty()) return {};
    bool exists = gate.exists(path);
    if (!exists && !users.isNone()) {
        path = suppliedPhotoForSlot(path);
        exists = gate.exists(path);
    }
    return exists ? path : std::string();
}

void QVObject3DTextureBase::loadTexture() {
    if (!textureInfo_) return;
    if (!loadedBox_) loadedBox_ = std::make_shared<const ShownBox>(largestShownBox());
    setMaterial(QVMaterialBase::loadTextureWithDic(textureInfo_, materialContext(computeTexturePath())));
    loadTextureFinsh();
}

void QVObject3DTextureBase::reloadTexture() {
    isReloading_ = true;
    loadTexture();
    isReloading_ = false;
}

ShownBox QVObject3DTextureBase::loadedShownBox() {
    return isReloading_ && loadedBox_ ? *loadedBox_ : largestShownBox();
}

void QVObject3DTextureBase::expectPicture() {
    Playback* const played = playback();
    if (!textureInfo_ || !played) return;
    platform::FileGate scout;
    scout.allowAllOf(played->gate());
    QVMaterialBase::expectPictureWithDic(textureInfo_, materialContext(texturePathThrough(scout)));
}

ShownBox QVObject3DTextureBase::largestShownBox() { return {}; }

void QVObject3DTextureBase::reloadTextureFromPvr(const std::string& name) {
    auto picture = std::make_shared<QVImage2dMaterial>(resolvedPath(name), ImageType::Pvr);
    picture->setObject3D(this);
    picture->loadMaterial();
    setMaterial(std::move(picture));
}

MaterialContext QVObject3DTextureBase::materialContext(std::string path) {
    return {.scene = scene(),
            .object3D = this,
            .textureObjectPath = std::move(path),
            .textureSerialStartFps = sartFps(),
            .textureSerialEndFps = endFps()};
}

void QVObject3DTextureBase::setMaterial(std::shared_ptr<QVMaterialBase> material) {
    material_ = std::move(material);
    textureMaterial_ = dynamic_cast<QVTextureMaterial*>(material_.get());
}

Texture* QVObject3DTextureBase::texture() const {
    return textureMaterial_ ? textureMaterial_->texture().get() : nullptr;
}

const std::array<float, 8>& QVObject3DTextureBase::masterTextureCoordinates() const {
    return textureMaterial_ ? textureMaterial_->textureCoordinates()
                            : QVTextureMaterial::topDownTextureCoordinates;
}

void QVObject3DTextureBase::updateDue(const Tick& tick) {
    QVObject3DTransformBase::updateDue(tick);
    if (tick.isNew && tick.frame == sartFps()) loadTexture();
    if (material_) material_->updateMaterial(tick.frame);
}

void QVObject3DTextureBase::completeDue(const Tick& tick) {
    QVObject3DTransformBase::completeDue(tick);
    if (material_ && tick.frame == endFps()) material_->destroyMaterial();
}

void QVObject3DTextureBase::addTraceFields(platform::Value::Dictionary& fields) {
    QVObject3DTransformBase::addTraceFields(fields);
    if (!textureMaterial_) return;
    const TextureSize size = textureMaterial_->textureSize();
    fields["texture"] =
        platform::Value(platform::Value::Dictionary{{"path", platform::Value(textureMaterial_->sourcePath())},
                                                    {"width", platform::Value(size.width)},
                                                    {"height", platform::Value(size.height)}});
}

}  // namespace multiscene
