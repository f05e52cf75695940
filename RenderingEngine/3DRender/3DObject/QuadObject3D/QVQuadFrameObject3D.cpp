#include "3DObject/QuadObject3D/QVQuadFrameObject3D.h"

#include "core/NodeTypes.h"

namespace multiscene {

constexpr KeyTable quadFrameKeys{
    "QVQuadFrameObject3D", "A quad for picture frames, drawn as a plain quad.", &quadKeys, {}};

QV_REGISTER_NODE_TYPE(QVQuadFrameObject3D, quadFrameKeys);

}  // namespace multiscene
