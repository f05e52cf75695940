#pragma once

#include "3DObject/FTGLTextObject/QVGLFontTextObjectBase.h"
#include "3DObject/QuadObject3D/QVQuadObject3D.h"
#include "core/GLESUtils/GLObject.h"

namespace multiscene {

/// Flat letters from a texture font. They stay as sharp as their atlas: about a hundred pixels a letter.
class QVGLFont2DTextureFontObject3D : public QVGLFontTextObjectBase {
  public:
    const char* className() const override { return "QVGLFont2DTextureFontObject3D"; }

  protected:
    std::vector<char32_t> makeLetters(const platform::LetterText& text) override;
    void drawLetters() override;
    void dropLetters() override { atlas_.destroy(); }

  private:
    std::vector<platform::LetterVertex> triangles_, coloredTriangles_;
    QVQuadObject3D::Corners bounds_{};
    GLTexture atlas_;
};

}  // namespace multiscene
