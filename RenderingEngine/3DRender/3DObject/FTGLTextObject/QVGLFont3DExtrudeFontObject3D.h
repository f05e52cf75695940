#pragma once

#include "3DObject/FTGLTextObject/QVGLFontObject3D.h"

namespace multiscene {

/// Extruded letters; taken but not drawn.
class QVGLFont3DExtrudeFontObject3D : public QVGLFontObject3D {
  public:
    const char* className() const override { return "QVGLFont3DExtrudeFontObject3D"; }
};

}  // namespace multiscene
