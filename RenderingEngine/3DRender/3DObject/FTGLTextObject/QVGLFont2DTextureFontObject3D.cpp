#include "3DObject/FTGLTextObject/QVGLFont2DTextureFontObject3D.h"

#include "core/NodeTypes.h"

namespace multiscene {

constexpr KeyTable keys{"QVGLFont2DTextureFontObject3D",
                        "Letters from a texture font; taken but not drawn.",
                        &fontObjectKeys,
                        {}};

QV_REGISTER_NODE_TYPE(QVGLFont2DTextureFontObject3D, keys);

}  // namespace multiscene
