#include "3DObject/FTGLTextObject/QVGLFont3DExtrudeFontObject3D.h"

#include "core/NodeTypes.h"

namespace multiscene {

constexpr KeyTable keys{
    "QVGLFont3DExtrudeFontObject3D", "Extruded letters; taken but not drawn.", &fontObjectKeys, {}};

QV_REGISTER_NODE_TYPE(QVGLFont3DExtrudeFontObject3D, keys);

}  // namespace multiscene
