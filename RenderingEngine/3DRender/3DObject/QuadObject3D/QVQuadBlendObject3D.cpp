#include "3DObject/QuadObject3D/QVQuadBlendObject3D.h"

#include "core/GLESUtils/GLState.h"
#include "core/NodeTypes.h"

namespace multiscene {

static constexpr Key blendInfoKeyList[] = {
    {.name = "srcBlend",
     .type = KeyType::Integer,
     .fallback = "0",
     .meaning = "number of the GL blend factor of what is drawn, 1 ONE, 770 SRC_ALPHA",
     .required = true,
     .minimum = 0,
     .maximum = 776},
    {.name = "decBlend",
     .type = KeyType::Integer,
     .fallback = "0",
     .meaning = "number of the GL blend factor of what is there, 1 ONE, 771 ONE_MINUS_SRC_ALPHA",
     .required = true,
     .minimum = 0,
     .maximum = 776},
};
constexpr KeyTable blendInfoKeys{"BlendInfo", "A blend function.", nullptr, blendInfoKeyList};

static constexpr Key blendKeyList[] = {
    {.name = "BlendInfo",
     .type = KeyType::Dictionary,
     .meaning = "the blend function",
     .required = true,
     .children = &blendInfoKeys},
};
constexpr KeyTable blendKeys{"QVQuadBlendObject3D", "A transparent quad with a blend function of its own.",
                             &diaphaneityKeys, blendKeyList};

QV_REGISTER_NODE_TYPE(QVQuadBlendObject3D, blendKeys);

void QVQuadBlendObject3D::rendInfoWithDic(const platform::Value& info) {
    QVQuadDiaphaneityObject3D::rendInfoWithDic(info);
    const KeyReader reader(blendInfoKeys, KeyReader(blendKeys, info).value("BlendInfo"));
    quadSrcBlend_ = static_cast<uint32_t>(reader.int32("srcBlend"));
    quadDecBlend_ = static_cast<uint32_t>(reader.int32("decBlend"));
}

void QVQuadBlendObject3D::setUniforms(Shader& shader) {
    QVQuadDiaphaneityObject3D::setUniforms(shader);
    GLState::setBlendFunction(quadSrcBlend_, quadDecBlend_);
}

}  // namespace multiscene
