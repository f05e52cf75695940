#pragma once

#include "3DObject/FTGLTextObject/QVGLFontObject3D.h"

namespace multiscene {

/// Letters from a texture font; taken but not drawn.
class QVGLFont2DTextureFontObject3D : public QVGLFontObject3D {
  public:
    const char* className() const override { return "QVGLFont2DTextureFontObject3D"; }
};

}  // namespace multiscene
