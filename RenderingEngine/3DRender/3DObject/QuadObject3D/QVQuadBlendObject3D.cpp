#include "3DObject/QuadObject3D/QVQuadBlendObject3D.h"

#include "format/NodeTypes.h"
#include "painter/Painter.h"

namespace multiscene {

// Of GL: ZERO, ONE, then SRC_COLOR to SRC_ALPHA_SATURATE.
static constexpr std::string_view blendFactorNumbers[] = {"0",   "1",   "768", "769", "770", "771",
                                                          "772", "773", "774", "775", "776"};

static constexpr Key blendInfoKeyList[] = {
    {.name = "srcBlend",
     .type = KeyType::Integer,
     .fallback = "0",
     .meaning = "number of the GL blend factor of what is drawn, 1 ONE, 770 SRC_ALPHA",
     .required = true,
     .choices = blendFactorNumbers},
    {.name = "decBlend",
     .type = KeyType::Integer,
     .fallback = "0",
     .meaning = "number of the GL blend factor of what is there, 1 ONE, 771 ONE_MINUS_SRC_ALPHA",
     .required = true,
     .choices = blendFactorNumbers},
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

void QVQuadBlendObject3D::draw(Painter& painter) {
    painter.setBlendFunction({quadSrcBlend_, quadDecBlend_});
    QVQuadDiaphaneityObject3D::draw(painter);
}

}  // namespace multiscene
