#include "3DObject/QuadObject3D/QVQuadDiaphaneityObject3D.h"

#include "format/NodeTypes.h"

namespace multiscene {

static constexpr Key alphaAnimationKeyList[] = {
    {.name = "startRenderAlpha",
     .type = KeyType::Number,
     .fallback = "0",
     .meaning = "opacity at the start",
     .minimum = 0,
     .maximum = 1},
    {.name = "endRenderAlpha",
     .type = KeyType::Number,
     .fallback = "0",
     .meaning = "opacity at the end",
     .minimum = 0,
     .maximum = 1},
};
const KeyTable alphaAnimationKeys{"AnimationInfo of an opacity", "A change of opacity.", &animationKeys,
                                  alphaAnimationKeyList};

static constexpr Key diaphaneityKeyList[] = {
    {.name = "AnimationInfo",
     .type = KeyType::Array,
     .meaning = "changes of the opacity; without any it is 1",
     .children = &alphaAnimationKeys},
};
const KeyTable diaphaneityKeys{"QVQuadDiaphaneityObject3D", "A quad with an animated opacity.", &quadKeys,
                               diaphaneityKeyList};

QV_REGISTER_NODE_TYPE(QVQuadDiaphaneityObject3D, diaphaneityKeys);

void QVQuadDiaphaneityObject3D::animationWithInfo(const platform::Value::Array& keys) {
    renderAlpha_.read(keys, alphaAnimationKeys, "startRenderAlpha", "endRenderAlpha");
}

void QVQuadDiaphaneityObject3D::addTraceValues(platform::Value::Dictionary& values) const {
    values["renderAlpha"] = platform::Value(static_cast<double>(renderAlpha()));
}

}  // namespace multiscene
