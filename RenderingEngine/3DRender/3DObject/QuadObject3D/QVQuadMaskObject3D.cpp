#include "3DObject/QuadObject3D/QVQuadMaskObject3D.h"

#include "core/Material/QVTextureMaterial.h"
#include "core/Material/TextureInfoKeys.h"
#include "format/NodeTypes.h"
#include "other/QVMultiSceneRenderShareSettings.h"
#include "painter/Painter.h"

namespace multiscene {

static constexpr Key maskAnimationKeyList[] = {
    {.name = "startMaskAlpha",
     .type = KeyType::Number,
     .fallback = "0",
     .meaning = "opacity at the start",
     .minimum = 0,
     .maximum = 1},
    {.name = "endMaskAlpha",
     .type = KeyType::Number,
     .fallback = "0",
     .meaning = "opacity at the end",
     .minimum = 0,
     .maximum = 1},
};
constexpr KeyTable maskAnimationKeys{"AnimationInfo of a mask quad", "A change of opacity.", &animationKeys,
                                     maskAnimationKeyList};

static constexpr Key maskInfoKeyList[] = {
    {.name = "maskTextureName",
     .type = KeyType::Text,
     .meaning = "the mask's file where \"texture\" is not given",
     .lookup = KeyLookup::UserPath,
     .standsFor = "texture"},
};
constexpr KeyTable maskInfoKeys{"MaskInfo",
                                "The picture whose brightness, times its own opacity, is the opacity.",
                                &textureInfoKeys, maskInfoKeyList, &materialVariants};

static constexpr Key maskKeyList[] = {
    {.name = "MaskInfo",
     .type = KeyType::Dictionary,
     .meaning = "the mask",
     .required = true,
     .children = &maskInfoKeys},
    {.name = "AnimationInfo",
     .type = KeyType::Array,
     .meaning = "changes of the opacity; without any it is 1",
     .children = &maskAnimationKeys},
};
constexpr KeyTable maskKeys{"QVQuadMaskObject3D", "A quad seen through a mask.", &quadKeys, maskKeyList};

QV_REGISTER_NODE_TYPE(QVQuadMaskObject3D, maskKeys);

void QVQuadMaskObject3D::rendInfoWithDic(const platform::Value& info) {
    QVQuadObject3D::rendInfoWithDic(info);
    maskInfo_ = KeyReader(maskKeys, info).value("MaskInfo");
    const KeyReader reader(maskInfoKeys, maskInfo_);
    if (reader.has("maskTextureName") && textureNameOf(maskInfo_).empty())
        maskInfo_ = maskInfo_.with("texture", reader.value("maskTextureName"));
}

void QVQuadMaskObject3D::updateDue(const Tick& tick) {
    QVQuadObject3D::updateDue(tick);
    if (tick.isNew && tick.frame == sartFps()) loadMask();
    if (maskMaterial_) maskMaterial_->updateMaterial(tick.frame);
}

void QVQuadMaskObject3D::loadMask() {
    if (!maskInfo_) return;
    std::string path = settings().computeFilePathUserMap(textureNameOf(maskInfo_), sceneIdentifier(),
                                                         sceneResourceFolderPath());
    maskMaterial_ = QVMaterialBase::loadTextureWithDic(maskInfo_, materialContext(std::move(path)));
}

void QVQuadMaskObject3D::draw(Painter& painter) {
    if (const auto* mask = dynamic_cast<const QVTextureMaterial*>(maskMaterial_.get()))
        drawWith(painter, MaskLook{.mask = mask->texture().get(),
                                   .maskCoordinates = mask->textureCoordinates(),
                                   .opacity = renderAlpha()});
}

void QVQuadMaskObject3D::completeDue(const Tick& tick) {
    QVQuadObject3D::completeDue(tick);
    if (tick.frame == endFps()) maskMaterial_.reset();
}

void QVQuadMaskObject3D::animationWithInfo(const platform::Value::Array& keys) {
    renderAlpha_.read(keys, maskAnimationKeys, "startMaskAlpha", "endMaskAlpha");
}

void QVQuadMaskObject3D::addTraceValues(platform::Value::Dictionary& values) const {
    values["renderAlpha"] = platform::Value(static_cast<double>(renderAlpha()));
}

}  // namespace multiscene
