#pragma once

#include "3DObject/FTGLTextObject/QVGLFontTextObjectBase.h"

namespace multiscene {

/// Flat letters from a texture font. They stay as sharp as their atlas: about a hundred pixels a letter.
class QVGLFont2DTextureFontObject3D : public QVGLFontTextObjectBase {
  public:
    const char* className() const override { return "QVGLFont2DTextureFontObject3D"; }

  protected:
    std::vector<char32_t> makeLetters(const platform::LetterText& text) override;
    void drawLetters(Painter& painter) override;
    void dropLetters() override { atlas_.clear(); }

  private:
    std::vector<MeshVertex> triangles_, coloredTriangles_;
    Texture atlas_;
};

}  // namespace multiscene
