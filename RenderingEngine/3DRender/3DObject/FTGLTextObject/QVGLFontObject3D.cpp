#include "3DObject/FTGLTextObject/QVGLFontObject3D.h"

#include "core/SkippedMedia.h"

namespace multiscene {

const KeyTable fontObjectKeys{"QVGLFontObject3D", "Letters in 3D; taken but not drawn.", &transformKeys, {}};

void QVGLFontObject3D::rendInfoWithDic(const platform::Value& info) {
    QVObject3DTransformBase::rendInfoWithDic(info);
    reportSkipped(*this, "node type whose letters are not drawn", className());
}

}  // namespace multiscene
