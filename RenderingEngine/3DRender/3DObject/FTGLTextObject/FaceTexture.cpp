#include "3DObject/FTGLTextObject/FaceTexture.h"

#include "core/Material/QVTextureMaterial.h"

namespace multiscene {

void FaceTexture::load(const MaterialContext& context) {
    if (!isGiven()) return;
    material_ = QVMaterialBase::loadTextureWithDic(info_, context);
    pictured_ = dynamic_cast<QVTextureMaterial*>(material_.get());
}

void FaceTexture::update(int64_t frame) {
    if (material_) material_->updateMaterial(frame);
}

void FaceTexture::drop() {
    pictured_ = nullptr;
    if (material_) material_->destroyMaterial();
    material_.reset();
}

Texture* FaceTexture::texture() const {
    return pictured_ && pictured_->hasTexture() ? pictured_->texture().get() : nullptr;
}

glm::mat4 FaceTexture::matrix() const {
    const auto& at = pictured_->textureCoordinates();
    const glm::vec2 bottomLeft(at[0], at[1]), topRight(at[4], at[5]), topLeft(at[6], at[7]);
    glm::mat4 matrix(1);
    matrix[0] = glm::vec4(topRight - topLeft, 0, 0);
    matrix[1] = glm::vec4(bottomLeft - topLeft, 0, 0);
    matrix[3] = glm::vec4(topLeft, 0, 1);
    return matrix;
}

}  // namespace multiscene
