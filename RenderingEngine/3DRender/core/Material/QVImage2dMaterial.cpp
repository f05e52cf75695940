#include "core/Material/QVImage2dMaterial.h"

#include "core/Material/TextureInfoKeys.h"
#include "core/QVObject3DFpsBase.h"
#include "core/QVScene3D.h"
#include "playback/Playback.h"

namespace multiscene {

static constexpr Key imageKeyList[] = {textureFileKey(KeyFile::Picture, "the picture")};
constexpr KeyTable imageKeys{"image", "A picture.", nullptr, imageKeyList};

static const MaterialTypes::Registration registeredImage(
    "image",
    [](const platform::Value& textureInfo,
       const MaterialContext& context) -> std::shared_ptr<QVMaterialBase> {
        return std::make_shared<QVImage2dMaterial>(context.textureObjectPath, ImageType::Picture,
                                                   textureInfo);
    },
    imageKeys);

QVImage2dMaterial::QVImage2dMaterial(std::string imagePath, ImageType imageType, platform::Value textureInfo)
    : QVTextureMaterial(MaterialType::Image),
      imagePath_(std::move(imagePath)),
      imageType_(imageType),
      textureInfo_(std::move(textureInfo)) {}

PicturesAhead::Make QVImage2dMaterial::making() const {
    return [path = imagePath_, shown = largestShownBox()](platform::FileGate& gate) {
        return ZBTexture::picture(path, gate, shown);
    };
}

void QVImage2dMaterial::expectPicture() {
    Playback* const played = playback();
    if (!played || imagePath_.empty() || imageType_ != ImageType::Picture) return;
    played->picturesAhead().expect(object3D()->scene(), pictureName(imagePath_), making());
}

void QVImage2dMaterial::loadMaterial() {
    if (Playback* const played = playback()) {
        if (imageType_ == ImageType::Picture)
            modelTexture_.show(played->picturesAhead().take(pictureName(imagePath_), making()));
        else
            modelTexture_.loadPicture(imagePath_, imageType_, played->gate());
    }
    setTexture(modelTexture_.texture());
    if (!hasTexture()) reportSkippedPicture(imagePath_, textureInfo_);
}

void QVImage2dMaterial::destroyMaterial() {
    modelTexture_ = {};
    setTexture(nullptr);
}

}  // namespace multiscene
